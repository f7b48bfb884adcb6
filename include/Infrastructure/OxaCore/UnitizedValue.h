// A number together with its unit: it converts, refuses conversions that make no sense, and calculates across
// units.
//
// Units are named as in a UnitDictionary: by name, abbreviation or alternate name. Where a unit is looked up, and in
// which order, stands at each operation; the first dictionary in which a name is ambiguous ends the search by its
// error. The global dictionary holds the default units before any other code of a host runs, and lives to the end
// of the process.
//
// Conversions go through the base units and are what the arithmetic on doubles yields, without any tolerance: use
// IsEqual for what was measured. Units of the same factor need no conversion, and a temperature in Kelvin has the
// same factor as every temperature scale: 300 Kelvin converted to Celsius are 300 Celsius. A scale on the left is
// always converted.
//
// Failures: XUnitNotFound, XNoUnitConversion, NullPointer and AllocationFailed under "Oxa.Core.UnitizedValue",
// UnitDictionary::XAlternateNameCollision, UnitDescriptor_Temperature::XIllegalArithmetic, and for want of memory
// what UnitDescriptor::MakeCopy raises or std::bad_alloc. Whatever is raised, the value is unchanged; where a raise
// returns, too. A comparison then says that the two differ.
//
// Thread safety: a value has no lock. Copies share the descriptor of their unit, which operations read and never
// write: copies may be used on different threads. Look-ups in the global dictionary may go on at once on any number
// of threads as long as nobody changes it.
//
//   UnitizedValue<double> speed(90, "Mile per Hour");
//   std::cout << speed.Get("m/s") << '\n';                       // 40.2336
//   UnitizedValue<double> way = speed * UnitizedValue<double>(2, "Minutes");
//   std::cout << way.ToString("Kilometer") << '\n';              // "4.82803 km"
//   if (way > UnitizedValue<double>(3, "Mile")) way.ConvertTo("Yard");
#ifndef INFRASTRUCTURE_OXACORE_UNITIZEDVALUE_H
#define INFRASTRUCTURE_OXACORE_UNITIZEDVALUE_H

#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/UnitDescriptor.h>
#include <Infrastructure/OxaCore/UnitDictionary.h>

#include <boost/shared_ptr.hpp>
#include <iosfwd>
#include <string>

namespace Oxa::Core {

/// What all instantiations share.
class OXACORE_API UnitizedValueBase {
 public:
  /// Makes the global dictionary while the library loads.
  class OXACORE_API Initializer {
   public:
    Initializer();
  };

  /// The global dictionary, with the default units. It exists from the load on and registers its units when it is
  /// first used, by whichever thread; without the memory for them that use raises what the constructor of
  /// UnitDictionary raises, and the next one tries again. A host that puts another dictionary here does so before
  /// other threads use quantities; without one every name is unknown.
  static boost::shared_ptr<UnitDictionary>& sm_spGlobalDictionary;

 private:
  static Initializer sm_Initializer;
};

/// Exists for double only.
template <class T>
class UnitizedValue;

/// A number and its unit. Copies share the descriptor of the unit and refer to the same dictionary.
template <>
class OXACORE_API UnitizedValue<double> : public UnitizedValueBase {
 public:
  /// "Illegal unit conversion from \"%1%\" to \"%2%\"", with the names of both units. Severity eERROR.
  class OXACORE_API XNoUnitConversion : public ErrorClass<XNoUnitConversion, LogicError> {
   public:
    XNoUnitConversion(const std::string& from, const std::string& to);
    XNoUnitConversion(const XNoUnitConversion&) = default;
    XNoUnitConversion& operator=(const XNoUnitConversion&) = default;
    ~XNoUnitConversion() override;
  };

  /// "%1% unit not found in the unit dictionary", with the name asked for. Severity eERROR.
  class OXACORE_API XUnitNotFound : public ErrorClass<XUnitNotFound, LogicError> {
   public:
    explicit XUnitNotFound(const std::string& name);
    XUnitNotFound(const XUnitNotFound&) = default;
    XUnitNotFound& operator=(const XUnitNotFound&) = default;
    ~XUnitNotFound() override;
  };

  /// A value without a unit, in a new descriptor with an empty name and abbreviation. Raises AllocationFailed for
  /// "UnitDescriptor" without the memory for that.
  UnitizedValue(double aValue = 0);

