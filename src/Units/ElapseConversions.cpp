#include <Infrastructure/OxaCore/Time.h>
#include <Infrastructure/OxaCore/UnitizedValue.h>

#include <cmath>
#include <limits>

namespace Oxa::Core {

namespace {

const char* const sNANOSECOND = "Nanosecond";

// Cut towards zero; what doesn't fit is the nearest that does.
long long WholeNumber(double number) {
  constexpr double dTOO_LARGE = 9223372036854775808.0;
  if (std::isnan(number)) return 0;
  if (number >= dTOO_LARGE) return std::numeric_limits<long long>::max();
  if (number < -dTOO_LARGE) return std::numeric_limits<long long>::min();
  return static_cast<long long>(number);
}

}  // namespace

Elapse ToElapse(const UnitizedValue<double>& quantity) {
  return Elapse(WholeNumber(quantity.Get(sNANOSECOND)), Elapse::NanoSeconds);
}

UnitizedValue<double> ToUnitizedValue(const Elapse& elapse) {
  return UnitizedValue<double>(elapse.GetElapsed(Elapse::NanoSeconds), sNANOSECOND);
}

}  // namespace Oxa::Core
