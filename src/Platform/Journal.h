// The system's journal: where services write to, and administrators read.
#ifndef OXACORE_PLATFORM_JOURNAL_H
#define OXACORE_PLATFORM_JOURNAL_H

#include <cstddef>

namespace Oxa::Core::Platform {

/// Hands one record to the journal, in the journal's own form. 0, or the system's error code: ENOENT and ECONNREFUSED
/// where there is no journal. One that is too busy is waited for, up to a tenth of a second, if that `mayWait`; EAGAIN
/// if it stays so. Opens and closes all that it needs: nothing is kept, and a journal that was started anew is found.
/// Takes no lock, and is no place where a thread is killed or cancelled. Any thread may call.
int SendToJournal(const void* record, std::size_t size, bool mayWait) noexcept;

}  // namespace Oxa::Core::Platform

#endif
