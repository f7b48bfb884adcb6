// Units as values: the exponents of the eight base dimensions, and a named unit with its factor.
//
// A unit's conversion factor says how many of it make one base unit of its dimension: a Centimeter has 100, a Meter
// 1. A value goes from one unit to another through base units:
//   to.ConvertFromBaseUnits(from.ConvertToBaseUnits(value))
// Everything is compared exactly, factors and names too: a compound that arithmetic made differs from a registered
// unit of the same meaning unless its texts happen to match. IsDimensionallyEquivalent asks whether a value can be
// converted, RequiresConversion whether that takes arithmetic.
//
// Binary form (numbers as DataStreams.h has them): of Dimensions the number of indices in the numerator, 4 bytes,
// then 4 bytes for each, an exponent of 2 being its index twice; then the denominator likewise. Of UnitDescriptor the
// name, the abbreviation, the factor in 8 bytes, the dimensions. The class isn't told: what is read is a plain unit,
// also where a temperature scale was written.
//
// Thread safety: values without a lock; const operations of one object may run on any number of threads. What is
// shared by boost::shared_ptr is treated as read-only. Failures: told at each operation. Nothing checks a factor that
// overflows to infinity, or an exponent that wraps. Without memory for a text, std::bad_alloc passes, and the unit is
// as it was.
//
//   UnitDescriptor meter("Meter", "m");
//   meter.SetDimensions(Dimensions(1));
//   UnitDescriptor inch("Inch", "in", 0.0254, meter);
//   UnitDescriptor area = inch * inch;  // "Inch * Inch", "in * in"
//   double meters = inch.ConvertToBaseUnits(12);
#ifndef INFRASTRUCTURE_OXACORE_UNITDESCRIPTOR_H
#define INFRASTRUCTURE_OXACORE_UNITDESCRIPTOR_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/io/BinaryStreams.h>

#include <boost/shared_ptr.hpp>
#include <map>
#include <string>

namespace Oxa::Core {

/// The index of an exponent in Dimensions. An angle is a dimension of its own: a radian isn't dimensionless.
enum EDimension : int {
  eLength = 0,             ///< base unit "Meter"
  eMass = 1,               ///< "Kilogram"
  eTime = 2,               ///< "Second"
  eCurrent = 3,            ///< "Ampere"
  eTemperature = 4,        ///< "Kelvin"
  eAmount = 5,             ///< "Mole"
  eLuminousIntensity = 6,  ///< "Candela"
  eAngle = 7               ///< "Radian"
};

/// The exponents of the eight base dimensions; nothing else, so that it can be copied like a number.
class OXACORE_API Dimensions {
 public:
  static constexpr int sCOUNT = 8;  ///< how many dimensions there are

  /// Unitless: all exponents are 0.
  Dimensions() : Dimensions(0L) {}

  /// The exponents in the order of EDimension.
  explicit Dimensions(long l0) : Dimensions(l0, 0) {}
  Dimensions(long l0, long l1, long l2 = 0, long l3 = 0, long l4 = 0, long l5 = 0, long l6 = 0, long l7 = 0)
      : m_lExponents{l0, l1, l2, l3, l4, l5, l6, l7} {}

  /// Exponents that the map doesn't have are 0; a key that isn't a dimension is passed over.
  explicit Dimensions(const std::map<EDimension, long>& exponents);

  Dimensions(const Dimensions&) = default;
  Dimensions& operator=(const Dimensions&) = default;

  // No check of the bounds.
  long& operator[](EDimension dimension) { return m_lExponents[dimension]; }
  long operator[](EDimension dimension) const { return m_lExponents[dimension]; }

  // Whether all exponents are the same.
  bool operator==(const Dimensions& other) const;
  bool operator!=(const Dimensions& other) const { return !(*this == other); }

  /// A total order for sorting: by the bytes in memory, not by the values. -1 comes behind 1.
  bool operator<(const Dimensions& other) const;

  /// Adds the exponents of `other`, as a product of units has them.
  const Dimensions& operator*=(const Dimensions& other);

