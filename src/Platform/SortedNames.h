// Names as a folder gives them, in no order, on their way into a sorted list.
#ifndef OXACORE_PLATFORM_SORTEDNAMES_H
#define OXACORE_PLATFORM_SORTEDNAMES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Oxa::Core::Platform {

/// Sorts by bytes. Whatever needs memory throws std::bad_alloc.
class SortedNames {
 public:
  /// The name has to live until it is appended.
  void Add(const char* name);

  /// Appends all names, sorted, and is spent. `names` is untouched if this throws.
  void AppendTo(std::vector<std::string>& names);

 private:
  // Most comparisons end at eight bytes that are compared as one number.
  struct Entry {
    std::uint64_t m_ullKey;  ///< the bytes behind what all names begin with; the first is the highest
    const char* m_pName;
    std::size_t m_uLength;
  };

  using Index = std::uint32_t;
  using Order = std::vector<Index>;

  std::size_t CommonLength(std::size_t first) const;
  bool IsBefore(Index left, Index right) const;
  Order OrderByKeys(Index first) const;
  Order Sort();

  std::vector<Entry> m_entries;
};

}  // namespace Oxa::Core::Platform

#endif
