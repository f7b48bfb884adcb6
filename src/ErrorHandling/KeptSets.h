// A table in static storage of what is kept from one alert to the next.
#ifndef OXACORE_ERRORHANDLING_KEPTSETS_H
#define OXACORE_ERRORHANDLING_KEPTSETS_H

#include <array>
#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

#include "ErrorHandling/KeptSlot.h"

namespace Oxa::Core {

/// What is kept in one slot: keys don't spread evenly, and with one place in each slot some few dozen would drive one
/// another out again and again.
template <class Kept>
class KeptSet {
 public:
  using Pointer = boost::shared_ptr<const Kept>;

  /// The first thing that `take` gives for what is kept and that isn't a Result(); which it is where there is none.
  template <class Result, class Take>
  Result Find(const Take& take) const {
    for (const Pointer& kept : m_kept) {
      if (!kept) continue;
      if (Result found = take(kept)) return found;
    }
    return Result();
  }

  /// `kept` gets what was kept longest, and is to be let go once the slot is free again.
  void Exchange(Pointer& kept) noexcept {
    m_kept[m_uOldest].swap(kept);
    m_uOldest = (m_uOldest + 1) % m_kept.size();
  }

 private:
  std::array<Pointer, 8> m_kept;
  std::size_t m_uOldest = 0;
};

/// Constant-initialised and trivially destructible, and as KeptSlot for any thread: waits for nobody.
template <class Kept, int SlotBits>
class KeptSets {
 public:
  using Pointer = boost::shared_ptr<const Kept>;

  constexpr KeptSets() noexcept = default;

  /// What `take` gives for one of those that are kept under `key`, or under a key that goes to the same slot. It must
  /// not throw.
  template <class Result, class Take>
  Result Find(std::uint64_t key, const Take& take) {
    return SlotOf(key).template Find<Result>(
        [&](const KeptSet<Kept>& set) { return set.template Find<Result>(take); });
  }

  /// Keeps what `make` gives, in the place of an older one where there is no room, unless there is one already that
  /// `isSame`. Without the memory, or where somebody else is just there, nothing is kept.
  template <class IsSame, class Make>
  void Keep(std::uint64_t key, const IsSame& isSame, const Make& make) {
    try {
      Pointer kept = make();
      const auto exchange = [&](KeptSet<Kept>& set) {
        if (!set.template Find<bool>(isSame)) set.Exchange(kept);
        return true;
      };
      KeptSlot<KeptSet<Kept>>& slot = SlotOf(key);
      if (slot.template Find<bool>(exchange)) return;
      auto set = std::make_unique<KeptSet<Kept>>();
      set->Exchange(kept);
      slot.Keep(set.release());  // another thread may have been quicker
    } catch (const std::bad_alloc&) {
      return;  // it is made anew next time
    }
  }

  /// Gives up what is kept.
  void Forget() noexcept {
    for (KeptSlot<KeptSet<Kept>>& slot : m_slots) slot.Forget();
  }

 private:
  KeptSlot<KeptSet<Kept>>& SlotOf(std::uint64_t key) {
    constexpr std::uint64_t uSPREAD = 0x9E3779B97F4A7C15;  // the golden ratio's
    return m_slots[key * uSPREAD >> (64 - SlotBits)];
  }

  KeptSlot<KeptSet<Kept>> m_slots[1 << SlotBits];
};

}  // namespace Oxa::Core

#endif
