// Versions of modules: whatever the bytes of a file are, reading what it says of itself ends, tells the same each time,
// and tells nothing that isn't in the file.
#include <Infrastructure/OxaCore/ModuleVersionInfo.h>
#include <sys/mman.h>
#include <unistd.h>

#include <map>
#include <string>

#include "FuzzTarget.h"

namespace {

using namespace Oxa::Core;
using namespace OxaFuzz;

// A file in memory, which has a name all the same.
class MemoryFile {
 public:
  MemoryFile(const std::uint8_t* data, std::size_t size) : m_iFile(memfd_create("module", MFD_CLOEXEC)) {
    Check(m_iFile >= 0 && write(m_iFile, data, size) == static_cast<ssize_t>(size), "a file can be made");
  }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() { close(m_iFile); }

  std::string Name() const { return "/proc/self/fd/" + std::to_string(m_iFile); }

 private:
  const int m_iFile;
};

std::map<std::string, std::string> Read(const std::string& name) {
  std::map<std::string, std::string> values;
  const boost::shared_ptr<ModuleVersionInfo> info = ModuleVersionInfo::Create(name);
  if (!info) return values;
  for (const std::string& key : {ModuleVersionInfo::sPATH_NAME, ModuleVersionInfo::sCOMMENTS,
                                 ModuleVersionInfo::sCOMPANY_NAME, ModuleVersionInfo::sFILE_DESCRIPTION,
                                 ModuleVersionInfo::sFILE_VERSION, ModuleVersionInfo::sINTERNAL_NAME,
                                 ModuleVersionInfo::sLEGAL_COPYRIGHT, ModuleVersionInfo::sLEGAL_TRADEMARKS,
                                 ModuleVersionInfo::sORIGINAL_FILENAME, ModuleVersionInfo::sPRODUCT_NAME,
                                 ModuleVersionInfo::sPRODUCT_VERSION, ModuleVersionInfo::sSPECIAL_BUILD}) {
    std::string value;
    if (info->Get(key, value)) values[key] = value;
  }
  return values;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  StayQuiet();
  const MemoryFile file(data, size);
  std::map<std::string, std::string> values = Read(file.Name());
  Check(values == Read(file.Name()), "what is read twice is the same");
  if (values.empty()) return 0;
  CheckSame(file.Name(), values[ModuleVersionInfo::sPATH_NAME], "the path is the caller's");
  values.erase(ModuleVersionInfo::sPATH_NAME);
  // Two bytes of UTF-16 make three of UTF-8.
  for (const auto& value : values)
    Check(value.second.size() <= size * 3 / 2, "texts come from the file", value.first);
  return 0;
}
