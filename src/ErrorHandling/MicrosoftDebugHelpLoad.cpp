#include <Infrastructure/OxaCore/Log.h>
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/ModuleVersionInfo.h>
#include <Infrastructure/OxaCore/System.h>

#include <cstdlib>
#include <cstring>

#include "ErrorHandling/MicrosoftDebugHelpLife.h"
#include "Platform/CallStacks.h"
#include "Platform/Files.h"
#include "Platform/Libraries.h"

namespace MSWindows {

namespace Platform = Oxa::Core::Platform;
using Oxa::Core::LogManager;
using Oxa::Core::ModuleVersionInfo;
using Oxa::Core::System;

namespace {

const char* const sLOG_NAME = "Microsoft.DebugHelp";
const char* const sLOADED = "Loaded %s version %s";
const char* const sPROGRAM_FILES = "ProgramFiles";
const char* const sTOOLS = "/Debugging Tools for Windows/";
const char* const sTOOLS_64 = "/Debugging Tools for Windows 64-Bit/";
const char* const sSYMBOL_PATHS[] = {"_NT_SYMBOL_PATH", "_NT_ALTERNATE_SYMBOL_PATH"};
const char* const sSYSTEM_ROOT = "SYSTEMROOT";

/// What a value of the environment may have with its closing 0; a longer one counts as unset.
constexpr std::size_t uENVIRONMENT_SIZE = 260;

bool ReadEnvironment(const char* name, std::string& value) {
  const char* const found = std::getenv(name);
  if (found == nullptr || std::strlen(found) >= uENVIRONMENT_SIZE) return false;
  value = found;
  return true;
}

std::string ProcessFolder() {
  std::string folder;
  if (const System* const system = System::Instance()) system->GetProcessPath(folder);
  return folder;
}

HINSTANCE LoadIfThere(const std::string& path) {
  Platform::FileStatus status;
  return Platform::Status(path.c_str(), status) == 0 ? Platform::OpenLibrary(path.c_str()) : nullptr;
}

}  // namespace

HINSTANCE LoadDebugHelpDll() {
  std::string path;
  const std::string name = Platform::SymbolLibraryName();
  if (name.empty()) return nullptr;
  path = ProcessFolder() + name;
  if (HINSTANCE const library = LoadIfThere(path)) return library;
  std::string programs;
  if (ReadEnvironment(sPROGRAM_FILES, programs)) {
    for (const char* const tools : {sTOOLS, sTOOLS_64}) {
      path = programs + tools + name;
      if (HINSTANCE const library = LoadIfThere(path)) return library;
    }
  }
  path = name;
  return Platform::OpenLibrary(path.c_str());
}

// Names in full are those of the files; the system knows which one it took for a name alone.
void TellLoaded(HINSTANCE module) {
  const boost::shared_ptr<ModuleVersionInfo> info = ModuleVersionInfo::Create(module);
  LogManager* const manager = LogManager::Instance();
  if (!info || manager == nullptr) return;
  std::string path;
  std::string version;
  info->Get(ModuleVersionInfo::sPATH_NAME, path);
  if (!info->Get(ModuleVersionInfo::sPRODUCT_VERSION, version))
    info->Get(ModuleVersionInfo::sFILE_VERSION, version);
  manager->GetLogger(sLOG_NAME)->WriteLog(Oxa::Core::eLOG_INFORMATIONAL, sLOADED, path.c_str(),
                                          version.c_str());
}

std::string ComposeSymbolPath() {
  const std::string folder = ProcessFolder();
  std::string path = folder + "Symbols;" + folder + ";" + folder + "Packages;.";
  std::string value;
  for (const char* const name : sSYMBOL_PATHS)
    if (ReadEnvironment(name, value)) path += ";" + value;
  if (ReadEnvironment(sSYSTEM_ROOT, value)) path += ";" + value + ";" + value + "/system32";
  return path;
}

}  // namespace MSWindows
