#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <stdexcept>

#include "AutoTest/Fakes.h"

namespace {

using namespace AutoTestTests;
using testing::ElementsAre;
using Value = UnitizedValue<double>;

constexpr auto eNONE = RangeTest::eNO_CONDITION;
constexpr auto eGREATER = RangeTest::eGREATER;
constexpr auto eLESS = RangeTest::eLESS;
constexpr auto eGREATER_OR_EQUAL = RangeTest::eGREATER_OR_EQUAL;
constexpr auto eLESS_OR_EQUAL = RangeTest::eLESS_OR_EQUAL;

class Range : public RangeTest {
 public:
  Range(Value lower, ECondition lowerCondition, Value upper, ECondition upperCondition)
      : RangeTest("Range", lower, upper, lowerCondition, upperCondition) {}

  std::function<void(Value&)> m_measure;
  int m_iMeasured = 0;

 protected:
  void GetTestValue(Value& value) override {
    ++m_iMeasured;
    if (m_measure) m_measure(value);
  }
};

Value Meters(double value) { return Value(value, "Meter"); }

// The one result of a run on `value`: "1 text" if it passed, "0 text" if it failed, "-1 text" for an error.
std::string Judge(Range& range, const Value& value) {
  range.m_measure = [&](Value& measured) { measured = value; };
  std::vector<Result> results;
  const Result::EType type = range.RunTest(results);
  EXPECT_EQ(1U, results.size());
  EXPECT_EQ(type, results.front().GetType());
  EXPECT_EQ("Range", results.front().GetTestName());
  return std::to_string(type) + " " + results.front().GetText();
}

std::string Lower(RangeTest::ECondition condition, double tolerance, double value) {
  Range range(Meters(tolerance), condition, Value(), eNONE);
  return Judge(range, Meters(value));
}

std::string Upper(RangeTest::ECondition condition, double tolerance, double value) {
  Range range(Value(), eNONE, Meters(tolerance), condition);
  return Judge(range, Meters(value));
}

std::string Both(RangeTest::ECondition lower, RangeTest::ECondition upper, double value) {
  Range range(Meters(2), lower, Meters(8), upper);
  return Judge(range, Meters(value));
}

TEST(RangeTest, ConditionsHaveTheirValues) {
  EXPECT_EQ(0, RangeTest::eNO_CONDITION);
  EXPECT_EQ(1, RangeTest::eGREATER);
  EXPECT_EQ(2, RangeTest::eLESS);
  EXPECT_EQ(3, RangeTest::eGREATER_OR_EQUAL);
  EXPECT_EQ(4, RangeTest::eLESS_OR_EQUAL);
}

TEST(RangeTest, WithoutConditionsPassesAndMeasuresNothing) {
  Range range(Meters(2), eNONE, Meters(8), eNONE);
  EXPECT_FALSE(range.HasTolerances());
  EXPECT_EQ("1 No tolerance conditions for test", Judge(range, Meters(100)));
  EXPECT_EQ(0, range.m_iMeasured);
}

// The tolerance stands in front of the value, and so the relation is turned round. A text that says no has two
// blanks behind the relation.
TEST(RangeTest, LowerToleranceGreater) {
  EXPECT_EQ("1 2 m < Test value of 3 m", Lower(eGREATER, 2, 3));
  EXPECT_EQ("0 2 m >=  Test value of 2 m", Lower(eGREATER, 2, 2));
  EXPECT_EQ("0 2 m >=  Test value of 1 m", Lower(eGREATER, 2, 1));
}

TEST(RangeTest, LowerToleranceLess) {
  EXPECT_EQ("1 2 m > Test value of 1 m", Lower(eLESS, 2, 1));
  EXPECT_EQ("0 2 m <=  Test value of 2 m", Lower(eLESS, 2, 2));
  EXPECT_EQ("0 2 m <=  Test value of 3 m", Lower(eLESS, 2, 3));
}

TEST(RangeTest, LowerToleranceGreaterOrEqual) {
  EXPECT_EQ("1 2 m <= Test value of 3 m", Lower(eGREATER_OR_EQUAL, 2, 3));
  EXPECT_EQ("1 2 m <= Test value of 2 m", Lower(eGREATER_OR_EQUAL, 2, 2));
  EXPECT_EQ("0 2 m >  Test value of 1 m", Lower(eGREATER_OR_EQUAL, 2, 1));
}

TEST(RangeTest, LowerToleranceLessOrEqualIsStrict) {
  EXPECT_EQ("1 2 m >= Test value of 1 m", Lower(eLESS_OR_EQUAL, 2, 1));
  EXPECT_EQ("0 2 m <  Test value of 2 m", Lower(eLESS_OR_EQUAL, 2, 2));
  EXPECT_EQ("0 2 m <  Test value of 3 m", Lower(eLESS_OR_EQUAL, 2, 3));
}

TEST(RangeTest, UpperToleranceGreater) {
  EXPECT_EQ("1 Test value of 9 m > 8 m", Upper(eGREATER, 8, 9));
  EXPECT_EQ("0 Test value of 8 m <= 8 m", Upper(eGREATER, 8, 8));
  EXPECT_EQ("0 Test value of 7 m <= 8 m", Upper(eGREATER, 8, 7));
}

TEST(RangeTest, UpperToleranceLess) {
  EXPECT_EQ("1 Test value of 7 m < 8 m", Upper(eLESS, 8, 7));
  EXPECT_EQ("0 Test value of 8 m >= 8 m", Upper(eLESS, 8, 8));
  EXPECT_EQ("0 Test value of 9 m >= 8 m", Upper(eLESS, 8, 9));
}

TEST(RangeTest, UpperToleranceGreaterOrEqual) {
  EXPECT_EQ("1 Test value of 9 m >= 8 m", Upper(eGREATER_OR_EQUAL, 8, 9));
  EXPECT_EQ("1 Test value of 8 m >= 8 m", Upper(eGREATER_OR_EQUAL, 8, 8));
  EXPECT_EQ("0 Test value of 7 m < 8 m", Upper(eGREATER_OR_EQUAL, 8, 7));
}

TEST(RangeTest, UpperToleranceLessOrEqualIsStrict) {
  EXPECT_EQ("1 Test value of 7 m <= 8 m", Upper(eLESS_OR_EQUAL, 8, 7));
  EXPECT_EQ("0 Test value of 8 m > 8 m", Upper(eLESS_OR_EQUAL, 8, 8));
  EXPECT_EQ("0 Test value of 9 m > 8 m", Upper(eLESS_OR_EQUAL, 8, 9));
}

TEST(RangeTest, LessOrEqualFailsOnTheToleranceItself) {
  Range range(Value(), eNONE, Value(5), eLESS_OR_EQUAL);
  EXPECT_EQ("0 Test value of 5 > 5", Judge(range, Value(5)));
}

TEST(RangeTest, BothTolerancesPassed) {
  EXPECT_EQ("1 2 m < Test value of 5 m < 8 m", Both(eGREATER, eLESS, 5));
  EXPECT_EQ("1 2 m < Test value of 9 m > 8 m", Both(eGREATER, eGREATER, 9));
  EXPECT_EQ("1 2 m < Test value of 8 m >= 8 m", Both(eGREATER, eGREATER_OR_EQUAL, 8));
  EXPECT_EQ("1 2 m < Test value of 5 m <= 8 m", Both(eGREATER, eLESS_OR_EQUAL, 5));
  EXPECT_EQ("1 2 m > Test value of 1 m < 8 m", Both(eLESS, eLESS, 1));
  EXPECT_EQ("1 2 m > Test value of 1 m <= 8 m", Both(eLESS, eLESS_OR_EQUAL, 1));
  EXPECT_EQ("1 2 m <= Test value of 2 m < 8 m", Both(eGREATER_OR_EQUAL, eLESS, 2));
  EXPECT_EQ("1 2 m <= Test value of 9 m > 8 m", Both(eGREATER_OR_EQUAL, eGREATER, 9));
  EXPECT_EQ("1 2 m <= Test value of 8 m >= 8 m", Both(eGREATER_OR_EQUAL, eGREATER_OR_EQUAL, 8));
  EXPECT_EQ("1 2 m <= Test value of 2 m <= 8 m", Both(eGREATER_OR_EQUAL, eLESS_OR_EQUAL, 2));
  EXPECT_EQ("1 2 m >= Test value of 1 m < 8 m", Both(eLESS_OR_EQUAL, eLESS, 1));
  EXPECT_EQ("1 2 m >= Test value of 1 m <= 8 m", Both(eLESS_OR_EQUAL, eLESS_OR_EQUAL, 1));
}

// The other four pairs want a value below the lower tolerance and above the upper one.
TEST(RangeTest, TolerancesInTheOtherOrder) {
  const auto judge = [](RangeTest::ECondition lower, RangeTest::ECondition upper) {
    Range range(Meters(8), lower, Meters(2), upper);
    return Judge(range, Meters(5));
  };
  EXPECT_EQ("1 8 m > Test value of 5 m > 2 m", judge(eLESS, eGREATER));
  EXPECT_EQ("1 8 m > Test value of 5 m >= 2 m", judge(eLESS, eGREATER_OR_EQUAL));
  EXPECT_EQ("1 8 m >= Test value of 5 m > 2 m", judge(eLESS_OR_EQUAL, eGREATER));
  EXPECT_EQ("1 8 m >= Test value of 5 m >= 2 m", judge(eLESS_OR_EQUAL, eGREATER_OR_EQUAL));
}

TEST(RangeTest, LowerToleranceFailedLeavesTheUpperOneAlone) {
  EXPECT_EQ("0 2 m >=  Test value of 1 m", Both(eGREATER, eLESS, 1));
  EXPECT_EQ("0 2 m >=  Test value of 1 m", Both(eGREATER, eGREATER, 1)) << "both fail";
  EXPECT_EQ("0 2 m <=  Test value of 9 m", Both(eLESS, eLESS, 9)) << "both fail";
  EXPECT_EQ("0 2 m >  Test value of 1 m", Both(eGREATER_OR_EQUAL, eLESS_OR_EQUAL, 1));
  EXPECT_EQ("0 2 m <  Test value of 2 m", Both(eLESS_OR_EQUAL, eLESS, 2));
}

TEST(RangeTest, UpperToleranceFailedGivesItsPartAlone) {
  EXPECT_EQ("0 Test value of 9 m >= 8 m", Both(eGREATER, eLESS, 9));
  EXPECT_EQ("0 Test value of 5 m <= 8 m", Both(eGREATER, eGREATER, 5));
  EXPECT_EQ("0 Test value of 5 m < 8 m", Both(eGREATER_OR_EQUAL, eGREATER_OR_EQUAL, 5));
  EXPECT_EQ("0 Test value of 8 m > 8 m", Both(eGREATER, eLESS_OR_EQUAL, 8));
  EXPECT_EQ("0 Test value of 1 m <= 8 m", Both(eLESS, eGREATER, 1));
}

TEST(RangeTest, ToleranceIsConvertedToTheUnitOfTheValue) {
  Range range(Value(1, "Millimeter"), eGREATER, Value(2, "Inch"), eLESS);
  EXPECT_EQ("1 0.1 cm < Test value of 3 cm < 5.08 cm", Judge(range, Value(3, "Centimeter")));
  EXPECT_EQ("0 0.1 cm >=  Test value of 0.05 cm", Judge(range, Value(0.05, "Centimeter")));
  EXPECT_EQ("0 Test value of 6 cm >= 5.08 cm", Judge(range, Value(6, "Centimeter")));
  EXPECT_EQ("1 0.001 m < Test value of 0.02 m < 0.0508 m", Judge(range, Meters(0.02))) << "anew each time";
}

TEST(RangeTest, NumbersHaveSixDigits) {
  Range range(Value(1.0 / 3), eGREATER, Value(1e9), eLESS);
  EXPECT_EQ("1 0.333333 < Test value of 1.23457e+06 < 1e+09", Judge(range, Value(1234567.89)));
}

TEST(RangeTest, ToleranceOfOtherDimensionsIsAnError) {
  Range lower(Value(1, "Second"), eGREATER, Meters(8), eLESS);
  EXPECT_EQ("-1 Illegal unit conversion from \"Second\" to \"Meter\"", Judge(lower, Meters(5)));
  Range upper(Meters(2), eGREATER, Value(1, "Second"), eLESS);
  EXPECT_EQ("-1 Illegal unit conversion from \"Second\" to \"Meter\"", Judge(upper, Meters(5)));
  EXPECT_EQ("0 2 m >=  Test value of 1 m", Judge(upper, Meters(1))) << "the upper one isn't looked at";
  Range unused(Value(1, "Second"), eNONE, Meters(8), eLESS);
  EXPECT_EQ("1 Test value of 5 m < 8 m", Judge(unused, Meters(5)));
}

TEST(RangeTest, ErrorOfAConversionIsKeptInItsClass) {
  Range range(Value(1, "Second"), eGREATER, Value(), eNONE);
  Judge(range, Meters(5));
  std::vector<Result> results;
  range.GetResults(results);
  ASSERT_TRUE(results.front().GetFailure());
  EXPECT_EQ(typeid(Value::XNoUnitConversion), typeid(*results.front().GetFailure()));
}

TEST(RangeTest, ErrorOfTheMeasurementPassesOn) {
  Range range(Meters(2), eGREATER, Value(), eNONE);
  range.m_measure = [](Value&) { OXA_RAISE_ERROR("Test.Range", NullPointer("p_probe")); };
  EXPECT_EQ(Result::eERROR, range.RunTest());
  EXPECT_THAT(ResultsOf(range), ElementsAre("-1 Range: NULL pointer variable named p_probe"));
  range.m_measure = [](Value&) { OXA_TEST_ASSERT_MSG(false, "no light"); };
  EXPECT_EQ(Result::eFAILED, range.RunTest());
  EXPECT_THAT(ResultsOf(range), ElementsAre("0 Range: no light"));
}

TEST(RangeTest, ForeignExceptionOfTheMeasurementIsUnknown) {
  Range range(Meters(2), eGREATER, Value(), eNONE);
  range.m_measure = [](Value& value) {
    value = Meters(5);
    throw std::runtime_error("not told");
  };
  EXPECT_EQ(Result::eERROR, range.RunTest());
  EXPECT_THAT(ResultsOf(range), ElementsAre("-1 Range: Unknown exception"));
  EXPECT_EQ(1, range.m_iMeasured);
}

TEST(RangeTest, MeasurementMaySetTheTolerancesThatItIsHeldAgainst) {
  Range range(Meters(2), eGREATER, Value(), eNONE);
  range.m_measure = [&](Value& value) {
    range.SetLowerTolerance(Meters(6), eLESS);
    range.SetUpperTolerance(Meters(4), eGREATER);
    value = Meters(5);
  };
  range.RunTest();
  EXPECT_THAT(ResultsOf(range), ElementsAre("1 Range: 6 m > Test value of 5 m > 4 m"));
}

TEST(RangeTest, WhatIsNoNumberPassesNothing) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ("0 2 m >=  Test value of nan m", Lower(eGREATER, 2, nan));
  EXPECT_EQ("0 2 m <=  Test value of nan m", Lower(eLESS, 2, nan));
  EXPECT_EQ("0 Test value of nan m < 8 m", Upper(eGREATER_OR_EQUAL, 8, nan));
  EXPECT_EQ("0 Test value of nan m > 8 m", Upper(eLESS_OR_EQUAL, 8, nan));
  EXPECT_EQ("0 nan m >=  Test value of 1 m", Lower(eGREATER, nan, 1));
}

