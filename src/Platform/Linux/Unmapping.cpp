#include "Platform/Linux/Unmapping.h"

#include <link.h>
#include <sys/auxv.h>

#include <atomic>
#include <cstdint>

#include "Platform/Storage.h"

namespace Oxa::Core::Platform {

namespace {

std::atomic<bool> s_bDestructorsCalled{false};
std::atomic<bool> s_bCameWithProgram{false};
std::atomic<bool> s_bBeingUnmapped{false};

// What the system calls when a library goes.
[[gnu::destructor]] void NoteDestructors() { s_bDestructorsCalled.store(true); }

bool Holds(const dl_phdr_info& object, const void* place) noexcept {
  const auto address = reinterpret_cast<std::uintptr_t>(place);
  for (int i = 0; i < object.dlpi_phnum; ++i) {
    const auto& part = object.dlpi_phdr[i];
    const std::uintptr_t start = object.dlpi_addr + part.p_vaddr;
    if (part.p_type == PT_LOAD && address >= start && address - start < part.p_memsz) return true;
  }
  return false;
}

// Objects come in the order in which they were loaded, and the loader's own stands among those of the program: 1
// for whoever stands before it, 2 for the loader.
int LookAt(dl_phdr_info* object, std::size_t, void*) {
  if (Holds(*object, &s_bCameWithProgram)) return 1;
  return object->dlpi_addr == ::getauxval(AT_BASE) ? 2 : 0;
}

}  // namespace

void NoteLoading() noexcept { s_bCameWithProgram.store(::dl_iterate_phdr(&LookAt, nullptr) == 1); }

// What came with the program is never unmapped. For all else the system calls destructors before the routines of
// atexit when it unmaps, and behind them when the process ends.
void NoteUnloading() noexcept { s_bBeingUnmapped.store(s_bDestructorsCalled && !s_bCameWithProgram); }

bool IsBeingUnmapped() noexcept { return s_bBeingUnmapped.load(); }

}  // namespace Oxa::Core::Platform
