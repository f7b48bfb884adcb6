// The life of the library inside a host.
//
// Loading the library makes everything usable. InitializeOxaCore pays for the first error ahead of need; call
// it once, from one thread. ShutdownOxaCore takes down what runs on its own; call it before the process exits
// and not from an atexit handler.
//
// Thread safety: one thread calls these, by contract. Locks: none that a caller can meet.
// Failures: nothing is raised and nothing thrown. A singleton whose Destroy throws leaves those made after it alive.
//
//   int main() {
//     InitializeOxaCore();
//     Work();
//     LogManager::Instance()->SetBufferingMode(false);  // what still waits to be logged is written
//     ShutdownOxaCore();
//   }
#ifndef INFRASTRUCTURE_OXACORE_OXACORE_H
#define INFRASTRUCTURE_OXACORE_OXACORE_H

#include <Infrastructure/OxaCore/Export.h>

extern "C" {

/// Calls Oxa::Core::Initialize.
OXACORE_API void InitializeOxaCore();

/// Calls Oxa::Core::Shutdown.
OXACORE_API void ShutdownOxaCore();

/// Whether the library is a debug build.
OXACORE_API bool IsOxaCoreDebug();
}

namespace Oxa::Core {

/// The first call throws and catches one error, so that no later one pays for it, and says so on standard
/// output. Every call raises the use count of the fault adapter by one. One thread, by contract.
OXACORE_API void Initialize();

/// Destroys all singletons and the log manager. Errors can still be raised and heard afterwards. A second call
/// does nothing. One thread, by contract.
OXACORE_API void Shutdown();

}  // namespace Oxa::Core

#endif
