#include <Infrastructure/OxaCore/UnitDictionary.h>

namespace Oxa::Core {

void UnitDictionary::RegisterDefaultUnits() { registerUnits(false); }
void UnitDictionary::RegisterAllKnownUnits() { registerUnits(true); }

// Areas find the units that they derive theirs from in those before them.
void UnitDictionary::registerUnits(bool allKnown) {
  registerAngularUnits(allKnown);
  registerLengthUnits(allKnown);
  registerMassUnits(allKnown);
  registerTimeUnits(allKnown);
  registerTemperatureUnits(allKnown);
  registerAmountUnits(allKnown);
  registerAreaUnits(allKnown);
  registerVolumeUnits(allKnown);
  registerElectroMagneticUnits(allKnown);
  registerVoltUnits(allKnown);
  registerTheRestOfUnits(allKnown);
}

}  // namespace Oxa::Core
