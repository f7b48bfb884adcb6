// The rule of a zone in its POSIX spelling, such as "EST5EDT,M3.2.0,M11.1.0".
#ifndef OXACORE_PLATFORM_LINUX_ZONERULE_H
#define OXACORE_PLATFORM_LINUX_ZONERULE_H

#include <cstddef>

namespace Oxa::Core::Platform {

/// A stretch of time with one offset: from `m_iFrom` on and before `m_iUntil`, in seconds since 1970 UTC.
struct ZoneSegment {
  long long m_iFrom;
  long long m_iUntil;
  int m_iOffset;  // seconds that local time is ahead of UTC
};

/// One of the two changes of a year.
struct YearlyChange {
  enum EKind { eNO_LEAP_DAY, eDAY_OF_YEAR, eWEEKDAY };
  EKind m_eKind;
  int m_iMonth;  // eWEEKDAY only
  int m_iWeek;   // eWEEKDAY only; 5 is the last
  int m_iDay;    // weekday, or day of the year
  int m_iSeconds;
};

struct ZoneRule {
  int m_iStandardOffset;
  bool m_bDaylight;
  int m_iDaylightOffset;
  YearlyChange m_start;
  YearlyChange m_end;
};

/// No offset reaches this many seconds.
constexpr int iOFFSET_BOUND = 26 * 3600;

/// Reads a rule, all of `text`. False, and `rule` untouched, if it is none.
bool ParseZoneRule(const char* text, std::size_t length, ZoneRule& rule) noexcept;

/// The stretch around the moment `seconds`: always m_iFrom <= seconds < m_iUntil. The offset may be the same on
/// both sides of an edge, and stretches may overlap where a rule lets daylight time end behind its next start.
ZoneSegment SegmentAt(const ZoneRule& rule, long long seconds) noexcept;

}  // namespace Oxa::Core::Platform

#endif
