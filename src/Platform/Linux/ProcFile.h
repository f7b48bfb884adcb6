// What the kernel tells in files and links below /proc.
//
// Nothing here locks or logs; what throws throws std::bad_alloc. Results are error codes, 0 for none.
#ifndef OXACORE_PLATFORM_LINUX_PROCFILE_H
#define OXACORE_PLATFORM_LINUX_PROCFILE_H

#include <string>

namespace Oxa::Core::Platform {

/// "/proc", unless a test has put another folder in its place.
const char* ProcFolder() noexcept;

/// For tests: the folder is taken for /proc from now on; null takes that back. The text must stay.
void SetProcFolder(const char* folder) noexcept;

/// The whole of a file whose size nobody knows before. `folder` as openat takes it.
int ReadUnsizedFile(int folder, const char* name, std::string& content);

/// Where a link leads, however long that is. `folder` as readlinkat takes it.
int ReadLink(int folder, const char* name, std::string& target);

/// Takes away the mark that the kernel adds to the name of a file that was removed or replaced while it is in use. A
/// file that really bears such a name is left alone.
void DropDeletedMark(std::string& path);

}  // namespace Oxa::Core::Platform

#endif
