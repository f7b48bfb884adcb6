// What lets one thread, the one that takes a lock over and over, by without an atomic instruction.
#ifndef OXACORE_PLATFORM_LOCKBIAS_H
#define OXACORE_PLATFORM_LOCKBIAS_H

#include <atomic>
#include <cstdint>

#include "Platform/Threads.h"

namespace Oxa::Core::Platform {

/// Stands beside a lock, and at times favours a thread: that one may pass, which is as good as holding the lock and
/// costs two plain stores. Who takes the lock tells so, and if another thread is favoured the favour ends: a fence
/// in all running threads makes sure that either the passing thread sees that, or it is seen, and waited for.
/// Constant-initialised and trivially destructible. In a forked child nobody is favoured any more.
class LockBias {
  struct Slot;

 public:
  constexpr LockBias() noexcept = default;
  LockBias(const LockBias&) = delete;
  LockBias& operator=(const LockBias&) = delete;

  /// An attempt to pass, for the length of a scope. For a few instructions that call nobody; the lock may be held or
  /// not. A thread that is killed inside counts as outside, so what it does has to be right at each of its steps.
  class Passage {
   public:
    explicit Passage(LockBias& bias) noexcept : m_pSlot(bias.Enter()) {}
    Passage(const Passage&) = delete;
    Passage& operator=(const Passage&) = delete;
    ~Passage() {
      if (m_pSlot != nullptr) m_pSlot->m_bInside.store(false, std::memory_order_release);
    }

    /// Whether this thread has passed. If not it takes the lock instead.
    explicit operator bool() const noexcept { return m_pSlot != nullptr; }

   private:
    Slot* const m_pSlot;
  };

  /// Does `step` if this thread passes, and gives whether it did and `step` says so. As in a Passage, but `step` may
  /// not fault: nothing clears up behind it.
  template <class Step>
  bool Pass(const Step& step) {
    Slot* const slot = Enter();
    if (slot == nullptr) return false;
    const bool done = step();
    slot->m_bInside.store(false, std::memory_order_release);
    return done;
  }

  /// To be called whenever the lock was taken, with the lock held and before anything is done under it. Ends the
  /// favour of another thread; the calling one is favoured once it has come often enough without another between.
  void Taken() noexcept;

 private:
  // A thread's own for as long as it lives, or it could blot out that another one is inside.
  struct Slot {
    std::atomic<std::uint32_t> m_uThread{0};
    std::atomic<bool> m_bInside{false};
  };

  static constexpr int iSLOTS = 4;  // threads that can be favoured while all of them live
  static constexpr std::uint32_t uFEWEST = 64;
  static constexpr std::uint32_t uMOST = 4096;

  Slot* Enter() noexcept {
    Slot* const slot = m_pFavoured.load(std::memory_order_relaxed);
    if (slot == nullptr || slot->m_uThread.load(std::memory_order_relaxed) != KnownThreadId()) return nullptr;
    slot->m_bInside.store(true, std::memory_order_relaxed);
    std::atomic_signal_fence(std::memory_order_seq_cst);
    if (m_pFavoured.load(std::memory_order_acquire) == slot) return slot;
    slot->m_bInside.store(false, std::memory_order_release);
    return nullptr;
  }

  void Favour(std::uint32_t thread) noexcept;
  void Withdraw(const Slot& slot) noexcept;
  Slot* SlotFor(std::uint32_t thread) noexcept;

  std::atomic<Slot*> m_pFavoured{nullptr};  // written with the lock held
  Slot m_slots[iSLOTS];

  // Guarded by the lock.
  std::uint32_t m_uLast = 0;          // the thread that took it last
  std::uint32_t m_uTurns = 0;         // how often, one after the other
  std::uint32_t m_uEnough = uFEWEST;  // turns for a favour; doubled whenever one is withdrawn
};

}  // namespace Oxa::Core::Platform

#endif
