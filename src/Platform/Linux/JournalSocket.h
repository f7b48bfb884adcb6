// Where the journal listens.
#ifndef OXACORE_PLATFORM_LINUX_JOURNALSOCKET_H
#define OXACORE_PLATFORM_LINUX_JOURNALSOCKET_H

namespace Oxa::Core::Platform {

/// For tests: another socket from now on, of at most 107 bytes; null for the system's own again. The text must stay.
void SetJournalSocket(const char* path) noexcept;

}  // namespace Oxa::Core::Platform

#endif
