#include <Infrastructure/OxaCore/UnitDescriptor_Temperature.h>
#include <Infrastructure/OxaCore/UnitDictionary.h>

#include "Units/UnitRows.h"

namespace Oxa::Core {

void UnitDictionary::registerAngularUnits(bool /*aAllKnown*/) {
  AddDerived(*this, "Degree", "deg", 0.017453292521666667, "Radian", "s", {"\xB0"});
  AddDerived(*this, "Steradian", "sr", 1.0, "Radian", "s");
  AddDerived(*this, "Arcminute", "arcmin", 0.0002908882086944444, "Radian", "s");
  AddDerived(*this, "Arcsecond", "arcsec", 4.848136811574074e-06, "Radian", "s");
}

void UnitDictionary::registerMassUnits(bool /*aAllKnown*/) {
  AddDerived(*this, "Gram", "g", 0.001, "Kilogram", "s");
  AddDerived(*this, "Milligram", "mg", 1e-06, "Kilogram", "s");
  AddDerived(*this, "Pound", "lb.", 0.4535924, "Kilogram", "s", {"lb", "lbs", "lbs."});
  AddDerived(*this, "Ounce", "oz.", 0.02834952, "Kilogram", "s", {"oz"});
}

void UnitDictionary::registerTimeUnits(bool /*aAllKnown*/) {
  AddDerived(*this, "Week", "w", 604800.0, "Second", "", {"wk", "wks", "Weeks"});
  AddDerived(*this, "Week (2)", "weeks", 604800.0, "Second", "");
  AddDerived(*this, "Day", "d", 86400.0, "Second", "", {"Days", "d."});
  AddDerived(*this, "Day (2)", "days", 86400.0, "Second", "");
  AddDerived(*this, "Hour", "h", 3600.0, "Second", "s", {"hr", "hrs"});
  AddDerived(*this, "Hour (2)", "hr.", 3600.0, "Second", "");
  AddDerived(*this, "Minute", "m", 60.0, "Second", "s", {"min"});
  AddDerived(*this, "Minute (2)", "min.", 60.0, "Second", "");
  AddDerived(*this, "Millisecond", "msec", 0.001, "Second", "s", {"ms", "MilliSecond", "MilliSeconds"});
  AddDerived(*this, "Microsecond", "\xB5sec", 1e-06, "Second", "s",
             {"us", "\xB5s", "usec", "MicroSecond", "MicroSeconds"});
  AddDerived(*this, "Nanosecond", "nsec", 1e-09, "Second", "s", {"ns", "NanoSecond", "NanoSeconds"});
}

void UnitDictionary::registerTemperatureUnits(bool aAllKnown) {
  AddUnit(NewUnit<UnitDescriptor_Celsius>(), "");
  AddUnit(NewUnit<UnitDescriptor_Fahrenheit>(), "");
  if (aAllKnown) {
    AddUnit(NewUnit<UnitDescriptor_Rankine>(), "");
  }
}

void UnitDictionary::registerAmountUnits(bool /*aAllKnown*/) {
  AddDerived(*this, "Dozen", "doz.", 5.018451658333334e+22, "Mole", "", {"doz"});
}

}  // namespace Oxa::Core
