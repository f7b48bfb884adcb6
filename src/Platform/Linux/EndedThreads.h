// Threads that are at their end, or past it, until they have been joined.
#ifndef OXACORE_PLATFORM_LINUX_ENDEDTHREADS_H
#define OXACORE_PLATFORM_LINUX_ENDEDTHREADS_H

#include "Platform/NativeThread.h"

namespace Oxa::Core::Platform {

class EndedThreads {
 public:
  /// One thread is about to end: it counts from here to its join.
  static void Expect() noexcept;

  /// `thread` runs nothing of ours any more but its last few steps.
  static void Add(NativeThread& thread) noexcept;

  /// Joins those that the system has done with, which gives their stacks back. Never waits. Not for handlers of
  /// signals.
  static void JoinGone() noexcept;

  /// Expected ones that aren't joined yet.
  static unsigned int Count() noexcept;
};

}  // namespace Oxa::Core::Platform

#endif
