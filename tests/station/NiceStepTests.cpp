#include "NiceStep.h"

#include <gtest/gtest.h>

namespace {

using Station::NiceStep;
using Station::NiceStepFor;

void ExpectStep(int digit, int exponent, double width) {
  const NiceStep step = NiceStepFor(width);
  EXPECT_EQ(digit, step.m_iDigit) << width;
  EXPECT_EQ(exponent, step.m_iExponent) << width;
}

TEST(NiceStep, IsTheNextOneUp) {
  ExpectStep(1, 0, 1);
  ExpectStep(2, 0, 1.001);
  ExpectStep(2, 0, 2);
  ExpectStep(5, 0, 2.001);
  ExpectStep(1, 1, 5.001);
  ExpectStep(1, 1, 10);
  ExpectStep(1, -1, 0.1);
  ExpectStep(5, -3, 0.0031);
  ExpectStep(2, 6, 1.5e6);
}

TEST(NiceStep, ForgivesARoundingError) {
  ExpectStep(2, -1, 0.1 + 0.1 + 1e-16);
  ExpectStep(1, 0, 0.1 * 3 / 0.3);
}

TEST(NiceStep, HasBounds) {
  ExpectStep(1, -250, 0);
  ExpectStep(1, -250, 5e-324);
  ExpectStep(1, 250, 1e300);
}

TEST(NiceStep, IsMultipliedAsADecimalFraction) {
  const NiceStep tenth{1, -1};
  EXPECT_EQ(0.3, tenth.Times(3));
  EXPECT_EQ(0.7, tenth.Times(7));
  EXPECT_EQ(-0.0015, (NiceStep{5, -4}.Times(-3)));
  EXPECT_EQ(6000, (NiceStep{2, 3}.Times(3)));
}

}  // namespace
