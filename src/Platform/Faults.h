// What the system does to a thread behind the program's back.
#ifndef OXACORE_PLATFORM_FAULTS_H
#define OXACORE_PLATFORM_FAULTS_H

namespace Oxa::Core::Platform {

/// For a `catch (...)` clause: goes on with the cancellation of this thread if that is what is being caught.
/// Returns for every other exception, which stays the one that is being handled.
void LetCancellationPass();

}  // namespace Oxa::Core::Platform

#endif
