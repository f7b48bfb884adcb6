// The station's instrument: a clock that one can sleep by.
#ifndef STATION_CLOCK_H
#define STATION_CLOCK_H

#include <Infrastructure/OxaCore/Log.h>
#include <Infrastructure/OxaCore/Thread.h>
#include <Infrastructure/OxaCore/Time.h>

#include <boost/shared_ptr.hpp>

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

  /// Returns at `due` or as soon after it as it can; at once if that is past. False if the thread of
  /// `directive`, which is the calling one, has been asked to stop: the time is then as good as any.
  virtual bool SleepUntil(const Oxa::Core::Elapse& due, Oxa::Core::TaskDirective& directive) = 0;
};

/// The system's steady clock, which nobody sets while a series is being measured. Any number of threads may
/// sleep by one.
class SystemClock : public Clock {
 public:
  SystemClock();

  Oxa::Core::Elapse Now() override;
  bool SleepUntil(const Oxa::Core::Elapse& due, Oxa::Core::TaskDirective& directive) override;

 private:
  const boost::shared_ptr<Oxa::Core::Logger> m_spLogger;
};

}  // namespace Station

#endif
