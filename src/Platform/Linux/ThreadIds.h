// What the ids of threads tell.
#ifndef OXACORE_PLATFORM_LINUX_THREADIDS_H
#define OXACORE_PLATFORM_LINUX_THREADIDS_H

#include <cstdint>

namespace Oxa::Core::Platform {

/// Whether this process has no thread of that id. Leaves errno alone.
bool ThreadIsGone(std::uint32_t id) noexcept;

}  // namespace Oxa::Core::Platform

#endif
