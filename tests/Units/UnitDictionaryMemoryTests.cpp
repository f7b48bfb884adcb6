// What a dictionary raises when memory runs out.
#include <Infrastructure/OxaCore/UnitDictionary.h>

#include <Infrastructure/OxaCore/CommonErrors.h>

#include <gtest/gtest.h>

#include <new>

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
