// "LogManager Thread": what it does, and how it is started and stopped.
#include <Infrastructure/OxaCore/LogManager.h>

#include "Core/LibraryState.h"
#include "Log/DefaultLogService.h"
#include "Log/LogBatch.h"
#include "Log/ParkedThread.h"
#include "Platform/Faults.h"
#include "Platform/Files.h"
#include "Platform/Machine.h"
#include "Platform/Threads.h"

namespace Oxa::Core {

namespace {

const char* const sTHREAD = "LogManager Thread";

constexpr long long llTO_BEGIN_MS = 10000;
constexpr long long llFOR_EACH_ENTRY_MS = 100;
constexpr Elapse s_toStop(1);
constexpr Elapse s_toEndAtShutdown(10);
constexpr Elapse s_toEndAtSwitch(1);
constexpr Elapse s_toBeKilled(1);

// For a task that isn't owned.
struct KeepAlive {
  void operator()(Task*) const noexcept {}
};

// Polls, for as long as that may last.
template <class Condition>
bool Await(long long milliseconds, const Condition& condition) {
  const Platform::Deadline deadline = Platform::Deadline::InMilliseconds(milliseconds);
  while (!condition() && !deadline.HasPassed()) OxaSleep(1, Elapse::MilliSeconds, false);
  return condition();
}

// A number that is 0 again at the end of a scope.
class Shown {
 public:
  Shown(std::atomic<std::size_t>& place, std::size_t number) noexcept : m_place(place) {
    m_place.store(number, std::memory_order_release);
  }
  Shown(const Shown&) = delete;
  Shown& operator=(const Shown&) = delete;
  ~Shown() { m_place.store(0, std::memory_order_release); }

 private:
  std::atomic<std::size_t>& m_place;
};

// Of the thread, whichever way it ends: the system gives ids to new threads.
class OwnId {
 public:
  explicit OwnId(std::atomic<unsigned long>& id) noexcept : m_id(id) {
    m_id.store(Platform::CurrentThreadId());
  }
  OwnId(const OwnId&) = delete;
  OwnId& operator=(const OwnId&) = delete;
  ~OwnId() { m_id.store(0); }

