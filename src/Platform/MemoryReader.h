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
  MemoryReader() noexcept = default;
  MemoryReader(const MemoryReader&) = delete;
  MemoryReader& operator=(const MemoryReader&) = delete;

  /// Copies `size` bytes from `address`; false if not all of them can be read, `to` is then undefined. Never faults,
  /// allocates nothing.
  bool Read(std::uint64_t address, void* to, std::size_t size) noexcept;

 private:
  static constexpr std::size_t uWINDOW =
      4096;  // no page is smaller: a window can be read as a whole or not at all

  bool Open(std::uint64_t window) noexcept;

  std::uint64_t m_uWindow = 1;  // the address of what is kept; 1 is none
  unsigned char m_window[uWINDOW];
};

}  // namespace Oxa::Core::Platform

#endif
