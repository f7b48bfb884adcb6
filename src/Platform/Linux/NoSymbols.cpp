// For builds without the headers of libdw, and for processors whose registers nobody has written down: there are no
// call stacks.
#include "Platform/CallStacks.h"

namespace Oxa::Core::Platform {

const char* SymbolLibraryName() noexcept { return ""; }

const void* FindSymbolFunction(HINSTANCE /*library*/, const char* /*function*/) noexcept { return nullptr; }

SymbolReader* OpenSymbolReader(HINSTANCE /*library*/, const char* /*searchPath*/,
                               FunctionForm /*form*/) noexcept {
  return nullptr;
}

void CloseSymbolReader(SymbolReader* /*reader*/) noexcept {}

bool WalkStack(SymbolReader& /*reader*/, const CONTEXT* /*context*/, FrameSink /*sink*/,
               void* /*argument*/) noexcept {
  return true;
}

void ReadFrameVariables(SymbolReader& /*reader*/, const StackFrame& /*frame*/, const VariableSink& /*sink*/) {
}

}  // namespace Oxa::Core::Platform
