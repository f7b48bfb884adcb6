// What the threads that measure hand to the one that collects.
#ifndef STATION_SAMPLE_H
#define STATION_SAMPLE_H

#include <Infrastructure/OxaCore/Queue.h>
#include <Infrastructure/OxaCore/Time.h>

#include <cstddef>

namespace Station {

/// One wake-up.
struct Sample {
  std::size_t m_uSeries = 0;     ///< which series of the plan, from 0
  unsigned long m_ulNumber = 0;  ///< which sample of the series, from 1
  Oxa::Core::Elapse m_lateness;
};

/// Never blocks whoever pushes: a thread that had to wait for the collector would miss its next sample.
using SampleQueue = Oxa::Core::Queue<Sample>;

}  // namespace Station

#endif
