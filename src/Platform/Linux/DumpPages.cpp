#include "Platform/Linux/DumpPages.h"

#if defined(__x86_64__)

#include <algorithm>

#include "Platform/Linux/RawCall.h"

namespace Oxa::Core::Platform {

namespace {

// In memory, or swapped out of it.
constexpr std::uint64_t uTOUCHED = 3ULL << 62U;

}  // namespace

void DumpPages::Read(int pagemap, std::uint64_t address, std::size_t count) noexcept {
  if (!ReadTable(pagemap, address, count) && !ReadResidence(address, count))
    std::fill_n(m_touched, count, true);
}

bool DumpPages::ReadTable(int pagemap, std::uint64_t address, std::size_t count) noexcept {
  if (pagemap < 0) return false;
  const long size = static_cast<long>(count * sizeof m_table[0]);
  const std::uint64_t position = address / uDUMP_PAGE * sizeof m_table[0];
  if (RawCall(SYS_pread64, pagemap, RawArgument(m_table), size, static_cast<long>(position)) != size)
    return false;
  for (std::size_t i = 0; i < count; ++i) m_touched[i] = (m_table[i] & uTOUCHED) != 0;
  return true;
}

bool DumpPages::ReadResidence(std::uint64_t address, std::size_t count) noexcept {
  const long size = static_cast<long>(count * uDUMP_PAGE);
  if (RawCall(SYS_mincore, static_cast<long>(address), size, RawArgument(m_residence)) != 0) return false;
  for (std::size_t i = 0; i < count; ++i) m_touched[i] = (m_residence[i] & 1U) != 0;
  return true;
}

}  // namespace Oxa::Core::Platform

#endif
