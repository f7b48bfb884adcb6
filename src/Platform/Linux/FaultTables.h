// The tables of exceptions that compilers write.
#ifndef OXACORE_PLATFORM_LINUX_FAULTTABLES_H
#define OXACORE_PLATFORM_LINUX_FAULTTABLES_H

#include <cstdint>

namespace Oxa::Core::Platform {

/// Whether the table of a function that begins at `start` has an entry for the instruction at `place`. If it has
/// none an exception from there ends the process.
bool CoversPlace(const unsigned char* table, std::uintptr_t start, std::uintptr_t place) noexcept;

}  // namespace Oxa::Core::Platform

#endif
