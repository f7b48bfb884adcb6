// While the library unloads, a raise only tells and returns: what the operations of units leave behind then.
#include <Infrastructure/OxaCore/UnitDescriptor.h>
#include <Infrastructure/OxaCore/UnitDescriptor_Temperature.h>

#include <gtest/gtest.h>

#include "Core/LibraryState.h"
#include "Units/UnitsSupport.h"

namespace {

using namespace UnitsTests;

class UnitsUnloading : public testing::Test {
 protected:
  void SetUp() override { SetLibraryUnloading(); }
};

TEST_F(UnitsUnloading, AComparisonFactorOfZeroCountsAsOne) {
  const UnitDescriptor unit("Bunch", "bu", 0.0, Inch());
  EXPECT_EQ(Inch().GetConversionFactor(), unit.GetConversionFactor());
  EXPECT_EQ("Bunch", unit.GetName());
}

TEST_F(UnitsUnloading, RefusedArithmeticLeavesTheUnitAndGivesAnEmptyOne) {
  UnitDescriptor_Celsius celsius;
  EXPECT_EQ(&celsius, &(celsius *= Meter()));
  EXPECT_EQ(&celsius, &(celsius /= Meter()));
  EXPECT_TRUE(celsius == UnitDescriptor_Celsius());
  EXPECT_TRUE(celsius * Meter() == UnitDescriptor());
  EXPECT_TRUE(celsius / Meter() == UnitDescriptor());
}

TEST_F(UnitsUnloading, BytesThatAreNoneChangeNothing) {
  IoTests::MemorySource source(Bytes("\1\0\0\0\x9\0\0\0"));
  Dimensions dimensions(1, 2);
  source >> dimensions;
  EXPECT_TRUE(dimensions == Dimensions(1, 2));
  IoTests::MemorySource unitSource(Bytes("\1\0\0\0n\1\0\0\0a\0\0\0\0\0\0\0\0\1\0\0\0\x9\0\0\0"));
  UnitDescriptor unit = Inch();
  unitSource >> unit;
  EXPECT_TRUE(unit == Inch());
}

TEST_F(UnitsUnloading, WhatCantBeWrittenLeavesNoBytes) {
  IoTests::MemorySink sink;
  sink << Dimensions(2147483648L);
  UnitDescriptor unit;
  unit.SetDimensions(Dimensions(-2147483648L));
  sink << unit;
  EXPECT_EQ("", sink.m_bytes);
}

}  // namespace
