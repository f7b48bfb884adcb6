#include "MeasureAll.h"

#include <Infrastructure/OxaCore/System.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <stdexcept>

#include "FakeClock.h"
#include "Support/Eventually.h"
#include "TestLog.h"

namespace {

using Oxa::Core::eLOG_ERROR;
using Oxa::Core::Lock;
using Oxa::Core::Mutex;
using Oxa::Core::System;
using Oxa::Core::TaskDirective;
using Station::Clock;
using Station::Measurement;
using Station::Plan;
using Station::Progress;
using Station::ReadPlan;
using Station::SystemClock;
using StationTests::Elapse;
using StationTests::TestLog;
using testing::ElementsAre;
using testing::HasSubstr;
using TestSupport::Eventually;

bool Never() { return false; }

std::vector<Measurement> MeasureQuietly(const Plan& plan, Clock& clock,
                                        const std::function<bool()>& wantsToEnd = Never) {
  std::ostringstream out;
  Progress progress(out, false);
  return MeasureAll(plan, clock, progress, wantsToEnd);
}

TEST(MeasureAll, MeasuresEverySeriesToItsEnd) {
  SystemClock clock;
  const Plan plan = ReadPlan("p", "a 2ms 20 10s\nb 5ms 7 10s\nc 30ms 1 0ns");
  const auto measurements = MeasureQuietly(plan, clock);
  ASSERT_EQ(3U, measurements.size());
  for (const Measurement& measurement : measurements) {
    EXPECT_TRUE(measurement.IsComplete()) << measurement.m_series.m_sName;
    EXPECT_EQ("", measurement.m_sGivenUp);
    const auto& latenesses = measurement.m_latenesses;
    EXPECT_EQ(*std::max_element(latenesses.begin(), latenesses.end()), measurement.m_statistics.m_greatest);
  }
  EXPECT_EQ("c", measurements[2].m_series.m_sName);
  EXPECT_EQ(1U, measurements[2].m_ulLate);
}

TEST(MeasureAll, OfNothingEnds) {
  SystemClock clock;
  EXPECT_TRUE(MeasureQuietly(Plan(), clock).empty());
}

// Never late. Each sleeper stays until all that are expected have come to sleep, and its thread's name is kept.
class MeetingPoint : public Clock {
 public:
  explicit MeetingPoint(std::size_t expected) : m_uExpected(expected) {}

  Elapse Now() override { return Elapse(0); }
  bool SleepUntil(const Elapse&, TaskDirective& directive) override {
    std::string name;
    System::Instance()->GetCurrentThreadName(name);
    AddName(name);
    return Eventually([this] { return CountNames() == m_uExpected; }) && directive.KeepRunning();
  }

  void AddName(const std::string& name) {
    const Lock lock(m_mutex);
    m_names.insert(name);
  }
  std::size_t CountNames() {
    const Lock lock(m_mutex);
    return m_names.size();
  }

  std::set<std::string> m_names;

 private:
  Mutex m_mutex;  // guards the names
  const std::size_t m_uExpected;
};

TEST(MeasureAll, RunsAllSeriesAtOnceOnThreadsWithTheirNames) {
  MeetingPoint clock(3);
  const auto measurements = MeasureQuietly(ReadPlan("p", "a 1ms 1 0s\nb 1ms 1 0s\nlast.one 1ms 1 0s"), clock);
  EXPECT_THAT(clock.m_names, ElementsAre("Series a", "Series b", "Series last.one"));
  for (const Measurement& measurement : measurements) EXPECT_TRUE(measurement.IsComplete());
}

TEST(MeasureAll, StopsAllSeriesAndKeepsWhatTheyHave) {
  SystemClock clock;
  const Plan plan = ReadPlan("p", "quick 1ms 3 10s\nendless 10s 1000000 10s\ntoo 10s 2 10s");
  const Elapse start = clock.Now();
  const auto measurements =
      MeasureQuietly(plan, clock, [&] { return clock.Now() - start > Elapse(300, Elapse::MilliSeconds); });
  EXPECT_GT(Elapse(9), clock.Now() - start);
  ASSERT_EQ(3U, measurements.size());
  EXPECT_EQ(0U, measurements[1].m_latenesses.size());
  EXPECT_EQ("", measurements[1].m_sGivenUp);
  EXPECT_FALSE(measurements[2].IsComplete());
}

TEST(MeasureAll, StopsSeriesThatHaveHardlyBegun) {
  SystemClock clock;
  std::string plan;
  for (int i = 0; i < 16; ++i) plan += 's' + std::to_string(i) + " 10s 1000 1s\n";
  const Elapse start = clock.Now();
  EXPECT_EQ(16U, MeasureQuietly(ReadPlan("p", plan), clock, [] { return true; }).size());
  EXPECT_GT(Elapse(9), clock.Now() - start);
}

// Fails for one series, and is never late for the others: it knows them by their threads.
class UnfairClock : public Clock {
 public:
  explicit UnfairClock(const std::string& victim) : m_sVictim(victim) {}

  Elapse Now() override { return Elapse(0); }
  bool SleepUntil(const Elapse&, TaskDirective& directive) override {
    std::string name;
    System::Instance()->GetCurrentThreadName(name);
    if (name == m_sVictim) throw std::runtime_error("the bed is broken");
    return directive.KeepRunning();
  }

 private:
  const std::string m_sVictim;
};

TEST(MeasureAll, GivesUpASeriesWhoseThreadFailsAndNoOther) {
  TestLog log;
  UnfairClock clock("Series b");
  const auto measurements = MeasureQuietly(ReadPlan("p", "a 1ms 3 0s\nb 1ms 3 0s\nc 1ms 3 0s"), clock);
  EXPECT_EQ("", measurements[0].m_sGivenUp);
  EXPECT_THAT(measurements[1].m_sGivenUp, HasSubstr("the bed is broken"));
  EXPECT_EQ("", measurements[2].m_sGivenUp);
  EXPECT_TRUE(measurements[0].IsComplete());
  EXPECT_FALSE(measurements[1].IsComplete());
  EXPECT_TRUE(measurements[2].IsComplete());
  EXPECT_THAT(log.Messages("Oxa.Core.Thread", eLOG_ERROR),
              testing::Contains(HasSubstr("Thread Series b terminated due to error:\n")));
}

TEST(MeasureAll, CountsTheRetriesOfEachSeriesForItself) {
  SystemClock clock;
  const auto measurements = MeasureQuietly(ReadPlan("p", "hopeless 100ns 100000 1s\nfine 20ms 3 1s"), clock);
  EXPECT_EQ(500U, measurements[0].m_ulRetries);
  EXPECT_THAT(measurements[0].m_sGivenUp, HasSubstr("of series \"hopeless\" was missed"));
  EXPECT_LE(500U, measurements[0].m_latenesses.size());
  EXPECT_TRUE(measurements[1].IsComplete());
  EXPECT_GT(500U, measurements[1].m_ulRetries);
  EXPECT_EQ("", measurements[1].m_sGivenUp);
}

}  // namespace
