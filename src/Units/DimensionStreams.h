// The binary form of Dimensions, for what streams it as a part of itself.
#ifndef OXACORE_UNITS_DIMENSIONSTREAMS_H
#define OXACORE_UNITS_DIMENSIONSTREAMS_H

#include <Infrastructure/OxaCore/UnitDescriptor.h>
#include <Infrastructure/OxaCore/io/DataStreams.h>

namespace Oxa::Core {

/// Raises InvalidParameter if the exponents need more indices than the form can count; false where that returns.
bool CanBeWritten(const Dimensions& dimensions);

/// Only for what CanBeWritten.
void WriteDimensions(DataOutputStream& out, const Dimensions& dimensions);

/// Raises IndexOutOfBounds; false, with `dimensions` unchanged, where that returns.
bool ReadDimensions(DataInputStream& in, Dimensions& dimensions);

}  // namespace Oxa::Core

#endif
