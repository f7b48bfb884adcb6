// Characters as UTF-8.
#ifndef OXACORE_PLATFORM_LINUX_UTF8_H
#define OXACORE_PLATFORM_LINUX_UTF8_H

#include <cstdint>
#include <string>

namespace Oxa::Core::Platform {

/// Puts UTF-16 together. Half a pair without the other half comes out as the sign for an unknown character.
class Utf16Joiner {
 public:
  explicit Utf16Joiner(std::string& text) : m_text(text) {}
  Utf16Joiner(const Utf16Joiner&) = delete;
  Utf16Joiner& operator=(const Utf16Joiner&) = delete;
  ~Utf16Joiner() = default;

  void Add(std::uint16_t unit) {
    const bool low = (unit & 0xFC00) == 0xDC00;
    if (m_uHigh != 0 && low) {
      Append(0x10000u + ((m_uHigh & 0x3FFu) << 10) + (unit & 0x3FFu));
      m_uHigh = 0;
      return;
    }
    Finish();
    if ((unit & 0xFC00) == 0xD800)
      m_uHigh = unit;
    else
      Append(low ? uUNKNOWN : unit);
  }

  /// Nothing more comes, or something else.
  void Finish() {
    if (m_uHigh != 0) Append(uUNKNOWN);
    m_uHigh = 0;
  }

 private:
  static constexpr std::uint32_t uUNKNOWN = 0xFFFD;
  static constexpr std::uint32_t uLEADS[] = {0, 0xC0, 0xE0, 0xF0};  // by the count of bytes that follow

  void Append(std::uint32_t character) {
    if (character < 0x80) {
      AddByte(character);
      return;
    }
    const int following = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    AddByte(uLEADS[following] | character >> 6 * following);
    for (int left = following - 1; left >= 0; --left) AddByte(0x80u | (character >> 6 * left & 0x3Fu));
  }

  void AddByte(std::uint32_t byte) { m_text += static_cast<char>(static_cast<std::uint8_t>(byte)); }

  std::string& m_text;
  std::uint32_t m_uHigh = 0;  // the first half of a pair that waits for the second
};

}  // namespace Oxa::Core::Platform

#endif
