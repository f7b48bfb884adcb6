// All that is known of one zone: its past changes and the rule for what follows.
#ifndef OXACORE_PLATFORM_LINUX_ZONETABLE_H
#define OXACORE_PLATFORM_LINUX_ZONETABLE_H

#include <cstddef>

#include "Platform/Linux/ZoneRule.h"

namespace Oxa::Core::Platform {

/// Has no destructor and no pointers, so that it can stand in static storage and be read to the very end.
/// All zeros is UTC.
struct ZoneTable {
  static constexpr int iMAX_CHANGES = 400;

  int m_iChanges;
  long long m_moments[iMAX_CHANGES];  // ascending, seconds since 1970 UTC
  int m_offsets[iMAX_CHANGES + 1];    // [i] is in force before m_moments[i]; the last one, behind them all
  bool m_bRule;                       // what holds behind the last change, instead of the last offset
  ZoneRule m_rule;
};

/// The stretch around the moment `seconds`: always m_iFrom <= seconds < m_iUntil, but that the last moment of
/// all may end a stretch.
ZoneSegment SegmentAt(const ZoneTable& zone, long long seconds) noexcept;

/// The moment of a local time, both as seconds since 1970. Of two moments the later; for a local time that is
/// skipped, by the offset before the change.
long long MomentOfLocal(const ZoneTable& zone, long long local) noexcept;

/// Reads the contents of a zone file (TZif, any version). Leap seconds are left out of account. 0, or an
/// error code with `zone` in no promised state.
int ParseZoneFile(const unsigned char* data, std::size_t size, ZoneTable& zone) noexcept;

/// Reads the zone that a value of the environment variable TZ means: empty for UTC, the name of a zone file,
/// or a rule; null for the machine's own zone. UTC and GMT are known without a file. 0, or an error code, and
/// then `zone` is UTC; or what `tz` says as a rule, where it couldn't be told whether there is such a file.
int ReadZone(const char* tz, ZoneTable& zone) noexcept;

/// Whether a reading that failed so says nothing about the zone: the next one may well succeed.
bool FailedForTheMoment(int failure) noexcept;

/// The file that holds the machine's own zone.
extern const char* const g_pMACHINE_ZONE_FILE;

}  // namespace Oxa::Core::Platform

#endif
