// A thread in a line, and how something is handed to it.
#ifndef OXACORE_PLATFORM_LINUX_WAITLINE_H
#define OXACORE_PLATFORM_LINUX_WAITLINE_H

#include <atomic>
#include <cstdint>

#include "Platform/Threads.h"

namespace Oxa::Core::Platform {

/// From its place in line on, kills are held but for the sleep.
struct Waiter {
  bool m_bInLine = false;
  Waiter* m_pPrevious = nullptr;
  Waiter* m_pNext = nullptr;

  /// Whether it has been handed what it waits for.
  bool Handed() const noexcept;

  /// By whoever took it out of the line, and without the line's lock. It may be gone on return, with the line.
  void Hand() noexcept;

  /// Sleeps. False if the deadline passed first.
  bool AwaitHand(Deadline deadline) noexcept;

 private:
  std::atomic<std::uint32_t> m_uWord{0};
};

}  // namespace Oxa::Core::Platform

#endif
