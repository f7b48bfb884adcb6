// The clocks, the calendar and the zones of the machine.
//
// Moments are counted in ticks of 100 nanoseconds since the start of 1 January 1601 UTC. Dates are those of
// the Gregorian calendar, of the years 1601 to 30827.
//
// No function raises, takes a lock of ours or logs. Those that give an int give 0, or the system's error
// code, and then leave their argument untouched. Any thread may call, at any time, unless said otherwise. A
// program that changes its environment while other threads read the clock breaks the rules of the C library:
// the zone of the moment is looked up there.
#ifndef OXACORE_PLATFORM_CLOCK_H
#define OXACORE_PLATFORM_CLOCK_H

#include <string>

namespace Oxa::Core::Platform {

/// A date and a time of day; of which zone is said where it is used.
struct DateTime {
  int m_iYear = 0;
  int m_iMonth = 0;  ///< from 1
  int m_iDay = 0;    ///< from 1
  int m_iHour = 0;
  int m_iMinute = 0;
  int m_iSecond = 0;
  int m_iMilliSecond = 0;
};

/// Now, as the system's clock tells it.
long long NowTicks() noexcept;

/// Ticks of 100 ns on a clock that never jumps or runs backwards; only differences mean anything.
long long MonotonicTicks() noexcept;

/// How many ticks MonotonicTicks counts in a second. Refuses on a machine that has no such clock.
int MonotonicFrequency(long long& ticksPerSecond) noexcept;

/// The UTC date of a moment. Refuses moments before 1601 and after 30827.
int TicksToUtc(long long ticks, DateTime& utc) noexcept;

/// The local date of a moment, by the zone in force now: the environment variable TZ at this moment, or the
/// machine's zone as it was less than a second ago. Leaves errno alone. Refuses what TicksToUtc refuses, and moments
/// whose local year isn't within 1601 to 30827.
int TicksToLocal(long long ticks, DateTime& local) noexcept;

/// The moment of a UTC date. Refuses fields that are no date or time of day. Takes one day more at either end
/// of the calendar, so that every local date has its moment; the count is negative before 1601.
int UtcToTicks(const DateTime& utc, long long& ticks) noexcept;

/// Reads the zone that LocalToUtc goes by. Once, when the library is loaded, before any other thread calls
/// LocalToUtc. On failure, and before the first call, that zone is UTC.
int LoadZone() noexcept;

/// The UTC date of a local date, by the zone that LoadZone read. A local time that occurs twice means the
/// later of its two moments; one that is skipped is read by the offset that was in force before the change,
/// and so names a moment behind it. Refuses fields that are no date or time of day.
int LocalToUtc(const DateTime& local, DateTime& utc) noexcept;

/// How many seconds the zone in force now (see TicksToLocal) is ahead, at a moment, of the one that LocalToUtc goes by.
long long ZoneChange(long long ticks) noexcept;

/// Fields as text, as in "1998/08/23 02:33:17.123". Refuses fields that are no date or time of day. Throws
/// nothing but std::bad_alloc.
int DateTimeText(const DateTime& fields, std::string& text);

/// The local date and time of a moment as text, by the zone in force now; empty where TicksToLocal refuses.
/// Throws nothing but std::bad_alloc.
std::string LocalTimeText(long long ticks);

/// Lets the calling thread sleep; 0 gives the processor to another thread that wants it. Signals don't cut
/// the sleep short.
void SleepMilliseconds(unsigned int milliseconds) noexcept;

/// For tests: from now on adds `now` to what NowTicks tells, and `monotonic` to what MonotonicTicks tells.
void SetClockOffset(long long now, long long monotonic) noexcept;

/// For tests: from now on MonotonicFrequency gives this code, or what the machine says if it is 0.
void SetMonotonicFailure(int code) noexcept;

}  // namespace Oxa::Core::Platform

#endif
