// What the kernel says about a fault, in the numbers that are the same everywhere.
#ifndef OXACORE_PLATFORM_LINUX_FAULTDECODE_H
#define OXACORE_PLATFORM_LINUX_FAULTDECODE_H

#include <cstddef>

#include "Platform/Linux/FaultContext.h"
#include "Platform/Linux/FaultState.h"

namespace Oxa::Core::Platform {

/// False for a signal that somebody sent, or that the kernel sent for something that no instruction did.
bool IsFault(const siginfo_t& signal) noexcept;

/// `own` is the stack that the thread runs on. Works in the handler of the signal.
void DecodeFault(_EXCEPTION_RECORD& record, const siginfo_t& signal, const ucontext_t& context,
                 const StackRange& own) noexcept;

/// Whether the instruction that `bytes` begin with belongs to the kernel.
bool IsPrivilegedInstruction(const unsigned char* bytes, std::size_t count) noexcept;

}  // namespace Oxa::Core::Platform

#endif
