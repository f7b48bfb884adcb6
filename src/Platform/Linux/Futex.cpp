#include "Platform/Linux/Futex.h"

#include <errno.h>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include "Platform/Linux/KillState.h"

namespace Oxa::Core::Platform {

namespace {

constexpr long long iNANOSECONDS_PER_SECOND = 1000000000;

constexpr std::uint32_t uPRAISE = 4;

}  // namespace

void PauseInSpin() noexcept { Pause(); }

bool SpinAdvice::IsForIt(std::uint32_t probeEvery) noexcept {
  if (m_uScore.load(std::memory_order_relaxed) > 0) return true;
  const std::uint32_t refusals = m_uRefusals.load(std::memory_order_relaxed) + 1;
  m_uRefusals.store(refusals, std::memory_order_relaxed);
  return refusals % probeEvery == 0;
}

bool SpinAdvice::Learn(bool success) noexcept {
  const std::uint32_t score = m_uScore.load(std::memory_order_relaxed);
  if (success) {
    m_uScore.store(score + uPRAISE > uBEST ? uBEST : score + uPRAISE, std::memory_order_relaxed);
  } else if (score > 0) {
    m_uScore.store(score - 1, std::memory_order_relaxed);
  }
  return success;
}

bool FutexWait(const void* word, std::uint32_t expected, Deadline deadline) noexcept {
  const int saved = errno;
  timespec moment{};
  if (!deadline.IsNever()) {
    if (deadline.HasPassed()) return false;
    moment.tv_sec = deadline.Moment() / iNANOSECONDS_PER_SECOND;
    moment.tv_nsec = deadline.Moment() % iNANOSECONDS_PER_SECOND;
  }
  // The bitset form takes a moment of the monotonic clock, where the plain one takes a span.
  const long result = syscall(SYS_futex, word, FUTEX_WAIT_BITSET_PRIVATE, expected,
                              deadline.IsNever() ? nullptr : &moment, nullptr, FUTEX_BITSET_MATCH_ANY);
  const bool inTime = result == 0 || errno != ETIMEDOUT;
  errno = saved;
  return inTime;
}

bool FutexWaitUnheld(const void* word, std::uint32_t expected, Deadline deadline) noexcept {
  t_kill.LetGo();
  const bool inTime = FutexWait(word, expected, deadline);
  t_kill.Hold();
  return inTime;
}

void FutexWake(const void* word, int count) noexcept {
  const int saved = errno;
  syscall(SYS_futex, word, FUTEX_WAKE_PRIVATE, count, nullptr, nullptr, 0);
  errno = saved;
}

}  // namespace Oxa::Core::Platform
