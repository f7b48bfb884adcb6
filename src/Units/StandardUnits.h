// The end of the dictionary of the process.
#ifndef OXACORE_UNITS_STANDARDUNITS_H
#define OXACORE_UNITS_STANDARDUNITS_H

namespace Oxa::Core {

/// Gives up what UnitDictionary::StandardUnits has made, when nobody can ask for it any more. Without a lock: in a
/// child that was forked off, it may be held by a thread that exists in the parent only.
void ReleaseStandardUnits();

}  // namespace Oxa::Core

#endif
