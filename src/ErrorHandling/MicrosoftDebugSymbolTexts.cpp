#include "ErrorHandling/MicrosoftDebugSymbolTexts.h"

#include <Infrastructure/OxaCore/SystemTools.h>

#include <algorithm>
#include <charconv>
#include <cstring>

namespace MSWindows {

using namespace Oxa::Core::Platform;

namespace {

constexpr char sDIGITS[] = "0123456789abcdef";

std::string Hexadecimal(std::uint64_t number) {
  char text[17];
  const auto end = std::to_chars(text, text + sizeof text, number, 16);
  return std::string(text, end.ptr);
}

// All bytes as one number.
std::string Hexadecimal(const unsigned char* pBytes, std::size_t size) {
  std::string text;
  for (std::size_t at = size; at > 0; --at) {
    text += sDIGITS[pBytes[at - 1] >> 4];
    text += sDIGITS[pBytes[at - 1] & 15];
  }
  const std::size_t first = text.find_first_not_of('0');
  return first == std::string::npos ? "0" : text.substr(first);
}

template <class Number>
Number As(const unsigned char* pBytes) {
  Number number;
  std::memcpy(&number, pBytes, sizeof number);
  return number;
}

template <class Number>
std::string InDecimal(const unsigned char* pBytes) {
  char text[64];
  const auto end = std::to_chars(text, text + sizeof text, As<Number>(pBytes));
  return std::string(text, end.ptr);
}

__extension__ using UnsignedWidest = unsigned __int128;

std::string WidestInDecimal(const unsigned char* pBytes, bool isSigned) {
  UnsignedWidest number = As<UnsignedWidest>(pBytes);
  const bool negative = isSigned && (number >> 127) != 0;
  if (negative) number = 0 - number;
  std::string text;
  do text += static_cast<char>('0' + static_cast<int>(number % 10));
  while ((number /= 10) != 0);
  if (negative) text += '-';
  return std::string(text.rbegin(), text.rend());
}

std::string SignedText(const unsigned char* pBytes, std::size_t size) {
  switch (size) {
    case 1:
      return InDecimal<std::int8_t>(pBytes);
    case 2:
      return InDecimal<std::int16_t>(pBytes);
    case 4:
      return InDecimal<std::int32_t>(pBytes);
    case 8:
      return InDecimal<std::int64_t>(pBytes);
    case 16:
      return WidestInDecimal(pBytes, true);
    default:
      return "0x" + Hexadecimal(pBytes, size);
  }
}

std::string UnsignedText(const unsigned char* pBytes, std::size_t size) {
  switch (size) {
    case 1:
      return InDecimal<std::uint8_t>(pBytes);
    case 2:
      return InDecimal<std::uint16_t>(pBytes);
    case 4:
      return InDecimal<std::uint32_t>(pBytes);
    case 8:
      return InDecimal<std::uint64_t>(pBytes);
    case 16:
      return WidestInDecimal(pBytes, false);
    default:
      return "0x" + Hexadecimal(pBytes, size);
  }
}

std::string FloatText(const unsigned char* pBytes, std::size_t size) {
  switch (size) {
    case sizeof(float):
      return InDecimal<float>(pBytes);
    case sizeof(double):
      return InDecimal<double>(pBytes);
    case sizeof(long double):
      return InDecimal<long double>(pBytes);
    default:
      return "0x" + Hexadecimal(pBytes, size);
  }
}

std::uint64_t NumberOf(const unsigned char* pBytes, std::size_t size) {
  std::uint64_t number = 0;
  std::memcpy(&number, pBytes, std::min(size, sizeof number));
  return number;
}

// The number, and the character if it's one that anybody can see.
std::string CharacterText(const unsigned char* pBytes, std::size_t size, bool isSigned) {
  std::string text = isSigned ? SignedText(pBytes, size) : UnsignedText(pBytes, size);
  const std::uint64_t code = NumberOf(pBytes, size);
  if (code < ' ' || code > '~') return text;
  return text + " '" + static_cast<char>(code) + "'";
}

std::string ResultText(const unsigned char* pBytes, std::size_t size) {
  const std::uint64_t code = NumberOf(pBytes, size);
  return Hexadecimal(code) + " (" + GetWindowsErrorMessage(static_cast<unsigned long>(code)) + ")";
}

void PutEscape(std::string& text, std::uint32_t code) {
  switch (code) {
    case '\n':
      text += "\\n";
      return;
    case '\r':
      text += "\\r";
      return;
    case '\t':
      text += "\\t";
      return;
    default:
      text += "\\x";
      if (code < 16) text += '0';
      text += Hexadecimal(code);
  }
}

bool IsControl(std::uint32_t code) { return code < ' ' || (code >= 0x7f && code < 0xa0); }

// XML has no place for the halves of pairs and for the last two of each plane.
bool IsCharacterOfXml(std::uint32_t code) {
  return !IsControl(code) && (code < 0xd800 || code > 0xdfff) && code <= 0x10ffff &&
         (code & 0xfffe) != 0xfffe;
}

void PutCode(std::string& text, std::uint32_t code) {
  const auto tail = [&](unsigned shift) { text += static_cast<char>(0x80 | (code >> shift & 0x3f)); };
  if (!IsCharacterOfXml(code)) return PutEscape(text, code);
  if (code < 0x80) {
    text += static_cast<char>(code);
  } else if (code < 0x800) {
    text += static_cast<char>(0xc0 | code >> 6);
    tail(0);
  } else if (code < 0x10000) {
    text += static_cast<char>(0xe0 | code >> 12);
    tail(6), tail(0);
  } else {
    text += static_cast<char>(0xf0 | code >> 18);
    tail(12), tail(6), tail(0);
  }
}

std::size_t SequenceLength(unsigned char first) {
  if (first < 0x80) return 1;
  if (first >= 0xc2 && first < 0xe0) return 2;
  if (first >= 0xe0 && first < 0xf0) return 3;
  return first >= 0xf0 && first < 0xf5 ? 4 : 0;
}

// The character of UTF-8 at the start of `count` bytes, and its length, 0 if there is none.
std::size_t Decode(const unsigned char* pBytes, std::size_t count, std::uint32_t& code) {
  static constexpr std::uint32_t uLEAST[] = {0, 0, 0x80, 0x800, 0x10000};
  const std::size_t length = SequenceLength(pBytes[0]);
  if (length == 0 || length > count) return 0;
  code = length == 1 ? pBytes[0] : pBytes[0] & (0x7fU >> length);
  for (std::size_t at = 1; at < length; ++at) {
    if ((pBytes[at] & 0xc0) != 0x80) return 0;
    code = code << 6 | (pBytes[at] & 0x3fU);
  }
  return code >= uLEAST[length] && (length == 1 || IsCharacterOfXml(code)) ? length : 0;
}

void PutBytes(std::string& text, const unsigned char* pBytes, std::size_t count) {
  for (std::size_t at = 0; at < count;) {
    std::uint32_t code = pBytes[at];
    const std::size_t length = Decode(pBytes + at, count - at, code);
    if (length == 0)
      PutEscape(text, pBytes[at]);
    else
      PutCode(text, code);
    at += std::max<std::size_t>(length, 1);
  }
}

std::uint32_t Unit(const unsigned char* pUnits, std::size_t at, std::size_t width) {
  return width == 2 ? As<std::uint16_t>(pUnits + at * 2) : As<std::uint32_t>(pUnits + at * 4);
}

void PutUnits(std::string& text, const unsigned char* pUnits, std::size_t count, std::size_t width) {
  for (std::size_t at = 0; at < count; ++at) {
    std::uint32_t code = Unit(pUnits, at, width);
    const std::uint32_t next = at + 1 < count ? Unit(pUnits, at + 1, width) : 0;
    if (width == 2 && (code & 0xfc00) == 0xd800 && (next & 0xfc00) == 0xdc00) {
      code = 0x10000 + ((code & 0x3ff) << 10) + (next & 0x3ff);
      ++at;
    }
    PutCode(text, code);
  }
}

}  // namespace

std::string BasicText(const TypeFacts& type, const unsigned char* pBytes, std::size_t size) {
  switch (type.m_eBasic) {
    case eBASIC_BOOL:
      return NumberOf(pBytes, size) != 0 ? "true" : "false";
    case eBASIC_CHAR:
    case eBASIC_WCHAR:
      return CharacterText(pBytes, size, type.m_bSigned);
    case eBASIC_INT:
    case eBASIC_LONG:
      return SignedText(pBytes, size);
    case eBASIC_UINT:
    case eBASIC_ULONG:
      return UnsignedText(pBytes, size);
    case eBASIC_FLOAT:
      return FloatText(pBytes, size);
    case eBASIC_BCD:
      return "BCD: " + Hexadecimal(pBytes, size);
    case eBASIC_CURRENCY:
      return "CURRENCY: " + Hexadecimal(pBytes, size);
    case eBASIC_DATE:
      return "DATE: " + Hexadecimal(pBytes, size);
    case eBASIC_COMPLEX:
      return "COMPLEX: " + Hexadecimal(pBytes, size);
    case eBASIC_BIT:
      return "BIT: " + Hexadecimal(pBytes, size);
    case eBASIC_HRESULT:
      return ResultText(pBytes, size);
    default:
      return "0x" + Hexadecimal(pBytes, size);
  }
}

std::string AddressText(std::uint64_t address) { return "0x" + Hexadecimal(address); }

std::string QuotedText(const unsigned char* pCharacters, std::size_t count, std::size_t width) {
  std::string text = "\"";
  if (width == 1)
    PutBytes(text, pCharacters, count);
  else
    PutUnits(text, pCharacters, count, width);
  return text + "\"";
}

std::size_t LengthToZero(const unsigned char* pCharacters, std::size_t count, std::size_t width) {
  for (std::size_t at = 0; at < count; ++at)
    if (NumberOf(pCharacters + at * width, width) == 0) return at;
  return count;
}

}  // namespace MSWindows
