#include <Infrastructure/OxaCore/Semaphore.h>

#include <atomic>
#include <cstdint>
#include <thread>

#include "Platform/Kill.h"
#include "Platform/Threads.h"

namespace Oxa::Core {

namespace {

using Inside = std::atomic<std::uint64_t>;

constexpr int iPROCESS_FROM_BIT = 32;

// The number, with the mark of this process: threads that stayed behind in the parent of a forked one will never leave.
std::uint64_t InThisProcess(std::uint64_t inside) {
  const std::uint64_t process = Platform::ForksSoFar();
  return inside >> iPROCESS_FROM_BIT == process ? inside : process << iPROCESS_FROM_BIT;
}

bool IsEmpty(const Inside& inside) { return InThisProcess(inside.load()) << (64 - iPROCESS_FROM_BIT) == 0; }

// Counts the calling thread, killed or not, for as long as it is there.
class Presence {
 public:
  explicit Presence(Inside& inside) : m_inside(inside), m_cleanUp(&Leave, &inside) {
    std::uint64_t before = inside.load();
    while (!inside.compare_exchange_weak(before, InThisProcess(before) + 1)) {
    }
    m_hold.Release();
  }
  Presence(const Presence&) = delete;
  Presence& operator=(const Presence&) = delete;
  ~Presence() {
    m_hold.Take();
    Leave(&m_inside);
  }

 private:
  static void Leave(void* inside) { static_cast<Inside*>(inside)->fetch_sub(1); }

  Platform::HoldKill m_hold;  // first and last: the count and its clean-up come and go as one
  Inside& m_inside;
  const Platform::KillCleanUp m_cleanUp;
};

}  // namespace

MultiWait::MultiWait() : Semaphore(0), m_uWaiters(0), m_uInside(0) {}

// Whoever is inside gets one, whether it was counted at the release or is counted only now, and also if what was
// posted for it went to somebody who took it as from a plain semaphore.
MultiWait::~MultiWait() {
  releaseWaiters();
  while (!IsEmpty(m_uInside)) {
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
