// Look-ups in one dictionary by many threads at once.
#include <Infrastructure/OxaCore/UnitDictionary.h>

#include <gtest/gtest.h>

#include <atomic>

#include "Support/Together.h"
#include "Units/UnitDictionarySupport.h"

namespace {

using namespace UnitsTests;

constexpr int iTHREADS = 8;
#if defined(OXACORE_SOAK)
constexpr long lROUNDS = 20000;
#else
constexpr long lROUNDS = 200;
#endif

/// Each kind of look-up once; how many gave what they should.
int LookUpAll(const UnitDictionary& units, long round) {
  int right = 0;
  right += Found(units, "Nanoampere per Volt") == "Nanoampere per Volt";
  right += Found(units, "inches") == "Inch";
  right += Found(units, "no such unit") == "nothing";
  right += Found(units, "m", units.LookupUnit("Hour")) == "Minute";
  right += StandsFor(units, *units.FindUnit("Meter")) == "Arb";
  right += !units.LookupDimensionallyEquivalentUnit(*NewUnit("", "", Dimensions(round, 50, 50)));
  right += units.IsUnitDefined("oz") && !units.IsUnitDefined("ozone");
  try {
    units.LookupUnit("oz");
  } catch (UnitDictionary::XAlternateNameCollision&) {
    ++right;
  }
  return right;
}

TEST(UnitDictionaryThreads, AllFindWhatTheyLookFor) {
  const UnitDictionary units;
  std::atomic<long> right{0};
  TestSupport::Together(iTHREADS, [&](int) {
    for (long round = 1; round <= lROUNDS; ++round) right += LookUpAll(units, round);
  });
  EXPECT_EQ(iTHREADS * lROUNDS * 8, right);
}

TEST(UnitDictionaryThreads, CopiesAreMadeChangedAndDroppedBesideOneAnother) {
  const UnitDictionary units;
  std::atomic<int> right{0};
  TestSupport::Together(iTHREADS, [&](int) {
    UnitDictionary copy(units);
    copy.RemoveUnit(*copy.FindUnit("Mile"));
    copy.AddUnit(NewUnit("Mile", "mi.", sLENGTH, 1.0 / 1852));
    right += copy.LookupUnit("mi.")->ConvertToBaseUnits(1) == 1852 && LookUpAll(copy, 1) == 8;
  });
  EXPECT_EQ(iTHREADS, right);
  EXPECT_EQ("Mile", Found(units, "mi"));
}

}  // namespace
