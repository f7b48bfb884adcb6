#include <Infrastructure/OxaCore/PerformanceTimer.h>

#include "Platform/Clock.h"

namespace Oxa::Core {

namespace {

const char* const sLOG_NAME = "Oxa.Core.PerformanceTimer";
const char* const sNOT_SUPPORTED = "Hardware does not support a performance timer";
const char* const sOVERFLOW = "Value cannot fit in 32 bits";

constexpr long long llMAX_32_BITS = 0xFFFFFFFF;

// What 64 bits can't hold wraps around.
long long Wrap(unsigned long long value) { return static_cast<long long>(value); }
unsigned long long Bits(long long value) { return static_cast<unsigned long long>(value); }

}  // namespace

PerformanceTimer::NotSupported::NotSupported() : ErrorClass(sNOT_SUPPORTED) {}
PerformanceTimer::NotSupported::~NotSupported() = default;

PerformanceTimer::IntegerOverflow::IntegerOverflow() : ErrorClass(sOVERFLOW) {}
PerformanceTimer::IntegerOverflow::~IntegerOverflow() = default;

PerformanceTimer::PerformanceTimer() : m_llMark(0) {
  if (Platform::MonotonicFrequency(m_llFrequency) != 0) OXA_RAISE_ERROR(sLOG_NAME, NotSupported());
  Mark();
}

void PerformanceTimer::Mark() { m_llMark = Platform::MonotonicTicks(); }

unsigned long PerformanceTimer::DiffSec_u() const { return diff_u(1); }
unsigned long PerformanceTimer::DiffMSec_u() const { return diff_u(1000); }
unsigned long PerformanceTimer::DiffUSec_u() const { return diff_u(1000000); }

double PerformanceTimer::DiffMSec_d() const {
  return static_cast<double>(getElapsedTicks()) * 1000.0 / static_cast<double>(m_llFrequency);
}

double PerformanceTimer::GetResolutionUSec() const { return 1e6 / static_cast<double>(m_llFrequency); }

long long PerformanceTimer::getElapsedTicks() const {
  return Wrap(Bits(Platform::MonotonicTicks()) - Bits(m_llMark));
}

unsigned long PerformanceTimer::diff_u(unsigned int unitsPerSecond) const {
  const long long units = Wrap(Bits(getElapsedTicks()) * unitsPerSecond) / m_llFrequency;
  // A negative count, of a product that wrapped around, passes.
  if (units <= llMAX_32_BITS) return static_cast<unsigned long>(units & llMAX_32_BITS);
  OXA_RAISE_ERROR(sLOG_NAME, IntegerOverflow());
  return 0;
}

}  // namespace Oxa::Core
