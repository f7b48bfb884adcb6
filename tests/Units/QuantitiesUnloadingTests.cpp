// While the library unloads, a raise only tells and returns: what is left of a value with a unit then.
#include <Infrastructure/OxaCore/Time.h>
#include <Infrastructure/OxaCore/UnitizedValue.h>
#include <gtest/gtest.h>

#include <cmath>

#include "Core/LibraryState.h"
#include "Support/Allocations.h"
#include "Units/Quantities.h"

namespace {

using namespace Oxa::Core;
using namespace UnitTests;

class QuantitiesUnloading : public testing::Test {
 protected:
  void SetUp() override { SetLibraryUnloading(); }
};

TEST_F(QuantitiesUnloading, ValueOfAnUnknownOrAmbiguousUnitHasNone) {
  const UnitDictionary units(false);
  ExpectValue(3.0, "", Value(3, "Furlong"));
  ExpectValue(3.0, "", Value(3, "m"));
  ExpectValue(3.0, "", Value(3, "Furlong", units));
}

// Not the one that a dictionary further down the row has by that name.
TEST_F(QuantitiesUnloading, AmbiguousNameIsNotLookedUpAnyFurther) {
  const UnitDictionary ambiguous = AmbiguousKilometer();
  ExpectValue(3.0, "", Value(3, "km", ambiguous));
  Value value(3, "Meter");
  value.ConvertTo("km", ambiguous);
  ExpectValue(3.0, "Meter", value);
  EXPECT_EQ("3 m", value.ToString("km", ambiguous));
  const UnitDictionary base(false);
  Value own(3, "Kilometer", base);
  own.ConvertTo("m");  // Meter and Minute in the global one
  ExpectValue(3.0, "Kilometer", own);
  EXPECT_TRUE(std::isnan(own.Get("m")));
}

TEST_F(QuantitiesUnloading, RefusedConversionLeavesTheValue) {
  Value value(3, "Meter");
  const SharedUnit unit = value.GetUnits();
  const UnitDictionary units(false);
  value.ConvertTo("Furlong");
  value.ConvertTo("Second");
  value.ConvertTo("Second", units);
  value.ConvertTo(SharedUnit());
  value.ConvertTo(Unit("Second"));
  value += Value(1, "Second");
  value -= 1;
  EXPECT_EQ(3.0, value.GetValue());
  EXPECT_EQ(unit, value.GetUnits());
  EXPECT_EQ("3 m", value.ToString("Second"));
  EXPECT_TRUE(std::isnan(value.Get("Second")));
  EXPECT_TRUE(std::isnan(value.Get("Furlong")));
  EXPECT_EQ(0, ToElapse(value).GetRawTimerTicks());
}

TEST_F(QuantitiesUnloading, RefusedArithmeticLeavesTheValue) {
  Value value(20, "Celsius");
  const SharedUnit unit = value.GetUnits();
  value *= Value(2, "Meter");
  value /= Value(2, "Meter");
  EXPECT_EQ(20.0, value.GetValue());
  EXPECT_EQ(unit, value.GetUnits());
  ExpectValue(20.0, "Celsius", value * value);
}

TEST_F(QuantitiesUnloading, WhatCannotBeComparedDiffers) {
  const Value meter(1, "Meter");
  const Value second(1, "Second");
  EXPECT_TRUE(meter != second);
  EXPECT_FALSE(meter == second || meter < second || meter <= second || meter > second || meter >= second);
}

TEST_F(QuantitiesUnloading, WithoutMemoryAPlainNumberStillHasADescriptor) {
  const TestSupport::FailAllocation fail(1);
  const Value value(3);
  EXPECT_EQ(uv1.GetUnits(), value.GetUnits());
  EXPECT_EQ(3.0, value.GetValue());
}

TEST_F(QuantitiesUnloading, WithoutAGlobalDictionaryEveryNameIsUnknown) {
  const boost::shared_ptr<UnitDictionary> before = Value::sm_spGlobalDictionary;
  const Value length(2, "Meter");
  Value::sm_spGlobalDictionary.reset();
  ExpectValue(3.0, "", Value(3, "Meter"));
  ExpectValue(4.0, "Meter * Meter", length * length);
  Value::sm_spGlobalDictionary = before;
  ExpectValue(4.0, "Square Meter", length * length);
}

}  // namespace
