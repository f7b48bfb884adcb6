#include <Infrastructure/OxaCore/PathName.h>

#include <cstring>

namespace Oxa::Core {

namespace {

const char* const g_pDRIVE_END = ":";
const char* const g_pSERVER_END = "\\";
const char* const g_pEXTENSION = ".";

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
  legalCharacters = " _~!#%&()@`'^$.-";
  pathSeparators = "/\\";
  defaultSeparator = '/';
  extensionSeparator = g_pEXTENSION;
  baseSeparator = g_pDRIVE_END;
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
  extensionSeparator = g_pEXTENSION;
  baseSeparator = g_pDRIVE_END;
  maxLeafLength = 31;
  maxExtLength = 31;
  maxComponentLength = 31;
  maxBaseLength = 31;
  maxDepth = 0;
}

// --- Separators

bool PathName::InitSeparators() {
  const bool bServer = IsUNC();
  baseSeparator = bServer ? g_pSERVER_END : g_pDRIVE_END;
  const std::string::size_type first = m_sText.find_first_of(pathSeparators, bServer ? 2 : 0);
  if (first == std::string::npos) return false;
  defaultSeparator = m_sText[first];
  return true;
}

bool PathName::IsPathSeparator(char character) const {
  return character != 0 && std::strchr(pathSeparators, character) != nullptr;
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

std::string::size_type PathName::FindLastSeparator() const { return m_sText.find_last_of(pathSeparators); }

}  // namespace Oxa::Core
