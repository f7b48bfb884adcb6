#include "SeriesTask.h"

#include <Infrastructure/OxaCore/AlertManager.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "FakeClock.h"
#include "StationAlerts.h"
#include "TestLog.h"
#include "Witness.h"

namespace {

using Oxa::Core::AlertManager;
using Oxa::Core::eLOG_INFORMATIONAL;
using Oxa::Core::ErrorRecord;
using Oxa::Core::SSortErrors;
using Station::Sample;
using Station::SampleMissed;
using Station::SampleQueue;
using Station::Series;
using Station::SeriesTask;
using StationTests::Elapse;
using StationTests::FakeClock;
using StationTests::FakeDirective;
using StationTests::Micro;
using StationTests::TestLog;
using StationTests::Witness;
using testing::ElementsAre;

// A task with all that it needs, run on the calling thread.
class TaskRun {
 public:
  TaskRun(const Series& series, std::vector<Elapse> latenesses, unsigned int room = 10000)
      : m_series(series),
        m_clock(std::move(latenesses)),
        m_queue("test", nullptr, room + 1, 1, room),
        m_task(m_series, 7, m_clock, m_queue) {}

  void Go() { EXPECT_EQ(0, m_task.Run(m_directive)); }

  std::vector<Elapse> Latenesses() {
    std::vector<Elapse> latenesses;
    for (Sample sample; m_queue.TryPop(sample);) latenesses.push_back(sample.m_lateness);
    return latenesses;
  }

  const Series m_series;
  FakeClock m_clock;
  FakeDirective m_directive;
  SampleQueue m_queue;
  SeriesTask m_task;
};

TEST(SeriesTask, HandsOverItsSamplesInTheirOrder) {
  TaskRun run({"a", Micro(1000), 3, Micro(50), 1}, {Micro(30), Micro(10), Micro(20)});
  run.Go();
  Sample sample;
  for (unsigned long number = 1; number <= 3; ++number) {
    ASSERT_TRUE(run.m_queue.TryPop(sample));
    EXPECT_EQ(7U, sample.m_uSeries);
    EXPECT_EQ(number, sample.m_ulNumber);
  }
  EXPECT_EQ(Micro(20), sample.m_lateness);
  EXPECT_FALSE(run.m_queue.TryPop(sample));
  EXPECT_EQ(0U, run.m_task.GetRetries());
}

TEST(SeriesTask, ReplacesMissedSamplesByRetries) {
  TaskRun run({"a", Micro(1000), 6, Elapse(1), 1}, {Micro(1500), Micro(10)});
  run.Go();
  EXPECT_THAT(run.Latenesses(),
              ElementsAre(Micro(1500), Micro(10), Micro(1500), Micro(10), Micro(1500), Micro(10)));
  EXPECT_EQ(3U, run.m_task.GetRetries());
}

TEST(SeriesTask, FailsWhenSamplesAreMissedTooOften) {
  TaskRun run({"a", Micro(1000), 2000, Elapse(1), 1}, {Micro(1500)});
  try {
    run.m_task.Run(run.m_directive);
    FAIL() << "it came to its end";
  } catch (const SampleMissed& error) {
    EXPECT_STREQ("Sample 502 of series \"a\" was missed: it was due 500 microseconds ago", error.what());
    EXPECT_EQ("a", error.GetUnwindStack()->back().Get("Series"));
  }
  EXPECT_EQ(500U, run.m_task.GetRetries());
  EXPECT_EQ(501U, run.m_queue.GetCount());

  std::set<ErrorRecord, SSortErrors> records;
  ASSERT_EQ(1, AlertManager::Instance()->GetRaisedErrorRecords(records));
  EXPECT_EQ("class Station::SampleMissed", records.begin()->GetClass());
  EXPECT_EQ(501U, records.begin()->GetRaisedCount());
}

TEST(SeriesTask, SettlesNothingAfterItsEnd) {
  TaskRun run({"a", Micro(1000), 1, Elapse(1), 1}, {Micro(1500)});
  run.Go();
  Station::Sampler sampler(run.m_clock, run.m_series);
  EXPECT_TRUE(sampler.TakeSample(run.m_directive).has_value());
  EXPECT_THROW(sampler.TakeSample(run.m_directive), SampleMissed);
}

TEST(SeriesTask, EndsEarlyWhenItIsAskedToStop) {
  TaskRun run({"a", Micro(1000), 9, Micro(50), 1}, {Micro(5)});
  run.m_clock.EndAfter(2);
  run.Go();
  EXPECT_EQ(2U, run.m_queue.GetCount());

  TaskRun never({"b", Micro(1000), 9, Micro(50), 1}, {Micro(5)});
  never.m_directive.Stop();
  never.Go();
  EXPECT_EQ(0U, never.m_queue.GetCount());
}

TEST(SeriesTask, TellsEverySampleForWhichThereIsNoRoom) {
  Witness witness;
  TaskRun run({"a", Micro(1000), 4, Micro(50), 1}, {Micro(5)}, 2);
  run.Go();
  EXPECT_EQ(2U, run.m_queue.GetCount());
  EXPECT_THAT(witness.m_warnings,
              ElementsAre("Sample 3 of series \"a\" was lost: nobody collected it in time",
                          "Sample 4 of series \"a\" was lost: nobody collected it in time"));
  EXPECT_THAT(witness.m_logNames, ElementsAre("Station.Series.a", "Station.Series.a"));
}

TEST(SeriesTask, LogsItsBeginAndItsEnd) {
  TestLog log;
  TaskRun run({"a.b", Elapse(15, Elapse::TimerTicks), 3, Micro(50), 1}, {Micro(2), Micro(0), Micro(0)});
  run.Go();
  EXPECT_THAT(log.Messages("Station.Series.a_b", eLOG_INFORMATIONAL),
              ElementsAre("Begins: 3 samples, one every 1.5 microseconds",
                          "Ends: 3 of 3 samples taken, 1 of them after a retry"));
}

}  // namespace
