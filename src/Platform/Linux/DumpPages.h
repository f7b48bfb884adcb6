// Which pages of a region a process has ever touched.
#ifndef OXACORE_PLATFORM_LINUX_DUMPPAGES_H
#define OXACORE_PLATFORM_LINUX_DUMPPAGES_H

#include <cstddef>
#include <cstdint>

namespace Oxa::Core::Platform {

constexpr std::uint64_t uDUMP_PAGE = 4096;

/// Looks at up to 512 pages from `address` on. Allocates nothing.
class DumpPages {
 public:
  static constexpr std::size_t uMOST = 512;

  /// `pagemap` is the system's own table as an open file, -1 for none. Where nothing can be told a page counts as
  /// touched.
  void Read(int pagemap, std::uint64_t address, std::size_t count) noexcept;

  bool IsTouched(std::size_t page) const noexcept { return m_touched[page]; }

 private:
  bool ReadTable(int pagemap, std::uint64_t address, std::size_t count) noexcept;
  bool ReadResidence(std::uint64_t address, std::size_t count) noexcept;

  bool m_touched[uMOST];
  std::uint64_t m_table[uMOST];
  unsigned char m_residence[uMOST];
};

}  // namespace Oxa::Core::Platform

#endif
