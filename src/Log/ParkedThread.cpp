#include "Log/ParkedThread.h"

#include <atomic>
#include <thread>

#include "Platform/Threads.h"

namespace Oxa::Core {

namespace {

constexpr long long llFOR_LAST_STEPS_NS = 1000000000;

std::atomic<boost::shared_ptr<Thread>*> s_parked{nullptr};

// The run has let go of the object.
void AwaitLastSteps(const boost::shared_ptr<Thread>& thread) {
  const Platform::Deadline deadline = Platform::Deadline::In(llFOR_LAST_STEPS_NS);
  while ((thread->GetRefCount() > 0 || thread.use_count() > 1) && !deadline.HasPassed())
    std::this_thread::yield();
}

}  // namespace

void ParkThread(boost::shared_ptr<Thread>& thread) {
  if (!thread) return;
  if (!thread->IsRunning()) AwaitLastSteps(thread);
  auto* const parked = new boost::shared_ptr<Thread>;
  parked->swap(thread);
  delete s_parked.exchange(parked);
}

void DestroyParkedThread() { delete s_parked.exchange(nullptr); }

}  // namespace Oxa::Core
