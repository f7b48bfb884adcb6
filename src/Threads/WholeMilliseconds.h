// How locks, conditions and semaphores read a time limit.
#ifndef OXACORE_THREADS_WHOLEMILLISECONDS_H
#define OXACORE_THREADS_WHOLEMILLISECONDS_H

#include <Infrastructure/OxaCore/Time.h>

#include <cstdint>

#include "Platform/Threads.h"

namespace Oxa::Core {

/// That many whole milliseconds from now, cut towards zero; what is negative has passed.
inline Platform::Deadline WholeMilliseconds(const Elapse& timeout) {
  constexpr long long ticksPerMillisecond = 10000;
  return Platform::Deadline::InMilliseconds(timeout.GetRawTimerTicks() / ticksPerMillisecond);
}

/// To the tick; what is negative has passed.
inline Platform::Deadline ExactDeadline(const Elapse& timeout) {
  constexpr long long nanosecondsPerTick = 100;
  constexpr long long most = INT64_MAX / nanosecondsPerTick;
  const long long ticks = timeout.GetRawTimerTicks();
  if (ticks <= 0) return Platform::Deadline::In(0);
  return Platform::Deadline::In((ticks < most ? ticks : most) * nanosecondsPerTick);
}

}  // namespace Oxa::Core

#endif
