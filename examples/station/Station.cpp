#include "Station.h"

#include <Infrastructure/OxaCore/LogManager.h>

#include <algorithm>
#include <iostream>

#include "Clock.h"
#include "Days.h"
#include "Interruption.h"
#include "Keeping.h"
#include "LogFolder.h"
#include "Loggers.h"
#include "MeasureAll.h"
#include "Plan.h"
#include "Progress.h"
#include "Replay.h"
#include "Report.h"
#include "ShownText.h"
#include "StationAlerts.h"

namespace Station {

using Oxa::Core::eLOG_INFORMATIONAL;
using Oxa::Core::Error;
using Oxa::Core::LogManager;

namespace {

const char* const sPLAN_READ = "%s: %zu series, %zu lines refused";
const char* const sINTERRUPTED = "Interrupted; what was measured until now is kept";
const char* const sNO_SERIES = "the plan has no series that could be measured";
const char* const sRESULTS_LOST = "the results could not all be written";

std::string PlanName(const CommandLine& commandLine) {
  return commandLine.m_plan.value_or(sDEFAULT_PLAN_NAME);
}

Plan LoadPlan(const CommandLine& commandLine) {
  const std::string text = commandLine.m_plan ? ReadPlanFile(*commandLine.m_plan) : DefaultPlan();
  return ReadPlan(PlanName(commandLine), text);
}

void TellPlan(const std::string& name, const Plan& plan) {
  LogManager::Instance()
      ->GetLogger(sPLAN_LOGGER)
      ->WriteLog(eLOG_INFORMATIONAL, sPLAN_READ, Shown(name).c_str(), plan.m_series.size(),
                 plan.m_refusals.size());
  for (const std::string& refusal : plan.m_refusals) Complain(refusal);
  if (plan.m_series.empty()) Complain(sNO_SERIES);
}

std::vector<Measurement> Measure(const Plan& plan, Keeping& keeping) {
  HeedInterruptions();
  SystemClock clock;
  Progress progress(std::cerr, IsErrorOutputTerminal());
  std::vector<Measurement> measurements =
      MeasureAll(plan, clock, progress, IsInterrupted, keeping.GetRecorder(), keeping.GetDailyLog());
  if (IsInterrupted()) {
    LogManager::Instance()->GetLogger(sSTATION_LOGGER)->WriteLog(eLOG_INFORMATIONAL, sINTERRUPTED);
  }
  return measurements;
}

void Report(const Plan& plan, const std::vector<Measurement>& measurements) {
  for (const Measurement& measurement : measurements) {
    if (measurement.m_sGivenUp.empty()) continue;
    Complain("series " + Quoted(measurement.m_series.m_sName) + " given up: " + measurement.m_sGivenUp);
  }
  WriteTable(std::cout, measurements);
  WriteAlertCounts(std::cout, plan, measurements);
}

int StatusOf(const std::vector<Measurement>& measurements) {
  if (IsInterrupted()) return InterruptionStatus();
  const bool complete = std::all_of(measurements.begin(), measurements.end(),
                                    [](const Measurement& measurement) { return measurement.IsComplete(); });
  return complete && !measurements.empty() ? iALL_MEASURED : iINCOMPLETE;
}

int MeasureAndReport(const CommandLine& commandLine) {
  try {
    const Plan plan = LoadPlan(commandLine);
    OpenLog(commandLine.m_logOpenings, plan);
    TellPlan(PlanName(commandLine), plan);
    Keeping keeping(commandLine, plan);
    const std::vector<Measurement> measurements = Measure(plan, keeping);
    const bool isKept = keeping.Finish(measurements);
    Report(plan, measurements);
    const int status = StatusOf(measurements);
    return status == iALL_MEASURED && !isKept ? iINCOMPLETE : status;
  } catch (const Error& error) {  // the plan, the recording or the daily log
    Complain(error.what());
    return iCANNOT_START;
  }
}

int Serve(const CommandLine& commandLine) {
  switch (commandLine.m_eCommand) {
    case eREPLAY:
      return Replay(commandLine.m_sOperand);
    case eDAYS:
      return ShowDays(std::cout, commandLine.m_sOperand);
    default:
      return MeasureAndReport(commandLine);
  }
}

}  // namespace

int Run(const CommandLine& commandLine) {
  const int status = Serve(commandLine);
  FinishLog();
  WriteLogPlace(std::cout, LogDocument());
  if (std::cout.flush().good()) return status;
  Complain(sRESULTS_LOST);
  return status == iALL_MEASURED ? iINCOMPLETE : status;
}

void Complain(const std::string& text) { std::cerr << "station: " << text << std::endl; }

}  // namespace Station
