// Products and quotients of units: factors, dimensions and, above all, names.
#include <Infrastructure/OxaCore/UnitDescriptor.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <new>

#include "Support/Allocations.h"
#include "Units/UnitsSupport.h"

namespace {

using namespace UnitsTests;

// "NAME|ABBREVIATION"
std::string Texts(const UnitDescriptor& unit) { return unit.GetName() + "|" + unit.GetAbbreviation(); }

UnitDescriptor Unnamed(const UnitDescriptor& like) {
  UnitDescriptor unit = like;
  unit.SetName("");
  unit.SetAbbreviation("");
  return unit;
}

TEST(UnitProduct, JoinsTextsFactorsAndDimensions) {
  const UnitDescriptor product = Inch() * Second();
  EXPECT_EQ("Inch * Second|in * s", Texts(product));
  EXPECT_EQ((1.0 / 0.0254) * 1.0, product.GetConversionFactor());
  EXPECT_TRUE(product.GetDimensions() == Dimensions(1, 0, 1));
}

TEST(UnitProduct, OfTwoFactorsIsTheirProduct) {
  EXPECT_EQ((1.0 / 0.0254) * 100.0, (Inch() * Centimeter()).GetConversionFactor());
}

TEST(UnitProduct, ThatIsUnitlessHasNoTextsAndKeepsItsFactor) {
  const UnitDescriptor perMeter = UnitDescriptor() / Meter();
  const UnitDescriptor product = Inch() * perMeter;
  EXPECT_EQ("|", Texts(product));
  EXPECT_EQ(1.0 / 0.0254, product.GetConversionFactor());
  EXPECT_TRUE(product.IsUnitless());
}

TEST(UnitProduct, OfTwoUnitlessHasNoTexts) {
  EXPECT_EQ("|", Texts(Dozen() * Dozen()));
  EXPECT_EQ("|", Texts(Dozen() * UnitDescriptor()));
  EXPECT_EQ((1.0 / 12.0) * (1.0 / 12.0), (Dozen() * Dozen()).GetConversionFactor());
}

TEST(UnitProduct, OfAUnitlessLeftSideTakesTheOthersTexts) {
  EXPECT_EQ("Meter|m", Texts(Dozen() * Meter()));
  EXPECT_EQ("Meter|m", Texts(UnitDescriptor() * Meter()));
  EXPECT_EQ("|", Texts(Dozen() * Unnamed(Meter())));
  EXPECT_EQ(1.0 / 12.0, (Dozen() * Meter()).GetConversionFactor());
}

TEST(UnitProduct, ByAUnitlessKeepsTheTexts) {
  EXPECT_EQ("Meter|m", Texts(Meter() * Dozen()));
  EXPECT_EQ("Meter|m", Texts(Meter() * UnitDescriptor()));
  EXPECT_EQ("|", Texts(Unnamed(Meter()) * Dozen()));
}

TEST(UnitProduct, WithAnEmptyTextIsEmptyOnEitherSide) {
  EXPECT_EQ("|", Texts(Meter() * Unnamed(Second())));
  EXPECT_EQ("|", Texts(Unnamed(Meter()) * Second()));
  EXPECT_EQ("|", Texts(Unnamed(Meter()) * Unnamed(Second())));
}

TEST(UnitProduct, NameAndAbbreviationGoTheirOwnWays) {
  UnitDescriptor noAbbreviation = Second();
  noAbbreviation.SetAbbreviation("");
  EXPECT_EQ("Meter * Second|", Texts(Meter() * noAbbreviation));
  EXPECT_EQ("Second * Meter|", Texts(noAbbreviation * Meter()));
  UnitDescriptor noName = Second();
  noName.SetName("");
  EXPECT_EQ("|m * s", Texts(Meter() * noName));
  EXPECT_EQ("|s * m", Texts(noName * Meter()));
  EXPECT_EQ("|s", Texts(Dozen() * noName));
}

TEST(UnitProduct, WithItselfJoinsItsOwnTexts) {
  UnitDescriptor inch = Inch();
  UnitDescriptor& result = inch *= inch;
  EXPECT_EQ(&inch, &result);
  EXPECT_EQ("Inch * Inch|in * in", Texts(inch));
  EXPECT_EQ((1.0 / 0.0254) * (1.0 / 0.0254), inch.GetConversionFactor());
  EXPECT_TRUE(inch.GetDimensions() == Dimensions(2));
  UnitDescriptor dozen = Dozen();
  dozen *= dozen;
  EXPECT_EQ("|", Texts(dozen));
}

TEST(UnitQuotient, JoinsTextsFactorsAndDimensions) {
  const UnitDescriptor quotient = Inch() / Second();
  EXPECT_EQ("Inch / Second|in / s", Texts(quotient));
  EXPECT_EQ((1.0 / 0.0254) / 1.0, quotient.GetConversionFactor());
  EXPECT_TRUE(quotient.GetDimensions() == Dimensions(1, 0, -1));
}

TEST(UnitQuotient, OfTwoFactorsIsTheirQuotient) {
  EXPECT_EQ((1.0 / 0.0254) / 100.0, (Inch() / Centimeter()).GetConversionFactor());
}

TEST(UnitQuotient, MeterPerInchIsUnitlessAndNotOne) {
  const UnitDescriptor quotient = Meter() / Inch();
  EXPECT_TRUE(quotient.IsUnitless());
  EXPECT_EQ("|", Texts(quotient));
  EXPECT_NE(1.0, quotient.GetConversionFactor());
  EXPECT_EQ(1.0 / (1.0 / 0.0254), quotient.GetConversionFactor());
}

TEST(UnitQuotient, OfAUnitlessLeftSideIsOnePerTheOther) {
  EXPECT_EQ("1/Second|1/s", Texts(UnitDescriptor() / Second()));
  EXPECT_EQ("1/Second|1/s", Texts(Dozen() / Second()));
  EXPECT_EQ(1.0 / 12.0, (Dozen() / Second()).GetConversionFactor());
  EXPECT_TRUE((Dozen() / Second()).GetDimensions() == Dimensions(0, 0, -1));
}

TEST(UnitQuotient, OfAUnitlessLeftSideByAnUnnamedIsUnnamed) {
  EXPECT_EQ("|", Texts(Dozen() / Unnamed(Second())));
  UnitDescriptor noAbbreviation = Second();
  noAbbreviation.SetAbbreviation("");
  EXPECT_EQ("1/Second|", Texts(Dozen() / noAbbreviation));
}

TEST(UnitQuotient, ByAUnitlessKeepsTheTexts) {
  EXPECT_EQ("Meter|m", Texts(Meter() / Dozen()));
  EXPECT_EQ("Meter|m", Texts(Meter() / UnitDescriptor()));
  EXPECT_EQ(1.0 / (1.0 / 12.0), (Meter() / Dozen()).GetConversionFactor());
}

TEST(UnitQuotient, WithAnEmptyTextIsEmptyOnEitherSide) {
  EXPECT_EQ("|", Texts(Meter() / Unnamed(Second())));
  EXPECT_EQ("|", Texts(Unnamed(Meter()) / Second()));
  UnitDescriptor noName = Second();
  noName.SetName("");
  EXPECT_EQ("|m / s", Texts(Meter() / noName));
}

TEST(UnitQuotient, OfTwoUnitlessHasNoTexts) {
  EXPECT_EQ("|", Texts(Dozen() / Dozen()));
  EXPECT_EQ("|", Texts(UnitDescriptor("SoSo", "nada") / UnitDescriptor()));
}

TEST(UnitQuotient, OfItselfIsUnitlessOne) {
  UnitDescriptor inch = Inch();
  UnitDescriptor& result = inch /= inch;
  EXPECT_EQ(&inch, &result);
  EXPECT_EQ("|", Texts(inch));
  EXPECT_EQ(1.0, inch.GetConversionFactor());
  EXPECT_TRUE(inch.IsUnitless());
}

TEST(UnitArithmetic, SpeedIsTheSameHoweverItIsMade) {
  const UnitDescriptor mps = Meter() / Second();
  EXPECT_FALSE(mps.IsUnitless());
  UnitDescriptor steps;
  steps *= Meter();
  steps /= Second();
  EXPECT_TRUE(mps == steps);
  const UnitDescriptor ms = Meter() * Second();
  EXPECT_TRUE(ms != mps);
  EXPECT_FALSE(ms == mps);
}

TEST(UnitArithmetic, TwoSpeedsAreEquivalentAndNotEqual) {
  const UnitDescriptor mile("Mile", "mi", 1609.344, Meter());
  const UnitDescriptor hour("Hour", "h", 3600.0, Second());
  const UnitDescriptor mph = mile / hour;
  const UnitDescriptor mps = Meter() / Second();
  EXPECT_TRUE(mph.IsDimensionallyEquivalent(mps));
  EXPECT_TRUE(mps.IsDimensionallyEquivalent(mph));
  EXPECT_TRUE(mph != mps);
  EXPECT_EQ("Mile / Hour|mi / h", Texts(mph));
}

TEST(UnitArithmetic, WhatCancelsOutIsEquivalentToNothing) {
  const UnitDescriptor cancelled = Meter() * Meter() / Meter() / Meter();
  EXPECT_TRUE(UnitDescriptor().IsDimensionallyEquivalent(cancelled));
  EXPECT_TRUE(cancelled.IsDimensionallyEquivalent(UnitDescriptor()));
  EXPECT_EQ("|", Texts(cancelled));
}

TEST(UnitArithmetic, TextsFollowTheStepsAndAreNotSimplified) {
  EXPECT_EQ("Meter * Meter / Meter|m * m / m", Texts(Meter() * Meter() / Meter()));
  EXPECT_EQ("Second|s", Texts(Meter() / Meter() * Second()));
}

TEST(UnitArithmetic, TheOperandsStayAsTheyAre) {
  const UnitDescriptor meter = Meter();
  const UnitDescriptor second = Second();
  static_cast<void>(meter * second);
  static_cast<void>(meter / second);
  EXPECT_TRUE(meter == Meter());
  EXPECT_TRUE(second == Second());
}

TEST(UnitArithmetic, NothingChecksAFactorThatOverflows) {
  const UnitDescriptor tiny("Tiny", "t", std::numeric_limits<double>::min(), Meter());
  EXPECT_TRUE(std::isinf((tiny * tiny).GetConversionFactor()));
  EXPECT_TRUE(std::isnan(((tiny * tiny) / (tiny * tiny)).GetConversionFactor()));
}

// Whatever `action` does to a unit of long texts, without memory it leaves the unit as it was.
template <class Action>
void ExpectUnchangedWithoutMemory(const Action& action) {
  const UnitDescriptor before("A name that a string keeps on the heap",
                              "an abbreviation, which is long as well", 2, Meter());
  for (unsigned long failing = 1;; ++failing) {
    UnitDescriptor unit = before;
    const TestSupport::FailAllocation fail(failing);
    try {
      action(unit);
      EXPECT_LT(1U, failing) << "that takes memory";
      return;
    } catch (const std::bad_alloc&) {
      EXPECT_TRUE(unit == before) << failing;
    }
  }
}

TEST(UnitArithmetic, ALackOfMemoryChangesNothing) {
  const UnitDescriptor other("Another name that a string keeps on the heap",
                             "an abbreviation of the other, long", 3, Second());
  ExpectUnchangedWithoutMemory([&](UnitDescriptor& unit) { unit *= other; });
  ExpectUnchangedWithoutMemory([&](UnitDescriptor& unit) { unit /= other; });
  ExpectUnchangedWithoutMemory([&](UnitDescriptor& unit) { unit *= unit; });
  ExpectUnchangedWithoutMemory([&](UnitDescriptor& unit) { unit = other * other; });
}

// It gives its own answer where arithmetic asks.
class Host : public UnitDescriptor {
 public:
  Host() : UnitDescriptor(Meter()) { SetName("Host"); }
  UnitDescriptor& operator*=(const UnitDescriptor&) override { return *this; }
};

TEST(UnitArithmetic, ProductOfADerivedOneIsAPlainUnit) {
  const UnitDescriptor product = Host() * Second();
  EXPECT_EQ("Host * Second|m * s", Texts(product));
  EXPECT_EQ("Host / Second|m / s", Texts(Host() / Second()));
}

}  // namespace
