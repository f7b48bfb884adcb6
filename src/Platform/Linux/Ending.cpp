#include "Platform/Ending.h"

#include <errno.h>
#include <linux/prctl.h>
#include <signal.h>
#include <sys/syscall.h>
#include <time.h>

#include <atomic>

#include "Platform/Linux/Clone.h"
#include "Platform/Linux/RawCall.h"

// What the watch runs has no storage of its own: nothing may be woven into it that looks for some.
#if defined(__has_attribute) && __has_attribute(no_stack_protector)
#define OXACORE_BARE __attribute__((no_stack_protector, no_sanitize("address", "thread", "undefined")))
#else
#define OXACORE_BARE __attribute__((no_sanitize("address", "thread", "undefined")))
#endif

namespace Oxa::Core::Platform {

namespace {

constexpr std::size_t uSTACK = 16 * 1024;
constexpr long iMASK_SIZE = 8;  // of the kernel's set of signals
constexpr int iSIGNALS = 64;
constexpr int iSHELL_SIGNAL = 128;

alignas(16) unsigned char s_stack[uSTACK];
std::atomic<bool> s_bStarted{false};
int s_iSignal = 0;  // read and written by the compiler's own operations, which no sanitizer watches
std::atomic<pid_t> s_thread{0};
timespec s_deadline;
int s_iStatus;

// As the kernel has it, which is not as the C library has it. All zeros is the default action.
struct KernelAction {
  void* m_pHandler;
  unsigned long m_ulFlags;
  void* m_pRestorer;
  unsigned long m_ulMask;
};

OXACORE_BARE void Exit(int status) {
  for (;;) RawCall(SYS_exit_group, status);
}

OXACORE_BARE void DieBy(int signal) {
  KernelAction standard;
  standard.m_pHandler = nullptr;
  standard.m_ulFlags = 0;
  standard.m_pRestorer = nullptr;
  standard.m_ulMask = 0;
  RawCall(SYS_rt_sigaction, signal, RawArgument(&standard), 0, iMASK_SIZE);
  unsigned long only = 1UL << (signal - 1);
  RawCall(SYS_rt_sigprocmask, SIG_UNBLOCK, RawArgument(&only), 0, iMASK_SIZE);
  RawCall(SYS_tgkill, RawCall(SYS_getpid), RawCall(SYS_gettid), signal);
}

OXACORE_BARE int Watch(void*) {
  RawCall(SYS_prctl, PR_SET_NAME, RawArgument("Death Watch"));
  while (RawCall(SYS_clock_nanosleep, CLOCK_MONOTONIC, TIMER_ABSTIME, RawArgument(&s_deadline)) == -EINTR) {
  }
  const int signal = __atomic_load_n(&s_iSignal, __ATOMIC_RELAXED);
  if (signal > 0 && signal <= iSIGNALS) DieBy(signal);
  Exit(s_iStatus);
  return 0;
}

void SetDeadline(int milliseconds) noexcept {
  constexpr long iNANOS = 1000000000;
  RawCall(SYS_clock_gettime, CLOCK_MONOTONIC, RawArgument(&s_deadline));
  s_deadline.tv_sec += milliseconds / 1000;
  s_deadline.tv_nsec += milliseconds % 1000 * 1000000L;
  if (s_deadline.tv_nsec >= iNANOS) {
    s_deadline.tv_nsec -= iNANOS;
    ++s_deadline.tv_sec;
  }
}

// A kernel's timer, which needs no thread. Nothing but a kill is sure to reach a process whose threads may all have
// blocked their signals.
void KillAtDeadline() noexcept {
  sigevent event = {};
  event.sigev_notify = SIGEV_SIGNAL;
  event.sigev_signo = SIGKILL;
  int timer = 0;
  if (RawCall(SYS_timer_create, CLOCK_MONOTONIC, RawArgument(&event), RawArgument(&timer)) != 0) return;
  itimerspec when = {};
  when.it_value = s_deadline;
  RawCall(SYS_timer_settime, timer, TIMER_ABSTIME, RawArgument(&when));
}

// A thread that the thread library knows nothing of: it needs no memory but the stack, and is there for as long as the
// process is.
bool StartWatch() noexcept {
  constexpr int iFLAGS =
      CLONE_VM | CLONE_FS | CLONE_FILES | CLONE_SIGHAND | CLONE_THREAD | CLONE_SYSVSEM | CLONE_PARENT_SETTID;
  const int saved = errno;
  pid_t id = 0;
  const bool started = pCLONE(&Watch, s_stack + uSTACK, iFLAGS, nullptr, &id) > 0;
  if (started) s_thread.store(id);
  errno = saved;
  return started;
}

}  // namespace

void StartDeathWatch(int milliseconds, int status) noexcept {
  if (s_bStarted.exchange(true)) return;
  s_iStatus = status;
  SetDeadline(milliseconds);
  // The new thread inherits the mask: no signal of the process may run its handler there. The C library would not
  // block its own ones.
  const unsigned long all = ~0UL;
  unsigned long before = 0;
  RawCall(SYS_rt_sigprocmask, SIG_SETMASK, RawArgument(&all), RawArgument(&before), iMASK_SIZE);
  if (!StartWatch()) KillAtDeadline();
  RawCall(SYS_rt_sigprocmask, SIG_SETMASK, RawArgument(&before), 0, iMASK_SIZE);
}

void EndBySignalInstead(int signal) noexcept { __atomic_store_n(&s_iSignal, signal, __ATOMIC_RELAXED); }

void ForgetDeathWatchOfParent() noexcept {
  s_bStarted.store(false);
  s_thread.store(0);
  EndBySignalInstead(0);
}

int DeathWatchThread() noexcept { return s_thread.load(); }

void EndNow(int status) noexcept {
  Exit(status);
  __builtin_unreachable();
}

void EndBySignal(int signal) noexcept {
  if (signal > 0 && signal <= iSIGNALS) DieBy(signal);
  EndNow(iSHELL_SIGNAL + signal);
}

}  // namespace Oxa::Core::Platform
