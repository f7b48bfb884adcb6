#include <Infrastructure/OxaCore/Assert.h>
#include <Infrastructure/OxaCore/Time.h>

#include <cstdint>

#include "Platform/Clock.h"

using Oxa::Core::Elapse;

namespace {

void SleepLow32Bits(unsigned long long milliseconds) {
  Oxa::Core::Platform::SleepMilliseconds(static_cast<std::uint32_t>(milliseconds));
}

}  // namespace

void OxaSleep(const Elapse& elapse, bool) {
  const auto milliseconds = static_cast<long long>(elapse.GetElapsed(Elapse::MilliSeconds));
  if (static_cast<std::uint32_t>(milliseconds) == 0) return;
  SleepLow32Bits(static_cast<unsigned long long>(milliseconds));
}

void OxaSleep(long value, Elapse::TimeUnits units, bool) {
  const unsigned long long uval = value < 0 ? 0 : static_cast<unsigned long long>(value);
  switch (units) {
    case Elapse::NanoSeconds:
      return SleepLow32Bits(uval / 1000000);
    case Elapse::MicroSeconds:
      return SleepLow32Bits(uval / 1000);
    case Elapse::MilliSeconds:
      return SleepLow32Bits(uval);
    case Elapse::Seconds:
      OXA_ASSERT(uval <= 4294967U);
      return SleepLow32Bits(uval * 1000);
    case Elapse::Minutes:
      OXA_ASSERT(uval <= 71582U);
      return SleepLow32Bits(uval * 60000);
    case Elapse::Hours:
      OXA_ASSERT(uval <= 1193U);
      return SleepLow32Bits(uval * 3600000);
    case Elapse::Days:
      OXA_ASSERT(uval <= 49U);
      return SleepLow32Bits(uval * 86400000);
    case Elapse::TimerTicks:
      return SleepLow32Bits(uval * 100 / 1000000);
  }
  OXA_ASSERT(false);
}
