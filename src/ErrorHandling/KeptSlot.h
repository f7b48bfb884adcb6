// A place in static storage where something is kept from one alert to the next.
#ifndef OXACORE_ERRORHANDLING_KEPTSLOT_H
#define OXACORE_ERRORHANDLING_KEPTSLOT_H

#include <utility>

#include "Platform/Threads.h"

namespace Oxa::Core {

/// Constant-initialised and trivially destructible: errors are raised before and after every static object. Any thread,
/// also in a forked child; waits for nobody: the lock is only tried, since who held it may be gone, killed or not
/// forked.
template <class Kept>
class KeptSlot {
 public:
  constexpr KeptSlot() noexcept = default;

  /// What `take` gives for what is kept; a Result() where that is nothing, or somebody else is just there. `take` may
  /// change what is kept, and must not throw.
  template <class Result, class Take>
  Result Find(const Take& take) {
    if (!m_lock.TryLock()) return Result();
    Result found = m_pKept != nullptr ? take(*m_pKept) : Result();
    m_lock.Unlock();
    return found;
  }

  /// Takes over `kept`; or deletes it, where something is kept already, or somebody else is just there.
  void Keep(Kept* kept) noexcept {
    if (m_lock.TryLock()) {
      if (m_pKept == nullptr) std::swap(kept, m_pKept);
      m_lock.Unlock();
    }
    delete kept;
  }

  /// Deletes what is kept, unless somebody else is just there.
  void Forget() noexcept {
    Kept* forgotten = nullptr;
    if (m_lock.TryLock()) {
      std::swap(forgotten, m_pKept);
      m_lock.Unlock();
    }
    delete forgotten;
  }

 private:
  Platform::ShortLock m_lock;  // guards the other
  Kept* m_pKept = nullptr;     // owned
};

}  // namespace Oxa::Core

#endif
