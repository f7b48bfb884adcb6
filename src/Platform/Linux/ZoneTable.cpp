#include "Platform/Linux/ZoneTable.h"

#include <algorithm>
#include <climits>

namespace Oxa::Core::Platform {

ZoneSegment SegmentAt(const ZoneTable& zone, long long seconds) noexcept {
  const long long* const begin = zone.m_moments;
  const long long* const end = begin + zone.m_iChanges;
  const long long* const next = std::upper_bound(begin, end, seconds);
  const long long from = next == begin ? LLONG_MIN : next[-1];
  if (next == end && zone.m_bRule) {
    const ZoneSegment segment = SegmentAt(zone.m_rule, seconds);
    return {std::max(from, segment.m_iFrom), segment.m_iUntil, segment.m_iOffset};
  }
  return {from, next == end ? LLONG_MAX : *next, zone.m_offsets[next - begin]};
}

long long MomentOfLocal(const ZoneTable& zone, long long local) noexcept {
  ZoneSegment segment = SegmentAt(zone, local - iOFFSET_BOUND);
  while (segment.m_iUntil <= local + iOFFSET_BOUND) {
    const ZoneSegment next = SegmentAt(zone, segment.m_iUntil);
    if (next.m_iUntil <= segment.m_iUntil) break;  // no zone may hold a program up for ever
    if (local - next.m_iOffset < next.m_iFrom) break;
    segment = next;
  }
  return local - segment.m_iOffset;
}

}  // namespace Oxa::Core::Platform
