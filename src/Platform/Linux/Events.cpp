#include <errno.h>

#include <new>

#include "Platform/Kill.h"
#include "Platform/Linux/WaitLine.h"

namespace Oxa::Core::Platform {

struct Event::Place : Waiter {
  explicit Place(Event& event) noexcept : m_event(event) {}

  Event& m_event;
};

Event* Event::Create() noexcept { return new (std::nothrow) Event; }

void Event::Destroy(Event* event) noexcept { delete event; }

// Nothing of this event is touched once the waiter knows: it may destroy the event then.
void Event::Set() noexcept {
  const HoldKill hold;
  Waiter* waiter;
  {
    const ShortGuard guard(m_lock);
    m_line.DropForeign();
    if (m_line.IsEmpty()) {
      m_bSet = true;
      return;
    }
    waiter = m_line.TakeFirst(1);
  }
  waiter->Hand();
}

WaitResult Event::Wait(Deadline deadline) noexcept {
  const HoldKill hold;
  Place place(*this);
  if (TakeOrEnqueue(place)) return {EWaitEnd::eSIGNALLED, 0};
  return Sleep(place, deadline);
}

WaitResult Event::ReleaseAndWait(ReentrantLock& lock, Deadline deadline) noexcept {
  if (!lock.IsOwner()) return {EWaitEnd::eFAILED, EPERM};
  const HoldKill hold;
  Place place(*this);
  const bool taken = TakeOrEnqueue(place);
  lock.Unlock();
  if (taken) return {EWaitEnd::eSIGNALLED, 0};
  return Sleep(place, deadline);
}

WaitResult Event::SetAndWait(Event& other, Deadline deadline) noexcept {
  const HoldKill hold;
  Place place(*this);
  const bool taken = TakeOrEnqueue(place);
  other.Set();
  if (taken) return {EWaitEnd::eSIGNALLED, 0};
  return Sleep(place, deadline);
}

bool Event::TakeOrEnqueue(Place& place) noexcept {
  const ShortGuard guard(m_lock);
  if (m_bSet) {
    m_bSet = false;
    return true;
  }
  m_line.DropForeign();
  m_line.Append(place);
  return false;
}

WaitResult Event::Sleep(Place& place, Deadline deadline) noexcept {
  const KillCleanUp cleanUp(&LeaveKilled, &place);
  const bool handed = SpinBeforeSleep(m_spinBudget, deadline, [&] { return place.Handed(); }) ||
                      place.AwaitHand(deadline) || !GiveUp(place);
  return {handed ? EWaitEnd::eSIGNALLED : EWaitEnd::eTIMEOUT, 0};
}

// Leaves the line. False if the event was handed over in the meantime: then it has arrived on return.
bool Event::GiveUp(Place& place) noexcept {
  {
    const ShortGuard guard(m_lock);
    if (place.m_bInLine) {
      m_line.Remove(place);
      return true;
    }
  }
  place.AwaitHand(Deadline::Never());
  return false;
}

// What was handed to a dead thread is for the next one.
void Event::LeaveKilled(void* place) {
  Place& killed = *static_cast<Place*>(place);
  if (!killed.m_event.GiveUp(killed)) killed.m_event.Set();
}

}  // namespace Oxa::Core::Platform
