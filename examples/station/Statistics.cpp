#include "Statistics.h"

#include <algorithm>
#include <cstddef>

namespace Station {

using Oxa::Core::Elapse;

namespace {

// The nearest rank: the first of the ordered samples that `percent` of them don't exceed.
const Elapse& Percentile(const std::vector<Elapse>& ordered, std::size_t percent) {
  const std::size_t rank = (ordered.size() * percent + 99) / 100;
  return ordered[rank - 1];
}

}  // namespace

Statistics Summarize(std::vector<Elapse> samples) {
  if (samples.empty()) return Statistics();
  std::sort(samples.begin(), samples.end());
  return Statistics{samples.front(), Percentile(samples, 50), Percentile(samples, 99), samples.back()};
}

}  // namespace Station
