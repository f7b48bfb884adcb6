#include "Verdicts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "FakeClock.h"
#include "MeasureAll.h"
#include "SeriesTest.h"
#include "TestLog.h"

namespace {

using Oxa::Core::eLOG_INFORMATIONAL;
using Result = Oxa::Core::Test::Result;
using Station::HaveAllPassed;
using Station::Judge;
using Station::Measurement;
using Station::Quantity;
using Station::ReadPlan;
using Station::SeriesTest;
using Station::Verdicts;
using StationTests::Elapse;
using StationTests::FakeClock;
using StationTests::Micro;
using StationTests::TestLog;
using testing::ElementsAre;

// The plan's one series, measured by a clock that wakes sleepers late by `latenesses`; stopped after `end` samples.
Measurement Measured(const std::string& line, const std::vector<Elapse>& latenesses,
                     std::size_t end = 1000000) {
  FakeClock clock(latenesses);
  clock.EndAfter(end);
  std::ostringstream out;
  Station::Progress progress(out, false);
  return MeasureAll(ReadPlan("p", line), clock, progress, [] { return false; }).at(0);
}

// `count` latenesses of 10 microseconds, and then `last` of half a millisecond.
std::vector<Elapse> LateAtLast(std::size_t count, std::size_t last) {
  std::vector<Elapse> latenesses(count, Micro(10));
  latenesses.insert(latenesses.end(), last, Micro(500));
  return latenesses;
}

std::string TextOf(const Measurement& measurement) {
  std::ostringstream out;
  const Verdicts verdicts = Judge(out, {measurement});
  return (HaveAllPassed(verdicts) ? "passed: " : "FAILED: ") + verdicts.at(0).GetText();
}

TEST(Verdicts, AreGivenByThe99thPercentile) {
  EXPECT_EQ("passed: Test value of 10 \xB5sec < 250 \xB5sec",
            TextOf(Measured("a 1ms 100 250us", LateAtLast(99, 1))));
  EXPECT_EQ("FAILED: Test value of 500 \xB5sec >= 250 \xB5sec",
            TextOf(Measured("a 1ms 100 250us", LateAtLast(98, 2))));
}

TEST(Verdicts, AreInTheUnitOfThePlan) {
  const auto text = [](const std::string& tolerance) {
    return TextOf(Measured("a 1ms 2 " + tolerance, {Micro(125)}));
  };
  EXPECT_EQ("passed: Test value of 0.125 msec < 0.25 msec", text("0.25 msec"));
  EXPECT_EQ("passed: Test value of 125000 nsec < 250000 nsec", text("250000ns"));
  EXPECT_EQ("passed: Test value of 0.000125 s < 0.00025 s", text("0.00025 Seconds"));
  EXPECT_EQ("passed: Test value of 3.47222e-08 h < 1e-05 h", text("0.00001 Hour"));
  EXPECT_EQ("FAILED: Test value of 0.125 msec >= 0.1 msec", text("0.1 Millisecond"));
}

// Whatever the unit: the two numbers come out of the same conversion.
TEST(Verdicts, AreBadForWhatIsExactlyAsLateAsTolerated) {
  for (const char* const unit : {"nsec", "usec", "msec", "s", "Minute", "Hour", "d", "Week"}) {
    for (long long ticks = 1; ticks < 3000; ticks += 7) {
      Measurement measurement;
      measurement.m_series = {
          "a", Micro(1000), 1, Elapse(ticks, Elapse::TimerTicks), 1, Station::FindTimeUnit(unit)->GetName()};
      measurement.m_latenesses = {measurement.m_series.m_tolerance};
      measurement.m_statistics = Station::Summarize(measurement.m_latenesses);
      SeriesTest late(measurement);
      EXPECT_EQ(Result::eFAILED, late.RunTest()) << ticks << unit;
      measurement.m_statistics.m_percentile99 -= Elapse(1, Elapse::TimerTicks);
      EXPECT_EQ(Result::ePASSED, late.RunTest()) << ticks << unit;
    }
  }
  EXPECT_EQ("FAILED: Test value of 250 \xB5sec >= 250 \xB5sec",
            TextOf(Measured("a 1ms 9 250us", {Micro(250)})));
  EXPECT_EQ("FAILED: Test value of 0 nsec >= 0 nsec", TextOf(Measured("a 1ms 9 0ns", {Micro(0)})));
}

TEST(Verdicts, AreBadForASeriesThatIsNotComplete) {
  EXPECT_EQ("FAILED: only 5 of 9 samples were taken", TextOf(Measured("a 1ms 9 1s", {Micro(1)}, 5)));
  EXPECT_EQ("FAILED: only 0 of 9 samples were taken", TextOf(Measured("a 1ms 9 1s", {Micro(1)}, 0)));
}

TEST(Verdicts, AreWrittenAndLoggedOneByOne) {
  TestLog log;
  std::ostringstream out;
  const Verdicts verdicts = Judge(out, {Measured("a.b 1ms 9 1ms", {Micro(1)}),
                                        Measured("b 1ms 9 5us", {Micro(7)}), Measured("c 1ms 9 1s", {}, 0)});
  EXPECT_EQ(
      "\n"
      "A series passes if its 99th percentile is less than its tolerance:\n"
      "\n"
      "[1/3] a.b passed: Test value of 0.001 msec < 1 msec\n"
      "[2/3] b FAILED: Test value of 7 \xC2\xB5sec >= 5 \xC2\xB5sec\n"
      "[3/3] c FAILED: only 0 of 9 samples were taken\n"
      "1 of 3 series passed\n",
      out.str());
  EXPECT_THAT(log.Messages("Station.Series.a_b", eLOG_INFORMATIONAL),
              testing::Contains("Judged: passed: Test value of 0.001 msec < 1 msec"));
  EXPECT_THAT(log.Messages("Station.Series.b", eLOG_INFORMATIONAL),
              testing::Contains("Judged: FAILED: Test value of 7 \\xB5sec >= 5 \\xB5sec"));
  ASSERT_EQ(3U, verdicts.size());
  EXPECT_EQ("a.b", verdicts[0].GetTestName());
  EXPECT_EQ(Result::ePASSED, verdicts[0].GetType());
  EXPECT_EQ(Result::eFAILED, verdicts[1].GetType());
  EXPECT_EQ("c", verdicts[2].GetTestName());
}

TEST(Verdicts, OfNothingAreNotGood) {
  std::ostringstream out;
  EXPECT_FALSE(HaveAllPassed(Judge(out, {})));
  EXPECT_EQ("", out.str());
}

TEST(Verdicts, AreAllGoodOnlyTogether) {
  std::ostringstream out;
  const Measurement good = Measured("a 1ms 9 1ms", {Micro(1)});
  EXPECT_TRUE(HaveAllPassed(Judge(out, {good, good})));
  EXPECT_FALSE(HaveAllPassed(Judge(out, {good, Measured("b 1ms 9 0ms", {Micro(1)}), good})));
}

TEST(SeriesTest, HasNoLowerTolerance) {
  const Measurement measurement = Measured("a 1ms 9 1ms", {Micro(1)});
  SeriesTest test(measurement);
  Quantity lower;
  Quantity upper;
  SeriesTest::ECondition lowerCondition = SeriesTest::eLESS;
  SeriesTest::ECondition upperCondition = SeriesTest::eNO_CONDITION;
  test.GetTolerances(lower, lowerCondition, upper, upperCondition);
  EXPECT_EQ(SeriesTest::eNO_CONDITION, lowerCondition);
  EXPECT_EQ(SeriesTest::eLESS, upperCondition);
  EXPECT_EQ("1 msec", upper.ToString());
  EXPECT_EQ("a", test.GetName());
}

}  // namespace
