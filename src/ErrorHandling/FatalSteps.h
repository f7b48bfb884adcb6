// The last steps of a process: what comes between a fault or an error that nobody catches and the end.
#ifndef OXACORE_ERRORHANDLING_FATALSTEPS_H
#define OXACORE_ERRORHANDLING_FATALSTEPS_H

#include "ErrorHandling/Hooks.h"

namespace Oxa::Core {

/// Fills in what the terminate handler calls, and has the children that are forked off from now on begin without their
/// parent's death. Once, while the library is built; before that, and without it, the hook's harmless default stands.
void ConnectFatalSteps(Hooks& hooks) noexcept;

}  // namespace Oxa::Core

#endif
