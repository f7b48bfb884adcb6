// Sorts samples into bins.
#ifndef STATION_HISTOGRAM_H
#define STATION_HISTOGRAM_H

#include <cstddef>
#include <vector>

namespace Station {

/// Bins of the same width on a linear or a logarithmic axis.
struct Histogram {
  bool m_bLogarithmic = false;
  std::vector<double> m_edges;  ///< rising, one more than there are bins
  std::vector<std::size_t>
      m_counts;  ///< per bin: how many samples are its lower edge or more, and less than its upper
  std::size_t m_uLeftOut = 0;  ///< how many samples are in no bin: not finite, or beyond 1e200

  /// Where `value` stands on the axis: 0 is the first edge, 1 the last. Below 0 or above 1 outside of the axis, also
  /// infinite (zero on a logarithmic one); NaN for NaN.
  double Position(double value) const;
};

/// Sorts `samples` (in any order) into some 5 to 50 bins, as many as their spread and number ask for (the rule of
/// Freedman and Diaconis), whose edges are round figures. The axis is logarithmic if the samples are all above
/// zero and the greatest is at least ten times the least: latenesses crowd at one place and have a long tail, and
/// on a linear axis one of the two can't be seen. `tolerance` is on the axis as well, unless it is further from
/// the nearest sample than three times the whole range of the samples; if they are all the same it is there wherever
/// it is, as long as it could be a sample itself.
Histogram MakeHistogram(std::vector<double> samples, double tolerance);

}  // namespace Station

#endif
