// What keeps the destructors of listeners and supports apart.
#ifndef OXACORE_NOTIFICATIONS_TEARDOWNMUTEX_H
#define OXACORE_NOTIFICATIONS_TEARDOWNMUTEX_H

#include <Infrastructure/OxaCore/Lock.h>

#include "Core/Immortal.h"

namespace Oxa::Core {

/// Taken first, before the mutex of any support or listener, by every destructor of one: of two that die at
/// once, the later finds the link between them gone. Static objects of hosts die after the library's own.
extern Immortal<Mutex> g_teardownMutex;

}  // namespace Oxa::Core

#endif