  /// Looks the unit up in the global dictionary. Raises XUnitNotFound, and XAlternateNameCollision for an ambiguous
  /// name; the value is without a unit where that returns.
  UnitizedValue(double aValue, const std::string& aUnitName);

  /// Looks the unit up in `aDictionary`, then in the global one. Keeps the address of `aDictionary`, which must
  /// outlive the value, its copies, and the sums and products of which it is the left part. Raises XUnitNotFound, and
  /// XAlternateNameCollision for a name that is ambiguous in the first one that knows it; the value is without a unit
  /// where that returns.
  UnitizedValue(double aValue, const std::string& aUnitName, const UnitDictionary& aDictionary);

  // No moves: a value that was moved from would have no unit.
  UnitizedValue(const UnitizedValue&) = default;
  UnitizedValue& operator=(const UnitizedValue&) = default;
  virtual ~UnitizedValue();

  /// The number in the current unit.
  double GetValue() const { return value; }
  explicit operator double() const { return value; }

  /// The number in another unit; the value stays. Looks the name up as ConvertTo(aUnitName) does, and raises what
  /// that raises; not a number where that returns.
  double Get(const std::string& aUnitName) const;

  /// The current unit, never null. Copies of this value share it: don't change it.
  const boost::shared_ptr<UnitDescriptor>& GetUnits() const { return units; }

  /// Looks the name up in the global dictionary, then in the one that the value was made with, and converts.
  /// Raises XUnitNotFound, XAlternateNameCollision for a name that is ambiguous in the first one that knows it, and
  /// XNoUnitConversion for a unit of other dimensions.
  void ConvertTo(const std::string& aUnitName);

  /// The same, with `aDictionary` asked before the other two. Its address isn't kept.
  void ConvertTo(const std::string& aUnitName, const UnitDictionary& aDictionary);

  /// Converts to `aUnits` and shares it. Raises NullPointer for "aUnits", and XNoUnitConversion for a unit of other
  /// dimensions.
  void ConvertTo(boost::shared_ptr<UnitDescriptor> aUnits);

  /// Whether the two can be converted into each other's units.
  bool IsDimensionallyEquivalent(const UnitizedValue& aOther) const;

  /// Whether `aOther`, converted to this value's unit, lies within `aTolerance` of it, both limits included. The
  /// tolerance is in this value's unit. False for a value of other dimensions, which raises nothing.
  bool IsEqual(const UnitizedValue& aOther, double aTolerance) const;

  /// Adds or subtracts `aOther`, converted to this value's unit. Raises XNoUnitConversion for other dimensions, so
  /// for every plain number unless this value is without dimensions.
  UnitizedValue& operator+=(const UnitizedValue& aOther);
  UnitizedValue& operator-=(const UnitizedValue& aOther);
  UnitizedValue& operator+=(double aOther);
  UnitizedValue& operator-=(double aOther);

  /// Multiplies. A unit without dimensions gives way to the other value's; the number is then multiplied with the
  /// conversion factor of the unit that is dropped. Otherwise the result comes in the unit of the global dictionary,
  /// else of the dictionary that this value was made with, that has the dimensions of the product and the factor
  /// nearest to the product's from above (the largest one if all are below); else in a new unit with a joined name.
  /// Raises XIllegalArithmetic if this value is on a temperature scale and neither is without dimensions.
  UnitizedValue& operator*=(const UnitizedValue& aOther);
  UnitizedValue& operator*=(double aOther);

  /// Divides; what is said of the unit of a product holds. A divisor without dimensions leaves the unit, and its
  /// conversion factor divides the number, too. Nothing checks for a division by zero. Raises XIllegalArithmetic if
  /// this value is on a temperature scale and the divisor isn't without dimensions.
  UnitizedValue& operator/=(const UnitizedValue& aOther);
  UnitizedValue& operator/=(double aOther);

  /// Changes the sign.
  UnitizedValue& Negate();

  /// The text that the stream insertion gives, such as "52.3 C"; the other two convert a copy first, as ConvertTo
  /// does, and raise what that raises. Where that returns, it is the text of the value as it is.
  std::string ToString() const;
  std::string ToString(const std::string& aUnitName) const;
  std::string ToString(const std::string& aUnitName, const UnitDictionary& aDictionary) const;

 private:
  friend OXACORE_API UnitizedValue operator*(const UnitizedValue& left, const UnitizedValue& right);
  friend OXACORE_API UnitizedValue operator/(const UnitizedValue& left, const UnitizedValue& right);

