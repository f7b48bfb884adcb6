// Bytes of a file that a test makes.
#ifndef OXACORE_TESTS_SYSTEMTOOLS_BYTES_H
#define OXACORE_TESTS_SYSTEMTOOLS_BYTES_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace SystemToolsTest {

class Bytes {
 public:
  explicit Bytes(bool bigEndian = false) : m_bBigEndian(bigEndian) {}

  const std::string& Text() const { return m_bytes; }
  std::size_t Size() const { return m_bytes.size(); }

  Bytes& Add(const std::string& bytes) {
    m_bytes += bytes;
    return *this;
  }

  Bytes& Number(std::uint64_t value, unsigned int width) {
    m_bytes.append(width, '\0');
    Set(m_bytes.size() - width, value, width);
    return *this;
  }
  Bytes& Half(std::uint64_t value) { return Number(value, 2); }
  Bytes& Word(std::uint64_t value) { return Number(value, 4); }

  /// Writes over what is there already.
  void Set(std::size_t offset, std::uint64_t value, unsigned int width) {
    for (unsigned int i = 0; i < width; ++i)
      m_bytes[offset + (m_bBigEndian ? width - 1 - i : i)] = static_cast<char>(value >> 8 * i & 255);
  }

  Bytes& FillUpTo(std::size_t size) {
    if (m_bytes.size() < size) m_bytes.resize(size);
    return *this;
  }
  Bytes& Align(std::size_t size) { return FillUpTo((m_bytes.size() + size - 1) / size * size); }

  /// ASCII as UTF-16, with a closing 0.
  Bytes& Wide(const std::u16string& text) {
    for (const char16_t unit : text) Half(unit);
    return Half(0);
  }

 private:
  bool m_bBigEndian;
  std::string m_bytes;
};

}  // namespace SystemToolsTest

#endif
