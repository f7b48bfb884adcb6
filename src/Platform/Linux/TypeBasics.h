// Which of the basic types a base type of the debug data is.
#ifndef OXACORE_PLATFORM_LINUX_TYPEBASICS_H
#define OXACORE_PLATFORM_LINUX_TYPEBASICS_H

#include <cstdint>
#include <string_view>

#include "Platform/Variables.h"

namespace Oxa::Core::Platform {

/// By its encoding (DW_ATE_...), name and size in bytes.
EBasicType BasicTypeOf(unsigned encoding, std::string_view name, std::uint64_t size) noexcept;

}  // namespace Oxa::Core::Platform

#endif
