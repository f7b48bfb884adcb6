#include <Infrastructure/OxaCore/Lock.h>

#include <new>

#include "Core/LibraryState.h"
#include "Platform/Kill.h"
#include "Platform/Threads.h"
#include "Threads/WholeMilliseconds.h"

namespace Oxa::Core {

namespace {

constexpr char sLOG_NAME[] = "Oxa.Core.Mutex";
constexpr long long llPATIENCE_S = 5;  // of the destructor, once for the owner and once for timed waiters

constexpr Elapse s_infinite(0x7FFFFFFF, Elapse::Seconds);
constexpr Elapse s_noWait(0, Elapse::Seconds);

// By itself, so that the way without a limit has no frame.
[[gnu::noinline]] void LockWithin(IMutex& mutex, const Elapse& timeout, const CodeSite& site) {
  if (!mutex.TryLock(timeout)) site.Raise(sLOG_NAME, LockTimeout(timeout.ToString()), false);
}

}  // namespace

const Elapse& IMutex::sINFINITE = s_infinite;
const Elapse& IMutex::sNO_WAIT = s_noWait;

IMutex::~IMutex() = default;

Mutex::Mutex() : m_iTimedWaiters(0), m_bDestructionBegan(false) {
  static_assert(sizeof(Platform::ReentrantLock) <= sizeof m_room, "the room in the header is too small");
  static_assert(alignof(Platform::ReentrantLock) <= alignof(void*), "the room in the header is not aligned");
  ::new (static_cast<void*>(m_room)) Platform::ReentrantLock;
}

Mutex::~Mutex() {
  bool dying;
  if (!IsExitingAfterFatalError() && (Native().TryLock() || Spin(Elapse(llPATIENCE_S), dying)))
    BeginDestruction();
  Native().~ReentrantLock();
}

inline Platform::ReentrantLock& Mutex::Native() {
  return *std::launder(reinterpret_cast<Platform::ReentrantLock*>(m_room));
}

inline bool Mutex::DestructionBegan() const { return m_bDestructionBegan.load(std::memory_order_relaxed); }

void Mutex::Lock(const Elapse& timeout) {
  static constexpr CodeSite s_site = OXA_CODE_SITE;
  if (DestructionBegan()) return;
  if (timeout.GetRawTimerTicks() == s_infinite.GetRawTimerTicks()) return Native().Lock();
  LockWithin(*this, timeout, s_site);
}

// The first attempt comes before the clock is read and before this thread is counted: nearly all locks are free.
bool Mutex::TryLock(const Elapse& timeout) {
  bool dying = DestructionBegan();
  bool locked = false;
  if (!dying) {
    locked = Native().TryLock();
    if (!locked && timeout.GetRawTimerTicks() > 0) {
      locked = Spin(timeout, dying);
    } else {
      dying = DestructionBegan();
    }
  }
  if (dying) OXA_RAISE_ERROR(sLOG_NAME, MutexDestroyedBeforeLockAcquired());
  return locked;
}

// Deliberately without a pause or a yield: who gives a limit wants the lock the moment it is free. Nothing here
// may be touched once this thread is no longer counted, since the destructor waits for counted ones only.
[[gnu::noinline]] bool Mutex::Spin(const Elapse& timeout, bool& dying) {
  const auto leave = [](void* waiters) { static_cast<std::atomic<int>*>(waiters)->fetch_sub(1); };
  const Platform::Deadline deadline = ExactDeadline(timeout);
  Platform::HoldKill hold;
  m_iTimedWaiters.fetch_add(1);
  const Platform::KillCleanUp cleanUp(leave, &m_iTimedWaiters);
  hold.Release();
  bool locked = Native().TryLock();
  while (!locked && !DestructionBegan() && !deadline.HasPassed()) locked = Native().TryLock();
  hold.Take();
  dying = DestructionBegan();
  leave(&m_iTimedWaiters);
  return locked;
}

// Asks, since a guard may stand for a lock that it never got: Lock comes back without it where a raise returns and
// from a dying mutex.
void Mutex::Unlock() { Native().UnlockIfOwner(); }

// With the lock held.
void Mutex::BeginDestruction() {
  m_bDestructionBegan.store(true);
  const Platform::Deadline deadline = ExactDeadline(Elapse(llPATIENCE_S));
  while (m_iTimedWaiters.load() != 0 && !deadline.HasPassed()) {
  }
  Native().Unlock();
}

}  // namespace Oxa::Core
