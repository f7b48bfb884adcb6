#include "Platform/Linux/DumpThreads.h"

#if defined(__x86_64__)

#include <errno.h>
#include <fcntl.h>
#include <linux/ptrace.h>
#include <sched.h>
#include <string.h>
#include <sys/wait.h>
#include <time.h>

#include <algorithm>

#include "Platform/Linux/DumpFile.h"
#include "Platform/Linux/DumpFolder.h"
#include "Platform/Linux/DumpText.h"
#include "Platform/Linux/RawCall.h"

namespace Oxa::Core::Platform {

namespace {

constexpr long lPOLL_NANOSECONDS = 20000;

// Where a thread stands that isn't ours: "number of the call, six arguments, stack, place", or "running".
void ReadPlace(int tasks, DumpThread& thread) noexcept {
  DumpText name;
  name << static_cast<std::uint64_t>(thread.m_iId) << "/syscall";
  const long handle = RawCall(SYS_openat, tasks, RawArgument(name.Get()), O_RDONLY | O_CLOEXEC);
  if (handle < 0) return;
  char text[256] = {};
  const long length = RawCall(SYS_read, handle, RawArgument(text), sizeof text - 1);
  RawCall(SYS_close, handle);
  if (length <= 0 || text[0] == 'r') return;
  // A call has six arguments; "-1" for none has none.
  const char* at = SkipWords(text, text[0] == '-' ? 1 : 7);
  if (!BeginsWith(at, "0x")) return;
  at += 2;
  thread.m_uStack = TakeNumber(at, 16);
  if (!BeginsWith(at, " 0x")) return;
  at += 3;
  thread.m_uPlace = TakeNumber(at, 16);
  thread.m_eState = DumpThread::ePLACE;
}

// Whether the thread has come to a stop, or is no more.
void LookAt(DumpThread& thread) noexcept {
  int status = 0;
  const long waited = RawCall(SYS_wait4, thread.m_iId, RawArgument(&status), WNOHANG | __WALL);
  if (waited == 0 || waited == -EINTR) return;
  if (waited < 0 || !WIFSTOPPED(status)) {
    thread.m_eState = DumpThread::eRUNNING;
    return;
  }
  thread.m_eState = DumpThread::eSTOPPED;
  if (status >> 16 != PTRACE_EVENT_STOP) thread.m_iSignal = WSTOPSIG(status);
}

}  // namespace

void DumpThreads::Add(int id, DumpThread::EState state) noexcept {
  if (m_uCount == uTHREADS) return;
  m_threads[m_uCount] = DumpThread{};
  m_threads[m_uCount].m_iId = id;
  m_threads[m_uCount].m_eState = state;
  ++m_uCount;
}

void DumpThreads::AddCaller(int id, const CONTEXT& context) noexcept {
  m_pCaller = &context;
  Add(id, DumpThread::eCALLER);
}

bool DumpThreads::Knows(int id) noexcept {
  return std::any_of(begin(), end(), [id](const DumpThread& thread) { return thread.m_iId == id; });
}

std::size_t DumpThreads::AddFrom(int tasks, int spared) noexcept {
  const std::size_t before = m_uCount;
  ForNamesIn(tasks, [this, spared](const char* name) {
    const int id = static_cast<int>(TakeNumber(name, 10));
    if (id != 0 && id != spared && !Knows(id)) Add(id, DumpThread::eRUNNING);
  });
  return m_uCount - before;
}

void DumpThreads::ReadPlaces(int tasks) noexcept {
  for (DumpThread& thread : *this)
    if (thread.m_eState == DumpThread::eRUNNING) ReadPlace(tasks, thread);
}

void DumpThreads::Seize() noexcept {
  for (DumpThread& thread : *this) {
    if (thread.m_eState != DumpThread::eRUNNING) continue;
    if (RawCall(SYS_ptrace, PTRACE_SEIZE, thread.m_iId) != 0) continue;
    RawCall(SYS_ptrace, PTRACE_INTERRUPT, thread.m_iId);
    thread.m_eState = DumpThread::eWAITING;
  }
}

void DumpThreads::AwaitStops(std::int64_t deadline) noexcept {
  for (;;) {
    bool waiting = false;
    for (DumpThread& thread : *this) {
      if (thread.m_eState == DumpThread::eWAITING) LookAt(thread);
      waiting = waiting || thread.m_eState == DumpThread::eWAITING;
    }
    if (!waiting || DumpClock() > deadline) return;
    const timespec pause = {0, lPOLL_NANOSECONDS};
    RawCall(SYS_nanosleep, RawArgument(&pause));
  }
}

bool DumpThreads::Stop(int tasks, int spared, std::int64_t deadline) noexcept {
  constexpr int iROUNDS = 8;
  for (int round = 0; round < iROUNDS; ++round) {
    Seize();
    AwaitStops(deadline);
    if (AddFrom(tasks, spared) == 0) break;
  }
  return std::any_of(begin(), end(),
                     [](const DumpThread& thread) { return thread.m_eState == DumpThread::eSTOPPED; });
}

void DumpThreads::Resume() noexcept {
  for (DumpThread& thread : *this)
    if (thread.m_eState == DumpThread::eSTOPPED)
      RawCall(SYS_ptrace, PTRACE_DETACH, thread.m_iId, 0, thread.m_iSignal);
}

void DumpThreads::Remove(DumpThread* thread) noexcept {
  std::copy(thread + 1, end(), thread);
  --m_uCount;
}

}  // namespace Oxa::Core::Platform

#endif
