// A monitor: a lock, and the place where its holders wait for one another.
//
// Hold it with a Lock, test what you wait for, and wait in a loop: a wake says "look again", never "it is
// so". A notification with nobody waiting is lost; one that meets a timed wait in the moment it expires stays
// pending and wakes the next waiter.
//
// Thread safety: any thread may use any operation; Wait and TimedWait by the holder only. The lock is
// reentrant, but a wait releases one level only: don't nest it around a wait. Two Broadcasts at once are
// excluded by the callers, who hold the monitor: where they don't, one of the two may never return.
// Failures: raised as OSError under "Oxa.Core.Condition". On every way out of a wait the caller holds the
// lock.
//
//   Condition m_changed{true};
//   ...
//   Lock lock(m_changed);
//   while (m_readings.empty()) m_changed.Wait();
#ifndef INFRASTRUCTURE_OXACORE_CONDITION_H
#define INFRASTRUCTURE_OXACORE_CONDITION_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/Time.h>
#include <Infrastructure/OxaCore/Warning.h>

#include <atomic>
#include <cstdint>

namespace Oxa::Core {

namespace Platform {
class Deadline;
class Event;
struct WaitResult;
}  // namespace Platform

/// "A wait on a Condition object was ended by a unser mode APC".
class OXACORE_API ConditionWaitEndedByAPC : public Warning {
 public:
  ConditionWaitEndedByAPC();
  ~ConditionWaitEndedByAPC() override;
};

/// Lock and condition variable in one.
class OXACORE_API Condition : public IMutex {
 public:
  /// `notifyBroadcasts` decides what Notify does. Without the memory for the system's objects the
  /// constructor fails assertions. What needs a missing object raises then: Lock, TryLock and the waits
  /// without the lock, the waits without the signal. Unlock, Signal, Broadcast and Notify never raise; they do
  /// what can be done with the rest, and without its second event a Broadcast doesn't wait for the waiters.
  explicit Condition(bool notifyBroadcasts);
  Condition(const Condition&) = delete;
  Condition& operator=(const Condition&) = delete;

  /// Nobody may wait or hold the lock.
  ~Condition() override;

  /// Raises OSError: "Attempt to acquire lock timed out" when `timeout` (whole milliseconds; sINFINITE: no
  /// limit) runs out; "Attempt to acquire lock abandoned" when the last owner's thread ended without
  /// unlocking, in which case the caller nevertheless owns the lock; else the system's text.
  void Lock(const Elapse& timeout = sINFINITE) override;

  /// As Lock, but running out of time is the result false.
  bool TryLock(const Elapse& timeout = sNO_WAIT) override;

  /// Gives up one level. Does nothing for a thread that isn't the owner.
  void Unlock() override;

  /// Releases the lock, sleeps until woken, and takes the lock again. Releasing and falling asleep are one
  /// step: no signal is lost in between. Waiters leave the sleep in the order in which they began it; who owns the
  /// lock first after that is open.
  ///
  /// Raises OSError with the system's text where the caller doesn't hold the lock, at once and with the lock
  /// taken; "Attempt to acquire lock abandoned", as Lock does, where a thread that ended left the lock behind
  /// meanwhile. Where such a raise returns, so does Wait.
  void Wait();

  /// As Wait, true when woken, false when `timeout` (whole milliseconds, negative is 0; no value means
  /// "without limit") is over. Raises as Wait does; where the raise of a wait that failed returns, it is false.
  bool TimedWait(const Elapse& timeout);

  /// Wakes one waiter, if there is any. The caller needn't hold the lock.
  void Signal();

  /// Wakes all waiters. With two or more it returns when all have left the wait; they then take the lock one
  /// after another. The caller may hold the lock.
  void Broadcast();

  /// Broadcast or Signal, as the constructor was told.
  void Notify();

 private:
  friend class Thread;

  Platform::WaitResult LockSlowly(const Elapse& timeout);
  Platform::WaitResult WaitFor(Platform::Deadline deadline);
  Platform::WaitResult SleepCounted(Platform::Deadline deadline);
  void LeaveWait();
  bool HasOneWaiter() const { return m_waiters.load() == 1; }

  const bool m_notifyBroadcasts;
  Platform::Event* m_hConditionSignal;
  Platform::Event* m_hBroadcastCompleteSignal;
  Platform::ReentrantLock* m_hMutex;
  /// Threads in Wait or TimedWait, above them a bit for a broadcast that is going on, and in the upper half after how
  /// many forks they were counted: one word, since a broadcast must count and begin in one step.
  std::atomic<std::uint64_t> m_waiters;
};

}  // namespace Oxa::Core

#endif
