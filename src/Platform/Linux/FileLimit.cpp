#include <errno.h>
#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <time.h>

#include "Platform/Files.h"
#include "Platform/Storage.h"

namespace Oxa::Core::Platform {

namespace {

sigset_t LimitSignal() noexcept {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGXFSZ);
  return set;
}

bool IsPending() noexcept {
  sigset_t pending;
  return sigpending(&pending) == 0 && sigismember(&pending, SIGXFSZ) == 1;
}

// Takes away what writes beyond the limit have left waiting on this thread.
void DropPending(const sigset_t& signal) noexcept {
  if (!IsPending()) return;
  const timespec now = {0, 0};
  while (sigtimedwait(&signal, nullptr, &now) < 0 && errno == EINTR) {
  }
}

}  // namespace

bool FileLimitGuard::IsNeeded() noexcept {
  if (HasThreadFlag(EThreadFlag::eGUARDS_FILE_LIMIT)) return false;
  rlimit limit;
  return getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur != RLIM_INFINITY;
}

FileLimitGuard::FileLimitGuard() noexcept : m_bOutermost(!HasThreadFlag(EThreadFlag::eGUARDS_FILE_LIMIT)) {
  if (!m_bOutermost) return;
  SetThreadFlag(EThreadFlag::eGUARDS_FILE_LIMIT, true);
  const sigset_t signal = LimitSignal();
  sigset_t before;
  m_bBlocked = pthread_sigmask(SIG_BLOCK, &signal, &before) == 0 && sigismember(&before, SIGXFSZ) == 0;
  m_bWaited = !m_bBlocked && IsPending();
}

FileLimitGuard::~FileLimitGuard() {
  if (!m_bOutermost) return;
  SetThreadFlag(EThreadFlag::eGUARDS_FILE_LIMIT, false);
  if (m_bWaited) return;
  const int code = errno;
  const sigset_t signal = LimitSignal();
  DropPending(signal);
  if (m_bBlocked) pthread_sigmask(SIG_UNBLOCK, &signal, nullptr);
  errno = code;
}

}  // namespace Oxa::Core::Platform
