#include <Infrastructure/OxaCore/BadPixel.h>

#include <gtest/gtest.h>

#include <cmath>
#include <type_traits>

using namespace Oxa::Core;

namespace {

static_assert(std::is_base_of_v<LogicError, NoBadPixelValue>);
static_assert(std::is_same_v<char, decltype(BadPixel<char>::Value())>);
static_assert(std::is_same_v<unsigned char, decltype(BadPixel<unsigned char>::Value())>);
static_assert(std::is_same_v<short, decltype(BadPixel<short>::Value())>);
static_assert(std::is_same_v<int, decltype(BadPixel<int>::Value())>);
static_assert(std::is_same_v<long, decltype(BadPixel<long>::Value())>);
static_assert(std::is_same_v<float, decltype(BadPixel<float>::Value())>);
static_assert(std::is_same_v<double, decltype(BadPixel<double>::Value())>);

// What a picture is compared with, one pixel at a time.
static_assert(BadPixel<short>::Value() == 32767);

TEST(BadPixelTest, WholeNumbersHaveTheirExtremes) {
  EXPECT_EQ(static_cast<char>(-128), BadPixel<char>::Value());
  EXPECT_EQ(255, BadPixel<unsigned char>::Value());
  EXPECT_EQ(32767, BadPixel<short>::Value());
  EXPECT_EQ(0x7fffffffL, BadPixel<long>::Value());
}

TEST(BadPixelTest, FloatingNumbersHaveTwoToThePower127) {
  EXPECT_EQ(std::ldexp(1.0F, 127), BadPixel<float>::Value());
  EXPECT_EQ(std::ldexp(1.0, 127), BadPixel<double>::Value());
  EXPECT_EQ(1.7014118e38F, BadPixel<float>::Value());
  EXPECT_EQ(1.7014118346046923e38, BadPixel<double>::Value());
}

TEST(BadPixelTest, AMarkSurvivesTheStepFromFloatToDouble) {
  EXPECT_EQ(BadPixel<double>::Value(), static_cast<double>(BadPixel<float>::Value()));
}

TEST(BadPixelTest, AllButIntReturn) {
  EXPECT_NO_THROW(BadPixel<char>::Value());
  EXPECT_NO_THROW(BadPixel<unsigned char>::Value());
  EXPECT_NO_THROW(BadPixel<short>::Value());
  EXPECT_NO_THROW(BadPixel<long>::Value());
  EXPECT_NO_THROW(BadPixel<float>::Value());
  EXPECT_NO_THROW(BadPixel<double>::Value());
}

TEST(BadPixelTest, IntRaises) {
  bool raised = false;
  try {
    BadPixel<int>::Value();
  } catch (NoBadPixelValue& error) {
    raised = true;
    EXPECT_EQ("No bad pixel value for this type", error.GetData(AlertInfo::sMESSAGE));
    EXPECT_EQ("Oxa.Core.BadPixel", error.GetData(AlertInfo::sLOG_NAME));
    EXPECT_EQ("Logic", error.GetData(AlertInfo::sCATEGORY));
    EXPECT_EQ(AlertInfo::eERROR, error.GetSeverity());
  }
  EXPECT_TRUE(raised);
}

TEST(BadPixelTest, IntRaisesEachTime) {
  for (int round = 0; round < 3; ++round) EXPECT_THROW(BadPixel<int>::Value(), LogicError);
}

}  // namespace
