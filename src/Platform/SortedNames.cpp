#include "Platform/SortedNames.h"

#include <algorithm>
#include <boost/endian/conversion.hpp>
#include <cstring>
#include <new>
#include <numeric>

namespace Oxa::Core::Platform {

namespace {

// The eight bytes behind the first `skipped`, or as many as there are and zeros. Short ends of long names are read in
// one go with what stands before them.
std::uint64_t KeyOf(const char* name, std::size_t length, std::size_t skipped) {
  constexpr std::size_t uKEY = sizeof(std::uint64_t);
  const std::size_t left = length - skipped;
  if (left == 0) return 0;
  unsigned char bytes[uKEY] = {};
  if (left >= uKEY) {
    std::memcpy(bytes, name + skipped, uKEY);
  } else if (length >= uKEY) {
    std::memcpy(bytes, name + length - uKEY, uKEY);
    return boost::endian::load_big_u64(bytes) << 8 * (uKEY - left);
  } else {
    std::memcpy(bytes, name + skipped, left);
  }
  return boost::endian::load_big_u64(bytes);
}

bool IsDots(const char* name) { return name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0)); }

constexpr std::size_t uBUCKETS = 4096;

}  // namespace

void SortedNames::Add(const char* name) { m_entries.push_back({0, name, std::strlen(name)}); }

// How many bytes the names from `first` on have in common at their start.
std::size_t SortedNames::CommonLength(std::size_t first) const {
  if (first == m_entries.size()) return 0;
  const char* const model = m_entries[first].m_pName;
  std::size_t common = m_entries[first].m_uLength;
  for (std::size_t i = first + 1; i < m_entries.size(); ++i) {
    const char* const name = m_entries[i].m_pName;
    common = static_cast<std::size_t>(std::mismatch(model, model + common, name).first - model);
  }
  return common;
}

// A sort of names in no order guesses wrong at every other comparison. So they are dealt out first, by the highest bits
// in which their keys differ.
SortedNames::Order SortedNames::OrderByKeys(Index first) const {
  const auto size = static_cast<Index>(m_entries.size());
  std::uint64_t differing = 0;
  for (Index i = first; i < size; ++i) differing |= m_entries[i].m_ullKey ^ m_entries[first].m_ullKey;
  int shift = 0;
  while (differing >> shift >= uBUCKETS) ++shift;
  const auto bucketOf = [&](Index i) { return m_entries[i].m_ullKey >> shift & (uBUCKETS - 1); };

  std::vector<Index> places(uBUCKETS + 1);
  for (Index i = first; i < size; ++i) ++places[bucketOf(i)];
  std::partial_sum(places.begin(), places.end(), places.begin());
  Order order(size - first);
  for (Index i = first; i < size; ++i) order[--places[bucketOf(i)]] = i;

  for (Index at = 0; at < order.size();) {
    const Index next = places[bucketOf(order[at]) + 1];
    std::sort(order.begin() + at, order.begin() + next, [this](Index left, Index right) {
      const std::uint64_t leftKey = m_entries[left].m_ullKey;
      const std::uint64_t rightKey = m_entries[right].m_ullKey;
      return leftKey != rightKey ? leftKey < rightKey : IsBefore(left, right);
    });
    at = next;
  }
  return order;
}

bool SortedNames::IsBefore(Index left, Index right) const {
  return std::strcmp(m_entries[left].m_pName, m_entries[right].m_pName) < 0;
}

// Every folder has its two dots, which begin as no other name does: they find their places among the others
// when these are in order.
SortedNames::Order SortedNames::Sort() {
  const auto others = std::partition(m_entries.begin(), m_entries.end(),
                                     [](const Entry& entry) { return IsDots(entry.m_pName); });
  const auto dots = static_cast<Index>(others - m_entries.begin());
  const std::size_t common = CommonLength(dots);
  for (auto entry = others; entry != m_entries.end(); ++entry)
    entry->m_ullKey = KeyOf(entry->m_pName, entry->m_uLength, common);
  Order order = OrderByKeys(dots);
  for (Index dot = 0; dot < dots; ++dot) {
    const auto isBefore = [this](Index left, Index right) { return IsBefore(left, right); };
    order.insert(std::lower_bound(order.begin(), order.end(), dot, isBefore), dot);
  }
  return order;
}

void SortedNames::AppendTo(std::vector<std::string>& names) {
  const Order order = Sort();
  const std::size_t before = names.size();
  names.reserve(before + order.size());
  try {
    for (const Index at : order) names.emplace_back(m_entries[at].m_pName, m_entries[at].m_uLength);
  } catch (const std::bad_alloc&) {
    names.resize(before);
    throw;
  }
}

}  // namespace Oxa::Core::Platform
