// Marks what the library exports. Every public header includes this one; hosts need nothing of it.
//
// A macro and no code: no threads, no locks, no failures. Who links the static library defines OXACORE_STATIC (the
// CMake target does it); OXACORE_BUILDING is for the library's own sources.
//
//   class OXACORE_API Probe { ... };
#ifndef INFRASTRUCTURE_OXACORE_EXPORT_H
#define INFRASTRUCTURE_OXACORE_EXPORT_H

/// Stands before what the library exports.
#if defined(OXACORE_STATIC)
#define OXACORE_API
#elif defined(_WIN32)
#if defined(OXACORE_BUILDING)
#define OXACORE_API __declspec(dllexport)
#else
#define OXACORE_API __declspec(dllimport)
#endif
#else
#define OXACORE_API __attribute__((visibility("default")))
#endif

#endif
