#include "Platform/Libraries.h"

#include <dlfcn.h>

#include "Platform/Faults.h"
#include "Platform/Kill.h"
#include "Platform/Linux/FileName.h"

namespace Oxa::Core::Platform {

HINSTANCE OpenLibrary(const char* name) noexcept {
  const FileName converted(name);
  // The loader takes the empty name for the program itself.
  if (*converted.Get() == 0) return nullptr;
  const HoldKill alive;
  const HoldCancellation hold;
  return static_cast<HINSTANCE>(dlopen(converted.Get(), RTLD_NOW | RTLD_LOCAL));
}

void CloseLibrary(HINSTANCE library) noexcept {
  const HoldKill alive;
  const HoldCancellation hold;
  dlclose(library);
}

void* FindFunction(HINSTANCE library, const char* name) noexcept {
  const HoldKill alive;
  const HoldCancellation hold;
  return dlsym(library, name);
}

}  // namespace Oxa::Core::Platform
