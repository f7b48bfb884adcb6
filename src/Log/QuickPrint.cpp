#include "Log/QuickPrint.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <system_error>

#include "Platform/Machine.h"

namespace Oxa::Core {

namespace {

constexpr int iUSUAL_PRECISION = 6;
constexpr int iMOST = 99;             // for widths and precisions
constexpr std::size_t uNUMBER = 512;  // bytes: the largest double has 309 digits before the point

enum ELength { eINT, eCHAR, eSHORT, eLONG, eLONG_LONG };

constexpr ELength eSIZE = sizeof(std::size_t) == sizeof(long) ? eLONG : eLONG_LONG;

struct Conversion {
  bool m_bLeft = false;
  bool m_bZeros = false;
  char m_cPositive = 0;  // in front of a number that isn't negative
  int m_iWidth = 0;
  int m_iPrecision = -1;  // none given
  ELength m_eLength = eINT;
  char m_cType = 0;
};

bool ReadFlag(char character, Conversion& conversion) {
  switch (character) {
    case '-':
      return conversion.m_bLeft = true;
    case '0':
      return conversion.m_bZeros = true;
    case '+':
      conversion.m_cPositive = '+';
      return true;
    case ' ':
      if (conversion.m_cPositive == 0) conversion.m_cPositive = ' ';
      return true;
    default:
      return false;
  }
}

// Reads no further than one digit beyond what is known here: the next character is no conversion then.
const char* ReadNumber(const char* at, int& number) {
  for (number = 0; *at >= '0' && *at <= '9' && number <= iMOST; ++at) number = 10 * number + (*at - '0');
  return at;
}

const char* ReadLength(const char* at, ELength& length) {
  switch (*at) {
    case 'h':
      length = at[1] == 'h' ? eCHAR : eSHORT;
      break;
    case 'l':
      length = at[1] == 'l' ? eLONG_LONG : eLONG;
      break;
    case 'z':
      length = eSIZE;
      break;
    default:
      return at;
  }
  return length == eCHAR || length == eLONG_LONG ? at + 2 : at + 1;
}

// `at` is behind the "%"; gives what is behind the conversion.
const char* Read(const char* at, Conversion& conversion) {
  while (ReadFlag(*at, conversion)) ++at;
  at = ReadNumber(at, conversion.m_iWidth);
  if (*at == '.') at = ReadNumber(at + 1, conversion.m_iPrecision);
  at = ReadLength(at, conversion.m_eLength);
  conversion.m_cType = *at;
  return *at == 0 ? at : at + 1;
}

class Printer {
 public:
  Printer(char* buffer, std::size_t size, std::va_list args) noexcept : m_pAt(buffer), m_uRoom(size) {
    va_copy(m_args, args);
  }
  Printer(const Printer&) = delete;
  Printer& operator=(const Printer&) = delete;
  ~Printer() { va_end(m_args); }

  // All of these: false where it isn't done.
  bool Put(const char* text, std::size_t length);
  bool Convert(const Conversion& conversion);

  // Ends the text that began here, and gives its length.
  int End(const char* begin) {
    *m_pAt = 0;
    return static_cast<int>(m_pAt - begin);
  }

 private:
  bool Fill(char character, std::size_t count);
  bool PutText(const char* text, std::size_t length, const Conversion& conversion);
  bool PutNumber(const char* first, const char* last, const Conversion& conversion);
  bool ConvertCharacter(const Conversion& conversion);
  bool ConvertText(const Conversion& conversion);
  bool ConvertSigned(const Conversion& conversion);
  bool ConvertUnsigned(const Conversion& conversion, int base);
  bool ConvertDouble(const Conversion& conversion, std::chars_format format);
  long long NextSigned(ELength length);
  unsigned long long NextUnsigned(ELength length);

