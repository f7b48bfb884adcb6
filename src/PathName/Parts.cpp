#include <Infrastructure/OxaCore/PathName.h>

namespace Oxa::Core {

namespace {

constexpr std::string::size_type uNONE = std::string::npos;
constexpr char cDRIVE_END = ':';

}  // namespace

bool PathName::IsUNC() const { return m_sText.size() >= 2 && m_sText[0] == '\\' && m_sText[1] == '\\'; }

bool PathName::IsAbsolute() const {
  if (m_sText.empty()) return false;
  if (IsUNC()) return true;
  if (IsPathSeparator(m_sText[0]) || !HasBase()) return false;
  const auto drive = m_sText.find(cDRIVE_END);
  return drive != uNONE && drive + 1 < m_sText.size() && IsPathSeparator(m_sText[drive + 1]);
}

bool PathName::HasBase() const { return IsUNC() || m_sText.find(baseSeparator[0]) != uNONE; }

bool PathName::HasBranch() const { return FindFirstSeparator(0) != m_sText.size(); }

bool PathName::HasExt() const { return !GetExt().empty(); }

bool PathName::HasLeaf() const { return !GetLeafAndExt().empty(); }

std::string PathName::GetBase() const {
  const auto end = FindBaseSeparator();
  return end == uNONE ? std::string() : m_sText.substr(0, end);
}

std::string PathName::GetBranch() const {
  auto start = FindBaseSeparator();
  if (start == uNONE)
    start = 0;
  else if (!IsUNC())
    ++start;
  const auto last = FindLastSeparator();
  if (last == uNONE || last < start) return {};
  return m_sText.substr(start, last + 1 - start);
}

std::string PathName::GetBaseAndBranch() const {
  const auto last = FindLastSeparator();
  if (last != uNONE) return m_sText.substr(0, last + 1);
  return HasBase() ? GetBase() + baseSeparator : std::string();
}

std::string PathName::GetLeaf() const {
  auto start = FindLastSeparator();
  if (start == uNONE) start = m_sText.rfind(baseSeparator[0]);
  start = start == uNONE ? 0 : start + 1;
  const auto dot = m_sText.rfind(extensionSeparator[0]);
  return m_sText.substr(start, dot == uNONE || dot < start ? uNONE : dot - start);
}

std::string PathName::GetExt() const {
  const auto dot = m_sText.rfind(extensionSeparator[0]);
  if (dot == uNONE || FindFirstSeparator(dot) != m_sText.size()) return {};
  return m_sText.substr(dot + 1);
}

std::string PathName::GetLeafAndExt() const {
  const std::string ext = GetExt();
  return ext.empty() ? GetLeaf() : GetLeaf() + extensionSeparator + ext;
}

}  // namespace Oxa::Core
