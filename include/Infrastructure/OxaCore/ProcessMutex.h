// A lock with a name, shared by all processes of the machine, in all sessions.
//
// Contract: that of every IMutex, with threads of any process as owners. A lock survives the end of its owner: the
// next one who locks it gets it, and a warning. Thread safety: any thread may use any operation, but only the owner
// may unlock. Several objects of one name, in one process or in many, stand for one lock.
// Failures: LockTimeout and WaitFailed for Lock, under the log name "Oxa.Core.ProcessMutex"; TryLock and Unlock raise
// nothing.
//
//   ProcessMutex mutex("Acme/Calibration");
//   const Lock lock(mutex, Elapse(10, Elapse::Seconds));
//   WriteCalibration();
#ifndef INFRASTRUCTURE_OXACORE_PROCESSMUTEX_H
#define INFRASTRUCTURE_OXACORE_PROCESSMUTEX_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Lock.h>

#include <string>

namespace Oxa::Core {

namespace Platform {
class NamedLock;
}

/// The reentrant lock between processes.
class OXACORE_API ProcessMutex : public IMutex {
 public:
  /// Opens the lock of that name, or makes it. Every "\" of `name` becomes "/"; upper and lower case differ. A
  /// lock that can't be had fails the assertion "m_hMutex != 0", and every operation on it fails again.
  explicit ProcessMutex(const std::string& name);
  ProcessMutex(const ProcessMutex&) = delete;
  ProcessMutex& operator=(const ProcessMutex&) = delete;

  /// Doesn't unlock: what this thread still holds stays held, as long as it runs.
  ~ProcessMutex() override;

  /// The name, with every "\" replaced. Valid as long as this object.
  const std::string& GetName() const { return m_name; }

  /// Waits asleep; a limit counts in whole milliseconds. If the former owner ended without unlocking, raises the
  /// warning WaitAbandoned and returns with the lock held. Raises LockTimeout when a limit runs out, and WaitFailed
  /// with the system's text when the system can't give the lock.
  void Lock(const Elapse& timeout = sINFINITE) override;

  /// Polls at full speed until it gets the lock or the limit is over, once if that is zero or less. sINFINITE is no
  /// special value here. Looks at nothing but plain success: a lock whose former owner ended without unlocking is
  /// OWNED after the attempt that counts as a failure. With time left the next attempt succeeds, and two Unlocks are
  /// due; without, the answer is false, and one is due.
  bool TryLock(const Elapse& timeout = sNO_WAIT) override;

  /// Gives up one level. Does nothing for a thread that isn't the owner.
  void Unlock() override;

 private:
  std::string m_name;
  Platform::NamedLock* m_hMutex;  ///< never destroyed, and not this object's own; null if it can't be had
};

}  // namespace Oxa::Core

#endif
