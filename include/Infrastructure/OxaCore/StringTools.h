// Free functions over text. Those that are there for both widths of characters follow the same rules for
// both.
//
// Thread safety: there is no state; any thread may call anything. White space and letters are those of the C
// locale in force (isspace, toupper and their relatives).
// Failures: nothing raises; running out of memory throws std::bad_alloc. A vector that a result goes to must
// not hold one of the arguments.
//
//   std::vector<std::string> parts;
//   if (StringTools::Split("fast -> 1ms", "->", parts) == 2) Use(StringTools::TrimWS(parts[1]));
#ifndef INFRASTRUCTURE_OXACORE_STRINGTOOLS_H
#define INFRASTRUCTURE_OXACORE_STRINGTOOLS_H

#include <Infrastructure/OxaCore/Export.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Oxa::Core {

/// The wide text of the library.
using TUnicodeStr = std::wstring;

namespace StringTools {

/// Whether the character is one of the six below 128 that are white space in every locale. One comparison tells that
/// a printing one is none.
inline bool IsAsciiSpace(unsigned int c) {
  constexpr std::uint64_t ullSPACES = std::uint64_t{0x1F} << '\t' | std::uint64_t{1} << ' ';
  return c <= ' ' && (ullSPACES >> c & 1) != 0;
}

/// What TrimWS gives, with every character left to the locale: for texts that begin or end beyond 127.
OXACORE_API std::string TrimWSByLocale(const std::string& text);

/// A copy without the white space at the start, at the end, or at both ends.
OXACORE_API std::string TrimStart(const std::string& text);
OXACORE_API std::string TrimEnd(const std::string& text);
inline std::string TrimWS(const std::string& text) {
  const char* begin = text.c_str();
  const char* end = begin + text.size();
  while (IsAsciiSpace(static_cast<unsigned char>(*begin))) ++begin;  // the zero behind the text is none
  if (begin == end) return std::string();
  while (IsAsciiSpace(static_cast<unsigned char>(end[-1]))) --end;  // `begin` is none
  const bool ascii = static_cast<unsigned char>(*begin | end[-1]) < 128;
  return ascii ? std::string(begin, end) : TrimWSByLocale(text);
}
OXACORE_API TUnicodeStr TrimStart(const TUnicodeStr& text);
OXACORE_API TUnicodeStr TrimEnd(const TUnicodeStr& text);
OXACORE_API TUnicodeStr TrimWS(const TUnicodeStr& text);

/// A copy in capital or in small letters; what is no letter stays.
OXACORE_API std::string UpCase(const std::string& text);
OXACORE_API std::string DownCase(const std::string& text);
OXACORE_API TUnicodeStr UpCase(const TUnicodeStr& text);
OXACORE_API TUnicodeStr DownCase(const TUnicodeStr& text);

/// Wraps text into lines of at most `width` characters (0 counts as 1), joined by `breakChar`. Lines are
/// broken at white space, which is dropped there; a word that is longer than a line stays whole. White space
/// inside a line stays as it is, line breaks included. White space at the start of the text can make the first
/// line an empty one.
OXACORE_API std::string LineBreaks(const std::string& text, unsigned int width, char breakChar = '\n');
OXACORE_API TUnicodeStr LineBreaks(const TUnicodeStr& text, unsigned int width, wchar_t breakChar = L'\n');

/// Replaces `out` with the pieces of `text` between the delimiters, empty ones included, and gives their
/// count. The delimiter is a whole text; without one in `text`, or when it is empty, all of `text` is the one
/// piece.
OXACORE_API int Split(const std::string& text, const std::string& delimiter, std::vector<std::string>& out);
OXACORE_API int Split(const TUnicodeStr& text, const TUnicodeStr& delimiter, std::vector<TUnicodeStr>& out);

/// The pieces with `delimiter` between them; of no pieces, "".
OXACORE_API std::string Join(const std::vector<std::string>& pieces, const std::string& delimiter);
OXACORE_API TUnicodeStr Join(const std::vector<TUnicodeStr>& pieces, const TUnicodeStr& delimiter);

/// Puts a backslash in front of every `separator` and every backslash, in place.
OXACORE_API void Escape(std::string& text, char separator);

/// Removes, from left to right, every backslash that isn't itself behind a removed one, in place. `separator`
/// isn't looked at.
OXACORE_API void UnEscape(std::string& text, char separator);

/// Writes a list as one text: its items escaped, with `separator` between them. An empty list gives "", and
/// so does a list of one empty item. `out` may be one of the items.
OXACORE_API void Array2Str(const std::vector<std::string>& items, char separator, std::string& out);

/// Reads such a text back; "" gives an empty list.
OXACORE_API void Str2Array(const std::string& text, char separator, std::vector<std::string>& out);

// Text to number, by the rules of strtol and strtoul: leading white space is skipped, what follows the number
// is not looked at, no number is 0. With the radix 0 the text decides: "0x" begins a hexadecimal number, "0"
// an octal one. A minus sign before an unsigned number wraps it around.
//
// The numbers of int, short and byte are read with 32 bits, which what is out of range saturates (ToInt of
// "2147483648" is 2147483647, ToUnsignedInt of "4294967296" is 4294967295); short and byte then keep the
// lower 16 and 8 bits. The forms of long saturate at the limits of long. errno stays as it was.
OXACORE_API int ToInt(const std::string& text, int radix = 0);
OXACORE_API int ToInt(const TUnicodeStr& text, int radix = 0);
OXACORE_API long ToLong(const std::string& text, int radix = 0);
OXACORE_API long ToLong(const TUnicodeStr& text, int radix = 0);
OXACORE_API short ToShort(const std::string& text, int radix = 0);
OXACORE_API short ToShort(const TUnicodeStr& text, int radix = 0);
OXACORE_API unsigned int ToUnsignedInt(const std::string& text, int radix = 0);
OXACORE_API unsigned int ToUnsignedInt(const TUnicodeStr& text, int radix = 0);
OXACORE_API unsigned long ToUnsignedLong(const std::string& text, int radix = 0);
OXACORE_API unsigned long ToUnsignedLong(const TUnicodeStr& text, int radix = 0);
OXACORE_API unsigned short ToUnsignedShort(const std::string& text, int radix = 0);
OXACORE_API unsigned short ToUnsignedShort(const TUnicodeStr& text, int radix = 0);
OXACORE_API unsigned char ToByte(const std::string& text, int radix = 0);
OXACORE_API unsigned char ToByte(const TUnicodeStr& text, int radix = 0);

/// True for "1", "T", "t", "TRUE", "True" and "true"; false for everything else.
OXACORE_API bool ToBool(const std::string& text);
OXACORE_API bool ToBool(const TUnicodeStr& text);

}  // namespace StringTools

}  // namespace Oxa::Core

#endif
