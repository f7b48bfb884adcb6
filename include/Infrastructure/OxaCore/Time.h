// Moments and spans of time: the two time types of the library.
//
// Elapse is a signed span, Time a moment. Both are one signed 64-bit count of ticks of 100 nanoseconds; a
// Time counts them from the start of 1 January 1601 UTC. Arithmetic is plain 64-bit arithmetic that wraps
// around; nothing checks for overflow.
//
// Zones: a local date is turned into a moment by the zone that was in force when the library was loaded. A
// moment is turned into local fields and text by the zone in force at the moment of the call: a change of the
// environment variable TZ is seen at once, a change of the machine's zone within a second. What a file says
// that TZ names is read once: a change of the file behind an unchanged name isn't seen. A local time that
// occurs twice means the later of its two moments; one that is skipped is read by the offset before the
// change. A zone that can't be understood counts as UTC, and so does one that can't be read for the moment.
//
// Thread safety: plain values without locks. Const members and the free functions may be called from any
// thread; one object is not to be written and read at once. What has to do with local time reads the
// environment: no thread may change it (setenv, putenv) while another one is at that.
// Failures: what the system refuses (a month 13, a moment before 1601) raises Time::OsTimeApiError.
//
//   Time start;
//   OxaSleep(20, Elapse::MilliSeconds, false);
//   Elapse late = start.TimeSince() - Elapse(20, Elapse::MilliSeconds);
//   std::cout << start << ": " << late << '\n';  // "1998/08/23 02:33:17.123: 61.2 microseconds"
#ifndef INFRASTRUCTURE_OXACORE_TIME_H
#define INFRASTRUCTURE_OXACORE_TIME_H

#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/Export.h>

#include <iosfwd>
#include <string>

namespace Oxa::Core {

template <class T>
class UnitizedValue;
template <>
class UnitizedValue<double>;

/// A signed span of time.
class OXACORE_API Elapse {
 public:
  /// What a number of a span counts.
  enum TimeUnits : int {
    NanoSeconds = 0,
    MicroSeconds = 1,
    MilliSeconds = 2,
    Seconds = 3,
    Minutes = 4,
    Hours = 5,
    Days = 6,
    TimerTicks = 7  ///< the raw count of 100 ns ticks
  };

  /// See Assign. `Elapse(2)` is two seconds.
  constexpr Elapse(long long value = 0, TimeUnits units = Seconds) : m_iTicks(0) {
    if (units == Seconds) {
      m_iTicks = Multiply(value, 10000000);
    } else {
      Assign(value, units);
    }
  }

  /// The sum of the parts. Nanoseconds below a tick are cut off, towards zero; unlike Assign this never
  /// rounds.
  Elapse(long hours, long minutes, long seconds, long nanoseconds);

  Elapse(const Elapse&) = default;
  Elapse& operator=(const Elapse&) = default;

  /// Stores `value` counted in `units`. Nanoseconds that are no whole tick become the next higher tick than
  /// the one towards zero, also below zero: -150 ns are 0 ticks and -50 ns are 1 tick.
  /// Raises InvalidParameter for "units" if that is no enumerator, and leaves the value as it was.
  void Assign(long long value, TimeUnits units);

  /// The span in `units`. Nano-, micro- and milliseconds are whole numbers, cut towards zero; seconds and
  /// longer units carry a fraction. Raises InvalidParameter for "units" if that is no enumerator; 0 if that
  /// returns.
  double GetElapsed(TimeUnits units) const;

  /// The count of 100 ns ticks.
  long long GetRawTimerTicks() const { return m_iTicks; }

  // Plain 64-bit arithmetic, which wraps around.
  Elapse& operator+=(const Elapse& other) {
    m_iTicks = Add(m_iTicks, other.m_iTicks);
    return *this;
  }
  Elapse& operator-=(const Elapse& other) {
    m_iTicks = Subtract(m_iTicks, other.m_iTicks);
    return *this;
  }
  Elapse operator+(const Elapse& other) const { return Elapse(*this) += other; }
  Elapse operator-(const Elapse& other) const { return Elapse(*this) -= other; }

