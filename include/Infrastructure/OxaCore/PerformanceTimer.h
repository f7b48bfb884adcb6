// A stopwatch for short spans, on a clock that never jumps.
//
// Thread safety: any number of threads may read one object at once, but not while another thread marks it.
// Units: the names tell. The integer forms count whole units, cut off, and give 32 bits.
// Failures: IntegerOverflow where the count doesn't fit: microseconds after about 71.6 minutes, milliseconds after
// about 49.7 days. The count is worked out in 64 bits that wrap around, so that it is only reliable while the
// elapsed ticks of 100 ns, times the units per second, stay below 2^63: microseconds for 10.7 days, milliseconds
// for 29 years. Beyond that they give a number that means nothing, or raise. DiffMSec_d has no such limit.
//
//   PerformanceTimer timer;
//   Measure();
//   const double milliseconds = timer.DiffMSec_d();
#ifndef INFRASTRUCTURE_OXACORE_PERFORMANCETIMER_H
#define INFRASTRUCTURE_OXACORE_PERFORMANCETIMER_H

#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/Export.h>

namespace Oxa::Core {

/// Measures the time since its mark. Reading doesn't stop it. Copies go on from the same mark.
class OXACORE_API PerformanceTimer {
 public:
  /// "Hardware does not support a performance timer".
  class OXACORE_API NotSupported : public ErrorClass<NotSupported, HardwareError> {
   public:
    NotSupported();
    ~NotSupported() override;
  };

  /// "Value cannot fit in 32 bits".
  class OXACORE_API IntegerOverflow : public ErrorClass<IntegerOverflow, LogicError> {
   public:
    IntegerOverflow();
    ~IntegerOverflow() override;
  };

  /// Marks the moment. Raises NotSupported on a machine without such a clock; where that raise returns, a tick
  /// counts as a second.
  PerformanceTimer();

  /// Sets the mark to this moment.
  void Mark();

  /// Whole seconds since the mark. They raise IntegerOverflow above 4294967295, and give 0 where the raise returns.
  unsigned long DiffSec_u() const;
  unsigned long DiffMSec_u() const;  ///< the same in milliseconds
  unsigned long DiffUSec_u() const;  ///< the same in microseconds

  /// Milliseconds since the mark, with their fraction. Raises nothing.
  double DiffMSec_d() const;

  /// The length of a tick in microseconds.
  double GetResolutionUSec() const;

 private:
  long long getElapsedTicks() const;
  unsigned long diff_u(unsigned int unitsPerSecond) const;

  long long m_llFrequency = 1;  ///< ticks per second
  long long m_llMark;
};

}  // namespace Oxa::Core

#endif
