// The alternate stacks that the handlers of faults run on.
#ifndef OXACORE_PLATFORM_LINUX_FAULTSTACKS_H
#define OXACORE_PLATFORM_LINUX_FAULTSTACKS_H

namespace Oxa::Core::Platform {

/// Gives the calling thread an alternate stack unless it has one of that size, until it ends.
void TakeAlternateStack() noexcept;

/// Takes the calling thread's back now, and gives up all that no thread has. No thread's end does so any more.
void RemoveAlternateStacks() noexcept;

/// For a thread that is about to vanish without any clean-up.
void AbandonAlternateStack() noexcept;

}  // namespace Oxa::Core::Platform

#endif
