// Spans of time as quantities, and back.
#include <Infrastructure/OxaCore/Time.h>
#include <Infrastructure/OxaCore/UnitizedValue.h>
#include <gtest/gtest.h>

#include <limits>

#include "Units/Quantities.h"

namespace {

using namespace Oxa::Core;
using namespace UnitTests;

long long Ticks(double number, const std::string& unit) {
  return ToElapse(Value(number, unit)).GetRawTimerTicks();
}

TEST(ElapseConversion, CutsToNanosecondsAndRoundsUpToTicks) {
  EXPECT_EQ(0, Ticks(0, "Second"));
  EXPECT_EQ(2, Ticks(200, "Nanosecond"));
  EXPECT_EQ(2, Ticks(200.99, "Nanosecond"));
  EXPECT_EQ(3, Ticks(201, "Nanosecond"));
  EXPECT_EQ(1, Ticks(1, "Nanosecond"));
  EXPECT_EQ(0, Ticks(0.99, "Nanosecond"));
}

TEST(ElapseConversion, OfOtherUnitsOfTime) {
  // A second is one double less than 1000000000 ns, and the rounding up gives back what the cut takes.
  EXPECT_EQ(10000000, Ticks(1, "Second"));
  EXPECT_EQ(600000000, Ticks(1, "Minute"));
  EXPECT_EQ(36000000000, Ticks(1, "Hour"));
  EXPECT_EQ(10000, Ticks(1, "msec"));
  EXPECT_EQ(2500, Ticks(0.25, "msec"));
  EXPECT_EQ(2500, Ticks(250, "usec"));
  EXPECT_EQ(10, Ticks(1, "\xB5s"));
}

TEST(ElapseConversion, OfNegativeValuesRoundsUpTwice) {
  EXPECT_EQ(-2, Ticks(-200, "Nanosecond"));
  EXPECT_EQ(0, Ticks(-150, "Nanosecond"));
  EXPECT_EQ(1, Ticks(-50, "Nanosecond"));
  EXPECT_EQ(0, Ticks(-0.5, "Nanosecond"));
  EXPECT_EQ(-9999998, Ticks(-1, "Second"));
}

TEST(ElapseConversion, SaturatesWhatSixtyFourBitsDoNotHold) {
  constexpr long long most = 92233720368547759;  // the ticks of 9223372036854775807 ns, rounded up
  constexpr long long least = -92233720368547757;
  constexpr double dINFINITY = std::numeric_limits<double>::infinity();
  EXPECT_EQ(most, Ticks(1e30, "Nanosecond"));
  EXPECT_EQ(most, Ticks(9223372036854775808.0, "Nanosecond"));
  EXPECT_EQ(most, Ticks(dINFINITY, "Second"));
  EXPECT_EQ(least, Ticks(-1e30, "Nanosecond"));
  EXPECT_EQ(least, Ticks(-9223372036854775808.0, "Nanosecond"));
  EXPECT_EQ(least, Ticks(-dINFINITY, "Second"));
  EXPECT_EQ(0, Ticks(std::numeric_limits<double>::quiet_NaN(), "Second"));
  EXPECT_EQ(92233720368547748, Ticks(9223372036854774784.0, "Nanosecond"));  // the largest double below 2^63
}

TEST(ElapseConversion, OfWhatIsNoTimeRaises) {
  EXPECT_EQ("Oxa.Core.UnitizedValue: Illegal unit conversion from \"Meter\" to \"Nanosecond\"",
            Raised<Value::XNoUnitConversion>([] { ToElapse(Value(1, "Meter")); }));
  EXPECT_EQ("Oxa.Core.UnitizedValue: Illegal unit conversion from \"\" to \"Nanosecond\"",
            Raised<Value::XNoUnitConversion>([] { ToElapse(1.0); }));
}

TEST(ElapseConversion, WithoutNanosecondsInTheGlobalDictionaryRaises) {
  const std::string notFound = "Oxa.Core.UnitizedValue: Nanosecond unit not found in the unit dictionary";
  const Value second(1, "Second");
  const UnitDictionary own;
  const Value secondOfItsOwn(1, "Second", own);
  const WithGlobalDictionary base(boost::make_shared<UnitDictionary>(false));
  EXPECT_EQ(notFound, Raised<Value::XUnitNotFound>([&] { ToElapse(second); }));
  EXPECT_EQ(notFound, Raised<Value::XUnitNotFound>([] { ToUnitizedValue(Elapse()); }));
  EXPECT_EQ(10000000, ToElapse(secondOfItsOwn).GetRawTimerTicks());
}

TEST(ElapseConversion, SpansAreNanoseconds) {
  ExpectValue(1500000000.0, "Nanosecond", ToUnitizedValue(Elapse(1500, Elapse::MilliSeconds)));
  ExpectValue(-100.0, "Nanosecond", ToUnitizedValue(Elapse(-1, Elapse::TimerTicks)));
  ExpectValue(0.0, "Nanosecond", ToUnitizedValue(Elapse()));
  EXPECT_EQ("250000 nsec", ToUnitizedValue(Elapse(250, Elapse::MicroSeconds)).ToString());
}

TEST(ElapseConversion, SpansComeBackFromNanoseconds) {
  for (const long long ticks :
       {0LL, 1LL, -1LL, 12345LL, -12345LL, 10000000LL, -864000000000LL, 90000000000000LL})
    EXPECT_EQ(ticks, ToElapse(ToUnitizedValue(Elapse(ticks, Elapse::TimerTicks))).GetRawTimerTicks());
}

}  // namespace
