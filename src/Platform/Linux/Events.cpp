#include <errno.h>

#include <new>

#include "Platform/Kill.h"
#include "Platform/Linux/Futex.h"

namespace Oxa::Core::Platform {

namespace {

// What the word of a waiter tells.
constexpr std::uint32_t uAWAKE = 0;
constexpr std::uint32_t uASLEEP = 1;
constexpr std::uint32_t uHANDED = 2;

}  // namespace

// Stands on the waiting thread's stack. From its place in line on, kills are held but for the sleep.
struct Event::Waiter {
  explicit Waiter(Event& event) noexcept : m_pEvent(&event) {}

  Event* const m_pEvent;
  std::atomic<std::uint32_t> m_uWord{uAWAKE};
  bool m_bInLine = false;
  Waiter* m_pPrevious = nullptr;
  Waiter* m_pNext = nullptr;

  bool Handed() const noexcept { return m_uWord.load(std::memory_order_acquire) == uHANDED; }

  // The waiter may be gone as soon as its word has changed; a wake needs its address only.
  void Hand() noexcept {
    const void* const word = &m_uWord;
    if (m_uWord.exchange(uHANDED, std::memory_order_acq_rel) == uASLEEP) FutexWake(word, 1);
  }

  // False if the deadline passed first.
  bool AwaitHand(Deadline deadline) noexcept {
    std::uint32_t expected = uAWAKE;
    if (!m_uWord.compare_exchange_strong(expected, uASLEEP, std::memory_order_acq_rel) && expected == uHANDED)
      return true;
    while (!Handed())
      if (!FutexWaitUnheld(&m_uWord, uASLEEP, deadline)) return Handed();
    return true;
  }
};

Event* Event::Create() noexcept { return new (std::nothrow) Event; }

void Event::Destroy(Event* event) noexcept { delete event; }

// Nothing of this event is touched once the waiter knows: it may destroy the event then.
void Event::Set() noexcept {
  const HoldKill hold;
  Waiter* waiter;
  {
    const ShortGuard guard(m_lock);
    waiter = m_pFirst;
    if (waiter == nullptr) {
      m_bSet = true;
      return;
    }
    Remove(*waiter);
  }
  waiter->Hand();
}

WaitResult Event::Wait(Deadline deadline) noexcept {
  const HoldKill hold;
  Waiter waiter(*this);
  if (TakeOrEnqueue(waiter)) return {EWaitEnd::eSIGNALLED, 0};
  return Sleep(waiter, deadline);
}

WaitResult Event::ReleaseAndWait(ReentrantLock& lock, Deadline deadline) noexcept {
  if (!lock.IsOwner()) return {EWaitEnd::eFAILED, EPERM};
  const HoldKill hold;
  Waiter waiter(*this);
  const bool taken = TakeOrEnqueue(waiter);
  lock.Unlock();
  if (taken) return {EWaitEnd::eSIGNALLED, 0};
  return Sleep(waiter, deadline);
}

WaitResult Event::SetAndWait(Event& other, Deadline deadline) noexcept {
  const HoldKill hold;
  Waiter waiter(*this);
  const bool taken = TakeOrEnqueue(waiter);
  other.Set();
  if (taken) return {EWaitEnd::eSIGNALLED, 0};
  return Sleep(waiter, deadline);
}

bool Event::TakeOrEnqueue(Waiter& waiter) noexcept {
  const ShortGuard guard(m_lock);
  if (m_bSet) {
    m_bSet = false;
    return true;
  }
  waiter.m_bInLine = true;
  waiter.m_pPrevious = m_pLast;
  (m_pLast != nullptr ? m_pLast->m_pNext : m_pFirst) = &waiter;
  m_pLast = &waiter;
  return false;
}

void Event::Remove(Waiter& waiter) noexcept {
  waiter.m_bInLine = false;
  (waiter.m_pPrevious != nullptr ? waiter.m_pPrevious->m_pNext : m_pFirst) = waiter.m_pNext;
  (waiter.m_pNext != nullptr ? waiter.m_pNext->m_pPrevious : m_pLast) = waiter.m_pPrevious;
}

WaitResult Event::Sleep(Waiter& waiter, Deadline deadline) noexcept {
  const KillCleanUp cleanUp(&LeaveKilled, &waiter);
  const bool handed = SpinBeforeSleep(m_spinBudget, deadline, [&] { return waiter.Handed(); }) ||
                      waiter.AwaitHand(deadline) || !GiveUp(waiter);
  return {handed ? EWaitEnd::eSIGNALLED : EWaitEnd::eTIMEOUT, 0};
}

// Leaves the line. False if the event was handed over in the meantime: then it has arrived on return.
bool Event::GiveUp(Waiter& waiter) noexcept {
  {
    const ShortGuard guard(m_lock);
    if (waiter.m_bInLine) {
      Remove(waiter);
      return true;
    }
  }
  waiter.AwaitHand(Deadline::Never());
  return false;
}

// What was handed to a dead thread is for the next one.
void Event::LeaveKilled(void* waiter) {
  Waiter& killed = *static_cast<Waiter*>(waiter);
  if (!killed.m_pEvent->GiveUp(killed)) killed.m_pEvent->Set();
}

}  // namespace Oxa::Core::Platform
