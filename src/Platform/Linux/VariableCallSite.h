// What a caller's debug data tells of the parameters that it passed.
#ifndef OXACORE_PLATFORM_LINUX_VARIABLECALLSITE_H
#define OXACORE_PLATFORM_LINUX_VARIABLECALLSITE_H

#include <cstdint>

#include "Platform/Linux/VariableExpression.h"

namespace Oxa::Core::Platform {

/// What the register `number` held when the frame's function was entered; false if it can't be told.
bool ValueOnEntry(ExpressionScene& scene, unsigned number, std::uint64_t& value);

}  // namespace Oxa::Core::Platform

#endif
