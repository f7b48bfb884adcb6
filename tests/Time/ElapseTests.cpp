#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/Time.h>

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <sstream>
#include <string>
#include <type_traits>

namespace {

using namespace Oxa::Core;

static_assert(sizeof(Elapse) == 8 && std::is_trivially_copyable_v<Elapse> && !std::is_polymorphic_v<Elapse>);

long long Ticks(long long value, Elapse::TimeUnits units) { return Elapse(value, units).GetRawTimerTicks(); }
double Elapsed(long long ticks, Elapse::TimeUnits units) {
  return Elapse(ticks, Elapse::TimerTicks).GetElapsed(units);
}
std::string Printed(const Elapse& elapse) {
  std::ostringstream text;
  text << elapse;
  return text.str();
}
long long Parsed(const std::string& text) {
  Elapse elapse(77);
  EXPECT_TRUE(elapse.ParseString(text)) << text;
  return elapse.GetRawTimerTicks();
}

TEST(Elapse, UnitsHaveTheirNumbers) {
  EXPECT_EQ(0, Elapse::NanoSeconds);
  EXPECT_EQ(1, Elapse::MicroSeconds);
  EXPECT_EQ(2, Elapse::MilliSeconds);
  EXPECT_EQ(3, Elapse::Seconds);
  EXPECT_EQ(4, Elapse::Minutes);
  EXPECT_EQ(5, Elapse::Hours);
  EXPECT_EQ(6, Elapse::Days);
  EXPECT_EQ(7, Elapse::TimerTicks);
}

TEST(Elapse, DefaultIsZeroSeconds) {
  EXPECT_EQ(0, Elapse().GetRawTimerTicks());
  EXPECT_EQ(0.0, Elapse().GetElapsed(Elapse::Seconds));
  EXPECT_EQ(20000000, Elapse(2).GetRawTimerTicks());
}

TEST(Elapse, EachUnitInTicks) {
  EXPECT_EQ(5, Ticks(500, Elapse::NanoSeconds));
  EXPECT_EQ(10, Ticks(1, Elapse::MicroSeconds));
  EXPECT_EQ(10000, Ticks(1, Elapse::MilliSeconds));
  EXPECT_EQ(10000000, Ticks(1, Elapse::Seconds));
  EXPECT_EQ(600000000, Ticks(1, Elapse::Minutes));
  EXPECT_EQ(36000000000, Ticks(1, Elapse::Hours));
  EXPECT_EQ(864000000000, Ticks(1, Elapse::Days));
  EXPECT_EQ(1, Ticks(1, Elapse::TimerTicks));
  EXPECT_EQ(-30000, Ticks(-3, Elapse::MilliSeconds));
  EXPECT_EQ(-30000000, Ticks(-3, Elapse::Seconds));
}

TEST(Elapse, InexactNanosecondsAreCorrectedUpward) {
  EXPECT_EQ(1, Ticks(1, Elapse::NanoSeconds));
  EXPECT_EQ(100.0, Elapse(1, Elapse::NanoSeconds).GetElapsed(Elapse::NanoSeconds));
  EXPECT_EQ(1, Ticks(99, Elapse::NanoSeconds));
  EXPECT_EQ(1, Ticks(100, Elapse::NanoSeconds));
  EXPECT_EQ(2, Ticks(101, Elapse::NanoSeconds));
  EXPECT_EQ(0, Ticks(0, Elapse::NanoSeconds));
  EXPECT_EQ(1, Ticks(-50, Elapse::NanoSeconds));
  EXPECT_EQ(-1, Ticks(-100, Elapse::NanoSeconds));
  EXPECT_EQ(0, Ticks(-150, Elapse::NanoSeconds));
}

TEST(Elapse, AlsoBelowZero) {
  EXPECT_EQ(1, Ticks(-50, Elapse::NanoSeconds));
  EXPECT_EQ(0, Ticks(-150, Elapse::NanoSeconds));
  EXPECT_EQ(-1, Ticks(-100, Elapse::NanoSeconds));
  EXPECT_EQ(-1, Ticks(-250, Elapse::NanoSeconds));
}

TEST(Elapse, ConstructorByPartsCutsOff) {
  EXPECT_EQ(Elapse(5, Elapse::Seconds), Elapse(0, 0, 5, 0));
  EXPECT_EQ(((26 * 60 + 3) * 60 + 4) * 10000000LL + 5, Elapse(26, 3, 4, 599).GetRawTimerTicks());
  EXPECT_EQ(0, Elapse(0, 0, 0, 99).GetRawTimerTicks());
  EXPECT_EQ(0, Elapse(0, 0, 0, -99).GetRawTimerTicks());
  EXPECT_EQ(-1, Elapse(0, 0, 0, -150).GetRawTimerTicks());
  EXPECT_EQ(-36000000000 + 600000000, Elapse(-1, 1, 0, 0).GetRawTimerTicks());
}

TEST(Elapse, ElapsedInWholeUnits) {
  EXPECT_EQ(4222.0, Elapse(4222, Elapse::MilliSeconds).GetElapsed(Elapse::MilliSeconds));
  EXPECT_EQ(1234500.0, Elapsed(12345, Elapse::NanoSeconds));
  EXPECT_EQ(1234.0, Elapsed(12345, Elapse::MicroSeconds));
  EXPECT_EQ(1.0, Elapsed(12345, Elapse::MilliSeconds));
  EXPECT_EQ(-1.0, Elapsed(-19999, Elapse::MilliSeconds));
  EXPECT_EQ(0.0, Elapsed(-9, Elapse::MicroSeconds));
}

TEST(Elapse, ElapsedWithFraction) {
  EXPECT_EQ(1.5, Elapsed(15000000, Elapse::Seconds));
  EXPECT_EQ(2.25, Elapsed(1350000000, Elapse::Minutes));
  EXPECT_EQ(0.5, Elapsed(18000000000, Elapse::Hours));
  EXPECT_EQ(-1.25, Elapsed(-1080000000000, Elapse::Days));
  EXPECT_EQ(12345.0, Elapsed(12345, Elapse::TimerTicks));
}

// An error of the class, with the parameter, the log name and the place.
template <class Operation>
void ExpectUnitRefused(const Operation& operation, const char* function) {
  try {
    operation();
    FAIL() << "nothing was raised";
  } catch (InvalidParameter& error) {
    EXPECT_EQ("Invalid Parameter: units = 8", error.GetData(AlertInfo::sMESSAGE));
    EXPECT_EQ("units", error.GetData(InvalidParameter::sPARAM_NAME));
    EXPECT_EQ("8", error.GetData(InvalidParameter::sPARAM_VALUE));
    EXPECT_EQ("Oxa.Core.Elapse", error.GetData(AlertInfo::sLOG_NAME));
    ASSERT_EQ(1u, error.GetUnwindStack()->size());
    EXPECT_EQ(function, error.GetUnwindStack()->front().Get(CodeContext::sFUNCTION));
  }
}

TEST(Elapse, AnUnknownUnitIsRefused) {
  const auto unknown = static_cast<Elapse::TimeUnits>(8);
  Elapse elapse(3);
  ExpectUnitRefused([&] { elapse.Assign(1, unknown); }, "Oxa::Core::Elapse::Assign");
  EXPECT_EQ(Elapse(3), elapse);
  ExpectUnitRefused([&] { Elapse(1, unknown); }, "Oxa::Core::Elapse::Assign");
  ExpectUnitRefused([&] { elapse.GetElapsed(unknown); }, "Oxa::Core::Elapse::GetElapsed");
}

TEST(Elapse, Arithmetic) {
  Elapse elapse(2);
  elapse += Elapse(3);
  EXPECT_EQ(Elapse(5), elapse);
  elapse -= Elapse(7);
  EXPECT_EQ(Elapse(-2), elapse);
  EXPECT_EQ(Elapse(5), Elapse(2) + Elapse(3));
  EXPECT_EQ(Elapse(-1), Elapse(2) - Elapse(3));
}

TEST(Elapse, ArithmeticWrapsAround) {
  const Elapse most(LLONG_MAX, Elapse::TimerTicks);
  const Elapse tick(1, Elapse::TimerTicks);
  EXPECT_EQ(LLONG_MIN, (most + tick).GetRawTimerTicks());
  EXPECT_EQ(LLONG_MAX, (Elapse(LLONG_MIN, Elapse::TimerTicks) - tick).GetRawTimerTicks());
  EXPECT_EQ(-10000000, Ticks(LLONG_MAX, Elapse::Seconds));
  EXPECT_EQ(-100.0, Elapsed(LLONG_MAX, Elapse::NanoSeconds));
  EXPECT_EQ(-10000, Ticks((1LL << 62) - 1, Elapse::MilliSeconds));
  EXPECT_EQ(-92233720368545515, Ticks(9223372036855, Elapse::MilliSeconds));
  EXPECT_EQ(-600000000, Ticks(LLONG_MAX, Elapse::Minutes));
  EXPECT_EQ(-36000000000, Ticks(LLONG_MAX, Elapse::Hours));
  EXPECT_EQ(-864000000000, Ticks(LLONG_MAX, Elapse::Days));
  EXPECT_EQ(-36000000000, Elapse(LONG_MAX, 0, 0, 0).GetRawTimerTicks());
}

TEST(Elapse, ElapsedIsMultipliedBeforeItIsDivided) {
  EXPECT_EQ(0.0, Elapsed(LLONG_MAX, Elapse::MicroSeconds));
  EXPECT_EQ(0.0, Elapsed(LLONG_MAX, Elapse::MilliSeconds));
}

TEST(Elapse, Comparisons) {
  const Elapse less(-1), more(1);
  EXPECT_TRUE(less < more && less <= more && less != more);
  EXPECT_FALSE(less > more || less >= more || less == more);
  EXPECT_TRUE(more > less && more >= less);
  EXPECT_TRUE(more == Elapse(1) && more <= Elapse(1) && more >= Elapse(1));
  EXPECT_FALSE(more != Elapse(1) || more < Elapse(1) || more > Elapse(1));
  EXPECT_EQ(Elapse(1000, Elapse::MilliSeconds), Elapse(1));
}

TEST(Elapse, TheInfiniteTimeout) {
  EXPECT_EQ(21474836470000000, Elapse(0x7FFFFFFF, Elapse::Seconds).GetRawTimerTicks());
}

TEST(ElapseText, ToString) {
  EXPECT_EQ("00:00:00.000.000.000", Elapse().ToString());
  EXPECT_EQ("-00:00:01.000.000.000", Elapse(-1, Elapse::Seconds).ToString());
  EXPECT_EQ("26:03:04.005.006.700", Elapse(26, 3, 4, 5006700).ToString());
  EXPECT_EQ("-26:03:04.005.006.700", (Elapse() - Elapse(26, 3, 4, 5006700)).ToString());
  EXPECT_EQ("00:00:00.000.000.100", Elapse(1, Elapse::TimerTicks).ToString());
  EXPECT_EQ("-00:00:00.000.000.100", Elapse(-1, Elapse::TimerTicks).ToString());
  EXPECT_EQ("24:00:00.000.000.000", Elapse(1, Elapse::Days).ToString());
  EXPECT_EQ("256204778:48:05.477.580.700", Elapse(LLONG_MAX, Elapse::TimerTicks).ToString());
  EXPECT_EQ("-256204778:48:05.477.580.800", Elapse(LLONG_MIN, Elapse::TimerTicks).ToString());
}

TEST(ElapseText, ParseAllItsForms) {
  EXPECT_EQ(Elapse(26, 3, 4, 5006700).GetRawTimerTicks(), Parsed("26:03:04.005.006.700"));
  EXPECT_EQ(Elapse(0, 3, 4, 0).GetRawTimerTicks(), Parsed("3:4"));
  EXPECT_EQ(Elapse(0, 0, 4, 0).GetRawTimerTicks(), Parsed("4"));
  EXPECT_EQ(Elapse(0, 0, 4, 5000000).GetRawTimerTicks(), Parsed("4.5"));
  EXPECT_EQ(Elapse(0, 0, 4, 5006000).GetRawTimerTicks(), Parsed("4.5.6"));
  EXPECT_EQ(Elapse(0, 0, 4, 5006700).GetRawTimerTicks(), Parsed("4.5.6.799"));
  EXPECT_EQ(Elapse(0, 0, 4, 0).GetRawTimerTicks(), Parsed(" \t4\r\n"));
}

TEST(ElapseText, ParseLosesTheSign) {
  EXPECT_EQ(10000000, Parsed("-00:00:01.000.000.000"));
  EXPECT_EQ(10000000, Parsed(" -1"));
  EXPECT_EQ(10000000, Parsed(Elapse(-1).ToString()));
}

TEST(ElapseText, ParseLeniently) {
  EXPECT_EQ(0, Parsed(""));
  EXPECT_EQ(0, Parsed("-"));
  EXPECT_EQ(0, Parsed("nothing"));
  EXPECT_EQ(0, Parsed("::"));
  EXPECT_EQ(40000000, Parsed("1:2:3:4")) << "too many parts: neither hours nor minutes";
  EXPECT_EQ(Elapse(1, 2, 0, 0).GetRawTimerTicks(), Parsed("1:2:3.1.1.1.1"))
      << "too many fractions: no seconds";
  EXPECT_EQ(Elapse(1, 0, 3, 0).GetRawTimerTicks(), Parsed("1:x:3y"));
  EXPECT_EQ(90 * 600000000LL, Parsed("90:0")) << "minutes have no limit";
  EXPECT_EQ(4294967295LL * 10000000, Parsed("99999999999")) << "fields have 32 bits";
}

TEST(ElapseText, ParseFieldsAsNumbersOf32Bits) {
  using namespace std::string_literals;
  const long long expected = Elapse(1, 2, 3, 0).GetRawTimerTicks();
  EXPECT_EQ(expected, Parsed("1.9:2.5:3")) << "a point counts only behind the last colon";
  EXPECT_EQ(expected, Parsed("1: +2:\t3"));
  EXPECT_EQ(expected, Parsed("+1:2:3"));
  EXPECT_EQ(expected, Parsed("1:2\0009:3\0007"s)) << "a zero ends a number";
  EXPECT_EQ(0, Parsed("\0005"s));
  EXPECT_EQ(4294967295LL * 600000000, Parsed("0:-1:0")) << "a minus inside wraps around";
  EXPECT_EQ(4294967294LL * 10000000, Parsed("--2"));
  EXPECT_EQ(0, Parsed("- -0"));
}

TEST(ElapseText, PositiveValuesSurviveTheWayThroughText) {
  std::mt19937_64 random(6);
  for (int round = 0; round < 20000; ++round) {
    const auto ticks = static_cast<long long>(random() >> (1 + random() % 60));
    const Elapse elapse(ticks, Elapse::TimerTicks);
    ASSERT_EQ(ticks, Parsed(elapse.ToString())) << elapse.ToString();
    ASSERT_EQ(ticks, Parsed((Elapse() - elapse).ToString()));
  }
}

TEST(ElapseText, PrintedBelowASecond) {
  EXPECT_EQ("0 nanoseconds", Printed(Elapse()));
  EXPECT_EQ("100 nanoseconds", Printed(Elapse(1, Elapse::TimerTicks)));
  EXPECT_EQ("1000 nanoseconds", Printed(Elapse(1, Elapse::MicroSeconds)));
  EXPECT_EQ("1.1 microseconds", Printed(Elapse(11, Elapse::TimerTicks)));
  EXPECT_EQ("1000 microseconds", Printed(Elapse(1, Elapse::MilliSeconds)));
  EXPECT_EQ("1.5 milliseconds", Printed(Elapse(1500, Elapse::MicroSeconds)));
  EXPECT_EQ("999 milliseconds", Printed(Elapse(999, Elapse::MilliSeconds)));
  EXPECT_EQ("1.0001 milliseconds", Printed(Elapse(10001, Elapse::TimerTicks)));
  EXPECT_EQ("1000 milliseconds", Printed(Elapse(9999999, Elapse::TimerTicks)));
}

TEST(ElapseText, PrintedNegative) {
  EXPECT_EQ("-100 nanoseconds", Printed(Elapse(-1, Elapse::TimerTicks)));
  EXPECT_EQ("-1e+09 nanoseconds", Printed(Elapse(-1)));
}

TEST(ElapseText, PrintedInSeconds) {
  EXPECT_EQ("1 seconds", Printed(Elapse(1)));
  EXPECT_EQ("1.5 seconds", Printed(Elapse(1500, Elapse::MilliSeconds)));
  EXPECT_EQ("59.9 seconds", Printed(Elapse(59900, Elapse::MilliSeconds)));
  EXPECT_EQ("60 seconds", Printed(Elapse(599999999, Elapse::TimerTicks)));
}

TEST(ElapseText, PrintedAsAClock) {
  EXPECT_EQ("1:0", Printed(Elapse(60)));
  EXPECT_EQ("2:5", Printed(Elapse(125999, Elapse::MilliSeconds)));
  EXPECT_EQ("60:0", Printed(Elapse(1, Elapse::Hours)));
  EXPECT_EQ("1:0:1", Printed(Elapse(3601)));
  EXPECT_EQ("3:0:12", Printed(Elapse(3 * 3600 + 12)));
  EXPECT_EQ("23:59:59", Printed(Elapse(86399)));
  EXPECT_EQ("1440:0", Printed(Elapse(1, Elapse::Days)));
  EXPECT_EQ("23:59:59", Printed(Elapse(864000000000 - 1, Elapse::TimerTicks)));
  EXPECT_EQ("24:0:0", Printed(Elapse(864000000000 + 1, Elapse::TimerTicks)));
  EXPECT_EQ("1:0:1", Printed(Elapse(86401)));
  EXPECT_EQ("1:60:0", Printed(Elapse(25, Elapse::Hours)));
  EXPECT_EQ("1:1:0:1", Printed(Elapse(25 * 3600 + 1)));
  EXPECT_EQ("2:0:0", Printed(Elapse(2, Elapse::Days)));
}

}  // namespace
