// What the thread of a series does: it measures, and hands over what it has measured.
#ifndef STATION_SERIESTASK_H
#define STATION_SERIESTASK_H

#include <Infrastructure/OxaCore/Log.h>
#include <Infrastructure/OxaCore/Thread.h>

#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <string>

#include "Clock.h"
#include "PlanLine.h"
#include "Sample.h"
#include "Sampler.h"

namespace Station {

class Recorder;

/// Of each series, this many missed samples are retried; one more, and the series is given up.
constexpr unsigned long ulMAX_RETRIES = 500;

/// One series, once. What isn't measuring is left to others, since every microsecond between two samples
/// counts: a sample goes into a queue, and into the pipe of the recorder, and that's all.
class SeriesTask : public Oxa::Core::Task {
 public:
  /// `number` is the place of `series` in the plan. All references must outlive the task, and the recorder, if there
  /// is one.
  SeriesTask(const Series& series, std::size_t number, Clock& clock, SampleQueue& queue,
             Recorder* recorder = nullptr);

  /// What its thread is to be called: "Series " and the name of the series.
  std::string GetThreadName() const;

  /// Takes the samples, until it is asked to stop. A SampleMissed that wasn't settled leaves it, and becomes the
  /// last error of the thread. A sample that finds the queue full is told as a SampleLost. Gives 0.
  int Run(Oxa::Core::TaskDirective& directive) override;

  /// Samples that were missed and taken anew. To be asked when the thread has ended.
  unsigned long GetRetries() const { return m_spRetry->GetRetries(); }

 private:
  unsigned long TakeSamples(Oxa::Core::TaskDirective& directive);
  void Deliver(unsigned long number, const Oxa::Core::Elapse& lateness);

  const Series& m_series;
  const std::size_t m_uNumber;
  SampleQueue& m_queue;
  Recorder* const m_pRecorder;
  Sampler m_sampler;
  const boost::shared_ptr<RetryMissedSample> m_spRetry;
  const boost::shared_ptr<Oxa::Core::Logger> m_spLogger;
};

}  // namespace Station

#endif
