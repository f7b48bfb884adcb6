#include <Infrastructure/OxaCore/Semaphore.h>

#include <atomic>
#include <thread>

#include "Platform/Kill.h"
#include "Threads/CountedThreads.h"

namespace Oxa::Core {

namespace {

// Counts the calling thread, killed or not, for as long as it is there.
class Presence {
 public:
  explicit Presence(std::atomic<std::uint64_t>& present) : m_present(present), m_cleanUp(&Leave, &present) {
    CountOneMore(present);
    m_hold.Release();
  }
  Presence(const Presence&) = delete;
  Presence& operator=(const Presence&) = delete;
  ~Presence() {
    m_hold.Take();
    Leave(&m_present);
  }

 private:
  static void Leave(void* present) { static_cast<std::atomic<std::uint64_t>*>(present)->fetch_sub(1); }

  Platform::HoldKill m_hold;  // first and last: the count and its clean-up come and go as one
  std::atomic<std::uint64_t>& m_present;
  const Platform::KillCleanUp m_cleanUp;
};

// The gate's mutex until the thread is in line. A kill waits that long, or it would close the gate for good.
struct Entry {
  explicit Entry(Mutex& mutex) : m_lock(mutex) {}

  static void Leave(void* entry) {
    static_cast<Entry*>(entry)->m_lock.Release();
    static_cast<Entry*>(entry)->m_hold.Release();
  }

  Platform::HoldKill m_hold;
  Lock m_lock;
};

}  // namespace

MultiWait::MultiWait() : Semaphore(0), m_uWaiters(0), m_uInside(0) {}

// Whoever is inside gets one, whether it was counted at the release or is counted only now, and also if what was
// posted for it went to somebody who took it as from a plain semaphore.
MultiWait::~MultiWait() {
  releaseWaiters();
  while (CountIn(OfThisProcess(m_uInside.load())) != 0) {
    Post(1);
    std::this_thread::yield();
  }
}

// To be counted and to get in line is one step: between the two, what a release posts for one thread could go to
// another, which it has let through before. Who leaves because the time is over isn't taken back out of the count: the
// gate's deliberate behaviour.
bool MultiWait::wait(Elapse* timeout) {
  const Presence presence(m_uInside);
  Entry entry(m_mutex);
  addWaiter();
  return WaitInTurn(timeout, &Entry::Leave, &entry);
}

void MultiWait::addWaiter() {
  const Lock lock(m_mutex);
  m_uWaiters = OfThisProcess(m_uWaiters) + 1;
}

void MultiWait::releaseWaiters() {
  const Platform::HoldKill hold;  // first: outlasts the lock
  const Lock lock(m_mutex);
  const unsigned int waiters = CountIn(OfThisProcess(m_uWaiters));
  if (waiters == 0) return;
  Post(waiters);
  m_uWaiters = 0;
}

}  // namespace Oxa::Core
