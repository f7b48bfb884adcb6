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
  const unsigned long thread = Platform::ThreadSerial();
  const Platform::ShortGuard guard(s_lock);
  const int count = Count(thread);
  LiveRaise& raise = error.m_liveRaise;
  raise.m_pError = &error;
  raise.m_ulThread = thread;
  raise.m_bFirst = count == 0;
  Link(raise, s_ends.m_pPrevious, nullptr);
  return count + 1;
}

void LiveRaises::Remove(Error& error) noexcept {
  const Platform::ShortGuard guard(s_lock);
  error.m_bRaised = false;
  if (error.m_liveRaise.m_ulThread != 0) Unlink(error.m_liveRaise);
}

void LiveRaises::MoveMark(const Error& from, Error& to) noexcept {
  const Platform::ShortGuard guard(s_lock);
  to.m_bRaised = from.m_bRaised;
  from.m_bRaised = false;
  if (from.m_liveRaise.m_ulThread == 0) return;
  const LiveRaise place = from.m_liveRaise;
  Unlink(from.m_liveRaise);
  to.m_liveRaise = place;
  to.m_liveRaise.m_pError = &to;
  Link(to.m_liveRaise, place.m_pPrevious, place.m_pNext);
}

int LiveRaises::CountOfThisThread() noexcept {
  const unsigned long thread = Platform::ThreadSerial();
  const Platform::ShortGuard guard(s_lock);
  return Count(thread);
}

bool LiveRaises::ForgetThisThread(Error& first) noexcept {
  const unsigned long thread = Platform::ThreadSerial();
  bool found = false;
  const AlertInfo replaced(first);  // nothing is freed under the lock
  const Platform::ShortGuard guard(s_lock);
  for (LiveRaise* raise = s_ends.m_pNext; raise != nullptr;) {
    LiveRaise* const next = raise->m_pNext;
    if (raise->m_ulThread == thread) {
      if (raise->m_bFirst) {
        // Under the lock, or an owner on another thread might destroy it meanwhile.
        first.Copy(*raise->m_pError, false);
        found = true;
      }
      Unlink(*raise);
    }
    raise = next;
  }
  return found;
}

void LiveRaises::DropThisThread() noexcept {
  const unsigned long thread = Platform::ThreadSerial();
  const Platform::ShortGuard guard(s_lock);
  for (LiveRaise* raise = s_ends.m_pNext; raise != nullptr;) {
    LiveRaise* const next = raise->m_pNext;
    if (raise->m_ulThread == thread) Unlink(*raise);
    raise = next;
  }
}

}  // namespace Oxa::Core
