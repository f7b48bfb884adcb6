#include "Log/HandlerCalls.h"

#include <algorithm>

#include "Platform/Threads.h"

namespace Oxa::Core {

class HandlerCalls::Waiting {
 public:
  Waiting(HandlerCalls& calls, const Place& waiter) : m_calls(calls), m_waiter(waiter) {
    m_calls.m_waits.push_back(m_waiter);
    m_calls.m_monitor.Broadcast();
  }
  Waiting(const Waiting&) = delete;
  Waiting& operator=(const Waiting&) = delete;
  ~Waiting() { Remove(m_calls.m_waits, m_waiter); }

 private:
  HandlerCalls& m_calls;
  const Place m_waiter;
};

HandlerCalls::HandlerCalls() : m_monitor(true) {}

void HandlerCalls::Enter(IOxaLogHandler* handler) {
  const Lock monitor(m_monitor);
  m_calls.push_back({Platform::CurrentThreadId(), handler});
}

void HandlerCalls::Leave(IOxaLogHandler* handler) noexcept {
  try {
    const Lock monitor(m_monitor);
    Remove(m_calls, {Platform::CurrentThreadId(), handler});
    if (!m_waits.empty()) m_monitor.Broadcast();
  } catch (...) {
    // Errors of the lock have been told when they were raised; a scope that ends can't hand them on.
  }
}

void HandlerCalls::AwaitOthers(IOxaLogHandler* handler) {
  const Lock monitor(m_monitor);
  const Place waiter(Platform::CurrentThreadId(), handler);
  if (IsInside({waiter.first, nullptr}) || !IsBlocked(waiter)) return;
  const Waiting waiting(*this, waiter);
  while (IsBlocked(waiter)) m_monitor.Wait();
}

bool HandlerCalls::IsInside(const Place& place) const {
  return std::find(m_calls.begin(), m_calls.end(), place) != m_calls.end();
}

bool HandlerCalls::IsBlocked(const Place& waiter) const {
  return std::any_of(m_calls.begin(), m_calls.end(), [&](const Place& call) {
    return call.second == waiter.second && call.first != waiter.first &&
           !WaitsFor(call.first, waiter.first, m_waits.size());
  });
}

/// Whether `thread` waits for `other`, by a chain of at most `steps` waits.
bool HandlerCalls::WaitsFor(unsigned long thread, unsigned long other, std::size_t steps) const {
  if (steps == 0) return false;
  return std::any_of(m_waits.begin(), m_waits.end(), [&](const Place& wait) {
    return wait.first == thread && std::any_of(m_calls.begin(), m_calls.end(), [&](const Place& call) {
             return call.second == wait.second && call.first != thread &&
                    (call.first == other || WaitsFor(call.first, other, steps - 1));
           });
  });
}

void HandlerCalls::Remove(Places& places, const Place& place) noexcept {
  const Places::iterator found = std::find(places.begin(), places.end(), place);
  if (found == places.end()) return;
  *found = places.back();
  places.pop_back();
}

}  // namespace Oxa::Core
