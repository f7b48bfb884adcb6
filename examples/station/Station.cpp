#include "Station.h"

#include <iostream>

#include "AlertLog.h"
#include "Clock.h"
#include "Interruption.h"
#include "Measurement.h"
#include "Plan.h"
#include "Progress.h"
#include "Report.h"
#include "StationAlerts.h"

namespace Station {

namespace {

constexpr int iALL_MEASURED = 0;
constexpr int iINCOMPLETE = 1;
constexpr int iCANNOT_START = 2;

void Complain(const std::string& text) { std::cerr << "station: " << text << std::endl; }

Plan LoadPlan(const CommandLine& commandLine) {
  if (!commandLine.m_plan) return ReadPlan(sDEFAULT_PLAN_NAME, DefaultPlan());
  return ReadPlan(*commandLine.m_plan, ReadPlanFile(*commandLine.m_plan));
}

std::vector<Measurement> MeasureAll(const Plan& plan) {
  std::vector<Measurement> measurements;
  SystemClock clock;
  Progress progress(std::cerr, IsErrorOutputTerminal());
  for (const Series& series : plan.m_series) {
    if (IsInterrupted()) break;
    measurements.push_back(Measure(series, clock, progress));
    progress.Clear();
    if (!measurements.back().m_sGivenUp.empty())
      Complain("series given up: " + measurements.back().m_sGivenUp);
  }
  return measurements;
}

bool AreComplete(const Plan& plan, const std::vector<Measurement>& measurements) {
  if (measurements.empty() || measurements.size() != plan.m_series.size()) return false;
  for (const Measurement& measurement : measurements) {
    if (!measurement.IsComplete()) return false;
  }
  return true;
}

int MeasureAndReport(const Plan& plan, AlertLog& log) {
  HeedInterruptions();
  const std::vector<Measurement> measurements = MeasureAll(plan);
  WriteTable(std::cout, measurements);
  WriteAlertCounts(std::cout, plan, measurements, log.GetFile());
  const bool written = std::cout.flush().good() && log.IsGood();
  if (!written) Complain("the results could not all be written");
  if (IsInterrupted()) return InterruptionStatus();
  return written && AreComplete(plan, measurements) ? iALL_MEASURED : iINCOMPLETE;
}

// The catch clause stands inside the life of the log, so that the log hears of a plan that can't be read.
int RunLogged(const CommandLine& commandLine, AlertLog& log) {
  try {
    const Plan plan = LoadPlan(commandLine);
    for (const std::string& refusal : plan.m_refusals) Complain(refusal);
    if (plan.m_series.empty()) Complain("the plan has no series that could be measured");
    return MeasureAndReport(plan, log);
  } catch (const PlanUnreadable& error) {
    Complain(error.what());
    return iCANNOT_START;
  }
}

}  // namespace

int Run(const CommandLine& commandLine) {
  try {
    AlertLog log(commandLine.m_sFolder);
    return RunLogged(commandLine, log);
  } catch (const OutputUnusable& error) {
    Complain(error.what());
    return iCANNOT_START;
  }
}

}  // namespace Station
