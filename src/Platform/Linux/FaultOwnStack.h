// Where the stack of a thread lies.
#ifndef OXACORE_PLATFORM_LINUX_FAULTOWNSTACK_H
#define OXACORE_PLATFORM_LINUX_FAULTOWNSTACK_H

#include "Platform/Linux/FaultState.h"

namespace Oxa::Core::Platform {

/// The stack that the system gave the calling thread, as far as it may grow; empty if nobody knows.
StackRange OwnStack() noexcept;

}  // namespace Oxa::Core::Platform

#endif
