// Starting a thread, and what its start goes by.
#include <Infrastructure/OxaCore/Assert.h>
#include <Infrastructure/OxaCore/Thread.h>

#include <atomic>
#include <cstdint>

#include "Threads/KillSafeLocks.h"
#include "Threads/ThreadKeeping.h"

#include "Platform/NativeThread.h"

namespace Oxa::Core {

namespace {

constexpr unsigned long uLEAST_STACK = 65536;
constexpr unsigned long uMOST_STACK = 1048576;

// What the platform calls the priorities 0 to 10.
constexpr int iPLATFORM_PRIORITIES[] = {-15, -2, -2, -2, -1, 0, 1, 2, 2, 2, 15};

// Tasks that run on although they shouldn't. They are never destroyed, and can be found here.
struct KeptTask {
  boost::shared_ptr<Task> m_spTask;
  KeptTask* m_pNext;
};
std::atomic<KeptTask*> s_pKeptTasks{nullptr};

void KeepForEver(const boost::shared_ptr<Task>& task) {
  auto* const kept = new KeptTask{task, s_pKeptTasks.load()};
  while (!s_pKeptTasks.compare_exchange_weak(kept->m_pNext, kept)) {
  }
}

}  // namespace

unsigned long Thread::s_defaultStackSize = uLEAST_STACK;
unsigned long Thread::s_minStackSize = uLEAST_STACK;
unsigned long Thread::s_maxStackSize = uMOST_STACK;
unsigned long Thread::s_stackSizeMultiplier = 1;
unsigned long Thread::s_stackSizeOffset = 0;

bool Thread::Start(boost::shared_ptr<Task> p_spTask, const Elapse& timeout) {
  OXA_ASSERT(IsState(eTHREAD_NOT_RUNNING));
  OXA_ASSERT(p_spTask);
  if (!StartNative(p_spTask)) {
    SetState(eTHREAD_ERROR);
    return false;
  }
  return timeout == Elapse(0) || TimedWaitForState(eTHREAD_RUNNING, timeout);
}

bool Thread::StartNative(const boost::shared_ptr<Task>& task) {
  KeepLastError(boost::shared_ptr<Error>());
  SetTask(task);
  ResetStopFlag();
  m_bTaskStarted = false;
  const Handle native = Platform::NativeThread::Create();
  SetHandle(native);
  if (native == nullptr || !RunNative(native)) return false;
  const EPriority priority = GetPriority();
  if (priority != ePRIORITY_NORMAL) native->SetPriority(GetPlatformSpecificPriority(priority));
  return true;
}

// The new thread tells its id as well, and whoever is first is right: a late one could meet the id of a next run.
bool Thread::RunNative(const Handle& native) {
  BeginRun();
  unsigned long before = m_threadID;
  unsigned long id;
  if (Platform::NativeThread::Start(native, PlatformStackSize(), &Invoker, this, id) != 0) {
    EndRun();
    return false;
  }
  m_threadID.compare_exchange_strong(before, id);
  return true;
}

// Before the thread runs: whoever finds it running asks its handle whether it is alive.
void Thread::SetHandle(const Handle& handle) {
  const ForsakenMonitorLock lock(m_stateCondition);
  m_hThread = handle;
}

// The run has no reference of its own, since a kill would leave that behind. A task that runs on although it
// shouldn't is never destroyed under its thread.
void Thread::SetTask(const boost::shared_ptr<Task>& task) {
  boost::shared_ptr<Task> replaced(task);  // its destructor runs under no lock
  {
    const UnkillableLock lock(m_mutex);
    m_spTask.swap(replaced);
  }
  if (!OXA_ASSERT(IsState(eTHREAD_NOT_RUNNING))) KeepForEver(replaced);
}

// The keep-alive belongs to the run: one that is restarted from its last step has two.
void Thread::BeginRun() {
  const boost::shared_ptr<Thread> self(m_wpThis);
  const Platform::ShortGuard guard(g_threadKeeping);
  if (m_iRuns++ == 0) m_spSelf = self;
}

void Thread::EndRun() {
  boost::shared_ptr<Thread> last;  // dropped last of all, and this object perhaps with it
  const Platform::ShortGuard guard(g_threadKeeping);
  if (--m_iRuns == 0) last.swap(m_spSelf);
}

// In 32 bits throughout, whatever the width of a long.
unsigned int Thread::PlatformStackSize() const {
  unsigned long size = GetStackSize();
  const UnkillableLock lock(s_mutex);
  if (size < s_minStackSize) size = s_minStackSize;
  if (size > s_maxStackSize) size = s_maxStackSize;
  return static_cast<std::uint32_t>(s_stackSizeMultiplier) * static_cast<std::uint32_t>(size) +
         static_cast<std::uint32_t>(s_stackSizeOffset);
}

int Thread::GetPlatformSpecificPriority(EPriority priority) {
  if (priority <= ePRIORITY_IDLE) return iPLATFORM_PRIORITIES[ePRIORITY_IDLE];
  if (priority >= ePRIORITY_TIME_CRITICAL) return iPLATFORM_PRIORITIES[ePRIORITY_TIME_CRITICAL];
  return iPLATFORM_PRIORITIES[priority];
}

Thread::EPriority Thread::GetPriority() {
  const UnkillableLock lock(m_mutex);
  return m_ePriority;
}

void Thread::SetPriority(EPriority priority) {
  {
    const UnkillableLock lock(m_mutex);
    m_ePriority = priority;
  }
  const ForsakenMonitorLock lock(m_stateCondition);
  if (IsRunning() && m_hThread != nullptr) m_hThread->SetPriority(GetPlatformSpecificPriority(priority));
}

unsigned long Thread::GetStackSize() const {
  const UnkillableLock lock(m_mutex);
  return m_stackSize;
}

void Thread::SetStackSize(unsigned long size) {
  const UnkillableLock lock(m_mutex);
  m_stackSize = size;
}

void Thread::SetDefaultStackSize(unsigned long size) {
  const UnkillableLock lock(s_mutex);
  s_defaultStackSize = size;
}

void Thread::SetStackSizeLimits(unsigned long minSize, unsigned long maxSize) {
  OXA_ASSERT(minSize <= maxSize);
  const UnkillableLock lock(s_mutex);
  s_minStackSize = minSize;
  s_maxStackSize = maxSize;
}

void Thread::SetStackSizeTransform(unsigned long offset, unsigned long multiplier) {
  const UnkillableLock lock(s_mutex);
  s_stackSizeOffset = offset;
  s_stackSizeMultiplier = multiplier;
}

}  // namespace Oxa::Core
