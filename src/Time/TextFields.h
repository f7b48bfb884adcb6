// Numbers between separators, read without building texts for them.
#ifndef OXACORE_TIME_TEXTFIELDS_H
#define OXACORE_TIME_TEXTFIELDS_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "StringTools/Characters.h"

namespace Oxa::Core {

/// Splits `text` at every `separator` into pieces, which may be empty, and gives their count. Of more than
/// `N` pieces only the last is kept, in the last place, and the count is N + 1 or more.
template <std::size_t N>
std::size_t SplitFields(std::string_view text, char separator, std::string_view (&fields)[N]) {
  std::size_t count = 0;
  std::size_t begin = 0;
  for (std::size_t i = 0; i <= text.size(); ++i) {
    if (i < text.size() && text[i] != separator) continue;
    fields[count < N ? count : N - 1] = text.substr(begin, i - begin);
    ++count;
    begin = i + 1;
  }
  return count;
}

/// Reads a decimal number of 32 bits by the rules of strtoul: white space is skipped, a sign is taken (a
/// minus wraps around), what follows the digits isn't looked at; no number is 0, too large a one the largest.
inline std::uint32_t ReadField(std::string_view text) {
  text = WithoutLeadingSpace(text);
  const bool negative = !text.empty() && text.front() == '-';
  if (negative || (!text.empty() && text.front() == '+')) text.remove_prefix(1);
  std::uint64_t number = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') break;
    number = number * 10 + static_cast<unsigned>(c - '0');
    if (number > UINT32_MAX) return UINT32_MAX;
  }
  const auto narrow = static_cast<std::uint32_t>(number);
  return negative ? 0 - narrow : narrow;
}

}  // namespace Oxa::Core

#endif