  // By the count of ticks.
  bool operator==(const Elapse& other) const { return Compare(other) == 0; }
  bool operator!=(const Elapse& other) const { return Compare(other) != 0; }
  bool operator<(const Elapse& other) const { return Compare(other) < 0; }
  bool operator<=(const Elapse& other) const { return Compare(other) <= 0; }
  bool operator>(const Elapse& other) const { return Compare(other) > 0; }
  bool operator>=(const Elapse& other) const { return Compare(other) >= 0; }

  /// Hours (all of them), minutes, seconds, milli-, micro- and nanoseconds, as in "26:03:04.005.006.700",
  /// with a '-' in front of a negative span.
  std::string ToString() const;

  /// Reads the form of ToString, leniently: "[hours:]minutes:seconds[.milli[.micro[.nano]]]" or seconds
  /// alone, with white space around it. A leading '-' is accepted AND IGNORED: the text of a negative span
  /// gives the positive one. Always true.
  ///
  /// What stands behind the last colon is seconds and fractions: none of them is read if there are more than
  /// four. What stands before is hours and minutes: neither is read if there are more than two. Each of the
  /// two lists is read whatever the other one is like. A field is a decimal number of 32 bits: white space
  /// and a sign may stand before it, and whatever behind it; a minus wraps around (-1 is 4294967295), one
  /// that is too large counts as 4294967295, and none at all as 0.
  bool ParseString(const std::string& text);

 private:
  friend class Time;

  static long long Add(long long a, long long b) {
    return static_cast<long long>(static_cast<unsigned long long>(a) + static_cast<unsigned long long>(b));
  }
  static long long Subtract(long long a, long long b) {
    return static_cast<long long>(static_cast<unsigned long long>(a) - static_cast<unsigned long long>(b));
  }
  static constexpr long long Multiply(long long a, long long b) {
    return static_cast<long long>(static_cast<unsigned long long>(a) * static_cast<unsigned long long>(b));
  }

  long Compare(const Elapse& other) const {
    return static_cast<long>(m_iTicks > other.m_iTicks) - static_cast<long>(m_iTicks < other.m_iTicks);
  }

  long long m_iTicks;
};

/// Writes a span for people: "1.5 seconds", "2:5" (minutes and seconds), "3:0:12", "250 microseconds".
OXACORE_API std::ostream& operator<<(std::ostream& out, const Elapse& elapse);

/// A moment.
class OXACORE_API Time {
 public:
  /// Whose clock a stored 64-bit time stamp was taken from.
  enum EPlatformTimeInfo : int {
    ePlatformTimeCurrent = 0,  ///< ticks of 100 ns, as this library counts them
    ePlatformTimeWindows = 1,  ///< the same
    ePlatformTimeSeconds = 2   ///< seconds since 1970
  };

  // How many of one unit make one of another.
  static constexpr long NSEC_PER_USEC = 1000;
  static constexpr long USEC_PER_MSEC = 1000;
  static constexpr long NSEC_PER_MSEC = 1000000;
  static constexpr long MSEC_PER_SEC = 1000;
  static constexpr long USEC_PER_SEC = 1000000;
  static constexpr long NSEC_PER_SEC = 1000000000;
  static constexpr long SEC_PER_MIN = 60;
  static constexpr long MIN_PER_HOUR = 60;
  static constexpr long SEC_PER_HOUR = 3600;
  static constexpr long HOUR_PER_DAY = 24;
  static constexpr long MIN_PER_DAY = 1440;
  static constexpr long SEC_PER_DAY = 86400;

