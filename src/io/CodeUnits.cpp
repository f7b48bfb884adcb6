#include "io/CodeUnits.h"

#include <cstdint>

namespace Oxa::Core {

namespace {

constexpr std::uint32_t uFIRST_PAIR = 0x10000;  // the first character that takes two units
constexpr std::uint32_t uLAST = 0x10FFFF;
constexpr std::uint32_t uHIGH = 0xD800;  // surrogates: the first of a pair, and the second
constexpr std::uint32_t uLOW = 0xDC00;
constexpr std::uint32_t uSURROGATES = 0x400;  // of each kind

bool IsHigh(char16_t unit) { return unit >= uHIGH && unit < uHIGH + uSURROGATES; }
bool IsLow(char16_t unit) { return unit >= uLOW && unit < uLOW + uSURROGATES; }

std::uint32_t Joined(char16_t high, char16_t low) {
  return uFIRST_PAIR + (high - uHIGH) * uSURROGATES + (low - uLOW);
}

}  // namespace

const wchar_t* CountUnits(const std::wstring& text, std::size_t& units) noexcept {
  units = text.size();
  for (const wchar_t& character : text) {
    const auto code = static_cast<std::uint32_t>(character);
    if (code > uLAST) return &character;
    if (code >= uFIRST_PAIR) ++units;
  }
  return nullptr;
}

void SplitIntoUnits(const std::wstring& text, char16_t* units, std::size_t room) noexcept {
  char16_t* const end = units + room;
  const wchar_t* next = text.data();
  while (units != end) {
    const auto code = static_cast<std::uint32_t>(*next++);
    if (code < uFIRST_PAIR) {
      *units++ = static_cast<char16_t>(code);
    } else {
      *units++ = static_cast<char16_t>(uHIGH + (code - uFIRST_PAIR) / uSURROGATES);
      if (units != end) *units++ = static_cast<char16_t>(uLOW + (code - uFIRST_PAIR) % uSURROGATES);
    }
  }
}

std::size_t JoinUnits(const char16_t* units, std::size_t count, wchar_t* text) noexcept {
  const char16_t* const end = units + count;
  const wchar_t* const begin = text;
  while (units != end) {
    const char16_t unit = *units++;
    if (sizeof(wchar_t) > sizeof(char16_t) && IsHigh(unit) && units != end && IsLow(*units)) {
      *text++ = static_cast<wchar_t>(Joined(unit, *units++));
    } else {
      *text++ = static_cast<wchar_t>(unit);
    }
  }
  return static_cast<std::size_t>(text - begin);
}

}  // namespace Oxa::Core
