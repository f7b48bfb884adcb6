// Small texts without the C library: the numbers of the system's own files, and the names of those files.
#ifndef OXACORE_PLATFORM_LINUX_DUMPTEXT_H
#define OXACORE_PLATFORM_LINUX_DUMPTEXT_H

#include <cstddef>
#include <cstdint>

namespace Oxa::Core::Platform {

/// Takes a number off the front of a text; 0 and no move where there is none.
inline std::uint64_t TakeNumber(const char*& text, unsigned base) noexcept {
  std::uint64_t value = 0;
  for (;; ++text) {
    unsigned digit = base;
    if (*text >= '0' && *text <= '9') digit = static_cast<unsigned>(*text - '0');
    if (*text >= 'a' && *text <= 'f') digit = static_cast<unsigned>(*text - 'a') + 10;
    if (digit >= base) return value;
    value = value * base + digit;
  }
}

/// Behind so many words, each ended by blanks.
inline const char* SkipWords(const char* text, int words) noexcept {
  while (words-- > 0) {
    while (*text != ' ' && *text != 0) ++text;
    while (*text == ' ') ++text;
  }
  return text;
}

inline bool BeginsWith(const char* text, const char* beginning) noexcept {
  while (*beginning != 0) {
    if (*text++ != *beginning++) return false;
  }
  return true;
}

/// A short text that is put together on the stack; what doesn't fit is cut.
class DumpText {
 public:
  const char* Get() const noexcept { return m_text; }

  DumpText& operator<<(const char* text) noexcept {
    while (*text != 0 && m_uLength + 1 < sizeof m_text) m_text[m_uLength++] = *text++;
    m_text[m_uLength] = 0;
    return *this;
  }
  DumpText& operator<<(std::uint64_t value) noexcept {
    char digits[21] = {};
    char* at = digits + 20;
    do {
      *--at = static_cast<char>('0' + value % 10);
      value /= 10;
    } while (value != 0);
    return *this << at;
  }

 private:
  char m_text[512] = {};
  std::size_t m_uLength = 0;
};

}  // namespace Oxa::Core::Platform

#endif
