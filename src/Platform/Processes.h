// The processes of the machine, the files that each runs, and processes that this one starts.
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

/// The folders in which the system looks for programs that are called by a name alone, in its order. Relative ones,
/// whose meaning changes with the current folder, are left out.
int ProgramFolders(std::vector<std::string>& folders) noexcept;

/// A process that this one starts, and that is gone when this object is: ended by force where it has to be, and waited
/// for, so that nothing is left of it. One object belongs to one thread at a time.
class StartedProcess {
 public:
  StartedProcess() noexcept = default;
  StartedProcess(const StartedProcess&) = delete;
  StartedProcess& operator=(const StartedProcess&) = delete;
  ~StartedProcess() { Kill(); }

  /// Starts `command`: the path of the program's file, and its arguments, which come as they are; no shell reads
  /// them. It has our environment, current folder and error output. Its input is empty, its output goes nowhere, and
  /// nothing else that is open here is open there. No signal is blocked or ignored in it. EINVAL for a command without
  /// a program, EBUSY while the last one isn't known to have ended.
  int Start(const std::vector<std::string>& command) noexcept;

  /// Waits until it ends, `milliseconds` at most. Gives 0 and its exit status, or minus the number of what ended it;
  /// ETIMEDOUT if it still runs; ECHILD if there is none to wait for: none was started, it has been waited for, or
  /// the program waits for all its children by itself and nobody knows the status any more.
  int Wait(long milliseconds, int& status) noexcept;

  /// Ends it by force, and waits until it is gone. Does nothing if there is none.
  void Kill() noexcept;

 private:
  bool Collect(bool wait, int& code, int& status) noexcept;

  int m_iId = 0;  // 0: none to wait for
};

}  // namespace Oxa::Core::Platform

#endif
