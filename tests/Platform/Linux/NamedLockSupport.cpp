#include "Platform/NamedLockSupport.h"

#include <unistd.h>

#include "Platform/Linux/NamedLockFile.h"

namespace NamedLockTests {

void RemoveLock(const std::string& name) {
  char file[Oxa::Core::Platform::uLOCK_FILE_NAME_SIZE];
  Oxa::Core::Platform::LockFileName(name.c_str(), file);
  for (const char* const folder : {"/dev/shm/", "/tmp/"}) ::unlink((std::string(folder) + file).c_str());
}

}  // namespace NamedLockTests
