#include "PlanField.h"

#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/RaiseSite.h>

#include <algorithm>
#include <limits>

#include "ShownText.h"

namespace Station {

using Oxa::Core::Elapse;
using Oxa::Core::InvalidParameter;

namespace {

const char* const sLOG_NAME = "Station.Plan.Field";
const char* const sPLACE = "PlanField";

const char* const sBAD_NAME = "only letters, digits, '-', '_' and '.' make a name, 20 at most";
const char* const sNO_NUMBER = "a whole number is wanted";
const char* const sNEGATIVE = "it can't be negative";
const char* const sTOO_LARGE = "the number is too large";
const char* const sNO_UNIT = "a unit is wanted: ns, us, ms or s";
const char* const sUNKNOWN_UNIT = "the unit is unknown; ns, us, ms and s are known";
const char* const sBAD_INTERVAL = "more than 0 and at most 10s is wanted";
const char* const sBAD_COUNT = "1 to 1000000 is wanted";

const char* const sDIGITS = "0123456789";
const char* const sNAME_CHARACTERS = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.";

struct Unit {
  const char* m_pName;
  Elapse::TimeUnits m_eUnits;
  long long m_iNanoSeconds;
};
const Unit aUNITS[] = {{"ns", Elapse::NanoSeconds, 1},
                       {"us", Elapse::MicroSeconds, 1000},
                       {"ms", Elapse::MilliSeconds, 1000000},
                       {"s", Elapse::Seconds, 1000000000}};

void Refuse(const char* field, const std::string& text, const char* reason) {
  OXA_RAISE_ERROR(sLOG_NAME, InvalidParameter(field, Quoted(text) + " (" + reason + ")"));
}

// Why `text` doesn't begin with a number, for the one who wrote it.
const char* WhyNoNumber(const std::string& text) {
  return text.find_first_of(sDIGITS) == 1 && text[0] == '-' ? sNEGATIVE : sNO_NUMBER;
}

// Why `rest`, what follows the number, is no unit.
const char* WhyNoUnit(const std::string& rest) {
  if (rest.empty()) return sNO_UNIT;
  return rest[0] == '.' || rest[0] == ',' ? sNO_NUMBER : sUNKNOWN_UNIT;
}

// The number that the first `digits` characters of `text` write; refused beyond `largest`.
long long ReadDigits(const char* field, const std::string& text, std::size_t digits, long long largest) {
  long long number = 0;
  for (std::size_t i = 0; i < digits; ++i) {
    const int digit = text[i] - '0';
    if (number > (largest - digit) / 10) {
      Refuse(field, text, sTOO_LARGE);
      return 0;
    }
    number = number * 10 + digit;
  }
  return number;
}

// A number with its unit, up to what a count of nanoseconds can hold.
Elapse ReadDuration(const char* field, const std::string& text) {
  const std::size_t digits = std::min(text.find_first_not_of(sDIGITS), text.size());
  const std::string name = text.substr(digits);
  if (digits == 0) {
    Refuse(field, text, WhyNoNumber(text));
    return 0;
  }
  for (const Unit& unit : aUNITS) {
    if (name != unit.m_pName) continue;
    const long long largest = std::numeric_limits<long long>::max() / unit.m_iNanoSeconds;
    return Elapse(ReadDigits(field, text, digits, largest), unit.m_eUnits);
  }
  Refuse(field, text, WhyNoUnit(name));
  return 0;
}

}  // namespace

std::string ReadName(const std::string& text) {
  try {
    if (text.size() > uLONGEST_NAME || text.find_first_not_of(sNAME_CHARACTERS) != std::string::npos) {
      Refuse(sNAME_FIELD, text, sBAD_NAME);
    }
  }
  OXA_FORWARD_ERRORS_WITH_INFO(OXA_INFO(sPLACE, sNAME_FIELD))
  return text;
}

Elapse ReadInterval(const std::string& text) {
  try {
    const Elapse interval = ReadDuration(sINTERVAL_FIELD, text);
    if (interval > 0 && interval <= Elapse(llLONGEST_INTERVAL, Elapse::Seconds)) return interval;
    Refuse(sINTERVAL_FIELD, text, sBAD_INTERVAL);
  }
  OXA_FORWARD_ERRORS_WITH_INFO(OXA_INFO(sPLACE, sINTERVAL_FIELD))
  return 0;
}

unsigned long ReadCount(const std::string& text) {
  try {
    if (text.find_first_not_of(sDIGITS) != std::string::npos) {
      Refuse(sCOUNT_FIELD, text, WhyNoNumber(text));
      return 0;
    }
    const long long largest = std::numeric_limits<long long>::max();
    const long long count = ReadDigits(sCOUNT_FIELD, text, text.size(), largest);
    if (count >= 1 && count <= llLARGEST_COUNT) return static_cast<unsigned long>(count);
    Refuse(sCOUNT_FIELD, text, sBAD_COUNT);
  }
  OXA_FORWARD_ERRORS_WITH_INFO(OXA_INFO(sPLACE, sCOUNT_FIELD))
  return 0;
}

Elapse ReadTolerance(const std::string& text) {
  try {
    return ReadDuration(sTOLERANCE_FIELD, text);
  }
  OXA_FORWARD_ERRORS_WITH_INFO(OXA_INFO(sPLACE, sTOLERANCE_FIELD))
  return 0;
}

}  // namespace Station
