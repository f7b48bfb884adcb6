#include "PlanTime.h"

#include <algorithm>
#include <boost/shared_ptr.hpp>
#include <charconv>
#include <cstddef>
#include <system_error>

#include "Quantity.h"
#include "ShownText.h"

namespace Station {

using Oxa::Core::UnitDescriptor;
using Oxa::Core::UnitDictionary;

namespace {

const char* const sNO_NUMBER = "a number is wanted";
const char* const sNEGATIVE = "it can't be negative";
const char* const sOUT_OF_RANGE = "the number is out of range";
const char* const sTOO_LONG = "it is longer than 9000000000 seconds";
const char* const sNO_UNIT = "a unit is wanted, as in 250us";
const char* const sUNKNOWN = "no unit is called ";
const char* const sAMBIGUOUS = "several units are called ";
const char* const sTHE_ONE = "; the one for times is ";
const char* const sNO_TIME = " is no unit of times";

const char* const sDIGITS = "0123456789";

// Reads the number that begins `text` and leaves the unit in `unit`. Gives what is wrong; empty if nothing is.
std::string ReadNumber(const std::string& text, double& number, std::string& unit) {
  if (text.find_first_of(sDIGITS) == 1 && text[0] == '-') return sNEGATIVE;
  if (text.find_first_of(sDIGITS) != 0) return sNO_NUMBER;  // "inf" and "nan" would be numbers
  const char* const end = text.data() + text.size();
  const std::from_chars_result read = std::from_chars(text.data(), end, number);
  if (read.ec != std::errc()) return sOUT_OF_RANGE;
  if (*read.ptr == ',') return sNO_NUMBER;
  const char* const name = std::find_if(read.ptr, end, [](char c) { return c != ' ' && c != '\t'; });
  unit.assign(name, end);
  return std::string();
}

std::string Ambiguous(const std::string& name) {
  const boost::shared_ptr<UnitDescriptor> spTime = FindTimeUnit(name);
  return sAMBIGUOUS + Quoted(name) + (spTime ? sTHE_ONE + spTime->GetName() : std::string());
}

// Finds the main name of the unit of times that goes by `name`, and by no other's. Gives what is wrong.
std::string FindMainName(const std::string& name, std::string& mainName) {
  if (name.empty()) return sNO_UNIT;
  try {
    const boost::shared_ptr<UnitDescriptor> spUnit = Quantity::sm_spGlobalDictionary->LookupUnit(name);
    if (!spUnit) return sUNKNOWN + Quoted(name);
    mainName = spUnit->GetName();
    return FindTimeUnit(mainName) ? std::string() : mainName + sNO_TIME;
  } catch (const UnitDictionary::XAlternateNameCollision&) {
    return Ambiguous(name);
  }
}

}  // namespace

std::string ReadTime(const std::string& text, PlanTime& time) {
  double number = 0;
  std::string name;
  std::string unit;
  std::string mistake = ReadNumber(text, number, name);
  if (mistake.empty()) mistake = FindMainName(name, unit);
  if (!mistake.empty()) return mistake;
  const Quantity quantity(number, unit);
  if (quantity.Get("Second") > static_cast<double>(llMOST_SECONDS)) return sTOO_LONG;
  time = {ToElapse(quantity), unit};
  return std::string();
}

}  // namespace Station
