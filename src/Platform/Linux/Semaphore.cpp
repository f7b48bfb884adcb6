#include <errno.h>

#include <new>

#include "Platform/Linux/Futex.h"

namespace Oxa::Core::Platform {

namespace {

constexpr std::uint64_t ullONE_SLEEPER = std::uint64_t{1} << 32;

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the value is slept on as the word's first half");

std::uint32_t ValueOf(std::uint64_t state) noexcept { return static_cast<std::uint32_t>(state); }
std::uint32_t SleepersOf(std::uint64_t state) noexcept { return static_cast<std::uint32_t>(state >> 32); }

// Takes one from the value, and `less` from the rest. False if there is none.
bool Take(std::atomic<std::uint64_t>& word, std::uint64_t less) noexcept {
  std::uint64_t state = word.load(std::memory_order_relaxed);
  while (ValueOf(state) > 0)
    if (word.compare_exchange_weak(state, state - 1 - less, std::memory_order_acquire,
                                   std::memory_order_relaxed))
      return true;
  return false;
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

int CountingSemaphore::Post(std::uint32_t amount) noexcept {
  std::uint64_t state = m_ullState.load(std::memory_order_relaxed);
  do {
    if (amount > iMAXIMUM - ValueOf(state)) return EOVERFLOW;
  } while (!m_ullState.compare_exchange_weak(state, state + amount, std::memory_order_release,
                                             std::memory_order_relaxed));
  if (SleepersOf(state) > 0) FutexWake(&m_ullState, static_cast<int>(amount));
  return 0;
}

bool CountingSemaphore::TryTake() noexcept { return Take(m_ullState, 0); }

WaitResult CountingSemaphore::Wait(Deadline deadline) noexcept {
  if (Take(m_ullState, 0)) return {EWaitEnd::eSIGNALLED, 0};
  return WaitSlowly(deadline);
}

WaitResult CountingSemaphore::WaitSlowly(Deadline deadline) noexcept {
  if (deadline.HasPassed()) return {EWaitEnd::eTIMEOUT, 0};
  if (SpinIfAdvised(m_spinAdvice, [this] { return Take(m_ullState, 0); })) return {EWaitEnd::eSIGNALLED, 0};
  m_ullState.fetch_add(ullONE_SLEEPER, std::memory_order_relaxed);
  while (true) {
    if (Take(m_ullState, ullONE_SLEEPER)) return {EWaitEnd::eSIGNALLED, 0};
    if (!FutexWait(&m_ullState, 0, deadline)) return LeaveSleepers();
  }
}

// Out of time; whoever was woken for what lies there in this moment takes it.
WaitResult CountingSemaphore::LeaveSleepers() noexcept {
  if (Take(m_ullState, ullONE_SLEEPER)) return {EWaitEnd::eSIGNALLED, 0};
  m_ullState.fetch_sub(ullONE_SLEEPER, std::memory_order_relaxed);
  return {EWaitEnd::eTIMEOUT, 0};
}

std::uint32_t CountingSemaphore::Value() const noexcept {
  return ValueOf(m_ullState.load(std::memory_order_relaxed));
}

}  // namespace Oxa::Core::Platform
