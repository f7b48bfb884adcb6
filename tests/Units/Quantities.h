// What the tests of values with units share.
#ifndef OXACORE_TESTS_UNITS_QUANTITIES_H
#define OXACORE_TESTS_UNITS_QUANTITIES_H

#include <Infrastructure/OxaCore/UnitizedValue.h>
#include <gtest/gtest.h>

#include <boost/make_shared.hpp>
#include <string>
#include <vector>

#include "io/Raised.h"

namespace UnitTests {

using IoTests::Raised;
using Value = Oxa::Core::UnitizedValue<double>;
using SharedUnit = boost::shared_ptr<Oxa::Core::UnitDescriptor>;

inline SharedUnit Unit(const std::string& name) { return Value::sm_spGlobalDictionary->LookupUnit(name); }

inline const std::string& NameOf(const Value& value) { return value.GetUnits()->GetName(); }

inline SharedUnit Derived(const std::string& name, const std::string& abbreviation, double factor,
                          const Oxa::Core::UnitDescriptor& of) {
  return boost::make_shared<Oxa::Core::UnitDescriptor>(name, abbreviation, factor, of);
}

/// A dictionary of the base units and a few others; the compound ones no other dictionary has.
struct PrivateUnits {
  PrivateUnits() : m_units(false) {
    const SharedUnit meter = Unit("Meter");
    const SharedUnit second = Unit("Second");
    m_units.AddUnit(Derived("Second per Meter", "spm", 1.0, *second / *meter));
    m_units.AddUnit(Derived("Hour per Mile", "hpm", 1.0, *Unit("Hour") / *Unit("Mile")));
    m_units.AddUnit(Derived("Inch", "thumb", 2.0, *meter));  // not the inch of the global dictionary
    m_units.AddUnit(Derived("Percent", "%", 0.01, *Unit("Unitless")));
  }
  Oxa::Core::UnitDictionary m_units;
};

/// A dictionary in which "km", the abbreviation of two units, is ambiguous.
inline Oxa::Core::UnitDictionary AmbiguousKilometer() {
  Oxa::Core::UnitDictionary units(false);
  units.AddUnit(Derived("Long Kilometer", "km", 1100.0, *Unit("Meter")));
  units.AddUnit(Derived("Short Kilometer", "km", 900.0, *Unit("Meter")));
  return units;
}

/// Stands while another dictionary, or none, is the global one.
class WithGlobalDictionary {
 public:
  explicit WithGlobalDictionary(const boost::shared_ptr<Oxa::Core::UnitDictionary>& dictionary)
      : m_spBefore(Value::sm_spGlobalDictionary) {
    Value::sm_spGlobalDictionary = dictionary;
  }
  WithGlobalDictionary(const WithGlobalDictionary&) = delete;
  WithGlobalDictionary& operator=(const WithGlobalDictionary&) = delete;
  ~WithGlobalDictionary() { Value::sm_spGlobalDictionary = m_spBefore; }

 private:
  boost::shared_ptr<Oxa::Core::UnitDictionary> m_spBefore;
};

/// The number to the last bit, and the name of the unit.
inline void ExpectValue(double number, const std::string& name, const Value& value) {
  EXPECT_EQ(number, value.GetValue());
  EXPECT_EQ(name, NameOf(value));
}

}  // namespace UnitTests

#endif
