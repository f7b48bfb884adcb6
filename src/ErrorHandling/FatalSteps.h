// The last steps of a process: what comes between a fault or an error that nobody catches and the end.
#ifndef OXACORE_ERRORHANDLING_FATALSTEPS_H
#define OXACORE_ERRORHANDLING_FATALSTEPS_H

#include "ErrorHandling/Hooks.h"

namespace Oxa::Core {

void ConnectFatalSteps(Hooks& hooks) noexcept;

}  // namespace Oxa::Core

#endif
