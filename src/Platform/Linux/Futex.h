// The system's wait on a word.
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

}  // namespace Oxa::Core::Platform

#endif
