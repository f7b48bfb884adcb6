#include <errno.h>

#include <algorithm>
#include <new>

#include "Platform/Kill.h"
#include "Platform/Linux/WaitLine.h"

namespace Oxa::Core::Platform {

struct CountingSemaphore::Place : Waiter {
  explicit Place(CountingSemaphore& semaphore) noexcept : m_semaphore(semaphore) {}

  CountingSemaphore& m_semaphore;
};

CountingSemaphore* CountingSemaphore::Create(std::uint32_t initial, int& code) noexcept {
  code = EINVAL;
  if (initial > iMAXIMUM) return nullptr;
  CountingSemaphore* const semaphore = new (std::nothrow) CountingSemaphore(initial);
  code = semaphore != nullptr ? 0 : ENOMEM;
  return semaphore;
}

void CountingSemaphore::Destroy(CountingSemaphore* semaphore) noexcept { delete semaphore; }

// A kill between the two steps would leave waiters behind that are paid for and never woken.
[[gnu::noinline]] int CountingSemaphore::PostSlowly(std::uint32_t amount) noexcept {
  const HoldKill hold;
  if (m_line.MayHaveForeign()) DropForeign();
  std::int64_t before = m_llBalance.load(std::memory_order_relaxed);
  do {
    if (before + amount > iMAXIMUM) return EOVERFLOW;
  } while (!m_llBalance.compare_exchange_weak(before, before + amount, std::memory_order_release,
                                              std::memory_order_relaxed));
  if (before < 0) HandOut(static_cast<std::uint32_t>(std::min<std::int64_t>(-before, amount)));
  return 0;
}

// Nobody is in line then, and so nothing is owed.
[[gnu::noinline]] void CountingSemaphore::DropForeign() noexcept {
  const ShortGuard guard(m_lock);
  if (!m_line.MayHaveForeign()) return;
  std::int64_t balance = m_llBalance.load(std::memory_order_relaxed);
  while (balance < 0 && !m_llBalance.compare_exchange_weak(balance, 0, std::memory_order_relaxed)) {
  }
  m_line.DropForeign();
}

// Those that were paid for are in line, and stay until they get it: whoever would leave finds that out. Once they
// have got it the semaphore may be gone.
void CountingSemaphore::HandOut(std::uint32_t count) noexcept {
  Waiter* waiter;
  {
    const ShortGuard guard(m_lock);
    waiter = m_line.TakeFirst(count);
  }
  for (; count > 0; --count) {
    Waiter* const next = waiter->m_pNext;
    waiter->Hand();
    waiter = next;
  }
}

WaitResult CountingSemaphore::Wait(Deadline deadline) noexcept {
  return TryTake() ? WaitResult{EWaitEnd::eSIGNALLED, 0} : WaitSlowly(deadline);
}

// Who spins isn't in line yet: a post takes one step then, and not two.
[[gnu::noinline]] WaitResult CountingSemaphore::WaitSlowly(Deadline deadline) noexcept {
  if (deadline.HasPassed()) return {EWaitEnd::eTIMEOUT, 0};
  if (SpinBeforeSleep(m_spinBudget, deadline, [this] { return TryTake(); })) return {EWaitEnd::eSIGNALLED, 0};
  const HoldKill hold;
  Place place(*this);
  const bool taken = TakeOrEnqueue(place) || Sleep(place, deadline);
  return {taken ? EWaitEnd::eSIGNALLED : EWaitEnd::eTIMEOUT, 0};
}

WaitResult CountingSemaphore::WaitInTurn(Deadline deadline, void (*inLine)(void* subject),
                                         void* subject) noexcept {
  const HoldKill hold;
  Place place(*this);
  bool taken = TakeOrEnqueue(place);
  inLine(subject);
  taken = taken || SpinBeforeSleep(m_spinBudget, deadline, [&] { return place.Handed(); }) ||
          Sleep(place, deadline);
  return {taken ? EWaitEnd::eSIGNALLED : EWaitEnd::eTIMEOUT, 0};
}

bool CountingSemaphore::TakeOrEnqueue(Place& place) noexcept {
  if (m_line.MayHaveForeign()) DropForeign();
  const ShortGuard guard(m_lock);
  if (m_llBalance.fetch_sub(1, std::memory_order_acquire) > 0) return true;
  m_line.Append(place);
  return false;
}

bool CountingSemaphore::Sleep(Place& place, Deadline deadline) noexcept {
  const KillCleanUp cleanUp(&LeaveKilled, &place);
  return place.AwaitHand(deadline) || !GiveUp(place);
}

// Leaves the line. False if a post has paid for the place in the meantime: then it has arrived on return.
bool CountingSemaphore::GiveUp(Place& place) noexcept {
  {
    const ShortGuard guard(m_lock);
    if (place.m_bInLine && Withdraw()) {
      m_line.Remove(place);
      return true;
    }
  }
  place.AwaitHand(Deadline::Never());
  return false;
}

// Takes back what the wait took from the balance, unless posts have paid for all that are in line.
bool CountingSemaphore::Withdraw() noexcept {
  std::int64_t balance = m_llBalance.load(std::memory_order_relaxed);
  while (balance < 0)
    if (m_llBalance.compare_exchange_weak(balance, balance + 1, std::memory_order_relaxed)) return true;
  return false;
}

// One that was posted for a dead thread is for the next one.
void CountingSemaphore::LeaveKilled(void* place) {
  Place& killed = *static_cast<Place*>(place);
  if (!killed.m_semaphore.GiveUp(killed)) killed.m_semaphore.Post(1);
}

std::uint32_t CountingSemaphore::Value() const noexcept {
  const std::int64_t balance = m_llBalance.load(std::memory_order_relaxed);
  return static_cast<std::uint32_t>(std::clamp<std::int64_t>(balance, 0, iMAXIMUM));
}

}  // namespace Oxa::Core::Platform
