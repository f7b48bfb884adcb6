#include <Infrastructure/OxaCore/Semaphore.h>

#include <atomic>
#include <thread>

namespace Oxa::Core {

namespace {

class Presence {
 public:
  explicit Presence(std::atomic<unsigned int>& present) : m_present(present) { m_present.fetch_add(1); }
  Presence(const Presence&) = delete;
  Presence& operator=(const Presence&) = delete;
  ~Presence() { m_present.fetch_sub(1); }

 private:
  std::atomic<unsigned int>& m_present;
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

// Who leaves because the time is over isn't taken back out of the count: the gate's deliberate behaviour.
bool MultiWait::wait(Elapse* timeout) {
  const Presence presence(m_uInside);
  addWaiter();
  if (timeout != nullptr) return TimedWait(*timeout);
  Wait();
  return true;
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
