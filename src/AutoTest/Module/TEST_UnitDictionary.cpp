#include "AutoTest/Module/TEST_UnitDictionary.h"

#include <Infrastructure/OxaCore/UnitDictionary.h>

#include <boost/make_shared.hpp>

#include "AutoTest/Module/RaisedMessage.h"
#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

namespace {

using SharedUnit = boost::shared_ptr<UnitDescriptor>;

constexpr char sMY_UNIT[] = "My Unit";
constexpr char sAMBIGUOUS[] =
    "Found multiple units with alternate name of \"m\"\nNo UnitDescriptor provided to differentiate them.";

const char* const aBASE_UNITS[] = {"",           "Unitless", "Radian", "Meter", "Kilogram", "Second",
                                   "Second (2)", "Ampere",   "Kelvin", "Mole",  "Candela"};
const char* const aDEFAULT_UNITS[] = {"Degree", "Kilometer", "Gram", "Minute", "Liter",
                                      "Hertz",  "Volt",      "mV",   "nV"};

void CheckUnits(const UnitDictionary& units, bool withDefaults) {
  for (const char* const name : aBASE_UNITS) OXA_TEST_ASSERT_MSG(units.IsUnitDefined(name), name);
  for (const char* const name : aDEFAULT_UNITS)
    OXA_TEST_ASSERT_MSG(units.IsUnitDefined(name) == withDefaults, name);
}

bool HasMyUnit(const UnitDictionary& units, const UnitDescriptor& mine) {
  const bool byName = units.IsUnitDefined(sMY_UNIT);
  OXA_TEST_ASSERT(units.IsUnitDefined(mine) == byName);
  const SharedUnit found = units.LookupUnit(sMY_UNIT);
  OXA_TEST_ASSERT((found != nullptr) == byName);
  OXA_TEST_ASSERT(!found || *found == mine);
  return byName;
}

void CheckAddingAndRemoving(UnitDictionary& units) {
  const SharedUnit mine = boost::make_shared<UnitDescriptor>(sMY_UNIT, "mu", 3.5, *units.LookupUnit("Meter"));
  OXA_TEST_ASSERT(!HasMyUnit(units, *mine));
  OXA_TEST_ASSERT(!units.AddUnit(SharedUnit()));
  OXA_TEST_ASSERT(units.AddUnit(mine) && HasMyUnit(units, *mine));
  OXA_TEST_ASSERT(!units.AddUnit(mine));
  units.RemoveUnit(*mine);
  OXA_TEST_ASSERT(!HasMyUnit(units, *mine));
  OXA_TEST_ASSERT(units.AddUnit(mine, "s", {"Mine"}) && HasMyUnit(units, *mine));
  for (const char* const name : {"mu", "my unit", "my units", "My Units", "Mine"})
    OXA_TEST_ASSERT_MSG(units.LookupUnit(name) && *units.LookupUnit(name) == *mine, name);
  units.RemoveAllUnits();
  OXA_TEST_ASSERT(!HasMyUnit(units, *mine));
  CheckUnits(units, false);
}

void CheckAmbiguity(const UnitDictionary& units) {
  using Collision = UnitDictionary::XAlternateNameCollision;
  OXA_TEST_ASSERT(MessageOf<Collision>([&] { units.LookupUnit("m"); }) == sAMBIGUOUS);
  const SharedUnit second = units.LookupUnit("Second");
  OXA_TEST_ASSERT(units.LookupUnit("m", second)->GetName() == "Minute");
  OXA_TEST_ASSERT(units.LookupUnit("meter")->GetName() == "Meter");
  OXA_TEST_ASSERT(!units.LookupUnit("Meter", second));
  OXA_TEST_ASSERT(!units.LookupUnit("no such unit"));
}

// Factors are worked out as the host rounds. What is exact here is so where it rounds to the nearest.
void CheckStandardUnits(const UnitDictionary& units) {
  OXA_TEST_EQUALS_DELTA(1000.0, units.LookupUnit("Kilometer")->ConvertToBaseUnits(1.0), 1e-12 * 1000.0);
  // No "I" in it: there are languages in which its small letter is another one.
  OXA_TEST_EQUALS_DELTA(0.01, units.LookupUnit("Centimeters")->ConvertToBaseUnits(1.0), 1e-12 * 0.01);
  OXA_TEST_ASSERT(units.LookupUnit("feet")->GetName() == "Foot");
  OXA_TEST_ASSERT(units.LookupUnit("mV")->GetName() == "Millivolt");
  const double halfTurn = units.LookupUnit("Degree")->ConvertToBaseUnits(180.0);
  OXA_TEST_EQUALS_DELTA(3.14159265358979, halfTurn, 1e-4);
  const Dimensions henry = units.LookupUnit("Henry")->GetDimensions();
  OXA_TEST_ASSERT(henry[eMass] == 2);  // as its table has it
  OXA_TEST_ASSERT(units.LookupUnit("Steradian")->IsDimensionallyEquivalent(*units.LookupUnit("Radian")));
  const SharedUnit mph = units.LookupUnit("Mile per Hour");
  OXA_TEST_EQUALS_DELTA(2.236936292054402, mph->GetConversionFactor(), 1e-12);
  const SharedUnit equivalent = units.LookupDimensionallyEquivalentUnit(*mph);
  OXA_TEST_ASSERT(equivalent && equivalent->IsDimensionallyEquivalent(*mph));
  OXA_TEST_ASSERT(!units.LookupDimensionallyEquivalentUnit(*mph * *mph * *mph * *mph));
}

}  // namespace

TEST_UnitDictionary::TEST_UnitDictionary() : TestSuite("UnitDictionary Tests") {
  AddTestMethods(*this, {{"Test construction/destruction", &TEST_UnitDictionary::Construction},
                         {"Test storage and retrieval methods", &TEST_UnitDictionary::StorageAndRetrieval}});
}

void TEST_UnitDictionary::Construction(std::string&) {
  UnitDictionary bare(false);
  CheckUnits(bare, false);
  const UnitDictionary full(true);
  CheckUnits(full, true);
  CheckUnits(UnitDictionary(full), true);
  CheckUnits(UnitDictionary::StandardUnits(), true);
  OXA_TEST_ASSERT(&UnitDictionary::StandardUnits() == &UnitDictionary::StandardUnits());
  bare = full;
  CheckUnits(bare, true);
  OXA_TEST_ASSERT(!bare.IsUnitDefined("Yottameter"));
  bare.RegisterAllKnownUnits();
  OXA_TEST_ASSERT(bare.IsUnitDefined("Yottameter") && !full.IsUnitDefined("Yottameter"));
}

void TEST_UnitDictionary::StorageAndRetrieval(std::string&) {
  UnitDictionary units(true);
  CheckStandardUnits(units);
  CheckAmbiguity(units);
  CheckAddingAndRemoving(units);
}

}  // namespace Oxa::Core
