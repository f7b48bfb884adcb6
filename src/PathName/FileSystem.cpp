#include <Infrastructure/OxaCore/PathName.h>

#include "Platform/Files.h"

namespace Oxa::Core {

namespace {

constexpr std::string::size_type uNONE = std::string::npos;
constexpr std::uint64_t ullLENGTH_MASK = 0xffffffff;

// What can't be asked about is nothing.
Platform::FileStatus StatusOf(const std::string& name) {
  Platform::FileStatus status;
  Platform::Status(name.c_str(), status);
  return status;
}

bool IsOrBecomesFolder(const std::string& name) {
  return StatusOf(name).m_bDirectory || Platform::MakeDirectory(name.c_str()) == 0;
}

}  // namespace

std::string PathName::ForSystem() const {
  return m_sText.substr(0, EndsInSeparator(m_sText) ? m_sText.size() - 1 : m_sText.size());
}

bool PathName::Exists() const {
  const Platform::FileStatus status = StatusOf(ForSystem());
  return HasLeaf() ? status.m_bRegular : status.m_bDirectory;
}

bool PathName::IsDir() const { return StatusOf(ForSystem()).m_bDirectory; }

unsigned long PathName::GetLength() const {
  const Platform::FileStatus status = StatusOf(ForSystem());
  return status.m_bRegular ? static_cast<unsigned long>(status.m_ullSize & ullLENGTH_MASK) : 0;
}

bool PathName::CreateDirectoryA() const {
  const std::string branch = GetBranch();
  for (auto at = branch.find_first_of(pathSeparators, 1); at != uNONE;
       at = branch.find_first_of(pathSeparators, at + 1)) {
    PathName folder;
    folder.SetBase(GetBase());
    folder.SetBranch(branch.substr(0, at + 1));
    std::string name = folder.GetBaseAndBranch();
    name.pop_back();
    if (!IsOrBecomesFolder(name)) return false;
  }
  return true;
}

bool PathName::Delete() {
  if (!Exists()) return true;
  return (IsDir() ? Platform::RemoveDirectory : Platform::RemoveFile)(m_sText.c_str()) == 0;
}

bool PathName::Delete(const std::string& aName) {
  if (!IsDir() || aName.empty()) return false;
  std::string name = m_sText;
  if (!EndsInSeparator(name)) name += pathSeparators[0];
  name += aName;
  return Platform::RemoveFile(name.c_str()) == 0;
}

bool PathName::Rename(const std::string& aNewName) {
  if (!Exists()) return false;
  PathName target(GetBaseAndBranch());
  target.ForceAsDir();
  target += aNewName;
  if (Platform::RenameFileUnlessTaken(m_sText.c_str(), target.m_sText.c_str()) != 0) return false;
  *this = target;
  return true;
}

bool PathName::ReadDirectory(std::vector<std::string>& aEntries, std::string aPattern) {
  const std::string search = m_sText + '/' + aPattern;
  const auto last = search.find_last_of("/\\");
  const std::string folder = search.substr(0, last + 1);
  return Platform::ListDirectory(folder.c_str(), search.c_str() + last + 1, aEntries) == 0;
}

}  // namespace Oxa::Core
