// A simulated instrument that breaks in the middle of a series.
#ifndef STATION_FAULTYCLOCK_H
#define STATION_FAULTYCLOCK_H

#include <string>

#include "Clock.h"

namespace Station {

/// Series whose names begin with "faulty" are measured by a FaultyClock.
bool WantsFaultyClock(const std::string& series);

/// Goes as another clock goes, but its third sleep writes through a null pointer: on a thread with the translator that
/// is an error, an AccessViolation, which ends the series and nothing else. For one thread.
class FaultyClock : public Clock {
 public:
  /// `clock` must outlive it.
  explicit FaultyClock(Clock& clock) : m_clock(clock) {}

  Oxa::Core::Elapse Now() override { return m_clock.Now(); }
  bool SleepUntil(const Oxa::Core::Elapse& due, Oxa::Core::TaskDirective& directive) override;

 private:
  Clock& m_clock;
  int m_iSleeps = 0;
};

}  // namespace Station

#endif
