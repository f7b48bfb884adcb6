// Moments and dates. Run in many zones: nothing here may depend on one.
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/SystemTools.h>
#include <Infrastructure/OxaCore/Time.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <cstring>
#include <random>
#include <sstream>
#include <string>
#include <type_traits>

namespace {

using namespace Oxa::Core;

static_assert(sizeof(Time) == 8 && std::is_trivially_copyable_v<Time> && !std::is_polymorphic_v<Time>);
static_assert(std::is_same_v<const long, decltype(Time::NSEC_PER_USEC)>);

Time At(long long ticks) { return Time(ticks, Time::ePlatformTimeCurrent); }

long long SystemTicks() {
  const auto since1970 = std::chrono::system_clock::now().time_since_epoch();
  return 116444736000000000 + std::chrono::duration_cast<std::chrono::nanoseconds>(since1970).count() / 100;
}

// Raises the error of this subsystem, from the given place, with the system's text for a bad argument.
template <class Operation>
void ExpectRefused(const Operation& operation, const std::string& function) {
  try {
    operation();
    FAIL() << "nothing was raised";
  } catch (Time::OsTimeApiError& error) {
    EXPECT_EQ(std::string("Call to operating system time API failed with error:\n ") + std::strerror(EINVAL),
              error.GetData(AlertInfo::sMESSAGE));
    EXPECT_EQ("Oxa.Core.Time", error.GetData(AlertInfo::sLOG_NAME));
    EXPECT_EQ("OperatingSystem", error.GetData(AlertInfo::sCATEGORY));
    EXPECT_EQ(2, error.GetSeverity());
    ASSERT_EQ(1u, error.GetUnwindStack()->size());
    EXPECT_EQ(function, error.GetUnwindStack()->front().Get(CodeContext::sFUNCTION));
  }
}

TEST(Time, Constants) {
  EXPECT_EQ(1000, Time::NSEC_PER_USEC);
  EXPECT_EQ(1000, Time::USEC_PER_MSEC);
  EXPECT_EQ(1000000, Time::NSEC_PER_MSEC);
  EXPECT_EQ(1000, Time::MSEC_PER_SEC);
  EXPECT_EQ(1000000, Time::USEC_PER_SEC);
  EXPECT_EQ(1000000000, Time::NSEC_PER_SEC);
  EXPECT_EQ(60, Time::SEC_PER_MIN);
  EXPECT_EQ(60, Time::MIN_PER_HOUR);
  EXPECT_EQ(3600, Time::SEC_PER_HOUR);
  EXPECT_EQ(24, Time::HOUR_PER_DAY);
  EXPECT_EQ(1440, Time::MIN_PER_DAY);
  EXPECT_EQ(86400, Time::SEC_PER_DAY);
}

TEST(Time, Platforms) {
  EXPECT_EQ(0, Time::ePlatformTimeCurrent);
  EXPECT_EQ(1, Time::ePlatformTimeWindows);
  EXPECT_EQ(2, Time::ePlatformTimeSeconds);
  EXPECT_EQ(Time::ePlatformTimeWindows, Time::GetPlatformTimeInfo());
}

TEST(Time, Now) {
  const long long before = SystemTicks();
  const Time now;
  const long long after = SystemTicks();
  EXPECT_GE(now.GetRawTimerTicks(), before);
  EXPECT_LE(now.GetRawTimerTicks(), after);
  EXPECT_GT(now, Time(8, 23, 1998, Elapse(0, Elapse::Seconds)));
}

TEST(Time, FromNow) {
  const long long before = SystemTicks();
  const Time later = Elapse(1, Elapse::Hours);
  EXPECT_GE(later.GetRawTimerTicks(), before + 36000000000);
  EXPECT_LE(later.GetRawTimerTicks(), SystemTicks() + 36000000000);
}

TEST(Time, OfADate) {
  const Time time(12, 23, 2004, Elapse(0, Elapse::Seconds));
  EXPECT_EQ(2004, time.Year());
  EXPECT_EQ(12, time.Month());
  EXPECT_EQ(23, time.Day());
  EXPECT_EQ(0, time.Hour());
  EXPECT_EQ(0, time.Minute());
  EXPECT_EQ(0, time.Second());
  EXPECT_EQ(0, time.MilliSecond());
  EXPECT_EQ(0, time.MicroSecond());
}

TEST(Time, OfADateOfThisYear) {
  const long before = Time().Year();
  const Time time(2, 28, Elapse(23, 59, 58, 0));
  const long after = Time().Year();
  EXPECT_GE(time.Year(), before);
  EXPECT_LE(time.Year(), after);
  EXPECT_EQ(2, time.Month());
  EXPECT_EQ(28, time.Day());
  EXPECT_EQ(23, time.Hour());
  EXPECT_EQ(59, time.Minute());
  EXPECT_EQ(58, time.Second());
}

TEST(Time, SpanBeyondTheDayGoesOn) {
  EXPECT_EQ(Time(1, 2, 2004, Elapse(0)), Time(1, 1, 2004, Elapse(1, Elapse::Days)));
}

TEST(Time, FieldsOfAMoment) {
  const Time time = Time(8, 23, 1998, Elapse(2, 33, 17, 123456700));
  EXPECT_EQ(1998, time.Year());
  EXPECT_EQ(8, time.Month());
  EXPECT_EQ(23, time.Day());
  EXPECT_EQ(2, time.Hour());
  EXPECT_EQ(33, time.Minute());
  EXPECT_EQ(17, time.Second());
  EXPECT_EQ(123, time.MilliSecond());
  EXPECT_EQ(456, time.MicroSecond());
  EXPECT_EQ(999, (time + Elapse(5432, Elapse::TimerTicks)).MicroSecond());
  EXPECT_EQ(0, (time + Elapse(5433, Elapse::TimerTicks)).MicroSecond());
}

TEST(Time, DatesThatAreRefused) {
  const long dates[][3] = {
      {0, 1, 2004},     {13, 1, 2004},    {1, 0, 2004},        {1, 32, 2004},       {2, 30, 2004},
      {2, 29, 2003},    {4, 31, 2004},    {1, 1, 1600},        {1, 1, 30828},       {1, 1, 0},
      {1, 1, -2004},    {-1, 1, 2004},    {1, -1, 2004},       {1L << 32, 1, 2004}, {1, (1L << 32) + 1, 2004},
      {65537, 1, 2004}, {1, 65537, 2004}, {1, 1, 65536 + 2004}};
  for (const auto& date : dates) {
    SCOPED_TRACE(testing::Message() << date[0] << '/' << date[1] << '/' << date[2]);
    ExpectRefused([&] { Time(date[0], date[1], date[2], Elapse()); }, "ConvertToUTCTime");
  }
  ExpectRefused([] { Time(2, 30, Elapse()); }, "ConvertToUTCTime");
}

TEST(Time, LeapDaysExist) {
  EXPECT_EQ(29, Time(2, 29, 2004, Elapse()).Day());
  EXPECT_EQ(29, Time(2, 29, 2000, Elapse()).Day());
  ExpectRefused([] { Time(2, 29, 1900, Elapse()); }, "ConvertToUTCTime");
}

TEST(Time, MomentsThatCantBeBrokenDown) {
  for (const long long ticks : {-1LL, LLONG_MIN, LLONG_MAX}) {
    const Time time = At(ticks);
    ExpectRefused([&] { time.Year(); }, "GetLocalSystemTime");
    ExpectRefused([&] { time.Month(); }, "GetLocalSystemTime");
    ExpectRefused([&] { time.Day(); }, "GetLocalSystemTime");
    ExpectRefused([&] { time.Hour(); }, "GetLocalSystemTime");
    ExpectRefused([&] { time.Minute(); }, "GetLocalSystemTime");
    ExpectRefused([&] { time.Second(); }, "GetLocalSystemTime");
    ExpectRefused([&] { time.MilliSecond(); }, "GetLocalSystemTime");
    ExpectRefused([&] { time.MonthName(); }, "GetLocalSystemTime");
    ExpectRefused([&] { time.MonthAbbreviation(); }, "GetLocalSystemTime");
    ExpectRefused([&] { time.ToString(); }, "GetLocalSystemTime");
    ExpectRefused([&] { time.MicroSecond(); }, "WindowsFileTime::GetSystemTime");
  }
}

TEST(Time, EpochNeverRaises) {
  const Time epoch = Time::GetEpoch();
  EXPECT_LT(epoch, At(864000000000));
  EXPECT_GT(epoch, At(-864000000000));
  EXPECT_EQ(epoch, Time(1, 1, 1601, Elapse()));
}

TEST(Time, CountsFromLocal1970) {
  const Time base(1, 1, 1970, Elapse(0, Elapse::Seconds));
  EXPECT_EQ(base, Time(0LL));
  EXPECT_EQ(base.GetRawTimerTicks() + 12345, Time(12345LL).GetRawTimerTicks()) << "ticks, unscaled";
  EXPECT_EQ(base.GetRawTimerTicks() - 1, Time(-1LL).GetRawTimerTicks());
  Time assigned;
  assigned = 12345LL;
  EXPECT_EQ(Time(12345LL), assigned);
}

TEST(Time, AssignByPlatform) {
  EXPECT_EQ(12345, Time(12345, Time::ePlatformTimeCurrent).GetRawTimerTicks());
  EXPECT_EQ(-12345, Time(-12345, Time::ePlatformTimeWindows).GetRawTimerTicks());
  EXPECT_EQ(Time(12345LL), Time(12345, Time::ePlatformTimeSeconds)) << "not scaled";
  Time time = At(7);
  time.Assign(3, Time::ePlatformTimeWindows);
  EXPECT_EQ(At(3), time);
}

TEST(Time, AnUnknownPlatformIsAFailedAssertion) {
  Time time = At(7);
  testing::internal::CaptureStderr();
  time.Assign(3, static_cast<Time::EPlatformTimeInfo>(3));
  const std::string output = testing::internal::GetCapturedStderr();
  EXPECT_NE(std::string::npos, output.find("): Failed Assertion(false)\n")) << output;
  EXPECT_EQ(At(7), time);
}

TEST(Time, OfAnUnknownPlatformIsZero) {
  testing::internal::CaptureStderr();
  const Time time(3, static_cast<Time::EPlatformTimeInfo>(3));
  const std::string output = testing::internal::GetCapturedStderr();
  EXPECT_NE(std::string::npos, output.find("): Failed Assertion(false)\n")) << output;
  EXPECT_EQ(At(0), time);
}

TEST(Time, RawValues) {
  const Time time = At(125963012967891234);
  EXPECT_EQ(125963012967891234, time.GetRawTimerTicks());
  EXPECT_EQ(12596301296, time.GetRawSeconds());
  EXPECT_EQ(static_cast<long long>(125963012967891234ULL * 100), time.GetRawNanoSeconds()) << "wraps around";
  EXPECT_EQ(0, At(-9999999).GetRawSeconds());
  EXPECT_EQ(-1, At(-10000000).GetRawSeconds());
  EXPECT_EQ(-500, At(-5).GetRawNanoSeconds());
}

TEST(Time, MonthNames) {
  const char* const names[] = {"January", "February", "March",     "April",   "May",      "June",
                               "July",    "August",   "September", "October", "November", "December"};
  for (long month = 1; month <= 12; ++month) {
    const Time time(month, 15, 2004, Elapse());
    EXPECT_EQ(names[month - 1], time.MonthName());
    EXPECT_EQ(std::string(names[month - 1]).substr(0, 3), time.MonthAbbreviation());
  }
}

TEST(Time, LeftAndSince) {
  const Time later = Elapse(1, Elapse::Hours);
  const Elapse left = later.TimeLeft();
  EXPECT_LE(left, Elapse(1, Elapse::Hours));
  EXPECT_GT(left, Elapse(50, Elapse::Minutes));
  const Elapse since = later.TimeSince();
  EXPECT_GE(since, Elapse(-1, Elapse::Hours));
  EXPECT_LT(since, Elapse(-50, Elapse::Minutes));
}

TEST(Time, Arithmetic) {
  Time time = At(1000);
  EXPECT_EQ(At(1005), time + Elapse(5, Elapse::TimerTicks));
  EXPECT_EQ(At(995), time - Elapse(5, Elapse::TimerTicks));
  EXPECT_EQ(Elapse(-5, Elapse::TimerTicks), At(995) - time);
  time += Elapse(7, Elapse::TimerTicks);
  EXPECT_EQ(At(1007), time);
  time -= Elapse(8, Elapse::TimerTicks);
  EXPECT_EQ(At(999), time);
}

TEST(Time, ArithmeticWrapsAround) {
  const Elapse tick(1, Elapse::TimerTicks);
  EXPECT_EQ(At(LLONG_MIN), At(LLONG_MAX) + tick);
  EXPECT_EQ(At(LLONG_MAX), At(LLONG_MIN) - tick);
  EXPECT_EQ(tick, At(LLONG_MIN) - At(LLONG_MAX));
  const Time beyond = Time(1LL) + Elapse(LLONG_MAX, Elapse::TimerTicks);
  EXPECT_EQ(beyond - tick, Time(LLONG_MAX)) << "local 1970 and more than there is room for";
  EXPECT_EQ(At(LLONG_MIN) + (Time(0LL) - At(1)), Time(LLONG_MAX));
}

TEST(Time, Comparisons) {
  const Time early = At(-1), late = At(1);
  EXPECT_EQ(0, early.Compare(At(-1)));
  EXPECT_EQ(-1, early.Compare(late));
  EXPECT_EQ(1, late.Compare(early));
  EXPECT_TRUE(early < late && early <= late && early != late && early <= At(-1) && early >= At(-1));
  EXPECT_FALSE(early > late || early >= late || early == late || early < At(-1) || early > At(-1));
  EXPECT_TRUE(late > early && late >= early && late == At(1));
  EXPECT_FALSE(late != At(1));
}

TEST(TimeText, ToString) {
  EXPECT_EQ("1998/08/23 02:33:17.123", Time(8, 23, 1998, Elapse(2, 33, 17, 123000000)).ToString());
  EXPECT_EQ("2004/12/31 23:59:59.999", Time(12, 31, 2004, Elapse(23, 59, 59, 999999900)).ToString());
  EXPECT_EQ("2004/02/29 00:00:00.000", Time(2, 29, 2004, Elapse()).ToString());
  EXPECT_EQ("12345/06/07 01:02:03.004", Time(6, 7, 12345, Elapse(1, 2, 3, 4000000)).ToString());
}

TEST(TimeText, Printed) {
  std::ostringstream text;
  text << Time(8, 23, 1998, Elapse(2, 33, 17, 123000000));
  EXPECT_EQ("1998/08/23 02:33:17.123", text.str());
}

TEST(TimeText, ParseIsTheOppositeOfToString) {
  Time time;
  EXPECT_TRUE(time.ParseString("1998/08/23 02:33:17.123"));
  EXPECT_EQ(Time(8, 23, 1998, Elapse(2, 33, 17, 123000000)), time);
}

std::string Reread(const std::string& text) {
  Time time = At(0);
  return time.ParseString(text) ? time.ToString() : "false";
}

TEST(TimeText, ParseLeniently) {
  EXPECT_EQ("1998/08/23 02:33:17.000", Reread("1998/8/23 2:33:17")) << "no milliseconds";
  EXPECT_EQ("1998/08/23 02:33:17.005", Reread("1998/8/23 2:33:17.5")) << "a count";
  EXPECT_EQ("1998/08/23 02:33:17.000", Reread("1998/8/23 2:33:17.5.6")) << "more than one point";
  EXPECT_EQ("1998/08/23 02:33:00.005", Reread("1998/8/23 2:33:.5"));
  EXPECT_EQ("1998/08/23 02:33:17.123", Reread(" \t1998/08/23 02:33:17.123\r\n"));
  EXPECT_EQ("1998/08/23 02:33:17.000", Reread("1998x/+8/23 \t2:33:17y"));
  EXPECT_EQ("1998/08/23 00:00:00.000", Reread("1998/8/23 ::"));
}

TEST(TimeText, ParseRefusesAWrongNumberOfParts) {
  for (const char* text :
       {"", " ", "1998/0//23 02:33:17.123", "1998/08/23", "02:33:17.123", "1998/08/23  02:33:17.123",
        "1998/08/23 02:33:17.123 x", "1998/08 02:33:17.123", "1998/08/23/1 02:33:17.123", "1998/08/23 02:33",
        "1998/08/23 02:33:17:1", "1998-08-23 02:33:17.123", "1998/08/23T02:33:17.123",
        "1998/08/23\t02:33:17.123"}) {
    Time time = At(42);
    EXPECT_FALSE(time.ParseString(text)) << text;
    EXPECT_EQ(At(42), time) << text;
  }
}

TEST(TimeText, ParseRaisesForWhatIsNoDate) {
  for (const char* text : {"2004/13/01 00:00:00.000", "2004/00/01 00:00:00.000", "2004/01/00 00:00:00.000",
                           "2004/01/32 00:00:00.000", "2004/02/30 00:00:00.000", "2003/02/29 00:00:00.000",
                           "1600/12/31 00:00:00.000", "30828/01/01 00:00:00.000", "2004/01/01 24:00:00.000",
                           "2004/01/01 00:60:00.000", "2004/01/01 00:00:60.000", "2004/01/01 00:00:00.1000",
                           "// ::", "x/y/z a:b:c", "2004/-1/01 00:00:00.000", "-1/1/1 0:0:0",
                           "99999999999/1/1 0:0:0", "2004/65537/1 0:0:0", "2004/4294967297/1 0:0:0"}) {
    SCOPED_TRACE(text);
    Time time = At(42);
    ExpectRefused([&] { time.ParseString(text); }, "ConvertToUTCTime");
    EXPECT_EQ(At(42), time);
  }
}

// Whole milliseconds come back as they were, but for the hour that a zone goes through twice.
TEST(TimeText, MomentsSurviveTheWayThroughText) {
  const long long from = Time(1, 3, 1601, Elapse()).GetRawTimerTicks();
  const long long until = Time(12, 29, 2400, Elapse()).GetRawTimerTicks();
  std::mt19937_64 random(7);
  int different = 0;
  for (int round = 0; round < 20000; ++round) {
    const auto distance = random() % static_cast<unsigned long long>(until - from);
    const Time time = At((from + static_cast<long long>(distance)) / 10000 * 10000);
    Time back;
    ASSERT_TRUE(back.ParseString(time.ToString()));
    ASSERT_EQ(time.ToString(), back.ToString());
    ASSERT_GE(back, time);
    ASSERT_LE(back - time, Elapse(24, Elapse::Hours));
    if (back != time) ++different;
  }
  EXPECT_LT(different, 20);
}

TEST(TimePlatform, TickSizes) {
  EXPECT_EQ(100u, GetTimeTickSize_ns(Time::ePlatformTimeCurrent));
  EXPECT_EQ(100u, GetTimeTickSize_ns(Time::ePlatformTimeWindows));
  EXPECT_EQ(1000000000u, GetTimeTickSize_ns(Time::ePlatformTimeSeconds));
  EXPECT_EQ(0u, GetTimeTickSize_ns(static_cast<Time::EPlatformTimeInfo>(3)));
  EXPECT_EQ(0u, GetTimeTickSize_ns(static_cast<Time::EPlatformTimeInfo>(-1)));
}

TEST(TimePlatform, Conversion) {
  EXPECT_EQ(12345, ConvertTimerTicksToCurrentPlatform(12345, Time::ePlatformTimeCurrent));
  EXPECT_EQ(-12345, ConvertTimerTicksToCurrentPlatform(-12345, Time::ePlatformTimeWindows));
  EXPECT_EQ(123450000000, ConvertTimerTicksToCurrentPlatform(12345, Time::ePlatformTimeSeconds));
  EXPECT_EQ(-20000000, ConvertTimerTicksToCurrentPlatform(-2, Time::ePlatformTimeSeconds));
  EXPECT_EQ(-10000000, ConvertTimerTicksToCurrentPlatform(LLONG_MAX, Time::ePlatformTimeSeconds));
  EXPECT_EQ(0, ConvertTimerTicksToCurrentPlatform(12345, static_cast<Time::EPlatformTimeInfo>(3)));
}

TEST(TimePlatform, SecondsAreScaledBeforeTheyAreAssigned) {
  const long long ticks = ConvertTimerTicksToCurrentPlatform(86400, Time::ePlatformTimeSeconds);
  EXPECT_EQ(Time(1, 1, 1970, Elapse(1, Elapse::Days)), Time(ticks, Time::ePlatformTimeSeconds));
  EXPECT_EQ(Time(86400LL), Time(86400, Time::ePlatformTimeSeconds)) << "ticks, where nobody scaled them";
}

TEST(SystemText, KnownAndUnknownCodes) {
  EXPECT_EQ(std::strerror(ENOENT), MSWindows::GetWindowsErrorMessage(ENOENT));
  EXPECT_EQ("Failed to retrieve error message for code 99999.", MSWindows::GetWindowsErrorMessage(99999));
  EXPECT_EQ("Failed to retrieve error message for code 18446744073709551615.",
            MSWindows::GetWindowsErrorMessage(ULONG_MAX));
}

}  // namespace
