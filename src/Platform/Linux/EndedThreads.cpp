#include "Platform/Linux/EndedThreads.h"

#include <errno.h>
#include <pthread.h>

#include <new>

#include "Platform/Kill.h"

namespace Oxa::Core::Platform {

namespace {

static_assert(sizeof(pthread_t) <= sizeof(unsigned long), "a thread's handle needs more room");

ShortLock s_lock;  // guards the list
NativeThread* s_pFirst = nullptr;
std::atomic<unsigned int> s_uCount{0};

// A forked child has none of these threads, and their stacks are the system library's again. The lock may have
// been held by one of them.
void ForgetAll() {
  ::new (static_cast<void*>(&s_lock)) ShortLock;
  s_pFirst = nullptr;
  s_uCount.store(0);
}

[[gnu::constructor]] void WatchForks() { pthread_atfork(nullptr, nullptr, &ForgetAll); }

NativeThread* TakeAll() noexcept {
  const ShortGuard guard(s_lock);
  NativeThread* const first = s_pFirst;
  s_pFirst = nullptr;
  return first;
}

}  // namespace

void EndedThreads::Expect() noexcept { s_uCount.fetch_add(1); }

unsigned int EndedThreads::Count() noexcept { return s_uCount.load(); }

void EndedThreads::Add(NativeThread& thread) noexcept {
  const ShortGuard guard(s_lock);
  thread.m_pNextEnded = s_pFirst;
  s_pFirst = &thread;
}

void EndedThreads::JoinGone() noexcept {
  const HoldKill hold;
  for (NativeThread* thread = TakeAll(); thread != nullptr;) {
    NativeThread* const next = thread->m_pNextEnded;
    if (pthread_tryjoin_np(static_cast<pthread_t>(thread->m_ulHandle), nullptr) == EBUSY) {
      Add(*thread);
    } else {
      const boost::shared_ptr<NativeThread> last = std::move(thread->m_spSelf);
      s_uCount.fetch_sub(1);
    }
    thread = next;
  }
}

}  // namespace Oxa::Core::Platform
