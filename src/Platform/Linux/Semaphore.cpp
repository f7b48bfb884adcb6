#include <errno.h>

#include <algorithm>
#include <new>

#include "Platform/Kill.h"
#include "Platform/Linux/Futex.h"

namespace Oxa::Core::Platform {

namespace {

constexpr std::uint64_t uSLEEPER = std::uint64_t{1} << 32;

std::uint32_t HandedOutOf(std::uint64_t word) noexcept { return static_cast<std::uint32_t>(word); }

// What the system watches.
const void* LowerHalf(const std::atomic<std::uint64_t>& word) noexcept {
  constexpr bool lowestFirst = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;
  return reinterpret_cast<const unsigned char*>(&word) + (lowestFirst ? 0 : sizeof(std::uint32_t));
}

}  // namespace

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
  std::int64_t before = m_llBalance.load(std::memory_order_relaxed);
  do {
    if (before + amount > iMAXIMUM) return EOVERFLOW;
  } while (!m_llBalance.compare_exchange_weak(before, before + amount, std::memory_order_release,
                                              std::memory_order_relaxed));
  if (before < 0) HandOut(static_cast<std::uint32_t>(std::min<std::int64_t>(-before, amount)));
  return 0;
}

void CountingSemaphore::HandOut(std::uint32_t count) noexcept {
  const void* const word = LowerHalf(m_ullHandedOut);
  if (m_ullHandedOut.fetch_add(count, std::memory_order_release) >= uSLEEPER)
    FutexWake(word, static_cast<int>(count));
}

bool CountingSemaphore::TryTakeHandedOut() noexcept {
  std::uint64_t word = m_ullHandedOut.load(std::memory_order_relaxed);
  while (HandedOutOf(word) > 0)
    if (m_ullHandedOut.compare_exchange_weak(word, word - 1, std::memory_order_acquire,
                                             std::memory_order_relaxed))
      return true;
  return false;
}

WaitResult CountingSemaphore::Wait(Deadline deadline) noexcept {
  return TryTake() ? WaitResult{EWaitEnd::eSIGNALLED, 0} : WaitInLine(deadline);
}

// Who spins isn't in line yet: a post takes one step then, and not two. In line kills are held, so that the thread is
// there and can be taken out, or isn't.
[[gnu::noinline]] WaitResult CountingSemaphore::WaitInLine(Deadline deadline) noexcept {
  if (deadline.HasPassed()) return {EWaitEnd::eTIMEOUT, 0};
  if (SpinBeforeSleep(m_spinBudget, deadline, [this] { return TryTake(); })) return {EWaitEnd::eSIGNALLED, 0};
  const HoldKill hold;
  if (m_llBalance.fetch_sub(1, std::memory_order_acquire) > 0) return {EWaitEnd::eSIGNALLED, 0};
  return {AwaitHandOut(deadline) ? EWaitEnd::eSIGNALLED : EWaitEnd::eTIMEOUT, 0};
}

// With kills held but for the sleep.
bool CountingSemaphore::AwaitHandOut(Deadline deadline) noexcept {
  const KillCleanUp cleanUp(&LeaveKilled, this);
  while (!TryTakeHandedOut())
    if (!SleepUntilHandOut(deadline)) {
      if (Withdraw()) return false;
      deadline = Deadline::Never();  // a poster has counted on this thread already
    }
  return true;
}

bool CountingSemaphore::SleepUntilHandOut(Deadline deadline) noexcept {
  m_ullHandedOut.fetch_add(uSLEEPER, std::memory_order_relaxed);
  const bool inTime = FutexWaitUnheld(LowerHalf(m_ullHandedOut), 0, deadline);
  m_ullHandedOut.fetch_sub(uSLEEPER, std::memory_order_relaxed);
  return inTime;
}

// Takes back what the wait took from the balance, unless a post has paid for it.
bool CountingSemaphore::Withdraw() noexcept {
  std::int64_t balance = m_llBalance.load(std::memory_order_relaxed);
  while (balance < 0)
    if (m_llBalance.compare_exchange_weak(balance, balance + 1, std::memory_order_relaxed)) return true;
  return false;
}

// One that was posted for the dead thread is for the next one, and so is a wake that it got. It dies in its sleep,
// and nowhere else.
void CountingSemaphore::LeaveKilled(void* semaphore) {
  CountingSemaphore& self = *static_cast<CountingSemaphore*>(semaphore);
  const void* const word = LowerHalf(self.m_ullHandedOut);
  if (self.Withdraw()) {
    self.m_ullHandedOut.fetch_sub(uSLEEPER, std::memory_order_relaxed);
    return FutexWake(word, 1);
  }
  while (!self.TryTakeHandedOut()) FutexWait(word, 0, Deadline::Never());
  self.m_ullHandedOut.fetch_sub(uSLEEPER, std::memory_order_relaxed);
  self.Post(1);
}

std::uint32_t CountingSemaphore::Value() const noexcept {
  const std::int64_t balance = m_llBalance.load(std::memory_order_relaxed);
  return static_cast<std::uint32_t>(std::clamp<std::int64_t>(balance, 0, iMAXIMUM));
}

}  // namespace Oxa::Core::Platform
