#include "Keeping.h"

#include <string>

#include "ShownText.h"
#include "Station.h"

namespace Station {

namespace {

const char* const sRECORDING_NOT_WHOLE = "the recording isn't whole: ";
const char* const sDAILY_LOG_NOT_WHOLE = "the daily log isn't whole: ";
const char* const sBEGINS = "a run begins: ";
const char* const sREFUSED = "refused: ";

bool ComplainOf(const char* what, const std::string& failure) {
  if (!failure.empty()) Complain(what + Shown(failure));
  return failure.empty();
}

void TellBegin(DailyLog& daily, const Plan& plan) {
  daily.Tell(sBEGINS + std::to_string(plan.m_series.size()) + " series");
  for (const std::string& refusal : plan.m_refusals) daily.Tell(sREFUSED + refusal);
}

}  // namespace

Keeping::Keeping(const CommandLine& commandLine, const Plan& plan) {
  if (!commandLine.m_sDailyFolder.empty()) {
    m_daily = std::make_unique<DailyLog>(commandLine.m_sDailyFolder);
  }
  if (!commandLine.m_sRecording.empty() && !plan.m_series.empty()) {
    m_recorder = std::make_unique<Recorder>(commandLine.m_sRecording, plan);
  }
  if (m_daily) TellBegin(*m_daily, plan);
}

bool Keeping::Finish(const std::vector<Measurement>& measurements) {
  const bool isRecorded = FinishRecording();
  return FinishDailyLog(measurements) && isRecorded;
}

bool Keeping::FinishRecording() {
  return !m_recorder || ComplainOf(sRECORDING_NOT_WHOLE, m_recorder->Finish());
}

bool Keeping::FinishDailyLog(const std::vector<Measurement>& measurements) {
  if (!m_daily) return true;
  for (const Measurement& measurement : measurements) m_daily->TellResult(measurement);
  return ComplainOf(sDAILY_LOG_NOT_WHOLE, m_daily->GetFailure());
}

}  // namespace Station
