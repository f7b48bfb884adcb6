// What a dump has by the policy of the alert manager, and how one is written where nothing may be allocated.
#ifndef OXACORE_ERRORHANDLING_MICROSOFTDEBUGHELPDUMP_H
#define OXACORE_ERRORHANDLING_MICROSOFTDEBUGHELPDUMP_H

#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/PlatformTypes.h>

namespace Oxa::Core {

/// What goes into a dump, in the seam's numbers (EDumpContents). A value that is no policy counts as eDUMP_NORMAL.
unsigned int DumpContentsOf(EDumpPolicy policy) noexcept;

/// The filter of all dumps, see Platform::DumpFilter; `policy` points to the EDumpPolicy. All is written but what it
/// isn't asked for, and, with eDUMP_REFERENCED_MEMORY, modules that nothing in the dump points at.
bool FilterDump(unsigned int callbackType, unsigned int& flags, void* policy) noexcept;

/// Platform::WriteDump with what `policy` says, in bounded time. Takes no lock, allocates nothing, raises nothing:
/// also for the road on which nothing else works any more. `pointers` may be null. Gives 0 or the system's code.
int WriteDumpByPolicy(const char* path, const _EXCEPTION_POINTERS* pointers, EDumpPolicy policy) noexcept;

}  // namespace Oxa::Core

#endif
