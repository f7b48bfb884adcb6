// Numbers for items of any kind that has an order: 0, 1, 2... by first appearance.
//
// Thread safety: none of its own. Concurrent reads are safe; a set that grows belongs to one thread.
// Failures: IndexOutOfBounds for an index that isn't there; what comparing and copying an Item throws, and
// std::bad_alloc, leave the set as it was.
//
//   EnumeratedSet<std::string> steps;
//   graph.MakeEdge(steps["report"], steps["measure"]);
//   ...
//   std::cout << steps.LookupByInt(unsigned(sorted.front()));
#ifndef INFRASTRUCTURE_OXACORE_ENUMERATEDSET_H
#define INFRASTRUCTURE_OXACORE_ENUMERATEDSET_H

#include <Infrastructure/OxaCore/Export.h>

#include <cstddef>
#include <map>
#include <type_traits>
#include <utility>
#include <vector>

namespace Oxa::Core::GraphAlgo {

/// Raises IndexOutOfBounds for a set of `count` items. For EnumeratedSet.
OXACORE_API void RaiseNoSuchItem(unsigned index, std::size_t count);

/// Items and their indices. An index stays valid while the set lives; so do references to the set's items. Items
/// are never removed. An `Item` can be copied and compared with `<`.
template <class Item>
class EnumeratedSet {
 public:
  EnumeratedSet() = default;
  EnumeratedSet(const EnumeratedSet& other) : m_indices(other.m_indices), m_items(m_indices.size()) {
    for (const Entry& entry : m_indices) m_items[entry.second] = &entry;
  }
  /// Leaves `other` empty.
  EnumeratedSet(EnumeratedSet&& other) noexcept { Swap(other); }
  EnumeratedSet& operator=(EnumeratedSet other) noexcept {
    Swap(other);
    return *this;
  }
  ~EnumeratedSet() = default;

  /// The item's index; a new item gets the next one, and is copied.
  unsigned LookupOrAdd(const Item& item) {
    const auto at = m_indices.lower_bound(item);
    if (at != m_indices.end() && !m_indices.key_comp()(item, at->first)) return at->second;
    const unsigned index = GetItemCount();
    if (index == m_items.capacity()) m_items.reserve(m_items.size() * 2 + 1);  // before the item enters
    m_items.push_back(&*m_indices.emplace_hint(at, item, index));
    return index;
  }

  /// The same.
  unsigned operator[](const Item& item) { return LookupOrAdd(item); }

  /// True and the index if the item is there; false, with `aIndex` untouched, if not.
  bool LookupNoAdd(const Item& item, unsigned& aIndex) const {
    const auto at = m_indices.find(item);
    if (at == m_indices.end()) return false;
    aIndex = at->second;
    return true;
  }

  /// Whether the item has an index.
  bool IsItem(const Item& item) const { return m_indices.count(item) != 0; }

  /// The item of an index. Raises IndexOutOfBounds for one that isn't there; where the raise returns, the item is
  /// a default one, or std::out_of_range is thrown for a kind of item that has none.
  const Item& LookupByInt(unsigned aIndex) const {
    if (aIndex < m_items.size()) return m_items[aIndex]->first;
    RaiseNoSuchItem(aIndex, m_items.size());
    if constexpr (std::is_default_constructible_v<Item>) {
      static const Item* const s_pNoItem =
          new Item();  // never destroyed: raises return when all else is gone
      return *s_pNoItem;
    } else {
      return m_items.at(aIndex)->first;
    }
  }

  /// How many items there are; the indices end below that.
  unsigned GetItemCount() const { return static_cast<unsigned>(m_items.size()); }

 private:
  using Indices = std::map<Item, unsigned>;
  using Entry = typename Indices::value_type;

  void Swap(EnumeratedSet& other) noexcept {
    m_indices.swap(other.m_indices);
    m_items.swap(other.m_items);
  }

  Indices m_indices;
  std::vector<const Entry*> m_items;  ///< entries of m_indices, which stay where they are, also in a swap
};

}  // namespace Oxa::Core::GraphAlgo

#endif
