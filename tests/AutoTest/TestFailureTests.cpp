#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <functional>
#include <limits>
#include <type_traits>

#include "AutoTest/Fakes.h"

namespace {

using namespace AutoTestTests;

const CodeContext& Place() {
  static const CodeContext* const place =
      new CodeContext("rig.cpp", 42, "", "Rig::Check", "void Rig::Check()");
  return *place;
}

// The text of the SelfTest::Failure that `check` raises, after a look at the rest of it; "passed" without one.
std::string TextOf(const std::function<void()>& check) {
  try {
    check();
  } catch (const SelfTest::Failure& failure) {
    EXPECT_EQ("Oxa.Core.Test.Failure", failure.GetData(AlertInfo::sLOG_NAME));
    return failure.GetData(AlertInfo::sMESSAGE);
  }
  return "passed";
}

template <class... Numbers>
std::string Equals(Numbers... numbers) {
  return TextOf([=] { TestEquals(numbers..., Place()); });
}

constexpr double dNAN = std::numeric_limits<double>::quiet_NaN();
constexpr double dINFINITY = std::numeric_limits<double>::infinity();
constexpr float fNAN = std::numeric_limits<float>::quiet_NaN();

TEST(TestEquals, OfWholeNumbers) {
  EXPECT_EQ("passed", Equals(2, 2));
  EXPECT_EQ("expected: 1 but was: 2", Equals(1, 2));
  EXPECT_EQ("expected: -7 but was: 0", Equals(-7L, 0L));
}

TEST(TestEquals, OfWholeNumbersOfAllWidths) {
  EXPECT_EQ("expected: 9223372036854775807 but was: -9223372036854775808",
            Equals(std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min()));
  EXPECT_EQ("expected: 0 but was: 4294967296", Equals(0, std::int64_t{1} << 32))
      << "values that differ in their upper halves only";
  EXPECT_EQ("passed", Equals(true, 1));
}

// Cut to whole numbers these would be equal.
template <class Expected, class Actual, class = void>
struct IsCallable : std::false_type {};
template <class Expected, class Actual>
struct IsCallable<Expected, Actual,
                  std::void_t<decltype(TestEquals(Expected(), Actual(), std::declval<const CodeContext&>()))>>
    : std::true_type {};

TEST(TestEquals, RefusesFractionsWithoutADelta) {
  EXPECT_TRUE((IsCallable<int, long>::value));
  EXPECT_FALSE((IsCallable<double, double>::value));
  EXPECT_FALSE((IsCallable<int, double>::value));
  EXPECT_FALSE((IsCallable<float, int>::value));
}

TEST(TestEquals, OfDoublesFailsOnlyBeyondTheDelta) {
  EXPECT_EQ("passed", Equals(1.0, 1.5, 0.5));
  EXPECT_EQ("expected: 1 within a delta of: 0.5 but was: 1.6", Equals(1.0, 1.6, 0.5));
  EXPECT_EQ("passed", Equals(1.5, 1.0, 0.5));
  EXPECT_EQ("expected: 1.6 within a delta of: 0.5 but was: 1", Equals(1.6, 1.0, 0.5));
  EXPECT_EQ("passed", Equals(3.0, 3.0, 0.0));
  EXPECT_EQ("expected: 3 within a delta of: -1 but was: 3", Equals(3.0, 3.0, -1.0));
}

TEST(TestEquals, PrintsNumbersAsStreamsDo) {
  EXPECT_EQ("expected: 3.14159 within a delta of: 1e-06 but was: 1.23457e+08",
            Equals(3.14159265, 123456789.0, 0.000001));
  EXPECT_EQ("expected: 0.333333 within a delta of: 0.001 but was: 2", Equals(1.0F / 3.0F, 2.0F, 0.001F));
}

TEST(TestEquals, OfFloatsFailsOnlyBeyondTheDelta) {
  EXPECT_EQ("passed", Equals(1.0F, 1.5F, 0.5F));
  EXPECT_EQ("expected: 1 within a delta of: 0.5 but was: 1.75", Equals(1.0F, 1.75F, 0.5F));
}

// 16777216.75 apart, which is 16777216 as a float.
TEST(TestEquals, OfFloatsRoundsTheDifference) {
  EXPECT_EQ("passed", Equals(16777216.0F, -0.75F, 16777216.0F));
  EXPECT_EQ("expected: 1.67772e+07 within a delta of: 1.67772e+07 but was: -0.75",
            Equals(16777216.0, -0.75, 16777216.0));
}

TEST(TestEquals, DifferenceThatIsNoNumberPasses) {
  EXPECT_EQ("passed", Equals(dNAN, 1.0, 0.5));
  EXPECT_EQ("passed", Equals(1.0, dNAN, 0.5));
  EXPECT_EQ("passed", Equals(1.0, 2.0, dNAN));
  EXPECT_EQ("passed", Equals(fNAN, 1.0F, 0.5F));
  EXPECT_EQ("passed", Equals(dINFINITY, dINFINITY, 0.0));
  EXPECT_EQ("expected: inf within a delta of: 1 but was: -inf", Equals(dINFINITY, -dINFINITY, 1.0));
}

TEST(TestEquals, RaisesAtTheGivenPlace) {
  try {
    TestEquals(1, 2, Place());
    ADD_FAILURE();
  } catch (const SelfTest::Failure& failure) {
    const CodeContext& place = failure.GetUnwindStack()->front();
    EXPECT_EQ("rig.cpp", place.Get(CodeContext::sFILE));
    EXPECT_EQ("42", place.Get(CodeContext::sLINE));
    EXPECT_EQ("Rig::Check", place.Get(CodeContext::sFUNCTION));
  }
}

void CheckLevel(int level, int line[2]) {
  line[0] = __LINE__ + 1;
  OXA_TEST_ASSERT(level > 3 && level % 2 == 0);
}

TEST(TestMacros, AssertTellsTheSourceTextOfItsCondition) {
  int line[2] = {};
  EXPECT_EQ("passed", TextOf([&] { CheckLevel(4, line); }));
  EXPECT_EQ("level > 3 && level % 2 == 0", TextOf([&] { CheckLevel(2, line); }));
}

TEST(TestMacros, AssertRaisesAtItsPlace) {
  int line[2] = {};
  try {
    CheckLevel(1, line);
    ADD_FAILURE();
  } catch (const SelfTest::Failure& failure) {
    const CodeContext& place = failure.GetUnwindStack()->front();
    EXPECT_EQ(__FILE__, place.Get(CodeContext::sFILE));
    EXPECT_EQ(std::to_string(line[0]), place.Get(CodeContext::sLINE));
    EXPECT_EQ("{anonymous}::CheckLevel", place.Get(CodeContext::sFUNCTION));
  }
}

TEST(TestMacros, AssertTakesConditionsWithCommas) {
  EXPECT_EQ("(std::is_same_v<int, long>)", TextOf([] { OXA_TEST_ASSERT((std::is_same_v<int, long>)); }));
  EXPECT_EQ("std::is_same<int, long>::value",
            TextOf([] { OXA_TEST_ASSERT(std::is_same<int, long>::value); }));
}

TEST(TestMacros, AssertEvaluatesItsConditionOnce) {
  int evaluated = 0;
  OXA_TEST_ASSERT(++evaluated == 1);
  EXPECT_EQ(1, evaluated);
}

TEST(TestMacros, AssertWithATextOfItsOwn) {
  const auto unused = []() -> std::string {
    ADD_FAILURE() << "built without need";
    return "";
  };
  EXPECT_EQ("passed", TextOf([&] { OXA_TEST_ASSERT_MSG(1 < 2, unused()); }));
  EXPECT_EQ("100 % wrong", TextOf([] { OXA_TEST_ASSERT_MSG(2 < 1, "100 % wrong"); }));
}

TEST(TestMacros, Equals) {
  EXPECT_EQ("passed", TextOf([] { OXA_TEST_EQUALS(2, 1 + 1); }));
  EXPECT_EQ("expected: 1 but was: 2", TextOf([] { OXA_TEST_EQUALS(1, 1 + 1); }));
  EXPECT_EQ("passed", TextOf([] { OXA_TEST_EQUALS_DELTA(1.0, 1.5, 0.5); }));
  EXPECT_EQ("expected: 1 within a delta of: 0.5 but was: 1.6",
            TextOf([] { OXA_TEST_EQUALS_DELTA(1.0, 1.6, 0.5); }));
}

TEST(TestMacros, EqualsRaisesAtItsPlace) {
  const int line = __LINE__ + 2;
  try {
    OXA_TEST_EQUALS(1, 2);
    ADD_FAILURE();
  } catch (const SelfTest::Failure& failure) {
    EXPECT_EQ(std::to_string(line), failure.GetUnwindStack()->front().Get(CodeContext::sLINE));
  }
}

}  // namespace
