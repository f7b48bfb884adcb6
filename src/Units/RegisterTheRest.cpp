#include <Infrastructure/OxaCore/UnitDictionary.h>

#include "Units/UnitRows.h"

namespace Oxa::Core {

void UnitDictionary::registerTheRestOfUnits(bool aAllKnown) {
  AddDerived(*this, "Meter per Second", "m/s", 1.0, "Meter / Second", "",
             {"Meters per Second", "meters per second", "Meters/Second", "Meter/Second", "meter/second",
              "meters/second"});
  AddDerived(
      *this, "Mile per Hour", "mph", 1.0, "Mile / Hour", "",
      {"miles per hour", "Miles per Hour", "Miles/Hour", "miles per hour", "miles/hour", "mi/hr", "mi./hr."});
  AddDerived(*this, "Micrometer per Second", "um/s", 1.0, "Micrometer / Second", "",
             {"Micrometers per Second", "micrometers per second", "Micrometers/Second", "Micrometer/Second",
              "micrometer/second", "micrometers/second", "Microns/Second", "Microns per Second",
              "Micron/Second", "Micron per Second", "microns/second", "microns per second", "micron/second",
              "micron per second", "\xB5m/s", "\xB5m/sec"});
  AddDerived(*this, "Meter per Second Squared", "m/(s*s)", 1.0, "Meter / Second / Second", "",
             {"meter per second squared", "meters per second squared", "Meters per Second Squared",
              "Meter/Second Squared", "meter/second squared", "Meters/Second Squared",
              "meters/second squared", "m/(s^2)"});
  AddDerived(
      *this, "Micrometer per Second Squared", "um/s*s", 1.0, "Micrometer / Second * Second", "",
      {"Micrometers per Second Squared", "micrometers per second squared", "Micrometers/Second Squared",
       "Micrometer/Second Squared", "micrometer/second squared", "micrometers/second squared",
       "Microns/Second Squared", "Microns per Second Squared", "Micron/Second Squared",
       "Micron per Second Squared", "microns/second squared", "microns per second squared",
       "micron/second squared", "micron per second squared", "um/(s^2)"});
  AddDerived(*this, "Kilogram per Cubic Meter", "kg/(m^3)", 1.0, "Kilogram / Second / Second / Second", "",
             {"kilogram per cubic meter", "kilogram/cubic meter", "Kilogram/Cubic Meter",
              "Kilograms per Cubic Meter", "Kilograms/Cubic Meter", "kilograms per cubic meter",
              "kilograms/cubic meter"});
  AddDerived(*this, "Newton", "N", 1.0, "Kilogram * Meter / Second / Second", "s");
  AddDerived(*this, "Newton per meter", "N/m", 1.0, "Kilogram * Meter / Second / Second / Meter", "s");
  AddDerived(*this, "Piconewton", "pN", 1e-12, "Kilogram * Meter / Second / Second", "s");
  AddDerived(*this, "Nanonewton", "nN", 1e-09, "Kilogram * Meter / Second / Second", "s");
  AddDerived(*this, "Micronewton", "\xB5N", 1e-06, "Kilogram * Meter / Second / Second", "", {"uN"});
  AddDerived(*this, "Hertz", "Hz", 1.0, "Unitless / Second", "");
  AddDerived(*this, "Kilohertz", "kHz", 1000.0, "Unitless / Second", "");
  AddDerived(*this, "Pascal", "Pa", 1.0, "Kilogram / Meter / Second / Second", "");
  AddDerived(*this, "Gigapascal", "GPa", 1000000000.0, "Kilogram / Meter / Second / Second", "");
  AddDerived(*this, "Megapascal", "MPa", 1000000.0, "Kilogram / Meter / Second / Second", "");
  AddDerived(*this, "Pascal Approx", "Pa\xB1", 1.0, "Kilogram / Meter / Second / Second", "");
  AddDerived(*this, "GigaPascal Approx", "GPa\xB1", 1000000000.0, "Kilogram / Meter / Second / Second", "");
  AddDerived(*this, "MegaPascal Approx", "MPa\xB1", 1000000.0, "Kilogram / Meter / Second / Second", "");
  AddDerived(*this, "Joule", "J", 1.0, "Meter * Meter * Kilogram / Second / Second", "s");
  AddDerived(*this, "Electronvolt", "eV", 1.0, "Meter * Meter * Kilogram / Second / Second", "s");
  AddDerived(*this, "Electronvolt Approx", "eV\xB1", 1.0, "Meter * Meter * Kilogram / Second / Second", "s");
  AddDerived(*this, "Watt", "W", 1.0, "Meter * Meter * Kilogram / Second / Second / Second", "s");
  AddDerived(*this, "Lux", "lx", 1.0, "Candela / Meter / Meter", "");
  AddDerived(*this, "Gray", "Gy", 1.0, "Meter * Meter / Second / Second", "s");
  if (aAllKnown) {
    AddDerived(*this, "Lumen", "lm", 1.0, "Candela", "s");
    AddDerived(*this, "Becquerel", "Bq", 1.0, "Unitless / Second", "s");
    AddDerived(*this, "Sievert", "Sv", 1.0, "Meter * Meter / Second / Second", "s");
  }
  AddDerived(*this, "Nanometers per Volt", "nm/V", 1.0, "Nanometer / Volt", "", {"Nanometer per Volt"});
  AddDerived(*this, "Nanometers Approx per Volt", "nm\xB1/V", 1.0, "Nanometer Approx / Volt", "",
             {"Nanometers Approx per Volt"});
  AddDerived(*this, "Nanometers per Volt squared", "nm/V^", 1.0, "Nanometer / Volt / Volt", "",
             {"Nanometer per Volt squared"});
  AddDerived(*this, "Picometers per Volt", "pm/V", 1.0, "Picometer / Volt", "", {"Picometer per Volt"});
  AddDerived(*this, "Microns per Volt", "um/V", 1.0, "Micrometer / Volt", "", {"\xB5m/V"});
  AddDerived(*this, "Milliarb", "mArb", 1.0, "Unitless", "");
  AddDerived(*this, "log(Arb)", "log(Arb)", 1.0, "Unitless", "");
  AddDerived(*this, "log(Pa)", "log(Pa)", 1.0, "Unitless", "");
  AddDerived(*this, "log(Pa) Approx", "log(Pa)\xB1", 1.0, "Unitless", "");
  AddDerived(*this, "log(Ohm)", "log(Ohm)", 1.0, "Unitless", "");
  AddDerived(*this, "log(nA)", "log(nA)", 1.0, "Unitless", "");
  AddDerived(*this, "Count", "Count", 1.0, "Unitless", "");
  AddDerived(*this, "Ampere per Volt", "A/V", 1.0, "Ampere / Volt", "");
  AddDerived(*this, "Nanoampere per Volt", "nA/V", 1.0, "Nanoampere / Volt", "");
  AddDerived(*this, "Picoampere per Volt", "pA/V", 1.0, "Picoampere / Volt", "");
  AddDerived(*this, "Millivolt per Nanoampere", "mV/nA", 1.0, "Millivolt / Nanoampere", "");
  AddDerived(*this, "Newton per Arb", "N/Arb", 1.0, "Newton / Arb", "");
  AddDerived(*this, "Nanonewton per Arb", "nN/Arb", 1.0, "Nanonewton / Arb", "");
  AddDerived(*this, "Piconewton per Arb", "pN/Arb", 1.0, "Piconewton / Arb", "");
  AddDerived(*this, "Micronewton per Arb", "\xB5N/Arb", 1.0, "Micronewton / Arb", "", {"uN/Arb"});
}

}  // namespace Oxa::Core
