// Text for a process whose heap can't be trusted any more.
#ifndef OXACORE_ERRORHANDLING_FATALERRORTEXT_H
#define OXACORE_ERRORHANDLING_FATALERRORTEXT_H

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Oxa::Core {

/// A text in place, cut where its room ends. Allocates nothing and has no destructor: it may stand in static storage.
template <std::size_t SIZE>
class FixedText {
 public:
  constexpr FixedText() = default;

  const char* Get() const noexcept { return m_text; }
  std::size_t Size() const noexcept { return m_uSize; }
  void Clear() noexcept { Cut(0); }

  FixedText& Add(const char* text) noexcept { return Add(text, std::strlen(text)); }

  FixedText& Add(const char* text, std::size_t size) noexcept {
    const std::size_t room = SIZE - 1 - m_uSize;
    if (size > room) size = room;
    std::memcpy(m_text + m_uSize, text, size);
    Cut(m_uSize + size);
    return *this;
  }

  /// Decimal, without leading zeros.
  FixedText& AddNumber(std::uint64_t number) noexcept { return AddDigits(number, 10); }

  /// With "0x" in front.
  FixedText& AddHex(std::uint64_t number) noexcept { return Add("0x").AddDigits(number, 16); }

 private:
  void Cut(std::size_t size) noexcept {
    m_uSize = size;
    m_text[size] = 0;
  }

  FixedText& AddDigits(std::uint64_t number, unsigned base) noexcept {
    char digits[20];
    std::size_t at = sizeof digits;
    do {
      digits[--at] = "0123456789abcdef"[number % base];
      number /= base;
    } while (number != 0);
    return Add(digits + at, sizeof digits - at);
  }

  std::size_t m_uSize = 0;
  char m_text[SIZE] = {};
};

}  // namespace Oxa::Core

#endif
