#include "Sampler.h"

#include <Infrastructure/OxaCore/RaiseSite.h>

#include "StationAlerts.h"

namespace Station {

using Oxa::Core::Elapse;
using Oxa::Core::Error;

namespace {

const char* const sLOG_NAME = "Station.Sampler";

}  // namespace

bool Sampler::IsOvertaken() { return m_nextDue && *m_nextDue <= m_clock.Now(); }

std::optional<Elapse> Sampler::TakeSample() {
  ++m_ulSample;
  if (IsOvertaken()) {
    const Elapse overdue = m_clock.Now() - *m_nextDue;
    OXA_RAISE_ERROR_IN_PLACE(sLOG_NAME, SampleMissed(m_ulSample, m_series.m_sName, overdue));
    if (m_nextDue) return std::nullopt;  // the raise returned, but nobody has settled anything
  }
  const Elapse due = m_nextDue.value_or(m_clock.Now() + m_series.m_interval);
  m_nextDue = due + m_series.m_interval;
  if (!m_clock.SleepUntil(due)) return std::nullopt;
  return m_clock.Now() - due;
}

bool RetryMissedSample::Handle(Error&) {
  if (m_ulRetries == m_ulLimit) return false;
  ++m_ulRetries;
  m_sampler.StartAnew();
  return true;
}

}  // namespace Station
