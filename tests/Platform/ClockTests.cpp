#include "Platform/Clock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <random>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

namespace Platform = Oxa::Core::Platform;

#include "Support/ThreadSanitizer.h"

namespace {

using Platform::DateTime;

constexpr long long iSECOND = 10000000;
constexpr long long iDAY = 86400 * iSECOND;
constexpr long long i1970 = 116444736000000000;
constexpr long long iLAST = 9223149887999999999;  // the last tick of the year 30827

auto Fields(const DateTime& time) {
  return std::make_tuple(time.m_iYear, time.m_iMonth, time.m_iDay, time.m_iHour, time.m_iMinute,
                         time.m_iSecond, time.m_iMilliSecond);
}

const DateTime g_UNTOUCHED = {1, 2, 3, 4, 5, 6, 7};

std::string Text(const DateTime& time) {
  std::string text = "untouched";
  return Platform::DateTimeText(time, text) == 0 ? text : "refused, " + text;
}

std::string Utc(long long ticks) {
  DateTime utc;
  return Platform::TicksToUtc(ticks, utc) == 0 ? Text(utc) : "refused";
}

class ClockOffset {
 public:
  explicit ClockOffset(long long now, long long monotonic = 0) { Platform::SetClockOffset(now, monotonic); }
  ~ClockOffset() { Platform::SetClockOffset(0, 0); }
};

TEST(Clock, NowIsTheSystemsTime) {
  const auto now = [] {
    const auto since1970 = std::chrono::system_clock::now().time_since_epoch();
    return i1970 + std::chrono::duration_cast<std::chrono::nanoseconds>(since1970).count() / 100;
  };
  const long long before = now();
  const long long ticks = Platform::NowTicks();
  const long long after = now();
  EXPECT_GE(ticks, before);
  EXPECT_LE(ticks, after);
}

TEST(Clock, TheMonotonicClockNeverRunsBackwards) {
  long long last = Platform::MonotonicTicks();
  for (int i = 0; i < 10000; ++i) {
    const long long ticks = Platform::MonotonicTicks();
    ASSERT_GE(ticks, last);
    last = ticks;
  }
}

TEST(Clock, TheOffsetMovesBothClocks) {
  const long long now = Platform::NowTicks();
  const long long monotonic = Platform::MonotonicTicks();
  const ClockOffset offset(1000 * iDAY, -7 * iDAY);
  EXPECT_GE(Platform::NowTicks(), now + 1000 * iDAY);
  EXPECT_LT(Platform::NowTicks(), now + 1001 * iDAY);
  EXPECT_LT(Platform::MonotonicTicks(), monotonic - 6 * iDAY);
  EXPECT_GE(Platform::MonotonicTicks(), monotonic - 7 * iDAY);
}

TEST(Clock, AnOffsetBeyondTheRangeWrapsAround) {
  const ClockOffset offset(LLONG_MAX);
  EXPECT_LT(Platform::NowTicks(), 0);
}

TEST(Calendar, KnownMoments) {
  EXPECT_EQ("1601/01/01 00:00:00.000", Utc(0));
  EXPECT_EQ("1601/01/01 00:00:00.000", Utc(9999)) << "below the millisecond is cut off";
  EXPECT_EQ("1601/01/01 00:00:00.001", Utc(10000));
  EXPECT_EQ("1601/01/01 23:59:59.999", Utc(iDAY - 1));
  EXPECT_EQ("1601/01/02 00:00:00.000", Utc(iDAY));
  EXPECT_EQ("1970/01/01 00:00:00.000", Utc(i1970));
  EXPECT_EQ("2000/02/29 12:34:56.789", Utc(125963012967890000));
  EXPECT_EQ("1900/03/01 00:00:00.000", Utc(94405824000000000));
  EXPECT_EQ("1900/02/28 23:59:59.999", Utc(94405824000000000 - 1)) << "1900 had no leap day";
  EXPECT_EQ("30827/12/31 23:59:59.999", Utc(iLAST));
}

TEST(Calendar, RefusesMomentsOutside) {
  for (const long long ticks : {-1LL, LLONG_MIN, iLAST + 1, LLONG_MAX}) {
    DateTime fields = g_UNTOUCHED;
    EXPECT_NE(0, Platform::TicksToUtc(ticks, fields)) << ticks;
    EXPECT_NE(0, Platform::TicksToLocal(ticks, fields)) << ticks;
    EXPECT_EQ(Fields(g_UNTOUCHED), Fields(fields));
    EXPECT_EQ("", Platform::LocalTimeText(ticks));
  }
}

TEST(Calendar, RefusesWhatIsNoDate) {
  const DateTime refused[] = {
      {1600, 6, 1, 0, 0, 0, 0},   {30828, 6, 1, 0, 0, 0, 0},   {2004, 0, 1, 0, 0, 0, 0},
      {2004, 13, 1, 0, 0, 0, 0},  {2004, 1, 0, 0, 0, 0, 0},    {2004, 1, 32, 0, 0, 0, 0},
      {2004, 2, 30, 0, 0, 0, 0},  {2003, 2, 29, 0, 0, 0, 0},   {1900, 2, 29, 0, 0, 0, 0},
      {2004, 4, 31, 0, 0, 0, 0},  {2004, 6, 31, 0, 0, 0, 0},   {2004, 9, 31, 0, 0, 0, 0},
      {2004, 11, 31, 0, 0, 0, 0}, {2004, 1, 1, 24, 0, 0, 0},   {2004, 1, 1, 0, 60, 0, 0},
      {2004, 1, 1, 0, 0, 60, 0},  {2004, 1, 1, 0, 0, 0, 1000}, {-1, 1, 1, 0, 0, 0, 0},
      {2004, -1, 1, 0, 0, 0, 0},  {2004, 1, -1, 0, 0, 0, 0},   {2004, 1, 1, -1, 0, 0, 0},
      {2004, 1, 1, 0, -1, 0, 0},  {2004, 1, 1, 0, 0, -1, 0},   {2004, 1, 1, 0, 0, 0, -1},
      {0, 0, 0, 0, 0, 0, 0},
  };
  for (const DateTime& fields : refused) {
    DateTime utc = g_UNTOUCHED;
    long long ticks = 42;
    EXPECT_NE(0, Platform::LocalToUtc(fields, utc)) << testing::PrintToString(Fields(fields));
    EXPECT_NE(0, Platform::UtcToTicks(fields, ticks)) << testing::PrintToString(Fields(fields));
    EXPECT_EQ(Fields(g_UNTOUCHED), Fields(utc));
    EXPECT_EQ(42, ticks);
    EXPECT_EQ("refused, untouched", Text(fields));
  }
}

TEST(Calendar, EveryDayHasItsDate) {
  OXA_SKIP_UNDER_THREAD_SANITIZER("one thread, and much that is watched for nothing");
  DateTime last;
  ASSERT_EQ(0, Platform::TicksToUtc(0, last));
  for (long long day = 1; day * iDAY < iLAST; ++day) {
    DateTime date;
    long long ticks = 0;
    ASSERT_EQ(0, Platform::TicksToUtc(day * iDAY, date));
    ASSERT_EQ(0, Platform::UtcToTicks(date, ticks));
    ASSERT_EQ(day * iDAY, ticks) << Text(date);
    if (date.m_iDay == 1) {
      ASSERT_EQ(date.m_iMonth == 1 ? 12 : date.m_iMonth - 1, last.m_iMonth);
    } else {
      ASSERT_EQ(last.m_iDay + 1, date.m_iDay);
      ASSERT_EQ(last.m_iMonth, date.m_iMonth);
    }
    ASSERT_EQ(date.m_iYear, last.m_iYear + (date.m_iMonth == 1 && date.m_iDay == 1 ? 1 : 0));
    last = date;
  }
  EXPECT_EQ(30827, last.m_iYear);
}

TEST(Calendar, TicksSurviveTheWayThroughFields) {
  std::mt19937_64 random(3);
  for (int round = 0; round < 100000; ++round) {
    const long long ticks =
        static_cast<long long>(random() % static_cast<unsigned long long>(iLAST)) / 10000 * 10000;
    DateTime utc;
    long long back = -1;
    ASSERT_EQ(0, Platform::TicksToUtc(ticks, utc));
    ASSERT_EQ(0, Platform::UtcToTicks(utc, back));
    ASSERT_EQ(ticks, back);
  }
}

TEST(Calendar, ADayMoreAtEitherEndHasTicks) {
  long long ticks = 0;
  EXPECT_EQ(0, Platform::UtcToTicks({1600, 12, 31, 0, 0, 0, 0}, ticks));
  EXPECT_EQ(-iDAY, ticks);
  EXPECT_EQ(0, Platform::UtcToTicks({30828, 1, 1, 23, 59, 59, 999}, ticks));
  EXPECT_EQ(iLAST - 9999 + iDAY, ticks);
}

TEST(Calendar, TextOfFields) {
  EXPECT_EQ("1998/08/23 02:33:17.123", Text({1998, 8, 23, 2, 33, 17, 123}));
  EXPECT_EQ("1601/01/01 00:00:00.000", Text({1601, 1, 1, 0, 0, 0, 0}));
  EXPECT_EQ("2024/12/31 23:59:59.007", Text({2024, 12, 31, 23, 59, 59, 7}));
  EXPECT_EQ("12345/06/07 08:09:10.011", Text({12345, 6, 7, 8, 9, 10, 11}));
}

TEST(Calendar, LocalTextIsTheTextOfTheLocalFields) {
  for (const long long ticks : {i1970, Platform::NowTicks(), iDAY, iLAST - iDAY}) {
    DateTime local;
    ASSERT_EQ(0, Platform::TicksToLocal(ticks, local));
    EXPECT_EQ(Text(local), Platform::LocalTimeText(ticks));
  }
}

TEST(Calendar, LocalTextIsRightOnManyThreadsAtOnce) {
  std::vector<std::thread> threads;
  std::atomic<int> wrong{0};
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([thread, &wrong] {
      for (int i = 0; i < 2000; ++i) {
        const long long ticks = i1970 + (i * 4 + thread) * 5 * iDAY;
        DateTime local;
        std::string text;
        Platform::TicksToLocal(ticks, local);
        Platform::DateTimeText(local, text);
        if (text.empty() || text != Platform::LocalTimeText(ticks)) ++wrong;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(0, wrong);
}

TEST(Sleep, LastsAsLongAsAsked) {
  const long long start = Platform::MonotonicTicks();
  Platform::SleepMilliseconds(30);
  EXPECT_GE(Platform::MonotonicTicks() - start, 30 * iSECOND / 1000);
}

TEST(Sleep, OfNothingReturns) {
  const long long start = Platform::MonotonicTicks();
  Platform::SleepMilliseconds(0);
  EXPECT_LT(Platform::MonotonicTicks() - start, 10 * iSECOND);
}

}  // namespace
