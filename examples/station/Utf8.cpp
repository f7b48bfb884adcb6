#include "Utf8.h"

#include <cstddef>
#include <optional>

namespace Station {

namespace {

const char* const sREPLACEMENT = "\xEF\xBF\xBD";
constexpr unsigned char uMICRO = 0xB5;

void AppendTwoBytes(std::string& text, unsigned char code) {
  text += static_cast<char>(0xC0 | (code >> 6));
  text += static_cast<char>(0x80 | (code & 0x3F));
}

// The single byte for the two-byte character that begins at `at`; nothing if there is none.
std::optional<unsigned char> SingleByteAt(const std::string& text, std::size_t at) {
  const auto lead = static_cast<unsigned char>(text[at]);
  const auto next = static_cast<unsigned char>(at + 1 < text.size() ? text[at + 1] : '\0');
  if (lead == 0xCE && next == 0xBC) return uMICRO;
  const bool isPair = (lead == 0xC2 || lead == 0xC3) && (next & 0xC0) == 0x80;
  if (!isPair) return std::nullopt;
  return static_cast<unsigned char>((lead & 0x03) << 6 | (next & 0x3F));
}

}  // namespace

std::string ToUtf8(const std::string& singleByteText) {
  std::string text;
  text.reserve(singleByteText.size());
  for (const char c : singleByteText) {
    const auto code = static_cast<unsigned char>(c);
    if (code < 0x80) {
      text += c;
    } else if (code < 0xA0) {
      text += sREPLACEMENT;
    } else {
      AppendTwoBytes(text, code);
    }
  }
  return text;
}

std::string FromUtf8(const std::string& text) {
  std::string single;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::optional<unsigned char> byte = SingleByteAt(text, i);
    single += byte ? static_cast<char>(*byte) : text[i];
    if (byte) ++i;
  }
  return single;
}

}  // namespace Station
