// The state of a thread, the stop that is asked of it, and the waits for both.
#include <Infrastructure/OxaCore/Assert.h>
#include <Infrastructure/OxaCore/Thread.h>

#include "Threads/KillSafeLocks.h"
#include "Threads/ThreadNotifications.h"
#include "Threads/WholeMilliseconds.h"

#include "Platform/Kill.h"
#include "Platform/Threads.h"

namespace Oxa::Core {

namespace {

/// What is left until `deadline`, at least 0.
Elapse TimeLeft(const Time& deadline) {
  const Elapse left = deadline.TimeLeft();
  return left < Elapse(0) ? Elapse(0) : left;
}

// What waits for states have learned of spins, all together: a thread is mostly waited for but once.
Platform::SpinBudget s_spinBudget;

void SpinForState(const Thread& thread, int mask, Platform::Deadline deadline) {
  const auto done = [&] { return thread.IsState(mask); };
  if (!done()) Platform::SpinBeforeSleep(s_spinBudget, deadline, done);
}

}  // namespace

// A single waiter is woken after the lock is free, or it would run into it and sleep once more; several by a broadcast,
// of which there may be one at a time only. No kill comes between the change and the wake: nobody else would wake
// them.
void Thread::SetState(EState state) {
  Platform::HoldKill hold;
  hold.Release();
  {
    const ForsakenMonitorLock lock(m_stateCondition);
    OXA_ASSERT((state == eTHREAD_IDLE) || (state == eTHREAD_RUNNING) || (state == eTHREAD_COMPLETED) ||
               (state == eTHREAD_ERROR));
    OXA_ASSERT(m_eState != state);
    if (m_eState == state) return;
    hold.Take();
    m_eState = state;
    if (state == eTHREAD_COMPLETED && m_listeners.HasListeners()) {
      NotifyThreadComplete notification(m_wpThis.lock());
      m_listeners.Broadcast(notification);
    }
    if ((m_iAwaited & state) == 0) return;  // who waits for the end isn't woken by the beginning
    m_iAwaited = 0;                         // all wake, and tell again what they wait for
    if (!m_stateCondition.HasOneWaiter()) return m_stateCondition.Notify();
  }
  m_stateCondition.Signal();
}

bool Thread::Stop(const Elapse& timeout) {
  {
    const ForsakenMonitorLock lock(m_stateCondition);
    if (IsAlive()) {
      m_bStopRequested = true;
      m_stateCondition.Notify();
    }
  }
  return timeout == Elapse(0) || TimedWaitForState(eTHREAD_NOT_RUNNING, timeout);
}

void Thread::ResetStopFlag() {
  const ForsakenMonitorLock lock(m_stateCondition);
  m_bStopRequested = false;
  m_stateCondition.Notify();
}

bool Thread::MustStop() {
  const ForsakenMonitorLock lock(m_stateCondition);
  return m_bStopRequested;
}

void Thread::WaitForStopRequest() {
  const ForsakenMonitorLock lock(m_stateCondition);
  while (!MustStop()) m_stateCondition.Wait();
}

bool Thread::TimedWaitForStopRequest(const Elapse& timeout) {
  const Time deadline(timeout);
  const ForsakenMonitorLock lock(m_stateCondition);
  while (!MustStop()) {
    if (!m_stateCondition.TimedWait(TimeLeft(deadline))) return MustStop();
  }
  return true;
}

void Thread::WaitForState(int mask) {
  OXA_ASSERT(!IsCurrentThread());
  SpinForState(*this, mask, Platform::Deadline::Never());
  const ForsakenMonitorLock lock(m_stateCondition);
  while (!TryWaitForState(mask)) {
    m_iAwaited |= mask;
    m_stateCondition.Wait();
  }
}

bool Thread::TryWaitForState(int mask) {
  OXA_ASSERT(!IsCurrentThread());
  return IsState(mask);
}

bool Thread::TimedWaitForState(int mask, const Elapse& timeout) {
  OXA_ASSERT(!IsCurrentThread());
  const Time deadline(timeout);
  SpinForState(*this, mask, WholeMilliseconds(timeout));
  const ForsakenMonitorLock lock(m_stateCondition);
  while (!TryWaitForState(mask)) {
    m_iAwaited |= mask;
    if (!m_stateCondition.TimedWait(TimeLeft(deadline))) return TryWaitForState(mask);
  }
  return true;
}

bool Thread::WaitFor(const Elapse* timeout) {
  if (timeout != nullptr) return TimedWaitForState(eTHREAD_NOT_RUNNING, *timeout);
  WaitForState(eTHREAD_NOT_RUNNING);
  return true;
}

bool Thread::WaitForAll(boost::shared_ptr<Thread>* threads, std::size_t count, Elapse* timeout) {
  if (!OXA_ASSERT(0 != threads)) return false;
  OXA_ASSERT(count > 0);
  const Time deadline(timeout != nullptr ? *timeout : Elapse(0));
  for (std::size_t i = 0; i != count; ++i) {
    if (threads[i] == nullptr) continue;
    const Elapse left = TimeLeft(deadline);
    if (!threads[i]->WaitFor(timeout != nullptr ? &left : nullptr)) return false;
  }
  return true;
}

}  // namespace Oxa::Core
