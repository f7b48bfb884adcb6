// Reads this process's memory where it may not be there.
#ifndef OXACORE_PLATFORM_MEMORYREADER_H
#define OXACORE_PLATFORM_MEMORYREADER_H

#include <cstddef>
#include <cstdint>

namespace Oxa::Core::Platform {

/// Keeps what it read last, so that neighbours cost nothing: for one moment's look at memory that stands still.
/// One thread at a time.
class MemoryReader {
 public:
  MemoryReader() noexcept {}  // NOLINT(modernize-use-equals-default): what is in the windows doesn't matter
  MemoryReader(const MemoryReader&) = delete;
  MemoryReader& operator=(const MemoryReader&) = delete;

  /// From `begin` to `end` there is memory, as on the stack that the thread runs on: words in it are read where they
  /// are.
  void Trust(std::uint64_t begin, std::uint64_t end) noexcept {
    m_uTrustedBegin = begin;
    m_uTrustedEnd = end;
  }

  /// Copies `size` bytes from `address`; false if not all of them can be read, `to` is then undefined. Never faults,
  /// allocates nothing.
  bool Read(std::uint64_t address, void* to, std::size_t size) noexcept;

 private:
  static constexpr std::size_t uWINDOW = 4096;  // within a page: it can be read as a whole or not at all
  static constexpr int iWINDOWS = 4;            // the frame, the heap, texts, and what lies at an edge
  static constexpr std::uint64_t uNONE = 1;     // no window begins there

  const unsigned char* Open(std::uint64_t window) noexcept;
  bool IsTrustedWord(std::uint64_t address, std::size_t size) const noexcept;

  std::uint64_t m_uTrustedBegin = 0;
  std::uint64_t m_uTrustedEnd = 0;
  std::uint64_t m_begins[iWINDOWS] = {uNONE, uNONE, uNONE, uNONE};
  int m_iOldest = 0;
  unsigned char m_windows[iWINDOWS][uWINDOW];
};

}  // namespace Oxa::Core::Platform

#endif
