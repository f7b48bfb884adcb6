// Temperature scales: units whose conversion has an offset, so that they refuse to be multiplied and divided.
//
// The base unit Kelvin is an ordinary UnitDescriptor and none of these. All scales have the dimension of a
// temperature and a factor of 1.0, which their conversions don't use. Only the left operand decides: a plain unit
// multiplied by a scale goes by the ordinary arithmetic, as if the scale had no offset. A scale that is read from a
// binary stream has lost its offset; a dictionary gives it back by its name.
//
// Thread safety: as UnitDescriptor.h. Failures: XIllegalArithmetic, AllocationFailed.
//
//   UnitDescriptor_Celsius celsius;
//   double kelvin = celsius.ConvertToBaseUnits(36.6);
#ifndef INFRASTRUCTURE_OXACORE_UNITDESCRIPTOR_TEMPERATURE_H
#define INFRASTRUCTURE_OXACORE_UNITDESCRIPTOR_TEMPERATURE_H

#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/UnitDescriptor.h>

#include <boost/shared_ptr.hpp>
#include <string>

namespace Oxa::Core {

/// What all scales share. A scale of a host derives from this and gives MakeCopy and the two conversions.
class OXACORE_API UnitDescriptor_Temperature : public UnitDescriptor {
 public:
  /// "Temperature unit descriptors don't support %1%".
  class OXACORE_API XIllegalArithmetic : public ErrorClass<XIllegalArithmetic, LogicError> {
   public:
    explicit XIllegalArithmetic(const std::string& operation);
    ~XIllegalArithmetic() override;
  };

  UnitDescriptor_Temperature(const UnitDescriptor_Temperature&) = default;
  ~UnitDescriptor_Temperature() override;

  boost::shared_ptr<UnitDescriptor> MakeCopy() const override = 0;
  double ConvertToBaseUnits(double value) const override = 0;
  double ConvertFromBaseUnits(double value) const override = 0;

  using UnitDescriptor::operator=;
  UnitDescriptor_Temperature& operator=(const UnitDescriptor_Temperature&) = default;

  // All four raise XIllegalArithmetic ("Oxa.Core.UnitDescriptor_Temperature") with "multiplication" or "division",
  // whatever `other` is. This unit stays as it is, also where that raise returns; the result is a unit without
  // texts and dimensions then.
  UnitDescriptor& operator*=(const UnitDescriptor& other) override;
  UnitDescriptor& operator/=(const UnitDescriptor& other) override;
  UnitDescriptor operator*(const UnitDescriptor& other) const override;
  UnitDescriptor operator/(const UnitDescriptor& other) const override;

  /// Always true, for this very object as well: a conversion always goes through base units.
  bool RequiresConversion(const UnitDescriptor& other) const override;

 protected:
  /// A scale with the factor 1 and the dimension of temperature.
  UnitDescriptor_Temperature(const std::string& aName, const std::string& aAbbreviation);
};

/// "Celsius", "C".
class OXACORE_API UnitDescriptor_Celsius : public UnitDescriptor_Temperature {
 public:
  UnitDescriptor_Celsius();
  UnitDescriptor_Celsius(const UnitDescriptor_Celsius&) = default;
  ~UnitDescriptor_Celsius() override;

  /// Raises AllocationFailed ("UnitDescriptor_Celsius", "Oxa.Core.UnitDescriptor_Celsius"); null where that returns.
  boost::shared_ptr<UnitDescriptor> MakeCopy() const override;
  double ConvertToBaseUnits(double value) const override;    ///< value + 273.15
  double ConvertFromBaseUnits(double value) const override;  ///< value - 273.15

  using UnitDescriptor_Temperature::operator=;
  UnitDescriptor_Celsius& operator=(const UnitDescriptor_Celsius&) = default;
};

/// "Fahrenheit", "F".
class OXACORE_API UnitDescriptor_Fahrenheit : public UnitDescriptor_Temperature {
 public:
  UnitDescriptor_Fahrenheit();
  UnitDescriptor_Fahrenheit(const UnitDescriptor_Fahrenheit&) = default;
  ~UnitDescriptor_Fahrenheit() override;

  /// Raises AllocationFailed ("UnitDescriptor_Fahrenheit", "Oxa.Core.UnitDescriptor_Fahrenheit"); null where that
  /// returns.
  boost::shared_ptr<UnitDescriptor> MakeCopy() const override;
  double ConvertToBaseUnits(double value) const override;    ///< (value + 459.67) / 1.8
  double ConvertFromBaseUnits(double value) const override;  ///< value * 1.8 - 459.67

  using UnitDescriptor_Temperature::operator=;
  UnitDescriptor_Fahrenheit& operator=(const UnitDescriptor_Fahrenheit&) = default;
};

/// "Rankine", "Rk".
class OXACORE_API UnitDescriptor_Rankine : public UnitDescriptor_Temperature {
 public:
  UnitDescriptor_Rankine();
  UnitDescriptor_Rankine(const UnitDescriptor_Rankine&) = default;
  ~UnitDescriptor_Rankine() override;

  /// Raises AllocationFailed ("UnitDescriptor_Rankine", "Oxa.Core.UnitDescriptor_Rankine"); null where that returns.
  boost::shared_ptr<UnitDescriptor> MakeCopy() const override;
  double ConvertToBaseUnits(double value) const override;    ///< value / 1.8
  double ConvertFromBaseUnits(double value) const override;  ///< value * 1.8

  using UnitDescriptor_Temperature::operator=;
  UnitDescriptor_Rankine& operator=(const UnitDescriptor_Rankine&) = default;
};

}  // namespace Oxa::Core

#endif
