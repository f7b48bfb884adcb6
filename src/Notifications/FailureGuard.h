// Ends the recursion of a listener that fails whenever it hears that a listener failed.
#ifndef OXACORE_NOTIFICATIONS_FAILUREGUARD_H
#define OXACORE_NOTIFICATIONS_FAILUREGUARD_H

#include "Platform/Storage.h"

namespace Oxa::Core {

/// Stands around the telling of a listener's failure. The outermost one on a thread tells it as a warning; a
/// failure that is met meanwhile finds IsInner and goes to the raw channel instead.
class FailureGuard {
 public:
  FailureGuard() noexcept : m_bInner(Platform::HasThreadFlag(Platform::EThreadFlag::eTELLING_FAILURE)) {
    Mark(true);
  }
  FailureGuard(const FailureGuard&) = delete;
  FailureGuard& operator=(const FailureGuard&) = delete;
  ~FailureGuard() { Mark(m_bInner); }

  bool IsInner() const noexcept { return m_bInner; }

 private:
  static void Mark(bool telling) noexcept {
    Platform::SetThreadFlag(Platform::EThreadFlag::eTELLING_FAILURE, telling);
  }

  bool m_bInner;
};

}  // namespace Oxa::Core

#endif
