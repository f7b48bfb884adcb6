// What a dictionary of units has to hold, written down a second time and apart from the library's own rows, so that
// a slip of the hand there doesn't go unseen.
//
// Texts are in the library's single-byte code page: \265, \261 and \260 are the micro sign, plus-minus and degree.
#pragma once

#include <Infrastructure/OxaCore/UnitDescriptor.h>

#include <string>
#include <vector>

namespace UnitTable {

// Who registers a unit: every dictionary at its birth, RegisterDefaultUnits as well as RegisterAllKnownUnits, or
// only the latter.
enum EAvailability { eBASE, eDEFAULT, eKNOWN };

struct Row {
  const char* name;
  const char* abbreviation;
  double factor;           // how many of the unit make one of its base unit: what GetConversionFactor gives
  const char* inBase;      // how many base units make one of the unit, before anything is rounded to a double
  const char* dimensions;  // such as "m2 kg s-3 A-1"; "1" if there are none
  EAvailability availability;
  const char*
      alternates;  // every further name, apart by '|'; twice if the name is registered twice for this unit
};

// All rows, in the order of registration.
const std::vector<Row>& Rows();

// The exponents that a text of dimensions stands for.
Oxa::Core::Dimensions DimensionsOf(const Row& row);

std::vector<std::string> AlternatesOf(const Row& row);

}  // namespace UnitTable
