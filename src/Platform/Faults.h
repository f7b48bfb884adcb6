// What the system does to a thread behind the program's back.
#ifndef OXACORE_PLATFORM_FAULTS_H
#define OXACORE_PLATFORM_FAULTS_H

namespace Oxa::Core::Platform {

/// For a `catch (...)` clause: goes on with the cancellation of this thread if that is what is being caught.
/// Returns for every other exception, which stays the one that is being handled.
void LetCancellationPass();

/// Keeps the cancellation of this thread waiting while it stands: for calls out of functions that nothing may
/// leave.
class HoldCancellation {
 public:
  HoldCancellation() noexcept;
  HoldCancellation(const HoldCancellation&) = delete;
  HoldCancellation& operator=(const HoldCancellation&) = delete;
  ~HoldCancellation();

 private:
  int m_iBefore = 0;
};

}  // namespace Oxa::Core::Platform

#endif
