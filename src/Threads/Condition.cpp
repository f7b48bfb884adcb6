#include <Infrastructure/OxaCore/Assert.h>
#include <Infrastructure/OxaCore/Condition.h>

#include <new>

#include "Platform/Kill.h"
#include "Platform/Threads.h"
#include "Threads/ConditionTexts.h"
#include "Threads/CountedThreads.h"
#include "Threads/WholeMilliseconds.h"

namespace Oxa::Core {

namespace {

constexpr std::uint64_t uBROADCASTING = 0x80000000u;

// With one waiter, or none, a broadcast is a signal.
bool AreFew(std::uint64_t waiters) { return CountIn(OfThisProcess(waiters)) <= 1; }

}  // namespace

Condition::Condition(bool notifyBroadcasts)
    : m_notifyBroadcasts(notifyBroadcasts),
      m_hConditionSignal(Platform::Event::Create()),
      m_hBroadcastCompleteSignal(Platform::Event::Create()),
      m_hMutex(new (std::nothrow) Platform::ReentrantLock),
      m_waiters(0) {
  OXA_ASSERT(0 != m_hConditionSignal);
  OXA_ASSERT(0 != m_hBroadcastCompleteSignal);
  OXA_ASSERT(0 != m_hMutex);
}

Condition::~Condition() {
  delete m_hMutex;
  Platform::Event::Destroy(m_hConditionSignal);
  Platform::Event::Destroy(m_hBroadcastCompleteSignal);
  m_hMutex = nullptr;
  m_hConditionSignal = nullptr;
  m_hBroadcastCompleteSignal = nullptr;
}

void Condition::Lock(const Elapse& timeout) {
  if (m_hMutex != nullptr && m_hMutex->TryLock()) return;
  Succeeded(LockSlowly(timeout), g_conditionLockTexts, OXA_CODE_SITE);
}

bool Condition::TryLock(const Elapse& timeout) {
  if (m_hMutex != nullptr && m_hMutex->TryLock()) return true;
  return Succeeded(LockSlowly(timeout), g_conditionTryLockTexts, OXA_CODE_SITE);
}

Platform::WaitResult Condition::LockSlowly(const Elapse& timeout) {
  if (m_hMutex == nullptr) return Platform::NothingToWaitFor();
  return m_hMutex->LockBy(timeout == sINFINITE ? Platform::Deadline::Never() : WholeMilliseconds(timeout));
}

void Condition::Unlock() {
  if (m_hMutex != nullptr) m_hMutex->UnlockIfOwner();
}

void Condition::Wait() {
  const Platform::WaitResult result = WaitFor(Platform::Deadline::Never());
  Succeeded(result, g_conditionWaitTexts, OXA_CODE_SITE);
}

bool Condition::TimedWait(const Elapse& timeout) {
  const Platform::WaitResult result = WaitFor(WholeMilliseconds(timeout));
  return Succeeded(result, g_conditionTimedWaitTexts, OXA_CODE_SITE);
}

Platform::WaitResult Condition::WaitFor(Platform::Deadline deadline) {
  const Platform::WaitResult result = SleepCounted(deadline);
  // By name, so that a derived class that locks in its own way is asked.
  IMutex& self = *this;
  self.Lock();
  return result;
}

// A waiter that is killed is counted no more, or the next broadcast would wait for it.
Platform::WaitResult Condition::SleepCounted(Platform::Deadline deadline) {
  Platform::HoldKill hold;
  CountOneMore(m_waiters);
  const Platform::KillCleanUp cleanUp([](void* self) { static_cast<Condition*>(self)->LeaveWait(); }, this);
  hold.Release();
  const Platform::WaitResult result = m_hConditionSignal != nullptr && m_hMutex != nullptr
                                          ? m_hConditionSignal->ReleaseAndWait(*m_hMutex, deadline)
                                          : Platform::NothingToWaitFor();
  hold.Take();
  LeaveWait();
  return result;
}

// Between the end of the sleep and this a signal may still come for the thread, which has no use for it. It
// stays pending and wakes the next waiter: required, and harmless, since waiters look again.
void Condition::LeaveWait() {
  std::uint64_t before = m_waiters.load();
  std::uint64_t after;
  do {
    after = before - 1;
    if (CountIn(after) == uBROADCASTING) after -= uBROADCASTING;  // the last one out ends the broadcast
  } while (!m_waiters.compare_exchange_weak(before, after));
  if ((before & uBROADCASTING) == 0) return;
  Platform::Event* const next = CountIn(after) == 0 ? m_hBroadcastCompleteSignal : m_hConditionSignal;
  if (next != nullptr) next->Set();
}

void Condition::Signal() {
  const std::uint64_t waiters = m_waiters.load();
  if (CountIn(waiters) == 0 || CountIn(OfThisProcess(waiters)) == 0) return;
  if (m_hConditionSignal != nullptr) m_hConditionSignal->Set();
}

// Counting the waiters and beginning the broadcast are one step, or the last of them might leave in between
// and nobody would end the broadcast. Where there is nothing to wait on, the waiters still wake one another.
void Condition::Broadcast() {
  std::uint64_t waiters = m_waiters.load();
  if (CountIn(waiters) == 0 || m_hConditionSignal == nullptr) return;
  if (AreFew(waiters)) return Signal();
  const Platform::HoldKill hold;
  do {
    if (AreFew(waiters)) return Signal();
  } while (!m_waiters.compare_exchange_weak(waiters, waiters | uBROADCASTING));
  if (m_hBroadcastCompleteSignal == nullptr) return m_hConditionSignal->Set();
  m_hBroadcastCompleteSignal->SetAndWait(*m_hConditionSignal, Platform::Deadline::Never());
}

void Condition::Notify() {
  if (m_notifyBroadcasts) {
    Broadcast();
  } else {
    Signal();
  }
}

}  // namespace Oxa::Core
