// The end of a thread of a self-test, also where an assertion fails.
#ifndef OXACORE_AUTOTEST_MODULE_ENDOFTHREAD_H
#define OXACORE_AUTOTEST_MODULE_ENDOFTHREAD_H

#include <Infrastructure/OxaCore/Thread.h>

namespace Oxa::Core {

/// Whatever becomes of the test, what the thread was started for has ended when this object is gone, however long that
/// takes: it may use what is on the test's stack. It is asked to stop again and again. A thread that is started a
/// second time may not have begun anew by then, and must not use the stack.
class EndOfThread {
 public:
  explicit EndOfThread(const boost::shared_ptr<Thread>& thread) : m_spThread(thread) {}
  EndOfThread(const EndOfThread&) = delete;
  EndOfThread& operator=(const EndOfThread&) = delete;
  ~EndOfThread() {
    constexpr int iHAS_BEGUN = Thread::eTHREAD_RUNNING | Thread::eTHREAD_COMPLETED | Thread::eTHREAD_ERROR;
    if (m_spThread->GetTask())
      m_spThread->WaitForState(iHAS_BEGUN);  // before that, nothing can be asked of it
    while (m_spThread->IsRunning()) m_spThread->Stop(Elapse(50, Elapse::MilliSeconds));
  }

 private:
  const boost::shared_ptr<Thread> m_spThread;
};

}  // namespace Oxa::Core

#endif
