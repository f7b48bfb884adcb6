// Between moments and dates. What the system refuses is raised as Time::OsTimeApiError under "Oxa.Core.Time",
// with the name of the function that met it: the names are what people look for in reports.
#ifndef OXACORE_TIME_LOCALTIME_H
#define OXACORE_TIME_LOCALTIME_H

#include <string>

#include "Platform/Clock.h"

/// The local zone as it was when the library was loaded: building the one object of this class reads it.
class TimeZoneInfo {
 public:
  /// Fails an assertion if the zone can't be read; local dates then go by UTC.
  TimeZoneInfo();
};

/// A moment on its way to or from a UTC date.
class WindowsFileTime {
 public:
  explicit WindowsFileTime(long long ticks) : m_iTicks(ticks) {}

  /// Raises for a date that doesn't exist; the moment is 0 if that returns.
  explicit WindowsFileTime(const Oxa::Core::Platform::DateTime& utc);

  long long GetTicks() const { return m_iTicks; }

  /// Raises for a moment outside the calendar; false, with `utc` untouched, if that returns.
  bool GetSystemTime(Oxa::Core::Platform::DateTime& utc) const;

 private:
  long long m_iTicks;
};

/// The UTC date of a local one, by the zone of the load. Raises for a date that doesn't exist; false, with
/// `utc` untouched, if that returns.
bool ConvertToUTCTime(const Oxa::Core::Platform::DateTime& local, Oxa::Core::Platform::DateTime& utc);

/// The local fields of a moment, by the zone of this moment. Raises for a moment outside the calendar; false,
/// with `local` untouched, if that returns.
bool GetLocalSystemTime(long long ticks, Oxa::Core::Platform::DateTime& local);

/// The local time of a moment as text, "1998/08/23 02:33:17.123". Raises as GetLocalSystemTime does; empty if
/// that returns.
std::string GetLocalTimeString(long long ticks);

#endif
