// Mends the entries file behind a process that ended within a write.
#ifndef OXACORE_LOG_UNFINISHEDENTRY_H
#define OXACORE_LOG_UNFINISHEDENTRY_H

#include <cstdint>
#include <string>

namespace Oxa::Core {

/// How much of an entries file there is before an entry at its end that isn't whole. All of it if there is none
/// such: what doesn't look like the beginning of an entry is somebody else's, and stays.
std::uint64_t LengthOfWholeEntries(const std::string& entries);

/// Cuts an unfinished entry off the end of the file. Under the lock between processes.
void CutUnfinishedEntry(const std::string& file);

}  // namespace Oxa::Core

#endif
