#include <Infrastructure/OxaCore/UnitDescriptor.h>

#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/io/DataStreams.h>

#include <cstdint>
#include <cstring>
#include <limits>

#include "Units/DimensionStreams.h"

namespace Oxa::Core {

namespace {

constexpr char sLOG_NAME[] = "Oxa.Core.Dimensions";
constexpr char sDIMENSIONS[] = "Dimensions";
constexpr char sEXPONENTS[] = "exponents";

constexpr unsigned long ulMOST_INDICES = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t iNO_INDEX = -1;  // a stream that ends within an index leaves it negative

constexpr unsigned long ulSIZE_OF_COUNTS = 8;
constexpr unsigned long ulSIZE_OF_INDEX = 4;

EDimension Index(int i) { return static_cast<EDimension>(i); }

// The units of an exponent that stand in the numerator, or in the denominator.
unsigned long Above(long exponent) { return exponent > 0 ? static_cast<unsigned long>(exponent) : 0; }
unsigned long Below(long exponent) { return exponent < 0 ? 0 - static_cast<unsigned long>(exponent) : 0; }

using Units = unsigned long (*)(long exponent);

// More than the stream's count can hold is as good as endless.
unsigned long CountIndices(const Dimensions& dimensions, Units units) {
  unsigned long count = 0;
  for (int i = 0; i < Dimensions::sCOUNT; ++i) {
    const unsigned long more = units(dimensions[Index(i)]);
    if (more > ulMOST_INDICES) return more;
    count += more;
  }
  return count;
}

bool FitsStream(unsigned long count) {
  if (count <= ulMOST_INDICES) return true;
  OXA_RAISE_ERROR(sLOG_NAME, InvalidParameter(sEXPONENTS, count));
  return false;
}

void WriteIndices(DataOutputStream& out, const Dimensions& dimensions, Units units) {
  out << static_cast<std::int32_t>(CountIndices(dimensions, units));
  for (std::int32_t i = 0; i < Dimensions::sCOUNT; ++i)
    for (unsigned long left = units(dimensions[Index(i)]); left > 0; --left) out << i;
}

bool ReadIndices(DataInputStream& in, Dimensions& dimensions, long step) {
  std::int32_t count = 0;
  in >> count;
  for (; count > 0; --count) {
    std::int32_t index = iNO_INDEX;
    in >> index;
    if (index < 0 || index >= Dimensions::sCOUNT) {
      OXA_RAISE_ERROR(sLOG_NAME, IndexOutOfBounds(index, sDIMENSIONS, Dimensions::sCOUNT));
      return false;
    }
    dimensions[Index(index)] += step;
  }
  return true;
}

}  // namespace

Dimensions::Dimensions(const std::map<EDimension, long>& exponents) : Dimensions() {
  for (const auto& [dimension, exponent] : exponents)
    if (dimension >= 0 && dimension < sCOUNT) m_lExponents[dimension] = exponent;
}

bool Dimensions::operator<(const Dimensions& other) const {
  return std::memcmp(m_lExponents, other.m_lExponents, sizeof m_lExponents) < 0;
}

void Dimensions::GetExponents(std::map<EDimension, long>& exponents) const {
  for (int i = 0; i < sCOUNT; ++i)
    if (m_lExponents[i] != 0) exponents[Index(i)] = m_lExponents[i];
}

unsigned long Dimensions::GetSerializedSize() const {
  unsigned long size = ulSIZE_OF_COUNTS;
  for (const long exponent : m_lExponents) size += ulSIZE_OF_INDEX * (Above(exponent) + Below(exponent));
  return size;
}

bool CanBeWritten(const Dimensions& dimensions) {
  return FitsStream(CountIndices(dimensions, Above)) && FitsStream(CountIndices(dimensions, Below));
}

void WriteDimensions(DataOutputStream& out, const Dimensions& dimensions) {
  WriteIndices(out, dimensions, Above);
  WriteIndices(out, dimensions, Below);
}

bool ReadDimensions(DataInputStream& in, Dimensions& dimensions) {
  Dimensions read;
  if (!ReadIndices(in, read, +1) || !ReadIndices(in, read, -1)) return false;
  dimensions = read;
  return true;
}

BinaryOutputStream& operator<<(BinaryOutputStream& out, const Dimensions& dimensions) {
  if (!CanBeWritten(dimensions)) return out;
  DataOutputStream data(out);
  WriteDimensions(data, dimensions);
  return out;
}

BinaryInputStream& operator>>(BinaryInputStream& in, Dimensions& dimensions) {
  DataInputStream data(in);
  ReadDimensions(data, dimensions);
  return in;
}

}  // namespace Oxa::Core