 private:
  std::atomic<unsigned long>& m_id;
};

}  // namespace

// What the thread of the process that forked this one off has in hand is that one's to send. It may have been in the
// middle of it, and is left as it is.
bool LogManager::StartThread() {
  if (m_ulProcess != Platform::ProcessId()) {
    std::unique_ptr<LogBatch> own(new LogBatch);
    own.swap(m_pTaken);
    static_cast<void>(own.release());
  }
  m_ulProcess = Platform::ProcessId();
  m_spThread = Thread::Create(sTHREAD);
  return m_spThread->Start(boost::shared_ptr<Task>(this, KeepAlive()));
}

int LogManager::Run(TaskDirective& directive) {
  const OwnId ownId(m_ulThread);
  const Platform::FileLimitGuard guard;  // once for all entries
  SendTaken(&directive);                 // what a thread before this one was ended over
  while (!directive.MustStop()) {
    while (SendNext(directive)) {
    }
  }
  m_queue.Drain();
  return 0;
}

// Where entries go to the file, all that wait are taken; a service or a handler gets one, and the queue stays what it
// is meanwhile. Whoever finds the queue empty, by its lock, behind the pop finds the number as well. The release is
// passed on behind the last look at the semaphore, which may have swallowed it. False if nothing was in the queue.
bool LogManager::SendNext(TaskDirective& directive) {
  Semaphore& waiting = m_queue.GetSemaphore();
  waiting.Wait();
  const std::size_t most = 1 + (m_bTogether ? waiting.TryWaitForSome(LogBatch::uMOST - 1) : 0);
  m_queue.WakeNext();
  const Shown taken(m_uTaken, most);
  m_pTaken->TakeFrom(m_queue, most);
  if (m_pTaken->IsEmpty()) return false;
  SendTaken(&directive);
  return true;
}

// A thread that is to stop only throws them away; null is none. A handler may come back here, and goes on with the
// rest.
void LogManager::SendTaken(TaskDirective* directive) {
  while (!m_pTaken->IsEmpty()) {
    if (directive != nullptr && (directive->MustStop() || IsLibraryUnloading())) return m_pTaken->DropAll();
    m_bTogether = SendTogether();
    if (!m_bTogether) SendLogMessage(m_pTaken->Next(), false);
  }
}

// To the file, as many as make a good piece. False, and nothing has happened, if somebody is there to take them.
bool LogManager::SendTogether() {
  try {
    const ReaderLock reading(m_serviceMutex);
    if (m_bHasHandlers.load() && !IsDefaultInForce()) return false;
    return m_pDefaultService->WriteTogether(*m_pTaken) != 0;
  } catch (...) {
    Platform::LetCancellationPass();
    return false;
  }
}

bool LogManager::OnOwnThread() const noexcept { return m_ulThread.load() == Platform::CurrentThreadId(); }

// A child that was forked off has a manager, but not its thread. One that was started a moment ago may not have
// begun, and can't be asked anything until then. A handler may have ended it.
bool LogManager::IsThreadRunning() const {
  if (!m_spThread || m_ulProcess != Platform::ProcessId()) return false;
  Await(llTO_BEGIN_MS, [this] { return m_spThread->HasBegun(); });
  return m_spThread->IsAlive();
}

void LogManager::AskThreadToStop() {
  m_spThread->Stop(Elapse(0));
  m_queue.SetReleased(true);
}

bool LogManager::AwaitThread(const Elapse& timeout) {
  return !OnOwnThread() && m_spThread->TimedWaitForState(Thread::eTHREAD_NOT_RUNNING, timeout);
}

// The queue is released before the wait: the thread sleeps on it, and could not see that it is to stop.
void LogManager::StopThread() {
  if (IsThreadRunning()) {
    AskThreadToStop();
    if (!AwaitThread(s_toStop)) AwaitThread(s_toEndAtShutdown);
  }
  m_queue.Drain();
}

// One that hangs in a handler must not come back to a manager that is gone.
void LogManager::KillStuckThread() {
  if (!OnOwnThread() && IsThreadRunning()) m_spThread->Kill(s_toBeKilled);
  ParkThread(m_spThread);
}

void LogManager::SetBufferingMode(bool on) {
  if (OnOwnThread()) {
    SwitchOnOwnThread(on);
    return;
  }
  const Lock lock(m_threadMutex);
  if (m_bBuffering.exchange(on) == on) return;
  if (on) {
    SwitchOn();
  } else {
    SwitchOff();
  }
}

// A handler or a service that is being called by the thread.
void LogManager::SwitchOnOwnThread(bool on) {
  if (m_bBuffering.exchange(on) == on) return;
  if (on) {
    m_spThread->ResetStopFlag();
    m_queue.SetReleased(false);
  } else {
    SendWaitingHere();
    AskThreadToStop();
  }
}

// Where no new thread can be had, or the old one doesn't end, entries go on to be sent directly.
void LogManager::SwitchOn() {
  const bool isFree = !m_bShutDown && (!IsThreadRunning() || AwaitThread(s_toEndAtSwitch));
  m_queue.SetReleased(false);
  if (!isFree || !StartThread()) m_bBuffering.store(false);
}

void LogManager::SwitchOff() {
  m_queue.SetReleased(true);
  if (IsThreadRunning()) {
    AwaitEmptyQueue();
    m_spThread->Stop(s_toStop);
    AwaitThread(s_toEndAtSwitch);
  }
  // A handler may have ended the thread, before or meanwhile; asked to stop it leaves nothing itself.
  if (!IsThreadRunning() && !m_bShutDown && m_ulProcess == Platform::ProcessId()) SendWaitingHere();
  m_queue.Drain();
  if (!IsThreadRunning()) m_spThread.reset();
}

// As many times as entries wait at that moment.
void LogManager::AwaitEmptyQueue() {
  for (std::size_t turn = 0; turn < CountWaiting(); ++turn) {
    Await(llFOR_EACH_ENTRY_MS, [this] { return CountWaiting() == 0 || !IsThreadRunning(); });
  }
}

// What the thread has taken out and not sent yet counts: asked to stop in that moment it would throw it away.
std::size_t LogManager::CountWaiting() const {
  const std::size_t count = m_queue.GetCount();
  return count + m_uTaken.load();
}

void LogManager::SendWaitingHere() {
  do {
    SendTaken(nullptr);
    m_pTaken->TakeFrom(m_queue, 1);
  } while (!m_pTaken->IsEmpty());
}

}  // namespace Oxa::Core
