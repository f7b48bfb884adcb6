// What depends on the moment, at moments of the test's choice.
#include <Infrastructure/OxaCore/Time.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <string>

#include "Core/LibraryState.h"
#include "Time/LocalTime.h"

#include "Platform/Clock.h"

namespace {

using namespace Oxa::Core;

// Puts the clock at a moment for as long as this lives.
class ClockAt {
 public:
  explicit ClockAt(const Time& moment) { Platform::SetClockOffset((moment - Time()).GetRawTimerTicks(), 0); }
  ~ClockAt() { Platform::SetClockOffset(0, 0); }
};

TEST(ClockOffset, TheYearOfADateIsTheLocalYearOfNow) {
  const ClockAt clock(Time(6, 1, 2031, Elapse()));
  EXPECT_EQ(2031, Time(1, 1, Elapse()).Year());
  EXPECT_EQ(2031, Time(12, 31, Elapse()).Year());
}

TEST(ClockOffset, TheYearTurnsAtLocalMidnight) {
  ASSERT_EQ(0, ::setenv("TZ", "<-05>5", 1));
  Platform::LoadZone();
  const Time newYear(1, 1, 2031, Elapse());
  {
    const ClockAt clock(newYear - Elapse(1, Elapse::Minutes));
    EXPECT_EQ(2030, Time(1, 1, Elapse()).Year());
  }
  const ClockAt clock(newYear);
  EXPECT_EQ(2031, Time(1, 1, Elapse()).Year());
}

TEST(ClockOffset, LeapDaysOfThisYear) {
  {
    const ClockAt clock(Time(6, 1, 2032, Elapse()));
    EXPECT_EQ(29, Time(2, 29, Elapse()).Day());
  }
  const ClockAt clock(Time(6, 1, 2031, Elapse()));
  EXPECT_THROW(Time(2, 29, Elapse()), Time::OsTimeApiError);
}

TEST(ClockOffset, SpansToAndFromFarMoments) {
  const ClockAt clock(Time(1, 1, 20000, Elapse()));
  const Time then(1, 1, 1700, Elapse());
  EXPECT_GT(then.TimeSince(), Elapse(18000 * 365, Elapse::Days));
  EXPECT_LT(then.TimeLeft(), Elapse(-18000 * 365, Elapse::Days));
}

TEST(ClockOffset, AClockBeyondTheRangeIsRefusedWhereItIsBrokenDown) {
  Platform::SetClockOffset(LLONG_MAX, 0);
  EXPECT_LT(Time().GetRawTimerTicks(), 0);
  EXPECT_EQ("", Platform::LocalTimeText(Platform::NowTicks()));
  Platform::SetClockOffset(0, 0);
}

TEST(FileTime, RaisesForWhatIsNoDate) {
  try {
    WindowsFileTime fileTime{Platform::DateTime()};
    FAIL() << "nothing was raised";
  } catch (Time::OsTimeApiError& error) {
    EXPECT_EQ("WindowsFileTime::WindowsFileTime",
              error.GetUnwindStack()->front().Get(CodeContext::sFUNCTION));
  }
}

// While the library unloads a raise returns: each operation then has a defined result.
TEST(ReturningRaises, LeaveADefinedResult) {
  SetLibraryUnloading();
  const Time outside(-1, Time::ePlatformTimeCurrent);
  testing::internal::CaptureStderr();
  EXPECT_EQ(0, outside.Year());
  EXPECT_EQ(0, outside.MicroSecond());
  EXPECT_EQ("Invalid", outside.MonthName());
  EXPECT_EQ("???", outside.MonthAbbreviation());
  EXPECT_EQ("", outside.ToString());
  Time time(42, Time::ePlatformTimeCurrent);
  EXPECT_FALSE(time.ParseString("2004/13/01 00:00:00.000"));
  EXPECT_EQ(42, time.GetRawTimerTicks());
  EXPECT_EQ(5, Time(13, 1, 2004, Elapse(5, Elapse::TimerTicks)).GetRawTimerTicks());
  const auto unknown = static_cast<Elapse::TimeUnits>(8);
  EXPECT_EQ(0, Elapse(1, unknown).GetRawTimerTicks());
  EXPECT_EQ(0.0, Elapse(1).GetElapsed(unknown));
  EXPECT_EQ(0, WindowsFileTime(Platform::DateTime()).GetTicks());
  testing::internal::GetCapturedStderr();
}

// The error of the text itself shows only when the one before it returned.
TEST(ReturningRaises, TextOfARefusedMomentIsRefusedTwice) {
  SetLibraryUnloading();
  testing::internal::CaptureStderr();
  EXPECT_EQ("", GetLocalTimeString(-1));
  const std::string output = testing::internal::GetCapturedStderr();
  const std::size_t first = output.find("GetLocalSystemTime");
  ASSERT_NE(std::string::npos, first) << output;
  EXPECT_NE(std::string::npos, output.find("GetLocalTimeString", first)) << output;
}

}  // namespace
