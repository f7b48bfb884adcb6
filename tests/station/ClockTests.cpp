#include "Clock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "FakeClock.h"
#include "TestLog.h"

namespace {

using Oxa::Core::eLOG_DEBUG;
using Oxa::Core::LogManager;
using Station::SystemClock;
using StationTests::Elapse;
using StationTests::FakeDirective;
using StationTests::TestLog;
using testing::ElementsAre;
using testing::MatchesRegex;

Elapse Milli(long long count) { return Elapse(count, Elapse::MilliSeconds); }

// Waits in earnest, and counts how often it was asked to.
class WaitingDirective : public FakeDirective {
 public:
  bool TimedWaitForStopRequest(const Elapse& timeout) override {
    ++m_iWaits;
    m_waited = timeout;
    std::this_thread::sleep_for(std::chrono::nanoseconds(timeout.GetRawTimerTicks() * 100));
    return MustStop();
  }

  int m_iWaits = 0;
  Elapse m_waited;
};

TEST(SystemClock, SleepsUntilAMomentAndNotLess) {
  SystemClock clock;
  WaitingDirective directive;
  const Elapse start = clock.Now();
  EXPECT_TRUE(clock.SleepUntil(start + Milli(5), directive));
  EXPECT_LE(start + Milli(5), clock.Now());
  EXPECT_TRUE(clock.SleepUntil(start, directive));
  EXPECT_EQ(0, directive.m_iWaits);
}

TEST(SystemClock, LeavesALongSleepForARequestToStopButForItsEnd) {
  SystemClock clock;
  WaitingDirective directive;
  const Elapse due = clock.Now() + Milli(150);
  EXPECT_TRUE(clock.SleepUntil(due, directive));
  EXPECT_LE(due, clock.Now());
  EXPECT_EQ(1, directive.m_iWaits);
  EXPECT_GE(Milli(100), directive.m_waited);
}

// Has been asked to stop already.
class StoppingDirective : public FakeDirective {
 public:
  StoppingDirective() { Stop(); }
  bool TimedWaitForStopRequest(const Elapse&) override { return true; }
};

TEST(SystemClock, TellsThatItsThreadIsToStop) {
  SystemClock clock;
  StoppingDirective directive;
  const Elapse start = clock.Now();
  EXPECT_FALSE(clock.SleepUntil(start, directive));
  EXPECT_FALSE(clock.SleepUntil(start + Elapse(1000), directive));
  EXPECT_GT(start + Elapse(1000), clock.Now());
}

TEST(SystemClock, LogsEachSleepIfThatIsOpened) {
  FakeDirective directive;
  TestLog log;
  SystemClock().SleepUntil(Elapse(0), directive);
  EXPECT_THAT(log.Messages("Station.Clock", eLOG_DEBUG), ElementsAre());

  LogManager::Instance()->GetLogger("Station.Clock")->SetSeverityFilters(1U << eLOG_DEBUG);
  SystemClock clock;
  clock.SleepUntil(clock.Now() + Milli(2), directive);
  EXPECT_THAT(log.Messages("Station.Clock", eLOG_DEBUG),
              ElementsAre(MatchesRegex("Sleeping for [0-9]+\\.[0-9] microseconds")));
}

}  // namespace
