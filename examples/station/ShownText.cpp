#include "ShownText.h"

#include <cstddef>

namespace Station {

namespace {

const char* const sHEX_DIGITS = "0123456789ABCDEF";
constexpr std::size_t uLONGEST_QUOTE = 60;

bool IsPrintable(unsigned char byte) { return byte >= 0x20 && byte < 0x7F; }

}  // namespace

std::string Shown(const std::string& text) {
  std::string shown;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (IsPrintable(byte)) {
      shown += c;
    } else {
      shown += {'\\', 'x', sHEX_DIGITS[byte / 16], sHEX_DIGITS[byte % 16]};
    }
  }
  return shown;
}

std::string Quoted(const std::string& text) {
  if (text.size() <= uLONGEST_QUOTE) return '"' + Shown(text) + '"';
  return '"' + Shown(text.substr(0, uLONGEST_QUOTE)) + "...\"";
}

}  // namespace Station
