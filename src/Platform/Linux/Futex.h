// The system's wait on a word, and what every spin before it shares.
#ifndef OXACORE_PLATFORM_LINUX_FUTEX_H
#define OXACORE_PLATFORM_LINUX_FUTEX_H

#include <algorithm>
#include <atomic>
#include <cstdint>

#include "Platform/Threads.h"

namespace Oxa::Core::Platform {

/// Sleeps while `word` holds `expected`; a wake may also come for no reason. False once `deadline` has
/// passed. Leaves errno alone.
bool FutexWait(const void* word, std::uint32_t expected, Deadline deadline) noexcept;

/// The same with a hold on kills that is let go for the sleep.
bool FutexWaitUnheld(const void* word, std::uint32_t expected, Deadline deadline) noexcept;

/// Wakes up to `count` sleepers of `word`, which needn't exist any more. Leaves errno alone.
void FutexWake(const void* word, int count) noexcept;

/// Tells the processor that this is a spin.
inline void Pause() noexcept {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#elif defined(__aarch64__)
  asm volatile("yield");
#endif
}

/// Spins until `done()`, for as long as `budget` has it and not beyond `deadline`. Gives whether it is done. Where the
/// deadline has passed already nothing is done, and nothing learned: a poll doesn't tell what a wait would have met.
template <class Done>
bool SpinBeforeSleep(SpinBudget& budget, Deadline deadline, const Done& done) noexcept {
  constexpr int roundsPerLook = 8;
  if (deadline.HasPassed()) return false;
  const long long nanoseconds = budget.Next();
  if (nanoseconds == 0) return false;
  const long long start = MonotonicNow();
  const long long end = std::min(start + nanoseconds, deadline.Moment());
  for (long long now = start; now < end; now = MonotonicNow())
    for (int round = 0; round < roundsPerLook; ++round) {
      if (done()) {
        budget.Hit(now - start);
        return true;
      }
      Pause();
    }
  budget.Missed();
  return false;
}

}  // namespace Oxa::Core::Platform

#endif
