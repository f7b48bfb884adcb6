#include "Collector.h"

#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/RaiseSite.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <sstream>

#include "DailyLog.h"
#include "FakeClock.h"
#include "LogOpening.h"
#include "StationAlerts.h"
#include "TemporaryFolder.h"
#include "TestLog.h"
#include "Witness.h"

namespace {

using Oxa::Core::AlertManager;
using Oxa::Core::eLOG_DEBUG;
using Oxa::Core::SSortWarnings;
using Oxa::Core::WarningRecord;
using Station::Collector;
using Station::Plan;
using Station::Progress;
using Station::ReadPlan;
using Station::Sample;
using Station::SampleQueue;
using StationTests::Elapse;
using StationTests::Micro;
using StationTests::TestLog;
using StationTests::Witness;
using testing::ElementsAre;

class CollectorTest : public testing::Test {
 protected:
  // What comes out when the samples are collected, and nothing more comes.
  std::vector<Station::Measurement> Collect(const std::string& plan, const std::vector<Sample>& samples,
                                            bool terminal = false) {
    Progress progress(m_out, terminal);
    Collector collector(ReadPlan("p", plan), m_queue, progress);
    for (const Sample& sample : samples) EXPECT_TRUE(m_queue.Push(sample));
    for (std::size_t i = 0; i < samples.size(); ++i) EXPECT_TRUE(collector.Collect(Elapse(0)));
    EXPECT_FALSE(collector.Collect(Elapse(1, Elapse::MilliSeconds)));
    return collector.GetMeasurements();
  }

  WarningRecord TheWarningRecord() {
    std::set<WarningRecord, SSortWarnings> records;
    EXPECT_EQ(1, AlertManager::Instance()->GetRaisedWarningRecords(records));
    return records.empty() ? WarningRecord() : *records.begin();
  }

  SampleQueue m_queue{"test", nullptr, 1001, 1, 1000};
  std::ostringstream m_out;
};

TEST_F(CollectorTest, SortsSamplesBySeries) {
  const auto measurements = Collect("a 1ms 3 1s\nb 1ms 2 1s\nc 1ms 1 1s",
                                    {{0, 1, Micro(5)}, {1, 1, Micro(9)}, {0, 2, Micro(3)}, {1, 2, Micro(1)}});
  ASSERT_EQ(3U, measurements.size());
  EXPECT_EQ("a", measurements[0].m_series.m_sName);
  EXPECT_THAT(measurements[0].m_latenesses, ElementsAre(Micro(5), Micro(3)));
  EXPECT_FALSE(measurements[0].IsComplete());
  EXPECT_THAT(measurements[1].m_latenesses, ElementsAre(Micro(9), Micro(1)));
  EXPECT_TRUE(measurements[1].IsComplete());
  EXPECT_THAT(measurements[2].m_latenesses, ElementsAre());
  EXPECT_EQ(0U, measurements[0].m_ulLate);
}

TEST_F(CollectorTest, WarnsOfASampleBeyondItsTolerance) {
  Witness witness;
  const auto measurements =
      Collect("fast 1ms 3 250us", {{0, 1, Micro(250)}, {0, 2, Micro(251)}, {0, 3, Micro(0)}});
  EXPECT_EQ(1U, measurements[0].m_ulLate);
  EXPECT_THAT(witness.m_warnings,
              ElementsAre("Sample 2 of series \"fast\" came 251 microseconds late; up to 250 "
                          "microseconds are tolerated"));
  EXPECT_THAT(witness.m_logNames, ElementsAre("Station.Series.fast"));
  EXPECT_EQ("class Station::SampleLate", TheWarningRecord().GetClass());
}

TEST_F(CollectorTest, SilencesWarningsOfAllSeriesBeyondTheFirstTwenty) {
  Witness witness;
  std::vector<Sample> samples;
  for (unsigned long i = 1; i <= 15; ++i) {
    samples.push_back({0, i, Micro(1)});
    samples.push_back({1, i, Micro(1)});
  }
  const auto measurements = Collect("a 1ms 15 0s\nb 1ms 15 0s", samples);
  EXPECT_EQ(15U, measurements[0].m_ulLate);
  EXPECT_EQ(15U, measurements[1].m_ulLate);
  EXPECT_EQ(20U, witness.m_warnings.size());
  EXPECT_EQ(20U, TheWarningRecord().GetRaisedCount());
  EXPECT_EQ(10U, TheWarningRecord().GetSilencedCount());
}

TEST_F(CollectorTest, LimitsTheWarningsOfOthersTooAndTellsTheDailyLogAll) {
  const StationTests::TemporaryFolder folder;
  Station::DailyLog daily(folder.Path());
  Progress progress(m_out, false);
  Collector collector(ReadPlan("p", "a 1ms 30 0s"), m_queue, progress, &daily);
  Witness witness;
  for (unsigned long i = 1; i <= 30; ++i) {
    EXPECT_TRUE(m_queue.Push({0, i, Micro(1)}));
    EXPECT_TRUE(collector.Collect(Elapse(0)));
    OXA_RAISE_WARNING("Station.Series.a", Station::SampleNotRecorded(i, "a"));
  }
  EXPECT_EQ(40U, witness.m_warnings.size());
  std::string text;
  for (const auto& file : std::filesystem::directory_iterator(folder.Path()))
    text += StationTests::ReadFile(file.path().string());
  for (int i = 1; i <= 30; ++i)
    EXPECT_THAT(text, testing::HasSubstr("a: sample " + std::to_string(i) + " came 1.0 microseconds late\n"));
}

TEST_F(CollectorTest, LogsSamplesOfASeriesThatIsOpened) {
  TestLog log;
  Station::OpenLog({{"Station.Series.a", eLOG_DEBUG}}, Plan());
  Collect("a 1ms 2 1s\nb 1ms 1 1s",
          {{0, 1, Micro(5)}, {1, 1, Micro(9)}, {0, 2, Elapse(37, Elapse::TimerTicks)}});
  EXPECT_THAT(log.Messages("Station.Series.a", eLOG_DEBUG),
              ElementsAre("Sample 1 came 5.0 microseconds late", "Sample 2 came 3.7 microseconds late"));
  EXPECT_THAT(log.Messages("Station.Series.b", eLOG_DEBUG), ElementsAre());
}

TEST_F(CollectorTest, ShowsHowFarAllSeriesHaveCome) {
  Collect("a 1ms 20 1s\nb 1ms 5 1s", {{0, 1, Micro(5)}}, true);
  EXPECT_EQ("\r\033[K1 of 25 samples\r\033[K", m_out.str());
}

}  // namespace
