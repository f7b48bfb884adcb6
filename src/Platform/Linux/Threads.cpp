#include "Platform/Threads.h"

#include <errno.h>
#include <pthread.h>
#include <signal.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include "Platform/Kill.h"
#include "Platform/Linux/Futex.h"
#include "Platform/Linux/KillState.h"
#include "Platform/Linux/ThreadIds.h"

namespace Oxa::Core::Platform {

namespace {

constexpr int iLONGEST_PAUSE = 64;
constexpr long long iNANOSECONDS_PER_MILLISECOND = 1000000;
constexpr long long iLOOK_FOR_DEAD_OWNER_EVERY = 50 * iNANOSECONDS_PER_MILLISECOND;

// Thread ids stay below 2^22, so the uppermost bit of a lock's word is free to tell of sleepers.
constexpr std::uint32_t uSLEEPERS = 0x80000000u;
constexpr std::uint32_t uHELD = 1;

[[gnu::noinline]] std::uint32_t AskThreadId() noexcept {
  KnownThreadId() = static_cast<std::uint32_t>(syscall(SYS_gettid));
  return KnownThreadId();
}

inline std::uint32_t Self() noexcept {
  const std::uint32_t known = KnownThreadId();
  return known != 0 ? known : AskThreadId();
}

// The one thread of a forked child has a new id.
void ForgetThreadId() { KnownThreadId() = 0; }

[[gnu::constructor]] void WatchForks() { pthread_atfork(nullptr, nullptr, &ForgetThreadId); }

using Word = std::atomic<std::uint32_t>;

bool TakeFree(Word& word, std::uint32_t value) noexcept {
  std::uint32_t expected = 0;
  return word.compare_exchange_strong(expected, value, std::memory_order_acquire, std::memory_order_relaxed);
}

// Looks ever more seldom: each look takes the word's cache line away from the owner, who meanwhile may be through
// with it many times.
bool SpinForFree(Word& word, std::uint32_t value) noexcept {
  for (int pause = 1; pause <= iLONGEST_PAUSE; pause *= 2) {
    for (int round = 0; round < pause; ++round) Pause();
    if (word.load(std::memory_order_relaxed) == 0 && TakeFree(word, value)) return true;
  }
  return false;
}

// The same, as long as that pays.
bool SpinForFree(Word& word, std::uint32_t value, SpinBudget& budget) noexcept {
  if (budget.Next() == 0) return false;
  const bool taken = SpinForFree(word, value);
  taken ? budget.Hit(0) : budget.Missed();
  return taken;
}

// One round of a sleeper: takes the word if it is free, and otherwise leaves the mark that makes the owner
// wake somebody. Gives whether the word was taken; `seen` is what it holds if not. Who has slept takes the
// word with the mark on, since others may still sleep.
bool TakeOrMark(Word& word, std::uint32_t value, std::uint32_t& seen) noexcept {
  seen = word.load(std::memory_order_relaxed);
  while (true) {
    if (seen == 0) {
      if (word.compare_exchange_weak(seen, value | uSLEEPERS, std::memory_order_acquire)) return true;
    } else if ((seen & uSLEEPERS) != 0) {
      return false;
    } else if (word.compare_exchange_weak(seen, seen | uSLEEPERS, std::memory_order_relaxed)) {
      seen |= uSLEEPERS;
      return false;
    }
  }
}

// Who is killed between its wake and the lock must not take the wake along.
void WakeAnother(void* word) { FutexWake(word, 1); }

void TakeAsleep(Word& word, std::uint32_t value) noexcept {
  const KillCleanUp cleanUp(&WakeAnother, &word);
  std::uint32_t seen;
  while (!TakeOrMark(word, value, seen)) FutexWait(&word, seen, Deadline::Never());
}

// Kills are held, or between the two steps one would leave the sleepers asleep.
void Free(Word& word) noexcept {
  if ((word.exchange(0, std::memory_order_release) & uSLEEPERS) != 0) FutexWake(&word, 1);
}

// What a thread that has ended still seems to own becomes the caller's.
bool TakeFromDead(Word& word, std::uint32_t self, std::uint32_t seen) noexcept {
  if (seen == 0 || !ThreadIsGone(seen & ~uSLEEPERS)) return false;
  return word.compare_exchange_strong(seen, self | uSLEEPERS, std::memory_order_acquire);
}

Deadline EarlierOf(Deadline deadline, long long nanoseconds) noexcept {
  if (deadline.IsNever() || deadline.NanosecondsLeft() > nanoseconds) return Deadline::In(nanoseconds);
  return deadline;
}

EWaitEnd TakeAtOnceFromDead(Word& word, std::uint32_t self) noexcept {
  const std::uint32_t seen = word.load(std::memory_order_relaxed);
  return TakeFromDead(word, self, seen) ? EWaitEnd::eABANDONED : EWaitEnd::eTIMEOUT;
}

// As TakeAsleep, but looks from time to time whether the owner is still alive.
EWaitEnd TakeBy(Word& word, std::uint32_t self, Deadline deadline, SpinBudget& budget) noexcept {
  if (deadline.HasPassed()) return TakeAtOnceFromDead(word, self);
  if (SpinForFree(word, self, budget)) return EWaitEnd::eSIGNALLED;
  const KillCleanUp cleanUp(&WakeAnother, &word);
  while (true) {
    std::uint32_t seen;
    if (TakeOrMark(word, self, seen)) return EWaitEnd::eSIGNALLED;
    if (FutexWait(&word, seen, EarlierOf(deadline, iLOOK_FOR_DEAD_OWNER_EVERY))) continue;
    if (TakeFromDead(word, self, word.load(std::memory_order_relaxed))) return EWaitEnd::eABANDONED;
    if (deadline.HasPassed())
      return TakeFree(word, self | uSLEEPERS) ? EWaitEnd::eSIGNALLED : EWaitEnd::eTIMEOUT;
  }
}

}  // namespace

unsigned long CurrentThreadId() noexcept { return Self(); }

bool ThreadIsGone(std::uint32_t id) noexcept {
  const int saved = errno;
  const bool gone = syscall(SYS_tgkill, getpid(), static_cast<pid_t>(id), 0) != 0 && errno == ESRCH;
  errno = saved;
  return gone;
}

long long MonotonicNow() noexcept {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<long long>(now.tv_sec) * 1000 * iNANOSECONDS_PER_MILLISECOND + now.tv_nsec;
}

Deadline Deadline::In(long long nanoseconds) noexcept {
  if (nanoseconds <= 0) return Deadline(iPASSED);
  const long long now = MonotonicNow();
  return Deadline(nanoseconds >= iNEVER - now ? iNEVER - 1 : now + nanoseconds);
}

Deadline Deadline::InMilliseconds(long long milliseconds) noexcept {
  constexpr long long most = iNEVER / iNANOSECONDS_PER_MILLISECOND;
  return In(milliseconds > most ? iNEVER
            : milliseconds <= 0 ? 0
                                : milliseconds * iNANOSECONDS_PER_MILLISECOND);
}

long long Deadline::NanosecondsLeft() const noexcept {
  if (m_llMoment == iPASSED) return 0;
  const long long left = m_llMoment - MonotonicNow();
  return left > 0 ? left : 0;
}

WaitResult NothingToWaitFor() noexcept { return {EWaitEnd::eFAILED, EINVAL}; }

bool Deadline::HasPassed() const noexcept { return !IsNever() && NanosecondsLeft() == 0; }

void ShortLock::Lock() noexcept {
  t_kill.Hold();
  if (!TakeFree(m_uWord, uHELD) && !SpinForFree(m_uWord, uHELD)) TakeAsleep(m_uWord, uHELD);
}

bool ShortLock::TryLock() noexcept {
  t_kill.Hold();
  if (TakeFree(m_uWord, uHELD)) return true;
  t_kill.LetGo();
  return false;
}

void ShortLock::Unlock() noexcept {
  Free(m_uWord);
  t_kill.LetGo();
}

// Free is what a thread may find the lock that comes for the first time.
void ReentrantLock::LockSlowly() noexcept {
  const std::uint32_t self = Self();
  if (TryLockSlowly()) return;
  if (SpinForFree(m_uWord, self, m_spinBudget)) return;
  TakeAsleep(m_uWord, self);
}

bool ReentrantLock::Reenter(std::uint32_t self) noexcept {
  if ((m_uWord.load(std::memory_order_relaxed) & ~uSLEEPERS) != self) return false;
  m_uDepth.store(m_uDepth.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
  return true;
}

// A look first: an attempt would take the word's cache line away from the owner.
bool ReentrantLock::TryLockSlowly() noexcept {
  const std::uint32_t self = Self();
  return Reenter(self) || (m_uWord.load(std::memory_order_relaxed) == 0 && TakeFree(m_uWord, self));
}

WaitResult ReentrantLock::LockBy(Deadline deadline) noexcept {
  if (TryLock()) return {EWaitEnd::eSIGNALLED, 0};
  const EWaitEnd end = TakeBy(m_uWord, Self(), deadline, m_spinBudget);
  if (end == EWaitEnd::eABANDONED) m_uDepth.store(0, std::memory_order_relaxed);
  return {end, 0};
}

void ReentrantLock::UnlockSlowly() noexcept {
  const std::uint32_t depth = m_uDepth.load(std::memory_order_relaxed);
  if (depth != 0) return m_uDepth.store(depth - 1, std::memory_order_relaxed);
  const HoldKill hold;
  Free(m_uWord);
}

// The own id can't come or go while this thread looks.
bool ReentrantLock::IsOwner() const noexcept {
  return (m_uWord.load(std::memory_order_relaxed) & ~uSLEEPERS) == Self();
}

int ReentrantLock::UnlockSlowlyIfOwner() noexcept {
  if (!IsOwner()) return EPERM;
  UnlockSlowly();
  return 0;
}

}  // namespace Oxa::Core::Platform
