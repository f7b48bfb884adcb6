#include <Infrastructure/OxaCore/UnitDescriptor.h>

#include <Infrastructure/OxaCore/CommonErrors.h>

#include <gtest/gtest.h>

#include <climits>
#include <map>
#include <set>
#include <type_traits>

#include "Units/UnitsSupport.h"

namespace {

using namespace UnitsTests;

static_assert(eLength == 0 && eMass == 1 && eTime == 2 && eCurrent == 3);
static_assert(eTemperature == 4 && eAmount == 5 && eLuminousIntensity == 6 && eAngle == 7);

static_assert(sizeof(Dimensions) == 8 * sizeof(long), "the exponents and nothing else");
static_assert(std::is_trivially_copyable_v<Dimensions>);
static_assert(std::is_same_v<long&, decltype(std::declval<Dimensions&>()[eLength])>);
static_assert(std::is_same_v<long, decltype(std::declval<const Dimensions&>()[eLength])>);
static_assert(std::is_same_v<const Dimensions&, decltype(std::declval<Dimensions&>() *= Dimensions())>);
static_assert(std::is_same_v<const Dimensions&, decltype(std::declval<Dimensions&>() /= Dimensions())>);
static_assert(!std::is_convertible_v<long, Dimensions>, "a number on a stream is no dimension");

constexpr EDimension aALL[] = {eLength, eMass, eTime, eCurrent, eTemperature, eAmount, eLuminousIntensity,
                               eAngle};

TEST(DimensionsTest, StartWithoutExponents) {
  const Dimensions none;
  for (const EDimension dimension : aALL) EXPECT_EQ(0, none[dimension]);
  EXPECT_TRUE(none.IsUnitless());
}

TEST(DimensionsTest, TakeEightExponentsInOrder) {
  const Dimensions dimensions(1, -2, 3, -4, 5, -6, 7, -8);
  EXPECT_EQ(1, dimensions[eLength]);
  EXPECT_EQ(-2, dimensions[eMass]);
  EXPECT_EQ(3, dimensions[eTime]);
  EXPECT_EQ(-4, dimensions[eCurrent]);
  EXPECT_EQ(5, dimensions[eTemperature]);
  EXPECT_EQ(-6, dimensions[eAmount]);
  EXPECT_EQ(7, dimensions[eLuminousIntensity]);
  EXPECT_EQ(-8, dimensions[eAngle]);
}

TEST(DimensionsTest, ExponentsThatArentGivenAreZero) {
  EXPECT_TRUE(Dimensions(3) == Dimensions(3, 0, 0, 0, 0, 0, 0, 0));
  EXPECT_TRUE(Dimensions(3, 1) == Dimensions(3, 1, 0, 0, 0, 0, 0, 0));
  EXPECT_TRUE(Dimensions(3, 1, 0, 2) == Dimensions(3, 1, 0, 2, 0, 0, 0, 0));
}

TEST(DimensionsTest, OfAMapHaveZeroForWhatItDoesntHave) {
  const std::map<EDimension, long> map = {{eMass, 1}, {eTime, -2}, {eAngle, 4}};
  EXPECT_TRUE(Dimensions(map) == Dimensions(0, 1, -2, 0, 0, 0, 0, 4));
  EXPECT_TRUE(Dimensions(std::map<EDimension, long>()) == Dimensions());
}

TEST(DimensionsTest, OfAMapPassOverWhatIsNoDimension) {
  const std::map<EDimension, long> map = {
      {static_cast<EDimension>(-1), 5}, {eLength, 1}, {static_cast<EDimension>(8), 6}};
  EXPECT_TRUE(Dimensions(map) == Dimensions(1));
}

TEST(DimensionsTest, AreCopiedAndAssigned) {
  const Dimensions dimensions(1, 2, 3, 4, 5, 6, 7, 8);
  const Dimensions copy(dimensions);
  EXPECT_TRUE(copy == dimensions);
  Dimensions assigned;
  assigned = dimensions;
  EXPECT_TRUE(assigned == dimensions);
}

TEST(DimensionsTest, ExponentsCanBeWritten) {
  Dimensions dimensions;
  dimensions[eCurrent] = -3;
  EXPECT_EQ(-3, dimensions[eCurrent]);
  EXPECT_TRUE(dimensions == Dimensions(0, 0, 0, -3));
  EXPECT_FALSE(dimensions.IsUnitless());
}

TEST(DimensionsTest, EachExponentCountsForEqualityAndUnitlessness) {
  for (const EDimension dimension : aALL) {
    for (const long exponent : {1L, -1L, LONG_MIN, LONG_MAX}) {
      Dimensions one;
      one[dimension] = exponent;
      EXPECT_FALSE(one == Dimensions());
      EXPECT_TRUE(one != Dimensions());
      EXPECT_FALSE(one.IsUnitless());
    }
  }
  EXPECT_TRUE(Dimensions(1, -1) == Dimensions(1, -1));
  EXPECT_FALSE(Dimensions(1, -1) != Dimensions(1, -1));
  EXPECT_FALSE(Dimensions(1, -1).IsUnitless());  // no sum
}

TEST(DimensionsTest, OrderIsThatOfTheBytes) {
  EXPECT_TRUE(Dimensions() < Dimensions(1));
  EXPECT_FALSE(Dimensions(1) < Dimensions());
  EXPECT_FALSE(Dimensions(1) < Dimensions(1));
  EXPECT_TRUE(Dimensions(1) < Dimensions(-1));    // 1 is 01 00..., -1 is FF FF...
  EXPECT_TRUE(Dimensions(256) < Dimensions(1));   // 00 01 ... comes before 01 00 ...
  EXPECT_TRUE(Dimensions(0, 5) < Dimensions(1));  // the first one decides
}

TEST(DimensionsTest, OrderIsTotal) {
  std::set<Dimensions> sorted;
  for (long length = -2; length <= 2; ++length)
    for (long angle = -2; angle <= 2; ++angle) sorted.insert(Dimensions(length, 0, 0, 0, 0, 0, 0, angle));
  EXPECT_EQ(25U, sorted.size());
  for (auto left = sorted.begin(); left != sorted.end(); ++left)
    for (auto right = std::next(left); right != sorted.end(); ++right) {
      EXPECT_TRUE(*left < *right);
      EXPECT_FALSE(*right < *left);
    }
}

TEST(DimensionsTest, ProductAddsAndQuotientSubtracts) {
  Dimensions dimensions(1, 2, 3, 4, 5, 6, 7, 8);
  const Dimensions& product = dimensions *= Dimensions(1, 1, -3, 0, 1, -7, 1, 2);
  EXPECT_EQ(&dimensions, &product);
  EXPECT_TRUE(dimensions == Dimensions(2, 3, 0, 4, 6, -1, 8, 10));
  const Dimensions& quotient = dimensions /= Dimensions(2, 2, 2, 2, 2, 2, 2, 2);
  EXPECT_EQ(&dimensions, &quotient);
  EXPECT_TRUE(dimensions == Dimensions(0, 1, -2, 2, 4, -3, 6, 8));
}

TEST(DimensionsTest, WorkOnThemselves) {
  Dimensions dimensions(1, -2);
  dimensions *= dimensions;
  EXPECT_TRUE(dimensions == Dimensions(2, -4));
  dimensions /= dimensions;
  EXPECT_TRUE(dimensions.IsUnitless());
}

TEST(DimensionsTest, WrapWhereTheyOverflow) {
  Dimensions dimensions(LONG_MAX, LONG_MIN);
  dimensions *= Dimensions(1);
  dimensions /= Dimensions(0, 1);
  EXPECT_EQ(LONG_MIN, dimensions[eLength]);
  EXPECT_EQ(LONG_MAX, dimensions[eMass]);
}

TEST(DimensionsTest, GiveTheirExponentsToAMapThatIsntCleared) {
  std::map<EDimension, long> map = {{eMass, 9}, {eTime, 9}, {eAngle, 9}};
  Dimensions(1, 2, 0, 0, 0, 0, -1).GetExponents(map);
  const std::map<EDimension, long> expected = {
      {eLength, 1}, {eMass, 2}, {eTime, 9}, {eLuminousIntensity, -1}, {eAngle, 9}};
  EXPECT_EQ(expected, map);
  Dimensions().GetExponents(map);
  EXPECT_EQ(expected, map);
}

TEST(DimensionsTest, SizeIsEightAndFourForEachUnitOfEachExponent) {
  EXPECT_EQ(8U, Dimensions().GetSerializedSize());
  EXPECT_EQ(12U, Dimensions(1).GetSerializedSize());
  EXPECT_EQ(12U, Dimensions(0, 0, -1).GetSerializedSize());
  EXPECT_EQ(8U + 4 * 7, Dimensions(2, 1, -3, -1).GetSerializedSize());
}

TEST(DimensionsStream, NumeratorThenDenominatorInOrder) {
  EXPECT_EQ(Bytes("\0\0\0\0\0\0\0\0"), Written(Dimensions()));
  EXPECT_EQ(Bytes("\1\0\0\0\0\0\0\0\0\0\0\0"), Written(Dimensions(1)));
  EXPECT_EQ(Bytes("\0\0\0\0\1\0\0\0\7\0\0\0"), Written(Dimensions(0, 0, 0, 0, 0, 0, 0, -1)));
  EXPECT_EQ(Bytes("\3\0\0\0\0\0\0\0\0\0\0\0\1\0\0\0"            // length twice, mass
                  "\4\0\0\0\2\0\0\0\2\0\0\0\2\0\0\0\3\0\0\0"),  // time three times, current
            Written(Dimensions(2, 1, -3, -1)));
  EXPECT_EQ(Bytes("\4\0\0\0\1\0\0\0\4\0\0\0\5\0\0\0\6\0\0\0"
                  "\2\0\0\0\0\0\0\0\3\0\0\0"),
            Written(Dimensions(-1, 1, 0, -1, 1, 1, 1, 0)));
}

TEST(DimensionsStream, SizeIsThatOfTheBytes) {
  for (const Dimensions& dimensions :
       {Dimensions(), Dimensions(1), Dimensions(2, 1, -3, -1), Dimensions(-1, 1, 0, -1, 1, 1, 1, 0)})
    EXPECT_EQ(Written(dimensions).size(), dimensions.GetSerializedSize());
}

TEST(DimensionsStream, GoesByWholeNumbersOfFourBytes) {
  IoTests::MemorySink sink;
  sink << Dimensions(1, -1);
  EXPECT_EQ((IoTests::Calls{"write 4", "write 4", "write 4", "write 4"}), sink.m_calls);
}

TEST(DimensionsStream, WhatIsReadReplacesAll) {
  for (const Dimensions& dimensions :
       {Dimensions(), Dimensions(1), Dimensions(2, 1, -3, -1), Dimensions(-1, 2, -3, 4, -5, 6, -7, 8)})
    EXPECT_TRUE(dimensions == ReadInto(Dimensions(9, 9, 9, 9, 9, 9, 9, 9), Written(dimensions)));
}

TEST(DimensionsStream, IndicesMayComeInAnyOrderAndMeetInBothParts) {
  EXPECT_TRUE(Dimensions(2, 0, -1, 0, 0, 0, 0, 1) ==
              ReadInto(Dimensions(), Bytes("\5\0\0\0\7\0\0\0\0\0\0\0\2\0\0\0\0\0\0\0\0\0\0\0"
                                           "\3\0\0\0\2\0\0\0\0\0\0\0\2\0\0\0")));
}

TEST(DimensionsStream, ACountBelowOneReadsNoIndices) {
  EXPECT_TRUE(Dimensions(0, -1) == ReadInto(Dimensions(5), Bytes("\xFF\xFF\xFF\xFF\1\0\0\0\1\0\0\0")));
  EXPECT_TRUE(Dimensions(1) == ReadInto(Dimensions(5), Bytes("\1\0\0\0\0\0\0\0\0\0\0\x80")));
}

TEST(DimensionsStream, LeavesTheBytesBehindIt) {
  IoTests::MemorySource source(Written(Dimensions(1)) + "rest");
  Dimensions dimensions;
  source >> dimensions;
  EXPECT_EQ(4U, source.AvailableBytes());
}

constexpr char sNO_DIMENSION[] = " for Dimensions with size of 8";

std::string OutOfBounds(const std::string& index) {
  return "Oxa.Core.Dimensions: Out of bounds index of " + index + sNO_DIMENSION;
}

// What reading `bytes` raises; the target must have stayed as it was.
std::string RaisedByReading(const std::string& bytes) {
  IoTests::MemorySource source(bytes);
  Dimensions dimensions(1, 2, 3);
  std::string raised = Raised<IndexOutOfBounds>([&] { source >> dimensions; });
  EXPECT_TRUE(dimensions == Dimensions(1, 2, 3));
  return raised;
}

TEST(DimensionsStream, AnIndexThatIsNoDimensionRaises) {
  EXPECT_EQ(OutOfBounds("8"), RaisedByReading(Bytes("\1\0\0\0\x8\0\0\0\0\0\0\0")));
  EXPECT_EQ(OutOfBounds("-1"), RaisedByReading(Bytes("\1\0\0\0\xFF\xFF\xFF\xFF\0\0\0\0")));
  EXPECT_EQ(OutOfBounds("2147483647"), RaisedByReading(Bytes("\1\0\0\0\xFF\xFF\xFF\x7F\0\0\0\0")));
  EXPECT_EQ(OutOfBounds("-2147483648"), RaisedByReading(Bytes("\1\0\0\0\0\0\0\x80\0\0\0\0")));
  EXPECT_EQ(OutOfBounds("9"), RaisedByReading(Bytes("\1\0\0\0\0\0\0\0\1\0\0\0\x9\0\0\0")));
}

TEST(DimensionsStream, EndsAtOnceWhereTheStreamIsShorterThanItsCount) {
  EXPECT_EQ(OutOfBounds("-1"), RaisedByReading(Bytes("\xFF\xFF\xFF\x7F")));
  EXPECT_EQ(OutOfBounds("-1"), RaisedByReading(Bytes("\xFF\xFF\xFF\x7F\0\0\0\0\1\0\0\0")));
  EXPECT_EQ(OutOfBounds("-1"), RaisedByReading(Bytes("\0\0\0\0\xFF\xFF\xFF\x7F")));
}

TEST(DimensionsStream, CutOffWithinAnIndexRaises) {
  EXPECT_EQ(OutOfBounds("-256"), RaisedByReading(Bytes("\1\0\0\0\0")));
  EXPECT_EQ(OutOfBounds("-65536"), RaisedByReading(Bytes("\1\0\0\0\0\0")));
  EXPECT_EQ(OutOfBounds("-16777216"), RaisedByReading(Bytes("\1\0\0\0\0\0\0")));
}

TEST(DimensionsStream, ACountThatIsntThereIsZero) {
  EXPECT_TRUE(Dimensions() == ReadInto(Dimensions(1, 2), ""));
  EXPECT_TRUE(Dimensions(0, 1) == ReadInto(Dimensions(1, 2), Bytes("\1\0\0\0\1\0\0\0")));
}

TEST(DimensionsStream, MoreIndicesThanACountHoldsAreNotWritten) {
  const std::string refused = "Oxa.Core.Dimensions: Invalid Parameter: exponents = ";
  IoTests::MemorySink sink;
  EXPECT_EQ(refused + "2147483648", Raised<InvalidParameter>([&] { sink << Dimensions(2147483648L); }));
  EXPECT_EQ(refused + "2147483648", Raised<InvalidParameter>([&] { sink << Dimensions(1, -2147483648L); }));
  EXPECT_EQ(refused + "2147483650", Raised<InvalidParameter>([&] { sink << Dimensions(2147483647L, 0, 3); }));
  EXPECT_EQ(refused + "9223372036854775808", Raised<InvalidParameter>([&] { sink << Dimensions(LONG_MIN); }));
  EXPECT_EQ(refused + "9223372036854775808",
            Raised<InvalidParameter>([&] { sink << Dimensions(LONG_MIN, LONG_MIN); }))
      << "a sum that wraps to nothing";
  EXPECT_EQ("", sink.m_bytes);
}

}  // namespace
