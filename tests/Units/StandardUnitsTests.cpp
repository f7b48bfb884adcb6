// The units that the library knows: who has them, what is peculiar about them, and the dictionary of the process.
#include <Infrastructure/OxaCore/UnitDictionary.h>

#include <Infrastructure/OxaCore/Memory.h>
#include <Infrastructure/OxaCore/UnitDescriptor_Temperature.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "Units/UnitDictionarySupport.h"
#include "io/Raised.h"

namespace {

using namespace UnitsTests;
using IoTests::Raised;
using Collided = UnitDictionary::XAlternateNameCollision;

// Before main() and behind it. What goes wrong behind it can only end the process.
class EarlyAndLate {
 public:
  EarlyAndLate() : m_spMeter(UnitDictionary::StandardUnits().LookupUnit("meters")) {}
  ~EarlyAndLate() {
    if (UnitDictionary::StandardUnits().FindUnit("Minute") == nullptr) std::_Exit(3);
  }

  const Unit m_spMeter;
};

const EarlyAndLate s_early;

const char* const sKNOWN_ONLY[] = {"Yottameter", "Zetameter",  "Exameter",    "Petameter", "Terameter",
                                   "Gigameter",  "Megameter",  "Hectometer",  "Decameter", "Decimeter",
                                   "Attometer",  "Zeptometer", "Yoctoometer", "Rankine",   "Lumen",
                                   "Becquerel",  "Sievert"};

/// The dimensions of a unit of the default dictionary.
Dimensions DimensionsOf(const std::string& name) {
  return UnitDictionary::StandardUnits().FindUnit(name)->GetDimensions();
}

double InBaseUnits(const std::string& name, double value) {
  return UnitDictionary::StandardUnits().FindUnit(name)->ConvertToBaseUnits(value);
}

TEST(StandardUnits, WithoutDefaultsThereAreTheBaseUnits) {
  const UnitDictionary units(false);
  for (const char* const name : {"", "Unitless", "Arb", "Meter", "Meter Approx", "Kilogram", "Second",
                                 "Second (2)", "Ampere", "Kelvin", "Mole", "Candela", "Radian"}) {
    EXPECT_TRUE(units.IsUnitDefined(name)) << name;
  }
  for (const char* const name :
       {"Degree", "Kilometer", "Gram", "Minute", "Liter", "Hertz", "Volt", "mV", "nV", "Yottameter"}) {
    EXPECT_FALSE(units.IsUnitDefined(name)) << name;
  }
}

TEST(StandardUnits, WithDefaultsThereAreMore) {
  const UnitDictionary units(true);
  for (const char* const name :
       {"",       "Unitless", "Radian", "Meter",   "Kilogram", "Second",    "Second (2)",
        "Ampere", "Kelvin",   "Mole",   "Candela", "Degree",   "Kilometer", "Gram",
        "Minute", "Liter",    "Hertz",  "Volt",    "mV",       "nV"}) {
    EXPECT_TRUE(units.IsUnitDefined(name)) << name;
  }
  EXPECT_EQ("Millivolt", Found(units, "mV"));
  EXPECT_TRUE(UnitDictionary().IsUnitDefined("Degree")) << "they are there unless one says otherwise";
}

TEST(StandardUnits, SomeUnitsAreKnownAndNoDefaults) {
  UnitDictionary units;
  for (const char* const name : sKNOWN_ONLY) EXPECT_FALSE(units.IsUnitDefined(name)) << name;
  units.RegisterAllKnownUnits();
  for (const char* const name : sKNOWN_ONLY) EXPECT_EQ(name, Found(units, name));
  EXPECT_EQ("Yottameter", Found(units, "Ym"));
  EXPECT_EQ(typeid(UnitDescriptor_Rankine), typeid(*units.LookupUnit("Rk")));
}

TEST(StandardUnits, RegisteringOnceMoreMakesTheOtherNamesAmbiguousAndNothingElse) {
  UnitDictionary units;
  const UnitDescriptor* const degree = units.FindUnit("Degree");
  EXPECT_EQ("Degree", Found(units, "\xB0"));
  units.RegisterAllKnownUnits();
  EXPECT_EQ(degree, units.FindUnit("Degree"));
  EXPECT_EQ(degree,
            units.FindDimensionallyEquivalentUnit(degree->GetDimensions(), degree->GetConversionFactor()));
  EXPECT_EQ(Collision("\xB0"), Raised<Collided>([&] { units.LookupUnit("\xB0"); }));
  EXPECT_EQ(Collision("um"), Raised<Collided>([&] { units.LookupUnit("um"); }));
  EXPECT_EQ("Degree", Found(units, "\xB0", units.LookupUnit("Radian")));
  EXPECT_EQ("Meter", Found(units, "meters")) << "the base units were registered once";
  units.RegisterDefaultUnits();
  EXPECT_EQ(Collision("um"), Raised<Collided>([&] { units.LookupUnit("um"); }));
  EXPECT_EQ("Yottameter", Found(units, "Ym")) << "no default unit, so it wasn't registered again";
}

TEST(StandardUnits, EachAreaAddsItsOwn) {
  using Register = void (OpenDictionary::*)(bool);
  const std::vector<std::pair<Register, const char*>> areas{
      {&OpenDictionary::registerAngularUnits, "Degree"},
      {&OpenDictionary::registerLengthUnits, "Inch"},
      {&OpenDictionary::registerMassUnits, "Pound"},
      {&OpenDictionary::registerTimeUnits, "Hour"},
      {&OpenDictionary::registerTemperatureUnits, "Celsius"},
      {&OpenDictionary::registerAmountUnits, "Dozen"},
      {&OpenDictionary::registerAreaUnits, "Square Meter"},
      {&OpenDictionary::registerVolumeUnits, "Liter"},
      {&OpenDictionary::registerElectroMagneticUnits, "Volt"},
      {&OpenDictionary::registerVoltUnits, "Kilovolt"},
      {&OpenDictionary::registerTheRestOfUnits, "Meter per Second"}};
  OpenDictionary units(false);
  for (std::size_t i = 0; i < areas.size(); ++i) {
    (units.*areas[i].first)(false);
    for (std::size_t j = 0; j < areas.size(); ++j)
      EXPECT_EQ(j <= i, units.IsUnitDefined(areas[j].second)) << j;
  }
  for (const char* const name : sKNOWN_ONLY) EXPECT_FALSE(units.IsUnitDefined(name)) << name;
}

TEST(StandardUnits, TheseNamesAreAmbiguous) {
  const UnitDictionary units;
  for (const char* const name : {"m", "oz.", "oz", "C", "F", "ohm", "miles per hour",
                                 "meter per second squared", "kilogram per cubic meter"}) {
    EXPECT_EQ(Collision(name), Raised<Collided>([&] { units.LookupUnit(name); }));
  }
}

TEST(StandardUnits, AnExampleTellsWhatAnAmbiguousNameMeans) {
  const UnitDictionary units;
  const auto found = [&](const char* name, const char* example) {
    return Found(units, name, units.LookupUnit(example));
  };
  EXPECT_EQ("Meter", found("m", "Foot"));
  EXPECT_EQ("Minute", found("m", "Hour"));
  for (const char* const name : {"oz.", "oz"}) {
    EXPECT_EQ("Ounce", found(name, "Gram"));
    EXPECT_EQ("Fluid Ounce", found(name, "Liter"));
  }
  EXPECT_EQ("Celsius", found("C", "Kelvin"));
  EXPECT_EQ("Coulomb", found("C", "Coulomb"));
  EXPECT_EQ("Fahrenheit", found("F", "Celsius"));
  EXPECT_EQ("Farad", found("F", "Farad"));
  EXPECT_EQ("Ohm", found("ohm", "Kilohm"));
  EXPECT_EQ("Mile per Hour", found("miles per hour", "Meter per Second"));
  EXPECT_EQ("Meter per Second Squared", found("meter per second squared", "Micrometer per Second Squared"));
  EXPECT_EQ("Kilogram per Cubic Meter", found("kilogram per cubic meter", "Kilogram per Cubic Meter"));
}

TEST(StandardUnits, ByDimensionsTheFirstOfEqualsStandsForTheOthers) {
  const UnitDictionary units;
  const std::vector<std::pair<const char*, std::vector<const char*>>> shadows{
      {"Arb", {"Arb", "Meter", "Meter Approx"}},
      {"",
       {"", "Unitless", "Milliarb", "log(Arb)", "log(Pa)", "log(Pa) Approx", "log(Ohm)", "log(nA)", "Count"}},
      {"Kelvin", {"Kelvin", "Celsius", "Fahrenheit"}},
      {"Radian", {"Radian", "Steradian"}},
      {"Second", {"Second", "Second (2)"}},
      {"Cubic Centimeter", {"Cubic Centimeter", "Milliliter"}},
      {"Siemens", {"Siemens", "Ampere per Volt"}},
      {"Newton per meter", {"Newton per meter", "Newton per Arb"}},
      {"Joule", {"Joule", "Electronvolt", "Electronvolt Approx"}},
      {"Week", {"Week", "Week (2)"}},
      {"Day", {"Day", "Day (2)"}},
      {"Hour", {"Hour", "Hour (2)"}},
      {"Minute", {"Minute", "Minute (2)"}},
      {"Nanometer", {"Nanometer", "Nanometer Approx"}},
      {"Pascal", {"Pascal", "Pascal Approx"}},
      {"Gigapascal", {"Gigapascal", "GigaPascal Approx"}},
      {"Megapascal", {"Megapascal", "MegaPascal Approx"}},
      {"Nanometers per Volt", {"Nanometers per Volt", "Nanometers Approx per Volt"}}};
  for (const auto& [first, names] : shadows)
    for (const char* const name : names) EXPECT_EQ(first, StandsFor(units, *units.FindUnit(name))) << name;
}

TEST(StandardUnits, WhatIsFoundByDimensionsIsEquivalent) {
  const UnitDictionary units;
  const Unit speed = units.LookupUnit("Mile per Hour");
  const Unit found = units.LookupDimensionallyEquivalentUnit(*speed);
  ASSERT_TRUE(found);
  EXPECT_TRUE(found->IsDimensionallyEquivalent(*speed));
  EXPECT_EQ("Mile per Hour", found->GetName());
}

TEST(StandardUnits, FactorsAreTheTablesOwn) {
  EXPECT_EQ(1000.0, InBaseUnits("Kilometer", 1.0));
  EXPECT_EQ(0.0254, InBaseUnits("Inch", 1.0));
  const double pi = std::acos(-1.0);
  EXPECT_NE(pi, InBaseUnits("Degree", 180.0));
  EXPECT_NEAR(pi, InBaseUnits("Degree", 180.0), 1e-6);
  EXPECT_EQ(2.236936292054402,
            UnitDictionary::StandardUnits().FindUnit("Mile per Hour")->GetConversionFactor());
  EXPECT_EQ(5.018451658333334e+22, InBaseUnits("Dozen", 1.0)) << "of moles";
  EXPECT_EQ(1e-27, InBaseUnits("Cubic Nanometer", 1.0));
  EXPECT_EQ(5000.0, InBaseUnits("Kilohertz", 5.0));
}

TEST(StandardUnits, PluralsAndTheirExceptions) {
  const UnitDictionary units;
  for (const char* const name : {"Inches", "inches", "in", "in."}) EXPECT_EQ("Inch", Found(units, name));
  for (const char* const name : {"Feet", "feet", "ft", "ft."}) EXPECT_EQ("Foot", Found(units, name));
  for (const char* const name : {"Foots", "foots", "Inchs", "Kelvins"})
    EXPECT_FALSE(units.IsUnitDefined(name)) << name;
  for (const char* const name : {"Milliinches", "mil", "mils"}) EXPECT_EQ("Milliinch", Found(units, name));
  EXPECT_EQ("Microinch", Found(units, "Microinches"));
  EXPECT_EQ("Mile", Found(units, "miles"));
  EXPECT_EQ("Yard", Found(units, "Yards"));
}

TEST(StandardUnits, BytesOfTheCodePage) {
  const UnitDictionary units;
  EXPECT_EQ("\xB5m", units.FindUnit("Micrometer")->GetAbbreviation());
  EXPECT_EQ(std::string("\xB5") + 'A', units.FindUnit("Microampere")->GetAbbreviation());
  EXPECT_EQ("m\xB1", units.FindUnit("Meter Approx")->GetAbbreviation());
  EXPECT_EQ("Degree", Found(units, "\xB0"));
  EXPECT_EQ("Micrometer per Second", Found(units, "\xB5m/sec"));
  EXPECT_EQ("Nanometers Approx per Volt", Found(units, "nm\xB1/V"));
}

TEST(StandardUnits, WhatIsPeculiarAboutDimensions) {
  const UnitDictionary units;
  EXPECT_TRUE(DimensionsOf("").IsUnitless());
  EXPECT_TRUE(DimensionsOf("Unitless").IsUnitless());
  EXPECT_EQ("", units.FindUnit("Unitless")->GetAbbreviation());
  for (const char* const name : {"unitless", "unitlesss", "s "})
    EXPECT_FALSE(units.IsUnitDefined(name)) << name;
  EXPECT_TRUE(DimensionsOf("Arb") == DimensionsOf("Meter"));
  EXPECT_EQ(1.0, units.FindUnit("Arb")->GetConversionFactor());
  EXPECT_TRUE(DimensionsOf("Newton per Arb") == DimensionsOf("Newton per meter"));
  EXPECT_TRUE(DimensionsOf("Radian") == Dimensions(0, 0, 0, 0, 0, 0, 0, 1));
  EXPECT_TRUE(DimensionsOf("Steradian") == DimensionsOf("Radian"));
  EXPECT_TRUE(DimensionsOf("Kilogram per Cubic Meter") == Dimensions(0, 1, -3));
  EXPECT_TRUE(DimensionsOf("Henry") == Dimensions(2, 2, -2, -2));
  EXPECT_TRUE(DimensionsOf("Electronvolt") == DimensionsOf("Joule"));
  EXPECT_EQ(1.0, units.FindUnit("Electronvolt")->GetConversionFactor());
  for (const char* const name :
       {"Milliarb", "log(Arb)", "log(Pa)", "log(Pa) Approx", "log(Ohm)", "log(nA)", "Count"}) {
    EXPECT_TRUE(DimensionsOf(name).IsUnitless()) << name;
    EXPECT_EQ(1.0, units.FindUnit(name)->GetConversionFactor()) << name;
  }
  UnitDictionary all;
  all.RegisterAllKnownUnits();
  EXPECT_TRUE(all.FindUnit("Lumen")->GetDimensions() == DimensionsOf("Candela"));
}

TEST(StandardUnits, WhatStandsBehindTheFirstStrokeDivides) {
  EXPECT_TRUE(DimensionsOf("Volt") == Dimensions(2, 1, -3, -1));
  EXPECT_TRUE(DimensionsOf("Farad") == Dimensions(-2, -1, 4, 2));
  EXPECT_TRUE(DimensionsOf("Ohm") == Dimensions(2, 1, -3, -2));
  EXPECT_TRUE(DimensionsOf("Siemens") == Dimensions(-2, -1, 3, 2));
  EXPECT_TRUE(DimensionsOf("Weber") == Dimensions(2, 1, -2, -1));
  EXPECT_TRUE(DimensionsOf("Tesla") == Dimensions(0, 1, -2, -1));
  EXPECT_TRUE(DimensionsOf("Micrometer per Second Squared") == DimensionsOf("Meter per Second Squared"));
  EXPECT_TRUE(DimensionsOf("Meter per Second Squared") == Dimensions(1, 0, -2));
  EXPECT_TRUE(DimensionsOf("Newton per meter") == Dimensions(0, 1, -2));
  EXPECT_TRUE(DimensionsOf("Hertz") == Dimensions(0, 0, -1));
}

TEST(StandardUnits, ProductsAreRenamed) {
  const UnitDictionary units;
  const UnitDescriptor* const square = units.FindUnit("m^2");
  ASSERT_NE(nullptr, square);
  EXPECT_EQ("Square Meter", square->GetName());
  EXPECT_EQ("m*m", square->GetAbbreviation());
  EXPECT_EQ(1.0, square->GetConversionFactor());
  EXPECT_EQ("Cubic Meter", Found(units, "m^3"));
  EXPECT_TRUE(DimensionsOf("Cubic Meter") == Dimensions(3));
}

TEST(StandardUnits, SpellingsStayAsTheyAre) {
  UnitDictionary units(false);
  units.RegisterAllKnownUnits();
  for (const char* const name : {"Zetameter", "Yoctoometer", "Milliinch", "Kilohm", "Megaohm"})
    EXPECT_EQ(name, Found(units, name));
  EXPECT_EQ("Megaohm", Found(units, "mOhms"));
  EXPECT_EQ("Square Kilometer", Found(units, "km^"));
  EXPECT_EQ("Nanometers per Volt squared", Found(units, "nm/V^"));
}

TEST(StandardUnits, AProcessHasOneSetOfThem) {
  const UnitDictionary& units = UnitDictionary::StandardUnits();
  EXPECT_EQ(&units, &UnitDictionary::StandardUnits());
  EXPECT_EQ("Millivolt", Found(units, "mV"));
  EXPECT_FALSE(units.IsUnitDefined("Yottameter"));
}

TEST(StandardUnits, AStaticObjectOfAHostFindsThem) {
  ASSERT_TRUE(s_early.m_spMeter);
  EXPECT_TRUE(*s_early.m_spMeter == *UnitDictionary::StandardUnits().FindUnit("Meter"));
}

TEST(StandardUnits, AnAllocatorOfGlobalsMakesADictionaryWithThem) {
  const Memory::GlobalAllocator<UnitDictionary> allocator;
  ASSERT_TRUE(allocator.GetPtr());
  EXPECT_EQ(allocator.GetPtr(), Memory::GlobalAllocator<UnitDictionary>(allocator).GetPtr());
  EXPECT_TRUE(allocator.GetPtr()->IsUnitDefined("Degree"));
  EXPECT_NE(allocator.GetPtr().get(), &UnitDictionary::StandardUnits());
}

}  // namespace
