// A process-wide flag against calls that come back to where they started.
#ifndef OXACORE_LOG_FLAGHOLD_H
#define OXACORE_LOG_FLAGHOLD_H

#include <atomic>

namespace Oxa::Core {

/// Sets the flag for the length of a scope, unless it is set already.
class FlagHold {
 public:
  explicit FlagHold(std::atomic<bool>& flag) noexcept
      : m_pFlag(flag.exchange(true, std::memory_order_acquire) ? nullptr : &flag) {}
  FlagHold(const FlagHold&) = delete;
  FlagHold& operator=(const FlagHold&) = delete;
  ~FlagHold() {
    if (m_pFlag != nullptr) m_pFlag->store(false, std::memory_order_release);
  }

  /// Whether it was this one that set the flag.
  explicit operator bool() const noexcept { return m_pFlag != nullptr; }

 private:
  std::atomic<bool>* m_pFlag;
};

}  // namespace Oxa::Core

#endif
