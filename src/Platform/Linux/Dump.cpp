#include "Platform/Dump.h"

#if defined(__x86_64__)

#include <errno.h>
#include <fcntl.h>
#include <linux/futex.h>
#include <linux/prctl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <time.h>

#include <atomic>

#include "Platform/Ending.h"
#include "Platform/Linux/Clone.h"
#include "Platform/Linux/DumpSource.h"
#include "Platform/Linux/FileName.h"
#include "Platform/Linux/RawCall.h"

namespace Oxa::Core::Platform {

namespace {

constexpr std::size_t uSTACK = 128 * 1024;
constexpr long lMASK_SIZE = 8;  // of the kernel's set of signals
constexpr std::int64_t iMILLISECOND = 1000000;

// The ways of the helper's end.
enum EEnd : int { eWRITTEN = 0, eNOTHING_STOPPED = 1 };

std::atomic_flag s_busy = ATOMIC_FLAG_INIT;
DumpSource s_source;
alignas(64) unsigned char s_stack[uSTACK];
std::atomic<int> s_iHelper{0};  // its id for as long as it lives; the system takes it away
std::atomic<int> s_iMayStart{0};

// Blocks all signals of the calling thread: no handler of the process is to run meanwhile, here or in the helper,
// which inherits this. What a write beyond the limit for files has sent is taken away.
class NoSignals {
 public:
  NoSignals() noexcept {
    const unsigned long all = ~0UL;
    RawCall(SYS_rt_sigprocmask, SIG_SETMASK, RawArgument(&all), RawArgument(&m_ulBefore), lMASK_SIZE);
  }
  NoSignals(const NoSignals&) = delete;
  NoSignals& operator=(const NoSignals&) = delete;
  ~NoSignals() {
    const unsigned long limit = 1UL << (SIGXFSZ - 1U);
    const timespec now = {0, 0};
    RawCall(SYS_rt_sigtimedwait, RawArgument(&limit), 0, RawArgument(&now), lMASK_SIZE);
    RawCall(SYS_rt_sigprocmask, SIG_SETMASK, RawArgument(&m_ulBefore), 0, lMASK_SIZE);
  }

