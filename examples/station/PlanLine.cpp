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
const char* const sFIFTH_FIELD = "fifth field";
const char* const sTOO_MANY_FIELDS = " (a line holds name, interval, count and tolerance)";

constexpr const char* aFIELDS[] = {sNAME_FIELD, sINTERVAL_FIELD, sCOUNT_FIELD, sTOLERANCE_FIELD};
constexpr std::size_t uFIELDS = 4;

std::vector<std::string> SplitAtBlanks(const std::string& text) {
  std::vector<std::string> fields;
  for (std::size_t end = 0;;) {
    const std::size_t begin = text.find_first_not_of(sBLANKS, end);
    if (begin == std::string::npos) return fields;
    end = text.find_first_of(sBLANKS, begin);
    fields.push_back(text.substr(begin, end - begin));
  }
}

void RequireFourFields(const std::vector<std::string>& fields) {
  if (fields.size() < uFIELDS) OXA_RAISE_ERROR(sLOG_NAME, InvalidParameter(aFIELDS[fields.size()]));
  if (fields.size() > uFIELDS) {
    OXA_RAISE_ERROR(sLOG_NAME, InvalidParameter(sFIFTH_FIELD, Quoted(fields[uFIELDS]) + sTOO_MANY_FIELDS));
  }
}

}  // namespace

std::optional<Series> ReadLine(unsigned long line, const std::string& text) {
  const std::string shown = Quoted(text);
  try {
    const std::vector<std::string> fields = SplitAtBlanks(text.substr(0, text.find('#')));
    if (fields.empty()) return std::nullopt;
    RequireFourFields(fields);
    if (fields.size() != uFIELDS) return std::nullopt;  // where the raise has returned
    return Series{ReadName(fields[0]), ReadInterval(fields[1]), ReadCount(fields[2]),
                  ReadTolerance(fields[3]), line};
  }
  OXA_FORWARD_ERRORS_WITH_INFO(OXA_INFO(sPLACE, line), OXA_INFO("PlanText", shown))
  return std::nullopt;
}

}  // namespace Station
