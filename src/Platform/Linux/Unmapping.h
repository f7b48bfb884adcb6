// How the end of a library in a process that goes on is told from the end of the process.
#ifndef OXACORE_PLATFORM_LINUX_UNMAPPING_H
#define OXACORE_PLATFORM_LINUX_UNMAPPING_H

namespace Oxa::Core::Platform {

/// Called while the library is being loaded.
void NoteLoading() noexcept;

/// Called first thing when it is being unloaded; from here on IsBeingUnmapped knows.
void NoteUnloading() noexcept;

}  // namespace Oxa::Core::Platform

#endif
