// The last resort.
#include <Infrastructure/OxaCore/Thread.h>

#include "ErrorHandling/SystemErrorMessage.h"
#include "Threads/KillSafeLocks.h"

#include "Platform/Kill.h"
#include "Platform/NativeThread.h"

namespace Oxa::Core {

namespace {

constexpr char sLOG_NAME[] = "Oxa.Core.Thread.Kill";
constexpr unsigned int uEXIT_CODE = 0xDEAD;
constexpr Elapse s_patience(10, Elapse::Seconds);
constexpr long long llPATIENCE_MS = 10000;
constexpr long iPOLL_MS = 10;

/// Raises a flag for the length of a scope, unless it is up already; a killer that is killed lowers it, too.
class RaisedFlag {
 public:
  explicit RaisedFlag(std::atomic<bool>& flag)
      : m_flag(flag), m_bMine(!flag.exchange(true)), m_cleanUp(&Lower, this) {
    m_hold.Release();
  }
  RaisedFlag(const RaisedFlag&) = delete;
  RaisedFlag& operator=(const RaisedFlag&) = delete;
  ~RaisedFlag() {
    m_hold.Take();
    Lower(this);
  }

  bool IsMine() const { return m_bMine; }

 private:
  static void Lower(void* raised) {
    const RaisedFlag& self = *static_cast<RaisedFlag*>(raised);
    if (self.m_bMine) self.m_flag = false;
  }

  Platform::HoldKill m_hold;  // first and last: the flag and its clean-up come and go as one
  std::atomic<bool>& m_flag;
  const bool m_bMine;
  const Platform::KillCleanUp m_cleanUp;
};

}  // namespace

bool Thread::Kill(const Elapse& timeout) {
  const boost::shared_ptr<Thread> self = m_wpThis.lock();  // the victim's reference goes before we are done
  if (!IsAlive()) return true;
  const Handle native = GetHandle();  // of this run; a new one has another
  AwaitTaskStart();
  if (!IsRunning()) return true;
  if (!m_bTaskStarted) return false;
  KillNative(*native);
  return timeout == Elapse(0) || TimedWaitForState(eTHREAD_NOT_RUNNING, timeout);
}

// A thread that is still starting holds what others need.
void Thread::AwaitTaskStart() const {
  const Time deadline(s_patience);
  while (!m_bTaskStarted && IsRunning() && deadline.TimeLeft() > Elapse(0))
    OxaSleep(iPOLL_MS, Elapse::MilliSeconds, false);
}

void Thread::KillNative(Platform::NativeThread& native) {
  if (IsCurrentThread()) native.Kill(uEXIT_CODE, Platform::Deadline::Never());  // doesn't return
  const RaisedFlag killing(m_bKilling);
  if (!killing.IsMine()) return;
  const auto deadline = Platform::Deadline::InMilliseconds(llPATIENCE_MS);
  const Platform::NativeThread::KillResult result = native.Kill(uEXIT_CODE, deadline);
  if (result.m_eEnd == Platform::NativeThread::EKillEnd::eKILLED) {
    BuryKilled();
  } else if (result.m_eEnd == Platform::NativeThread::EKillEnd::eFAILED) {
    OXA_RAISE_ERROR(sLOG_NAME, OSError(SystemErrorMessage(static_cast<unsigned long>(result.m_iCode))));
  }
}

// Does for the dead thread what would have been its own last steps.
void Thread::BuryKilled() {
  struct Burial {
    Thread& m_thread;
    ~Burial() {
      m_thread.Release();
      m_thread.EndRun();
    }
  } burial{*this};
  ThreadKilled error(CopyOfName());
  SetLastError(error, true);
  SetState(eTHREAD_ERROR);
  LogErrorRaised(error);
}

Thread::Handle Thread::GetHandle() const {
  const ForsakenMonitorLock lock(m_stateCondition);
  return m_hThread;
}

}  // namespace Oxa::Core
