#include "Platform/ClassLine.h"

#include <cxxabi.h>

namespace Oxa::Core::Platform {

namespace {

// What describes a class with a single base, public, not virtual, and at its beginning.
using SingleBase = abi::__si_class_type_info;

bool HasSingleBase(const std::type_info& type) noexcept { return &typeid(type) == &typeid(SingleBase); }

}  // namespace

// By address only: a class that is described twice, in two libraries, is left to the cast, which compares names.
bool IsInStraightLine(const std::type_info& derived, const std::type_info& base) noexcept {
  const std::type_info* type = &derived;
  while (type != &base) {
    if (!HasSingleBase(*type)) return false;
    type = static_cast<const SingleBase*>(type)->__base_type;
  }
  return true;
}

}  // namespace Oxa::Core::Platform
