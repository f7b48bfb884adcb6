// The few steps that no compiler makes: into a faulted frame, out of a guarded call, onto another stack.
#ifndef OXACORE_PLATFORM_LINUX_FAULTJUMPS_H
#define OXACORE_PLATFORM_LINUX_FAULTJUMPS_H

#include <cstdint>

#include "Platform/Linux/FaultState.h"

extern "C" {

/// Entered with the FaultState in rbx and rdi and a function in rsi, which it calls. To the unwinder it is the frame
/// that FaultState::m_resume describes, at an instruction that threw.
[[gnu::visibility("hidden")]] void OxaCoreFaultTrampoline();

/// Calls `action` with `argument` and gives 1. Notes the stack pointer in `guard`; who goes on at the landing with that
/// stack pointer makes it give 0.
[[gnu::visibility("hidden")]] int OxaCoreCallGuarded(void (*action)(void*), void* argument,
                                                     Oxa::Core::Platform::FaultGuard* guard);
[[gnu::visibility("hidden")]] void OxaCoreGuardedLanding();

/// Calls `action` with `argument` on the stack that ends at `top`.
[[gnu::visibility("hidden")]] void OxaCoreCallOnStack(std::uintptr_t top, void (*action)(void*),
                                                      void* argument);
}

#endif
