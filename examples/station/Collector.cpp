#include "Collector.h"

#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/RaiseSite.h>

#include <string>
#include <typeinfo>

#include "DailyLog.h"
#include "Loggers.h"
#include "StationAlerts.h"

namespace Station {

using Oxa::Core::AlertManager;
using Oxa::Core::Elapse;
using Oxa::Core::eLOG_DEBUG;
using Oxa::Core::LogManager;

namespace {

const char* const sSAMPLE = "Sample %lu came %.1f microseconds late";

template <class T>
void LimitWarnings() {
  const std::string className = typeid(T).name();
  AlertManager::Instance()->SetMaxWarnings(className, ulMAX_WARNINGS, true);
  AlertManager::Instance()->ResetWarningCount(className);
}

}  // namespace

Collector::Collector(const Plan& plan, SampleQueue& queue, Progress& progress, DailyLog* daily)
    : m_queue(queue), m_progress(progress), m_pDaily(daily) {
  for (const Series& series : plan.m_series) {
    m_measurements.emplace_back();
    m_measurements.back().m_series = series;
    m_loggers.push_back(LogManager::Instance()->GetLogger(SeriesLogger(series.m_sName)));
    m_ulWanted += series.m_ulCount;
  }
  LimitWarnings<SampleLate>();
  LimitWarnings<SampleLost>();
  LimitWarnings<SampleNotRecorded>();
}

bool Collector::Collect(const Elapse& timeout) {
  Sample sample;
  if (!m_queue.GetSemaphore().TimedWait(timeout) || !m_queue.TryPop(sample)) return false;
  Record(sample);
  m_progress.Show(++m_ulCollected, m_ulWanted);
  return true;
}

void Collector::Record(const Sample& sample) {
  Measurement& measurement = m_measurements[sample.m_uSeries];
  const Series& series = measurement.m_series;
  const auto& spLogger = m_loggers[sample.m_uSeries];
  measurement.m_latenesses.push_back(sample.m_lateness);
  spLogger->WriteLog(eLOG_DEBUG, sSAMPLE, sample.m_ulNumber, MicroSeconds(sample.m_lateness));
  if (sample.m_lateness <= series.m_tolerance) return;
  ++measurement.m_ulLate;
  if (m_pDaily != nullptr) m_pDaily->TellLate(sample, series);
  OXA_RAISE_WARNING(spLogger->GetPath(),
                    SampleLate(sample.m_ulNumber, series.m_sName, sample.m_lateness, series.m_tolerance));
}

}  // namespace Station
