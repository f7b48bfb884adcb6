#include "ErrorHandling/LiveRaises.h"

#include "Platform/Storage.h"
#include "Platform/Threads.h"

namespace Oxa::Core {

namespace {

// Both constant-initialised and trivially destructible: errors may die after every static object.
Platform::ShortLock s_lock;  // guards the list and the links in the errors
LiveRaise s_ends;            // m_pNext is the oldest raise, m_pPrevious the newest

void Link(LiveRaise& raise, LiveRaise* previous, LiveRaise* next) noexcept {
  raise.m_pPrevious = previous;
  raise.m_pNext = next;
  (previous != nullptr ? previous->m_pNext : s_ends.m_pNext) = &raise;
  (next != nullptr ? next->m_pPrevious : s_ends.m_pPrevious) = &raise;
}

void Unlink(LiveRaise& raise) noexcept {
  (raise.m_pPrevious != nullptr ? raise.m_pPrevious->m_pNext : s_ends.m_pNext) = raise.m_pNext;
  (raise.m_pNext != nullptr ? raise.m_pNext->m_pPrevious : s_ends.m_pPrevious) = raise.m_pPrevious;
  raise = LiveRaise();
}

int Count(unsigned long thread) noexcept {
  int count = 0;
  for (const LiveRaise* raise = s_ends.m_pNext; raise != nullptr; raise = raise->m_pNext) {
    if (raise->m_ulThread == thread) ++count;
  }
  return count;
}

}  // namespace

int LiveRaises::Add(Error& error) noexcept {
  const Platform::ShortGuard guard(s_lock);
  LiveRaise& raise = error.m_liveRaise;
  raise.m_pError = &error;
  raise.m_ulThread = Platform::ThreadSerial();
  Link(raise, s_ends.m_pPrevious, nullptr);
  return Count(raise.m_ulThread);
}

void LiveRaises::Remove(Error& error) noexcept {
  const Platform::ShortGuard guard(s_lock);
  if (error.m_liveRaise.m_ulThread != 0) Unlink(error.m_liveRaise);
}

void LiveRaises::MoveMark(const Error& from, Error& to) noexcept {
  to.m_bRaised = from.m_bRaised;
  from.m_bRaised = false;
  if (from.m_liveRaise.m_ulThread == 0) return;
  const Platform::ShortGuard guard(s_lock);
  const LiveRaise old = from.m_liveRaise;
  Unlink(from.m_liveRaise);
  to.m_liveRaise.m_pError = &to;
  to.m_liveRaise.m_ulThread = old.m_ulThread;
  Link(to.m_liveRaise, old.m_pPrevious, old.m_pNext);
}

int LiveRaises::CountOfThisThread() noexcept {
  const Platform::ShortGuard guard(s_lock);
  return Count(Platform::ThreadSerial());
}

std::optional<Error> LiveRaises::ForgetThisThread() {
  const unsigned long thread = Platform::ThreadSerial();
  const Platform::ShortGuard guard(s_lock);
  Error* first = nullptr;
  for (LiveRaise* raise = s_ends.m_pNext; raise != nullptr;) {
    LiveRaise* const next = raise->m_pNext;
    if (raise->m_ulThread == thread) {
      if (first == nullptr) first = raise->m_pError;
      Unlink(*raise);
    }
    raise = next;
  }
  // Copied while the lock keeps an owner on another thread from destroying it.
  if (first == nullptr) return std::nullopt;
  return std::optional<Error>(std::in_place, *first);
}

}  // namespace Oxa::Core