  /// Subtracts them, as a quotient has them.
  const Dimensions& operator/=(const Dimensions& other);

  /// Sets an entry for each exponent that isn't 0; the map's other entries stay as they are.
  void GetExponents(std::map<EDimension, long>& exponents) const;

  /// Whether all exponents are 0.
  bool IsUnitless() const;

  /// The bytes of the binary form: 8, and 4 for each unit of each exponent's absolute value.
  unsigned long GetSerializedSize() const;

 private:
  long m_lExponents[sCOUNT];
};

/// Writes the binary form through a DataOutputStream. Raises InvalidParameter ("exponents" with the count,
/// "Oxa.Core.Dimensions") if the numerator or the denominator has more than 2147483647 indices; nothing is written
/// then, also where that raise returns.
OXACORE_API BinaryOutputStream& operator<<(BinaryOutputStream& out, const Dimensions& dimensions);

/// Reads the binary form through a DataInputStream. A count that isn't greater than 0 reads no indices, and one that
/// the stream no longer has counts as 0. Raises IndexOutOfBounds (index, "Dimensions", 8; "Oxa.Core.Dimensions") at
/// the first index that isn't a dimension, -1 where the stream has ended: so a count too large for the stream ends
/// at once. `dimensions` is unchanged then, also where that raise returns; what was read is gone from the stream.
OXACORE_API BinaryInputStream& operator>>(BinaryInputStream& in, Dimensions& dimensions);

/// A named unit. Base of units that convert in another way than by a factor: such a class overrides MakeCopy, the two
/// conversions and what else differs.
class OXACORE_API UnitDescriptor {
 public:
  /// A unit without texts, of factor 1.0 and without dimensions.
  UnitDescriptor();

  /// A unit of factor 1.0 and without dimensions; a base unit gets its own by SetDimensions.
  explicit UnitDescriptor(const std::string& aName, const std::string& aAbbreviation = std::string());

  /// A unit of the dimensions of `aComparisonUnit`, of which `dComparisonFactor` make one of this: 0.01 Meter are
  /// a Centimeter. The factor stored is that of `aComparisonUnit` divided by `dComparisonFactor`.
  /// Raises InvalidParameter ("dComparisonFactor" with its value, "Oxa.Core.UnitDescriptor") for a factor of 0;
  /// where that raise returns the new unit has the factor of `aComparisonUnit`.
  UnitDescriptor(const std::string& aName, const std::string& aAbbreviation, double dComparisonFactor,
                 const UnitDescriptor& aComparisonUnit);

  UnitDescriptor(const UnitDescriptor& other);

  // The virtual operations stand in the order of their slots, which is fixed: hosts are built against it.
  virtual ~UnitDescriptor();

  /// A new object of the same class on the heap. Every derived class overrides this.
  /// Raises AllocationFailed ("UnitDescriptor", "Oxa.Core.UnitDescriptor") without the memory; null where that raise
  /// returns.
  virtual boost::shared_ptr<UnitDescriptor> MakeCopy() const;

  // The texts: neither has to be unique, or there at all.
  virtual const std::string& GetName() const;
  virtual void SetName(const std::string& aName);
  virtual const std::string& GetAbbreviation() const;
  virtual void SetAbbreviation(const std::string& aAbbreviation);

  /// `value` of this unit in base units: divided by the factor.
  virtual double ConvertToBaseUnits(double value) const;
  /// `value` base units in this unit: multiplied by the factor.
  virtual double ConvertFromBaseUnits(double value) const;

  /// Whether the unit has no dimensions. It can have a name and a factor all the same.
  virtual bool IsUnitless() const;

  // Every derived class has an assignment of its own, which hides this one: no mistake of the host.
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Woverloaded-virtual"
#endif
  /// Takes over texts, factor and dimensions; not the class.
  virtual UnitDescriptor& operator=(const UnitDescriptor& other);  // NOLINT: it has a slot
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

