// Numbers in a block of bytes that may be cut off or damaged.
#ifndef OXACORE_PLATFORM_LINUX_BYTEVIEW_H
#define OXACORE_PLATFORM_LINUX_BYTEVIEW_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace Oxa::Core::Platform {

/// Bytes outside of the block read as 0. Doesn't own the bytes.
class ByteView {
 public:
  ByteView(const std::string& bytes, bool bigEndian) : m_bytes(bytes), m_bBigEndian(bigEndian) {}

  std::size_t Size() const { return m_bytes.size(); }

  /// The number of `width` bytes, at most 8, at `offset`.
  std::uint64_t Number(std::uint64_t offset, unsigned int width) const {
    std::uint64_t value = 0;
    for (unsigned int i = 0; i < width; ++i)
      value = value << 8 | Byte(offset + (m_bBigEndian ? i : width - 1 - i));
    return value;
  }

  std::uint16_t Half(std::uint64_t offset) const { return static_cast<std::uint16_t>(Number(offset, 2)); }
  std::uint32_t Word(std::uint64_t offset) const { return static_cast<std::uint32_t>(Number(offset, 4)); }

  /// Whether all `size` bytes at `offset` are inside.
  bool Has(std::uint64_t offset, std::uint64_t size) const {
    return offset <= m_bytes.size() && size <= m_bytes.size() - offset;
  }

  /// Those bytes, as many of them as are inside.
  std::string Bytes(std::uint64_t offset, std::uint64_t size) const {
    return offset < m_bytes.size() ? m_bytes.substr(offset, size) : std::string();
  }

 private:
  std::uint8_t Byte(std::uint64_t offset) const {
    return offset < m_bytes.size() ? static_cast<std::uint8_t>(m_bytes[offset]) : std::uint8_t{0};
  }

  const std::string& m_bytes;
  const bool m_bBigEndian;
};

}  // namespace Oxa::Core::Platform

#endif
