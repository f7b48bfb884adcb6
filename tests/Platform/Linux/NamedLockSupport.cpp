#include "Platform/NamedLockSupport.h"

namespace NamedLockTests {

void RemoveLock(const std::string& name) { Oxa::Core::Platform::RemoveNamedLock(name.c_str()); }

}  // namespace NamedLockTests
