#include <Infrastructure/OxaCore/PerformanceTimer.h>
#include <Infrastructure/OxaCore/Time.h>

#include <gtest/gtest.h>

#include <unistd.h>

#include <cerrno>
#include <climits>
#include <type_traits>

#include "Core/LibraryState.h"
#include "Support/Eventually.h"

#include "Platform/Clock.h"

namespace {

using namespace Oxa::Core;

constexpr long long llSECOND = 10000000;  // in ticks
constexpr unsigned long ulGREATEST = 4294967295UL;

// Lets the monotonic clock jump, and brings it back at the end.
class ClockAhead {
 public:
  explicit ClockAhead(long long ticks) { Set(ticks); }
  ClockAhead(const ClockAhead&) = delete;
  ClockAhead& operator=(const ClockAhead&) = delete;
  ~ClockAhead() { Set(0); }

  void Set(long long ticks) { Platform::SetClockOffset(0, ticks); }
};

class NoClock {
 public:
  NoClock() { Platform::SetMonotonicFailure(ENOSYS); }
  NoClock(const NoClock&) = delete;
  NoClock& operator=(const NoClock&) = delete;
  ~NoClock() { Platform::SetMonotonicFailure(0); }
};

using Form = unsigned long (PerformanceTimer::*)() const;

// What `form` gives `ticks` after the mark, read within the unit of time in which the timer stands then. A machine
// that is too slow for this tries again.
unsigned long ReadAt(Form form, long long ticks, double msecOfUnit) {
  unsigned long value = 0;
  EXPECT_TRUE(TestSupport::Eventually([&] {
    const PerformanceTimer timer;
    const ClockAhead clock(ticks);
    value = (timer.*form)();
    return timer.DiffMSec_d() < static_cast<double>(ticks) / 1e4 + msecOfUnit;
  }));
  return value;
}

template <class Action>
void ExpectOverflow(const Action& action) {
  try {
    action();
    FAIL() << "nothing was raised";
  } catch (PerformanceTimer::IntegerOverflow& error) {
    EXPECT_EQ("Value cannot fit in 32 bits", error.GetData(AlertInfo::sMESSAGE));
    EXPECT_EQ(LogicError::sCATEGORY, error.GetData(AlertInfo::sCATEGORY));
    EXPECT_EQ(2, error.GetSeverity());
    EXPECT_EQ("Oxa.Core.PerformanceTimer", error.GetData(AlertInfo::sLOG_NAME));
    ASSERT_EQ(1u, error.GetUnwindStack()->size());
    EXPECT_EQ("Oxa::Core::PerformanceTimer::diff_u",
              error.GetUnwindStack()->front().Get(CodeContext::sFUNCTION));
  }
}

TEST(PerformanceTimer, MeasuresASleepOfASecond) {
  PerformanceTimer timer;
  timer.Mark();
  OxaSleep(1, Elapse::Seconds, false);
  const double before = timer.DiffMSec_d();
  const unsigned long msec = timer.DiffMSec_u();
  const unsigned long usec = timer.DiffUSec_u();
  const unsigned long sec = timer.DiffSec_u();
  const double after = timer.DiffMSec_d();
  EXPECT_GE(before, 990.0);
  EXPECT_LT(after, 60000.0);
  EXPECT_GE(static_cast<double>(msec), before - 1.0);
  EXPECT_LE(static_cast<double>(msec), after);
  EXPECT_GE(static_cast<double>(usec), before * 1000.0 - 1.0);
  EXPECT_LE(static_cast<double>(usec), after * 1000.0);
  EXPECT_GE(static_cast<double>(sec), before / 1000.0 - 1.0);
  EXPECT_LE(static_cast<double>(sec), after / 1000.0);
}

TEST(PerformanceTimer, ATickIsATenthOfAMicrosecond) {
  EXPECT_DOUBLE_EQ(0.1, PerformanceTimer().GetResolutionUSec());
}

TEST(PerformanceTimer, GoesOnWhileItIsReadAndStartsAnewAtAMark) {
  PerformanceTimer timer;
  const ClockAhead clock(5 * llSECOND);
  EXPECT_GE(timer.DiffMSec_d(), 5000.0);
  EXPECT_GE(timer.DiffMSec_d(), 5000.0);
  EXPECT_TRUE(TestSupport::Eventually([&timer] {
    timer.Mark();
    return timer.DiffMSec_d() < 5000.0;
  }));
}

TEST(PerformanceTimer, ACopyGoesOnFromTheSameMark) {
  static_assert(!std::is_polymorphic_v<PerformanceTimer>);
  const PerformanceTimer timer;
  const ClockAhead clock(7 * llSECOND);
  const PerformanceTimer copy(timer);
  PerformanceTimer assigned;
  assigned = timer;
  EXPECT_GE(copy.DiffMSec_d(), 7000.0);
  EXPECT_GE(assigned.DiffMSec_d(), 7000.0);
}

TEST(PerformanceTimer, CutsOff) {
  EXPECT_EQ(0u, ReadAt(&PerformanceTimer::DiffSec_u, 0, 1000.0));
  EXPECT_EQ(2u, ReadAt(&PerformanceTimer::DiffSec_u, 2 * llSECOND, 1000.0));
  EXPECT_EQ(2000u, ReadAt(&PerformanceTimer::DiffMSec_u, 2 * llSECOND, 1.0));
}

TEST(PerformanceTimer, TheGreatest32BitsPass) {
  EXPECT_EQ(ulGREATEST, ReadAt(&PerformanceTimer::DiffSec_u, 4294967295 * llSECOND, 1000.0));
  EXPECT_EQ(ulGREATEST, ReadAt(&PerformanceTimer::DiffMSec_u, 4294967295 * (llSECOND / 1000), 1.0));
}

TEST(PerformanceTimer, OneMoreOverflows) {
  const PerformanceTimer timer;
  ClockAhead clock(4294967296 * llSECOND);
  ExpectOverflow([&] { timer.DiffSec_u(); });
  clock.Set(4294967296 * (llSECOND / 1000));
  ExpectOverflow([&] { timer.DiffMSec_u(); });
  EXPECT_GE(timer.DiffSec_u(), 4294967u);
  clock.Set(4294967296 * (llSECOND / 1000000));
  ExpectOverflow([&] { timer.DiffUSec_u(); });
  EXPECT_GE(timer.DiffMSec_u(), 4294967u);
  EXPECT_GE(timer.DiffMSec_d(), 4294967.296);
  EXPECT_LT(timer.DiffMSec_d(), 4294967.296 + 600000.0);
}

// A clock that went back gives a negative count; its low 32 bits come back.
TEST(PerformanceTimer, ANegativeCountPasses) {
  // Cut off towards zero: -9 and a fraction.
  EXPECT_EQ(ulGREATEST - 8, ReadAt(&PerformanceTimer::DiffSec_u, -10 * llSECOND + 1, 999.0));
  const PerformanceTimer timer;
  const ClockAhead clock(-3600 * llSECOND);
  EXPECT_GE(timer.DiffMSec_u(), ulGREATEST - 3600000 + 1);
  EXPECT_LT(timer.DiffMSec_u(), ulGREATEST - 3000000);
  EXPECT_LT(timer.DiffMSec_d(), -3000000.0);
}

// The product of ticks and a million passes 2^63 after 10.7 days. It is negative then, and so is the quotient.
TEST(PerformanceTimer, AProductThatWrapsAroundPasses) {
  const PerformanceTimer timer;
  const ClockAhead clock(11 * 24 * 3600 * llSECOND);
  const auto wrapped = [](double msec) {
    const auto product = static_cast<unsigned long long>(msec * 1e4) * 1000000u;
    return static_cast<unsigned long>((static_cast<long long>(product) / llSECOND) & 0xFFFFFFFF);
  };
  const unsigned long from = wrapped(timer.DiffMSec_d());
  const unsigned long value = timer.DiffUSec_u();
  const unsigned long to = wrapped(timer.DiffMSec_d());
  EXPECT_GE(value + 1, from);
  EXPECT_LE(value, to + 1);
  EXPECT_GE(timer.DiffSec_u(), 11u * 24 * 3600);
}

TEST(PerformanceTimer, TheFarthestMomentsAreDefined) {
  ClockAhead clock(LLONG_MAX);
  const PerformanceTimer timer;
  clock.Set(LLONG_MIN);
  timer.DiffUSec_u();
  timer.DiffMSec_u();
  EXPECT_LT(timer.DiffSec_u(), 600u);  // the clock wrapped around by one tick
}

TEST(PerformanceTimer, RaisesNotSupportedWithoutAClock) {
  const NoClock noClock;
  try {
    PerformanceTimer();
    FAIL() << "nothing was raised";
  } catch (PerformanceTimer::NotSupported& error) {
    EXPECT_EQ("Hardware does not support a performance timer", error.GetData(AlertInfo::sMESSAGE));
    EXPECT_EQ(HardwareError::sCATEGORY, error.GetData(AlertInfo::sCATEGORY));
    EXPECT_EQ(2, error.GetSeverity());
    EXPECT_EQ("Oxa.Core.PerformanceTimer", error.GetData(AlertInfo::sLOG_NAME));
    EXPECT_EQ("Oxa::Core::PerformanceTimer::PerformanceTimer",
              error.GetUnwindStack()->front().Get(CodeContext::sFUNCTION));
  }
}

// There is no way back from unloading, where raises return: a child goes it.
TEST(PerformanceTimer, GivesZeroWhereTheRaiseReturns) {
  EXPECT_EXIT(
      {
        SetLibraryUnloading();
        const PerformanceTimer timer;
        const ClockAhead clock(4294967296 * llSECOND);
        EXPECT_EQ(0u, timer.DiffSec_u());
        const NoClock noClock;
        EXPECT_EQ(1e6, PerformanceTimer().GetResolutionUSec());
        ::_exit(testing::Test::HasFailure() ? 1 : 0);
      },
      testing::ExitedWithCode(0), "Value cannot fit in 32 bits(.|\n)*does not support");
}

}  // namespace
