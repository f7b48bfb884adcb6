// What the tests of the dictionary share.
#ifndef OXACORE_TESTS_UNITS_UNITDICTIONARYSUPPORT_H
#define OXACORE_TESTS_UNITS_UNITDICTIONARYSUPPORT_H

#include <Infrastructure/OxaCore/UnitDictionary.h>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <string>

namespace UnitsTests {

using namespace Oxa::Core;

using Unit = boost::shared_ptr<UnitDescriptor>;

/// A unit of which `factor` make one base unit of `dimensions`.
inline Unit NewUnit(const std::string& name, const std::string& abbreviation, const Dimensions& dimensions,
                    double factor = 1.0) {
  UnitDescriptor base;
  base.SetDimensions(dimensions);
  return boost::make_shared<UnitDescriptor>(name, abbreviation, 1.0 / factor, base);
}

inline const Dimensions sLENGTH(1);
inline const Dimensions sTIME(0, 0, 1);

/// The name of what is found, or "nothing".
inline std::string NameOf(const Unit& unit) { return unit ? unit->GetName() : "nothing"; }
inline std::string Found(const UnitDictionary& dictionary, const std::string& name,
                         const Unit& example = Unit()) {
  return NameOf(dictionary.LookupUnit(name, example));
}

/// The name of what is found by dimensions for this unit, or "nothing".
inline std::string StandsFor(const UnitDictionary& dictionary, const UnitDescriptor& unit) {
  return NameOf(dictionary.LookupDimensionallyEquivalentUnit(unit));
}

/// What a look-up of an ambiguous name raises, as "LOG NAME: MESSAGE".
inline std::string Collision(const std::string& name) {
  return "Oxa.Core.UnitDictionary: Found multiple units with alternate name of \"" + name +
         "\"\nNo UnitDescriptor provided to differentiate them.";
}

/// Shows what is protected.
class OpenDictionary : public UnitDictionary {
 public:
  using UnitDictionary::UnitDictionary;

  using UnitDictionary::createBaseUnit;
  using UnitDictionary::registerAmountUnits;
  using UnitDictionary::registerAngularUnits;
  using UnitDictionary::registerAreaUnits;
  using UnitDictionary::registerBaseUnits;
  using UnitDictionary::registerElectroMagneticUnits;
  using UnitDictionary::registerLengthUnits;
  using UnitDictionary::registerMassUnits;
  using UnitDictionary::registerTemperatureUnits;
  using UnitDictionary::registerTheRestOfUnits;
  using UnitDictionary::registerTimeUnits;
  using UnitDictionary::registerVoltUnits;
  using UnitDictionary::registerVolumeUnits;
};

}  // namespace UnitsTests

#endif
