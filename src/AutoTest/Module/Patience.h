// Waits of self-tests: for a condition, and never for ever. By a clock that nobody sets.
#ifndef OXACORE_AUTOTEST_MODULE_PATIENCE_H
#define OXACORE_AUTOTEST_MODULE_PATIENCE_H

#include <Infrastructure/OxaCore/Time.h>

#include "Platform/Clock.h"

namespace Oxa::Core {

/// How long a test waits for what has to come, on the slowest and busiest of machines.
inline Elapse Patience() { return Elapse(60, Elapse::Seconds); }

/// A span of time that begins with this object.
class Span {
 public:
  explicit Span(const Elapse& length) : m_llEnd(Platform::MonotonicTicks() + length.GetRawTimerTicks()) {}

  bool IsOver() const { return Platform::MonotonicTicks() >= m_llEnd; }

 private:
  const long long m_llEnd;  // in ticks of 100 ns
};

/// Polls `condition` until it holds or the patience is over. Gives whether it holds.
template <class Condition>
bool Becomes(const Condition& condition) {
  const Span patience(Patience());
  while (!condition()) {
    if (patience.IsOver()) return condition();
    OxaSleep(1, Elapse::MilliSeconds, false);
  }
  return true;
}

}  // namespace Oxa::Core

#endif
