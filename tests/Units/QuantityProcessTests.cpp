// Quantities in a whole process: in static objects, and on many threads.
#include <Infrastructure/OxaCore/Time.h>
#include <Infrastructure/OxaCore/UnitizedValue.h>
#include <gtest/gtest.h>

#include "Support/ChildProcess.h"
#include "Support/Together.h"
#include "Units/Quantities.h"

namespace {

using namespace Oxa::Core;
using namespace UnitTests;
using TestSupport::ChildResult;
using TestSupport::RunChild;

// A way comes in the first registered unit of its dimensions and factor.
const char* const sUSED =
    ": 4.82803 km, -49762.8, 2500 ticks\nIllegal unit conversion from \"Arb\" to \"Second\"\n";

TEST(QuantitiesInStaticObjects, WorkFromConstructorsToDestructors) {
  const ChildResult result = RunChild({QUANTITY_HOST}, {"ASAN_OPTIONS=detect_leaks=0"});
  EXPECT_EQ(0, result.m_iStatus) << result.m_sError;
  EXPECT_EQ(std::string("constructor") + sUSED + "main: 5000.3 m 75.3982 in.\ndestructor" + sUSED,
            result.m_sOutput);
}

TEST(QuantitiesInStaticObjects, WorkWhenTheGlobalsHaveDied) {
  const ChildResult result =
      RunChild({OLD_QUANTITY_HOST, QUANTITY_PLUGIN, "quantity"}, {"ASAN_OPTIONS=detect_leaks=0"});
  EXPECT_EQ(0, result.m_iStatus) << result.m_sError;
  EXPECT_EQ("early: 15.24\nlate: 15.24\n", result.m_sOutput);
}

TEST(StandardUnitsOnThreads, AreFoundToTheEndOfTheProcess) {
  const ChildResult result =
      RunChild({OLD_QUANTITY_HOST, QUANTITY_PLUGIN, "thread"}, {"ASAN_OPTIONS=detect_leaks=0"});
  EXPECT_EQ(0, result.m_iStatus) << result.m_sError;
  EXPECT_EQ("early: finds\nlate: finds\n", result.m_sOutput);
}

#if defined(OXACORE_SOAK)
constexpr int iROUNDS = 20000;
#else
constexpr int iROUNDS = 300;
#endif

// Each unit of the result is looked up in the one global dictionary, and each thread has copies of one value.
TEST(QuantitiesOnThreads, ShareTheGlobalDictionaryAndTheirUnits) {
  const PrivateUnits own;
  const Value shared(3, "Kilometer", own.m_units);
  TestSupport::Together(8, [&](int thread) {
    for (int round = 0; round < iROUNDS; ++round) {
      Value copy(shared);
      copy *= Value(thread, "Meter");
      ExpectValue(3000.0 * thread, "Square Meter", copy);
      EXPECT_EQ(1500.0, shared.Get("thumb"));
      EXPECT_EQ("Kilometer * Kelvin", NameOf(shared * Value(round, "Kelvin")));
      EXPECT_EQ("3 km", shared.ToString());
      EXPECT_EQ(10LL * round, ToElapse(Value(round, "usec")).GetRawTimerTicks());
      EXPECT_TRUE(uvPI * shared > shared);
    }
    EXPECT_EQ("Oxa.Core.UnitizedValue: x unit not found in the unit dictionary",
              Raised<Value::XUnitNotFound>([&] { shared.Get("x"); }));
  });
  ExpectValue(3.0, "Kilometer", shared);
}

}  // namespace
