#include "Platform/Linux/WaitLine.h"

#include <pthread.h>

#include "Platform/Linux/Futex.h"

namespace Oxa::Core::Platform {

namespace {

// What the word of a waiter tells.
constexpr std::uint32_t uAWAKE = 0;
constexpr std::uint32_t uASLEEP = 1;
constexpr std::uint32_t uHANDED = 2;

std::atomic<std::uint32_t> g_forks{0};

void CountFork() { g_forks.fetch_add(1, std::memory_order_relaxed); }

[[gnu::constructor]] void WatchForks() { pthread_atfork(nullptr, nullptr, &CountFork); }

}  // namespace

std::uint32_t ForksSoFar() noexcept { return g_forks.load(std::memory_order_relaxed); }

bool Waiter::Handed() const noexcept { return m_uWord.load(std::memory_order_acquire) == uHANDED; }

// A wake needs the word's address only.
void Waiter::Hand() noexcept {
  const void* const word = &m_uWord;
  if (m_uWord.exchange(uHANDED, std::memory_order_acq_rel) == uASLEEP) FutexWake(word, 1);
}

bool Waiter::AwaitHand(Deadline deadline) noexcept {
  std::uint32_t expected = uAWAKE;
  if (!m_uWord.compare_exchange_strong(expected, uASLEEP, std::memory_order_acq_rel) && expected == uHANDED)
    return true;
  while (!Handed())
    if (!FutexWaitUnheld(&m_uWord, uASLEEP, deadline)) return Handed();
  return true;
}

void WaitLine::Append(Waiter& waiter) noexcept {
  waiter.m_bInLine = true;
  waiter.m_pPrevious = m_pLast;
  (m_pLast != nullptr ? m_pLast->m_pNext : m_pFirst) = &waiter;
  m_pLast = &waiter;
}

void WaitLine::Remove(Waiter& waiter) noexcept {
  waiter.m_bInLine = false;
  (waiter.m_pPrevious != nullptr ? waiter.m_pPrevious->m_pNext : m_pFirst) = waiter.m_pNext;
  (waiter.m_pNext != nullptr ? waiter.m_pNext->m_pPrevious : m_pLast) = waiter.m_pPrevious;
}

bool WaitLine::MayHaveForeign() const noexcept {
  return m_uForks.load(std::memory_order_relaxed) != ForksSoFar();
}

// Their stacks may be those of other threads by now.
void WaitLine::DropForeign() noexcept {
  if (!MayHaveForeign()) return;
  m_pFirst = nullptr;
  m_pLast = nullptr;
  m_uForks.store(ForksSoFar(), std::memory_order_relaxed);
}

// Who is out of the line still leads to the one that stood behind.
Waiter* WaitLine::TakeFirst(std::uint32_t count) noexcept {
  Waiter* const first = m_pFirst;
  for (; count > 0; --count) Remove(*m_pFirst);
  return first;
}

}  // namespace Oxa::Core::Platform
