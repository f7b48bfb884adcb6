// The station's instrument: a clock that one can sleep by.
#ifndef STATION_CLOCK_H
#define STATION_CLOCK_H

#include <Infrastructure/OxaCore/Time.h>

namespace Station {

/// What is measured. An interface, so that tests can bring a clock that oversleeps when they want it to.
class Clock {
 public:
  Clock() = default;
  Clock(const Clock&) = delete;
  Clock& operator=(const Clock&) = delete;
  virtual ~Clock();

  /// Time since a moment that stays the same while the program runs; never steps back.
  virtual Oxa::Core::Elapse Now() = 0;

  /// Returns at `due` or as soon after it as it can; at once if that is past. False if the user wants the
  /// program to end: the time is then as good as any.
  virtual bool SleepUntil(const Oxa::Core::Elapse& due) = 0;
};

/// The system's steady clock, which nobody sets while a series is being measured.
class SystemClock : public Clock {
 public:
  Oxa::Core::Elapse Now() override;
  bool SleepUntil(const Oxa::Core::Elapse& due) override;
};

}  // namespace Station

#endif
