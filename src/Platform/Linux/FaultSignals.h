// The signals of faults: who has them, and who had them before.
#ifndef OXACORE_PLATFORM_LINUX_FAULTSIGNALS_H
#define OXACORE_PLATFORM_LINUX_FAULTSIGNALS_H

#include <signal.h>

namespace Oxa::Core::Platform {

using SignalHandler = void (*)(int signal, siginfo_t* info, void* context);

/// Takes the four signals for `handler` and remembers who had them. Does nothing if it has them already.
void TakeFaultSignals(SignalHandler handler) noexcept;

/// Gives them back, but for those that somebody else has taken meanwhile.
void GiveFaultSignalsBack() noexcept;

/// Lets the signals through to the calling thread.
void UnblockFaultSignals() noexcept;

/// Calls the function of the host that had the signal before, if there is one; false if there is none, or if it was to
/// be called once and has been. In the signal's handler.
bool CallEarlierHandler(int signal, siginfo_t* info, void* context) noexcept;

/// Does what would have been done with the signal if nobody had taken it. In its handler.
void TakeEarlierAction(int signal, siginfo_t* info, void* context) noexcept;

/// Ends the process by the default action of the signal, which comes with `info`.
[[noreturn]] void EndByDefaultAction(int signal, const siginfo_t& info) noexcept;

/// The same by letting the handler return to the instruction that faulted.
void RestoreDefaultAction(int signal) noexcept;

}  // namespace Oxa::Core::Platform

#endif