  /// "Call to operating system time API failed with error:\n %1%": the system refused a date or a moment. The
  /// placeholder holds the system's text. Severity eERROR, log name "Oxa.Core.Time".
  class OXACORE_API OsTimeApiError : public ErrorClass<OsTimeApiError, OSError> {
   public:
    explicit OsTimeApiError(const std::string& systemText);
    OsTimeApiError(const OsTimeApiError&) = default;
    OsTimeApiError& operator=(const OsTimeApiError&) = default;
    ~OsTimeApiError() override;
  };

  /// Now.
  Time();

  /// Now plus `fromNow`.
  Time(const Elapse& fromNow);

  /// Midnight, local time, of a date, plus `sinceMidnight`; without `year`, of the current local year. Raises
  /// OsTimeApiError for a date that doesn't exist or a year outside 1601 to 30827; if that returns, counts
  /// from the tick 0 instead.
  Time(long month, long day, const Elapse& sinceMidnight);
  Time(long month, long day, long year, const Elapse& sinceMidnight);

  /// LOCAL midnight of 1 January 1970 (in the zone of the library's load) plus `value` ticks, unscaled.
  Time(long long value);
  Time& operator=(long long value);

  /// See Assign.
  Time(long long value, EPlatformTimeInfo info);

  Time(const Time&) = default;
  Time& operator=(const Time&) = default;

  /// Takes a stored time stamp: the tick count itself for ePlatformTimeCurrent and ePlatformTimeWindows; as
  /// Time(long long) does, in ticks, for ePlatformTimeSeconds: bring seconds to ticks before, by
  /// ConvertTimerTicksToCurrentPlatform. Anything else is a failed assertion and leaves the value as it was.
  void Assign(long long value, EPlatformTimeInfo info);

  /// Local midnight of 1 January 1601, so that its count is negative east of Greenwich. Never raises.
  static Time GetEpoch();

  /// Always ePlatformTimeWindows.
  static EPlatformTimeInfo GetPlatformTimeInfo();

  /// Ticks of 100 nanoseconds since the start of 1 January 1601 UTC.
  long long GetRawTimerTicks() const { return m_iTicks; }

  /// The tick count times 100; wraps around for moments after the year 1893.
  long long GetRawNanoSeconds() const { return Elapse::Multiply(m_iTicks, 100); }

  /// The tick count in whole seconds, cut towards zero.
  long long GetRawSeconds() const { return m_iTicks / 10000000; }

  // Local fields of the moment; the month counts from 1. They raise OsTimeApiError, and give 0 if that
  // returns, for a moment that the system can't break down: one before 1601, in UTC or in local time, or
  // after 30827.
  long Year() const;
  long Month() const;
  long Day() const;
  long Hour() const;
  long Minute() const;
  long Second() const;
  long MilliSecond() const;

  /// Whole microseconds below the millisecond, 0 to 999. Raises OsTimeApiError for a moment before 1601 or
  /// after 30827 in UTC, whatever the zone; 0 if that returns.
  long MicroSecond() const;

  /// "January" and so on, by Month(); "Invalid" if that is none.
  std::string MonthName() const;

  /// "Jan" and so on; "???" if there is no month.
  std::string MonthAbbreviation() const;

  /// This moment minus now, and now minus this moment.
  Elapse TimeLeft() const;
  Elapse TimeSince() const;

  // Plain 64-bit arithmetic, which wraps around.
  Time& operator+=(const Elapse& elapse) {
    m_iTicks = Elapse::Add(m_iTicks, elapse.m_iTicks);
    return *this;
  }
  Time& operator-=(const Elapse& elapse) {
    m_iTicks = Elapse::Subtract(m_iTicks, elapse.m_iTicks);
    return *this;
  }
  Time operator+(const Elapse& elapse) const { return Time(*this) += elapse; }
  Time operator-(const Elapse& elapse) const { return Time(*this) -= elapse; }
  Elapse operator-(const Time& other) const {
    return Elapse(Elapse::Subtract(m_iTicks, other.m_iTicks), Elapse::TimerTicks);
  }

