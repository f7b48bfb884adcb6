#include "Platform/Linux/Futex.h"

#include <errno.h>
#include <linux/futex.h>
#include <sched.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>

#include "Platform/Linux/KillState.h"

namespace Oxa::Core::Platform {

namespace {

constexpr long long iNANOSECONDS_PER_SECOND = 1000000000;

// Until the library is loaded nobody spins. The library's own threads wait by then already.
std::atomic<bool> g_severalProcessors{false};

// Where the call fails there are more of them than the mask has room for.
[[gnu::constructor]] void CountProcessors() {
  const int saved = errno;
  cpu_set_t set;
  const bool several = sched_getaffinity(getpid(), sizeof(set), &set) != 0 || CPU_COUNT(&set) > 1;
  g_severalProcessors.store(several, std::memory_order_relaxed);
  errno = saved;
}

using Counter = std::atomic<std::uint32_t>;

std::uint32_t Read(const Counter& counter) noexcept { return counter.load(std::memory_order_relaxed); }

void Write(Counter& counter, std::uint32_t value) noexcept {
  counter.store(value, std::memory_order_relaxed);
}

}  // namespace

void PauseInSpin() noexcept { Pause(); }

// With nobody else there it takes a third of a microsecond or so, and two switches of threads take more than this.
bool YieldInSpin() noexcept {
  constexpr long long switches = 1500;
  const long long before = MonotonicNow();
  sched_yield();
  return MonotonicNow() - before > switches;
}

long long SpinBudget::Next() noexcept {
  if (!g_severalProcessors.load(std::memory_order_relaxed)) return 0;
  const std::uint32_t nanoseconds = Read(m_uNanoseconds);
  if (nanoseconds != 0) return nanoseconds;
  const std::uint32_t refusals = Read(m_uRefusals) + 1;
  const bool probe = refusals >= Read(m_uProbeEvery);
  Write(m_uRefusals, probe ? 0 : refusals);
  return probe ? uMOST : 0;
}

void SpinBudget::Hit(long long nanoseconds) noexcept {
  const auto paid = static_cast<std::uint32_t>(std::clamp<long long>(nanoseconds, uLEAST, uMOST));
  Write(m_uNanoseconds, std::min(uMOST, 2 * std::max(paid, Read(m_uNanoseconds))));
  Write(m_uMisses, 0);
  Write(m_uProbeEvery, uFIRST_PROBE);
}

void SpinBudget::Missed() noexcept {
  const std::uint32_t nanoseconds = Read(m_uNanoseconds);
  const std::uint32_t misses = Read(m_uMisses) + 1;
  Write(m_uMisses, misses % uMISSES);
  if (nanoseconds == 0) return Write(m_uProbeEvery, std::min(uLAST_PROBE, 2 * Read(m_uProbeEvery)));
  if (misses >= uMISSES) Write(m_uNanoseconds, nanoseconds / 2 < uLEAST ? 0 : nanoseconds / 2);
}

void SpinBudget::Yielded() noexcept {
  if (Read(m_uNanoseconds) == 0) Missed();
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