  /// Multiplies the factors and adds the dimensions. A unitless result loses both texts and keeps its factor. A
  /// unitless left side takes the texts of `other`; a unitless `other` leaves them. Else each text becomes both of
  /// them joined by " * ", or empty if one of the two is empty.
  virtual UnitDescriptor& operator*=(const UnitDescriptor& other);

  /// Divides the factors and subtracts the dimensions. A unitless result loses both texts and keeps its factor. A
  /// unitless left side gets "1/" and each text of `other`, or an empty one where that is empty; a unitless `other`
  /// leaves them. Else each text becomes both of them joined by " / ", or empty if one of the two is empty.
  virtual UnitDescriptor& operator/=(const UnitDescriptor& other);

  /// A plain unit, whatever class this is: a copy, multiplied.
  virtual UnitDescriptor operator*(const UnitDescriptor& other) const;
  /// A plain unit, whatever class this is: a copy, divided.
  virtual UnitDescriptor operator/(const UnitDescriptor& other) const;

  /// Whether both texts, the factor and the dimensions are exactly those of `other`. The class doesn't count.
  virtual bool operator==(const UnitDescriptor& other) const;
  /// What this object's operator== denies.
  virtual bool operator!=(const UnitDescriptor& other) const;

  /// Whether the dimensions are those of `other`, so that values can be converted.
  virtual bool IsDimensionallyEquivalent(const UnitDescriptor& other) const;

  /// Whether the factors differ; neither names nor dimensions are looked at.
  virtual bool RequiresConversion(const UnitDescriptor& other) const;

  // How many of the unit make one base unit, and of which dimensions.
  double GetConversionFactor() const { return m_dConversionFactor; }
  const Dimensions& GetDimensions() const { return m_dimensions; }
  void SetDimensions(const Dimensions& dimensions) { m_dimensions = dimensions; }

  /// The bytes of the binary form.
  unsigned int GetSerializedSize() const;

 private:
  friend OXACORE_API BinaryOutputStream& operator<<(BinaryOutputStream& out, const UnitDescriptor& unit);
  friend OXACORE_API BinaryInputStream& operator>>(BinaryInputStream& in, UnitDescriptor& unit);

  void takeTexts(std::string name, std::string abbreviation) noexcept;

  std::string m_sName;
  std::string m_sAbbreviation;
  double m_dConversionFactor;  // how many of this unit make one base unit
  Dimensions m_dimensions;
};

/// Writes the binary form. Raises as the operator for Dimensions does, before anything is written.
OXACORE_API BinaryOutputStream& operator<<(BinaryOutputStream& out, const UnitDescriptor& unit);

/// Reads the binary form into texts, factor and dimensions of `unit`, whose class stays. Where the stream ends before
/// a text, a factor or a count, that is empty, 1.0 or 0. Raises as the operator for Dimensions does, and what the
/// DataInputStream raises for a text; `unit` is unchanged then.
OXACORE_API BinaryInputStream& operator>>(BinaryInputStream& in, UnitDescriptor& unit);

inline const Dimensions& Dimensions::operator*=(const Dimensions& other) {
  for (int i = 0; i < sCOUNT; ++i) {
    m_lExponents[i] = static_cast<long>(static_cast<unsigned long>(m_lExponents[i]) +
                                        static_cast<unsigned long>(other.m_lExponents[i]));
  }
  return *this;
}

inline const Dimensions& Dimensions::operator/=(const Dimensions& other) {
  for (int i = 0; i < sCOUNT; ++i) {
    m_lExponents[i] = static_cast<long>(static_cast<unsigned long>(m_lExponents[i]) -
                                        static_cast<unsigned long>(other.m_lExponents[i]));
  }
  return *this;
}

// Both without a branch for each exponent.
inline bool Dimensions::operator==(const Dimensions& other) const {
  long differences = 0;
  for (int i = 0; i < sCOUNT; ++i) differences |= m_lExponents[i] ^ other.m_lExponents[i];
  return differences == 0;
}

inline bool Dimensions::IsUnitless() const {
  long bits = 0;
  for (const long exponent : m_lExponents) bits |= exponent;
  return bits == 0;
}

}  // namespace Oxa::Core

#endif
