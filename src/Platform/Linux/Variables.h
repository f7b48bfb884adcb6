// The variables of a frame, by the debug data of its module.
#ifndef OXACORE_PLATFORM_LINUX_VARIABLES_H
#define OXACORE_PLATFORM_LINUX_VARIABLES_H

#include "Platform/Linux/DwFunctions.h"
#include "Platform/Linux/FrameView.h"
#include "Platform/Variables.h"

namespace Oxa::Core::Platform {

/// Gives the parameters and variables of the frame's scopes to `sink`, those of inner scopes first; of several with one
/// name only the innermost. What a function of libdw is missing for is left out. May throw std::bad_alloc, and what
/// the sink throws. One thread at a time, the same for all of this file.
///
/// What is learnt of types and scopes is kept, by its address in the debug data: whoever lets go of a module's debug
/// data calls ForgetVariables.
void ReadVariables(const Dw& dw, const FrameView& frame, const VariableSink& sink);

/// Forgets everything without giving it back: for what a fault cut short, since nobody knows what state it is in.
void AbandonVariables() noexcept;

/// Gives back everything that is kept. Types that were handed out are gone then.
void ForgetVariables() noexcept;

}  // namespace Oxa::Core::Platform

#endif
