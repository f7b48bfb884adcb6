#include "Text.h"

#include <algorithm>
#include <cstddef>

namespace OxaTest {

namespace {

const char* const sREPLACEMENT = "\xEF\xBF\xBD";

unsigned Byte(const std::string& text, std::size_t at) {
  return at < text.size() ? static_cast<unsigned char>(text[at]) : 0;
}

bool IsContinuation(unsigned byte) { return (byte & 0xC0U) == 0x80U; }

// The length of a sequence that begins so; 0 for what begins none.
std::size_t LengthOf(unsigned lead) {
  if (lead < 0x80U) return 1;
  if (lead >= 0xC2U && lead <= 0xDFU) return 2;
  if (lead >= 0xE0U && lead <= 0xEFU) return 3;
  return lead >= 0xF0U && lead <= 0xF4U ? 4 : 0;
}

// The length of the UTF-8 sequence at `at`, with its code point; 0 if there is none.
std::size_t DecodeOne(const std::string& text, std::size_t at, unsigned& code) {
  static const unsigned s_SMALLEST[] = {0, 0, 0x80, 0x800, 0x10000};
  const unsigned lead = Byte(text, at);
  const std::size_t length = LengthOf(lead);
  if (length < 2) {
    code = lead;
    return length;
  }
  code = lead & (0xFFU >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    if (!IsContinuation(Byte(text, at + i))) return 0;
    code = (code << 6) | (Byte(text, at + i) & 0x3FU);
  }
  const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
  return code < s_SMALLEST[length] || code > 0x10FFFF || surrogate ? 0 : length;
}

bool IsHarmless(unsigned code) {
  if (code == '\t' || code == '\n') return true;
  return code >= 0x20 && (code < 0x7F || code > 0x9F) && code != 0xFFFE && code != 0xFFFF;
}

void AppendLatin1(std::string& out, unsigned code) {
  out += static_cast<char>(0xC0U | (code >> 6));
  out += static_cast<char>(0x80U | (code & 0x3FU));
}

// Appends what begins at `at` and gives where the next begins.
std::size_t AppendOne(std::string& out, const std::string& text, std::size_t at) {
  if (text[at] == '\r') {
    if (Byte(text, at + 1) != '\n') out += '\n';
    return at + 1;
  }
  unsigned code = 0;
  const std::size_t length = DecodeOne(text, at, code);
  if (length == 0) code = Byte(text, at);
  if (!IsHarmless(code))
    out += sREPLACEMENT;
  else if (length == 0)
    AppendLatin1(out, code);
  else
    out.append(text, at, length);
  return at + (length == 0 ? 1 : length);
}

}  // namespace

std::string Printable(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) at = AppendOne(out, text, at);
  return out;
}

std::string OneLine(const std::string& text) {
  std::string line = Printable(text);
  std::replace(line.begin(), line.end(), '\n', ' ');
  return line;
}

std::string Shortened(const std::string& printable, std::string::size_type width) {
  std::size_t end = 0;
  for (std::size_t count = 0; end < printable.size(); ++end)
    if (!IsContinuation(Byte(printable, end)) && ++count > width) break;
  return printable.substr(0, end);
}

std::string Indented(const std::string& printable, const std::string& indentation) {
  std::string out;
  for (std::size_t at = 0; at < printable.size();) {
    const std::size_t end = std::min(printable.find('\n', at), printable.size());
    out.append(indentation).append(printable, at, end - at).append("\n");
    at = end + 1;
  }
  return out;
}

}  // namespace OxaTest
