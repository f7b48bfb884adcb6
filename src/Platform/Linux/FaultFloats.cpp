#include "Platform/Faults.h"

#if defined(__x86_64__)

namespace Oxa::Core::Platform {

namespace {

constexpr unsigned uMXCSR_FLAGS = 0x3F;

}  // namespace

// Both units have flags. Reading and writing them doesn't look at pending exceptions, as most instructions do.
void ClearFloatingPointState() noexcept {
  unsigned control;
  asm volatile("fnclex\n\tstmxcsr %0" : "=m"(control));
  control &= ~uMXCSR_FLAGS;
  asm volatile("ldmxcsr %0" : : "m"(control));
}

}  // namespace Oxa::Core::Platform

#endif