  // By the count of ticks.
  bool operator==(const Time& other) const { return Compare(other) == 0; }
  bool operator!=(const Time& other) const { return Compare(other) != 0; }
  bool operator<(const Time& other) const { return Compare(other) < 0; }
  bool operator<=(const Time& other) const { return Compare(other) <= 0; }
  bool operator>(const Time& other) const { return Compare(other) > 0; }
  bool operator>=(const Time& other) const { return Compare(other) >= 0; }

  /// -1, 0 or 1, as this moment is before, at or after `other`.
  long Compare(const Time& other) const {
    return static_cast<long>(m_iTicks > other.m_iTicks) - static_cast<long>(m_iTicks < other.m_iTicks);
  }

  /// Local time, as in "1998/08/23 02:33:17.123". Raises as Year does, and gives "" if that returns.
  std::string ToString() const;

  /// Reads the form of ToString, with white space around it; seconds may come without milliseconds, and the
  /// milliseconds are a count (".5" is 5 ms). False, with the value left as it was, if there are not exactly
  /// two parts, the first of three by '/', the second of three by ':'. Fields are numbers as those of
  /// Elapse::ParseString. Raises OsTimeApiError for a date or time of day that doesn't exist, and so for every
  /// number that no date has: none is cut to fit; false, with the value left as it was, if that returns.
  bool ParseString(const std::string& text);

 private:
  static Time s_unixEpochBase;  // local midnight of 1 January 1970, as the zone was at load

  long long m_iTicks;
};

/// Writes ToString.
OXACORE_API std::ostream& operator<<(std::ostream& out, const Time& time);

/// Length of a tick in nanoseconds: 100, for ePlatformTimeSeconds 1000000000, 0 for an unknown platform.
OXACORE_API unsigned long GetTimeTickSize_ns(Time::EPlatformTimeInfo info);

/// A count of `info`'s ticks in ticks of 100 ns; 0 for an unknown platform. Wraps around on overflow.
OXACORE_API long long ConvertTimerTicksToCurrentPlatform(long long ticks, Time::EPlatformTimeInfo info);

// Spans as quantities; UnitizedValue.h has their type.

/// The span of a quantity: its whole nanoseconds, cut towards zero, stored as Elapse::Assign does. More of them
/// than 64 bits hold count as the most that they hold, and what is no number as none. Raises what
/// UnitizedValue::Get raises for "Nanosecond", and XNoUnitConversion for what is no time; no span where that
/// returns.
OXACORE_API Elapse ToElapse(const UnitizedValue<double>& quantity);

/// The whole nanoseconds of a span, in "Nanosecond". Raises XUnitNotFound if the host took that unit out of the
/// global dictionary.
OXACORE_API UnitizedValue<double> ToUnitizedValue(const Elapse& elapse);

}  // namespace Oxa::Core

/// Lets the calling thread sleep for whole milliseconds, cut off. A span below one millisecond returns at
/// once and doesn't yield. Only the low 32 bits of the milliseconds count, and nothing tells if there are
/// more: a multiple of 4294967296 ms (49.7 days) returns at once. A negative span wraps around, too, into a
/// very long sleep: don't. `alertable` has no effect on this platform.
OXACORE_API void OxaSleep(const Oxa::Core::Elapse& elapse, bool alertable);

/// The same for `value` in `units`; a negative value is 0, and whatever is below one millisecond yields the
/// processor. More than 4294967295 milliseconds given as seconds, minutes, hours or days is a failed
/// assertion, and the sleep then lasts the low 32 bits. Given in nano-, micro- or milliseconds or in ticks it
/// is no failed assertion: the low 32 bits are all that counts. An unknown unit is a failed assertion, and no
/// sleep follows.
OXACORE_API void OxaSleep(long value, Oxa::Core::Elapse::TimeUnits units, bool alertable);

#endif
