// Floating-point operations that trap, as some hosts of old libraries have it.
#include <fenv.h>

#include <iterator>

#include "Ways.h"

namespace {

volatile double s_dSink = 0;
volatile double s_dNought = 0;
volatile double s_dHuge = 1e308;
volatile double s_dTiny = 1e-308;
volatile double s_dLeast = 5e-324;
volatile double s_dThree = 3;

}  // namespace

DEATHS_SITE void DieByFloatDivide() {
  ::feenableexcept(FE_DIVBYZERO);
  s_dSink = 1.0 / s_dNought;
}

DEATHS_SITE void DieByFloatInvalid() {
  ::feenableexcept(FE_INVALID);
  s_dSink = s_dNought / s_dNought;
}

DEATHS_SITE void DieByFloatOverflow() {
  ::feenableexcept(FE_OVERFLOW);
  s_dSink = s_dHuge * 1000.0;
}

DEATHS_SITE void DieByFloatUnderflow() {
  ::feenableexcept(FE_UNDERFLOW);
  s_dSink = s_dTiny * 1e-300;
}

// The C library has no name for this trap.
DEATHS_SITE void DieByFloatDenormal() {
  constexpr unsigned uDENORMAL_MASK = 0x100;
  __builtin_ia32_ldmxcsr(__builtin_ia32_stmxcsr() & ~uDENORMAL_MASK);
  s_dSink = s_dLeast + 1.0;
}

DEATHS_SITE void DieByFloatInexact() {
  ::feenableexcept(FE_INEXACT);
  s_dSink = 1.0 / s_dThree;
}

namespace Deaths {

namespace {

constexpr NamedWay sWAYS[] = {
    {"float-divide", &DieByFloatDivide},     {"float-invalid", &DieByFloatInvalid},
    {"float-overflow", &DieByFloatOverflow}, {"float-underflow", &DieByFloatUnderflow},
    {"float-denormal", &DieByFloatDenormal}, {"float-inexact", &DieByFloatInexact},
};

}  // namespace

Ways WaysOfFloats() { return {sWAYS, std::size(sWAYS)}; }

}  // namespace Deaths
