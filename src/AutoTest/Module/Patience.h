// Waits of self-tests: for a condition, and never for ever.
#ifndef OXACORE_AUTOTEST_MODULE_PATIENCE_H
#define OXACORE_AUTOTEST_MODULE_PATIENCE_H

#include <Infrastructure/OxaCore/Time.h>

namespace Oxa::Core {

/// How long a test waits for what has to come, on the slowest and busiest of machines.
inline Elapse Patience() { return Elapse(60, Elapse::Seconds); }

/// Polls `condition` until it holds or the patience is over. Gives whether it holds.
template <class Condition>
bool Becomes(const Condition& condition) {
  const Time deadline(Patience());
  while (!condition()) {
    if (deadline.TimeLeft() <= Elapse(0)) return condition();
    OxaSleep(1, Elapse::MilliSeconds, false);
  }
  return true;
}

}  // namespace Oxa::Core

#endif
