// The signal that carries a kill to its victim.
#ifndef OXACORE_PLATFORM_LINUX_KILLSIGNAL_H
#define OXACORE_PLATFORM_LINUX_KILLSIGNAL_H

namespace Oxa::Core::Platform {

/// Its number; chosen at the first call among those that nobody handles. 0 if there is none.
int KillSignal() noexcept;

/// The same, but looks whether it is still ours, and takes another one if it isn't.
int CheckedKillSignal() noexcept;

}  // namespace Oxa::Core::Platform

#endif
