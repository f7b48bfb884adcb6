// The dictionary of the process from its making to its end, and what is left where a raise returns.
#include <Infrastructure/OxaCore/UnitDictionary.h>

#include <Infrastructure/OxaCore/UnitDescriptor_Temperature.h>

#include <gtest/gtest.h>
#include <boost/weak_ptr.hpp>

#include <set>
#include <vector>

#include "Core/LibraryState.h"
#include "Support/Allocations.h"
#include "Support/Together.h"
#include "Units/StandardUnits.h"
#include "Units/UnitDictionarySupport.h"

namespace {

using namespace UnitsTests;

constexpr int iTHREADS = 8;

TEST(StandardUnitsLife, ThreadsThatAskFirstGetTheSameOne) {
  for (int round = 0; round < 20; ++round) {
    ReleaseStandardUnits();
    std::vector<const UnitDictionary*> got(iTHREADS);
    std::vector<std::string> found(iTHREADS);
    TestSupport::Together(iTHREADS, [&](int thread) {
      got[thread] = &UnitDictionary::StandardUnits();
      found[thread] = Found(*got[thread], "mV");
    });
    EXPECT_EQ(1U, std::set<const UnitDictionary*>(got.begin(), got.end()).size());
    EXPECT_EQ(std::vector<std::string>(iTHREADS, "Millivolt"), found);
  }
}

TEST(StandardUnitsLife, WhatIsGivenUpIsDestroyedAndMadeAnew) {
  Unit mine = NewUnit("My Unit", "mu", sLENGTH, 12);
  const boost::weak_ptr<UnitDescriptor> watched(mine);
  const_cast<UnitDictionary&>(UnitDictionary::StandardUnits()).AddUnit(mine);
  mine.reset();
  EXPECT_FALSE(watched.expired());
  ReleaseStandardUnits();
  EXPECT_TRUE(watched.expired());
  ReleaseStandardUnits();
  EXPECT_EQ("Meter", Found(UnitDictionary::StandardUnits(), "meter"));
  EXPECT_FALSE(UnitDictionary::StandardUnits().IsUnitDefined("My Unit"));
}

TEST(StandardUnitsLife, WithoutMemoryTheyAreMadeByTheNextWhoAsks) {
  for (unsigned long failing = 1; failing < 2000; failing += 97) {
    ReleaseStandardUnits();
    {
      const TestSupport::FailAllocation fail(failing);
      EXPECT_ANY_THROW(UnitDictionary::StandardUnits()) << failing;
    }
    EXPECT_EQ("Micronewton per Arb", Found(UnitDictionary::StandardUnits(), "uN/Arb"));
  }
}

// From the unloading there is no way back: these come last.
TEST(UnitDictionaryUnloading, AnAmbiguousNameFindsNothing) {
  const UnitDictionary units;
  SetLibraryUnloading();
  EXPECT_FALSE(units.LookupUnit("m"));
  EXPECT_EQ(nullptr, units.FindUnit("oz"));
  EXPECT_EQ("Ounce", Found(units, "oz", units.LookupUnit("Gram")));
}

TEST(UnitDictionaryUnloading, WithoutMemoryThereIsNoUnit) {
  OpenDictionary units(false);
  SetLibraryUnloading();
  const auto withoutMemory = [](const auto& action) {
    const TestSupport::FailAllocation fail(1);
    return action();
  };
  EXPECT_FALSE(withoutMemory([&] { return units.createBaseUnit("", "", eLength); }));
  EXPECT_FALSE(withoutMemory([&] { return units.LookupUnit("Meter"); }));
  EXPECT_FALSE(withoutMemory([&] { return units.LookupDimensionallyEquivalentUnit(UnitDescriptor()); }));
  EXPECT_FALSE(withoutMemory([] { return UnitDescriptor_Celsius().MakeCopy(); }));
  withoutMemory([&] { return units.registerTemperatureUnits(false), 0; });
  EXPECT_FALSE(units.IsUnitDefined("Celsius"));
  EXPECT_EQ("Fahrenheit", Found(units, "Fahrenheit"));
}

TEST(UnitDictionaryUnloading, UnitsThatDeriveFromOneThatIsMissingAreLeftOut) {
  SetLibraryUnloading();
  UnitDictionary units(false);
  units.RemoveUnit("Meter");
  units.RegisterAllKnownUnits();
  for (const char* const name :
       {"Kilometer", "Square Meter", "Cubic Meter", "Volt", "Kilovolt", "Lux", "Newton"}) {
    EXPECT_FALSE(units.IsUnitDefined(name)) << name;
  }
  for (const char* const name : {"Degree", "Gram", "Hour", "Rankine", "Hertz", "Coulomb", "Lumen"}) {
    EXPECT_TRUE(units.IsUnitDefined(name)) << name;
  }
}

}  // namespace
