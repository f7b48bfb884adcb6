#include "Measurement.h"

#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/RaiseSite.h>

#include <boost/make_shared.hpp>
#include <typeinfo>

#include "Sampler.h"
#include "StationAlerts.h"

namespace Station {

using Oxa::Core::AlertManager;
using Oxa::Core::Elapse;

namespace {

const char* const sLOG_NAME = "Station.Measurement";
const char* const sPLACE = "Series";

// Lets a sampler's missed samples be settled for the length of a scope.
class RetryScope {
 public:
  explicit RetryScope(Sampler& sampler)
      : m_spHandler(boost::make_shared<RetryMissedSample>(sampler, ulMAX_RETRIES)) {
    AlertManager::Instance()->AddErrorHandler(typeid(SampleMissed).name(), m_spHandler);
  }
  RetryScope(const RetryScope&) = delete;
  RetryScope& operator=(const RetryScope&) = delete;
  ~RetryScope() { AlertManager::Instance()->RemoveErrorHandler(typeid(SampleMissed).name(), m_spHandler); }

  unsigned long GetRetries() const { return m_spHandler->GetRetries(); }

 private:
  boost::shared_ptr<RetryMissedSample> m_spHandler;
};

// Each series may tell its first late samples.
void LimitWarnings() {
  const std::string className = typeid(SampleLate).name();
  AlertManager::Instance()->SetMaxWarnings(className, ulMAX_WARNINGS, true);
  AlertManager::Instance()->ResetWarningCount(className);
}

void Record(Measurement& measurement, const Elapse& lateness) {
  const Series& series = measurement.m_series;
  measurement.m_latenesses.push_back(lateness);
  if (lateness <= series.m_tolerance) return;
  ++measurement.m_ulLate;
  OXA_RAISE_WARNING(
      sLOG_NAME, SampleLate(measurement.m_latenesses.size(), series.m_sName, lateness, series.m_tolerance));
}

void TakeSamples(Measurement& measurement, Sampler& sampler, Progress& progress) {
  const Series& series = measurement.m_series;
  try {
    progress.Show(series.m_sName, 0, series.m_ulCount);
    while (!measurement.IsComplete()) {
      const std::optional<Elapse> lateness = sampler.TakeSample();
      if (!lateness) return;
      Record(measurement, *lateness);
      progress.Show(series.m_sName, measurement.m_latenesses.size(), series.m_ulCount);
    }
  }
  OXA_FORWARD_ERRORS_WITH_INFO(OXA_INFO(sPLACE, series.m_sName))
}

}  // namespace

Measurement Measure(const Series& series, Clock& clock, Progress& progress) {
  LimitWarnings();
  Measurement measurement;
  measurement.m_series = series;
  Sampler sampler(clock, measurement.m_series);
  const RetryScope retries(sampler);
  try {
    TakeSamples(measurement, sampler, progress);
  } catch (const SampleMissed& error) {
    measurement.m_sGivenUp = error.what();
  }
  measurement.m_ulRetries = retries.GetRetries();
  return measurement;
}

}  // namespace Station
