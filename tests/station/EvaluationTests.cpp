#include "Evaluation.h"

#include <gtest/gtest.h>

#include "FakeClock.h"

namespace {

using Station::Measurement;
using StationTests::Elapse;
using StationTests::Micro;

TEST(Evaluation, FillsInTheStatisticsOfEverySeries) {
  std::vector<Measurement> measurements(50);
  for (long long i = 0; i < 50; ++i) {
    for (long long sample = 1; sample <= 100; ++sample) {
      measurements[static_cast<std::size_t>(i)].m_latenesses.push_back(Micro(1000 * i + sample));
    }
  }
  Station::Evaluate(measurements);
  for (long long i = 0; i < 50; ++i) {
    const Station::Statistics& statistics = measurements[static_cast<std::size_t>(i)].m_statistics;
    EXPECT_EQ(Micro(1000 * i + 1), statistics.m_least);
    EXPECT_EQ(Micro(1000 * i + 50), statistics.m_median);
    EXPECT_EQ(Micro(1000 * i + 99), statistics.m_percentile99);
    EXPECT_EQ(Micro(1000 * i + 100), statistics.m_greatest);
  }
}

TEST(Evaluation, LeavesTheSamplesInTheirOrder) {
  std::vector<Measurement> measurements(1);
  measurements[0].m_latenesses = {Micro(3), Micro(1), Micro(2)};
  Station::Evaluate(measurements);
  EXPECT_EQ((std::vector<Elapse>{Micro(3), Micro(1), Micro(2)}), measurements[0].m_latenesses);
}

TEST(Evaluation, OfNothingEnds) {
  std::vector<Measurement> none;
  Station::Evaluate(none);
  std::vector<Measurement> withoutSamples(2);
  Station::Evaluate(withoutSamples);
  EXPECT_EQ(Elapse(0), withoutSamples[1].m_statistics.m_greatest);
}

}  // namespace
