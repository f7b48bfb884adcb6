// What the tests of units share: a few units made by hand, and errors as one text.
#ifndef OXACORE_TESTS_UNITS_UNITSSUPPORT_H
#define OXACORE_TESTS_UNITS_UNITSSUPPORT_H

#include <Infrastructure/OxaCore/UnitDescriptor.h>

#include <string>

#include "io/Raised.h"
#include "io/Streams.h"

namespace UnitsTests {

using namespace Oxa::Core;
using IoTests::Raised;

inline UnitDescriptor BaseUnit(const std::string& name, const std::string& abbreviation,
                               EDimension dimension) {
  UnitDescriptor unit(name, abbreviation);
  Dimensions dimensions;
  dimensions[dimension] = 1;
  unit.SetDimensions(dimensions);
  return unit;
}

inline UnitDescriptor Meter() { return BaseUnit("Meter", "m", eLength); }
inline UnitDescriptor Second() { return BaseUnit("Second", "s", eTime); }
inline UnitDescriptor Inch() { return UnitDescriptor("Inch", "in", 0.0254, Meter()); }
inline UnitDescriptor Centimeter() { return UnitDescriptor("Centimeter", "cm", 0.01, Meter()); }

/// A unit that has a name and no dimensions.
inline UnitDescriptor Dozen() { return UnitDescriptor("Dozen", "dz", 12.0, UnitDescriptor("Piece", "pc")); }

/// The bytes of a literal, zeros included.
template <std::size_t Size>
std::string Bytes(const char (&literal)[Size]) {
  return std::string(literal, Size - 1);
}

template <class Value>
std::string Written(const Value& value) {
  IoTests::MemorySink sink;
  BinaryOutputStream& out = sink;
  EXPECT_EQ(&out, &(out << value));
  return sink.m_bytes;
}

/// `value` after it was read into; nothing may be left of `bytes`.
template <class Value>
Value ReadInto(Value value, const std::string& bytes) {
  IoTests::MemorySource source(bytes);
  BinaryInputStream& in = source;
  EXPECT_EQ(&in, &(in >> value));
  EXPECT_EQ(0U, source.AvailableBytes());
  return value;
}

}  // namespace UnitsTests

#endif
