#include <Infrastructure/OxaCore/ModuleVersionInfo.h>

#include <utility>
#include <vector>

#include "SystemTools/FileNameOf.h"

#include "Platform/Libraries.h"
#include "Platform/VersionRecords.h"

namespace Oxa::Core {

namespace {

std::vector<std::string> KeysInFiles() {
  return {ModuleVersionInfo::sCOMMENTS,         ModuleVersionInfo::sCOMPANY_NAME,
          ModuleVersionInfo::sFILE_DESCRIPTION, ModuleVersionInfo::sFILE_VERSION,
          ModuleVersionInfo::sINTERNAL_NAME,    ModuleVersionInfo::sLEGAL_COPYRIGHT,
          ModuleVersionInfo::sLEGAL_TRADEMARKS, ModuleVersionInfo::sORIGINAL_FILENAME,
          ModuleVersionInfo::sPRODUCT_NAME,     ModuleVersionInfo::sPRODUCT_VERSION,
          ModuleVersionInfo::sSPECIAL_BUILD};
}

}  // namespace

ModuleVersionInfo::ModuleVersionInfo(const std::string& path)
    : m_values{{sPATH_NAME, path}, {sFILE_NAME, FileNameOf(path)}} {}

boost::shared_ptr<ModuleVersionInfo> ModuleVersionInfo::Create(const std::string& path) {
  boost::shared_ptr<ModuleVersionInfo> info(new ModuleVersionInfo(path));
  if (Platform::ReadVersionRecord(path.c_str(), KeysInFiles(), info->m_values) != 0) info.reset();
  return info;
}

boost::shared_ptr<ModuleVersionInfo> ModuleVersionInfo::Create(HINSTANCE module) {
  std::string path;
  return Platform::LibraryPath(module, path) == 0 ? Create(path) : boost::shared_ptr<ModuleVersionInfo>();
}

bool ModuleVersionInfo::Get(const std::string& key, std::string& value) const {
  const auto entry = m_values.find(key);
  if (entry == m_values.end()) return false;
  value = entry->second;
  return true;
}

}  // namespace Oxa::Core
