// The lock of what a thread keeps for others and drops by itself.
#ifndef OXACORE_THREADS_THREADKEEPING_H
#define OXACORE_THREADS_THREADKEEPING_H

#include "Platform/Threads.h"

namespace Oxa::Core {

/// Guards the last error, the keep-alive and the count of runs of every Thread: a few instructions, where none of
/// the locks in a Thread may be taken or would live long enough.
extern Platform::ShortLock g_threadKeeping;

}  // namespace Oxa::Core

#endif
