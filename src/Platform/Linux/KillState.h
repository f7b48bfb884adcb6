// What a thread knows of a kill that may come to it: words of its own that the handler of the kill reads.
#ifndef OXACORE_PLATFORM_LINUX_KILLSTATE_H
#define OXACORE_PLATFORM_LINUX_KILLSTATE_H

#include <atomic>
#include <cstdint>

#include "Platform/Kill.h"

namespace Oxa::Core::Platform {

class NativeThread;

/// Shared between a thread and its signal handler, so nothing may be kept in registers across its operations.
/// Every lock of the seam counts here: no constructor, no call, no allocation.
class KillState {
 public:
  void Hold() noexcept {
    m_uHolds = m_uHolds + 1;
    std::atomic_signal_fence(std::memory_order_seq_cst);
  }

  /// May not return.
  void LetGo() noexcept {
    std::atomic_signal_fence(std::memory_order_seq_cst);
    m_uHolds = m_uHolds - 1;
    if (m_bPending && m_uHolds == 0) CarryOut();
  }

  void Push(KillCleanUp& cleanUp) noexcept {
    cleanUp.m_pOuter = m_pInnermost;
    std::atomic_signal_fence(std::memory_order_seq_cst);
    m_pInnermost = &cleanUp;
  }
  void Pop(KillCleanUp& cleanUp) noexcept {
    std::atomic_signal_fence(std::memory_order_seq_cst);
    m_pInnermost = cleanUp.m_pOuter;
  }

  /// The handler's: ends the thread, or leaves a mark if it is held.
  void OnKill() noexcept {
    if (m_uHolds != 0) {
      m_bPending = true;
    } else {
      CarryOut();
    }
  }

  /// Ends the thread if a killer still wants it.
  void CarryOut() noexcept;

  void SetThread(NativeThread* thread) noexcept { m_pThread = thread; }
  NativeThread* Thread() const noexcept { return m_pThread; }

 private:
  // Plain words: trivial, so that reaching them costs no call.
  volatile std::uint32_t m_uHolds;
  volatile bool m_bPending;
  KillCleanUp* volatile m_pInnermost;
  NativeThread* m_pThread;  // null on threads that can't be killed
};

[[gnu::tls_model("initial-exec")]] extern __thread KillState t_kill;

}  // namespace Oxa::Core::Platform

#endif
