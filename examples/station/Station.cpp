#include "Station.h"

#include <Infrastructure/OxaCore/LogManager.h>

#include <algorithm>
#include <iostream>
#include <optional>

#include "Clock.h"
#include "Crash.h"
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
#include "ReportFile.h"
#include "ReportNotes.h"
#include "ShownText.h"
#include "Utf8.h"
#include "Verdicts.h"

namespace Station {

using Oxa::Core::eLOG_INFORMATIONAL;
using Oxa::Core::Error;
using Oxa::Core::LogManager;

namespace {

const char* const sPLAN_READ = "%s: %zu series, %zu lines refused";
const char* const sINTERRUPTED = "Interrupted; what was measured until now is kept";
const char* const sNO_SERIES = "the plan has no series that could be measured";
const char* const sMEASURING = "measuring";
const char* const sRESULTS_LOST = "the results could not all be written";

Plan LoadPlan(const CommandLine& commandLine) {
  if (commandLine.m_plan) return ReadPlan(*commandLine.m_plan, ReadPlanFile(*commandLine.m_plan));
  if (commandLine.m_eCommand != eMEASURE) return ReadPlan(sTEST_PLAN_NAME, TestPlan());
  return ReadPlan(sDEFAULT_PLAN_NAME, DefaultPlan());
}

void TellPlan(const Plan& plan) {
  LogManager::Instance()
      ->GetLogger(sPLAN_LOGGER)
      ->WriteLog(eLOG_INFORMATIONAL, sPLAN_READ, Shown(plan.m_sName).c_str(), plan.m_series.size(),
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

Verdicts Report(const Plan& plan, const std::vector<Measurement>& measurements) {
  for (const Measurement& measurement : measurements) {
    if (measurement.m_sGivenUp.empty()) continue;
    Complain("series " + Quoted(measurement.m_series.m_sName) + " given up: " + measurement.m_sGivenUp);
  }
  WriteTable(std::cout, measurements);
  Verdicts verdicts = Judge(std::cout, measurements);
  WriteAlertCounts(std::cout, plan, measurements);
  return verdicts;
}

// Whether a run came out as it was asked to. A self-test that leaves out a line of its plan hasn't tested all.
bool IsWell(const CommandLine& commandLine, const Plan& plan, const std::vector<Measurement>& measurements,
            const Verdicts& verdicts) {
  if (commandLine.m_eCommand == eTEST) return plan.m_refusals.empty() && HaveAllPassed(verdicts);
  const bool complete = std::all_of(measurements.begin(), measurements.end(),
                                    [](const Measurement& measurement) { return measurement.IsComplete(); });
  return complete && !measurements.empty();
}

Plan Prepare(const CommandLine& commandLine) {
  Plan plan = LoadPlan(commandLine);
  OpenLog(commandLine.m_logOpenings, plan);
  TellPlan(plan);
  return plan;
}

int MeasureAndReport(const CommandLine& commandLine) {
  const Plan plan = Prepare(commandLine);
  NoteForReport(sMEASURING, plan);
  ReportFile report(commandLine.m_sReport);
  Keeping keeping(commandLine, plan);
  const std::vector<Measurement> measurements = Measure(plan, keeping);
  const bool isKept = keeping.Finish(measurements);
  const Verdicts verdicts = Report(plan, measurements);
  const bool isWritten = report.Write(std::cout, measurements, verdicts, plan.m_refusals);
  if (IsInterrupted()) return InterruptionStatus();
  return isKept && isWritten && IsWell(commandLine, plan, measurements, verdicts) ? iALL_MEASURED
                                                                                  : iINCOMPLETE;
}

int MeasureIfPossible(const CommandLine& commandLine) {
  try {
    return MeasureAndReport(commandLine);
  } catch (const Error& error) {  // the plan, the report, the recording or the daily log
    Complain(Shown(error.what()));
    return iCANNOT_START;
  }
}

// The crash itself stands in no try block: nobody catches it.
int PrepareAndCrash(const CommandLine& commandLine) {
  std::optional<Plan> plan;
  try {
    plan = Prepare(commandLine);
  } catch (const Error& error) {
    Complain(Shown(error.what()));
    return iCANNOT_START;
  }
  return Crash(commandLine, *plan);
}

int Serve(const CommandLine& commandLine) {
  switch (commandLine.m_eCommand) {
    case eREPLAY:
      return Replay(commandLine.m_sOperand, commandLine.m_sReport);
    case eDAYS:
      return ShowDays(std::cout, commandLine.m_sOperand);
    case eCRASH:
      return PrepareAndCrash(commandLine);
    default:
      return MeasureIfPossible(commandLine);
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

void Complain(const std::string& text) { std::cerr << "station: " << ToUtf8(text) << std::endl; }

}  // namespace Station
