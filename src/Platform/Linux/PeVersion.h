// What a program or library in the PE format says of itself.
#ifndef OXACORE_PLATFORM_LINUX_PEVERSION_H
#define OXACORE_PLATFORM_LINUX_PEVERSION_H

#include <string>
#include <vector>

#include "Platform/Linux/ModuleFile.h"
#include "Platform/VersionRecords.h"

namespace Oxa::Core::Platform {

/// What its version resource tells under `keys`, in UTF-8: language by language in the order of the resource's own list
/// of translations; what an earlier one says stays. Names in the resource are compared without regard to case. False
/// for a file without a version resource and for a damaged one. Throws std::bad_alloc.
bool ReadPeVersion(ModuleFile& file, const std::vector<std::string>& keys, VersionRecord& record);

/// Whether it has the mark of that format.
bool IsPe(ModuleFile& file);

}  // namespace Oxa::Core::Platform

#endif
