#include <Infrastructure/OxaCore/PathName.h>

#include <Infrastructure/OxaCore/CommonErrors.h>

#include <algorithm>

#include "Platform/Files.h"
#include "StringTools/Characters.h"

namespace Oxa::Core {

namespace {

constexpr char sLOG_NAME[] = "Oxa.Core.PathName";
constexpr char sPATH_PARAMETER[] = "aPath";
constexpr char sNO_FOLDER[] = "Cannot append to a PathName that is a file name: ";

constexpr std::size_t uFULL_PATH_SIZE = 260;
constexpr char cDOT = '.';

bool IsServer(const std::string& base) { return base.size() >= 2 && base[0] == '\\' && base[1] == '\\'; }

// "\\server" or "d:", whichever of its forms the base has.
std::string WholeBase(const std::string& base) {
  if (base.empty()) return base;
  if (IsServer(base)) return base.back() == '\\' ? base.substr(0, base.size() - 1) : base;
  return base.back() == ':' ? base : base + ':';
}

// A dot in front protects the whole name.
std::string WithoutExtension(const std::string& leaf) {
  const auto first = leaf.find(cDOT);
  return first == std::string::npos || first == 0 ? leaf : leaf.substr(0, leaf.rfind(cDOT));
}

bool StartsWithIgnoringCase(const std::string& text, const std::string& start) {
  return text.size() >= start.size() && std::equal(start.begin(), start.end(), text.begin(),
                                                   [](char a, char b) { return ToUpper(a) == ToUpper(b); });
}

}  // namespace

void PathName::SetBase(const std::string& aBase) {
  std::string text = WholeBase(aBase);
  if (HasBranch())
    text += GetBranch();
  else
    AppendSeparatorTo(text);
  text += GetLeafAndExt();
  m_sText.swap(text);
  InitSeparators();
}

void PathName::SetBaseAndBranch(const std::string& aPath) {
  std::string text = aPath;
  if (!text.empty() && !EndsInSeparator(text)) AppendSeparatorTo(text);
  text += GetLeafAndExt();
  m_sText.swap(text);
  InitSeparators();
}

void PathName::SetBranch(const std::string& aBranch) {
  std::string text;
  if (HasBase()) text = GetBase() + baseSeparator;
  text += aBranch;
  if (!EndsInSeparator(text)) AppendSeparatorTo(text);
  text += GetLeafAndExt();
  m_sText.swap(text);
}

void PathName::AddBranch(const std::string& aBranch) {
  std::string branch = GetBranch();
  if (!branch.empty() && !EndsInSeparator(branch)) AppendSeparatorTo(branch);
  SetBranch(branch + aBranch);
}

void PathName::SetLeaf(const std::string& aLeaf) {
  std::string text = GetBaseAndBranch() + WithoutExtension(aLeaf);
  const std::string ext = GetExt();
  if (!ext.empty()) text += extensionSeparator + ext;
  m_sText.swap(text);
}

void PathName::SetExt(const std::string& aExt) {
  std::string text = GetBaseAndBranch() + GetLeaf();
  if (!aExt.empty() && aExt[0] != extensionSeparator[0]) text += extensionSeparator;
  text += aExt;
  m_sText.swap(text);
}

void PathName::SetLeafAndExt(const std::string& aName) {
  std::string text = GetBaseAndBranch() + aName;
  m_sText.swap(text);
}

void PathName::operator+=(const std::string& aPath) { *this += aPath.c_str(); }

void PathName::operator+=(const char* aPath) {
  if (aPath == nullptr || *aPath == 0) return;
  if (m_sText.empty()) {
    *this = aPath;
    return;
  }
  if (HasExt()) {
    OXA_RAISE_ERROR(sLOG_NAME, LogicError(sNO_FOLDER + m_sText));
    return;
  }
  const PathName added(aPath);  // a copy, too: aPath may be a part of this text
  if (added.HasBase()) {
    OXA_RAISE_ERROR(sLOG_NAME, InvalidParameter(sPATH_PARAMETER));
    return;
  }
  ForceAsDir();
  m_sText.append(added.m_sText, IsPathSeparator(added.m_sText[0]) ? 1 : 0, std::string::npos);
}

void PathName::ForceAsDir() {
  if (!m_sText.empty() && !EndsInSeparator(m_sText)) AppendSeparatorTo(m_sText);
}

bool PathName::ForceAbsolute() {
  if (IsAbsolute()) return true;
  char absolute[uFULL_PATH_SIZE];
  if (Platform::FullPath(m_sText.c_str(), absolute, sizeof absolute) != 0) return false;
  m_sText = absolute;
  return true;
}

void PathName::ForceRelative(const std::string& aReference) {
  if (aReference.empty()) {
    if (HasBase()) SetBase(aReference);
    return;
  }
  PathName reference(aReference);
  reference.ForceAbsolute();
  ForceAbsolute();
  if (!StartsWithIgnoringCase(m_sText, reference.m_sText)) return;
  m_sText.erase(0, reference.m_sText.size());
  if (!m_sText.empty() && m_sText[0] == '\\') m_sText.erase(0, 1);
}

}  // namespace Oxa::Core
