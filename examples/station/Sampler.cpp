#include "Sampler.h"

#include <Infrastructure/OxaCore/RaiseSite.h>

#include "Loggers.h"
#include "StationAlerts.h"

namespace Station {

using Oxa::Core::Elapse;
using Oxa::Core::Error;
using Oxa::Core::TaskDirective;

bool Sampler::IsOvertaken() { return m_nextDue && *m_nextDue <= m_clock.Now(); }

std::optional<Elapse> Sampler::TakeSample(TaskDirective& directive) {
  ++m_ulSample;
  if (IsOvertaken()) {
    const std::string& series = m_series.m_sName;
    const Elapse overdue = m_clock.Now() - *m_nextDue;
    OXA_RAISE_ERROR_IN_PLACE(SeriesLogger(series), SampleMissed(m_ulSample, series, overdue));
    if (m_nextDue) return std::nullopt;  // the raise returned, but nobody has settled anything
  }
  const Elapse due = m_nextDue.value_or(m_clock.Now() + m_series.m_interval);
  m_nextDue = due + m_series.m_interval;
  if (!m_clock.SleepUntil(due, directive)) return std::nullopt;
  return m_clock.Now() - due;
}

RetryMissedSample::RetryMissedSample(Sampler& sampler, unsigned long limit)
    : m_sampler(sampler), m_sSeries(sampler.GetSeries().m_sName), m_ulLimit(limit) {}

bool RetryMissedSample::Handle(Error& error) {
  if (error.GetData(SampleMissed::sSERIES) != m_sSeries || m_ulRetries == m_ulLimit) return false;
  ++m_ulRetries;
  m_sampler.StartAnew();
  return true;
}

}  // namespace Station
