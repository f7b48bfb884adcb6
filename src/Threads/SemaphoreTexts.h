// The messages of a semaphore's failed waits.
#ifndef OXACORE_THREADS_SEMAPHORETEXTS_H
#define OXACORE_THREADS_SEMAPHORETEXTS_H

#include "Threads/WaitFailures.h"

namespace Oxa::Core {

extern const WaitTexts g_semaphoreWaitTexts;
extern const WaitTexts g_semaphoreTimedWaitTexts;

}  // namespace Oxa::Core

#endif
