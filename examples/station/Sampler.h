// Takes the samples of one series, and settles on the spot that one of them was missed.
//
// Samples stand in a fixed rhythm: each is due one interval after the one before it. A sample whose time has
// passed before its turn comes, because the system woke the sleeper too late, can't be taken: that is raised
// as a SampleMissed, in place. RetryMissedSample, a handler, settles it by making a new appointment; without
// a handler, or when it declines, the error is thrown.
#ifndef STATION_SAMPLER_H
#define STATION_SAMPLER_H

#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/Thread.h>
#include <Infrastructure/OxaCore/Time.h>

#include <optional>
#include <string>

#include "Clock.h"
#include "PlanLine.h"

namespace Station {

/// One thread; `clock` and `series` must outlive it.
class Sampler {
 public:
  Sampler(Clock& clock, const Series& series) : m_clock(clock), m_series(series) {}

  /// Sleeps until the next sample is due, and gives by how much the wake-up was late. Nothing if the thread of
  /// `directive` has been asked to stop, or if a missed sample was neither settled nor thrown. Raises
  /// SampleMissed.
  std::optional<Oxa::Core::Elapse> TakeSample(Oxa::Core::TaskDirective& directive);

  /// Forgets the rhythm: the next sample will be due one interval after it is asked for.
  void StartAnew() { m_nextDue.reset(); }

  const Series& GetSeries() const { return m_series; }

 private:
  bool IsOvertaken();

  Clock& m_clock;
  const Series& m_series;
  std::optional<Oxa::Core::Elapse> m_nextDue;  // nothing: no rhythm yet
  unsigned long m_ulSample = 0;                // the one in hand, from 1
};

/// Settles the SampleMissed of one sampler, up to a number of times.
///
/// Handlers are registered for a class of errors, so with several series at once this one is also asked about
/// the samples of others, on their threads. It declines those, by the series that the error names.
class RetryMissedSample : public Oxa::Core::ErrorHandler {
 public:
  /// `sampler` must outlive the last SampleMissed of its series.
  RetryMissedSample(Sampler& sampler, unsigned long limit);

  /// Has the sample retried; false, which lets the error be thrown, once the limit is reached, and for an error
  /// of another series.
  bool Handle(Oxa::Core::Error& error) override;

  /// To be asked by the thread of the series, or when that has ended.
  unsigned long GetRetries() const { return m_ulRetries; }

 private:
  Sampler& m_sampler;
  const std::string m_sSeries;
  const unsigned long m_ulLimit;
  unsigned long m_ulRetries = 0;
};

}  // namespace Station

#endif
