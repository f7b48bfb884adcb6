// Locks: the one locking interface of the library, its in-process implementation, and the scoped guard.
//
// Contract of every IMutex: the owning thread may lock it again and must unlock it as many times. A time
// limit that runs out is an error for Lock and a result for TryLock. IMutex::sINFINITE means no limit. Thread
// safety: any thread may use any operation, but only the owner may unlock. A guard belongs to one thread.
// Failures: LockTimeout and MutexDestroyedBeforeLockAcquired, as told below; other implementations of IMutex
// add their own.
//
//   Mutex m_mutex;  // guards m_readings
//   ...
//   {
//     Lock lock(m_mutex);
//     m_readings.push_back(reading);
//   }
#ifndef INFRASTRUCTURE_OXACORE_LOCK_H
#define INFRASTRUCTURE_OXACORE_LOCK_H

#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Time.h>
#include <Infrastructure/OxaCore/Warning.h>

#include <atomic>
#include <string>

namespace Oxa::Core {

namespace Platform {
class ReentrantLock;
}

/// "Attempt to lock mutex timed out after waiting for %1%".
class OXACORE_API LockTimeout : public ErrorClass<LockTimeout, LogicError> {
 public:
  /// `timeout` is the text of the limit, as Elapse::ToString gives it.
  explicit LockTimeout(const std::string& timeout);
  ~LockTimeout() override;
};

/// "A mutex object was destroyed before its lock could be acquired".
class OXACORE_API MutexDestroyedBeforeLockAcquired
    : public ErrorClass<MutexDestroyedBeforeLockAcquired, LogicError> {
 public:
  MutexDestroyedBeforeLockAcquired();
  ~MutexDestroyedBeforeLockAcquired() override;
};

/// "Acquired process lock named %1% after lock owner terminated before releasing lock".
class OXACORE_API WaitAbandoned : public Warning {
 public:
  explicit WaitAbandoned(const std::string& lockName);
  ~WaitAbandoned() override;
};

/// "Failed to acquire lock for process mutex named %1% due to following error: \n\n%2%".
class OXACORE_API WaitFailed : public ErrorClass<WaitFailed, OSError> {
 public:
  /// `reason` is the system's text for what went wrong.
  WaitFailed(const std::string& lockName, const std::string& reason);
  ~WaitFailed() override;
};

/// What every lock can do. An interface: a Mutex, a Condition, or a lock between processes stands behind it.
class OXACORE_API IMutex {
 public:
  /// Elapse(0x7FFFFFFF, Elapse::Seconds): exactly this value means to wait without limit. Readable at any
  /// time, also before the library's other static objects are built and after they are gone.
  static const Elapse& sINFINITE;
  /// Elapse(0, Elapse::Seconds): one attempt.
  static const Elapse& sNO_WAIT;

  IMutex() = default;
  IMutex(const IMutex&) = default;
  IMutex& operator=(const IMutex&) = default;
  virtual ~IMutex();

  /// Takes the lock, or raises when `timeout` runs out first.
  virtual void Lock(const Elapse& timeout = sINFINITE) = 0;

  /// Takes the lock and gives true, or gives false when `timeout` runs out first.
  virtual bool TryLock(const Elapse& timeout = sNO_WAIT) = 0;

  /// Gives up one level of the lock.
  virtual void Unlock() = 0;
};

/// The reentrant lock of one process. Not copyable.
///
/// A wait without limit sleeps. A wait with a limit spins at full speed until it gets the lock or the limit
/// is over: for short waits only.
///
/// Destruction waits up to 5 seconds for an owner to let go. Threads inside a TryLock with a limit then leave
/// with MutexDestroyedBeforeLockAcquired; threads asleep in a Lock without limit are the caller's problem.
/// Whatever still holds the lock after the 5 seconds holds it no longer.
class OXACORE_API Mutex : public IMutex {
 public:
  Mutex();
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;
  ~Mutex() override;

  /// Raises LockTimeout ("Oxa.Core.Mutex") when a limit runs out. Once the destruction of this mutex has
  /// begun it returns at once, without the lock and without an error.
  void Lock(const Elapse& timeout = sINFINITE) override;

  /// A limit of zero or less makes exactly one attempt. sINFINITE is no special value here. Raises
  /// MutexDestroyedBeforeLockAcquired ("Oxa.Core.Mutex") if the destruction of this mutex has begun, even to
  /// a thread that did get the lock in that moment.
  bool TryLock(const Elapse& timeout = sNO_WAIT) override;

  /// Gives up one level. Does nothing for a thread that isn't the owner: a guard may stand for a lock that its
  /// thread never got, since Lock comes back without it from a dying mutex and where a raise returns.
  void Unlock() override;

 private:
  bool Spin(const Elapse& timeout, bool& dying);
  bool DestructionBegan() const;
  void BeginDestruction();
  Platform::ReentrantLock& Native();

  /// Room for the system's lock, so that a mutex allocates nothing; large enough for every backend.
  alignas(void*) unsigned char m_room[40];
  std::atomic<int>
      m_iTimedWaiters;  ///< threads inside the timed loop of TryLock; the destructor waits for them
  std::atomic<bool> m_bDestructionBegan;
};

/// Holds a lock for the length of a scope. `boost::shared_ptr<Lock>` hands a held lock around.
class OXACORE_API Lock {
 public:
  /// Locks `mutex`, which must outlive this guard. What the mutex raises passes, and the guard then unlocks
  /// nothing. A null reference fails the assertion "m_Mutex != 0", and the guard holds nothing.
  explicit Lock(const IMutex& mutex, const Elapse& timeout = IMutex::sINFINITE);
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

  /// Releases, if that hasn't been done. What the mutex raises on the way ends here.
  ~Lock();

  /// Unlocks ahead of the end of the scope. Further calls do nothing.
  void Release();

 private:
  IMutex* m_Mutex;  ///< null once released
};

}  // namespace Oxa::Core

#endif
