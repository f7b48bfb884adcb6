// The end of the dictionary of the process.
#ifndef OXACORE_UNITS_STANDARDUNITS_H
#define OXACORE_UNITS_STANDARDUNITS_H

namespace Oxa::Core {

/// Gives up what UnitDictionary::StandardUnits has made, while the library goes.
void ReleaseStandardUnits();

}  // namespace Oxa::Core

#endif
