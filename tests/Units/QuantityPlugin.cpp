// What OldQuantityHost loads.
#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/UnitizedValue.h>

extern "C" __attribute__((visibility("default"))) double QuantityOfPlugin(double inches);

// The way of so many Inch, twice, in Centimeter.
double QuantityOfPlugin(double inches) {
  using namespace Oxa::Core;
  return (uv2 * UnitizedValue<double>(inches, "Inch")).Get("cm");
}
