// Which threads are inside which log handlers, so that whoever unregisters a handler can wait for them.
//
// Why not simply a lock around each call: a handler may ask for a logger, or raise a warning, which does. The
// thread that makes a logger holds the locks of loggers and tells the handlers of it. If it had to stand back there
// for somebody who waits to change the list of handlers, and that one for the handler, none of the three would go on.
//
// Thread safety: any thread may call anything. Nothing else is locked under the mutex in here.
// A thread that ends inside a handler without unwinding is waited for without end.
#ifndef OXACORE_LOG_HANDLERCALLS_H
#define OXACORE_LOG_HANDLERCALLS_H

#include <Infrastructure/OxaCore/Condition.h>
#include <Infrastructure/OxaCore/Log.h>

#include <cstddef>
#include <utility>
#include <vector>

namespace Oxa::Core {

class HandlerCalls {
 public:
  HandlerCalls();
  HandlerCalls(const HandlerCalls&) = delete;
  HandlerCalls& operator=(const HandlerCalls&) = delete;

  /// The calling thread enters the handler, and leaves it. It may be in there already. Null is no handler: from
  /// then on the thread waits for nobody, since it may hold locks that others want inside of one.
  void Enter(IOxaLogHandler* handler);
  void Leave(IOxaLogHandler* handler) noexcept;

  /// Waits until no other thread is inside the handler, except for those that wait here, directly or through
  /// others, for the calling thread to leave one: of several handlers that unregister one another, none would
  /// ever return. See to it beforehand that no thread enters any more. Doesn't wait at all if the calling thread
  /// has entered null.
  void AwaitOthers(IOxaLogHandler* handler);

 private:
  using Place = std::pair<unsigned long, IOxaLogHandler*>;  // a thread's id, and a handler
  using Places = std::vector<Place>;

  /// Shows that the thread waits, for the length of a scope. Those who wait already look again: it may be them.
  class Waiting;

  static void Remove(Places& places, const Place& place) noexcept;
  bool IsInside(const Place& place) const;
  bool IsBlocked(const Place& waiter) const;
  bool WaitsFor(unsigned long thread, unsigned long other, std::size_t steps) const;

  Condition m_monitor;  ///< guards what follows
  Places m_calls;       ///< a thread can be in one handler several times
  Places m_waits;       ///< who waits in AwaitOthers, and for which handler
};

/// The stay of the calling thread in a handler, for the length of a scope.
class HandlerStay {
 public:
  HandlerStay(HandlerCalls& calls, IOxaLogHandler* handler) : m_calls(calls), m_pHandler(handler) {
    m_calls.Enter(m_pHandler);
  }
  HandlerStay(const HandlerStay&) = delete;
  HandlerStay& operator=(const HandlerStay&) = delete;
  ~HandlerStay() { m_calls.Leave(m_pHandler); }

 private:
  HandlerCalls& m_calls;
  IOxaLogHandler* const m_pHandler;
};

}  // namespace Oxa::Core

#endif
