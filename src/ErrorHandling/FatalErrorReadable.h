// Texts of any bytes as readers of XML in UTF-8 take them.
#ifndef OXACORE_ERRORHANDLING_FATALERRORREADABLE_H
#define OXACORE_ERRORHANDLING_FATALERRORREADABLE_H

#include <cstddef>
#include <string>
#include <string_view>

namespace Oxa::Core {

/// A character as it may stand in a document, and how many bytes of the text it stands for.
struct ReadableCharacter {
  std::size_t m_uTaken;
  std::size_t m_uSize;
  char m_text[4];
};

/// The first character of `text`, which isn't empty: one of UTF-8 as it stands, a byte that belongs to none as the
/// character of its number, and "?" for what no document may hold. Allocates nothing.
ReadableCharacter FirstReadable(std::string_view text) noexcept;

/// All of them.
std::string AsReadableXml(std::string_view text);

}  // namespace Oxa::Core

#endif
