#include "Measurement.h"

#include <Infrastructure/OxaCore/AlertListener.h>
#include <Infrastructure/OxaCore/AlertManager.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <sstream>

#include "FakeClock.h"

namespace {

using Oxa::Core::AlertListener;
using Oxa::Core::AlertManager;
using Oxa::Core::Error;
using Oxa::Core::ErrorRecord;
using Oxa::Core::SSortErrors;
using Oxa::Core::SSortWarnings;
using Oxa::Core::Warning;
using Oxa::Core::WarningRecord;
using Station::Measure;
using Station::Measurement;
using Station::Progress;
using Station::Series;
using StationTests::Elapse;
using StationTests::FakeClock;
using StationTests::Micro;
using testing::ElementsAre;

class Witness : public AlertListener {
 public:
  Witness() { AlertManager::Instance()->AddAlertListener(*this); }
  ~Witness() override { AlertManager::Instance()->RemoveAlertListener(*this); }
  void WarningRaised(Warning& warning) override { m_warnings.push_back(warning.GetData(Warning::sMESSAGE)); }

  std::vector<std::string> m_warnings;
};

Measurement MeasureQuietly(const Series& series, FakeClock& clock) {
  std::ostringstream out;
  Progress progress(out, false);
  return Measure(series, clock, progress);
}

WarningRecord TheWarningRecord() {
  std::set<WarningRecord, SSortWarnings> records;
  EXPECT_EQ(1, AlertManager::Instance()->GetRaisedWarningRecords(records));
  return records.empty() ? WarningRecord() : *records.begin();
}

TEST(Measurement, KeepsAllLatenessesInTheirOrder) {
  FakeClock clock({Micro(30), Micro(10), Micro(20)});
  const Measurement measurement = MeasureQuietly({"a", Micro(1000), 3, Micro(50), 1}, clock);
  EXPECT_THAT(measurement.m_latenesses, ElementsAre(Micro(30), Micro(10), Micro(20)));
  EXPECT_EQ("a", measurement.m_series.m_sName);
  EXPECT_EQ(0U, measurement.m_ulLate);
  EXPECT_EQ(0U, measurement.m_ulRetries);
  EXPECT_EQ("", measurement.m_sGivenUp);
  EXPECT_TRUE(measurement.IsComplete());
}

TEST(Measurement, WarnsOfASampleBeyondItsTolerance) {
  Witness witness;
  FakeClock clock({Micro(250), Micro(251), Micro(0)});
  const Measurement measurement = MeasureQuietly({"fast", Micro(1000), 3, Micro(250), 1}, clock);
  EXPECT_EQ(1U, measurement.m_ulLate);
  EXPECT_THAT(witness.m_warnings,
              ElementsAre("Sample 2 of series \"fast\" came 251 microseconds late; up to 250 "
                          "microseconds are tolerated"));
  EXPECT_EQ("class Station::SampleLate", TheWarningRecord().GetClass());
}

TEST(Measurement, SilencesWarningsBeyondTheFirstTen) {
  Witness witness;
  FakeClock clock({Micro(1)});
  const Measurement measurement = MeasureQuietly({"strict", Micro(1000), 25, Micro(0), 1}, clock);
  EXPECT_EQ(25U, measurement.m_ulLate);
  EXPECT_EQ(10U, witness.m_warnings.size());
  EXPECT_EQ(10U, TheWarningRecord().GetRaisedCount());
  EXPECT_EQ(15U, TheWarningRecord().GetSilencedCount());
}

TEST(Measurement, GivesEachSeriesItsOwnTenWarnings) {
  Witness witness;
  FakeClock clock({Micro(1)});
  MeasureQuietly({"a", Micro(1000), 12, Micro(0), 1}, clock);
  MeasureQuietly({"b", Micro(1000), 13, Micro(0), 2}, clock);
  EXPECT_EQ(20U, witness.m_warnings.size());
  EXPECT_EQ(20U, TheWarningRecord().GetRaisedCount());
  EXPECT_EQ(5U, TheWarningRecord().GetSilencedCount());
}

TEST(Measurement, ReplacesMissedSamplesByRetries) {
  FakeClock clock({Micro(1500), Micro(10)});
  const Measurement measurement = MeasureQuietly({"a", Micro(1000), 6, Elapse(1), 1}, clock);
  EXPECT_THAT(measurement.m_latenesses,
              ElementsAre(Micro(1500), Micro(10), Micro(1500), Micro(10), Micro(1500), Micro(10)));
  EXPECT_EQ(3U, measurement.m_ulRetries);
  EXPECT_EQ("", measurement.m_sGivenUp);
}

TEST(Measurement, GivesUpASeriesThatIsMissedTooOften) {
  FakeClock clock({Micro(1500)});
  const Measurement measurement = MeasureQuietly({"a", Micro(1000), 2000, Elapse(1), 1}, clock);
  EXPECT_EQ(500U, measurement.m_ulRetries);
  EXPECT_EQ(501U, measurement.m_latenesses.size());
  EXPECT_EQ("Sample 502 of series \"a\" was missed: it was due 500 microseconds ago", measurement.m_sGivenUp);
  EXPECT_FALSE(measurement.IsComplete());

  std::set<ErrorRecord, SSortErrors> records;
  ASSERT_EQ(1, AlertManager::Instance()->GetRaisedErrorRecords(records));
  EXPECT_EQ("class Station::SampleMissed", records.begin()->GetClass());
  EXPECT_EQ(501U, records.begin()->GetRaisedCount());
}

TEST(Measurement, OfTheNextSeriesHasItsOwnRetries) {
  FakeClock clock({Micro(1500)});
  MeasureQuietly({"a", Micro(1000), 2000, Elapse(1), 1}, clock);
  const Measurement next = MeasureQuietly({"b", Micro(1000), 3, Elapse(1), 2}, clock);
  EXPECT_EQ(2U, next.m_ulRetries);
  EXPECT_TRUE(next.IsComplete());
}

TEST(Measurement, EndsEarlyWhenTheUserWantsToEnd) {
  FakeClock clock({Micro(5)});
  clock.EndAfter(2);
  const Measurement measurement = MeasureQuietly({"a", Micro(1000), 9, Micro(50), 1}, clock);
  EXPECT_EQ(2U, measurement.m_latenesses.size());
  EXPECT_EQ("", measurement.m_sGivenUp);
  EXPECT_FALSE(measurement.IsComplete());
}

}  // namespace
