// Names of types, as the platform spells them.
#ifndef OXACORE_PLATFORM_SYMBOLS_H
#define OXACORE_PLATFORM_SYMBOLS_H

#include <string>
#include <typeinfo>

namespace Oxa::Core::Platform {

/// The identity of a class in texts: equal for one type, different for different types.
std::string DecoratedName(const std::type_info& type);

/// "class " and the name as a programmer writes it, as in "class BasicWarning". Templates keep their
/// arguments. The decorated name stands in where the system can't tell.
std::string UndecoratedName(const std::type_info& type);

}  // namespace Oxa::Core::Platform

#endif
