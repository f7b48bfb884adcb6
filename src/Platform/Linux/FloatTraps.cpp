#include "Platform/FloatTraps.h"

namespace Oxa::Core::Platform {

HoldFloatTraps::HoldFloatTraps() noexcept { std::feholdexcept(&m_before); }

#if defined(__x86_64__)

static_assert(sizeof(std::fenv_t) == 32, "the environment of the x87, then the word of the other unit");

// The C library's own way back leaves out what it has no name for, which the trap of denormal operands is.
HoldFloatTraps::~HoldFloatTraps() {
  asm volatile("fldenv %0\n\tldmxcsr %1" : : "m"(m_before), "m"(m_before.__mxcsr));
}

#else

HoldFloatTraps::~HoldFloatTraps() { std::fesetenv(&m_before); }

#endif

}  // namespace Oxa::Core::Platform
