// A lock between processes: whoever opens the same name on this machine, whatever user or session it is, gets
// the same lock.
//
// Nothing here raises, logs, or touches anything else of the library. What can go wrong comes back as a result
// with the system's own code. Any thread may call anything.
//
// A lock outlives everybody who opened it. What stands behind it (one page of memory) stays until the machine
// is started anew, or until somebody removes it; from then on those who open the name anew have another
// lock than those who opened it before.
#ifndef OXACORE_PLATFORM_NAMEDLOCK_H
#define OXACORE_PLATFORM_NAMEDLOCK_H

#include <atomic>
#include <cstdint>

#include "Platform/Threads.h"

namespace Oxa::Core::Platform {

struct NamedLockRecord;

/// One named lock, as this process sees it. Its owner is a thread, which may take it again and has to give it
/// up as many times. Where that thread or its process ends without doing so, the next one gets the lock and is
/// told. In a forked child nobody owns what the parent's threads hold.
class NamedLock {
 public:
  /// The lock of that name, made if there was none. One name gives one object in a process; it is never
  /// destroyed, since a lock whose memory were gone could not be told to be abandoned. Any text is a name, "/"
  /// included, up to some thousand bytes; upper and lower case differ. Null, and the system's code, if it can't
  /// be had: no memory, a name too long, something else under the name that the lock goes by, no right to it.
  static NamedLock* Open(const char* name, int& code) noexcept;

  NamedLock(const NamedLock&) = delete;
  NamedLock& operator=(const NamedLock&) = delete;

  /// Takes the lock by `deadline`; at least one attempt is made. eSIGNALLED or eABANDONED: the caller owns the
  /// lock at one level more, and after eABANDONED the next one to get it knows nothing of it. eTIMEOUT or
  /// eFAILED: it doesn't.
  WaitResult LockBy(Deadline deadline) noexcept;

  /// One attempt; never waits. The same results.
  WaitResult TryLock() noexcept;

  /// Gives up one level. For a thread that isn't the owner it does nothing and gives the system's code for that;
  /// 0 otherwise.
  int Unlock() noexcept;

  /// A number beside the lock, the same for all processes: 0 when the lock is made, and changed by nobody but its
  /// users. It outlives them as the lock does.
  std::atomic<std::uint64_t>& Generation() noexcept;

 private:
  NamedLock(NamedLockRecord* record, const char* name) noexcept : m_pRecord(record), m_pName(name) {}
  static NamedLock* Make(const char* name, int& code) noexcept;

  NamedLockRecord* m_pRecord;     // shared with the other processes
  const char* m_pName;            // this process's own copy: nobody else can change it
  NamedLock* m_pOlder = nullptr;  // in the list of all that this process has opened
  friend class OpenLocks;
};

/// Removes what stands behind the lock of that name, if there is anything: for names that nobody comes back to. Those
/// who have it open keep it, in this process for ever; those who open the name anew have another one.
void RemoveNamedLock(const char* name) noexcept;

}  // namespace Oxa::Core::Platform

#endif
