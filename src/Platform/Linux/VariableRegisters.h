// What expressions of debug data take from a frame: registers, the base of the frame, variables of the thread.
#ifndef OXACORE_PLATFORM_LINUX_VARIABLEREGISTERS_H
#define OXACORE_PLATFORM_LINUX_VARIABLEREGISTERS_H

#include <cstdint>

#include "Platform/Linux/VariableExpression.h"
#include "Platform/Linux/VariableWord.h"

namespace Oxa::Core::Platform {

/// The content of a register by its number in debug data; of the wide ones the lower 8 bytes, which are known only
/// where a fault told all registers. False if it isn't known.
bool ReadRegisterOf(const FrameView& frame, std::uint64_t number, std::uint64_t& value) noexcept;

/// What the function's variables are counted from.
bool FrameBase(ExpressionScene& scene, std::uint64_t& base);

/// Where the calling thread has its variable at `offset` of the block that the frame's module has in each thread.
bool ThreadLocalAddress(const FrameView& frame, std::uint64_t offset, std::uint64_t& address) noexcept;

/// The type that a base type makes of words of the machine; false if they can't hold it.
bool TypeOfWord(const Dw& dw, Dwarf_Die& type, WordType& result) noexcept;

}  // namespace Oxa::Core::Platform

#endif