TEST(RangeTest, MeasurementThatFillsInNothingFails) {
  Range range(Value(-1), eGREATER, Value(1), eLESS);
  EXPECT_EQ(Result::eFAILED, range.RunTest());
  EXPECT_THAT(ResultsOf(range), ElementsAre("0 Range: -1 >=  Test value of nan"));
}

TEST(RangeTest, UnknownConditionPassesNothing) {
  const auto unknown = static_cast<RangeTest::ECondition>(5);
  EXPECT_EQ("0 2 m ?  Test value of 3 m", Lower(unknown, 2, 3));
  EXPECT_EQ("0 Test value of 3 m ? 8 m", Upper(unknown, 8, 3));
}

// Kelvin has the same factor as the scales and isn't converted to them; a scale goes by way of Kelvin even to itself.
TEST(RangeTest, Temperatures) {
  Range kelvin(Value(300, "Kelvin"), eGREATER, Value(), eNONE);
  EXPECT_EQ("0 300 C >=  Test value of 30 C", Judge(kelvin, Value(30, "Celsius")));
  Range celsius(Value(20, "Celsius"), eGREATER, Value(212, "Fahrenheit"), eLESS);
  EXPECT_EQ("1 20 C < Test value of 37 C < 100 C", Judge(celsius, Value(37, "Celsius")));
  Range tenth(Value(0.1, "Celsius"), eGREATER_OR_EQUAL, Value(), eNONE);
  EXPECT_EQ("0 0.1 C >  Test value of 0.1 C", Judge(tenth, Value(0.1, "Celsius")));
}

