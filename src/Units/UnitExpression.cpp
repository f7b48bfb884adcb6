#include "Units/UnitExpression.h"

#include <Infrastructure/OxaCore/CommonErrors.h>

#include <algorithm>

#include "Units/UnitDictionaryErrors.h"

namespace Oxa::Core {

namespace {

const char* const sTIMES = " * ";
const char* const sPER = " / ";
constexpr std::size_t uOPERATOR_LENGTH = 3;

const UnitDescriptor* Operand(const UnitDictionary& dictionary, const std::string& name) {
  const UnitDescriptor* const unit = dictionary.FindUnit(name);
  if (unit == nullptr) OXA_RAISE_ERROR(sUNIT_DICTIONARY_LOG, NullPointer(name));
  return unit;
}

}  // namespace

std::optional<UnitDescriptor> UnitOf(const UnitDictionary& dictionary, const std::string& expression) {
  std::optional<UnitDescriptor> result;
  bool inDenominator = false;
  for (std::size_t begin = 0;;) {
    const std::size_t per = expression.find(sPER, begin);
    const std::size_t end = std::min(expression.find(sTIMES, begin), per);
    const UnitDescriptor* const unit = Operand(dictionary, expression.substr(begin, end - begin));
    if (unit == nullptr) return std::nullopt;
    if (!result) {
      result = *unit;
    } else if (inDenominator) {
      *result /= *unit;
    } else {
      *result *= *unit;
    }
    if (end == std::string::npos) return result;
    inDenominator = inDenominator || end == per;
    begin = end + uOPERATOR_LENGTH;
  }
}

}  // namespace Oxa::Core
