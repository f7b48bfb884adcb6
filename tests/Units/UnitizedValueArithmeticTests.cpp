// Calculating with values that have units.
#include <Infrastructure/OxaCore/UnitDescriptor_Temperature.h>
#include <Infrastructure/OxaCore/UnitizedValue.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "Units/Quantities.h"

namespace {

using namespace Oxa::Core;
using namespace UnitTests;

using XNoUnitConversion = Value::XNoUnitConversion;
using XIllegalArithmetic = UnitDescriptor_Temperature::XIllegalArithmetic;

constexpr double dINFINITY = std::numeric_limits<double>::infinity();
const char* const sNO_MULTIPLICATION =
    "Oxa.Core.UnitDescriptor_Temperature: Temperature unit descriptors don't support multiplication";
const char* const sNO_DIVISION =
    "Oxa.Core.UnitDescriptor_Temperature: Temperature unit descriptors don't support division";

// In a unit without dimensions whose factor isn't 1.
Value InUnitless(double number, double factor) {
  Value value(number / factor);
  value.ConvertTo(Derived("Part", "part", 1 / factor, UnitDescriptor()));
  EXPECT_EQ(factor, value.GetUnits()->GetConversionFactor());
  EXPECT_EQ(number, value.GetValue());
  return value;
}

TEST(UnitizedValueSum, ConvertsTheRightValueAndKeepsTheLeftUnit) {
  const PrivateUnits own;
  ExpectValue(1.5, "Kilometer", Value(1, "Kilometer") + Value(500, "Meter"));
  ExpectValue(0.5, "Kilometer", Value(1, "Kilometer") - Value(500, "Meter"));
  Value value(1, "Kilometer");
  const SharedUnit unit = value.GetUnits();
  EXPECT_EQ(&value, &(value += Value(500, "Meter")));
  EXPECT_EQ(&value, &(value -= Value(250, "Meter")));
  ExpectValue(1.25, "Kilometer", value);
  EXPECT_EQ(unit, value.GetUnits());
  ExpectValue(7.0, "Count", Value(5, "Count") + Value(2));
}

TEST(UnitizedValueSum, OfTemperaturesGoesThroughKelvin) {
  ExpectValue(20 + ((50 + 459.67) / 1.8 - 273.15), "Celsius", Value(20, "Celsius") + Value(50, "Fahrenheit"));
  EXPECT_NEAR(2.8, (Value(20, "Celsius") + Value(1, "Fahrenheit")).GetValue(), 0.03);
  ExpectValue(20 + 300.0, "Celsius", Value(20, "Celsius") + Value(300, "Kelvin"));
  ExpectValue(20 + (30 + 273.15), "Kelvin", Value(20, "Kelvin") + Value(30, "Celsius"));
}

TEST(UnitizedValueSum, OfDifferentDimensionsIsRefused) {
  Value value(20, "Celsius");
  const SharedUnit unit = value.GetUnits();
  const std::string refused =
      "Oxa.Core.UnitizedValue: Illegal unit conversion from \"Nanometer\" to \"Celsius\"";
  EXPECT_EQ(refused, Raised<XNoUnitConversion>([&] { value += Value(1, "Nanometer"); }));
  EXPECT_EQ(refused, Raised<XNoUnitConversion>([&] { value -= Value(1, "Nanometer"); }));
  EXPECT_EQ(refused, Raised<XNoUnitConversion>([&] { value + Value(1, "Nanometer"); }));
  EXPECT_EQ(refused, Raised<XNoUnitConversion>([&] { value - Value(1, "Nanometer"); }));
  EXPECT_EQ("Oxa.Core.UnitizedValue: Illegal unit conversion from \"\" to \"Celsius\"",
            Raised<XNoUnitConversion>([&] { value += 0; }));
  EXPECT_EQ("Oxa.Core.UnitizedValue: Illegal unit conversion from \"Celsius\" to \"\"",
            Raised<XNoUnitConversion>([&] { 0 + value; }));
  EXPECT_EQ(20.0, value.GetValue());
  EXPECT_EQ(unit, value.GetUnits());
}

TEST(UnitizedValueSum, WithItsNegativeIsZero) {
  const Value value(-3, "Count");
  EXPECT_TRUE(value + Value(value).Negate() == Value(0.0));
  const Value plain(0.1);
  EXPECT_TRUE(plain + Value(plain).Negate() == Value(0.0));
  const Value way(-3, "Meter");
  const Value sum = way + Value(way).Negate();
  ExpectValue(0.0, "Meter", sum);
  EXPECT_EQ("Oxa.Core.UnitizedValue: Illegal unit conversion from \"\" to \"Meter\"",
            Raised<XNoUnitConversion>([&] { static_cast<void>(sum == Value(0.0)); }));
}

TEST(UnitizedValueSum, NegateChangesTheSignInPlace) {
  Value value(-3, "Meter");
  EXPECT_EQ(&value, &value.Negate());
  ExpectValue(3.0, "Meter", value);
  ExpectValue(-3.0, "Meter", value.Negate());
  EXPECT_TRUE(std::signbit(Value(0.0).Negate().GetValue()));
}

TEST(UnitizedValueProduct, OfInchesComesInSquareInches) {
  const Value length(12, "Inch");
  const Value area = length * length;
  EXPECT_FALSE(area.GetUnits()->IsUnitless());
  ExpectValue(144.0, "Square Inch", area);
  EXPECT_TRUE(area.IsEqual(Value(144, "Square Inch"), 0.000001));
  EXPECT_EQ(*Unit("Square Inch"), *area.GetUnits());
}

TEST(UnitizedValueProduct, ComesInTheUnitNearestFromAbove) {
  // The square of the foot's factor is the double below that of the square foot; that of the yard lies above the
  // square yard's, so that square feet are the nearest.
  ExpectValue(6.000000000000001, "Square Foot", Value(2, "Foot") * Value(3, "Foot"));
  ExpectValue(6.0 / 1.1959900463010804 * 10.763910416709722, "Square Foot", Value(2, "yd") * Value(3, "yd"));
  ExpectValue(6.000000255605818, "Square Mile", Value(2, "Mile") * Value(3, "Mile"));
  ExpectValue(6.0, "Square Kilometer", Value(2, "Kilometer") * Value(3, "Kilometer"));
  ExpectValue(6.0, "Square Nanometer", Value(2, "Nanometer") * Value(3, "Nanometer"));
  const Value way = Value(60, "Mile per Hour") * Value(90, "Second");
  EXPECT_EQ("Foot", way.GetUnits()->GetName());
  EXPECT_NEAR(7920.0, way.GetValue(), 1e-6);
  // 0.001 a square meter: from above it is the square meter.
  ExpectValue(6000.0, "Square Meter", Value(2, "Kilometer") * Value(3, "Meter"));
}

TEST(UnitizedValueProduct, LargerThanAllComesInTheLargestUnit) {
  const Value volume = Value(1, "Angstrom") * Value(1, "Angstrom") * Value(1, "Angstrom");
  EXPECT_EQ("Cubic Angstrom", NameOf(volume));
  const Value tiny = Value(1, "Femtometer") * Value(1, "Femtometer");
  EXPECT_EQ("Square Angstrom", NameOf(tiny));
  EXPECT_NEAR(1e-10, tiny.GetValue(), 1e-24);
}

TEST(UnitizedValueProduct, DroppedUnitMultipliesByItsFactor) {
  ExpectValue(600.0, "Meter", InUnitless(3, 100) * Value(2, "Meter"));
  ExpectValue(600.0, "Meter", Value(2, "Meter") * InUnitless(3, 100));
  ExpectValue(1.5, "Meter", Value(2, "Meter") * InUnitless(3, 0.25));
  // With a temperature scale on the right nothing is refused, and on the left neither.
  ExpectValue(600.0, "Celsius", InUnitless(3, 100) * Value(2, "Celsius"));
  ExpectValue(600.0, "Celsius", Value(2, "Celsius") * InUnitless(3, 100));
}

// Multiplied in another order the last bit would be another.
TEST(UnitizedValueProduct, FactorOfADroppedUnitGoesInFirst) {
  const double product = 100.0 * 0.1 * 1.1;
  EXPECT_NE(product, 100.0 * (0.1 * 1.1));
  ExpectValue(product, "Meter", InUnitless(1.1, 100) * Value(0.1, "Meter"));
  ExpectValue(product, "Meter", Value(1.1, "Meter") * InUnitless(0.1, 100));
  const double quotient = 1.1 / (100.0 * 0.1);
  EXPECT_NE(quotient, 1.1 / 100.0 / 0.1);
  ExpectValue(quotient, "Meter", Value(1.1, "Meter") / InUnitless(0.1, 100));
}

// A unit of a host's own, whose products count double.
class Doubling : public UnitDescriptor {
 public:
  Doubling() : UnitDescriptor("Doubling", "db", 2.0, *Unit("Meter")) {}
  SharedUnit MakeCopy() const override { return boost::make_shared<Doubling>(*this); }
  UnitDescriptor operator*(const UnitDescriptor& other) const override {
    return UnitDescriptor("Doubled", "dd", 2.0, UnitDescriptor::operator*(other));
  }
};

TEST(UnitizedValueProduct, IsThatOfTheUnitsClass) {
  Value value(6, "Meter");
  value.ConvertTo(boost::make_shared<Doubling>());
  ExpectValue(3.0, "Doubling", value);
  ExpectValue(6.0, "Doubled", value * Value(2, "Kelvin"));
}

TEST(UnitizedValueProduct, FactorOfAQuotientOfLengthsCounts) {
  Value ratio(1);
  ratio.ConvertTo((*Unit("Meter") / *Unit("Inch")).MakeCopy());
  EXPECT_TRUE(ratio.GetUnits()->IsUnitless());
  ExpectValue(0.0254, "", ratio);
  ExpectValue(0.0254 * 2 * 0.0254, "Second", ratio * Value(2, "Second"));
  ExpectValue(0.0254 * 0.0254 * 2, "Second", Value(2, "Second") * ratio);
}

TEST(UnitizedValueProduct, NamedUnitsWithoutDimensionsAreDropped) {
  ExpectValue(6.0, "Meter", Value(2, "Count") * Value(3, "Meter"));
  ExpectValue(6.0, "Meter", Value(3, "Meter") * Value(2, "Milliarb"));
  ExpectValue(6.0, "Milliarb", Value(2, "Count") * Value(3, "Milliarb"));
  ExpectValue(6.0, "", Value(2, "Count") * 3.0);
  ExpectValue(6.0, "Count", 3.0 * Value(2, "Count"));
}

TEST(UnitizedValueProduct, OfDegreesAndAPlainNumberIsInDegrees) {
  ExpectValue(90.0, "Degree", Value(45, "Degree") * uv2);
  ExpectValue(90.0, "Degree", uv2 * Value(45, "Degree"));
  ExpectValue(90.0, "Degree", 2 * Value(45, "Degree"));
  EXPECT_EQ("Degree", NameOf(Value(45, "Degree") * Value(1, "Count")));
}

TEST(UnitizedValueProduct, WithoutARegisteredUnitHasAJoinedName) {
  const Value product = Value(2, "Kilometer") * Value(3, "Kelvin");
  ExpectValue(6.0, "Kilometer * Kelvin", product);
  EXPECT_EQ("km * K", product.GetUnits()->GetAbbreviation());
  EXPECT_EQ(0.001, product.GetUnits()->GetConversionFactor());
  EXPECT_EQ(Dimensions(1, 0, 0, 0, 1), product.GetUnits()->GetDimensions());
  EXPECT_EQ("6 km * K", product.ToString());
  const Value quotient = Value(6, "Kilometer") / Value(3, "Kelvin");
  ExpectValue(2.0, "Kilometer / Kelvin", quotient);
  EXPECT_EQ("km / K", quotient.GetUnits()->GetAbbreviation());
  ExpectValue(2.0, "1/Mole", 2.0 / Value(1, "Mole"));
  ExpectValue(2.0, "", Value(6, "Kelvin") / Value(3, "Kelvin"));
}

TEST(UnitizedValueProduct, IsntGivenInAUnitThatWasChangedToOtherDimensions) {
  const SharedUnit warmWay = Derived("Warm Way", "ww", 1, *Unit("Meter") * *Unit("Kelvin"));
  UnitDictionary units(false);
  units.AddUnit(warmWay);
  const Value way(2, "Meter", units);
  ExpectValue(6.0, "Warm Way", way * Value(3, "Kelvin"));
  warmWay->SetDimensions(Dimensions(1));
  EXPECT_EQ("Oxa.Core.UnitizedValue: Illegal unit conversion from \"Meter * Kelvin\" to \"Warm Way\"",
            Raised<XNoUnitConversion>([&] { way* Value(3, "Kelvin"); }));
}

TEST(UnitizedValueProduct, ComesInAUnitOfItsOwnDictionaryIfTheGlobalOneHasNone) {
  UnitDictionary units(false);
  units.AddUnit(Derived("Warm Way", "ww", 0.5, *Unit("Meter") * *Unit("Kelvin")));
  units.AddUnit(Derived("Cold Way", "cw", 4, *Unit("Meter") * *Unit("Kelvin")));
  const Value way(2, "Meter", units);
  const Value warmth(3, "Kelvin");
  ExpectValue(12.0, "Warm Way", way * warmth);
  ExpectValue(6.0, "Kelvin * Meter", warmth * way);
  units.AddUnit(Derived("Field", "fd", 1, *Unit("Meter") * *Unit("Meter")));
  ExpectValue(4.0, "Square Meter", way * way);
}

TEST(UnitizedValueProduct, OwnsItsUnit) {
  const Value area = Value(2, "Meter") * Value(3, "Meter");
  area.GetUnits()->SetName("spoiled");
  ExpectValue(6.0, "Square Meter", Value(2, "Meter") * Value(3, "Meter"));
}

TEST(UnitizedValueProduct, OfAScaleIsRefused) {
  Value value(20, "Celsius");
  const SharedUnit unit = value.GetUnits();
  EXPECT_EQ(sNO_MULTIPLICATION, Raised<XIllegalArithmetic>([&] { value *= Value(2, "Meter"); }));
  EXPECT_EQ(sNO_MULTIPLICATION, Raised<XIllegalArithmetic>([&] { value* Value(2, "Celsius"); }));
  EXPECT_EQ(sNO_DIVISION, Raised<XIllegalArithmetic>([&] { value /= Value(2, "Meter"); }));
  EXPECT_EQ(sNO_DIVISION, Raised<XIllegalArithmetic>([&] { value / value; }));
  EXPECT_EQ(20.0, value.GetValue());
  EXPECT_EQ(unit, value.GetUnits());
  ExpectValue(40.0, "Celsius", value * 2.0);
  ExpectValue(10.0, "Celsius", value / 2.0);
  ExpectValue(40.0, "Meter * Celsius", Value(2, "Meter") * value);
  ExpectValue(0.1, "Meter / Celsius", Value(2, "Meter") / value);
  ExpectValue(0.1, "1/Celsius", 2.0 / value);
}

TEST(UnitizedValueQuotient, FindsItsUnit) {
  const Value acceleration = Value(6, "Meter per Second") / Value(2, "Minute");
  EXPECT_TRUE(acceleration.IsDimensionallyEquivalent(Value(1, "Meter per Second Squared")));
  // The factor is 60, and that of the unit nearest from above 1000000.
  ExpectValue(50000.0, "Micrometer per Second Squared", acceleration);
  const Value rate = Value(1) / Value(2, "Second");
  EXPECT_EQ(Unit("Hertz")->GetDimensions(), rate.GetUnits()->GetDimensions());
  ExpectValue(0.5, "Hertz", rate);
  ExpectValue(45.0, "Mile per Hour", Value(90, "Mile") / Value(2, "Hour"));
}

TEST(UnitizedValueQuotient, OfLengthsIsAPlainNumber) {
  ExpectValue(39.37007874015748, "", Value(1, "Meter") / Value(1, "Inch"));
  ExpectValue(1 / 39.37007874015748, "", Value(1, "Inch") / Value(1, "Meter"));
  EXPECT_TRUE(Value(3, "Inch") / Value(2, "Inch") == 1.5);
}

TEST(UnitizedValueQuotient, DivisorWithoutDimensionsDividesByItsFactor) {
  ExpectValue(2.0, "Meter", Value(6, "Meter") / Value(3, "Count"));
  ExpectValue(2.0 / 300, "Meter", Value(2, "Meter") / InUnitless(3, 100));
  ExpectValue(2.0, "Count", Value(6, "Count") / 3);
  // What is divided keeps its unit's factor here, unlike in a product.
  const Value parts = InUnitless(6, 100) / 3;
  EXPECT_EQ(2.0, parts.GetValue());
  EXPECT_EQ(100.0, parts.GetUnits()->GetConversionFactor());
}

TEST(UnitizedValueQuotient, NothingChecksForZero) {
  EXPECT_EQ(dINFINITY, (Value(1, "Meter") / 0.0).GetValue());
  EXPECT_EQ(-dINFINITY, (Value(-1, "Meter") / Value(0, "Second")).GetValue());
  EXPECT_TRUE(std::isnan((Value(0, "Meter") / 0).GetValue()));
  Value value(1, "Meter");
  value /= Value(0, "Meter");
  ExpectValue(dINFINITY, "", value);
}

TEST(UnitizedValueArithmetic, WithItself) {
  Value square(3, "Meter");
  square *= square;
  ExpectValue(9.0, "Square Meter", square);
  Value plain(3);
  plain *= plain;
  ExpectValue(9.0, "", plain);
  plain /= plain;
  ExpectValue(1.0, "", plain);
  Value ratio(3, "Kilometer");
  ratio /= ratio;
  ExpectValue(1.0, "", ratio);
  Value twice(3, "Kilometer");
  twice += twice;
  ExpectValue(6.0, "Kilometer", twice);
  twice -= twice;
  ExpectValue(0.0, "Kilometer", twice);
}

TEST(UnitizedValueArithmetic, OfWhatIsNotFinite) {
  const Value infinite(dINFINITY, "Meter");
  ExpectValue(dINFINITY, "Square Meter", infinite * Value(2, "Meter"));
  EXPECT_TRUE(std::isnan((infinite - infinite).GetValue()));
  EXPECT_TRUE(std::isnan((infinite / infinite).GetValue()));
  EXPECT_EQ(0.0, (Value(1, "Meter") / infinite).GetValue());
}

TEST(UnitizedValueArithmetic, CopiesKeepTheirUnit) {
  const Value length(3, "Meter");
  Value copy(length);
  copy *= length;
  ExpectValue(3.0, "Meter", length);
  ExpectValue(9.0, "Square Meter", copy);
}

// All kinds of numbers compile, without a choice between several operators.
template <class Number>
void ExpectArithmeticWith(Number three) {
  const Value count(6, "Count");
  ExpectValue(9.0, "Count", count + three);
  ExpectValue(3.0, "Count", count - three);
  ExpectValue(18.0, "", count * three);
  ExpectValue(2.0, "Count", count / three);
  ExpectValue(9.0, "", three + count);
  ExpectValue(-3.0, "", three - count);
  ExpectValue(18.0, "Count", three * count);
  ExpectValue(0.5, "", three / count);
  Value value(6, "Meter");
  value *= three;
  ExpectValue(18.0, "Meter", value);
  value /= three;
  ExpectValue(6.0, "Meter", value);
  Value plain(6);
  plain += three;
  plain -= three;
  plain -= three;
  EXPECT_TRUE(plain == three && three == plain && !(plain != three) && !(plain < three) && three <= plain);
}

TEST(UnitizedValueArithmetic, TakesPlainNumbersOfAnyType) {
  ExpectArithmeticWith(3.0);
  ExpectArithmeticWith(3.0f);
  ExpectArithmeticWith(3);
  ExpectArithmeticWith(3U);
  ExpectArithmeticWith(static_cast<short>(3));
  ExpectArithmeticWith('\3');
  EXPECT_TRUE(Value(0) == 0);
  EXPECT_FALSE(Value(1) == false);
}

}  // namespace
