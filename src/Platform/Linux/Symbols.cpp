#include "Platform/Symbols.h"

#include <cxxabi.h>

#include <cstdlib>
#include <memory>

namespace Oxa::Core::Platform {

std::string DecoratedName(const std::type_info& type) { return type.name(); }

std::string UndecoratedName(const std::type_info& type) {
  int status = 0;
  const std::unique_ptr<char, void (*)(void*)> name(
      abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), std::free);
  return std::string("class ") + (status == 0 ? name.get() : type.name());
}

}  // namespace Oxa::Core::Platform
