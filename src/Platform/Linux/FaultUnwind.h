// Where an exception that a fault becomes starts on its way.
#ifndef OXACORE_PLATFORM_LINUX_FAULTUNWIND_H
#define OXACORE_PLATFORM_LINUX_FAULTUNWIND_H

#include "Platform/Linux/FaultState.h"

namespace Oxa::Core::Platform {

/// To be called before the first fault: looks up what it goes by.
void PrepareUnwinding() noexcept;

/// Whether the instruction is part of the unwinder itself, which can't be asked for help then.
bool IsUnwinder(std::uintptr_t place) noexcept;

/// Called below the trampoline. Moves `state.m_resume` up to the first frame that lets an exception through: frames
/// whose code isn't made for one are passed over, and those without room for a catch clause. False if no exception may
/// be made of the fault: it happened in the memory allocator, or the stack can't be read.
bool FindFirstFrame(FaultState& state) noexcept;

}  // namespace Oxa::Core::Platform

#endif
