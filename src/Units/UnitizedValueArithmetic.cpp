#include <Infrastructure/OxaCore/UnitDescriptor_Temperature.h>
#include <Infrastructure/OxaCore/UnitizedValue.h>

#include <string>
#include <typeinfo>
#include <utility>

#include "Core/Immortal.h"
#include "Units/ConvertUnits.h"

namespace Oxa::Core {

namespace {

using Value = UnitizedValue<double>;
using SharedUnit = boost::shared_ptr<UnitDescriptor>;

struct Multiplication {
  static UnitDescriptor Combined(const UnitDescriptor& left, const UnitDescriptor& right) {
    return left * right;
  }
  static void Apply(Dimensions& left, const Dimensions& right) { left *= right; }
  static void Apply(Value& left, const Value& right) { left *= right; }
  static double Of(double left, double right) { return right * left; }
};

struct Division {
  static UnitDescriptor Combined(const UnitDescriptor& left, const UnitDescriptor& right) {
    return left / right;
  }
  static void Apply(Dimensions& left, const Dimensions& right) { left /= right; }
  static void Apply(Value& left, const Value& right) { left /= right; }
  static double Of(double left, double right) { return left / right; }
};

bool IsPlain(const UnitDescriptor& unit) { return typeid(unit) == typeid(UnitDescriptor); }

bool RefusesArithmetic(const UnitDescriptor& unit) {
  return !IsPlain(unit) && dynamic_cast<const UnitDescriptor_Temperature*>(&unit) != nullptr;
}

// What a combined unit is looked up by. Few are unregistered, and only those need their texts.
struct Compound {
  Dimensions m_dimensions;
  double m_dFactor;
};

template <class Operation>
Compound CompoundOf(const UnitDescriptor& left, const UnitDescriptor& right) {
  if (!IsPlain(left)) {
    const UnitDescriptor unit = Operation::Combined(left, right);
    return {unit.GetDimensions(), unit.GetConversionFactor()};
  }
  Compound compound{left.GetDimensions(),
                    Operation::Of(left.GetConversionFactor(), right.GetConversionFactor())};
  Operation::Apply(compound.m_dimensions, right.GetDimensions());
  return compound;
}

const UnitDescriptor* FindEquivalentIn(const UnitDictionary* dictionary, const Compound& compound) {
  if (dictionary == nullptr) return nullptr;
  return dictionary->FindDimensionallyEquivalentUnit(compound.m_dimensions, compound.m_dFactor);
}

const UnitDescriptor* FindEquivalent(const Compound& compound, const UnitDictionary* own) {
  const UnitDescriptor* const found =
      FindEquivalentIn(UnitizedValueBase::sm_spGlobalDictionary.get(), compound);
  return found != nullptr ? found : FindEquivalentIn(own, compound);
}

// The result's unit, to which `number` is converted; null where a raise returns.
template <class Operation>
SharedUnit ResultUnit(double& number, const UnitDescriptor& left, const UnitDescriptor& right,
                      const UnitDictionary* own) {
  const Compound compound = CompoundOf<Operation>(left, right);
  SharedUnit result;
  if (RefusesArithmetic(left)) return result;
  const UnitDescriptor* const found = FindEquivalent(compound, own);
  result = found != nullptr ? found->MakeCopy() : Operation::Combined(left, right).MakeCopy();
  if (!result) return result;
  if (result->GetDimensions() != compound.m_dimensions) {  // somebody changed a unit that a dictionary shares
    OXA_RAISE_ERROR(sUNITIZED_VALUE_LOG,
                    Value::XNoUnitConversion(Operation::Combined(left, right).GetName(), result->GetName()));
    result.reset();
  } else if (result->GetConversionFactor() != compound.m_dFactor) {
    number = result->ConvertFromBaseUnits(number / compound.m_dFactor);
  }
  return result;
}

// Whether `right` could be converted to the unit of `left`; `number` is the result.
bool InUnitsOf(const Value& left, const Value& right, double& number) {
  number = right.GetValue();
  return ConvertUnits(number, *right.GetUnits(), *left.GetUnits());
}

}  // namespace

Value& Value::operator+=(const UnitizedValue& aOther) {
  double other = 0;
  if (InUnitsOf(*this, aOther, other)) value += other;
  return *this;
}

Value& Value::operator-=(const UnitizedValue& aOther) {
  double other = 0;
  if (InUnitsOf(*this, aOther, other)) value -= other;
  return *this;
}

Value& Value::operator*=(const UnitizedValue& aOther) {
  if (units->IsUnitless()) {
    value = units->GetConversionFactor() * aOther.value * value;
    units = aOther.units;
    return *this;
  }
  if (aOther.units->IsUnitless()) {
    value = aOther.units->GetConversionFactor() * aOther.value * value;
    return *this;
  }
  double product = Multiplication::Of(value, aOther.value);
  SharedUnit result = ResultUnit<Multiplication>(product, *units, *aOther.units, dictionary);
  if (result) {
    value = product;
    units.swap(result);
  }
  return *this;
}

Value& Value::operator/=(const UnitizedValue& aOther) {
  if (aOther.units->IsUnitless()) {
    value = value / (aOther.units->GetConversionFactor() * aOther.value);
    return *this;
  }
  double quotient = Division::Of(value, aOther.value);
  SharedUnit result = ResultUnit<Division>(quotient, *units, *aOther.units, dictionary);
  if (result) {
    value = quotient;
    units.swap(result);
  }
  return *this;
}

Value& Value::operator+=(double aOther) { return *this += UnitizedValue(aOther); }
Value& Value::operator-=(double aOther) { return *this -= UnitizedValue(aOther); }
Value& Value::operator*=(double aOther) { return *this *= UnitizedValue(aOther); }
Value& Value::operator/=(double aOther) { return *this /= UnitizedValue(aOther); }

Value operator+(const Value& left, const Value& right) {
  Value result(left);
  result += right;
  return result;
}

Value operator-(const Value& left, const Value& right) {
  Value result(left);
  result -= right;
  return result;
}

Value::UnitizedValue(double aValue, SharedUnit&& aUnits, const UnitDictionary* aDictionary)
    : value(aValue), units(std::move(aUnits)), dictionary(aDictionary) {}

// Where the result has a unit of its own, the left one's count is left alone: that costs a fifth of a product.
template <class Operation>
Value Value::Combine(const UnitizedValue& left, const UnitizedValue& right) {
  if (left.units->IsUnitless() || right.units->IsUnitless()) {
    Value result(left);
    Operation::Apply(result, right);
    return result;
  }
  double number = Operation::Of(left.value, right.value);
  SharedUnit unit = ResultUnit<Operation>(number, *left.units, *right.units, left.dictionary);
  return unit ? Value(number, std::move(unit), left.dictionary) : left;
}

Value operator*(const Value& left, const Value& right) { return Value::Combine<Multiplication>(left, right); }
Value operator/(const Value& left, const Value& right) { return Value::Combine<Division>(left, right); }

Value operator+(const Value& left, double right) { return left + Value(right); }
Value operator-(const Value& left, double right) { return left - Value(right); }
Value operator*(const Value& left, double right) { return left * Value(right); }
Value operator/(const Value& left, double right) { return left / Value(right); }
Value operator+(double left, const Value& right) { return Value(left) + right; }
Value operator-(double left, const Value& right) { return Value(left) - right; }
Value operator*(double left, const Value& right) { return Value(left) * right; }
Value operator/(double left, const Value& right) { return Value(left) / right; }

bool operator==(const Value& left, const Value& right) {
  double other = 0;
  return InUnitsOf(left, right, other) && left.GetValue() == other;
}

bool operator!=(const Value& left, const Value& right) {
  double other = 0;
  return !InUnitsOf(left, right, other) || left.GetValue() != other;
}

bool operator<(const Value& left, const Value& right) {
  double other = 0;
  return InUnitsOf(left, right, other) && left.GetValue() < other;
}

bool operator<=(const Value& left, const Value& right) {
  double other = 0;
  return InUnitsOf(left, right, other) && left.GetValue() <= other;
}

bool operator>(const Value& left, const Value& right) {
  double other = 0;
  return InUnitsOf(left, right, other) && left.GetValue() > other;
}

bool operator>=(const Value& left, const Value& right) {
  double other = 0;
  return InUnitsOf(left, right, other) && left.GetValue() >= other;
}

}  // namespace Oxa::Core