  char* m_pAt;
  std::size_t m_uRoom;  // beside the end of the text
  std::va_list m_args;
};

bool Printer::Put(const char* text, std::size_t length) {
  if (length > m_uRoom) return false;
  std::memcpy(m_pAt, text, length);
  m_pAt += length;
  m_uRoom -= length;
  return true;
}

bool Printer::Fill(char character, std::size_t count) {
  if (count > m_uRoom) return false;
  std::memset(m_pAt, character, count);
  m_pAt += count;
  m_uRoom -= count;
  return true;
}

std::size_t Missing(std::size_t length, const Conversion& conversion) {
  const std::size_t width = static_cast<std::size_t>(conversion.m_iWidth);
  return width > length ? width - length : 0;
}

bool Printer::PutText(const char* text, std::size_t length, const Conversion& conversion) {
  const std::size_t missing = Missing(length, conversion);
  if (conversion.m_bLeft) return Put(text, length) && Fill(' ', missing);
  return Fill(' ', missing) && Put(text, length);
}

// With its sign, if it is negative; zeros go between the sign and the digits.
bool Printer::PutNumber(const char* first, const char* last, const Conversion& conversion) {
  // Written by std::to_chars, which the analyzer doesn't see.
  // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult)
  const char sign = *first == '-' ? *first++ : conversion.m_cPositive;
  const std::size_t length = static_cast<std::size_t>(last - first);
  const std::size_t missing = Missing(length + (sign != 0 ? 1 : 0), conversion);
  const bool zeros = conversion.m_bZeros && !conversion.m_bLeft;
  if (!conversion.m_bLeft && !zeros && !Fill(' ', missing)) return false;
  if (sign != 0 && !Put(&sign, 1)) return false;
  if (zeros && !Fill('0', missing)) return false;
  return Put(first, length) && (!conversion.m_bLeft || Fill(' ', missing));
}

long long Printer::NextSigned(ELength length) {
  switch (length) {
    case eCHAR:
      return static_cast<signed char>(va_arg(m_args, int));
    case eSHORT:
      return static_cast<short>(va_arg(m_args, int));
    case eLONG:
      return va_arg(m_args, long);
    case eLONG_LONG:
      return va_arg(m_args, long long);
    default:
      return va_arg(m_args, int);
  }
}

unsigned long long Printer::NextUnsigned(ELength length) {
  switch (length) {
    case eCHAR:
      return static_cast<unsigned char>(va_arg(m_args, unsigned int));
    case eSHORT:
      return static_cast<unsigned short>(va_arg(m_args, unsigned int));
    case eLONG:
      return va_arg(m_args, unsigned long);
    case eLONG_LONG:
      return va_arg(m_args, unsigned long long);
    default:
      return va_arg(m_args, unsigned int);
  }
}

bool IsPlain(const Conversion& conversion) {
  return !conversion.m_bZeros && conversion.m_cPositive == 0 && conversion.m_eLength == eINT;
}

bool Printer::ConvertCharacter(const Conversion& conversion) {
  if (!IsPlain(conversion) || conversion.m_iPrecision >= 0) return false;
  const char character = static_cast<char>(va_arg(m_args, int));
  return PutText(&character, 1, conversion);
}

std::size_t LengthUpTo(const char* text, std::size_t most) {
  const void* const end = std::memchr(text, 0, most);
  return end != nullptr ? static_cast<std::size_t>(static_cast<const char*>(end) - text) : most;
}

// With a precision nothing behind it is read.
bool Printer::ConvertText(const Conversion& conversion) {
  if (!IsPlain(conversion)) return false;
  const char* const text = va_arg(m_args, const char*);
  if (text == nullptr) return false;
  const std::size_t length = conversion.m_iPrecision < 0
                                 ? std::strlen(text)
                                 : LengthUpTo(text, static_cast<std::size_t>(conversion.m_iPrecision));
  return PutText(text, length, conversion);
}

bool Printer::ConvertSigned(const Conversion& conversion) {
  if (conversion.m_iPrecision >= 0) return false;
  char digits[uNUMBER];
  const auto end = std::to_chars(digits, digits + sizeof digits, NextSigned(conversion.m_eLength));
  return PutNumber(digits, end.ptr, conversion);
}

void ToUpperCase(char* first, const char* last) {
  for (; first != last; ++first) {
    // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult): as above
    if (*first >= 'a' && *first <= 'z') *first = static_cast<char>(*first - 'a' + 'A');
  }
}

bool Printer::ConvertUnsigned(const Conversion& conversion, int base) {
  if (conversion.m_iPrecision >= 0 || conversion.m_cPositive != 0) return false;
  char digits[uNUMBER];
  const auto end = std::to_chars(digits, digits + sizeof digits, NextUnsigned(conversion.m_eLength), base);
  if (conversion.m_cType == 'X') ToUpperCase(digits, end.ptr);
  return PutNumber(digits, end.ptr, conversion);
}

constexpr int iFRACTION_BITS = 52;

std::uint64_t BitsOf(double value) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

int ExponentOf(std::uint64_t bits) { return static_cast<int>(bits >> iFRACTION_BITS & 0x7FF); }

// Zero, or a number in the usual form. Comparisons might tell it wrongly, or trap: hosts have the processor take what
// is below the usual form for zero, and std::to_chars then does so, too.
bool IsUsual(double value) {
  const std::uint64_t bits = BitsOf(value);
  const int exponent = ExponentOf(bits);
  return exponent != 0x7FF && (exponent != 0 || bits << 1 == 0);
}

// The value times `power`, which is 1000 or less, rounded to the nearest whole number, and to an even one in the
// middle. Whole numbers do for that, as long as the product has room in 64 bits: a host may have floating-point
// operations trap.
bool Scale(double value, std::uint64_t power, std::uint64_t& scaled) {
  constexpr int iUNIT_EXPONENT = 1023 + iFRACTION_BITS;  // of a value whose fraction counts ones
  const std::uint64_t bits = BitsOf(value);
  const int shift = iUNIT_EXPONENT - ExponentOf(bits);
  if (shift <= 0) return false;
  const std::uint64_t one = std::uint64_t{1} << iFRACTION_BITS;
  const std::uint64_t product = (one | (bits & (one - 1))) * power;
  scaled = 0;
  if (shift > 63) return true;  // the product has less than 63 bits: it is below one half
  const std::uint64_t half = std::uint64_t{1} << (shift - 1);
  const std::uint64_t rest = product & (2 * half - 1);
  scaled = product >> shift;
  if (rest > half || (rest == half && scaled % 2 != 0)) ++scaled;
  return true;
}

// As std::to_chars does it, in a quarter of the time; null for what has to be left to that.
char* WriteFixed(char* at, double value, int precision) {
  static constexpr std::uint64_t uPOWERS[] = {1, 10, 100, 1000};
  if (precision > 3) return nullptr;
  std::uint64_t scaled = 0;
  if (!Scale(value, uPOWERS[precision], scaled)) return nullptr;
  if (std::signbit(value)) *at++ = '-';
  at = std::to_chars(at, at + std::numeric_limits<std::uint64_t>::digits10 + 1, scaled / uPOWERS[precision])
           .ptr;
  if (precision == 0) return at;
  *at = '.';
  std::uint64_t fraction = scaled % uPOWERS[precision];
  for (int place = precision; place > 0; --place, fraction /= 10)
    at[place] = static_cast<char>('0' + fraction % 10);
  return at + precision + 1;
}

// Exact as the C library's: both round the value itself, to even where it lies in the middle.
char* WriteDouble(char* first, char* last, double value, std::chars_format format, int precision) {
  if (format == std::chars_format::fixed) {
    if (char* const end = WriteFixed(first, value, precision)) return end;
  }
  const auto end = std::to_chars(first, last, value, format, precision);
  return end.ec == std::errc() ? end.ptr : nullptr;
}

bool Printer::ConvertDouble(const Conversion& conversion, std::chars_format format) {
  if (conversion.m_eLength != eINT && conversion.m_eLength != eLONG) return false;
  if (!Platform::NumbersArePlain()) return false;
  const double value = va_arg(m_args, double);
  if (!IsUsual(value)) return false;
  char digits[uNUMBER];
  const int precision = conversion.m_iPrecision < 0 ? iUSUAL_PRECISION : conversion.m_iPrecision;
  char* const end = WriteDouble(digits, digits + sizeof digits, value, format, precision);
  if (end == nullptr) return false;
  if (conversion.m_cType < 'a') ToUpperCase(digits, end);
  return PutNumber(digits, end, conversion);
}

bool Printer::Convert(const Conversion& conversion) {
  if (conversion.m_iWidth > iMOST || conversion.m_iPrecision > iMOST) return false;
  switch (conversion.m_cType) {
    case 'c':
      return ConvertCharacter(conversion);
    case 's':
      return ConvertText(conversion);
    case 'd':
    case 'i':
      return ConvertSigned(conversion);
    case 'u':
      return ConvertUnsigned(conversion, 10);
    case 'x':
    case 'X':
      return ConvertUnsigned(conversion, 16);
    case 'f':
    case 'F':
      return ConvertDouble(conversion, std::chars_format::fixed);
    case 'e':
    case 'E':
      return ConvertDouble(conversion, std::chars_format::scientific);
    case 'g':
    case 'G':
      return ConvertDouble(conversion, std::chars_format::general);
    default:
      return false;
  }
}

const char* EndOfRun(const char* at) {
  while (*at != 0 && *at != '%') ++at;
  return at;
}

}  // namespace

int QuickPrint(char* buffer, std::size_t size, const char* format, std::va_list args) noexcept {
  if (size == 0) return iNOT_QUICK;
  Printer printer(buffer, size - 1, args);
  for (;;) {
    const char* const end = EndOfRun(format);
    if (!printer.Put(format, static_cast<std::size_t>(end - format))) return iNOT_QUICK;
    if (*end == 0) return printer.End(buffer);
    if (end[1] == '%') {
      format = end + 2;
      if (!printer.Put(end, 1)) return iNOT_QUICK;
      continue;
    }
    Conversion conversion;
    format = Read(end + 1, conversion);
    if (!printer.Convert(conversion)) return iNOT_QUICK;
  }
}

}  // namespace Oxa::Core
