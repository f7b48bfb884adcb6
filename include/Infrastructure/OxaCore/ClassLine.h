// How classes descend from one another, as far as the compiler's tables tell that faster than a cast.
//
// Reads tables that never change: any thread, no locks, no failures. Inline, because the calls would cost more than
// the answer. Hosts rarely need it: NotificationTo asks it.
//
//   if (IsInStraightLine(typeid(listener), typeid(DoorGuard))) ...
#ifndef INFRASTRUCTURE_OXACORE_CLASSLINE_H
#define INFRASTRUCTURE_OXACORE_CLASSLINE_H

#include <typeinfo>
#ifdef __GLIBCXX__
#include <cxxabi.h>
#endif

namespace Oxa::Core {

/// The class that `type` has as its single base, if that is public, not virtual, and at its beginning. Null otherwise,
/// and always where the runtime doesn't show its tables.
#ifdef __GLIBCXX__
inline const std::type_info* SingleBaseOf(const std::type_info& type) noexcept {
  using SingleBase = abi::__si_class_type_info;
  return &typeid(type) == &typeid(SingleBase) ? static_cast<const SingleBase&>(type).__base_type : nullptr;
}
#else
inline const std::type_info* SingleBaseOf(const std::type_info&) noexcept { return nullptr; }
#endif

/// Whether a straight line of single, public, non-virtual bases leads from `derived` to `base`: every object of class
/// `derived` then begins with its one `base`. A class leads to itself. False also where the tables don't tell; a cast
/// does. Compares by address only: a class that is described twice, in two libraries, is left to the cast, which
/// compares names.
inline bool IsInStraightLine(const std::type_info& derived, const std::type_info& base) noexcept {
  const std::type_info* type = &derived;
  while (type != nullptr && type != &base) type = SingleBaseOf(*type);
  return type != nullptr;
}

}  // namespace Oxa::Core

#endif
