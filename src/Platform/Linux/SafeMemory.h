// Memory that may not be there, read without a fault.
#ifndef OXACORE_PLATFORM_LINUX_SAFEMEMORY_H
#define OXACORE_PLATFORM_LINUX_SAFEMEMORY_H

#include <cstddef>
#include <cstdint>

namespace Oxa::Core::Platform {

/// Copies up to `size` bytes of this process from `address` on and gives how many could be read: all, or those before
/// the first page that can't be. Never faults, allocates nothing, works in a signal handler, and where the system
/// forbids the reading of processes. Leaves errno alone.
std::size_t ReadMemory(std::uint64_t address, void* to, std::size_t size) noexcept;

/// The same for what is of no use by half: false if not all of it can be read, `to` is then undefined.
bool ReadSafely(std::uint64_t address, void* to, std::size_t size) noexcept;

}  // namespace Oxa::Core::Platform

#endif
