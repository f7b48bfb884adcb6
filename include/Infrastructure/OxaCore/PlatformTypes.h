// Types of the platform that public signatures name: the system's own where it has them, opaque elsewhere.
//
// Hosts hand them through and never look inside. Types and constants only: no threads, no locks, no failures.
//
//   encryptor->SavePassword("s3cret", "Software\\Acme\\Probe", "Password", HKEY_CURRENT_USER);
#ifndef INFRASTRUCTURE_OXACORE_PLATFORMTYPES_H
#define INFRASTRUCTURE_OXACORE_PLATFORMTYPES_H

#ifdef _WIN32

#include <windows.h>

#else

// NOLINTBEGIN(bugprone-reserved-identifier): the names are the platform's
/// What went wrong: which fault, at which instruction, on which address.
struct _EXCEPTION_RECORD;

/// The registers of a thread at one moment.
struct _CONTEXT;
/// The platform's other name for it.
using CONTEXT = _CONTEXT;

/// A fault and the registers at its moment. Owns neither; both live as long as the fault is being dealt with.
struct _EXCEPTION_POINTERS {
  _EXCEPTION_RECORD* ExceptionRecord;  ///< the fault
  CONTEXT* ContextRecord;              ///< the registers
};

/// A library that is loaded into the process.
using HINSTANCE = struct HINSTANCE__*;

/// A place in the registry. Here that is one of the two roots below, which are compared and never looked into.
using HKEY = struct HKEY__*;
// NOLINTEND(bugprone-reserved-identifier)

/// What is held of a provider of cryptography; 0 for none.
using HCRYPTPROV = unsigned long;

/// The roots of the registry. Both lie with the user here: nothing is shared between the users of a machine.
inline HKEY__* const HKEY_CURRENT_USER = reinterpret_cast<HKEY>(0x80000001UL);
inline HKEY__* const HKEY_LOCAL_MACHINE = reinterpret_cast<HKEY>(0x80000002UL);

#endif

#endif
