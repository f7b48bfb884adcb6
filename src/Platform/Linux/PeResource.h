// The resources of a file of the PE format.
#ifndef OXACORE_PLATFORM_LINUX_PERESOURCE_H
#define OXACORE_PLATFORM_LINUX_PERESOURCE_H

#include <cstdint>
#include <string>

#include "Platform/Linux/ModuleFile.h"

namespace Oxa::Core::Platform {

/// Gives the content of the first resource of that type, in the language that comes first. False, with `content`
/// untouched, if there is none, or if what leads to it is damaged. Throws std::bad_alloc.
bool ReadPeResource(ModuleFile& file, std::uint32_t type, std::string& content);

}  // namespace Oxa::Core::Platform

#endif