  UnitizedValue(double aValue, boost::shared_ptr<UnitDescriptor>&& aUnits, const UnitDictionary* aDictionary);

  template <class Operation>
  static UnitizedValue Combine(const UnitizedValue& left, const UnitizedValue& right);

  void ConvertToFound(const UnitDescriptor* found);

  double value;
  boost::shared_ptr<UnitDescriptor> units;
  const UnitDictionary* dictionary;
};

// Comparisons convert the right value to the unit of the left one and compare exactly: two values may differ in
// the last bit only. They raise XNoUnitConversion for different dimensions.
OXACORE_API bool operator==(const UnitizedValue<double>& left, const UnitizedValue<double>& right);
OXACORE_API bool operator!=(const UnitizedValue<double>& left, const UnitizedValue<double>& right);
OXACORE_API bool operator<(const UnitizedValue<double>& left, const UnitizedValue<double>& right);
OXACORE_API bool operator<=(const UnitizedValue<double>& left, const UnitizedValue<double>& right);
OXACORE_API bool operator>(const UnitizedValue<double>& left, const UnitizedValue<double>& right);
OXACORE_API bool operator>=(const UnitizedValue<double>& left, const UnitizedValue<double>& right);

// A copy of the left operand with the compound form applied; a plain number is a value without a unit. The result
// refers to the left operand's dictionary.
OXACORE_API UnitizedValue<double> operator+(const UnitizedValue<double>& left,
                                            const UnitizedValue<double>& right);
OXACORE_API UnitizedValue<double> operator-(const UnitizedValue<double>& left,
                                            const UnitizedValue<double>& right);
OXACORE_API UnitizedValue<double> operator*(const UnitizedValue<double>& left,
                                            const UnitizedValue<double>& right);
OXACORE_API UnitizedValue<double> operator/(const UnitizedValue<double>& left,
                                            const UnitizedValue<double>& right);
OXACORE_API UnitizedValue<double> operator+(const UnitizedValue<double>& left, double right);
OXACORE_API UnitizedValue<double> operator-(const UnitizedValue<double>& left, double right);
OXACORE_API UnitizedValue<double> operator*(const UnitizedValue<double>& left, double right);
OXACORE_API UnitizedValue<double> operator/(const UnitizedValue<double>& left, double right);
OXACORE_API UnitizedValue<double> operator+(double left, const UnitizedValue<double>& right);
OXACORE_API UnitizedValue<double> operator-(double left, const UnitizedValue<double>& right);
OXACORE_API UnitizedValue<double> operator*(double left, const UnitizedValue<double>& right);
OXACORE_API UnitizedValue<double> operator/(double left, const UnitizedValue<double>& right);

/// Writes the number as the stream is set up to, and behind a blank the abbreviation of the unit, if it has one. A
/// width counts for the whole text, and is 0 afterwards.
OXACORE_API std::ostream& operator<<(std::ostream& os, const UnitizedValue<double>& aValue);

// Numbers without a unit. They can be read as long as the library is in memory.
OXACORE_API extern const UnitizedValue<double>& uv1;
OXACORE_API extern const UnitizedValue<double>& uv2;
OXACORE_API extern const UnitizedValue<double>& uvE;  ///< the base of natural logarithms
OXACORE_API extern const UnitizedValue<double>& uvPI;
OXACORE_API extern const UnitizedValue<double>& uv2_PI;        ///< twice pi
OXACORE_API extern const UnitizedValue<double>& uvSQRT_2;      ///< the square root of 2
OXACORE_API extern const UnitizedValue<double>& uvSQRT_2_PI;   ///< the square root of twice pi
OXACORE_API extern const UnitizedValue<double>& uvNEGATIVE_1;  ///< this and the rest: the same, negative
OXACORE_API extern const UnitizedValue<double>& uvNEGATIVE_2;
OXACORE_API extern const UnitizedValue<double>& uvNEGATIVE_E;
OXACORE_API extern const UnitizedValue<double>& uvNEGATIVE_PI;
OXACORE_API extern const UnitizedValue<double>& uvNEGATIVE_2_PI;
OXACORE_API extern const UnitizedValue<double>& uvNEGATIVE_SQRT_2;
OXACORE_API extern const UnitizedValue<double>& uvNEGATIVE_SQRT_2_PI;

}  // namespace Oxa::Core

#endif
