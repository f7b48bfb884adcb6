// Takes the samples of all series out of their queue and sorts them by series.
#ifndef STATION_COLLECTOR_H
#define STATION_COLLECTOR_H

#include <Infrastructure/OxaCore/Log.h>
#include <Infrastructure/OxaCore/Time.h>

#include <boost/shared_ptr.hpp>
#include <vector>

#include "Measurement.h"
#include "Plan.h"
#include "Progress.h"
#include "Sample.h"

namespace Station {

class DailyLog;

/// Of all samples that come later than their series tolerates, this many are told; the rest is silenced. The
/// limit is for the class of warnings, and so for all series together.
constexpr unsigned long ulMAX_WARNINGS = 20;

/// One thread, and not one of those that measure: it has the time to log, to warn and to draw.
class Collector {
 public:
  /// `queue` and `progress` must outlive it, and the daily log, if there is one.
  Collector(const Plan& plan, SampleQueue& queue, Progress& progress, DailyLog* daily = nullptr);

  /// Waits for one sample, up to `timeout`, and records it. A sample that is late beyond the tolerance of its
  /// series is told as a SampleLate, and in the daily log. False if none came.
  bool Collect(const Oxa::Core::Elapse& timeout);

  /// One per series of the plan, in its order.
  std::vector<Measurement>& GetMeasurements() { return m_measurements; }

 private:
  void Record(const Sample& sample);

  SampleQueue& m_queue;
  Progress& m_progress;
  DailyLog* const m_pDaily;
  std::vector<Measurement> m_measurements;
  std::vector<boost::shared_ptr<Oxa::Core::Logger>> m_loggers;  // one per series
  unsigned long m_ulWanted = 0;
  unsigned long m_ulCollected = 0;
};

}  // namespace Station

#endif
