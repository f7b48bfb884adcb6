// The zone in force at the moment.
#ifndef OXACORE_PLATFORM_LINUX_CURRENTZONE_H
#define OXACORE_PLATFORM_LINUX_CURRENTZONE_H

namespace Oxa::Core::Platform {

/// How many seconds local time is ahead of UTC at the moment `seconds` (since 1970 UTC), by the zone that TZ
/// names now. The machine's own zone file is looked at no more than once a second.
int CurrentOffset(long long seconds) noexcept;

}  // namespace Oxa::Core::Platform

#endif
