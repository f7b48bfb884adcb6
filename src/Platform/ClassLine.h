// How classes descend from one another, as far as the compiler's tables tell that faster than a cast.
#ifndef OXACORE_PLATFORM_CLASSLINE_H
#define OXACORE_PLATFORM_CLASSLINE_H

#include <typeinfo>

namespace Oxa::Core::Platform {

/// Whether a straight line of single, public, non-virtual bases leads from `derived` to `base`: every object of class
/// `derived` then begins with its one `base`. A class leads to itself. False also where the tables don't tell; a cast
/// does.
bool IsInStraightLine(const std::type_info& derived, const std::type_info& base) noexcept;

}  // namespace Oxa::Core::Platform

#endif
