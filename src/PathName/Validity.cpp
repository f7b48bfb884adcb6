#include <Infrastructure/OxaCore/PathName.h>

#include <string_view>

#include "PathName/CharacterClasses.h"

namespace Oxa::Core {

namespace {

using Position = std::string_view::size_type;

constexpr Position uNONE = std::string_view::npos;
constexpr char cDOT = '.';

// The next piece between delimiters, empty if none is left: a run of delimiters before it is skipped, and the one
// behind it is used up with it. `at` is where to go on, perhaps with other delimiters.
template <class IsDelimiter>
std::string_view NextToken(std::string_view text, Position& at, const IsDelimiter& isDelimiter) {
  while (at < text.size() && isDelimiter(text[at])) ++at;
  const Position start = at;
  while (at < text.size() && !isDelimiter(text[at])) ++at;
  const Position end = at;
  if (at < text.size()) ++at;
  return text.substr(start, end - start);
}

bool AreAllLegal(const CharacterClasses& classes, std::string_view text) {
  for (const char character : text)
    if (!classes.IsLegal(character)) return false;
  return true;
}

bool AreTwoSideBySide(const CharacterClasses& classes, std::string_view text) {
  for (Position i = 1; i < text.size(); ++i)
    if (classes.IsSeparator(text[i - 1]) && classes.IsSeparator(text[i])) return true;
  return false;
}

}  // namespace

bool PathName::IsValid() const {
  if (m_sText.empty()) return false;
  if (legalCharacters == sNT_LEGAL_CHARACTERS && pathSeparators == sNT_PATH_SEPARATORS)
    return IsValidBy(g_classesOfNT);
  return IsValidBy(CharacterClasses(legalCharacters, pathSeparators));
}

bool PathName::IsValidBy(const CharacterClasses& classes) const {
  const std::string_view text = m_sText;
  const Position offset = IsUNC() ? 2 : 0;
  Position at = offset;
  if (FindBaseSeparator() != uNONE && !PassBase(classes, at)) return false;
  // Through the first character behind it, so that no pair falls between the two looks.
  if (AreTwoSideBySide(classes, text.substr(offset, at + 1 - offset))) return false;
  return classes.AreComponents(text.substr(at)) && AreLengthsValid(classes, at);
}

// Also passes over what behind the base is not looked at.
bool PathName::PassBase(const CharacterClasses& classes, std::size_t& at) const {
  const bool bServer = IsUNC();
  if (!bServer && m_sText.find(baseSeparator[0]) != m_sText.rfind(baseSeparator[0])) return false;
  const std::string_view base = NextToken(m_sText, at, [this](char c) { return c == baseSeparator[0]; });
  if (base.empty() || (!bServer && base.size() > maxBaseLength)) return false;
  // The place is counted from the start of the name where the whole path is meant: two characters of a server
  // are not looked at.
  const Position untested = bServer ? 2 : 0;
  if (base.size() > untested && !AreAllLegal(classes, base.substr(untested))) return false;
  if (bServer || (at < m_sText.size() && classes.IsSeparator(m_sText[at])))
    NextToken(m_sText, at, [&](char c) { return classes.IsSeparator(c); });
  return true;
}

bool PathName::AreLengthsValid(const CharacterClasses& classes, std::size_t at) const {
  const std::string_view text = m_sText;
  if (maxDepth == 0 && IsShort(text.size())) return true;
  const auto isSeparator = [&](char c) { return classes.IsSeparator(c); };
  int depth = 0;
  for (auto token = NextToken(text, at, isSeparator); !token.empty();
       token = NextToken(text, at, isSeparator)) {
    if (maxDepth != 0 && depth++ > maxDepth) return false;
    if (IsTooLong(token.data(), token.size())) return false;
  }
  return true;
}

// Whatever the dots do, no component of that length is too long.
bool PathName::IsShort(std::size_t length) const {
  return length <= maxLeafLength && length <= maxExtLength && length <= maxComponentLength;
}

bool PathName::IsTooLong(const char* component, std::size_t length) const {
  const Position lastDot = std::string_view(component, length).rfind(cDOT);
  if (lastDot == uNONE) return length > maxLeafLength;
  return lastDot > maxLeafLength || length > maxExtLength + 2 + lastDot || length > maxComponentLength;
}

}  // namespace Oxa::Core
