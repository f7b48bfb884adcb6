// Measures one series from its first sample to its last.
#ifndef STATION_MEASUREMENT_H
#define STATION_MEASUREMENT_H

#include <Infrastructure/OxaCore/Time.h>

#include <string>
#include <vector>

#include "Clock.h"
#include "PlanLine.h"
#include "Progress.h"

namespace Station {

/// Of each series, this many late samples are told; the rest is silenced.
constexpr unsigned long ulMAX_WARNINGS = 10;
/// Of each series, this many missed samples are retried; one more, and the series is given up.
constexpr unsigned long ulMAX_RETRIES = 500;

/// What came out.
struct Measurement {
  Series m_series;
  std::vector<Oxa::Core::Elapse> m_latenesses;  ///< in the order in which they were measured
  unsigned long m_ulLate = 0;                   ///< how many of them the series doesn't tolerate
  unsigned long m_ulRetries = 0;                ///< samples that were missed and taken anew
  std::string m_sGivenUp;                       ///< why the series was given up; empty if it wasn't

  bool IsComplete() const { return m_latenesses.size() == m_series.m_ulCount; }
};

/// Takes the samples of `series`. A sample that is late beyond its tolerance is told as a SampleLate. Ends
/// early if the user wants the program to end, and if a SampleMissed couldn't be settled.
Measurement Measure(const Series& series, Clock& clock, Progress& progress);

}  // namespace Station

#endif
