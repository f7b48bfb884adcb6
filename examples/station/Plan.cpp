#include "Plan.h"

#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/RaiseSite.h>

#include <sstream>

#include "PlanField.h"
#include "ShownText.h"
#include "Utf8.h"

namespace Station {

using Oxa::Core::Error;
using Oxa::Core::InvalidParameter;

namespace {

const char* const sLOG_NAME = "Station.Plan";
const char* const sPLACE = "Plan";
const char* const sUTF8_MARK = "\xEF\xBB\xBF";
const char* const sFULL = " (a plan holds 16 series at most)";

// In the single bytes of units, and without the mark that some editors begin UTF-8 with.
std::string Decoded(const std::string& text) {
  const std::string mark = sUTF8_MARK;
  return FromUtf8(text.rfind(mark, 0) == 0 ? text.substr(mark.size()) : text);
}

// Names have to differ, or the table at the end could not be read.
void RequireNewName(const Plan& plan, const Series& series) {
  for (const Series& other : plan.m_series) {
    if (other.m_sName != series.m_sName) continue;
    const std::string text = Quoted(series.m_sName) + " (line " + std::to_string(other.m_ulLine) + " has it)";
    OXA_RAISE_ERROR(sLOG_NAME, InvalidParameter(sNAME_FIELD, text));
  }
}

void RequireRoom(const Plan& plan, const Series& series) {
  if (plan.m_series.size() < uMOST_SERIES) return;
  OXA_RAISE_ERROR(sLOG_NAME, InvalidParameter(sNAME_FIELD, Quoted(series.m_sName) + sFULL));
}

void AddLine(Plan& plan, const std::string& planName, unsigned long line, const std::string& text) {
  try {
    const std::optional<Series> series = ReadLine(line, text);
    if (!series) return;
    RequireNewName(plan, *series);
    RequireRoom(plan, *series);
    plan.m_series.push_back(*series);
  }
  OXA_FORWARD_ERRORS_WITH_INFO(OXA_INFO(sPLACE, planName))
}

std::string DescribeRefusal(const std::string& planName, unsigned long line, const Error& error) {
  return planName + ":" + std::to_string(line) + ": " + error.what();
}

}  // namespace

Plan ReadPlan(const std::string& name, const std::string& text) {
  Plan plan{{}, {}, name};
  const std::string shownName = Shown(name);
  std::istringstream lines(Decoded(text));
  std::string line;
  for (unsigned long number = 1; std::getline(lines, line); ++number) {
    try {
      AddLine(plan, shownName, number, line);
    } catch (const InvalidParameter& error) {
      plan.m_refusals.push_back(DescribeRefusal(shownName, number, error));
    }
  }
  return plan;
}

}  // namespace Station
