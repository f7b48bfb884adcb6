// Memory that may not be there, read without a fault.
#ifndef OXACORE_PLATFORM_LINUX_SAFEMEMORY_H
#define OXACORE_PLATFORM_LINUX_SAFEMEMORY_H

#include <cstddef>
#include <cstdint>

namespace Oxa::Core::Platform {

/// Copies `size` bytes of this process from `address`; false if not all of them can be read, `to` is then undefined.
/// Never faults, allocates nothing, works in a signal handler, and where the system forbids the reading of processes.
bool ReadSafely(std::uint64_t address, void* to, std::size_t size) noexcept;

}  // namespace Oxa::Core::Platform

#endif
