// The classes of characters, for both widths under one name.
#ifndef OXACORE_STRINGTOOLS_CHARACTERS_H
#define OXACORE_STRINGTOOLS_CHARACTERS_H

#include <Infrastructure/OxaCore/StringTools.h>

#include <cctype>
#include <cwctype>
#include <string_view>

namespace Oxa::Core {

// The characters below 128 are the same in every locale, and nearly all that are ever asked about.
inline bool IsSpace(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 128 ? StringTools::IsAsciiSpace(byte) : std::isspace(byte) != 0;
}

inline bool IsSpace(wchar_t c) {
  const auto code = static_cast<std::wint_t>(c);  // NOLINT(bugprone-signed-char-misuse): it is wide
  return code < 128 ? StringTools::IsAsciiSpace(code) : std::iswspace(code) != 0;
}

inline char ToUpper(char c) { return static_cast<char>(std::toupper(static_cast<unsigned char>(c))); }
inline wchar_t ToUpper(wchar_t c) { return static_cast<wchar_t>(std::towupper(static_cast<std::wint_t>(c))); }

inline char ToLower(char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); }
inline wchar_t ToLower(wchar_t c) { return static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(c))); }

template <class Char>
std::basic_string_view<Char> WithoutLeadingSpace(std::basic_string_view<Char> text) {
  while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
  return text;
}

template <class Char>
std::basic_string_view<Char> WithoutTrailingSpace(std::basic_string_view<Char> text) {
  while (!text.empty() && IsSpace(text.back())) text.remove_suffix(1);
  return text;
}

template <class Char>
std::basic_string_view<Char> WithoutOuterSpace(std::basic_string_view<Char> text) {
  return WithoutLeadingSpace(WithoutTrailingSpace(text));
}

}  // namespace Oxa::Core

#endif
