// Making values with units, converting and comparing them.
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/UnitDescriptor_Temperature.h>
#include <Infrastructure/OxaCore/UnitizedValue.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <type_traits>
#include <utility>

#include "Support/Allocations.h"
#include "Units/Quantities.h"

namespace {

using namespace Oxa::Core;
using namespace UnitTests;

using XNoUnitConversion = Value::XNoUnitConversion;
using XUnitNotFound = Value::XUnitNotFound;
using XCollision = UnitDictionary::XAlternateNameCollision;

constexpr double dINFINITY = std::numeric_limits<double>::infinity();
const double dNAN = std::numeric_limits<double>::quiet_NaN();

std::string NotFound(const std::string& name) {
  return "Oxa.Core.UnitizedValue: " + name + " unit not found in the unit dictionary";
}

std::string NoConversion(const std::string& from, const std::string& to) {
  return "Oxa.Core.UnitizedValue: Illegal unit conversion from \"" + from + "\" to \"" + to + "\"";
}

std::string Collision(const std::string& name) {
  return "Oxa.Core.UnitDictionary: Found multiple units with alternate name of \"" + name +
         "\"\nNo UnitDescriptor provided to differentiate them.";
}

TEST(UnitizedValue, DefaultIsZeroWithoutAUnit) {
  const Value value;
  EXPECT_EQ(0.0, value.GetValue());
  EXPECT_TRUE(*value.GetUnits() == UnitDescriptor());
  EXPECT_TRUE(value.GetUnits()->IsUnitless());
  EXPECT_EQ(1.0, value.GetUnits()->GetConversionFactor());
}

TEST(UnitizedValue, PlainNumbersHaveADescriptorEach) {
  const Value one = 3.5;
  const Value two = 3;
  EXPECT_EQ(3.5, one.GetValue());
  EXPECT_EQ(3.0, two.GetValue());
  EXPECT_NE(one.GetUnits(), two.GetUnits());
}

TEST(UnitizedValue, IsFoundByNameAbbreviationAndOtherNames) {
  ExpectValue(3.0, "Meter", Value(3, "Meter"));
  ExpectValue(-2.5, "Kilometer", Value(-2.5, "km"));
  ExpectValue(6.0, "Foot", Value(6, "Feet"));
  ExpectValue(6.0, "Micrometer", Value(6, "\xB5m"));
  ExpectValue(1.0, "", Value(1, ""));
  EXPECT_EQ(*Unit("Meter"), *Value(3, "Meter").GetUnits());
}

TEST(UnitizedValue, UnitsAreCopiesOfTheDictionarys) {
  const Value value(1, "Meter");
  value.GetUnits()->SetName("spoiled");
  ExpectValue(1.0, "Meter", Value(1, "Meter"));
}

TEST(UnitizedValue, UnknownUnitIsAnError) {
  EXPECT_EQ(NotFound("Furlong"), Raised<XUnitNotFound>([] { Value(1, "Furlong"); }));
  EXPECT_EQ(NotFound("100%1%"), Raised<XUnitNotFound>([] { Value(1, "100%1%"); }));
  const UnitDictionary units(false);
  EXPECT_EQ(NotFound("Furlong"), Raised<XUnitNotFound>([&] { Value(1, "Furlong", units); }));
  try {
    const Value value(1, "Furlong");
    FAIL() << "nothing raised";
  } catch (LogicError& error) {
    EXPECT_EQ(2, error.GetSeverity());
    EXPECT_EQ("Logic", error.GetData(AlertInfo::sCATEGORY));
  }
}

TEST(UnitizedValue, ConstructorsAskTheGivenDictionaryThenTheGlobalOne) {
  const PrivateUnits own;
  EXPECT_EQ(0.5, Value(1, "Inch", own.m_units).GetUnits()->GetConversionFactor());
  ExpectValue(1.0, "Mile", Value(1, "Mile", own.m_units));
  EXPECT_EQ(NotFound("thumb"), Raised<XUnitNotFound>([] { Value(1, "thumb"); }));
}

TEST(UnitizedValue, AmbiguityInTheFirstDictionaryAskedEndsTheSearch) {
  EXPECT_EQ(Collision("m"), Raised<XCollision>([] { Value(1, "m"); }));
  const UnitDictionary base(false);
  ExpectValue(1.0, "Meter", Value(1, "m", base));
  const UnitDictionary ambiguous = AmbiguousKilometer();
  EXPECT_EQ(Collision("km"), Raised<XCollision>([&] { Value(1, "km", ambiguous); }));
}

TEST(UnitizedValue, ConvertToAsksTheGlobalDictionaryThenItsOwn) {
  const PrivateUnits own;
  Value value(4, "Meter", own.m_units);
  value.ConvertTo("Inch");
  EXPECT_EQ(4 * 39.37007874015748, value.GetValue());
  value.ConvertTo("thumb");
  EXPECT_EQ(0.5, value.GetUnits()->GetConversionFactor());
  EXPECT_EQ(NotFound("Furlong"), Raised<XUnitNotFound>([&] { value.ConvertTo("Furlong"); }));
  // "m" is clear in its own dictionary, and not in the global one.
  EXPECT_EQ(Collision("m"), Raised<XCollision>([&] { value.ConvertTo("m"); }));
  EXPECT_EQ(Collision("m"), Raised<XCollision>([&] { value.Get("m"); }));
  ExpectValue(2.0, "Inch", value);
  // "km" is clear in the global dictionary, which is asked before its own.
  const UnitDictionary ambiguous = AmbiguousKilometer();
  ExpectValue(2.0, "Kilometer", [&] {
    Value way(2000, "Meter", ambiguous);
    way.ConvertTo("km");
    return way;
  }());
}

TEST(UnitizedValue, OwnDictionaryIsAskedForWhatOthersDoNotKnowAndMayBeAmbiguous) {
  UnitDictionary own = AmbiguousKilometer();
  own.RegisterAlternateNames("Long Kilometer", {"league"});
  own.RegisterAlternateNames("Short Kilometer", {"league", "verst"});
  const UnitDictionary other(false);
  const Value value(900, "Meter", own);
  EXPECT_EQ(1.0, value.Get("verst"));
  EXPECT_EQ(Collision("league"), Raised<XCollision>([&] { value.Get("league"); }));
  Value converted(value);
  EXPECT_EQ(Collision("league"), Raised<XCollision>([&] { converted.ConvertTo("league", other); }));
  converted.ConvertTo("verst", other);
  ExpectValue(1.0, "Short Kilometer", converted);
}

TEST(UnitizedValue, ConvertToAsksTheGivenDictionaryBeforeTheOthers) {
  const PrivateUnits given;
  Value value(4, "Meter");
  value.ConvertTo("Inch", given.m_units);
  ExpectValue(2.0, "Inch", value);
  EXPECT_EQ(NotFound("thumb"), Raised<XUnitNotFound>([&] { value.Get("thumb"); })) << "kept the address";
  value.ConvertTo("m", given.m_units);
  ExpectValue(4.0, "Meter", value);
  value.ConvertTo("Mile", given.m_units);
  ExpectValue(4.0 * (1 / 1609.344), "Mile", value);
  const UnitDictionary ambiguous = AmbiguousKilometer();
  EXPECT_EQ(Collision("km"), Raised<XCollision>([&] { value.ConvertTo("km", ambiguous); }));
  // Unknown to the given one, ambiguous in the global one: the value's own is not reached.
  UnitDictionary without(false);
  without.RemoveUnit("Meter");
  Value owner(4, "Meter", given.m_units);
  EXPECT_EQ(Collision("m"), Raised<XCollision>([&] { owner.ConvertTo("m", without); }));
  ExpectValue(4.0, "Meter", owner);
}

TEST(UnitizedValue, WithoutAGlobalDictionaryOnlyTheOthersAreAsked) {
  const PrivateUnits given;
  Value value(4, "Meter", given.m_units);
  const WithGlobalDictionary none{nullptr};
  EXPECT_EQ(NotFound("Meter"), Raised<XUnitNotFound>([] { Value(1, "Meter"); }));
  EXPECT_EQ(NotFound("Mile"), Raised<XUnitNotFound>([&] { Value(1, "Mile", given.m_units); }));
  EXPECT_EQ(0.5, Value(1, "Inch", given.m_units).GetUnits()->GetConversionFactor());
  value.ConvertTo("m");
  ExpectValue(4.0, "Meter", value);
  value.ConvertTo("Inch");
  ExpectValue(2.0, "Inch", value);
  EXPECT_EQ(NotFound("Mile"), Raised<XUnitNotFound>([&] { value.ConvertTo("Mile", UnitDictionary(false)); }));
  EXPECT_EQ(2.0, Value(2).GetValue());
}

TEST(UnitizedValue, GlobalDictionaryIsTheOneThatTheHostHasPutThere) {
  UnitDictionary changed(false);
  changed.AddUnit(Derived("Inch", "in.", 3.0, *Unit("Meter")));
  changed.AddUnit(Derived("Field", "fd", 0.25, *Unit("Meter") * *Unit("Meter")));
  Value before(6, "Meter");
  {
    const WithGlobalDictionary other(boost::make_shared<UnitDictionary>(changed));
    before.ConvertTo("in.");
    ExpectValue(2.0, "Inch", before);
    ExpectValue(16.0, "Field", Value(2, "Meter") * Value(2, "Meter"));
    EXPECT_EQ(NotFound("Mile"), Raised<XUnitNotFound>([] { Value(1, "Mile"); }));
  }
  ExpectValue(2.0, "Inch", before);  // outlives the dictionary that its unit is from
  EXPECT_EQ(6.0, before.Get("Meter"));
}

TEST(UnitizedValue, DictionaryGoesAlongWithCopies) {
  const PrivateUnits own;
  const Value value(4, "Meter", own.m_units);
  Value copy(value);
  EXPECT_EQ(2.0, copy.Negate().Negate().Get("thumb"));
  Value assigned(1, "Second");
  assigned = copy;
  EXPECT_EQ(2.0, assigned.Get("thumb"));
  assigned = Value(4, "Meter");
  EXPECT_EQ(NotFound("thumb"), Raised<XUnitNotFound>([&] { assigned.Get("thumb"); }));
  EXPECT_EQ(4.0, (value + Value(4, "Meter")).Get("thumb"));
  const Value square = value * value;
  EXPECT_EQ("Second per Meter", NameOf(Value(1, "Second", own.m_units) / Value(1, "Meter")));
  EXPECT_EQ(2.0, (square / Value(4, "Meter")).Get("thumb")) << "by way of products and quotients";
  EXPECT_EQ(2.0, (value * uv1).Get("thumb"));
  EXPECT_EQ(2.0, (value / 1.0).Get("thumb"));
  EXPECT_EQ(NotFound("thumb"), Raised<XUnitNotFound>([&] { (uv1 * value).Get("thumb"); }));
  const Value other = Value(4, "Meter") + value;
  EXPECT_EQ(NotFound("thumb"), Raised<XUnitNotFound>([&] { other.Get("thumb"); }));
}

TEST(UnitizedValue, CopiesShareTheUnitAndConvertAlone) {
  const Value value(1, "Kilometer");
  Value copy(value);
  EXPECT_EQ(value.GetUnits(), copy.GetUnits());
  copy.ConvertTo("Meter");
  ExpectValue(1.0, "Kilometer", value);
  ExpectValue(1000.0, "Meter", copy);
  // What is moved from keeps its unit, since there are no moves.
  const Value rvalue(std::move(copy));  // NOLINT(performance-move-const-arg)
  ExpectValue(1000.0, "Meter", copy);   // NOLINT(bugprone-use-after-move)
  ExpectValue(1000.0, "Meter", rvalue);
}

TEST(UnitizedValue, ConvertsToADescriptorAndSharesIt) {
  Value value(1, "Kilometer");
  const SharedUnit meter = Unit("Meter");
  value.ConvertTo(meter);
  EXPECT_EQ(meter, value.GetUnits());
  EXPECT_EQ(1000.0, value.GetValue());
  value.ConvertTo(value.GetUnits());
  EXPECT_EQ(meter, value.GetUnits());
  value.ConvertTo(value.GetUnits()->GetName());  // the name goes with the unit that it is the name of
  ExpectValue(1000.0, "Meter", value);
  value = *&value;
  ExpectValue(1000.0, "Meter", value);
  value.ConvertTo(meter);
  EXPECT_EQ(1000.0, value.GetValue());
  EXPECT_EQ("Oxa.Core.UnitizedValue: NULL pointer variable named aUnits",
            Raised<NullPointer>([&] { value.ConvertTo(SharedUnit()); }));
  ExpectValue(1000.0, "Meter", value);
}

TEST(UnitizedValue, SpeedGoesToMetersPerSecondAndBack) {
  Value value(90, "Mile per Hour");
  value.ConvertTo("Meter per Second");
  ExpectValue(40.2336, "Meter per Second", value);
  EXPECT_EQ(2.236936292054402, Value(1, "Meter per Second").Get("mph"));
  value.ConvertTo("Mile per Hour");
  EXPECT_NEAR(90.0, value.GetValue(), 1e-12);
  EXPECT_TRUE(value.IsEqual(Value(90, "Mile per Hour"), 1e-12));
}

TEST(UnitizedValue, RefusedConversionLeavesTheValue) {
  Value value(7, "Meter");
  const SharedUnit before = value.GetUnits();
  EXPECT_EQ(NoConversion("Meter", "Second"), Raised<XNoUnitConversion>([&] { value.ConvertTo("Second"); }));
  EXPECT_EQ(NoConversion("Meter", "Second"), Raised<XNoUnitConversion>([&] { value.ConvertTo(Unit("s")); }));
  EXPECT_EQ(NoConversion("Meter", "Second"), Raised<XNoUnitConversion>([&] { value.Get("Seconds"); }));
  EXPECT_EQ(NoConversion("Meter", ""), Raised<XNoUnitConversion>([&] { value.ConvertTo(""); }));
  EXPECT_EQ(NotFound("x"), Raised<XUnitNotFound>([&] { value.ConvertTo("x"); }));
  EXPECT_EQ(7.0, value.GetValue());
  EXPECT_EQ(before, value.GetUnits());
}

TEST(UnitizedValue, ErrorsOfConversionsHaveSeverityTwo) {
  EXPECT_EQ(2, XNoUnitConversion("a", "b").GetSeverity());
  EXPECT_EQ(2, XUnitNotFound("a").GetSeverity());
  EXPECT_EQ("Logic", XNoUnitConversion("a", "b").GetData(AlertInfo::sCATEGORY));
}

TEST(UnitizedValue, TemperatureScalesGoThroughKelvin) {
  Value value(36.6, "Celsius");
  value.ConvertTo("Fahrenheit");
  ExpectValue((36.6 + 273.15) * 1.8 - 459.67, "Fahrenheit", value);
  EXPECT_EQ(97.88000000000005, value.GetValue());
  value.ConvertTo("Celsius");
  ExpectValue(36.60000000000008, "Celsius", value);
  EXPECT_EQ(300.0, Value(26.85, "Celsius").Get("Kelvin"));
  // A scale always goes through Kelvin, also to itself.
  EXPECT_EQ(0.1 + 273.15 - 273.15, Value(0.1, "Celsius").Get("Celsius"));
  EXPECT_NE(0.1, Value(0.1, "Celsius").Get("Celsius"));
}

TEST(UnitizedValue, KelvinIsNotConvertedToAScale) {
  Value value(300, "Kelvin");
  EXPECT_EQ(300.0, value.Get("Celsius"));
  EXPECT_EQ(300.0, value.Get("Fahrenheit"));
  value.ConvertTo("Celsius");
  ExpectValue(300.0, "Celsius", value);
  EXPECT_TRUE(Value(300, "Celsius") == Value(300, "Kelvin"));
  EXPECT_FALSE(Value(300, "Kelvin") == Value(300, "Celsius"));
  EXPECT_TRUE(Value(573.15, "Kelvin") == Value(300, "Celsius"));
}

TEST(UnitizedValue, UnitsOfPrivateDictionariesConvertIntoEachOther) {
  const PrivateUnits own;
  Value passed = Value(5, "Hour per Mile", own.m_units);
  passed.ConvertTo("Second per Meter", own.m_units);
  ExpectValue(11.18468146027201, "Second per Meter", passed);
  passed.ConvertTo("Hour per Mile");
  EXPECT_EQ("Hour per Mile", NameOf(passed));
  EXPECT_NEAR(5.0, passed.GetValue(), 1e-14);
  EXPECT_EQ(11.18468146027201, Value(5, "hpm", own.m_units).Get("spm"));
}

TEST(UnitizedValue, GetLeavesTheValue) {
  const Value value(1500, "Meter");
  EXPECT_EQ(1.5, value.Get("Kilometer"));
  EXPECT_EQ(1500.0, value.Get("Meter"));
  ExpectValue(1500.0, "Meter", value);
  EXPECT_EQ(1500.0, static_cast<double>(value));
  EXPECT_FALSE((std::is_convertible_v<Value, double>)) << "a unit is not to be lost unseen";
}

TEST(UnitizedValue, ConvertsWhatIsNotFinite) {
  EXPECT_EQ(dINFINITY, Value(dINFINITY, "Meter").Get("Kilometer"));
  EXPECT_EQ(-dINFINITY, Value(-dINFINITY, "Celsius").Get("Fahrenheit"));
  EXPECT_TRUE(std::isnan(Value(dNAN, "Meter").Get("Kilometer")));
  EXPECT_EQ(dINFINITY, Value(1e308, "Kilometer").Get("Meter"));
  EXPECT_EQ(0.0, Value(1e-323, "Meter").Get("Kilometer"));
}

TEST(UnitizedValue, IsEquivalentByDimensionsAlone) {
  const Value meter(1, "Meter");
  EXPECT_TRUE(meter.IsDimensionallyEquivalent(Value(5, "Mile")));
  EXPECT_TRUE(meter.IsDimensionallyEquivalent(Value(5, "Arb")));
  EXPECT_FALSE(meter.IsDimensionallyEquivalent(Value(1, "Second")));
  EXPECT_FALSE(meter.IsDimensionallyEquivalent(1.0));
  EXPECT_TRUE(Value(1, "Count").IsDimensionallyEquivalent(2));
  EXPECT_TRUE(Value(1, "Kelvin").IsDimensionallyEquivalent(Value(1, "Celsius")));
}

TEST(UnitizedValueComparison, OrdersTheSmallerAndTheLarger) {
  const Value test2(1, "Meter");
  for (const Value& test3 : {Value(1.5, "Meter"), Value(40, "Inch"), Value(0.002, "Kilometer")}) {
    EXPECT_FALSE(test3 == test2);
    EXPECT_TRUE(test3 != test2);
    EXPECT_FALSE(test3 < test2);
    EXPECT_TRUE(test2 < test3);
    EXPECT_TRUE(test3 > test2);
    EXPECT_FALSE(test2 > test3);
    EXPECT_FALSE(test3 <= test2);
    EXPECT_TRUE(test2 <= test3);
    EXPECT_TRUE(test3 >= test2);
    EXPECT_FALSE(test2 >= test3);
  }
}

TEST(UnitizedValueComparison, ValueIsEqualToItself) {
  const Value value(0.1, "Inch");
  EXPECT_TRUE(value == value);
  EXPECT_FALSE(value != value);
  EXPECT_FALSE(value < value);
  EXPECT_FALSE(value > value);
  EXPECT_TRUE(value <= value);
  EXPECT_TRUE(value >= value);
}

TEST(UnitizedValueComparison, IsExactAfterConversionToTheLeftUnit) {
  EXPECT_TRUE(Value(1, "Inch") == Value(0.0254, "Meter"));
  EXPECT_TRUE(Value(0.0254, "Meter") == Value(1, "Inch"));
  // 3 Inch are 0.0762 Meter, and 0.0762 Meter are the double behind 3 Inch.
  EXPECT_TRUE(Value(0.0762, "Meter") == Value(3, "Inch"));
  EXPECT_FALSE(Value(0.0762, "Meter") != Value(3, "Inch"));
  EXPECT_FALSE(Value(3, "Inch") == Value(0.0762, "Meter"));
  EXPECT_TRUE(Value(3, "Inch") != Value(0.0762, "Meter"));
  EXPECT_TRUE(Value(3, "Inch") < Value(0.0762, "Meter"));
  EXPECT_TRUE(Value(std::nextafter(3, 4), "Inch") == Value(0.0762, "Meter"));
}

TEST(UnitizedValueComparison, OfDifferentDimensionsRaises) {
  const Value meter(1, "Meter");
  const Value second(1, "Second");
  const std::string refused = NoConversion("Second", "Meter");
  EXPECT_EQ(refused, Raised<XNoUnitConversion>([&] { static_cast<void>(meter == second); }));
  EXPECT_EQ(refused, Raised<XNoUnitConversion>([&] { static_cast<void>(meter != second); }));
  EXPECT_EQ(refused, Raised<XNoUnitConversion>([&] { static_cast<void>(meter < second); }));
  EXPECT_EQ(refused, Raised<XNoUnitConversion>([&] { static_cast<void>(meter <= second); }));
  EXPECT_EQ(refused, Raised<XNoUnitConversion>([&] { static_cast<void>(meter > second); }));
  EXPECT_EQ(refused, Raised<XNoUnitConversion>([&] { static_cast<void>(meter >= second); }));
  EXPECT_EQ(NoConversion("", "Meter"), Raised<XNoUnitConversion>([&] { static_cast<void>(meter == 1.0); }));
  EXPECT_EQ(NoConversion("Meter", ""), Raised<XNoUnitConversion>([&] { static_cast<void>(1.0 == meter); }));
}

TEST(UnitizedValueComparison, PlainNumbersCompareWithWhatHasNoDimensions) {
  const Value count(3, "Count");
  EXPECT_TRUE(count == 3.0);
  EXPECT_TRUE(3 == count);
  EXPECT_TRUE(count != 0);
  EXPECT_TRUE(0 < count);
  EXPECT_TRUE(count > 2.5f);
  EXPECT_TRUE(count <= 3L);
  EXPECT_TRUE(4u >= count);
}

TEST(UnitizedValueComparison, OfWhatIsNotANumber) {
  const Value nan(dNAN, "Meter");
  EXPECT_FALSE(nan == nan);
  EXPECT_TRUE(nan != nan);
  EXPECT_FALSE(nan < nan || nan > nan || nan <= nan || nan >= nan);
  EXPECT_TRUE(Value(dINFINITY, "Meter") == Value(dINFINITY, "Inch"));
  EXPECT_TRUE(Value(-dINFINITY, "Meter") < Value(1, "Inch"));
}

TEST(UnitizedValueComparison, IsEqualIncludesBothLimits) {
  const Value kilometer(1, "Kilometer");
  EXPECT_TRUE(kilometer.IsEqual(Value(1500, "Meter"), 0.5));
  EXPECT_TRUE(kilometer.IsEqual(Value(500, "Meter"), 0.5));
  EXPECT_FALSE(kilometer.IsEqual(Value(1500, "Meter"), 0.499999999999999));
  EXPECT_FALSE(kilometer.IsEqual(Value(500, "Meter"), 0.499999999999999));
  EXPECT_FALSE(Value(1000, "Meter").IsEqual(Value(1.5, "Kilometer"), 0.5)) << "the tolerance is this one's";
  EXPECT_TRUE(Value(1000, "Meter").IsEqual(Value(1.5, "Kilometer"), 500));
  EXPECT_TRUE(kilometer.IsEqual(Value(1000, "Meter"), 0));
  EXPECT_FALSE(kilometer.IsEqual(kilometer, -0.1));
}

TEST(UnitizedValueComparison, IsEqualDoesNotRaiseForOtherDimensions) {
  EXPECT_EQ("nothing raised", Raised<XNoUnitConversion>([] {
              EXPECT_FALSE(Value(1, "Meter").IsEqual(Value(1, "Second"), dINFINITY));
              EXPECT_FALSE(Value(1, "Meter").IsEqual(1, dINFINITY));
            }));
}

TEST(UnitizedValueComparison, IsEqualOfWhatIsNotFinite) {
  const Value infinite(dINFINITY, "Meter");
  EXPECT_TRUE(infinite.IsEqual(infinite, 0));
  EXPECT_FALSE(infinite.IsEqual(Value(1, "Meter"), 1e300));
  EXPECT_TRUE(Value(1, "Meter").IsEqual(Value(2, "Meter"), dINFINITY));
  EXPECT_FALSE(Value(dNAN, "Meter").IsEqual(Value(dNAN, "Meter"), dINFINITY));
  EXPECT_FALSE(Value(1, "Meter").IsEqual(Value(1, "Meter"), dNAN));
}

TEST(UnitizedValueWithoutMemory, ConstructorRaisesAllocationFailed) {
  EXPECT_EQ("Oxa.Core.UnitizedValue: Attempt to allocate UnitDescriptor failed", Raised<AllocationFailed>([] {
              const TestSupport::FailAllocation fail(1);
              Value(1.0);
            }));
}

TEST(UnitizedValueWithoutMemory, ConversionLeavesTheValue) {
  Value value(1, "Kilometer");
  const std::string name = "Meter";
  EXPECT_EQ("Oxa.Core.UnitDescriptor: Attempt to allocate UnitDescriptor failed",
            Raised<AllocationFailed>([&] {
              const TestSupport::FailAllocation fail(1);
              value.ConvertTo(name);
            }));
  ExpectValue(1.0, "Kilometer", value);
  EXPECT_EQ("Oxa.Core.UnitDescriptor: Attempt to allocate UnitDescriptor failed",
            Raised<AllocationFailed>([&] {
              const TestSupport::FailAllocation fail(1);
              value *= value;
            }));
  ExpectValue(1.0, "Kilometer", value);
}

TEST(UnitizedValueConstants, AreExactAndWithoutAUnit) {
  const struct {
    const Value& m_value;
    double m_dNumber;
  } constants[] = {
      {uv1, 0x1p0},
      {uv2, 0x1p1},
      {uvE, 0x1.5bf0a8b145769p+1},
      {uvPI, 0x1.921fb54442d18p+1},
      {uv2_PI, 0x1.921fb54442d18p+2},
      {uvSQRT_2, 0x1.6a09e667f3bcdp+0},
      {uvSQRT_2_PI, 0x1.40d931ff62706p+1},
      {uvNEGATIVE_1, -0x1p0},
      {uvNEGATIVE_2, -0x1p1},
      {uvNEGATIVE_E, -0x1.5bf0a8b145769p+1},
      {uvNEGATIVE_PI, -0x1.921fb54442d18p+1},
      {uvNEGATIVE_2_PI, -0x1.921fb54442d18p+2},
      {uvNEGATIVE_SQRT_2, -0x1.6a09e667f3bcdp+0},
      {uvNEGATIVE_SQRT_2_PI, -0x1.40d931ff62706p+1},
  };
  for (const auto& constant : constants) {
    EXPECT_EQ(constant.m_dNumber, constant.m_value.GetValue());
    EXPECT_TRUE(*constant.m_value.GetUnits() == UnitDescriptor());
  }
}

TEST(UnitizedValueConstants, AgreeWithTheLongArithmetic) {
  EXPECT_EQ(static_cast<double>(std::exp(1.0L)), uvE.GetValue());
  EXPECT_EQ(static_cast<double>(4 * std::atan(1.0L)), uvPI.GetValue());
  EXPECT_EQ(static_cast<double>(std::sqrt(2.0L)), uvSQRT_2.GetValue());
  EXPECT_EQ(static_cast<double>(std::sqrt(8 * std::atan(1.0L))), uvSQRT_2_PI.GetValue());
}

}  // namespace
