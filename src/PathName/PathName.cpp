#include <Infrastructure/OxaCore/PathName.h>

#include <algorithm>
#include <cstddef>

#include "PathName/CharacterClasses.h"

namespace Oxa::Core {

namespace {

constexpr char sDRIVE_END[] = ":";
constexpr char sSERVER_END[] = "\\";
constexpr char sEXTENSION[] = ".";

using Position = std::string::size_type;

// Where the first character from `start` on stands that `is` tells of; the end of the text if there is none.
template <class Is>
Position FindFirst(const std::string& text, Position start, const Is& is) {
  const auto from = text.begin() + static_cast<std::ptrdiff_t>(std::min(start, text.size()));
  return static_cast<Position>(std::find_if(from, text.end(), is) - text.begin());
}

// Where the last one stands; npos if there is none.
template <class Is>
Position FindLast(const std::string& text, const Is& is) {
  return static_cast<Position>(text.rend() - std::find_if(text.rbegin(), text.rend(), is)) - 1;
}

bool IsSeparatorOfNT(char character) { return g_classesOfNT.IsSeparator(character); }

const char* OrEmpty(const char* text) { return text != nullptr ? text : ""; }

}  // namespace

// --- Construction

PathName::PathName(PathFormat format) {
  InitParams(format);
  InitSeparators();
}

PathName::PathName(const std::string& text, PathFormat format) : m_sText(text) {
  InitParams(format);
  InitSeparators();
}

PathName::PathName(const char* text, PathFormat format) : m_sText(OrEmpty(text)) {
  InitParams(format);
  InitSeparators();
}

PathName& PathName::operator=(const std::string& text) {
  m_sText = text;
  InitSeparators();
  return *this;
}

PathName& PathName::operator=(const char* text) {
  m_sText = OrEmpty(text);
  InitSeparators();
  return *this;
}

// --- Parameters

void PathName::InitParams(PathFormat format) {
  if (format == NT) SetNT();
}

void PathName::SetNT() {
  legalCharacters = sNT_LEGAL_CHARACTERS;
  pathSeparators = sNT_PATH_SEPARATORS;
  defaultSeparator = '/';
  extensionSeparator = sEXTENSION;
  baseSeparator = sDRIVE_END;
  maxLeafLength = 256;
  maxExtLength = 256;
  maxComponentLength = 260;
  maxBaseLength = 1;
  maxDepth = 0;
}

void PathName::SetUNIX() {
  legalCharacters = " _~!#%&()@`'^$.\\-";
  pathSeparators = "/";
  defaultSeparator = '/';
  extensionSeparator = sEXTENSION;
  baseSeparator = sDRIVE_END;
  maxLeafLength = 31;
  maxExtLength = 31;
  maxComponentLength = 31;
  maxBaseLength = 31;
  maxDepth = 0;
}

// --- Separators

bool PathName::InitSeparators() {
  const bool bServer = IsUNC();
  baseSeparator = bServer ? sSERVER_END : sDRIVE_END;
  const std::string::size_type first = FindFirstSeparator(bServer ? 2 : 0);
  if (first == m_sText.size()) return false;
  defaultSeparator = m_sText[first];
  return true;
}

// They are so few that a search by the C library takes longer to begin than this takes to end.
bool PathName::IsPathSeparator(char character) const {
  for (const char* separator = pathSeparators; *separator != 0; ++separator)
    if (*separator == character) return true;
  return false;
}

bool PathName::EndsInSeparator(const std::string& text) const {
  return !text.empty() && IsPathSeparator(text.back());
}

void PathName::AppendSeparatorTo(std::string& text) const {
  if (defaultSeparator != 0) text += defaultSeparator;
}

std::string::size_type PathName::FindBaseSeparator() const {
  return m_sText.find(baseSeparator[0], IsUNC() ? 2 : 0);
}

std::string::size_type PathName::FindFirstSeparator(std::string::size_type start) const {
  if (pathSeparators == sNT_PATH_SEPARATORS)
    return FindFirst(m_sText, start, [](char character) { return IsSeparatorOfNT(character); });
  return FindFirst(m_sText, start, [this](char character) { return IsPathSeparator(character); });
}

std::string::size_type PathName::FindLastSeparator() const {
  if (pathSeparators == sNT_PATH_SEPARATORS)
    return FindLast(m_sText, [](char character) { return IsSeparatorOfNT(character); });
  return FindLast(m_sText, [this](char character) { return IsPathSeparator(character); });
}

}  // namespace Oxa::Core
