#include <Infrastructure/OxaCore/Chrono.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <ratio>

using namespace Oxa::Core;
using namespace std::chrono_literals;
using std::chrono::duration;
using std::chrono::system_clock;

namespace {

constexpr long long llMOST = std::numeric_limits<long long>::max();
constexpr long long llLEAST = std::numeric_limits<long long>::min();
constexpr long long llUNIX_EPOCH = 116444736000000000;

template <class Span>
long long TicksOf(const Span& span) {
  return ToElapse(span).GetRawTimerTicks();
}

Elapse Ticks(long long ticks) { return Elapse(ticks, Elapse::TimerTicks); }

Time Moment(long long ticks) { return Time(ticks, Time::ePlatformTimeCurrent); }

TEST(Chrono, WholeTicksConvertExactly) {
  EXPECT_EQ(0, TicksOf(0s));
  EXPECT_EQ(1, TicksOf(100ns));
  EXPECT_EQ(-12345, TicksOf(-1234500ns));
  EXPECT_EQ(10, TicksOf(1us));
  EXPECT_EQ(10000, TicksOf(1ms));
  EXPECT_EQ(36000000000, TicksOf(1h));
  EXPECT_EQ(Elapse(3, Elapse::Minutes), ToElapse(3min));
  EXPECT_EQ(20000000, TicksOf(duration<unsigned char>(2)));
}

TEST(Chrono, PartsOfATickAreCutTowardsZero) {
  EXPECT_EQ(0, TicksOf(99ns));
  EXPECT_EQ(0, TicksOf(-99ns));
  EXPECT_EQ(1, TicksOf(199ns));
  EXPECT_EQ(-1, TicksOf(-199ns));
  EXPECT_EQ(3333333, TicksOf(duration<int, std::ratio<1, 3>>(1)));
  EXPECT_EQ(-6666666, TicksOf(duration<int, std::ratio<1, 3>>(-2)));
  EXPECT_EQ(12, TicksOf(duration<double, std::micro>(1.29)));
  EXPECT_EQ(-12, TicksOf(duration<float, std::micro>(-1.25F)));
}

// No fraction is what is written: a double of 0.3 lies below 0.3.
TEST(Chrono, FractionsAreWhatTheirPrecisionCanTell) {
  EXPECT_EQ(3000000, TicksOf(duration<double>(0.3)));
  EXPECT_EQ(-3000000, TicksOf(duration<double>(-0.3)));
  EXPECT_EQ(3000000, TicksOf(duration<float>(0.3F)));
  EXPECT_EQ(0, TicksOf(duration<double>(0.99e-7)));
  EXPECT_EQ(2999999, TicksOf(duration<double>(0.29999999)));
  EXPECT_EQ(2999999, TicksOf(duration<double, std::micro>(299999.9999999)));
  EXPECT_EQ(255, ChronoDetail::Convert<duration<unsigned char>>(duration<double>(254.99999999999997),
                                                                ChronoDetail::ERounding::eTO_ZERO)
                     .count());
}

template <class Span>
void ExpectRoundTrips(long long from, long long step) {
  using Point = std::chrono::time_point<system_clock, Span>;
  for (long long i = 0; i < 5000; ++i) {
    const long long ticks = from + i * step;
    ASSERT_EQ(ticks, TicksOf(ToDuration<Span>(Ticks(ticks))));
    ASSERT_EQ(-ticks, TicksOf(ToDuration<Span>(Ticks(-ticks))));
    const Time moment = Moment(llUNIX_EPOCH + ticks);
    ASSERT_EQ(moment, ToTime(Point(ToTimePoint<Span>(moment))));
    const Time past = Moment(llUNIX_EPOCH - ticks);
    ASSERT_EQ(past, ToTime(Point(ToTimePoint<Span>(past))));
  }
}

TEST(Chrono, TicksComeBackFromFractions) {
  for (const long long step : {1LL, 7LL, 99991LL, 1000000007LL}) {
    ExpectRoundTrips<duration<double>>(0, step);
    ExpectRoundTrips<duration<double, std::milli>>(0, step);
    ExpectRoundTrips<duration<double>>(36000000000, step);
    ExpectRoundTrips<duration<double, std::milli>>(36000000000, step);
    ExpectRoundTrips<duration<double, std::ratio<3600>>>(36000000000, step);
  }
}

TEST(Chrono, WhatIsTooLongIsTheLongest) {
  EXPECT_EQ(llMOST, TicksOf(std::chrono::hours::max()));
  EXPECT_EQ(llLEAST, TicksOf(std::chrono::hours::min()));
  EXPECT_EQ(llMOST, TicksOf(duration<std::uint64_t, std::ratio<1, 10000000>>(1ULL << 63U)));
  EXPECT_EQ(llLEAST, TicksOf(TickDuration(llLEAST)));
  EXPECT_EQ(llMOST, TicksOf(TickDuration(llMOST)));
  // Three of these are ten ticks: what its rest adds is too much for the largest number of all.
  EXPECT_EQ(llMOST, TicksOf(duration<long long, std::ratio<1, 3000000>>(5534023222112865485)));
  EXPECT_EQ(llMOST, TicksOf(duration<double>(1e30)));
  EXPECT_EQ(llLEAST, TicksOf(duration<double>(-std::numeric_limits<double>::infinity())));
  EXPECT_EQ(0, TicksOf(duration<double>(std::numeric_limits<double>::quiet_NaN())));
}

TEST(Chrono, SpansConvertToTheUnitThatIsAskedFor) {
  EXPECT_EQ(TickDuration(7), ToDuration(Ticks(7)));
  EXPECT_EQ(700ns, ToDuration<std::chrono::nanoseconds>(Ticks(7)));
  EXPECT_EQ(1s, ToDuration<std::chrono::seconds>(Elapse(1999, Elapse::MilliSeconds)));
  EXPECT_EQ(-1s, ToDuration<std::chrono::seconds>(Elapse(-1999, Elapse::MilliSeconds)));
  EXPECT_DOUBLE_EQ(0.5, ToDuration<duration<double>>(Elapse(500, Elapse::MilliSeconds)).count());
  EXPECT_EQ(32767, ToDuration<duration<short>>(Elapse(40000)).count());
  EXPECT_EQ(-32768, ToDuration<duration<short>>(Elapse(-40000)).count());
  EXPECT_EQ(0U, ToDuration<duration<unsigned>>(Elapse(-1)).count());
  EXPECT_EQ(std::chrono::nanoseconds::max(), ToDuration<std::chrono::nanoseconds>(Ticks(llMOST)));
  EXPECT_EQ(std::chrono::nanoseconds::min(), ToDuration<std::chrono::nanoseconds>(Ticks(llLEAST)));
  EXPECT_EQ(TickDuration(llLEAST), ToDuration(Ticks(llLEAST)));
}

TEST(Chrono, MomentsCountFromTheSystemClocksEpoch) {
  EXPECT_EQ(llUNIX_EPOCH, ToTime(system_clock::time_point()).GetRawTimerTicks());
  EXPECT_EQ(llUNIX_EPOCH + 10000000, ToTime(system_clock::time_point(1s)).GetRawTimerTicks());
  EXPECT_EQ(TickTimePoint(TickDuration(-llUNIX_EPOCH)), ToTimePoint(Moment(0)));
  EXPECT_EQ(TickTimePoint(), ToTimePoint(Moment(llUNIX_EPOCH)));
}

TEST(Chrono, MomentsAreCutTowardsThePast) {
  EXPECT_EQ(llUNIX_EPOCH, ToTime(system_clock::time_point(99ns)).GetRawTimerTicks());
  EXPECT_EQ(llUNIX_EPOCH - 1, ToTime(system_clock::time_point(-1ns)).GetRawTimerTicks());
  EXPECT_EQ(llUNIX_EPOCH - 1, ToTime(system_clock::time_point(-100ns)).GetRawTimerTicks());
  EXPECT_EQ(llUNIX_EPOCH - 2, ToTime(system_clock::time_point(-101ns)).GetRawTimerTicks());
  using Seconds = std::chrono::time_point<system_clock, std::chrono::seconds>;
  EXPECT_EQ(Seconds(0s), ToTimePoint<std::chrono::seconds>(Moment(llUNIX_EPOCH + 9999999)));
  EXPECT_EQ(Seconds(-1s), ToTimePoint<std::chrono::seconds>(Moment(llUNIX_EPOCH - 1)));
  using Reals = std::chrono::time_point<system_clock, duration<double, std::micro>>;
  EXPECT_EQ(llUNIX_EPOCH - 13, ToTime(Reals(duration<double, std::micro>(-1.25))).GetRawTimerTicks());
}

TEST(Chrono, WhatIsTooFarAwayIsTheFurthest) {
  using Hours = std::chrono::time_point<system_clock, std::chrono::hours>;
  EXPECT_EQ(llMOST, ToTime(Hours::max()).GetRawTimerTicks());
  EXPECT_EQ(llLEAST + llUNIX_EPOCH, ToTime(Hours::min()).GetRawTimerTicks());
  EXPECT_EQ(system_clock::time_point::max(), ToTimePoint<system_clock::duration>(Moment(llMOST)));
  EXPECT_EQ(system_clock::time_point::min(), ToTimePoint<system_clock::duration>(Moment(0)));
  EXPECT_EQ(TickTimePoint::min(), ToTimePoint(Moment(llLEAST)));
}

TEST(Chrono, NowIsNow) {
  const auto before = system_clock::now();
  const Time now;
  const auto after = system_clock::now();
  EXPECT_LE(ToTime(before), now);
  EXPECT_GE(ToTime(after), now);
  EXPECT_EQ(now, ToTime(ToTimePoint(now)));
  EXPECT_EQ(now, ToTime(ToTimePoint<system_clock::duration>(now)));
}

}  // namespace
