#include "Ticks.h"

#include <gtest/gtest.h>

#include <limits>
#include <locale>

namespace {

using Oxa::Core::UnitizedValue;
using Station::CountTicks;
using Station::FigureText;
using Station::LinearTicks;
using Station::LogarithmicTicks;
using Station::Tick;

std::string Labels(const std::vector<Tick>& ticks) {
  std::string labels;
  for (const Tick& tick : ticks) labels += tick.m_sLabel + ' ';
  return labels;
}

TEST(Ticks, AreRound) {
  EXPECT_EQ("0 2 4 6 8 10 ", Labels(LinearTicks(0, 10, 5)));
  EXPECT_EQ("-4 -2 0 2 4 ", Labels(LinearTicks(-5, 5, 5)));
  EXPECT_EQ("0.1 0.2 0.3 0.4 0.5 ", Labels(LinearTicks(0.1, 0.55, 5)));
  EXPECT_EQ(0.3, LinearTicks(0.1, 0.55, 5)[2].m_dValue);
  EXPECT_EQ("0 5000 10000 ", Labels(LinearTicks(0, 14000, 4)));
}

TEST(Ticks, HaveNoNegativeZero) { EXPECT_EQ("0 0.2 0.4 ", Labels(LinearTicks(-0.05, 0.5, 5))); }

TEST(Ticks, HaveAsManyDigitsAsTellThemApart) {
  EXPECT_EQ("1234567 1234567.05 1234567.1 ", Labels(LinearTicks(1234567, 1234567.1, 5)));
  EXPECT_EQ("1000001 1000002 ", Labels(LinearTicks(1000000.5, 1000002.5, 2)));
}

TEST(Ticks, StandExtremes) {
  EXPECT_LE(LinearTicks(-1e200, 1e200, 5).size(), 6U);
  EXPECT_EQ("0 1e-250 ", Labels(LinearTicks(0, 1e-250, 5)));
  EXPECT_LE(LogarithmicTicks(1e-240, 1e240).size(), 7U);
  EXPECT_GE(LogarithmicTicks(1e-240, 1e240).size(), 4U);
}

TEST(Ticks, CountInWholeNumbers) {
  EXPECT_EQ("0 1 ", Labels(CountTicks(0, 4)));
  EXPECT_EQ("0 1 ", Labels(CountTicks(1, 4)));
  EXPECT_EQ("0 1 2 ", Labels(CountTicks(2, 4)));
  EXPECT_EQ("0 50 100 150 ", Labels(CountTicks(179, 4)));
  EXPECT_EQ("0 500000 1e+06 ", Labels(CountTicks(1000000, 2)));
}

TEST(Ticks, FollowALogarithmicAxis) {
  EXPECT_EQ("50 100 200 500 1000 ", Labels(LogarithmicTicks(39.8, 1258.9)));
  EXPECT_EQ("0.1 0.2 0.5 1 ", Labels(LogarithmicTicks(0.1, 1)));
  EXPECT_EQ("1 10 100 1000 ", Labels(LogarithmicTicks(1, 1000)));
  EXPECT_EQ("1e-06 0.001 1 1000 1e+06 1e+09 ", Labels(LogarithmicTicks(1e-6, 1e10)));
}

class CommaForPoint : public std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
};

TEST(Ticks, HaveTheSameTextInEveryLocale) {
  const std::locale before = std::locale::global(std::locale(std::locale(), new CommaForPoint));
  EXPECT_EQ("0.5", FigureText(0.5));
  EXPECT_EQ("0.5 \xB5sec", FigureText(UnitizedValue<double>(0.5, "Microsecond")));
  std::locale::global(before);
  EXPECT_EQ("1.23457e+06", FigureText(1234567.0));
  EXPECT_EQ("nan", FigureText(std::numeric_limits<double>::quiet_NaN()));
}

}  // namespace
