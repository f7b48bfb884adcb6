// What the system says about this process, its threads and the machine under it.
//
// No function raises or throws, takes a lock of ours or logs. Those that give an int give 0, or the system's
// error code, and leave their argument untouched in that case. Any thread may call.
#ifndef OXACORE_PLATFORM_MACHINE_H
#define OXACORE_PLATFORM_MACHINE_H

#include <string>

namespace Oxa::Core::Platform {

/// The id of the calling process: in a forked child the child's own. Costs a nanosecond.
unsigned long ProcessId() noexcept;

/// Tells the system what the calling thread is called, for debuggers and lists of threads. As much of the name
/// is told as the system has room for; a failure is ignored. In the first thread of a process this may be
/// what lists of processes show.
void TellThreadName(const char* name) noexcept;

/// The whole path of the running program's file, however long it is, with "/" between the folders.
int ExecutablePath(std::string& path) noexcept;

/// The machine's name in the network, whole.
int HostName(std::string& name) noexcept;

/// One line that identifies the operating system, such as
/// "Linux 6.1.0-28-amd64 (Debian GNU/Linux 12 (bookworm))". The part in parentheses, with the blank before
/// it, is missing where the system doesn't tell its distribution.
int OperatingSystemName(std::string& name) noexcept;

/// Processors that the system can use now; at least 1.
unsigned long NumberOfProcessors() noexcept;

/// Whether printf writes numbers on the calling thread as it does in the "C" locale, and rounds to the nearest.
bool NumbersArePlain() noexcept;

/// The system's text for one of its error codes, without a line end. False for a code that the system doesn't
/// know, and `text` is then untouched.
bool SystemErrorText(int code, std::string& text) noexcept;

}  // namespace Oxa::Core::Platform

#endif
