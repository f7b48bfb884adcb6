// A library that has the functions of the one for symbols, and jumps on to those of the one in REAL_LIBRARY. The tests
// link it with a function less.

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

__attribute__((constructor)) void FindReal() {
  void* const library = ::dlopen(std::getenv("REAL_LIBRARY"), RTLD_NOW | RTLD_LOCAL);
#define OXACORE_DW_FUNCTION(name) real_##name = ::dlsym(library, #name);
  OXACORE_DW_FUNCTIONS(OXACORE_DW_FUNCTION)
#undef OXACORE_DW_FUNCTION
}

}  // namespace
