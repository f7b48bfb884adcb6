#include "Platform/Linux/DwFunctions.h"

#include <dlfcn.h>

namespace Oxa::Core::Platform {

void FindFunctions(Dw& dw, void* library) noexcept {
#define OXACORE_DW_FUNCTION(name) dw.name = reinterpret_cast<decltype(&::name)>(::dlsym(library, #name));
  OXACORE_DW_FUNCTIONS(OXACORE_DW_FUNCTION)
#undef OXACORE_DW_FUNCTION
}

}  // namespace Oxa::Core::Platform
