#include <Infrastructure/OxaCore/BadPixel.h>

namespace Oxa::Core {

namespace {

constexpr char sLOG_NAME[] = "Oxa.Core.BadPixel";
constexpr char sNO_VALUE[] = "No bad pixel value for this type";

}  // namespace

NoBadPixelValue::NoBadPixelValue() : ErrorClass(AlertMessage(sNO_VALUE)) {}

NoBadPixelValue::~NoBadPixelValue() = default;

int BadPixel<int>::Value() {
  OXA_RAISE_ERROR(sLOG_NAME, NoBadPixelValue());
  return 0;
}

}  // namespace Oxa::Core
