// Where the library is in its life. Plain flags, readable from anywhere at any time.
#ifndef OXACORE_CORE_LIBRARYSTATE_H
#define OXACORE_CORE_LIBRARYSTATE_H

namespace Oxa::Core {

/// True from the first step of the unload routine on: alerts go to standard error and no further.
bool IsLibraryUnloading() noexcept;
void SetLibraryUnloading() noexcept;

/// True once a fatal error has led into exit().
bool IsExitingAfterFatalError() noexcept;

/// True if the library goes because the process ends by a fatal error. Other threads run to the very end, and may die
/// as well: whoever is called then stays in the system's hands.
bool GoesByFatalError() noexcept;

/// Marks the process as exiting and calls exit(status). Never returns.
[[noreturn]] void ExitAfterFatalError(int status);

}  // namespace Oxa::Core

#endif
