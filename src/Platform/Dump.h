// Memory dumps that a debugger opens.
#ifndef OXACORE_PLATFORM_DUMP_H
#define OXACORE_PLATFORM_DUMP_H

#include <Infrastructure/OxaCore/PlatformTypes.h>

namespace Oxa::Core::Platform {

/// What goes into a dump, to be joined; the numbers are those of the file format.
enum EDumpContents : unsigned int {
  eDUMP_WITH_DATA_SEGS = 0x1,
  eDUMP_WITH_FULL_MEMORY = 0x2,
  eDUMP_WITH_HANDLE_DATA = 0x4,
  eDUMP_SCAN_MEMORY = 0x10,
  eDUMP_WITH_UNLOADED_MODULES = 0x20,
  eDUMP_WITH_INDIRECTLY_REFERENCED_MEMORY = 0x40,
  eDUMP_WITH_PRIVATE_READ_WRITE_MEMORY = 0x200,
  eDUMP_WITH_FULL_MEMORY_INFO = 0x800,
  eDUMP_WITH_THREAD_INFO = 0x1000
};

/// Asked for each thread and each module before it is written, by the numbers of the file format: whether to include it
/// (3 and 4), then with the flags of what is to be written of it (1 and 0), of which it may clear some. False leaves it
/// out; so does, of a module or a thread, a cleared 1. The flag 0x10 of a module says that memory in the dump points
/// into it, which is found out with eDUMP_SCAN_MEMORY only. Called where WriteDump is: the same restraint is in order.
using DumpFilter = bool (*)(unsigned int callbackType, unsigned int& flags, void* parameter);

/// Writes the running process into the file `path`, a new one or over an old one, for its owner only, with the fault
/// that `pointers` stand for, or the calling thread as it is where they are null. Other threads stand still meanwhile;
/// where the system forbids that, they run on, and less is known of them. Gives 0, or the system's error code if the
/// file can't be made; what can't be read or has no room is left out.
///
/// Works where nothing else does: allocates nothing, takes no lock, ends within `milliseconds`, and in a fault's
/// signal handler. One dump at a time: a second call meanwhile gives EBUSY. The device memory of drivers is never
/// touched.
int WriteDump(const char* path, const _EXCEPTION_POINTERS* pointers, unsigned int contents, DumpFilter filter,
              void* parameter, int milliseconds) noexcept;

/// For a child that was forked off, before it does anything else: a dump that another thread of its parent was writing
/// is none of this process.
void ForgetDumpsOfParent() noexcept;

}  // namespace Oxa::Core::Platform

#endif
