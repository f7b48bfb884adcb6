// What came out of one series.
#ifndef STATION_MEASUREMENT_H
#define STATION_MEASUREMENT_H

#include <Infrastructure/OxaCore/Time.h>

#include <string>
#include <vector>

#include "PlanLine.h"
#include "Statistics.h"

namespace Station {

struct Measurement {
  Series m_series;
  std::vector<Oxa::Core::Elapse> m_latenesses;  ///< in the order in which they were measured
  unsigned long m_ulLate = 0;                   ///< how many of them the series doesn't tolerate
  unsigned long m_ulRetries = 0;                ///< samples that were missed and taken anew
  std::string m_sGivenUp;                       ///< why the series was given up; empty if it wasn't
  Statistics m_statistics;                      ///< of the latenesses, once they were evaluated

  bool IsComplete() const { return m_latenesses.size() == m_series.m_ulCount; }
};

}  // namespace Station

#endif
