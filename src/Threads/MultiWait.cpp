#include <Infrastructure/OxaCore/Semaphore.h>

#include <atomic>
#include <thread>

#include "Platform/Kill.h"

namespace Oxa::Core {

namespace {

// Counts the calling thread, killed or not, for as long as it is there.
class Presence {
 public:
  explicit Presence(std::atomic<unsigned int>& present) : m_present(present), m_cleanUp(&Leave, &present) {
    m_present.fetch_add(1);
    m_hold.Release();
  }
  Presence(const Presence&) = delete;
  Presence& operator=(const Presence&) = delete;
  ~Presence() {
    m_hold.Take();
    Leave(&m_present);
  }

 private:
  static void Leave(void* present) { static_cast<std::atomic<unsigned int>*>(present)->fetch_sub(1); }

  Platform::HoldKill m_hold;  // first and last: the count and its clean-up come and go as one
  std::atomic<unsigned int>& m_present;
  const Platform::KillCleanUp m_cleanUp;
};

}  // namespace

MultiWait::MultiWait() : Semaphore(0), m_uWaiters(0), m_uInside(0) {}

// Whoever is inside gets one, whether it was counted at the release or is counted only now, and also if what was
// posted for it went to somebody who took it as from a plain semaphore.
MultiWait::~MultiWait() {
  releaseWaiters();
  while (m_uInside.load() != 0) {
    Post(1);
    std::this_thread::yield();
  }
}

// To be counted and to get in line is one step: between the two, what a release posts for one thread could go to
// another, which it has let through before. Who leaves because the time is over isn't taken back out of the count: the
// gate's deliberate behaviour.
bool MultiWait::wait(Elapse* timeout) {
  const Presence presence(m_uInside);
  Lock lock(m_mutex);
  addWaiter();
  return WaitInTurn(
      timeout, [](void* held) { static_cast<Lock*>(held)->Release(); }, &lock);
}

void MultiWait::addWaiter() {
  const Lock lock(m_mutex);
  ++m_uWaiters;
}

void MultiWait::releaseWaiters() {
  const Lock lock(m_mutex);
  if (m_uWaiters == 0) return;
  Post(m_uWaiters);
  m_uWaiters = 0;
}

}  // namespace Oxa::Core
