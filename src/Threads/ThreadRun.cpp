// The road of a thread from its first instruction to its last step.
#include <Infrastructure/OxaCore/Assert.h>
#include <Infrastructure/OxaCore/Thread.h>

#include <string>

#include "Core/LibraryState.h"
#include "ErrorHandling/AlertTraffic.h"
#include "ErrorHandling/Hooks.h"
#include "ErrorHandling/LiveRaises.h"
#include "Threads/KillSafeLocks.h"
#include "Threads/ThreadKeeping.h"
#include "Threads/ThreadNotifications.h"

#include "Platform/Faults.h"
#include "Platform/Kill.h"
#include "Platform/Machine.h"
#include "Platform/NativeThread.h"

namespace Oxa::Core {

namespace {

constexpr char sLOG_NAME[] = "Oxa.Core.Thread";
constexpr char sTHREAD[] = "Thread ";
constexpr char sERROR_FROM_THREAD[] = " terminated due to error thrown from Run():\n";
constexpr char sERROR_FROM_TASK[] = " terminated due to error:\n";
constexpr char sUNKNOWN_FROM_THREAD[] = " terminated due to an unknown error thrown from Thread Run()";
constexpr char sUNKNOWN_FROM_TASK[] = " terminated due to an unknown error thrown from Task Run()";

constexpr int iNO_RESULT_YET = -1;
constexpr unsigned int uNO_RESULT = 1;
constexpr unsigned int uNO_TASK = 2;

void ForgetRaises(void*) {
  LiveRaises::DropThisThread();
  AlertInFlight::DropThisThread();
}

}  // namespace

// One run's use of the object, given up at the end of the run whichever way it ends. A thread that ends from within
// its task, by an exit or a cancellation, leaves the state as it is: it counts as ended by the system.
class Thread::LastStep {
 public:
  explicit LastStep(Thread& thread) : m_thread(thread) { m_thread.AddRef(); }
  LastStep(const LastStep&) = delete;
  LastStep& operator=(const LastStep&) = delete;
  ~LastStep() {
    const Platform::HoldCancellation hold;
    if (!m_bReached) Platform::NativeThread::CountAsEnded();
    m_thread.Release();
    m_thread.EndRun();
  }

  void Reached() { m_bReached = true; }

 private:
  Thread& m_thread;  // may be gone after EndRun
  bool m_bReached = false;
};

unsigned int Thread::Invoker(void* argument) {
  TheHooks().translateFaults();
  Thread* const thread = static_cast<Thread*>(argument);
  if (!OXA_ASSERT(thread != 0)) return uNO_RESULT;
  const Platform::KillCleanUp cleanUp(&ForgetRaises, nullptr);
  LastStep lastStep(*thread);
  const unsigned int result = thread->Invoke();
  lastStep.Reached();
  return result;
}

// Nothing but a cancellation leaves. A failure that can't even be kept, for want of memory, leaves the thread
// running for its owner until IsAlive finds it gone.
unsigned int Thread::Invoke() {
  unsigned int result = uNO_RESULT;
  try {
    try {
      m_threadID = GetCurrentId();
      SetState(eTHREAD_RUNNING);
      result = Run();
    } catch (Error& error) {
      FailBy(error, sERROR_FROM_THREAD);
    } catch (...) {
      Platform::LetCancellationPass();
      FailByUnknown(sUNKNOWN_FROM_THREAD);
    }
  } catch (...) {
    Platform::LetCancellationPass();
    Platform::NativeThread::CountAsEnded();
  }
  return result;
}

unsigned int Thread::Run() {
  OXA_ASSERT(IsCurrentThread());
  Task* const task = FindTask();
  if (task == nullptr) return uNO_TASK;
  m_result = iNO_RESULT_YET;
  m_bTaskStarted = true;
  RunTask(*task);
  return static_cast<unsigned int>(m_result.load());
}

// The listeners hear of a missing task here and, where the raise throws, once more from its catch clause.
Task* Thread::FindTask() {
  {
    const UnkillableLock lock(m_mutex);
    SetWindowsThreadName();
    if (m_spTask != nullptr) return m_spTask.get();
  }
  NullTaskPointer error(CopyOfName());
  SetLastError(error, true);
  SetState(eTHREAD_ERROR);
  OXA_RAISE_ERROR(sLOG_NAME, error);
  return nullptr;
}

// From the end of the task on a kill comes too late: what follows is the library's own.
void Thread::RunTask(Task& task) {
  try {
    m_result = task.Run(*this);
    Platform::NativeThread::RefuseKills();
    SetState(eTHREAD_COMPLETED);
  } catch (Error& error) {
    Platform::NativeThread::RefuseKills();
    FailBy(error, sERROR_FROM_TASK);
  } catch (...) {
    Platform::LetCancellationPass();
    Platform::NativeThread::RefuseKills();
    FailByUnknown(sUNKNOWN_FROM_TASK);
  }
}

// While what ended the task is being handled, here and below: a cancellation that a listener let in would meet clauses
// that catch everything, and end the process. It comes too late, as a kill does.
void Thread::FailBy(Error& error, const char* cause) {
  const Platform::HoldCancellation hold;
  SetLastError(error, true);
  SetState(eTHREAD_ERROR);
  if (IsLibraryUnloading()) return;
  TheHooks().logThreadError(sTHREAD + CopyOfName() + cause + error.GetData(Error::sMESSAGE));
}

void Thread::FailByUnknown(const char* cause) {
  const Platform::HoldCancellation hold;
  UnknownError error(sTHREAD + CopyOfName() + cause);
  SetLastError(error, true);
  SetState(eTHREAD_ERROR);
  LogErrorRaised(error);
}

void Thread::LogErrorRaised(Error& error) {
  error.SetData(Error::sLOG_NAME, sLOG_NAME);
  if (!IsLibraryUnloading()) TheHooks().logErrorRaised(error);
}

// Always a new object: who has got the last one goes on reading it.
void Thread::SetLastError(Error& error, bool notify) {
  const boost::shared_ptr<Error> kept(new Error(Error::eERROR));
  kept->Copy(error, false);
  KeepLastError(kept);
  const boost::shared_ptr<Thread> self = m_wpThis.lock();
  if (!notify || self == nullptr) return;  // a dying thread is handed to nobody
  NotifyThreadError notification(self, error);
  m_listeners.Broadcast(notification);
}

void Thread::KeepLastError(boost::shared_ptr<Error> error) {
  const Platform::ShortGuard guard(g_threadKeeping);
  m_spLastError.swap(error);
}

void Thread::SetWindowsThreadName() { Platform::TellThreadName(m_name.c_str()); }

}  // namespace Oxa::Core
