// How conditions and semaphores read a time limit.
#ifndef OXACORE_THREADS_WHOLEMILLISECONDS_H
#define OXACORE_THREADS_WHOLEMILLISECONDS_H

#include <Infrastructure/OxaCore/Time.h>

#include "Platform/Threads.h"

namespace Oxa::Core {

/// That many whole milliseconds from now, cut towards zero; what is negative has passed.
inline Platform::Deadline WholeMilliseconds(const Elapse& timeout) {
  constexpr long long ticksPerMillisecond = 10000;
  return Platform::Deadline::InMilliseconds(timeout.GetRawTimerTicks() / ticksPerMillisecond);
}

}  // namespace Oxa::Core

#endif
