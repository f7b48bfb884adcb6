// Floating-point traps, kept from striking for a while.

#include "Platform/FloatTraps.h"

#include <gtest/gtest.h>

#include <cfenv>

namespace {

using Oxa::Core::Platform::HoldFloatTraps;

TEST(FloatTraps, ExceptionsOfBeforeAreThereAgainAndThoseOfMeanwhileAreNot) {
  std::feclearexcept(FE_ALL_EXCEPT);
  std::feraiseexcept(FE_OVERFLOW);
  {
    const HoldFloatTraps hold;
    EXPECT_EQ(0, std::fetestexcept(FE_ALL_EXCEPT));
    std::feraiseexcept(FE_DIVBYZERO);
  }
  EXPECT_EQ(FE_OVERFLOW, std::fetestexcept(FE_DIVBYZERO | FE_OVERFLOW));
  std::feclearexcept(FE_ALL_EXCEPT);
}

#if defined(__x86_64__)

struct Words {
  unsigned m_uControl;          // of SSE, with its flags
  unsigned short m_usX87;       // control
  unsigned short m_usX87State;  // flags

  bool operator==(const Words& other) const {
    return m_uControl == other.m_uControl && m_usX87 == other.m_usX87 && m_usX87State == other.m_usX87State;
  }
};

Words CurrentWords() {
  Words words;
  asm volatile("stmxcsr %0\n\tfnstcw %1\n\tfnstsw %2"
               : "=m"(words.m_uControl), "=m"(words.m_usX87), "=m"(words.m_usX87State));
  return words;
}

// With every trap on, and a division by zero that waits in the x87 for the next operation.
void SetTraps() {
  const unsigned control = 0x0000;
  const unsigned short masked = 0x037f;
  const unsigned short unmasked = 0x0340;
  const double zero = 0;
  asm volatile("ldmxcsr %0\n\tfninit\n\tfldcw %1\n\tfld1\n\tfdivl %3\n\tfstp %%st(0)\n\tfldcw %2"
               :
               : "m"(control), "m"(masked), "m"(unmasked), "m"(zero));
}

void ForgetTraps() {
  const unsigned control = 0x1f80;
  asm volatile("fninit\n\tldmxcsr %0" : : "m"(control));
}

TEST(FloatTraps, NoneStrikesMeanwhileAndAllAreOnAgain) {
  SetTraps();
  const Words before = CurrentWords();
  Words within;
  {
    const HoldFloatTraps hold;
    within = CurrentWords();
    const volatile double denormal = 5e-324;
    const volatile long double wide = 1.0L;
    const volatile double sum = denormal + static_cast<double>(wide / 3);
    static_cast<void>(sum);
  }
  const Words after = CurrentWords();
  ForgetTraps();
  EXPECT_EQ(0x1f80U, within.m_uControl);
  EXPECT_EQ(0x3f, within.m_usX87 & 0x3f);
  EXPECT_EQ(0, within.m_usX87State & 0xff);
  EXPECT_EQ(4, before.m_usX87State & 4) << "the division by zero doesn't wait";
  EXPECT_TRUE(before == after);
}

#endif

}  // namespace
