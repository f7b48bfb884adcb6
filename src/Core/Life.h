// The steps of the library's life that Library.cpp and the public functions take.
#ifndef OXACORE_CORE_LIFE_H
#define OXACORE_CORE_LIFE_H

namespace Oxa::Core {

/// First thing while the library loads.
void BeginLife();

/// False in a child that was forked off since.
bool LoadedByThisProcess() noexcept;

/// Fills the hooks with functions that find their owners at each call.
void ConnectHooks();

/// Runs once when the library is unloaded or the process exits, before any static object of the library dies.
void UnloadRoutine();

}  // namespace Oxa::Core

#endif
