// How much room a stack has.
#ifndef OXACORE_PLATFORM_LINUX_FAULTMEMORY_H
#define OXACORE_PLATFORM_LINUX_FAULTMEMORY_H

#include <cstddef>
#include <cstdint>

#include "Platform/Linux/FaultState.h"
#include "Platform/Linux/SafeMemory.h"

namespace Oxa::Core::Platform {

constexpr std::uintptr_t uPAGE = 4096;

/// How many bytes below `stackPointer` can be used, as far as somebody wants to know: whole pages, at most 128 KiB.
std::size_t ProbeRoomBelow(std::uintptr_t stackPointer) noexcept;

/// Whether a stack pointer means that stack, which it may have run over by a large frame.
bool BelongsTo(std::uintptr_t stackPointer, const StackRange& stack) noexcept;

/// Whether a touch of `address` with the stack pointer at `stackPointer` means that a stack is at its end. `own` is
/// what the thread runs on as far as is known.
bool IsStackOverflow(std::uintptr_t address, std::uintptr_t stackPointer, const StackRange& own) noexcept;

/// Of such a touch: where the stack begins that can be used.
std::uintptr_t UsableFrom(std::uintptr_t address, std::uintptr_t stackPointer,
                          const StackRange& own) noexcept;

}  // namespace Oxa::Core::Platform

#endif
