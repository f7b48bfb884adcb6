#include "Platform/VersionRecords.h"

#include <errno.h>

#include "Platform/Faults.h"
#include "Platform/Linux/ElfVersion.h"
#include "Platform/Linux/FileName.h"
#include "Platform/Linux/ModuleFile.h"
#include "Platform/Linux/PeVersion.h"
#include "Platform/Linux/WithoutThrowing.h"

namespace Oxa::Core::Platform {

namespace {

// Null means nothing to tell.
int ReadRecord(ModuleFile& file, const char* name, const std::vector<std::string>& keys,
               VersionRecord& record) {
  if (IsElf(file)) return ReadElfVersion(file, name, record) ? 0 : ENODATA;
  return IsPe(file) && ReadPeVersion(file, keys, record) ? 0 : ENODATA;
}

}  // namespace

int ReadVersionRecord(const char* name, const std::vector<std::string>& keys,
                      VersionRecord& record) noexcept {
  const HoldCancellation hold;
  return WithoutThrowing([&] {
    const FileName converted(name);
    if (converted.Code() != 0) return converted.Code();
    ModuleFile file(converted.Get());
    if (file.Code() != 0) return file.Code();
    VersionRecord found;
    if (const int code = ReadRecord(file, converted.Get(), keys, found)) return code;
    VersionRecord whole = record;
    for (const std::string& key : keys) {
      const auto text = found.find(key);
      if (text != found.end()) whole.insert(*text);
    }
    record.swap(whole);
    return 0;
  });
}

}  // namespace Oxa::Core::Platform
