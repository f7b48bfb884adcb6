// Under which name a dictionary of units raises its errors.
#ifndef OXACORE_UNITS_UNITDICTIONARYERRORS_H
#define OXACORE_UNITS_UNITDICTIONARYERRORS_H

namespace Oxa::Core {

constexpr char sUNIT_DICTIONARY_LOG[] = "Oxa.Core.UnitDictionary";

}  // namespace Oxa::Core

#endif
