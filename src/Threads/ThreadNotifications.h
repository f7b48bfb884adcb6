// What a thread tells its listeners.
#ifndef OXACORE_THREADS_THREADNOTIFICATIONS_H
#define OXACORE_THREADS_THREADNOTIFICATIONS_H

#include <Infrastructure/OxaCore/Thread.h>

namespace Oxa::Core {

class Thread::NotifyThreadComplete : public NotificationTo<Thread::Listener> {
 public:
  explicit NotifyThreadComplete(const boost::shared_ptr<Thread>& thread) : m_spThread(thread) {}

 private:
  void Tell(Listener& listener) override { listener.OnThreadComplete(m_spThread); }

  const boost::shared_ptr<Thread> m_spThread;
};

class Thread::NotifyThreadError : public NotificationTo<Thread::Listener> {
 public:
  NotifyThreadError(const boost::shared_ptr<Thread>& thread, Error& error)
      : m_spThread(thread), m_error(error) {}

 private:
  void Tell(Listener& listener) override { listener.OnThreadError(m_spThread, m_error); }

  const boost::shared_ptr<Thread> m_spThread;
  Error& m_error;
};

}  // namespace Oxa::Core

#endif
