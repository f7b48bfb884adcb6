#include "Platform/SortedNames.h"

#include <algorithm>
#include <boost/endian/conversion.hpp>
#include <cstring>
#include <new>

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

bool IsDots(const char* name) { return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0; }

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

// Every folder has its two dots, which begin as no other name does: they find their places among the others
// when these are in order.
void SortedNames::Sort() {
  const auto isBefore = [](const Entry& left, const Entry& right) {
    return std::strcmp(left.m_pName, right.m_pName) < 0;
  };
  const auto others = std::partition(m_entries.begin(), m_entries.end(),
                                     [](const Entry& entry) { return IsDots(entry.m_pName); });
  const std::size_t common = CommonLength(static_cast<std::size_t>(others - m_entries.begin()));
  for (auto entry = others; entry != m_entries.end(); ++entry)
    entry->m_ullKey = KeyOf(entry->m_pName, entry->m_uLength, common);
  std::sort(others, m_entries.end(), [&](const Entry& left, const Entry& right) {
    return left.m_ullKey != right.m_ullKey ? left.m_ullKey < right.m_ullKey : isBefore(left, right);
  });
  std::sort(m_entries.begin(), others, isBefore);
  std::inplace_merge(m_entries.begin(), others, m_entries.end(), isBefore);
}

void SortedNames::AppendTo(std::vector<std::string>& names) {
  Sort();
  const std::size_t before = names.size();
  names.reserve(before + m_entries.size());
  try {
    for (const Entry& entry : m_entries) names.emplace_back(entry.m_pName, entry.m_uLength);
  } catch (const std::bad_alloc&) {
    names.resize(before);
    throw;
  }
}

}  // namespace Oxa::Core::Platform
