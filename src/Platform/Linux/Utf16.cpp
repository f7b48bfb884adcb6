#include "Platform/Linux/Utf16.h"

namespace Oxa::Core::Platform {

namespace {

// How many bytes follow a first byte, and which of its bits count; -1 for a byte that begins nothing.
int Followers(unsigned char first) noexcept {
  if (first < 0x80) return 0;
  if (first >= 0xc2 && first < 0xe0) return 1;
  if (first >= 0xe0 && first < 0xf0) return 2;
  if (first >= 0xf0 && first < 0xf5) return 3;
  return -1;
}

bool IsCharacter(char32_t value, int followers) noexcept {
  static const char32_t lowest[4] = {0, 0x80, 0x800, 0x10000};
  return value >= lowest[followers] && value <= 0x10ffff && (value < 0xd800 || value > 0xdfff);
}

// The character at `text` and how many bytes it takes.
char32_t Decode(const char* text, int& bytes) noexcept {
  const unsigned char first = static_cast<unsigned char>(*text);
  const int followers = Followers(first);
  bytes = 1;
  if (followers <= 0) return first;
  char32_t value = first & (0x3fU >> static_cast<unsigned>(followers));
  for (int i = 1; i <= followers; ++i) {
    const unsigned char next = static_cast<unsigned char>(text[i]);
    if ((next & 0xc0U) != 0x80) return first;
    value = value << 6U | (next & 0x3fU);
  }
  if (!IsCharacter(value, followers)) return first;
  bytes = followers + 1;
  return value;
}

}  // namespace

std::size_t NextUtf16(const char*& text, char16_t* units) noexcept {
  int bytes = 1;
  const char32_t value = Decode(text, bytes);
  text += bytes;
  if (value < 0x10000) {
    units[0] = static_cast<char16_t>(value);
    return 1;
  }
  units[0] = static_cast<char16_t>(0xd800U + ((value - 0x10000) >> 10U));
  units[1] = static_cast<char16_t>(0xdc00U + ((value - 0x10000) & 0x3ffU));
  return 2;
}

}  // namespace Oxa::Core::Platform
