// Keeps the text of the last failed acquisition whole.
#ifndef OXACORE_ENCRYPTION_ACQUISITIONMUTEX_H
#define OXACORE_ENCRYPTION_ACQUISITIONMUTEX_H

#include <Infrastructure/OxaCore/Lock.h>

#include "Core/Immortal.h"

namespace Oxa::Core {

/// Guards nothing but the text: who failed last is anybody's guess all the same. Taken alone.
extern Immortal<Mutex> g_acquisitionMutex;

}  // namespace Oxa::Core

#endif
