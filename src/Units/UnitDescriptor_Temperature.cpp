#include <Infrastructure/OxaCore/UnitDescriptor_Temperature.h>

#include "Units/CopyOnHeap.h"

namespace Oxa::Core {

namespace {

constexpr char sLOG_NAME[] = "Oxa.Core.UnitDescriptor_Temperature";
constexpr char sLOG_NAME_OF_CELSIUS[] = "Oxa.Core.UnitDescriptor_Celsius";
constexpr char sLOG_NAME_OF_FAHRENHEIT[] = "Oxa.Core.UnitDescriptor_Fahrenheit";
constexpr char sLOG_NAME_OF_RANKINE[] = "Oxa.Core.UnitDescriptor_Rankine";

constexpr char sCELSIUS_CLASS[] = "UnitDescriptor_Celsius";
constexpr char sFAHRENHEIT_CLASS[] = "UnitDescriptor_Fahrenheit";
constexpr char sRANKINE_CLASS[] = "UnitDescriptor_Rankine";

constexpr char sILLEGAL_ARITHMETIC[] = "Temperature unit descriptors don't support %1%";
constexpr char sMULTIPLICATION[] = "multiplication";
constexpr char sDIVISION[] = "division";

constexpr double dCELSIUS_ZERO = 273.15;     // in Kelvin
constexpr double dFAHRENHEIT_ZERO = 459.67;  // in Rankine
constexpr double dRANKINE_IN_KELVIN = 1.8;

using XIllegalArithmetic = UnitDescriptor_Temperature::XIllegalArithmetic;

void Refuse(const char* operation) { OXA_RAISE_ERROR(sLOG_NAME, XIllegalArithmetic(operation)); }

}  // namespace

XIllegalArithmetic::XIllegalArithmetic(const std::string& operation)
    : ErrorClass(AlertMessage(sILLEGAL_ARITHMETIC, operation)) {}
XIllegalArithmetic::~XIllegalArithmetic() = default;

UnitDescriptor_Temperature::UnitDescriptor_Temperature(const std::string& aName,
                                                       const std::string& aAbbreviation)
    : UnitDescriptor(aName, aAbbreviation) {
  Dimensions temperature;
  temperature[eTemperature] = 1;
  SetDimensions(temperature);
}
UnitDescriptor_Temperature::~UnitDescriptor_Temperature() = default;

UnitDescriptor& UnitDescriptor_Temperature::operator*=(const UnitDescriptor&) {
  Refuse(sMULTIPLICATION);
  return *this;
}

UnitDescriptor& UnitDescriptor_Temperature::operator/=(const UnitDescriptor&) {
  Refuse(sDIVISION);
  return *this;
}

UnitDescriptor UnitDescriptor_Temperature::operator*(const UnitDescriptor&) const {
  Refuse(sMULTIPLICATION);
  return UnitDescriptor();
}

UnitDescriptor UnitDescriptor_Temperature::operator/(const UnitDescriptor&) const {
  Refuse(sDIVISION);
  return UnitDescriptor();
}

bool UnitDescriptor_Temperature::RequiresConversion(const UnitDescriptor&) const { return true; }

UnitDescriptor_Celsius::UnitDescriptor_Celsius() : UnitDescriptor_Temperature("Celsius", "C") {}
UnitDescriptor_Celsius::~UnitDescriptor_Celsius() = default;
boost::shared_ptr<UnitDescriptor> UnitDescriptor_Celsius::MakeCopy() const {
  return CopyOnHeap(*this, sLOG_NAME_OF_CELSIUS, sCELSIUS_CLASS);
}
double UnitDescriptor_Celsius::ConvertToBaseUnits(double value) const { return value + dCELSIUS_ZERO; }
double UnitDescriptor_Celsius::ConvertFromBaseUnits(double value) const { return value - dCELSIUS_ZERO; }

UnitDescriptor_Fahrenheit::UnitDescriptor_Fahrenheit() : UnitDescriptor_Temperature("Fahrenheit", "F") {}
UnitDescriptor_Fahrenheit::~UnitDescriptor_Fahrenheit() = default;
boost::shared_ptr<UnitDescriptor> UnitDescriptor_Fahrenheit::MakeCopy() const {
  return CopyOnHeap(*this, sLOG_NAME_OF_FAHRENHEIT, sFAHRENHEIT_CLASS);
}
double UnitDescriptor_Fahrenheit::ConvertToBaseUnits(double value) const {
  return (value + dFAHRENHEIT_ZERO) / dRANKINE_IN_KELVIN;
}
double UnitDescriptor_Fahrenheit::ConvertFromBaseUnits(double value) const {
  return value * dRANKINE_IN_KELVIN - dFAHRENHEIT_ZERO;
}

UnitDescriptor_Rankine::UnitDescriptor_Rankine() : UnitDescriptor_Temperature("Rankine", "Rk") {}
UnitDescriptor_Rankine::~UnitDescriptor_Rankine() = default;
boost::shared_ptr<UnitDescriptor> UnitDescriptor_Rankine::MakeCopy() const {
  return CopyOnHeap(*this, sLOG_NAME_OF_RANKINE, sRANKINE_CLASS);
}
double UnitDescriptor_Rankine::ConvertToBaseUnits(double value) const { return value / dRANKINE_IN_KELVIN; }
double UnitDescriptor_Rankine::ConvertFromBaseUnits(double value) const { return value * dRANKINE_IN_KELVIN; }

}  // namespace Oxa::Core
