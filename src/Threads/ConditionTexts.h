// The messages of a condition's failed waits.
#ifndef OXACORE_THREADS_CONDITIONTEXTS_H
#define OXACORE_THREADS_CONDITIONTEXTS_H

#include "Threads/WaitFailures.h"

namespace Oxa::Core {

extern const WaitTexts g_conditionLockTexts;
extern const WaitTexts g_conditionTryLockTexts;
extern const WaitTexts g_conditionWaitTexts;
extern const WaitTexts g_conditionTimedWaitTexts;

}  // namespace Oxa::Core

#endif
