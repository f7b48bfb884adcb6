#include "Histogram.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "NiceStep.h"

namespace Station {

namespace {

constexpr double dFURTHEST = 1e200;  // so that sums and powers of ten beyond it are finite
constexpr double dMOST_BINS = 50;    // more would be too thin on a phone
constexpr double dLEAST_BINS = 12;   // before the step is rounded up, which can more than halve them
constexpr double dTEN_TIMES = 10;
constexpr double dREACH =
    3;  // the most that the axis is longer for the tolerance, in widths of the samples' own range

bool CanBeDrawn(double value) { return std::abs(value) <= dFURTHEST; }
bool HasLogarithm(double value) { return value >= 1 / dFURTHEST && value <= dFURTHEST; }

// Where a value stands in the scale of the axis.
double Scaled(bool logarithmic, double value) {
  if (!logarithmic) return value;
  return value <= 0 ? -std::numeric_limits<double>::infinity() : std::log10(value);
}

// The part of the axis that is to be seen.
struct Range {
  bool m_bLogarithmic;
  double m_dLow;
  double m_dHigh;

  // In the scale of the axis.
  double GetWidth() const { return Scaled(m_bLogarithmic, m_dHigh) - Scaled(m_bLogarithmic, m_dLow); }
  // Whether the ends are too close to each other to be divided into bins.
  bool IsPoint() const { return m_dHigh - m_dLow <= 1e-9 * std::max(std::abs(m_dLow), std::abs(m_dHigh)); }
};

bool NeedsLogarithm(const std::vector<double>& ordered) {
  return HasLogarithm(ordered.front()) && ordered.back() / ordered.front() >= dTEN_TIMES;
}

// From the least sample to the greatest, or where they would be judged.
Range RangeOf(const std::vector<double>& ordered, double tolerance) {
  if (!ordered.empty()) return {NeedsLogarithm(ordered), ordered.front(), ordered.back()};
  const double only = CanBeDrawn(tolerance) ? tolerance : 0;
  return {false, only, only};
}

bool IsNear(const Range& range, double value) {
  if (range.m_bLogarithmic ? !HasLogarithm(value) : !CanBeDrawn(value)) return false;
  const double distance = Scaled(range.m_bLogarithmic, value) - Scaled(range.m_bLogarithmic, range.m_dLow);
  return range.IsPoint() ||
         (distance >= -dREACH * range.GetWidth() && distance <= (1 + dREACH) * range.GetWidth());
}

// A single value gets some room on both sides, but none below zero if it isn't there itself.
void Widen(Range& range) {
  const double largest = std::max(std::abs(range.m_dLow), std::abs(range.m_dHigh));
  const double room = largest > 0 ? largest / 4 : 1;
  range.m_dLow = range.m_dLow >= 0 ? std::max(0.0, range.m_dLow - room) : range.m_dLow - room;
  range.m_dHigh += room;
}

void Extend(Range& range, double tolerance) {
  if (IsNear(range, tolerance)) {
    range.m_dLow = std::min(range.m_dLow, tolerance);
    range.m_dHigh = std::max(range.m_dHigh, tolerance);
  }
  if (range.IsPoint()) Widen(range);
}

// By the rule of Freedman and Diaconis: twice the distance of the quartiles by the cube root of the number.
double WantedBinWidth(const std::vector<double>& ordered, bool logarithmic) {
  const std::size_t quarter = (ordered.size() - 1) / 4;
  const double lower = Scaled(logarithmic, ordered[quarter]);
  const double upper = Scaled(logarithmic, ordered[ordered.size() - 1 - quarter]);
  return 2 * (upper - lower) / std::cbrt(static_cast<double>(ordered.size()));
}

NiceStep BinStep(const std::vector<double>& ordered, const Range& range) {
  const double width = range.GetWidth();
  const double widest = width / dLEAST_BINS;
  if (ordered.empty() || ordered.front() == ordered.back()) return NiceStepFor(widest);
  return NiceStepFor(std::clamp(WantedBinWidth(ordered, range.m_bLogarithmic), width / dMOST_BINS, widest));
}

// The multiples of `step` around `range`, of which the last is above it. What they are compared with are the values,
// not their logarithms, so that rounding leaves no sample outside.
std::vector<double> EdgesAround(const Range& range, const NiceStep& step) {
  const auto edge = [&](double at) {
    return range.m_bLogarithmic ? std::pow(10.0, step.Times(at)) : step.Times(at);
  };
  double at = std::floor(Scaled(range.m_bLogarithmic, range.m_dLow) / step.Times(1)) - 1;
  while (edge(at + 1) <= range.m_dLow) ++at;
  std::vector<double> edges{edge(at)};
  while (edges.back() <= range.m_dHigh) edges.push_back(edge(++at));
  return edges;
}

std::vector<std::size_t> CountBetween(const std::vector<double>& edges, const std::vector<double>& ordered) {
  std::vector<std::size_t> counts;
  auto from = std::lower_bound(ordered.begin(), ordered.end(), edges.front());
  for (auto edge = edges.begin() + 1; edge != edges.end(); ++edge) {
    const auto to = std::lower_bound(from, ordered.end(), *edge);
    counts.push_back(static_cast<std::size_t>(to - from));
    from = to;
  }
  return counts;
}

}  // namespace

double Histogram::Position(double value) const {
  const double first = Scaled(m_bLogarithmic, m_edges.front());
  const double last = Scaled(m_bLogarithmic, m_edges.back());
  return (Scaled(m_bLogarithmic, value) - first) / (last - first);
}

Histogram MakeHistogram(std::vector<double> samples, double tolerance) {
  const auto drawable = std::partition(samples.begin(), samples.end(), CanBeDrawn);
  Histogram histogram;
  histogram.m_uLeftOut = static_cast<std::size_t>(samples.end() - drawable);
  samples.erase(drawable, samples.end());
  std::sort(samples.begin(), samples.end());

  Range range = RangeOf(samples, tolerance);
  Extend(range, tolerance);
  histogram.m_bLogarithmic = range.m_bLogarithmic;
  histogram.m_edges = EdgesAround(range, BinStep(samples, range));
  histogram.m_counts = CountBetween(histogram.m_edges, samples);
  return histogram;
}

}  // namespace Station
