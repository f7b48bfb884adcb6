// What a distribution calls itself, from its os-release file.
#ifndef OXACORE_PLATFORM_LINUX_DISTRIBUTION_H
#define OXACORE_PLATFORM_LINUX_DISTRIBUTION_H

#include <string>

namespace Oxa::Core::Platform {

/// Puts the PRETTY_NAME of the file, without quotes and escapes, into `name`, or nothing if the file has none.
/// False if it can't be opened; `name` is then untouched. Throws std::bad_alloc.
bool ReadDistribution(const char* file, std::string& name);

}  // namespace Oxa::Core::Platform

#endif
