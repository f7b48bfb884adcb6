// Text as a wstring holds it, and as UTF-16 code units. Where a wchar_t is a code unit itself, nothing is split or
// joined. Surrogates without a partner are taken as they stand, both ways. Nothing here raises.
#ifndef OXACORE_IO_CODEUNITS_H
#define OXACORE_IO_CODEUNITS_H

#include <cstddef>
#include <string>

namespace Oxa::Core {

/// How many units `text` takes. Gives its first character above 0x10FFFF, which no units stand for, or null.
const wchar_t* CountUnits(const std::wstring& text, std::size_t& units) noexcept;

/// Writes the first `room` units of `text`; there are no fewer.
void SplitIntoUnits(const std::wstring& text, char16_t* units, std::size_t room) noexcept;

/// Makes characters of `count` units in their place, at `text`, which has room for `count` of them. Gives how many.
std::size_t JoinUnits(const char16_t* units, std::size_t count, wchar_t* text) noexcept;

}  // namespace Oxa::Core

#endif
