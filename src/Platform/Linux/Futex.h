// The system's wait on a word, and what every spin before it shares.
#ifndef OXACORE_PLATFORM_LINUX_FUTEX_H
#define OXACORE_PLATFORM_LINUX_FUTEX_H

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

/// Spins until `done()` or for some microseconds at most, if `advice` is for it. Gives whether it is done.
template <class Done>
bool SpinIfAdvised(SpinAdvice& advice, const Done& done) noexcept {
  constexpr int roundsPerLook = 8;
  constexpr long long nanoseconds = 3000;
  if (!advice.IsForIt()) return false;
  const long long end = MonotonicNow() + nanoseconds;
  do {
    for (int round = 0; round < roundsPerLook; ++round) {
      if (done()) return advice.Learn(true);
      Pause();
    }
  } while (MonotonicNow() < end);
  return advice.Learn(done());
}

}  // namespace Oxa::Core::Platform

#endif
