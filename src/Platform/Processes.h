// The processes of the machine, and the files that each runs.
//
// No function raises or throws, takes a lock of ours or logs, and none is a place where the cancellation of a thread
// happens. Those that give an int give 0 or the system's error code, and leave their arguments untouched then. Any
// thread may call. All of it is a look at what changes meanwhile.
#ifndef OXACORE_PLATFORM_PROCESSES_H
#define OXACORE_PLATFORM_PROCESSES_H

#include <cstddef>
#include <string>
#include <vector>

namespace Oxa::Core::Platform {

/// 0 if the system tells of its processes at all.
int FindProcessList() noexcept;

/// Has the system let this thread look into processes of other users, if the process was granted that and didn't use
/// it so far. Whether that works is not told.
void AllowLookingIntoProcesses() noexcept;

/// The ids of those that run, in ascending order: the first `most` of them.
int ListProcesses(std::size_t most, std::vector<unsigned int>& ids) noexcept;

/// What a process runs: the whole path of its program's file, and those of all other files that it executes code of,
/// each once. Without the latter if the system shows the one and not the other. Fails for processes that this one
/// may not look into, or that have no file.
int LookIntoProcess(unsigned int id, std::string& program, std::vector<std::string>& modules) noexcept;

}  // namespace Oxa::Core::Platform

#endif
