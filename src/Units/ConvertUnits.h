// The conversion that all of UnitizedValue stands on.
#ifndef OXACORE_UNITS_CONVERTUNITS_H
#define OXACORE_UNITS_CONVERTUNITS_H

#include <Infrastructure/OxaCore/UnitDescriptor.h>

namespace Oxa::Core {

/// The source of all alerts of UnitizedValue.
constexpr char sUNITIZED_VALUE_LOG[] = "Oxa.Core.UnitizedValue";

/// Converts `number` by way of the base units; units of the same factor need no conversion. Raises
/// UnitizedValue<double>::XNoUnitConversion for units of different dimensions, with `number` unchanged; false where
/// that returns.
bool ConvertUnits(double& number, const UnitDescriptor& from, const UnitDescriptor& to);

}  // namespace Oxa::Core

#endif
