#include "PlanLine.h"

#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/RaiseSite.h>

#include <vector>

#include "PlanField.h"
#include "ShownText.h"

namespace Station {

using Oxa::Core::InvalidParameter;

namespace {

const char* const sLOG_NAME = "Station.Plan.Line";
const char* const sPLACE = "PlanLine";
const char* const sBLANKS = " \t\r";

constexpr const char* aFIELDS[] = {sNAME_FIELD, sINTERVAL_FIELD, sCOUNT_FIELD, sTOLERANCE_FIELD};
constexpr std::size_t uFIELDS = 4;

// The last field takes the rest of the line: names of units hold blanks.
std::vector<std::string> SplitAtBlanks(const std::string& text) {
  std::vector<std::string> fields;
  for (std::size_t end = 0;;) {
    const std::size_t begin = text.find_first_not_of(sBLANKS, end);
    if (begin == std::string::npos) return fields;
    end = text.find_first_of(sBLANKS, begin);
    if (fields.size() + 1 == uFIELDS) end = text.find_last_not_of(sBLANKS) + 1;
    fields.push_back(text.substr(begin, end - begin));
  }
}

Series MakeSeries(unsigned long line, const std::vector<std::string>& fields) {
  Series series{ReadName(fields[0]), ReadInterval(fields[1]), ReadCount(fields[2]), 0, line};
  const PlanTime tolerance = ReadTolerance(fields[3]);
  series.m_tolerance = tolerance.m_elapse;
  series.m_sUnit = tolerance.m_sUnit;
  return series;
}

}  // namespace

std::optional<Series> ReadLine(unsigned long line, const std::string& text) {
  const std::string shown = Quoted(text);
  try {
    const std::vector<std::string> fields = SplitAtBlanks(text.substr(0, text.find('#')));
    if (fields.empty()) return std::nullopt;
    if (fields.size() == uFIELDS) return MakeSeries(line, fields);
    OXA_RAISE_ERROR(sLOG_NAME, InvalidParameter(aFIELDS[fields.size()]));
  }
  OXA_FORWARD_ERRORS_WITH_INFO(OXA_INFO(sPLACE, line), OXA_INFO("PlanText", shown))
  return std::nullopt;
}

}  // namespace Station
