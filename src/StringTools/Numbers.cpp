#include <Infrastructure/OxaCore/StringTools.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cwchar>
#include <string_view>

#include "StringTools/Characters.h"

namespace Oxa::Core {

namespace {

// Reading a number is nothing that may change what a caller is about to look at.
class KeptErrno {
 public:
  KeptErrno() : m_iErrno(errno) { errno = 0; }
  KeptErrno(const KeptErrno&) = delete;
  KeptErrno& operator=(const KeptErrno&) = delete;
  ~KeptErrno() { errno = m_iErrno; }

 private:
  int m_iErrno;
};

long Signed(const std::string& text, int radix) { return std::strtol(text.c_str(), nullptr, radix); }
long Signed(const TUnicodeStr& text, int radix) { return std::wcstol(text.c_str(), nullptr, radix); }

template <class Char>
long ReadSigned(const std::basic_string<Char>& text, int radix) {
  const KeptErrno kept;
  return Signed(text, radix);
}

unsigned long Unsigned(const std::string& text, int radix) {
  return std::strtoul(text.c_str(), nullptr, radix);
}
unsigned long Unsigned(const TUnicodeStr& text, int radix) {
  return std::wcstoul(text.c_str(), nullptr, radix);
}

template <class Char>
unsigned long ReadUnsigned(const std::basic_string<Char>& text, int radix) {
  const KeptErrno kept;
  return Unsigned(text, radix);
}

template <class Char>
std::int32_t ReadSigned32(const std::basic_string<Char>& text, int radix) {
  return static_cast<std::int32_t>(std::clamp<long>(ReadSigned(text, radix), INT32_MIN, INT32_MAX));
}

template <class Char>
bool HasMinus(const std::basic_string<Char>& text) {
  const auto number = WithoutLeadingSpace(std::basic_string_view<Char>(text));
  return !number.empty() && number.front() == Char('-');
}

// The magnitude decides what is out of range; the sign wraps it around only then.
template <class Char>
std::uint32_t ReadUnsigned32(const std::basic_string<Char>& text, int radix) {
  const KeptErrno kept;
  const unsigned long number = Unsigned(text, radix);
  const bool negative = HasMinus(text);
  const unsigned long magnitude = negative ? 0 - number : number;
  if (errno == ERANGE || magnitude > UINT32_MAX) return UINT32_MAX;
  const auto narrow = static_cast<std::uint32_t>(magnitude);
  return negative ? 0 - narrow : narrow;
}

template <class Char>
bool IsTrue(std::basic_string_view<Char> text) {
  static constexpr std::string_view sTRUE[] = {"1", "T", "t", "TRUE", "True", "true"};
  return std::any_of(std::begin(sTRUE), std::end(sTRUE), [text](std::string_view word) {
    return std::equal(text.begin(), text.end(), word.begin(), word.end());
  });
}

}  // namespace

namespace StringTools {

int ToInt(const std::string& text, int radix) { return ReadSigned32(text, radix); }
int ToInt(const TUnicodeStr& text, int radix) { return ReadSigned32(text, radix); }

long ToLong(const std::string& text, int radix) { return ReadSigned(text, radix); }
long ToLong(const TUnicodeStr& text, int radix) { return ReadSigned(text, radix); }

short ToShort(const std::string& text, int radix) { return static_cast<short>(ReadSigned32(text, radix)); }
short ToShort(const TUnicodeStr& text, int radix) { return static_cast<short>(ReadSigned32(text, radix)); }

unsigned int ToUnsignedInt(const std::string& text, int radix) { return ReadUnsigned32(text, radix); }
unsigned int ToUnsignedInt(const TUnicodeStr& text, int radix) { return ReadUnsigned32(text, radix); }

unsigned long ToUnsignedLong(const std::string& text, int radix) { return ReadUnsigned(text, radix); }
unsigned long ToUnsignedLong(const TUnicodeStr& text, int radix) { return ReadUnsigned(text, radix); }

unsigned short ToUnsignedShort(const std::string& text, int radix) {
  return static_cast<unsigned short>(ReadUnsigned32(text, radix));
}
unsigned short ToUnsignedShort(const TUnicodeStr& text, int radix) {
  return static_cast<unsigned short>(ReadUnsigned32(text, radix));
}

unsigned char ToByte(const std::string& text, int radix) {
  return static_cast<unsigned char>(ReadUnsigned32(text, radix));
}
unsigned char ToByte(const TUnicodeStr& text, int radix) {
  return static_cast<unsigned char>(ReadUnsigned32(text, radix));
}

bool ToBool(const std::string& text) { return IsTrue(std::string_view(text)); }
bool ToBool(const TUnicodeStr& text) { return IsTrue(std::wstring_view(text)); }

}  // namespace StringTools

}  // namespace Oxa::Core
