// The one dictionary of atoms at the library's birth and death.
#ifndef OXACORE_UTILITIES_DICTIONARYLIFE_H
#define OXACORE_UTILITIES_DICTIONARYLIFE_H

#include <Infrastructure/OxaCore/Lock.h>

#include "Core/Immortal.h"

namespace Oxa::Core {

/// Guards the making and the destruction of the dictionary.
extern Immortal<Mutex> g_dictionaryMutex;

/// Gives back a dictionary that was made after the shut-down. Nobody may call in any more.
void ReleaseDictionary();

}  // namespace Oxa::Core

#endif
