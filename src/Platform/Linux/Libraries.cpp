#include "Platform/Libraries.h"

#include <dlfcn.h>
#include <elf.h>
#include <string.h>

#include <algorithm>

#include "Platform/Faults.h"
#include "Platform/Kill.h"
#include "Platform/Linux/ElfLayout.h"
#include "Platform/Linux/FileName.h"
#include "Platform/Linux/ModuleFile.h"
#include "Platform/Linux/WithoutThrowing.h"

namespace Oxa::Core::Platform {

namespace {

bool EndsInside(const ElfPiece& segment, std::uint64_t fileSize) {
  return segment.m_ullOffset <= fileSize && segment.m_ullSize <= fileSize - segment.m_ullOffset;
}

// Whether it lacks bytes that would be loaded: the loader maps them unseen, and dies of touching them.
bool IsCutOff(const char* name) noexcept {
  return WithoutThrowing([&] {
           ModuleFile file(name);
           const ElfLayout layout(file);
           return std::all_of(layout.Segments().begin(), layout.Segments().end(),
                              [&](const ElfPiece& segment) {
                                return segment.m_uType != PT_LOAD || EndsInside(segment, file.Size());
                              })
                      ? 0
                      : 1;
         }) == 1;
}

}  // namespace

HINSTANCE OpenLibrary(const char* name) noexcept {
  const FileName converted(name);
  // The loader takes the empty name for the program itself.
  if (*converted.Get() == 0) return nullptr;
  const HoldKill alive;
  const HoldCancellation hold;
  // Without a folder it is the loader's to find, in places where libraries come whole.
  if (strchr(converted.Get(), '/') != nullptr && IsCutOff(converted.Get())) return nullptr;
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
