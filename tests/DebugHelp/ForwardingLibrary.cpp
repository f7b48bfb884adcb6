// A library that has the functions of the one for symbols, and jumps on to those of the one in REAL_LIBRARY. The tests
// link it with a function less. With OUT_OF_MEMORY set, memory runs out wherever a line is looked up.

#include <dlfcn.h>

#include <cstdlib>

#include "Platform/Linux/DwFunctions.h"

#define OXACORE_DW_FUNCTION(name)                                          \
  extern "C" {                                                             \
  __attribute__((visibility("hidden"), used)) void* real_##name = nullptr; \
  }                                                                        \
  asm(".text\n.globl " #name "\n.type " #name ", @function\n" #name        \
      ":\n\tendbr64\n"                                                     \
      "\tjmp *real_" #name "(%rip)\n.size " #name ", . - " #name "\n");
OXACORE_DW_FUNCTIONS(OXACORE_DW_FUNCTION)
#undef OXACORE_DW_FUNCTION

namespace {

Dwarf_OOM s_handler = nullptr;

Dwarf_OOM TakeHandler(Dwarf* /*debugData*/, Dwarf_OOM handler) {
  s_handler = handler;
  return nullptr;
}

Dwarf_Line* RunOut(Dwarf_Die* /*unit*/, Dwarf_Addr /*address*/) {
  if (s_handler == nullptr) std::_Exit(1);  // as the library does by itself
  s_handler();
}

// A statement for each function.
__attribute__((constructor)) void FindReal() {  // NOLINT(readability-function-size)
  void* const library = ::dlopen(std::getenv("REAL_LIBRARY"), RTLD_NOW | RTLD_LOCAL);
#define OXACORE_DW_FUNCTION(name) real_##name = ::dlsym(library, #name);
  OXACORE_DW_FUNCTIONS(OXACORE_DW_FUNCTION)
#undef OXACORE_DW_FUNCTION
  if (std::getenv("OUT_OF_MEMORY") == nullptr) return;
  real_dwarf_new_oom_handler = reinterpret_cast<void*>(&TakeHandler);
  real_dwarf_getsrc_die = reinterpret_cast<void*>(&RunOut);
}

}  // namespace
