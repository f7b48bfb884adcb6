#include "Platform/Dump.h"

#if !defined(__x86_64__)

#include <errno.h>

namespace Oxa::Core::Platform {

// The registers of other processors aren't known here.
int WriteDump(const char* /*path*/, const _EXCEPTION_POINTERS* /*pointers*/, unsigned int /*contents*/,
              DumpFilter /*filter*/, void* /*parameter*/, int /*milliseconds*/) noexcept {
  return ENOSYS;
}

void ForgetDumpsOfParent() noexcept {}

}  // namespace Oxa::Core::Platform

#endif
