#include "PlanField.h"

#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/RaiseSite.h>

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
const char* const sBAD_INTERVAL = "more than 0 and at most 10s is wanted";
const char* const sBAD_COUNT = "1 to 1000000 is wanted";

const char* const sDIGITS = "0123456789";
const char* const sNAME_CHARACTERS = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.";

void Refuse(const char* field, const std::string& text, const std::string& reason) {
  OXA_RAISE_ERROR(sLOG_NAME, InvalidParameter(field, Quoted(text) + " (" + reason + ")"));
}

// Why `text` doesn't begin with a number, for the one who wrote it.
const char* WhyNoNumber(const std::string& text) {
  return text.find_first_of(sDIGITS) == 1 && text[0] == '-' ? sNEGATIVE : sNO_NUMBER;
}

// The number that `text`, nothing but digits, writes; refused beyond what can be counted.
long long ReadDigits(const char* field, const std::string& text) {
  const long long largest = std::numeric_limits<long long>::max();
  long long number = 0;
  for (const char c : text) {
    const int digit = c - '0';
    if (number > (largest - digit) / 10) {
      Refuse(field, text, sTOO_LARGE);
      return 0;
    }
    number = number * 10 + digit;
  }
  return number;
}

PlanTime ReadTimeField(const char* field, const std::string& text) {
  PlanTime time;
  const std::string mistake = ReadTime(text, time);
  if (!mistake.empty()) Refuse(field, text, mistake);
  return time;
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
    const Elapse interval = ReadTimeField(sINTERVAL_FIELD, text).m_elapse;
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
    const long long count = ReadDigits(sCOUNT_FIELD, text);
    if (count >= 1 && count <= llLARGEST_COUNT) return static_cast<unsigned long>(count);
    Refuse(sCOUNT_FIELD, text, sBAD_COUNT);
  }
  OXA_FORWARD_ERRORS_WITH_INFO(OXA_INFO(sPLACE, sCOUNT_FIELD))
  return 0;
}

PlanTime ReadTolerance(const std::string& text) {
  try {
    return ReadTimeField(sTOLERANCE_FIELD, text);
  }
  OXA_FORWARD_ERRORS_WITH_INFO(OXA_INFO(sPLACE, sTOLERANCE_FIELD))
  return PlanTime();
}

}  // namespace Station
