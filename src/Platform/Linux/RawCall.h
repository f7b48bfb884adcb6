// Calls of the system without the C library in between: they touch no errno, so that a thread may make them that
// has no storage of its own.
#ifndef OXACORE_PLATFORM_LINUX_RAWCALL_H
#define OXACORE_PLATFORM_LINUX_RAWCALL_H

#include <sys/syscall.h>
#include <unistd.h>

namespace Oxa::Core::Platform {

/// Gives what the system gives: a negative error code for a failure.
[[gnu::always_inline]] inline long RawCall(long number, long a = 0, long b = 0, long c = 0,
                                           long d = 0) noexcept {
#if defined(__x86_64__)
  long result = number;
  register long fourth __asm__("r10") = d;
  __asm__ volatile("syscall" : "+a"(result) : "D"(a), "S"(b), "d"(c), "r"(fourth) : "rcx", "r11", "memory");
  return result;
#elif defined(__aarch64__)
  register long first __asm__("x0") = a;
  register long second __asm__("x1") = b;
  register long third __asm__("x2") = c;
  register long fourth __asm__("x3") = d;
  register long which __asm__("x8") = number;
  __asm__ volatile("svc #0" : "+r"(first) : "r"(second), "r"(third), "r"(fourth), "r"(which) : "memory");
  return first;
#else
  return syscall(number, a, b, c, d);
#endif
}

template <class T>
[[gnu::always_inline]] inline long RawArgument(const T* pointer) noexcept {
  return reinterpret_cast<long>(pointer);
}

}  // namespace Oxa::Core::Platform

#endif
