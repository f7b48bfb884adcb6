// The threads that measure, one for each series.
#ifndef STATION_SERIESTHREADS_H
#define STATION_SERIESTHREADS_H

#include <Infrastructure/OxaCore/Thread.h>

#include <boost/shared_ptr.hpp>
#include <memory>
#include <vector>

#include "Clock.h"
#include "FaultyClock.h"
#include "Measurement.h"
#include "Plan.h"
#include "Sample.h"
#include "SeriesTask.h"

namespace Station {

/// The operations are for one thread, which is none of those.
class SeriesThreads {
 public:
  /// Starts them all. All references must outlive this object, and the recorder, if there is one.
  SeriesThreads(const Plan& plan, Clock& clock, SampleQueue& queue, Recorder* recorder = nullptr);
  SeriesThreads(const SeriesThreads&) = delete;
  SeriesThreads& operator=(const SeriesThreads&) = delete;
  /// Stops them, and waits until they have ended.
  ~SeriesThreads();

  /// Whether one of them hasn't ended yet.
  bool AreAtWork() const;

  /// Asks all of them to stop. A request that comes before a thread has begun is lost, so whoever asks asks
  /// again while there are some at work.
  void Stop();

  /// Adds to the measurements, which are those of the plan in its order, what the threads tell after their end:
  /// the number of retries, and why a series was given up.
  void TellOutcome(std::vector<Measurement>& measurements) const;

 private:
  struct Worker {
    std::unique_ptr<FaultyClock> m_faultyClock;  // null for a series that has none
    boost::shared_ptr<SeriesTask> m_spTask;
    boost::shared_ptr<Oxa::Core::Thread> m_spThread;
  };

  std::vector<Worker> m_workers;
};

}  // namespace Station

#endif
