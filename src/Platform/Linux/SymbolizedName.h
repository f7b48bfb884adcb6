// The name of a function that the debug data gives no decorated name for.
#ifndef OXACORE_PLATFORM_LINUX_SYMBOLIZEDNAME_H
#define OXACORE_PLATFORM_LINUX_SYMBOLIZEDNAME_H

#include <string>

#include "Platform/Linux/DwFunctions.h"

namespace Oxa::Core::Platform {

/// The name with the namespaces, classes and functions that it was declared in, without parameters; empty if it has
/// none. May throw std::bad_alloc.
std::string QualifiedName(const Dw& dw, const Dwarf_Die& entry);

}  // namespace Oxa::Core::Platform

#endif
