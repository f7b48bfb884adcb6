#include <Infrastructure/OxaCore/Thread.h>

#include <Infrastructure/OxaCore/Assert.h>

#include <cstdio>

#include "Threads/KillSafeLocks.h"
#include "Threads/ThreadKeeping.h"

#include "Platform/Faults.h"
#include "Platform/NativeThread.h"

namespace Oxa::Core {

namespace {

constexpr char sDEFAULT_NAME[] = "OxaThread %04d";
constexpr int iLAST_NUMBER = 10000;
constexpr int iRESULT_OF_NOBODY = -1;
constexpr Elapse s_patienceForTask(5, Elapse::Seconds);
constexpr Elapse s_patienceForUsers(2, Elapse::Seconds);

std::atomic<int> s_iNextNumber{0};

int TakeNumber() {
  int number = s_iNextNumber.load();
  while (!s_iNextNumber.compare_exchange_weak(number, number == iLAST_NUMBER ? 0 : number + 1)) {
  }
  return number;
}

std::string DefaultName() {
  char name[32];
  std::snprintf(name, sizeof name, sDEFAULT_NAME, TakeNumber());
  return name;
}

}  // namespace

Platform::ShortLock g_threadKeeping;

Thread::Listener::Listener() = default;
Thread::Listener::~Listener() = default;
void Thread::Listener::OnThreadComplete(boost::shared_ptr<Thread>) {}
void Thread::Listener::OnThreadError(boost::shared_ptr<Thread>, Error&) {}

boost::shared_ptr<Thread> Thread::Create(const std::string& name) {
  boost::shared_ptr<Thread> thread(new Thread);
  thread->m_wpThis = thread;
  if (!name.empty()) thread->SetName(name);
  return thread;
}

Thread::Thread()
    : m_eState(eTHREAD_IDLE),
      m_stateCondition(true),
      m_bStopRequested(false),
      m_stackSize(0),
      m_name(DefaultName()),
      m_threadID(0),
      m_ePriority(ePRIORITY_NORMAL),
      m_result(iRESULT_OF_NOBODY),
      m_bTaskStarted(false),
      m_listeners(NotificationSupport::eFIRST_ADDED_FIRST),
      m_iRuns(0),
      m_iAwaited(0),
      m_bKilling(false) {
  const UnkillableLock lock(s_mutex);
  m_stackSize = s_defaultStackSize;
}

// What can raise on the way ends here, and so does the cancellation of the thread: nothing leaves a destructor.
Thread::~Thread() {
  const Platform::HoldCancellation hold;
  try {
    if (IsRunning()) {
      Stop(Elapse(0, Elapse::Seconds));
      const bool ok = TimedWaitForState(eTHREAD_NOT_RUNNING, s_patienceForTask);
      OXA_ASSERT(ok);
    }
    const bool ok = PollForZeroRefCount(s_patienceForUsers, Elapse(100, Elapse::MilliSeconds));
    OXA_ASSERT(ok);
  } catch (...) {
  }
}

Thread::EState Thread::GetState() { return m_eState.load(); }

bool Thread::IsState(int mask) const {
  const EState state = m_eState.load();
  return (state & mask) == state;
}

bool Thread::IsRunning() const { return IsState(eTHREAD_RUNNING); }

bool Thread::HasBegun() const { return IsState(eTHREAD_RUNNING | eTHREAD_COMPLETED | eTHREAD_ERROR); }

bool Thread::HasCompleted() const { return IsState(eTHREAD_COMPLETED); }

// While Kill is at work it is for Kill to tell what became of the thread.
bool Thread::IsAlive() const {
  const ForsakenMonitorLock lock(m_stateCondition);
  if (!IsRunning()) return false;
  unsigned int exitCode;
  if (m_bKilling || m_hThread == nullptr || !m_hThread->HasEnded(exitCode)) return true;
  Thread& self = const_cast<Thread&>(*this);
  OSThreadTermination error(CopyOfName());
  self.SetLastError(error, true);
  self.SetState(eTHREAD_ERROR);
  return false;
}

bool Thread::IsCurrentThread() const { return !IsState(eTHREAD_NOT_RUNNING) && m_threadID == GetCurrentId(); }

int Thread::GetResult() const { return m_result; }

boost::shared_ptr<Error> Thread::GetLastError() {
  const Platform::ShortGuard guard(g_threadKeeping);
  return m_spLastError;
}

boost::shared_ptr<Task> Thread::GetTask() {
  const UnkillableLock lock(m_mutex);
  return m_spTask;
}

unsigned long Thread::GetThreadID() const { return m_threadID; }

unsigned long Thread::GetCurrentId() { return Platform::CurrentThreadId(); }

const std::string& Thread::GetName() const {
  const UnkillableLock lock(m_mutex);
  return m_name;
}

std::string Thread::CopyOfName() const {
  const UnkillableLock lock(m_mutex);
  return m_name;
}

void Thread::SetName(const std::string& name) {
  const UnkillableLock lock(m_mutex);
  m_name = name;
}

void Thread::AddListener(Listener& listener) {
  const Platform::HoldKill hold;
  m_listeners.AddListener(listener);
}

void Thread::RemoveListener(Listener& listener) {
  const Platform::HoldKill hold;
  m_listeners.RemoveListener(listener);
}

}  // namespace Oxa::Core
