// Values of basic types and strings as texts.
#ifndef OXACORE_ERRORHANDLING_MICROSOFTDEBUGSYMBOLTEXTS_H
#define OXACORE_ERRORHANDLING_MICROSOFTDEBUGSYMBOLTEXTS_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "Platform/Variables.h"

namespace MSWindows {

constexpr char sUNREADABLE[] = "{Uninitialized}";
constexpr char sUNREADABLE_POINTER[] = "{Uninitialized Pointer}";
constexpr char sUNREADABLE_OBJECT[] = "{Uninitialized Object}";
constexpr char sUNREADABLE_STRING[] = "????";
constexpr char sNO_ADDRESS[] = "{Failed to Determine Address}";
constexpr char sDEEPER[] = "{...}";
constexpr char sMORE[] = "...";

/// Strings show no more characters than these.
constexpr std::size_t uMOST_CHARACTERS = 256;

/// The value of a basic type, in `size` bytes of this machine's order, of any number.
std::string BasicText(const Oxa::Core::Platform::TypeFacts& type, const unsigned char* pBytes,
                      std::size_t size);

/// "0x" and the number in hexadecimal.
std::string AddressText(std::uint64_t address);

/// In double quotes: `count` characters of `width` bytes. Bytes stand for themselves where they are UTF-8, and wide
/// characters become that; control characters are written as escapes, so that the text can stand in XML.
std::string QuotedText(const unsigned char* pCharacters, std::size_t count, std::size_t width);

/// How many characters stand before the first that is zero; `count` if none is.
std::size_t LengthToZero(const unsigned char* pCharacters, std::size_t count, std::size_t width);

}  // namespace MSWindows

#endif
