#include "ReportNotes.h"

#include <Infrastructure/OxaCore/AlertManager.h>

#include "ShownText.h"

namespace Station {

using Oxa::Core::AlertManager;

namespace {

const char* const sDOING = "Doing";
const char* const sPLAN = "Plan";
const char* const sSERIES = "Series";

}  // namespace

void NoteForReport(const std::string& doing, const Plan& plan) {
  std::string names;
  for (const Series& series : plan.m_series) names += (names.empty() ? "" : ", ") + series.m_sName;
  AlertManager* const manager = AlertManager::Instance();
  manager->AddFatalErrorInfo(sDOING, doing);
  manager->AddFatalErrorInfo(sPLAN, Shown(plan.m_sName));
  manager->AddFatalErrorInfo(sSERIES, names);
}

}  // namespace Station