TEST(RangeTest, TolerancesCanBeReadAndSet) {
  Range range(Meters(2), eGREATER, Meters(8), eNONE);
  Value lower;
  Value upper;
  RangeTest::ECondition lowerCondition = eLESS;
  RangeTest::ECondition upperCondition = eLESS;
  range.GetTolerances(lower, lowerCondition, upper, upperCondition);
  EXPECT_EQ("2 m", lower.ToString());
  EXPECT_EQ("8 m", upper.ToString());
  EXPECT_EQ(eGREATER, lowerCondition);
  EXPECT_EQ(eNONE, upperCondition);
  EXPECT_TRUE(range.HasTolerances());

  range.SetLowerTolerance(Meters(3), eNONE);
  EXPECT_FALSE(range.HasTolerances());
  range.SetUpperTolerance(Meters(4), eLESS);
  EXPECT_TRUE(range.HasTolerances());
  range.GetTolerances(lower, lowerCondition, upper, upperCondition);
  EXPECT_EQ("3 m", lower.ToString());
  EXPECT_EQ("4 m", upper.ToString());
  EXPECT_EQ(eNONE, lowerCondition);
  EXPECT_EQ(eLESS, upperCondition);
  EXPECT_EQ("1 Test value of 3.5 m < 4 m", Judge(range, Meters(3.5)));
}

}  // namespace
