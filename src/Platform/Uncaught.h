// What an exception that found no catch clause leaves behind, in the form of a fault.
#ifndef OXACORE_PLATFORM_UNCAUGHT_H
#define OXACORE_PLATFORM_UNCAUGHT_H

#include <Infrastructure/OxaCore/PlatformTypes.h>

#include <cstddef>
#include <cstring>

namespace Oxa::Core::Platform {

/// The beginning of a function that is a member and not virtual.
template <class Member>
const void* CodeOf(Member member) noexcept {
  const void* code = nullptr;
  static_assert(sizeof member >= sizeof code);
  std::memcpy(&code, &member, sizeof code);
  return code;
}

/// Calls `action` with the registers of the code that raised the exception in hand, as far as its stack still stands,
/// and a record that tells of no fault. For the terminate handler. Passed over on the way to that code are the
/// runtime's functions and those that begin at one of `carriers`: all they do is to raise. Allocates nothing.
void WithUncaughtPlace(const void* const* carriers, std::size_t count,
                       void (*action)(_EXCEPTION_POINTERS& pointers, void* argument),
                       void* argument) noexcept;

/// Whether `pointers` are those of a fault that was raised just now, and whose stack still stands: what they point to
/// lies on the stack of the calling function, a little above it, and nothing has been written over it.
bool StillStands(const _EXCEPTION_POINTERS& pointers) noexcept;

/// The signal that the system ends a process by for such a fault; SIGABRT for what is none.
int SignalOf(const _EXCEPTION_POINTERS& pointers) noexcept;

}  // namespace Oxa::Core::Platform

#endif
