// What a dictionary raises when memory runs out.
#include <Infrastructure/OxaCore/UnitDictionary.h>

#include <Infrastructure/OxaCore/CommonErrors.h>

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

#include "Support/Allocations.h"
#include "Units/UnitDictionarySupport.h"
#include "io/Raised.h"

namespace {

using namespace UnitsTests;
using TestSupport::FailAllocation;

const char* const sNO_UNIT = "Oxa.Core.UnitDictionary: Attempt to allocate UnitDescriptor failed";

/// What `action` raises when its `number`th allocation fails, as one text.
template <class Action>
std::string RaisedWithout(unsigned long number, const Action& action) {
  const FailAllocation failing(number);
  try {
    return IoTests::Raised<AllocationFailed>(action);
  } catch (const std::bad_alloc&) {
    return "std::bad_alloc";
  }
}

/// Whether making the unit `name` by `add` on a dictionary that `prepare` made can fail with an error of its own.
template <class Prepare, class Add>
bool RaisesForUnit(const std::string& name, const Prepare& prepare, const Add& add) {
  for (unsigned long number = 1; number < 100; ++number) {
    OpenDictionary units(false);
    prepare(units);
    const std::string raised = RaisedWithout(number, [&] { add(units); });
    if (raised == sNO_UNIT) return !units.IsUnitDefined(name);
    EXPECT_EQ("std::bad_alloc", raised);
  }
  return false;
}

TEST(UnitDictionaryMemory, ABaseUnitCanFail) {
  OpenDictionary units(false);
  EXPECT_EQ(sNO_UNIT, RaisedWithout(1, [&] { units.createBaseUnit("Candle", "cl", eLuminousIntensity); }));
}

TEST(UnitDictionaryMemory, SquareAndCubicMeterCanFail) {
  const auto nothing = [](OpenDictionary&) {};
  EXPECT_TRUE(
      RaisesForUnit("Square Meter", nothing, [](OpenDictionary& units) { units.registerAreaUnits(false); }));
  EXPECT_TRUE(
      RaisesForUnit("Cubic Meter", nothing, [](OpenDictionary& units) { units.registerVolumeUnits(false); }));
}

TEST(UnitDictionaryMemory, ALookUpCanFailAndTheNextOneFinds) {
  const UnitDictionary units(false);
  EXPECT_EQ("Oxa.Core.UnitDescriptor: Attempt to allocate UnitDescriptor failed",
            RaisedWithout(1, [&] { units.LookupUnit("Meter"); }));
  EXPECT_EQ("Meter", Found(units, "Meter"));
}

/// Fails each allocation of `action` in turn, on a dictionary of its own, until it succeeds; `check` looks at each
/// dictionary where it failed. How often it did.
template <class Action, class Check>
int FailEach(const Action& action, const Check& check) {
  for (unsigned long number = 1;; ++number) {
    UnitDictionary units(false);
    const std::string raised = RaisedWithout(number, [&] { action(units); });
    if (raised == "nothing raised") return static_cast<int>(number) - 1;
    EXPECT_TRUE(raised == sNO_UNIT || raised == "std::bad_alloc") << raised;
    check(units);
  }
}

const Dimensions sFAR(0, 0, 0, 0, 0, 7);  // no base unit has them

TEST(UnitDictionaryMemory, AUnitIsAddedWholeOrNotAtAll) {
  const Unit mine =
      NewUnit("My unit of a name that is long", "my unit of an abbreviation that is long", sFAR, 2);
  const std::vector<std::string> names{"mine", "mine", "another name of this unit", "m"};
  const auto add = [&](UnitDictionary& units) { units.AddUnit(mine, "s", names); };
  const int failed = FailEach(add, [&](UnitDictionary& units) {
    for (const char* const name : {"mine", "another name of this unit", "my unit of a name that is longs"})
      EXPECT_FALSE(units.IsUnitDefined(name)) << name;
    EXPECT_FALSE(units.IsUnitDefined(*mine));
    EXPECT_EQ("nothing", StandsFor(units, *mine));
    EXPECT_EQ("Meter", Found(units, "m")) << "it leads to one unit, as before";
    EXPECT_TRUE(units.AddUnit(mine));
    EXPECT_EQ(mine->GetName(), Found(units, mine->GetAbbreviation())) << "it leads there once";
  });
  EXPECT_LT(10, failed);
}

TEST(UnitDictionaryMemory, NamesAreRegisteredAllOrNone) {
  const auto names = [](UnitDictionary& units) {
    units.RegisterAlternateNames("Second", {"beat", "a second as it is also called", "beat", "m"});
  };
  const int failed = FailEach(names, [&](UnitDictionary& units) {
    EXPECT_FALSE(units.IsUnitDefined("beat"));
    EXPECT_FALSE(units.IsUnitDefined("a second as it is also called"));
    EXPECT_EQ("Meter", Found(units, "m"));
  });
  EXPECT_LT(3, failed);
}

TEST(UnitDictionaryMemory, RemovingAllUnitsHappensOrDoesnt) {
  const Unit mine = NewUnit("My Unit", "mu", sFAR);
  const auto remove = [&](UnitDictionary& units) {
    units.AddUnit(mine);
    units.RemoveAllUnits();
  };
  FailEach(remove, [](UnitDictionary& units) {
    for (const char* const name : {"m", "cd", "Radian", ""}) EXPECT_TRUE(units.IsUnitDefined(name)) << name;
    EXPECT_EQ("", StandsFor(units, UnitDescriptor()));
    EXPECT_EQ(units.IsUnitDefined("mu"), StandsFor(units, *NewUnit("", "", sFAR)) == "My Unit");
  });
}

TEST(UnitDictionaryMemory, AnAssignmentHappensOrDoesnt) {
  UnitDictionary other(false);
  other.AddUnit(NewUnit("My Unit", "mu", sFAR));
  const auto assign = [&](UnitDictionary& units) { units = other; };
  const int failed = FailEach(assign, [](UnitDictionary& units) {
    EXPECT_EQ("Radian", Found(units, "rads"));
    EXPECT_EQ("Arb", StandsFor(units, *units.FindUnit("Meter")));
    EXPECT_FALSE(units.IsUnitDefined("mu"));
    EXPECT_EQ("nothing", StandsFor(units, *NewUnit("", "", sFAR)));
  });
  EXPECT_LT(50, failed);
}

TEST(UnitDictionaryMemory, NothingWorseLeavesAndTheDictionaryCanBeUsed) {
  const std::string names[] = {"Meter", "Candela", "Kilometer", "Square Meter", "Volt", "Newton per Arb"};
  UnitDictionary units(false);
  int raised = 0;
  for (unsigned long number = 1; number < 4000; number += 37) {
    const std::string text = RaisedWithout(number, [&] {
      units.RemoveAllUnits();
      units.RegisterAllKnownUnits();
    });
    EXPECT_TRUE(text == sNO_UNIT || text == "std::bad_alloc" || text == "nothing raised") << text;
    raised += text != "nothing raised";
    for (const std::string& name : names) {
      const UnitDescriptor* const unit = units.FindUnit(name);
      EXPECT_TRUE(unit == nullptr || unit->GetName() == name) << name;
    }
  }
  EXPECT_LT(20, raised);
  units.RemoveAllUnits();
  EXPECT_EQ("Meter", Found(units, "m"));
}

}  // namespace
