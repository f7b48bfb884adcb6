#include "Utf8.h"

namespace Station {

namespace {

const char* const sREPLACEMENT = "\xEF\xBF\xBD";

void AppendTwoBytes(std::string& text, unsigned char code) {
  text += static_cast<char>(0xC0 | (code >> 6));
  text += static_cast<char>(0x80 | (code & 0x3F));
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

}  // namespace Station
