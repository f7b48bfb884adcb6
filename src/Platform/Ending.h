// The end of a process that may be broken in any part: within bounded time, whatever hangs.
//
// Nothing here allocates, locks or raises; everything works in a signal handler.
#ifndef OXACORE_PLATFORM_ENDING_H
#define OXACORE_PLATFORM_ENDING_H

namespace Oxa::Core::Platform {

/// From now on the process ends by `status` (or by its signal, see EndBySignalInstead) after so many milliseconds,
/// whatever its threads do. Only the first call counts. The watch needs no thread library, no heap, no signal. Where
/// the system has no thread left to give, the process is killed at that time instead.
void StartDeathWatch(int milliseconds, int status) noexcept;

/// From now on the watch ends the process as EndBySignal does; 0 takes that back.
void EndBySignalInstead(int signal) noexcept;

/// For a child that was forked off: threads of the parent aren't there, and its end is not the child's. The
/// next StartDeathWatch is the child's first.
void ForgetDeathWatchOfParent() noexcept;

/// The system's id of the thread that is the watch; 0 before its start. Who stops all threads of the process has to
/// leave that one running, or nothing ends him if he hangs.
int DeathWatchThread() noexcept;

/// Ends at once: no exit routine, no static destructor.
[[noreturn]] void EndNow(int status) noexcept;

/// Lets the default action of `signal` end the process; EndNow(128 + signal) where that doesn't.
[[noreturn]] void EndBySignal(int signal) noexcept;

}  // namespace Oxa::Core::Platform

#endif
