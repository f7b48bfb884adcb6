#include "ErrorHandling/FatalErrorReadable.h"

#include <cstring>

namespace Oxa::Core {

namespace {

constexpr char32_t uINVALID = 0xFFFFFFFF;

unsigned char ByteOf(char character) { return static_cast<unsigned char>(character); }

// The length that the first byte of a character announces; 0 where none begins so.
std::size_t LengthOf(unsigned char first) {
  if (first < 0x80) return 1;
  if (first < 0xC2 || first > 0xF4) return 0;
  return first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
}

// The character of `length` bytes at the start of `text`.
char32_t Decode(std::string_view text, std::size_t length) {
  constexpr unsigned char FIRST_BITS[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
  constexpr char32_t LEAST[] = {0, 0, 0x80, 0x800, 0x10000};
  if (length == 0 || length > text.size()) return uINVALID;
  char32_t code = ByteOf(text[0]) & FIRST_BITS[length];
  for (std::size_t i = 1; i < length; ++i) {
    if ((ByteOf(text[i]) & 0xC0U) != 0x80) return uINVALID;
    code = (code << 6U) | (ByteOf(text[i]) & 0x3FU);
  }
  return code < LEAST[length] ? uINVALID : code;
}

bool IsCharacterOfXml(char32_t code) {
  if (code < 0x20) return code == '\t' || code == '\n' || code == '\r';
  return code < 0xD800 || (code > 0xDFFF && code < 0xFFFE) || (code > 0xFFFF && code < 0x110000);
}

}  // namespace

ReadableCharacter FirstReadable(std::string_view text) noexcept {
  const unsigned char first = ByteOf(text[0]);
  const std::size_t length = LengthOf(first);
  const char32_t code = Decode(text, length);
  if (code == uINVALID) {
    return {1, 2, {static_cast<char>(0xC0U | first >> 6U), static_cast<char>(0x80U | (first & 0x3FU))}};
  }
  ReadableCharacter character = {length, 1, {'?'}};
  if (IsCharacterOfXml(code)) {
    character.m_uSize = length;
    std::memcpy(character.m_text, text.data(), length);
  }
  return character;
}

std::string AsReadableXml(std::string_view text) {
  std::string readable;
  readable.reserve(text.size());
  while (!text.empty()) {
    const ReadableCharacter character = FirstReadable(text);
    readable.append(character.m_text, character.m_uSize);
    text.remove_prefix(character.m_uTaken);
  }
  return readable;
}

}  // namespace Oxa::Core
