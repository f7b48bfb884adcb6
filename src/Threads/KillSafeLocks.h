// Guards for locks that a thread may be killed under and that must not stay held by the dead.
#ifndef OXACORE_THREADS_KILLSAFELOCKS_H
#define OXACORE_THREADS_KILLSAFELOCKS_H

#include <Infrastructure/OxaCore/Condition.h>
#include <Infrastructure/OxaCore/Lock.h>

#include "Platform/Kill.h"

namespace Oxa::Core {

/// Holds a mutex for a few steps that end soon; a kill waits until they are done.
class UnkillableLock {
 public:
  explicit UnkillableLock(Mutex& mutex) : m_lock(mutex) {}

 private:
  const Platform::HoldKill m_hold;  // first: outlasts the lock
  const Lock m_lock;
};

/// Holds a monitor, perhaps around waits and foreign code; whoever is killed under it gives it back.
class ForsakenMonitorLock {
 public:
  explicit ForsakenMonitorLock(Condition& monitor) : m_cleanUp(&GiveBack, &monitor), m_lock(monitor) {}

 private:
  // Once for each guard: a level that was never got is none to give back, and the rest go with the outer guards.
  static void GiveBack(void* monitor) { static_cast<Condition*>(monitor)->Unlock(); }

  const Platform::KillCleanUp m_cleanUp;  // first: outlasts the lock
  const Lock m_lock;
};

}  // namespace Oxa::Core

#endif
