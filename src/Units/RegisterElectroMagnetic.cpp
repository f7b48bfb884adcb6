#include <Infrastructure/OxaCore/UnitDictionary.h>

#include "Units/UnitRows.h"

namespace Oxa::Core {

void UnitDictionary::registerElectroMagneticUnits(bool /*aAllKnown*/) {
  AddDerived(*this, "Coulomb", "C", 1.0, "Second * Ampere", "s");
  AddDerived(*this, "Volt", "V", 1.0, "Meter * Meter * Kilogram / Second * Second * Second * Ampere", "s");
  AddDerived(*this, "Farad", "F", 1.0,
             "Second * Second * Second * Second * Ampere * Ampere / Meter * Meter * Kilogram", "s");
  AddDerived(*this, "Ohm", "ohms", 1.0,
             "Meter * Meter * Kilogram / Second * Second * Second * Ampere * Ampere", "", {"Ohms", "ohm"});
  AddDerived(*this, "Kilohm", "kOhms", 1000.0,
             "Meter * Meter * Kilogram / Second * Second * Second * Ampere * Ampere", "",
             {"KOhms", "Kohm", "kOhm"});
  AddDerived(*this, "Megaohm", "MOhms", 1000000.0,
             "Meter * Meter * Kilogram / Second * Second * Second * Ampere * Ampere", "",
             {"mOhms", "Mohm", "MOhm"});
  AddDerived(*this, "Siemens", "S", 1.0,
             "Second * Second * Second * Ampere * Ampere / Meter * Meter * Kilogram", "");
  AddDerived(*this, "Weber", "Wb", 1.0, "Meter * Meter * Kilogram / Second * Second * Ampere", "s");
  AddDerived(*this, "Tesla", "T", 1.0, "Kilogram / Second * Second * Ampere", "s");
  AddDerived(*this, "Henry", "H", 1.0,
             "Meter * Meter * Kilogram * Kilogram / Second * Second * Ampere * Ampere", "");
  AddDerived(*this, "Kiloampere", "kA", 1000.0, "Ampere", "s");
  AddDerived(*this, "Milliampere", "mA", 0.001, "Ampere", "s");
  AddDerived(*this, "Microampere",
             "\xB5"
             "A",
             1e-06, "Ampere", "s");
  AddDerived(*this, "Nanoampere", "nA", 1e-09, "Ampere", "s");
  AddDerived(*this, "Picoampere", "pA", 1e-12, "Ampere", "s");
  AddDerived(*this, "Femtoampere", "fA", 1e-15, "Ampere", "s");
}

void UnitDictionary::registerVoltUnits(bool /*aAllKnown*/) {
  AddDerived(*this, "Kilovolt", "kV", 1000.0, "Volt", "s");
  AddDerived(*this, "Millivolt", "mV", 0.001, "Volt", "s");
  AddDerived(*this, "Microvolt", "\xB5V", 1e-06, "Volt", "s");
  AddDerived(*this, "Nanovolt", "nV", 1e-09, "Volt", "s");
  AddDerived(*this, "Picovolt", "pV", 1e-12, "Volt", "s");
}

}  // namespace Oxa::Core
