// What a program or library in the ELF format says of itself.
#ifndef OXACORE_PLATFORM_LINUX_ELFVERSION_H
#define OXACORE_PLATFORM_LINUX_ELFVERSION_H

#include <string>

#include "Platform/Linux/ModuleFile.h"
#include "Platform/VersionRecords.h"

namespace Oxa::Core::Platform {

/// What the file of that name tells: the texts of its package note (".note.package") by their own names; the note's
/// "name" and "version" are ProductName and ProductVersion as well, unless it has texts of these names. The numbers
/// that end the file's own name, or else that of the file that a link leads to, are FileVersion, if there are at least
/// two: "1.2.3" of "libprobe.so.1.2.3". The name that the linker gave it is InternalName. Files of 32 and 64 bits and
/// of both orders of bytes will do. False if there is neither a note nor such a number, and for a damaged file;
/// `record` may have got some of it then. Throws std::bad_alloc.
bool ReadElfVersion(ModuleFile& file, const std::string& name, VersionRecord& record);

/// Whether it has the mark of that format.
bool IsElf(ModuleFile& file);

/// "1.2.3" of "libprobe.so.1.2.3": two numbers or more, each behind a dot. Empty if the name ends otherwise.
std::string VersionSuffix(const std::string& name);

}  // namespace Oxa::Core::Platform

#endif
