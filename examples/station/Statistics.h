// What a series of latenesses comes to.
#ifndef STATION_STATISTICS_H
#define STATION_STATISTICS_H

#include <Infrastructure/OxaCore/Time.h>

#include <vector>

namespace Station {

/// Four of the samples, by their rank: figures that were really measured, never a mean of two.
struct Statistics {
  Oxa::Core::Elapse m_least;
  Oxa::Core::Elapse m_median;        ///< the least sample that half of all samples don't exceed
  Oxa::Core::Elapse m_percentile99;  ///< the least sample that 99 of 100 samples don't exceed
  Oxa::Core::Elapse m_greatest;
};

/// `samples` in any order; all zero if there are none.
Statistics Summarize(std::vector<Oxa::Core::Elapse> samples);

}  // namespace Station

#endif
