// What depends on the moment, at moments of the test's choice.
#include <Infrastructure/OxaCore/Time.h>

#include <gtest/gtest.h>

#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>

#include "Core/LibraryState.h"
#include "Support/ClockAndZones.h"
#include "Time/LocalTime.h"

#include "Platform/Clock.h"

namespace {

using namespace Oxa::Core;

using TestSupport::ClockAt;
using TestSupport::Zones;

TEST(ClockOffset, TheYearOfADateIsTheLocalYearOfNow) {
  const ClockAt clock(Time(6, 1, 2031, Elapse()));
  EXPECT_EQ(2031, Time(1, 1, Elapse()).Year());
  EXPECT_EQ(2031, Time(12, 31, Elapse()).Year());
}

TEST(ClockOffset, TheYearTurnsAtLocalMidnight) {
  const Zones zones("<-05>5");
  const Time newYear(1, 1, 2031, Elapse());
  {
    const ClockAt clock(newYear - Elapse(1, Elapse::Minutes));
    EXPECT_EQ(2030, Time(1, 1, Elapse()).Year());
  }
  const ClockAt clock(newYear);
  EXPECT_EQ(2031, Time(1, 1, Elapse()).Year());
}

// The year is that of now, where it is now; its midnights are those of the load.
TEST(ClockOffset, TheYearIsThatOfTheZoneOfTheMoment) {
  const Zones zones("<-05>5", "<+05>-5");
  const Time newYear(1, 1, 2031, Elapse());
  {
    const ClockAt clock(newYear - Elapse(5, Elapse::Hours));
    EXPECT_EQ(newYear, Time(1, 1, Elapse()));
  }
  const ClockAt clock(newYear - Elapse(11, Elapse::Hours));
  EXPECT_EQ(Time(1, 1, 2030, Elapse()), Time(1, 1, Elapse()));
}

// Local time of that moment is before the calendar, and nobody asks for it.
TEST(MicroSecond, HasNothingToDoWithLocalTime) {
  const Zones zones("<-05>5");
  const Time time(1234567, Time::ePlatformTimeCurrent);
  EXPECT_EQ(456, time.MicroSecond());
  try {
    time.Year();
    FAIL() << "nothing was raised";
  } catch (Time::OsTimeApiError& error) {
    ASSERT_EQ(1u, error.GetUnwindStack()->size());
    EXPECT_EQ("GetLocalSystemTime", error.GetUnwindStack()->front().Get(CodeContext::sFUNCTION));
  }
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
    EXPECT_EQ(std::string("Call to operating system time API failed with error:\n ") + std::strerror(EINVAL),
              error.GetData(AlertInfo::sMESSAGE));
    EXPECT_EQ("Oxa.Core.Time", error.GetData(AlertInfo::sLOG_NAME));
    EXPECT_EQ(2, error.GetSeverity());
    ASSERT_EQ(1u, error.GetUnwindStack()->size());
    EXPECT_EQ("WindowsFileTime::WindowsFileTime",
              error.GetUnwindStack()->front().Get(CodeContext::sFUNCTION));
  }
}

// While the library unloads a raise returns: each operation then has a defined result. There is no way back from
// there, so that a child goes it; it ends with 0 if all its expectations hold.
void ExpectWhileUnloading(const std::function<void()>& expectations, const char* output = "") {
  EXPECT_EXIT(
      {
        SetLibraryUnloading();
        expectations();
        ::_exit(testing::Test::HasFailure() ? 1 : 0);
      },
      testing::ExitedWithCode(0), output);
}

TEST(ReturningRaises, LeaveADefinedResult) {
  ExpectWhileUnloading([] {
    const Time outside(-1, Time::ePlatformTimeCurrent);
    EXPECT_EQ(0, outside.Year());
    EXPECT_EQ(0, outside.MicroSecond());
    EXPECT_EQ("Invalid", outside.MonthName());
    EXPECT_EQ("???", outside.MonthAbbreviation());
    EXPECT_EQ("", outside.ToString());
  });
  ExpectWhileUnloading([] {
    Time time(42, Time::ePlatformTimeCurrent);
    EXPECT_FALSE(time.ParseString("2004/13/01 00:00:00.000"));
    EXPECT_EQ(42, time.GetRawTimerTicks());
    EXPECT_EQ(5, Time(13, 1, 2004, Elapse(5, Elapse::TimerTicks)).GetRawTimerTicks());
    EXPECT_EQ(0, WindowsFileTime(Platform::DateTime()).GetTicks());
  });
  ExpectWhileUnloading([] {
    const auto unknown = static_cast<Elapse::TimeUnits>(8);
    EXPECT_EQ(0, Elapse(1, unknown).GetRawTimerTicks());
    EXPECT_EQ(0.0, Elapse(1).GetElapsed(unknown));
  });
}

// The error of the text itself shows only when the one before it returned.
TEST(ReturningRaises, TextOfARefusedMomentIsRefusedTwice) {
  ExpectWhileUnloading([] { EXPECT_EQ("", GetLocalTimeString(-1)); },
                       "GetLocalSystemTime(.|\n)*GetLocalTimeString");
}

}  // namespace
