// Threads and processes that the C library isn't told of.
#ifndef OXACORE_PLATFORM_LINUX_CLONE_H
#define OXACORE_PLATFORM_LINUX_CLONE_H

#include <sched.h>

#if defined(__GLIBC__)
// The same function by the name that nobody stands in front of: the thread sanitizer takes every clone for a fork, and
// makes a child of it that has forgotten the other threads.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" int __clone(int (*)(void*), void*, int, void*, ...) noexcept;
#endif

namespace Oxa::Core::Platform {

#if defined(__GLIBC__)
inline constexpr auto* pCLONE = &__clone;
#else
inline constexpr auto* pCLONE = &clone;
#endif

}  // namespace Oxa::Core::Platform

#endif
