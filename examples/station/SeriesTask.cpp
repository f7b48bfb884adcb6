#include "SeriesTask.h"

#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/RaiseSite.h>
#include <Infrastructure/OxaCore/System.h>

#include <boost/make_shared.hpp>
#include <optional>
#include <typeinfo>

#include "Loggers.h"
#include "Recorder.h"
#include "StationAlerts.h"

namespace Station {

using Oxa::Core::AlertManager;
using Oxa::Core::Elapse;
using Oxa::Core::eLOG_INFORMATIONAL;
using Oxa::Core::LogManager;
using Oxa::Core::System;
using Oxa::Core::TaskDirective;

namespace {

const char* const sPLACE = "Series";
const char* const sTHREAD_NAME = "Series ";
const char* const sBEGIN = "Begins: %lu samples, one every %.1f microseconds";
const char* const sEND = "Ends: %lu of %lu samples taken, %lu of them after a retry";

// Lets missed samples be settled for the length of a scope.
class RetryScope {
 public:
  explicit RetryScope(const boost::shared_ptr<RetryMissedSample>& handler) : m_spHandler(handler) {
    AlertManager::Instance()->AddErrorHandler(typeid(SampleMissed).name(), m_spHandler);
  }
  RetryScope(const RetryScope&) = delete;
  RetryScope& operator=(const RetryScope&) = delete;
  // There is no manager any more where the process is dying of another thread's fault.
  ~RetryScope() {
    AlertManager* const manager = AlertManager::Instance();
    if (manager != nullptr) manager->RemoveErrorHandler(typeid(SampleMissed).name(), m_spHandler);
  }

 private:
  const boost::shared_ptr<RetryMissedSample> m_spHandler;
};

}  // namespace

SeriesTask::SeriesTask(const Series& series, std::size_t number, Clock& clock, SampleQueue& queue,
                       Recorder* recorder)
    : m_series(series),
      m_uNumber(number),
      m_queue(queue),
      m_pRecorder(recorder),
      m_sampler(clock, series),
      m_spRetry(boost::make_shared<RetryMissedSample>(m_sampler, ulMAX_RETRIES)),
      m_spLogger(LogManager::Instance()->GetLogger(SeriesLogger(series.m_sName))) {}

std::string SeriesTask::GetThreadName() const { return sTHREAD_NAME + m_series.m_sName; }

int SeriesTask::Run(TaskDirective& directive) {
  System::Instance()->SetCurrentThreadName(GetThreadName());  // for alerts: debuggers know the name already
  const RetryScope retries(m_spRetry);
  const unsigned long wanted = m_series.m_ulCount;
  m_spLogger->WriteLog(eLOG_INFORMATIONAL, sBEGIN, wanted, MicroSeconds(m_series.m_interval));
  try {
    const unsigned long taken = TakeSamples(directive);
    m_spLogger->WriteLog(eLOG_INFORMATIONAL, sEND, taken, wanted, GetRetries());
  }
  OXA_FORWARD_ERRORS_WITH_INFO(OXA_INFO(sPLACE, m_series.m_sName))
  return 0;
}

unsigned long SeriesTask::TakeSamples(TaskDirective& directive) {
  for (unsigned long taken = 0; taken < m_series.m_ulCount; ++taken) {
    const std::optional<Elapse> lateness = m_sampler.TakeSample(directive);
    if (!lateness) return taken;
    Deliver(taken + 1, *lateness);
  }
  return m_series.m_ulCount;
}

void SeriesTask::Deliver(unsigned long number, const Elapse& lateness) {
  const Sample sample{m_uNumber, number, lateness};
  if (m_pRecorder != nullptr) m_pRecorder->Keep(sample);
  if (m_queue.Push(sample)) return;
  OXA_RAISE_WARNING(m_spLogger->GetPath(), SampleLost(number, m_series.m_sName));
}

}  // namespace Station
