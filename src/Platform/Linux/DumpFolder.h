// The names in a folder, without the C library.
#ifndef OXACORE_PLATFORM_LINUX_DUMPFOLDER_H
#define OXACORE_PLATFORM_LINUX_DUMPFOLDER_H

#include <stdio.h>

#include <cstdint>
#include <cstring>

#include "Platform/Linux/RawCall.h"

namespace Oxa::Core::Platform {

/// Calls `action` with each name in an open folder, from its first on, "." and ".." included.
template <class Action>
void ForNamesIn(int folder, const Action& action) noexcept {
  // An entry is a node, a position, its own length in 2 bytes, a type of 1, and the name.
  constexpr long iLENGTH = 16;
  constexpr long iNAME = 19;
  char entries[4096] = {};
  RawCall(SYS_lseek, folder, 0, SEEK_SET);
  for (;;) {
    const long size = RawCall(SYS_getdents64, folder, RawArgument(entries), sizeof entries);
    if (size <= 0) return;
    std::uint16_t length = 0;
    for (long at = 0; at + iNAME < size; at += length) {
      std::memcpy(&length, entries + at + iLENGTH, sizeof length);
      action(static_cast<const char*>(entries + at + iNAME));
    }
  }
}

}  // namespace Oxa::Core::Platform

#endif
