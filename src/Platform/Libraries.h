// Dynamic libraries of this process.
//
// No function raises or throws, takes a lock of ours or logs. A kill or a cancellation of the calling thread waits
// while one of them runs, so that the system's own list of libraries stays whole. Any thread may call.
#ifndef OXACORE_PLATFORM_LIBRARIES_H
#define OXACORE_PLATFORM_LIBRARIES_H

#include <Infrastructure/OxaCore/PlatformTypes.h>

#include <string>

namespace Oxa::Core::Platform {

/// Loads the library with all that it needs, nothing left for later; its names are seen by nobody but who asks for
/// them by the handle. "\" and "/" both separate; a name without a folder is looked for in the system's places.
/// Null if that fails, and for the empty name.
HINSTANCE OpenLibrary(const char* name) noexcept;

/// Gives back what OpenLibrary gave. The library goes with its last user.
void CloseLibrary(HINSTANCE library) noexcept;

/// The address of what bears that name in the library or in one that it was linked with; null if nothing does.
void* FindFunction(HINSTANCE library, const char* name) noexcept;

/// Where the file of a library lies that is loaded, by whoever did that: its whole path as far as the system knows it.
/// Null stands for the program. 0, or the system's error code, with `path` untouched: EINVAL for a handle that is none
/// (any more).
int LibraryPath(HINSTANCE library, std::string& path) noexcept;

/// Where the file of the library, or of the program, lies that this code is part of: its whole path. 0, or the system's
/// error code, with `path` untouched.
int OwnPath(std::string& path) noexcept;

}  // namespace Oxa::Core::Platform

#endif
