// What a dictionary keeps and finds, with units of the tests' own.
#include <Infrastructure/OxaCore/UnitDictionary.h>

#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/UnitDescriptor_Temperature.h>

#include <gtest/gtest.h>

#include <limits>
#include <typeinfo>

#include "Units/UnitDictionarySupport.h"
#include "io/Raised.h"

namespace {

using namespace UnitsTests;
using IoTests::Raised;
using Collided = UnitDictionary::XAlternateNameCollision;

const Dimensions sFAR(0, 0, 0, 0, 0, 7);  // no standard unit has them

TEST(UnitDictionary, AUnitIsAddedOnceAndFound) {
  UnitDictionary units;
  const Unit mine = boost::make_shared<UnitDescriptor>("My Unit", "mu");
  EXPECT_FALSE(units.IsUnitDefined("My Unit"));
  EXPECT_FALSE(units.IsUnitDefined(*mine));
  EXPECT_TRUE(units.AddUnit(mine));
  EXPECT_TRUE(units.IsUnitDefined("My Unit"));
  EXPECT_TRUE(units.IsUnitDefined(*mine));
  ASSERT_TRUE(units.LookupUnit("My Unit"));
  EXPECT_TRUE(*units.LookupUnit("My Unit") == *mine);
  EXPECT_FALSE(units.AddUnit(mine));
}

TEST(UnitDictionary, WhatWasRemovedIsUndefinedAndCanComeBack) {
  UnitDictionary units;
  const Unit mine = NewUnit("My Unit", "mu", sFAR, 3);
  units.AddUnit(mine, "s", {"another"});
  units.RemoveUnit(*mine);
  EXPECT_FALSE(units.IsUnitDefined(*mine));
  for (const char* const name : {"My Unit", "mu", "my unit", "my units", "My Units", "another"}) {
    EXPECT_FALSE(units.IsUnitDefined(name)) << name;
    EXPECT_FALSE(units.LookupUnit(name)) << name;
  }
  EXPECT_EQ("nothing", StandsFor(units, *mine));
  EXPECT_TRUE(units.AddUnit(mine));
  EXPECT_EQ("My Unit", Found(units, "mu")) << "once: the names from before were gone";
  EXPECT_EQ("My Unit", StandsFor(units, *mine));
}

TEST(UnitDictionary, RemovingByNameLeavesTheUnitToBeFoundByItsDimensions) {
  UnitDictionary units(false);
  const Unit mine = NewUnit("My Unit", "mu", sFAR);
  units.AddUnit(mine);
  units.RemoveUnit("My Unit");
  EXPECT_FALSE(units.IsUnitDefined("My Unit"));
  EXPECT_FALSE(units.IsUnitDefined("mu"));
  EXPECT_EQ("My Unit", StandsFor(units, *mine));
  EXPECT_TRUE(units.AddUnit(NewUnit("My Unit", "other", sFAR)));
  EXPECT_EQ("mu", units.LookupDimensionallyEquivalentUnit(*mine)->GetAbbreviation()) << "the older one stays";
}

TEST(UnitDictionary, RemovingByNameTakesFactorOneWithoutDimensions) {
  UnitDictionary units(false);
  units.AddUnit(boost::make_shared<UnitDescriptor>("Dozen", "dz", 12.0, UnitDescriptor()));
  EXPECT_EQ("", StandsFor(units, UnitDescriptor())) << "the unit that has no name";
  units.RemoveUnit("Meter");
  EXPECT_EQ("Dozen", StandsFor(units, UnitDescriptor())) << "the largest that is left";
  EXPECT_TRUE(units.IsUnitDefined("")) << "by its name it is still found";
  EXPECT_TRUE(units.IsUnitDefined("Unitless"));
  units.RemoveUnit("no such unit");
  EXPECT_EQ("Dozen", StandsFor(units, UnitDescriptor()));
}

TEST(UnitDictionary, RemovingTakesWhicheverUnitHasTheSameFactorAndDimensions) {
  UnitDictionary units(false);
  units.RemoveUnit(*units.LookupUnit("Second (2)"));
  EXPECT_TRUE(units.IsUnitDefined("Second"));
  EXPECT_EQ("nothing", StandsFor(units, *units.LookupUnit("Second")));
}

TEST(UnitDictionary, RemovingAFactorThatIsntThereLeavesItsNeighbours) {
  UnitDictionary units(false);
  units.AddUnit(NewUnit("One", "", sFAR, 1));
  units.AddUnit(NewUnit("Hundred", "", sFAR, 100));
  for (const double factor : {0.5, 10.0, 1000.0})
    units.RemoveUnit(*NewUnit("no such unit", "", sFAR, factor));
  EXPECT_EQ("One", StandsFor(units, *NewUnit("", "", sFAR, 1)));
  EXPECT_EQ("Hundred", StandsFor(units, *NewUnit("", "", sFAR, 2)));
}

TEST(UnitDictionary, RemovingAUnitTakesItFromNamesOfOtherUnitsToo) {
  UnitDictionary units(false);
  units.RegisterAlternateNames("Second", {"Meter", "sec"});
  units.RegisterAlternateNames("Mole", {"sec"});
  units.RemoveUnit("Second");
  units.AddUnit(NewUnit("Second", "", sTIME));
  units.RemoveUnit("Meter");
  EXPECT_EQ("nothing", Found(units, "Meter")) << "it led to Second before that was removed";
  EXPECT_EQ("Mole", Found(units, "sec"));
}

TEST(UnitDictionary, AStoredUnitAndItsOwnNameCanBeWhatIsRemoved) {
  UnitDictionary units(false);
  units.RemoveUnit(*units.FindUnit("Kilogram"));
  EXPECT_FALSE(units.IsUnitDefined("Kilogram"));
  EXPECT_FALSE(units.IsUnitDefined("kg"));
  units.RemoveUnit(units.FindUnit("Mole")->GetName());
  EXPECT_FALSE(units.IsUnitDefined("Mole"));
  EXPECT_FALSE(units.IsUnitDefined("mol"));
  units.RemoveUnit(*units.FindUnit("Second (2)"));
  EXPECT_FALSE(units.IsUnitDefined("Second (2)"));
  units.RemoveUnit("Candela");  // by its dimensions it is still found
  const Dimensions dimensions(0, 0, 0, 0, 0, 0, 1);
  units.RemoveUnit(*units.FindDimensionallyEquivalentUnit(dimensions, 1.0));
  EXPECT_EQ(nullptr, units.FindDimensionallyEquivalentUnit(dimensions, 1.0));
}

TEST(UnitDictionary, TheBaseUnitsCantBeRemovedForGood) {
  UnitDictionary units;
  units.AddUnit(NewUnit("My Unit", "mu", sFAR));
  units.RemoveUnit("Meter");
  units.RemoveAllUnits();
  EXPECT_FALSE(units.IsUnitDefined("My Unit"));
  EXPECT_FALSE(units.IsUnitDefined("mu"));
  EXPECT_EQ("nothing", StandsFor(units, *NewUnit("", "", sFAR)));
  EXPECT_FALSE(units.IsUnitDefined("Kilometer"));
  EXPECT_EQ("Meter", Found(units, "m"));
  EXPECT_EQ("", StandsFor(units, UnitDescriptor()));
}

TEST(UnitDictionary, NoUnitIsNotAdded) {
  UnitDictionary units(false);
  EXPECT_FALSE(units.AddUnit(Unit(), "s", {"nobody"}));
  EXPECT_FALSE(units.IsUnitDefined("nobody"));
}

TEST(UnitDictionary, AUnitGetsItsAbbreviationItsLowerCaseNameAndPlurals) {
  UnitDictionary units(false);
  for (const char* const name : {"Meter", "m", "meter", "meters", "Meters"})
    EXPECT_EQ("Meter", Found(units, name));
  for (const char* const name : {"M", "METER", "ms", "Meteres"})
    EXPECT_FALSE(units.IsUnitDefined(name)) << name;
  for (const char* const name : {"Kelvin", "K", "kelvin"}) EXPECT_EQ("Kelvin", Found(units, name));
  for (const char* const name : {"kelvins", "Kelvins", "k"}) EXPECT_FALSE(units.IsUnitDefined(name)) << name;
  units.AddUnit(NewUnit("Box", "bx", sFAR), "es");
  for (const char* const name : {"bx", "box", "boxes", "Boxes"}) EXPECT_EQ("Box", Found(units, name));
}

TEST(UnitDictionary, LowerCaseIsByTheByte) {
  UnitDictionary units(false);
  units.AddUnit(NewUnit("\xB5\x41\xC4\xDF Z", "x", sFAR));
  EXPECT_TRUE(units.IsUnitDefined("\xB5\x61\xC4\xDF zs")) << "bytes above 127 stay as they are";
  EXPECT_FALSE(units.IsUnitDefined("\xB5\x61\xE4\xDF zs"));
}

TEST(UnitDictionary, WithoutAbbreviationThereAreOnlyTheNamesGiven) {
  UnitDictionary units(false);
  EXPECT_TRUE(units.AddUnit(NewUnit("Lonely", "", sFAR), "s", {"alone"}));
  EXPECT_EQ("Lonely", Found(units, "alone"));
  for (const char* const name : {"lonely", "lonelys", "Lonelys"})
    EXPECT_FALSE(units.IsUnitDefined(name)) << name;
}

TEST(UnitDictionary, WithoutANameThereAreNoAlternateNames) {
  UnitDictionary units(false);
  EXPECT_FALSE(units.AddUnit(NewUnit("", "ab", sFAR), "zz", {"alone"})) << "that name is taken";
  for (const char* const name : {"ab", "zz", "alone"}) EXPECT_FALSE(units.IsUnitDefined(name)) << name;
  units.RegisterAlternateNames("", {"alone"});
  EXPECT_FALSE(units.IsUnitDefined("alone"));
  EXPECT_EQ("", StandsFor(units, *NewUnit("", "", sFAR))) << "by its dimensions it is found all the same";
}

TEST(UnitDictionary, WhereTheNameIsTakenTheOtherNamesAndTheDimensionsCount) {
  UnitDictionary units(false);
  units.AddUnit(NewUnit("Bar", "b", sFAR), "");
  EXPECT_FALSE(units.AddUnit(NewUnit("Bar", "B", sFAR, 100), "ren", {"rod"}));
  EXPECT_EQ(1.0, units.LookupUnit("Bar")->GetConversionFactor());
  for (const char* const name : {"B", "rod", "barren", "Barren"}) {
    EXPECT_EQ("b", units.LookupUnit(name)->GetAbbreviation()) << name << " leads to the older unit";
  }
  EXPECT_EQ("B", units.LookupDimensionallyEquivalentUnit(*NewUnit("", "", sFAR, 50))->GetAbbreviation());
}

TEST(UnitDictionary, AddingOnceMoreMakesTheOtherNamesAmbiguous) {
  UnitDictionary units(false);
  const Unit mine = NewUnit("Bar", "b", sFAR);
  units.AddUnit(mine);
  EXPECT_FALSE(units.AddUnit(mine));
  EXPECT_EQ(Collision("b"), Raised<Collided>([&] { units.LookupUnit("b"); }));
  EXPECT_EQ(Collision("bars"), Raised<Collided>([&] { units.LookupUnit("bars"); }));
  EXPECT_EQ("Bar", Found(units, "b", mine));
  EXPECT_EQ("Bar", Found(units, "Bar"));
  EXPECT_TRUE(units.IsUnitDefined("b")) << "that is no look-up";
}

TEST(UnitDictionary, ACollisionIsALogicErrorOfSeverityTwo) {
  try {
    UnitDictionary().LookupUnit("m");
    FAIL();
  } catch (LogicError& error) {
    EXPECT_EQ(Error::eERROR, error.GetSeverity());
    EXPECT_EQ(2, static_cast<int>(error.GetSeverity()));
    EXPECT_EQ("Logic", error.GetData(AlertInfo::sCATEGORY));
    EXPECT_EQ(typeid(Collided), typeid(*error.Clone()));
  }
}

TEST(UnitDictionary, AnExampleDecidesBetweenUnits) {
  const UnitDictionary units;
  EXPECT_EQ(Collision("m"), Raised<Collided>([&] { units.LookupUnit("m"); }));
  EXPECT_EQ("Minute", Found(units, "m", units.LookupUnit("Second")));
  EXPECT_EQ("Meter", Found(units, "m", units.LookupUnit("Inch")));
  EXPECT_EQ("nothing", Found(units, "m", units.LookupUnit("Volt")));
}

// An example of a host that agrees with one unit only.
class ForMinutes : public UnitDescriptor {
 public:
  bool IsDimensionallyEquivalent(const UnitDescriptor& other) const override {
    return other.GetName() == "Minute";
  }
};

TEST(UnitDictionary, ItIsTheExampleThatIsAsked) {
  const UnitDictionary units;
  const Unit example = boost::make_shared<ForMinutes>();
  EXPECT_EQ("Minute", Found(units, "m", example));
  EXPECT_EQ("Minute", Found(units, "Minute", example));
  EXPECT_EQ("nothing", Found(units, "Hour", example));
}

TEST(UnitDictionary, ANameThatDoesntAgreeWithTheExampleIsNotLookedForAmongOthers) {
  UnitDictionary units(false);
  EXPECT_EQ("Meter", Found(units, "meter"));
  EXPECT_EQ("nothing", Found(units, "Meter", units.LookupUnit("Second")));
  units.RegisterAlternateNames("Second", {"Meter"});
  EXPECT_EQ("nothing", Found(units, "Meter", units.LookupUnit("Second")));
  EXPECT_EQ("Meter", Found(units, "Meter", units.LookupUnit("Arb")));
  EXPECT_EQ("nothing", Found(units, "meter", units.LookupUnit("Second"))) << "the one it leads to, too";
  EXPECT_EQ("Meter", Found(units, "meter", units.LookupUnit("Arb")));
}

TEST(UnitDictionary, OfSeveralThatAgreeTheFirstRegisteredIsFound) {
  UnitDictionary units(false);
  units.RegisterAlternateNames("Gone", {"x"});
  units.AddUnit(NewUnit("Z", "z", sTIME, 2), "", {"x"});
  units.AddUnit(NewUnit("Y", "y", sFAR, 2), "", {"x"});
  units.AddUnit(NewUnit("A", "a", sFAR, 3), "", {"x"});
  EXPECT_TRUE(units.IsUnitDefined("x")) << "one that isn't there comes first";
  EXPECT_EQ("Y", Found(units, "x", NewUnit("", "", sFAR)));
  EXPECT_EQ("Z", Found(units, "x", NewUnit("", "", sTIME)));
  units.RemoveUnit("Y");
  EXPECT_EQ("A", Found(units, "x", NewUnit("", "", sFAR)));
}

TEST(UnitDictionary, NamesMayLeadToAUnitThatIsntThere) {
  UnitDictionary units(false);
  units.RegisterAlternateNames("Later", {"l"});
  EXPECT_FALSE(units.IsUnitDefined("l"));
  EXPECT_FALSE(units.LookupUnit("l"));
  units.RegisterAlternateNames("Never", {"l"});
  EXPECT_EQ(Collision("l"), Raised<Collided>([&] { units.LookupUnit("l"); }))
      << "that neither is there is no matter";
  EXPECT_EQ("nothing", Found(units, "l", NewUnit("", "", sFAR)));
  units.AddUnit(NewUnit("Later", "", sFAR));
  EXPECT_TRUE(units.IsUnitDefined("l"));
  EXPECT_EQ("Later", Found(units, "l", NewUnit("", "", sFAR)));
  EXPECT_EQ(Collision("l"), Raised<Collided>([&] { units.LookupUnit("l"); }));
}

TEST(UnitDictionary, OtherNamesDontLeadOn) {
  UnitDictionary units(false);
  units.RegisterAlternateNames("meter", {"Elle"});
  EXPECT_EQ("nothing", Found(units, "Elle")) << "\"meter\" is itself no main name";
}

TEST(UnitDictionary, NamesLeadOnToANameThatStoodForNothingMeanwhile) {
  UnitDictionary units(false);
  units.RegisterAlternateNames("b", {"x"});
  units.AddUnit(NewUnit("Bar", "b", sFAR));
  units.RemoveUnit("Bar");
  EXPECT_FALSE(units.IsUnitDefined("b"));
  // Others take the memory of what is gone.
  for (const char* const name : {"1", "2", "3", "4", "5", "6", "7", "8"})
    units.AddUnit(NewUnit(name, "", sFAR));
  EXPECT_EQ("nothing", Found(units, "x"));
  units.AddUnit(NewUnit("b", "", sFAR));
  EXPECT_EQ("b", Found(units, "x"));
  EXPECT_EQ("b", Found(UnitDictionary(units), "x"));
  units.RemoveUnit("b");
  EXPECT_FALSE(units.IsUnitDefined("x"));
}

TEST(UnitDictionary, WhatIsFoundIsACopyOfTheSameClass) {
  const UnitDictionary units;
  const Unit meter = units.LookupUnit("Meter");
  meter->SetName("changed");
  EXPECT_EQ("Meter", Found(units, "Meter"));
  EXPECT_NE(units.LookupUnit("Meter").get(), units.LookupUnit("Meter").get());
  const Unit celsius = units.LookupUnit("celsius");
  EXPECT_EQ(typeid(UnitDescriptor_Celsius), typeid(*celsius));
  EXPECT_EQ(typeid(UnitDescriptor_Fahrenheit), typeid(*units.LookupUnit("Fahrenheit")));
  const Unit kelvin = units.LookupDimensionallyEquivalentUnit(*celsius);
  EXPECT_EQ(typeid(UnitDescriptor), typeid(*kelvin));
  kelvin->SetName("changed");
  EXPECT_EQ("Kelvin", StandsFor(units, *celsius));
}

TEST(UnitDictionary, TheUnitItselfIsFoundWithoutACopy) {
  UnitDictionary units(false);
  const Unit mine = NewUnit("Bar", "b", sFAR);
  units.AddUnit(mine);
  EXPECT_EQ(mine.get(), units.FindUnit("Bar"));
  EXPECT_EQ(mine.get(), units.FindUnit("b"));
  EXPECT_EQ(mine.get(), units.FindUnit("b", mine.get()));
  EXPECT_EQ(nullptr, units.FindUnit("b", units.FindUnit("Meter")));
  EXPECT_EQ(nullptr, units.FindUnit("bear"));
  EXPECT_EQ(mine.get(), units.FindDimensionallyEquivalentUnit(sFAR, 1.0));
  EXPECT_EQ(nullptr, units.FindDimensionallyEquivalentUnit(Dimensions(9), 1.0));
  units.AddUnit(mine);
  EXPECT_EQ(Collision("b"), Raised<Collided>([&] { units.FindUnit("b"); }));
}

TEST(UnitDictionary, ByDimensionsTheSameFactorOrTheNextLargerOrElseTheLargestIsFound) {
  UnitDictionary units(false);
  EXPECT_EQ("nothing", StandsFor(units, *NewUnit("", "", sFAR)));
  units.AddUnit(NewUnit("Ten", "", sFAR, 10));
  units.AddUnit(NewUnit("One", "", sFAR, 1));
  units.AddUnit(NewUnit("Hundred", "", sFAR, 100));
  units.AddUnit(NewUnit("Ten again", "", sFAR, 10));
  EXPECT_EQ("Ten", StandsFor(units, *NewUnit("", "", sFAR, 1.5)));
  const auto found = [&](double factor) {
    return units.FindDimensionallyEquivalentUnit(sFAR, factor)->GetName();
  };
  EXPECT_EQ("One", found(0.5));
  EXPECT_EQ("One", found(1));
  EXPECT_EQ("Ten", found(1.5));
  EXPECT_EQ("Ten", found(10));
  EXPECT_EQ("Hundred", found(10.5));
  EXPECT_EQ("Hundred", found(1e9));
  EXPECT_EQ("Hundred", found(std::numeric_limits<double>::infinity()));
  EXPECT_EQ("One", found(-std::numeric_limits<double>::infinity()));
  EXPECT_EQ("One", found(std::numeric_limits<double>::quiet_NaN())) << "no factor is less than that one";
}

TEST(UnitDictionary, AFactorThatIsNoNumberStandsForNoOther) {
  const Unit bad = boost::make_shared<UnitDescriptor>("Bad", "bad", std::numeric_limits<double>::quiet_NaN(),
                                                      UnitDescriptor());
  UnitDictionary units(false);
  bad->SetDimensions(sTIME);
  EXPECT_TRUE(units.AddUnit(bad));
  EXPECT_EQ("Second", StandsFor(units, *bad));
  units.RemoveUnit(*bad);
  EXPECT_FALSE(units.IsUnitDefined("bad"));
  EXPECT_EQ("Second", StandsFor(units, *NewUnit("", "", sTIME))) << "it wasn't the one that was removed";
}

TEST(UnitDictionary, AFactorThatIsNoNumberIsRemovedByItsLike) {
  const Unit bad = boost::make_shared<UnitDescriptor>("Bad", "bad", std::numeric_limits<double>::quiet_NaN(),
                                                      UnitDescriptor());
  bad->SetDimensions(sFAR);
  UnitDictionary units(false);
  units.AddUnit(bad);
  EXPECT_EQ("Bad", StandsFor(units, *bad));
  units.RemoveUnit(*NewUnit("no such unit", "", sFAR));
  EXPECT_EQ("Bad", StandsFor(units, *bad));
  units.RemoveUnit(*bad);
  EXPECT_EQ("nothing", StandsFor(units, *bad));
}

TEST(UnitDictionary, DimensionsAreToldApartWhateverTheyAre) {
  UnitDictionary units(false);
  units.AddUnit(NewUnit("One", "", Dimensions(1, 2, -1)));
  units.AddUnit(NewUnit("Far", "", Dimensions(257, 2, -1)));
  units.AddUnit(NewUnit("Turned", "", Dimensions(-1, 2, 1)));
  EXPECT_EQ("One", StandsFor(units, *NewUnit("", "", Dimensions(1, 2, -1))));
  EXPECT_EQ("Far", StandsFor(units, *NewUnit("", "", Dimensions(257, 2, -1))));
  EXPECT_EQ("Turned", StandsFor(units, *NewUnit("", "", Dimensions(-1, 2, 1))));
  EXPECT_EQ("nothing", StandsFor(units, *NewUnit("", "", Dimensions(513, 2, -1))));
}

TEST(UnitDictionary, CopiesShareTheUnitsAndNothingElse) {
  UnitDictionary units(false);
  units.AddUnit(NewUnit("Bar", "b", sFAR));
  UnitDictionary copy(units);
  EXPECT_EQ(units.FindUnit("Bar"), copy.FindUnit("b"));
  EXPECT_EQ(units.FindUnit("Bar"), copy.FindDimensionallyEquivalentUnit(sFAR, 1.0));
  units.RemoveUnit(*units.LookupUnit("Bar"));
  EXPECT_TRUE(copy.IsUnitDefined("b"));
  EXPECT_EQ("Bar", StandsFor(copy, *NewUnit("", "", sFAR)));
  copy.AddUnit(NewUnit("Rod", "r", sFAR));
  EXPECT_FALSE(units.IsUnitDefined("Rod"));
  EXPECT_EQ("nothing", StandsFor(units, *NewUnit("", "", sFAR)));
  units = copy;
  EXPECT_EQ(units.FindUnit("Rod"), copy.FindUnit("Rod"));
  EXPECT_EQ("Bar", StandsFor(units, *NewUnit("", "", sFAR)));
  EXPECT_EQ("Bar", Found(units, "bars"));
  const UnitDictionary& same = units;
  units = same;
  EXPECT_EQ("Bar", Found(units, "bars"));
}

TEST(UnitDictionary, OnlyTheNameOfADescriptorIsLookedAt) {
  const UnitDictionary units(false);
  EXPECT_TRUE(units.IsUnitDefined(UnitDescriptor("meters", "whatever")));
  EXPECT_TRUE(units.IsUnitDefined(*NewUnit("Meter", "", sTIME, 12)));
  EXPECT_FALSE(units.IsUnitDefined(UnitDescriptor("whatever", "m")));
}

TEST(UnitDictionary, ADerivedDictionaryMakesBaseUnits) {
  OpenDictionary units(false);
  const Unit candle = units.createBaseUnit("Candle", "cl", eLuminousIntensity);
  EXPECT_EQ("Candle", candle->GetName());
  EXPECT_EQ("cl", candle->GetAbbreviation());
  EXPECT_EQ(1.0, candle->GetConversionFactor());
  EXPECT_TRUE(candle->GetDimensions() == Dimensions(0, 0, 0, 0, 0, 0, 1));
  EXPECT_FALSE(units.IsUnitDefined("Candle")) << "it isn't added";
}

TEST(UnitDictionary, AUnitThatOthersDeriveFromIsMissed) {
  UnitDictionary units(false);
  units.RemoveUnit("Meter");
  EXPECT_EQ("Oxa.Core.UnitDictionary: NULL pointer variable named Meter",
            Raised<NullPointer>([&] { units.RegisterAllKnownUnits(); }));
}

}  // namespace
