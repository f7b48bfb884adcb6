// The sanitizers leave this file alone (see CMakeLists.txt): what is wrong in it is meant to be.
#include "FloatFaults.h"

#include <fenv.h>

#include <limits>

#if defined(__x86_64__)
#include <xmmintrin.h>
#endif

namespace Station {

namespace {

volatile double s_dReading = 0;

}  // namespace

void DivideFloatByZero() {
  const volatile double sum = 47.11;
  const volatile double samples = 0;
  ::feenableexcept(FE_DIVBYZERO);
  s_dReading = sum / samples;
}

void DoInvalidFloatOperation() {
  const volatile double sum = 0;
  const volatile double samples = 0;
  ::feenableexcept(FE_INVALID);
  s_dReading = sum / samples;
}

void OverflowFloat() {
  const volatile double greatest = std::numeric_limits<double>::max();
  ::feenableexcept(FE_OVERFLOW);
  s_dReading = greatest * greatest;
}

void UnderflowFloat() {
  const volatile double least = std::numeric_limits<double>::min();
  const volatile double divisor = 3;
  ::feenableexcept(FE_UNDERFLOW);
  s_dReading = least / divisor;
}

#if defined(__x86_64__)

void UseDenormalFloat() {
  const volatile double denormal = std::numeric_limits<double>::denorm_min();
  const volatile double factor = 2;
  _mm_setcsr(_mm_getcsr() & ~static_cast<unsigned int>(_MM_MASK_DENORM));
  s_dReading = denormal * factor;
}

void PopEmptyFloatStack() {
  const unsigned short trapInvalid = 0x037E;
  asm volatile("fninit; fldcw %0; fstp %%st(0); fwait" : : "m"(trapInvalid));
}

#endif

}  // namespace Station
