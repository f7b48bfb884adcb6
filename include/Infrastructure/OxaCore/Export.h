// Marks what the library exports. Every public header includes this one; hosts need nothing of it.
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
