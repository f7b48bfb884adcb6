#include "Platform/LockBias.h"

#include <errno.h>
#include <linux/membarrier.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include "Platform/Linux/Futex.h"
#include "Platform/Linux/ThreadIds.h"

namespace Oxa::Core::Platform {

namespace {

constexpr int iPAUSES = 64;
constexpr long iNAP_NS = 50000;
constexpr long iFENCE_BY_TIME_NS = 10000000;

bool Membarrier(int command) noexcept {
  const int saved = errno;
  const bool done = syscall(SYS_membarrier, command, 0, 0) == 0;
  errno = saved;
  return done;
}

void Sleep(long nanoseconds) noexcept {
  timespec left = {0, nanoseconds};
  while (clock_nanosleep(CLOCK_MONOTONIC, 0, &left, &left) == EINTR) {
  }
}

// The system wants to hear once that the process will ask for fences.
bool CanFence() noexcept {
  static std::atomic<int> s_iCan{-1};
  int can = s_iCan.load(std::memory_order_relaxed);
  if (can < 0) {
    can =
        Membarrier(MEMBARRIER_CMD_REGISTER_PRIVATE_EXPEDITED) && Membarrier(MEMBARRIER_CMD_PRIVATE_EXPEDITED);
    s_iCan.store(can, std::memory_order_relaxed);
  }
  return can != 0;
}

// A system that takes the call back from a running process leaves only time: no store stays in a processor that
// long.
void FenceAllThreads() noexcept {
  std::atomic_thread_fence(std::memory_order_seq_cst);
  if (Membarrier(MEMBARRIER_CMD_PRIVATE_EXPEDITED)) return;
  Sleep(iFENCE_BY_TIME_NS);
}

}  // namespace

void LockBias::Taken() noexcept {
  const std::uint32_t self = static_cast<std::uint32_t>(CurrentThreadId());
  Slot* const favoured = m_pFavoured.load(std::memory_order_relaxed);
  if (favoured != nullptr) {
    if (favoured->m_uThread.load(std::memory_order_relaxed) == self) return;
    Withdraw(*favoured);
  }
  if (m_uLast != self) {
    m_uLast = self;
    m_uTurns = 0;
  }
  if (++m_uTurns == m_uEnough) Favour(self);
}

// Without a slot or the fence the thread goes on by the lock, and asks again when the count has gone round.
[[gnu::noinline]] void LockBias::Favour(std::uint32_t thread) noexcept {
  if (!CanFence()) return;
  if (Slot* const slot = SlotFor(thread)) m_pFavoured.store(slot, std::memory_order_relaxed);
}

// The caller has the lock, so it isn't inside: a slot that says so comes from a dead thread, whose id may be the
// caller's by now.
LockBias::Slot* LockBias::SlotFor(std::uint32_t thread) noexcept {
  Slot* usable = nullptr;
  for (Slot& slot : m_slots) {
    const std::uint32_t owner = slot.m_uThread.load(std::memory_order_relaxed);
    if (owner == thread) {
      usable = &slot;
      break;
    }
    if (usable == nullptr && (owner == 0 || ThreadIsGone(owner))) usable = &slot;
  }
  if (usable != nullptr) {
    usable->m_bInside.store(false, std::memory_order_relaxed);
    usable->m_uThread.store(thread, std::memory_order_relaxed);
  }
  return usable;
}

[[gnu::noinline]] void LockBias::Withdraw(const Slot& slot) noexcept {
  m_pFavoured.store(nullptr, std::memory_order_relaxed);
  FenceAllThreads();
  for (int rounds = 0; slot.m_bInside.load(std::memory_order_acquire); ++rounds) {
    if (rounds < iPAUSES) {
      Pause();
    } else if (ThreadIsGone(slot.m_uThread.load(std::memory_order_relaxed))) {
      break;
    } else {
      Sleep(iNAP_NS);  // that thread has lost its core, maybe to this one
    }
  }
  m_uLast = 0;
  if (m_uEnough < uMOST) m_uEnough *= 2;
}

}  // namespace Oxa::Core::Platform
