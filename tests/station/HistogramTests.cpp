#include "Histogram.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>

namespace {

using Station::Histogram;
using Station::MakeHistogram;
using Edges = std::vector<double>;
using Counts = std::vector<std::size_t>;

constexpr double dNAN = std::numeric_limits<double>::quiet_NaN();
constexpr double dINFINITE = std::numeric_limits<double>::infinity();
constexpr double dGREATEST = std::numeric_limits<double>::max();

std::size_t Sum(const Counts& counts) {
  return std::accumulate(counts.begin(), counts.end(), std::size_t{0});
}

void ExpectWellMade(const Histogram& histogram, std::size_t samples) {
  ASSERT_EQ(histogram.m_edges.size(), histogram.m_counts.size() + 1);
  EXPECT_EQ(samples, Sum(histogram.m_counts) + histogram.m_uLeftOut);
  EXPECT_LE(histogram.m_counts.size(), 52U);
  for (std::size_t i = 1; i < histogram.m_edges.size(); ++i)
    EXPECT_LT(histogram.m_edges[i - 1], histogram.m_edges[i]);
  for (const double edge : histogram.m_edges) EXPECT_TRUE(std::isfinite(edge));
  EXPECT_EQ(0, histogram.Position(histogram.m_edges.front()));
  EXPECT_EQ(1, histogram.Position(histogram.m_edges.back()));
}

// The quartiles of 1 to 8 are 2 and 7: the rule wants bins of 2 * 5 / 2, but at least 12 of them.
TEST(Histogram, SortsIntoBins) {
  const Histogram histogram = MakeHistogram({8, 1, 7, 2, 6, 3, 5, 4, 1, 1.5}, 4);
  EXPECT_FALSE(histogram.m_bLogarithmic);
  EXPECT_EQ((Edges{1, 2, 3, 4, 5, 6, 7, 8, 9}), histogram.m_edges);
  EXPECT_EQ((Counts{3, 1, 1, 1, 1, 1, 1, 1}), histogram.m_counts);
  EXPECT_EQ(0U, histogram.m_uLeftOut);
  EXPECT_EQ(3.0 / 8, histogram.Position(4));
}

TEST(Histogram, PutsASampleOnAnEdgeToItsRight) {
  const Histogram histogram = MakeHistogram({0.1, 0.2, 0.3, 0.7, std::nextafter(0.3, 0)}, 0.5);
  EXPECT_EQ((Edges{0.1, 0.15, 0.2, 0.25, 0.3, 0.35, 0.4, 0.45, 0.5, 0.55, 0.6, 0.65, 0.7, 0.75}),
            histogram.m_edges);
  EXPECT_EQ((Counts{1, 0, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 1}), histogram.m_counts);
}

TEST(Histogram, FollowsTheRuleOfFreedmanAndDiaconis) {
  std::vector<double> samples(1000);  // 0 to 999: quartiles 249 and 750, so the rule asks for 2 * 501 / 10
  std::iota(samples.begin(), samples.end(), 0);
  EXPECT_EQ((Counts{100, 100, 100, 100, 100, 100, 100, 100, 100, 100}), MakeHistogram(samples, 999).m_counts);
  samples.assign(998, 500);  // no distance of quartiles at all: 50 bins
  samples.push_back(0);
  samples.push_back(999);
  const Histogram narrow = MakeHistogram(samples, 999);
  EXPECT_EQ(50U, narrow.m_counts.size());
  EXPECT_EQ(998U, narrow.m_counts[25]);
}

TEST(Histogram, IsLogarithmicFromTenTimesOn) {
  EXPECT_FALSE(MakeHistogram({1, 9.999}, 5).m_bLogarithmic);
  EXPECT_FALSE(MakeHistogram({0, 100}, 5).m_bLogarithmic);
  EXPECT_FALSE(MakeHistogram({-1, 100}, 5).m_bLogarithmic);
  const Histogram histogram = MakeHistogram({1, 10, 100, 1000, 999}, 100);
  EXPECT_TRUE(histogram.m_bLogarithmic);
  ExpectWellMade(histogram, 5);
  EXPECT_EQ(1, histogram.m_edges[0]);
  EXPECT_EQ(10, histogram.m_edges[2]);
  EXPECT_EQ(100, histogram.m_edges[4]);
  EXPECT_EQ((Counts{1, 0, 1, 0, 1, 1, 1}), histogram.m_counts);
  EXPECT_NEAR(2 / 3.5, histogram.Position(100), 1e-15);
  EXPECT_EQ(-dINFINITE, histogram.Position(0));
  EXPECT_EQ(-dINFINITE, histogram.Position(-5));
  EXPECT_TRUE(std::isnan(histogram.Position(dNAN)));
}

TEST(Histogram, HasANearToleranceOnItsAxis) {
  const std::vector<double> samples{50, 52, 54, 56, 60};
  for (const double tolerance : {20.0, 45.0, 60.0, 61.0, 90.0}) {
    const Histogram histogram = MakeHistogram(samples, tolerance);
    ExpectWellMade(histogram, 5);
    EXPECT_GE(histogram.Position(tolerance), 0) << tolerance;
    EXPECT_LE(histogram.Position(tolerance), 1) << tolerance;
  }
}

TEST(Histogram, LeavesAFarToleranceOffItsAxis) {
  const std::vector<double> samples{50, 52, 54, 56, 60};
  const Histogram plain = MakeHistogram(samples, 55);
  for (const double tolerance : {19.9, 0.0, -1000.0, 90.1, 1e300, dINFINITE, -dINFINITE, dNAN}) {
    const Histogram histogram = MakeHistogram(samples, tolerance);
    EXPECT_EQ(plain.m_edges, histogram.m_edges) << tolerance;
    EXPECT_EQ(tolerance < 50, histogram.Position(tolerance) < 0) << tolerance;
    EXPECT_EQ(tolerance > 60, histogram.Position(tolerance) > 1) << tolerance;
  }
}

TEST(Histogram, GivesEqualSamplesOneBin) {
  const Histogram histogram = MakeHistogram({5, 5, 5}, 5);
  EXPECT_EQ(3.5, histogram.m_edges.front());
  EXPECT_EQ(6.5, histogram.m_edges.back());
  EXPECT_EQ((Counts{0, 0, 0, 3, 0, 0}), MakeHistogram({5, 5, 5}, dNAN).m_counts);
  ExpectWellMade(histogram, 3);
  EXPECT_NEAR(0.5, histogram.Position(5), 1e-15);
  EXPECT_EQ(0, MakeHistogram({5, 5, 5}, 0).Position(0));
  EXPECT_LE(MakeHistogram({5, 5, 5}, 5000).Position(5000), 1);
}

TEST(Histogram, StandsZeros) {
  const Histogram histogram = MakeHistogram({0, 0, -0.0}, 0);
  ExpectWellMade(histogram, 3);
  EXPECT_EQ(0, histogram.m_edges.front());
  EXPECT_EQ(3U, histogram.m_counts.front());
  EXPECT_EQ(0, histogram.Position(0));
}

TEST(Histogram, StandsNoSamples) {
  for (const double tolerance : {250.0, 0.0, -1.0, dNAN, dINFINITE, dGREATEST}) {
    const Histogram histogram = MakeHistogram({}, tolerance);
    ExpectWellMade(histogram, 0);
    EXPECT_FALSE(histogram.m_bLogarithmic);
  }
  const Histogram histogram = MakeHistogram({}, 250);
  EXPECT_GT(histogram.Position(250), 0);
  EXPECT_LT(histogram.Position(250), 1);
}

TEST(Histogram, LeavesOutWhatCantBeDrawn) {
  const Histogram histogram = MakeHistogram({1, dNAN, 2, dINFINITE, 3, -dINFINITE, dGREATEST, -dGREATEST}, 2);
  ExpectWellMade(histogram, 8);
  EXPECT_EQ(5U, histogram.m_uLeftOut);
  EXPECT_EQ(3U, Sum(histogram.m_counts));
  const Histogram nothing = MakeHistogram({dNAN, dINFINITE}, 2);
  ExpectWellMade(nothing, 2);
  EXPECT_EQ(2U, nothing.m_uLeftOut);
}

TEST(Histogram, StandsExtremes) {
  const std::vector<std::vector<double>> extremes{{1e-200, 1e200},
                                                  {-1e200, 1e200},
                                                  {5e-324, 1e200},
                                                  {0, 5e-324},
                                                  {5e-324, 5e-324},
                                                  {1, std::nextafter(1, 2)},
                                                  {1e200, std::nextafter(1e200, 0)},
                                                  {1e6, 1e6 + 0.01},
                                                  {-1e200, -1e199},
                                                  {1e-200, 2e-200}};
  for (const std::vector<double>& samples : extremes) {
    for (const double tolerance : {0.0, 1.0, -1.0, 1e200, 5e-324, dNAN}) {
      SCOPED_TRACE(testing::Message() << samples[0] << ' ' << samples[1] << ' ' << tolerance);
      ExpectWellMade(MakeHistogram(samples, tolerance), 2);
    }
  }
}

// What rounding does to logarithms must not lose a sample.
TEST(Histogram, LosesNoSampleAtAnEdge) {
  for (int exponent = -30; exponent <= 30; ++exponent) {
    std::vector<double> samples;
    for (const double digits : {1.0, 2.0, 5.0, 10.0, 1000.0}) {
      const double sample = digits * std::pow(10.0, exponent);
      samples.insert(samples.end(), {sample, std::nextafter(sample, 0), std::nextafter(sample, 1e99)});
    }
    ExpectWellMade(MakeHistogram(samples, samples[0]), samples.size());
  }
}

}  // namespace
