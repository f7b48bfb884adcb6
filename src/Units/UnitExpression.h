// Compound units as the rows of the standard units write them.
#ifndef OXACORE_UNITS_UNITEXPRESSION_H
#define OXACORE_UNITS_UNITEXPRESSION_H

#include <Infrastructure/OxaCore/UnitDictionary.h>

#include <optional>
#include <string>

namespace Oxa::Core {

/// The unit of an expression such as "Meter * Meter * Kilogram / Second * Second * Second * Ampere": main names from
/// `dictionary` with " * " or " / " between them. All that stands behind the first "/" is the denominator, behind
/// another "/" as well as behind a "*"; it is worked out from left to right.
/// Raises NullPointer with the name of a unit that isn't there, under "Oxa.Core.UnitDictionary", and gives nothing
/// where that returns.
std::optional<UnitDescriptor> UnitOf(const UnitDictionary& dictionary, const std::string& expression);

}  // namespace Oxa::Core

#endif
