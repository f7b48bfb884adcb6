#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <link.h>

#include <cstddef>
#include <cstdint>

#include "Platform/Faults.h"
#include "Platform/Kill.h"
#include "Platform/Libraries.h"
#include "Platform/Linux/Mappings.h"
#include "Platform/Linux/ProcFile.h"
#include "Platform/Linux/WithoutThrowing.h"
#include "Platform/Machine.h"

namespace Oxa::Core::Platform {

namespace {

constexpr char sOWN_MAPPINGS[] = "/self/maps";

// What the loader's list says of a library.
struct LoadedLibrary {
  const void* m_pHandle;
  bool m_bFound = false;
  bool m_bProgram = false;
  std::uintptr_t m_uAddress = 0;  // somewhere in it
  char m_sName[PATH_MAX] = {};    // as it was asked for, which may have been from another current folder
};

// The handle is the library's entry in the list, but may be anything here: it is only looked at once it was found. The
// list stands still while the loader calls back, by a lock of its own that the thread sanitizer knows nothing of.
__attribute__((no_sanitize("thread"))) int FindInList(dl_phdr_info*, std::size_t, void* sought) {
  auto& library = *static_cast<LoadedLibrary*>(sought);
  for (const link_map* entry = _r_debug.r_map; entry != nullptr; entry = entry->l_next) {
    if (entry != library.m_pHandle) continue;
    library.m_bFound = true;
    library.m_bProgram = entry == _r_debug.r_map;
    library.m_uAddress = reinterpret_cast<std::uintptr_t>(entry->l_ld);
    for (std::size_t i = 0; i + 1 < sizeof library.m_sName && entry->l_name[i] != 0; ++i)
      library.m_sName[i] = entry->l_name[i];
  }
  return 1;
}

// The whole path of what is mapped there; empty if nothing tells.
std::string PathAt(std::uintptr_t address) {
  std::string text;
  ReadUnsizedFile(AT_FDCWD, (std::string(ProcFolder()) + sOWN_MAPPINGS).c_str(), text);
  Mapping mapping;
  for (Mappings mappings(text); mappings.Next(mapping);)
    if (mapping.m_uStart <= address && address < mapping.m_uEnd) return FileOf(mapping);
  return std::string();
}

std::string PathOf(const LoadedLibrary& library) {
  if (library.m_sName[0] == '/') return library.m_sName;
  const std::string path = PathAt(library.m_uAddress);
  return path.empty() ? library.m_sName : path;
}

}  // namespace

int LibraryPath(HINSTANCE library, std::string& path) noexcept {
  if (library == nullptr) return ExecutablePath(path);
  LoadedLibrary found{library};
  {
    const HoldKill alive;
    dl_iterate_phdr(&FindInList, &found);
  }
  if (!found.m_bFound) return EINVAL;
  if (found.m_bProgram) return ExecutablePath(path);
  const HoldCancellation hold;
  return WithoutThrowing([&] {
    path = PathOf(found);
    return 0;
  });
}

int OwnPath(std::string& path) noexcept {
  const HoldCancellation hold;
  return WithoutThrowing([&] {
    std::string found = PathAt(reinterpret_cast<std::uintptr_t>(&OwnPath));
    if (found.empty()) return ENOENT;
    path.swap(found);
    return 0;
  });
}

}  // namespace Oxa::Core::Platform
