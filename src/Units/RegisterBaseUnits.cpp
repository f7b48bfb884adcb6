#include <Infrastructure/OxaCore/UnitDictionary.h>

#include "Units/UnitRows.h"

namespace Oxa::Core {

void UnitDictionary::registerBaseUnits() {
  AddUnit(NewUnit("", ""), "s");
  AddUnit(NewUnit("Unitless", ""), "s");
  AddUnit(createBaseUnit("Arb", "Arb", eLength), "s");
  AddUnit(createBaseUnit("Meter", "m", eLength), "s");
  AddUnit(createBaseUnit("Meter Approx", "m\xB1", eLength), "s");
  AddUnit(createBaseUnit("Kilogram", "kg", eMass), "s");
  AddUnit(createBaseUnit("Second", "s", eTime), "s", {"sec"});
  AddUnit(createBaseUnit("Second (2)", "sec.", eTime), "");
  AddUnit(createBaseUnit("Ampere", "A", eCurrent), "s", {"Amp", "amp", "Amps", "amps"});
  AddUnit(createBaseUnit("Kelvin", "K", eTemperature), "");
  AddUnit(createBaseUnit("Mole", "mol", eAmount), "s");
  AddUnit(createBaseUnit("Candela", "cd", eLuminousIntensity), "s");
  AddUnit(createBaseUnit("Radian", "rad", eAngle), "s", {"rads"});
}

boost::shared_ptr<UnitDescriptor> UnitDictionary::createBaseUnit(const std::string& aName,
                                                                 const std::string& aAbbreviation,
                                                                 EDimension aDimension) {
  boost::shared_ptr<UnitDescriptor> unit = NewUnit(aName, aAbbreviation);
  if (!unit) return unit;
  Dimensions dimensions;
  dimensions[aDimension] = 1;
  unit->SetDimensions(dimensions);
  return unit;
}

}  // namespace Oxa::Core