 private:
  unsigned long m_ulBefore = 0;
};

// A dump holds what the process held: it is for the owner's eyes.
int OpenDump(const char* path) noexcept {
  constexpr mode_t uMODE = S_IRUSR | S_IWUSR;
  constexpr int iFLAGS = O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC | O_NONBLOCK;
  const FileName name(path);
  if (name.Code() != 0) return -name.Code();
  const long handle = RawCall(SYS_open, RawArgument(name.Get()), iFLAGS, uMODE);
  if (handle >= 0) RawCall(SYS_fchmod, handle, uMODE);
  return static_cast<int>(handle);
}

void Close(int handle) noexcept {
  if (handle >= 0) RawCall(SYS_close, handle);
}

long OpenFolder(int base, const char* name) noexcept {
  return RawCall(SYS_openat, base, RawArgument(name), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

void LookAtProcess(DumpSource& source) noexcept {
  source.m_iProcess = static_cast<int>(RawCall(SYS_getpid));
  source.m_iFolder = static_cast<int>(OpenFolder(AT_FDCWD, "/proc/self"));
  source.m_iTasks = source.m_iFolder < 0 ? -1 : static_cast<int>(OpenFolder(source.m_iFolder, "task"));
  source.m_iWatch = DeathWatchThread();
  timespec now = {};
  RawCall(SYS_clock_gettime, CLOCK_REALTIME, RawArgument(&now));
  source.m_iTime = now.tv_sec;
  rusage used = {};
  RawCall(SYS_getrusage, RUSAGE_SELF, RawArgument(&used));
  source.m_iUserSeconds = used.ru_utime.tv_sec;
  source.m_iKernelSeconds = used.ru_stime.tv_sec;
}

void ListThreads(DumpSource& source) noexcept {
  source.m_threads.Clear();
  source.m_threads.AddCaller(static_cast<int>(RawCall(SYS_gettid)), source.m_context);
  if (source.m_iTasks >= 0) source.m_threads.AddFrom(source.m_iTasks, source.m_iWatch);
}

// A quarter of the time is for threads that don't stop.
int WriteStopped(DumpSource& source) noexcept {
  const std::int64_t now = DumpClock();
  if (source.m_bStop &&
      !source.m_threads.Stop(source.m_iTasks, source.m_iWatch, now + (source.m_iDeadline - now) / 4))
    return eNOTHING_STOPPED;
  WriteDumpFile(source);
  source.m_threads.Resume();
  return eWRITTEN;
}

// The helper: a process of its own with the memory of ours, so that it can make our threads stand still. It is gone
// when the one that asked is.
int Help(void* argument) {
  DumpSource& source = *static_cast<DumpSource*>(argument);
  RawCall(SYS_prctl, PR_SET_PDEATHSIG, SIGKILL);
  while (s_iMayStart.load() == 0 && DumpClock() < source.m_iDeadline) {
    const timespec moment = {0, iMILLISECOND};
    RawCall(SYS_futex, RawArgument(&s_iMayStart), FUTEX_WAIT, 0, RawArgument(&moment));
  }
  if (RawCall(SYS_getppid) == source.m_iProcess) RawCall(SYS_exit_group, WriteStopped(source));
  RawCall(SYS_exit_group, eWRITTEN);
  return 0;
}

void AwaitHelper(std::int64_t deadline) noexcept {
  for (int helper = s_iHelper.load(); helper != 0; helper = s_iHelper.load()) {
    const std::int64_t left = deadline - DumpClock();
    if (left <= 0) return;
    const timespec most = {left / 1000000000, left % 1000000000};
    RawCall(SYS_futex, RawArgument(&s_iHelper), FUTEX_WAIT, helper, RawArgument(&most));
  }
}

// Whom the system's security lets look into us.
void AllowTracer(long process) noexcept { RawCall(SYS_prctl, PR_SET_PTRACER, process); }

// Runs the helper to its end and gives how that was, as waiting for a process does; -1 if there was none.
int RunHelper(DumpSource& source, std::int64_t deadline) noexcept {
  constexpr int iFLAGS = CLONE_VM | CLONE_FS | CLONE_UNTRACED | CLONE_PARENT_SETTID | CLONE_CHILD_CLEARTID;
  int* const id = reinterpret_cast<int*>(&s_iHelper);
  const int before = errno;
  s_iMayStart.store(0);
  const int helper = pCLONE(&Help, s_stack + uSTACK, iFLAGS, &source, id, nullptr, id);
  errno = before;
  if (helper < 0) return -1;
  AllowTracer(helper);
  s_iMayStart.store(1);
  RawCall(SYS_futex, RawArgument(&s_iMayStart), FUTEX_WAKE, 1);
  AwaitHelper(deadline);
  if (s_iHelper.load() != 0) RawCall(SYS_kill, helper, SIGKILL);
  AwaitHelper(deadline + 1000 * iMILLISECOND);
  AllowTracer(0);
  int status = 0;
  RawCall(SYS_wait4, helper, RawArgument(&status), __WALL | (s_iHelper.load() != 0 ? WNOHANG : 0));
  return status;
}

// With all threads stopped; if they can't be, or the system ended the helper for the trying, as they are; and by the
// calling thread itself if there can be no helper.
void WriteByHelper(DumpSource& source, std::int64_t deadline) noexcept {
  source.m_bStop = source.m_threads.Count() > 1;
  int status = RunHelper(source, deadline);
  if (status != 0 && DumpClock() < source.m_iDeadline) {
    source.m_bStop = false;
    ListThreads(source);
    if (source.m_iTasks >= 0) source.m_threads.ReadPlaces(source.m_iTasks);
    status = RunHelper(source, deadline);
  }
  if (status == -1) WriteDumpFile(source);
}

void TakeRequest(DumpSource& source, const _EXCEPTION_POINTERS* pointers, const CONTEXT& here) noexcept {
  source.m_pRecord = pointers != nullptr ? pointers->ExceptionRecord : nullptr;
  source.m_context =
      pointers != nullptr && pointers->ContextRecord != nullptr ? *pointers->ContextRecord : here;
}

}  // namespace

int WriteDump(const char* path, const _EXCEPTION_POINTERS* pointers, unsigned int contents, DumpFilter filter,
              void* parameter, int milliseconds) noexcept {
  CONTEXT here;
  CaptureContext(here);
  if (s_busy.test_and_set()) return EBUSY;
  const NoSignals quiet;
  DumpSource& source = s_source;
  const std::int64_t deadline = DumpClock() + milliseconds * iMILLISECOND;
  source.m_iDeadline = deadline - milliseconds * iMILLISECOND / 5;  // the rest is for a helper that hangs
  source.m_iFile = OpenDump(path);
  if (source.m_iFile >= 0) {
    TakeRequest(source, pointers, here);
    source.m_uContents = contents;
    source.m_pFilter = filter;
    source.m_pParameter = parameter;
    LookAtProcess(source);
    ListThreads(source);
    WriteByHelper(source, deadline);
    Close(source.m_iTasks);
    Close(source.m_iFolder);
    Close(source.m_iFile);
  }
  const int code = source.m_iFile < 0 ? -source.m_iFile : 0;
  s_busy.clear();
  return code;
}

void ForgetDumpsOfParent() noexcept { s_busy.clear(); }

}  // namespace Oxa::Core::Platform

#endif
