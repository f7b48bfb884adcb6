// What the file of a program or library says of itself: its product, its version, its maker.
//
// Nothing here takes a lock of ours or logs, and nothing is a place where the cancellation of a thread happens. Any
// thread may call.
#ifndef OXACORE_PLATFORM_VERSIONRECORDS_H
#define OXACORE_PLATFORM_VERSIONRECORDS_H

#include <map>
#include <string>
#include <vector>

namespace Oxa::Core::Platform {

/// Texts by key. Those that the file has in another encoding come out in UTF-8.
using VersionRecord = std::map<std::string, std::string>;

/// Adds what the file of that name tells under `keys`; what is in `record` already stays. 0, or the system's error
/// code: ENODATA for a file that is read and has no record, or a damaged one. Nothing is added then. "\" and "/" both
/// separate. Takes little memory and time, whatever the file is like.
int ReadVersionRecord(const char* name, const std::vector<std::string>& keys, VersionRecord& record) noexcept;

}  // namespace Oxa::Core::Platform

#endif
