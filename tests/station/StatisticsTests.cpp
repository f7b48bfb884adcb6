#include "Statistics.h"

#include <gtest/gtest.h>

#include "FakeClock.h"

namespace {

using Oxa::Core::Elapse;
using Station::Statistics;
using Station::Summarize;
using StationTests::Micro;

// 1 to `count` microseconds, the greatest first.
std::vector<Elapse> Descending(long long count) {
  std::vector<Elapse> samples;
  for (; count > 0; --count) samples.push_back(Micro(count));
  return samples;
}

TEST(Statistics, OfNothingAreZero) {
  const Statistics statistics = Summarize({});
  EXPECT_EQ(Elapse(0), statistics.m_least);
  EXPECT_EQ(Elapse(0), statistics.m_median);
  EXPECT_EQ(Elapse(0), statistics.m_percentile99);
  EXPECT_EQ(Elapse(0), statistics.m_greatest);
}

struct Row {
  long long m_iCount;
  long long m_iMedian;
  long long m_iPercentile99;
};

TEST(Statistics, TakeTheNearestRank) {
  for (const Row& row :
       {Row{1, 1, 1}, Row{2, 1, 2}, Row{3, 2, 3}, Row{4, 2, 4}, Row{5, 3, 5}, Row{99, 50, 99},
        Row{100, 50, 99}, Row{101, 51, 100}, Row{200, 100, 198}, Row{201, 101, 199}, Row{1000, 500, 990}}) {
    const Statistics statistics = Summarize(Descending(row.m_iCount));
    EXPECT_EQ(Micro(1), statistics.m_least);
    EXPECT_EQ(Micro(row.m_iMedian), statistics.m_median) << row.m_iCount;
    EXPECT_EQ(Micro(row.m_iPercentile99), statistics.m_percentile99) << row.m_iCount;
    EXPECT_EQ(Micro(row.m_iCount), statistics.m_greatest);
  }
}

TEST(Statistics, CountEqualSamplesOneByOne) {
  const Statistics statistics = Summarize({Micro(7), Micro(5), Micro(7), Micro(7)});
  EXPECT_EQ(Micro(5), statistics.m_least);
  EXPECT_EQ(Micro(7), statistics.m_median);
}

}  // namespace
