#include "Progress.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <sstream>

namespace {

using Station::Progress;

TEST(Progress, ShowsNothingOffATerminal) {
  std::ostringstream out;
  {
    Progress progress(out, false);
    progress.Show(1, 2);
    progress.Clear();
  }
  EXPECT_EQ("", out.str());
}

TEST(Progress, DrawsOneLineOnATerminalAndTakesItAway) {
  std::ostringstream out;
  Progress progress(out, true);
  progress.Show(17, 500);
  EXPECT_EQ("\r\033[K17 of 500 samples", out.str());
  progress.Clear();
  EXPECT_EQ("\r\033[K17 of 500 samples\r\033[K", out.str());
}

TEST(Progress, DrawsAtOnceWhenItsLineWasTakenAway) {
  std::ostringstream out;
  Progress progress(out, true);
  progress.Show(8, 9);
  progress.Clear();
  progress.Show(9, 9);
  EXPECT_EQ("\r\033[K8 of 9 samples\r\033[K\r\033[K9 of 9 samples", out.str());
}

TEST(Progress, DrawsAtMostTenTimesASecond) {
  const auto start = std::chrono::steady_clock::now();
  std::ostringstream out;
  Progress progress(out, true);
  for (unsigned long i = 0; i < 1000; ++i) progress.Show(i, 1000);
  const auto tenths = (std::chrono::steady_clock::now() - start) / std::chrono::milliseconds(100);
  const std::string drawn = out.str();
  EXPECT_LE(std::count(drawn.begin(), drawn.end(), '\r'), tenths + 1);
}

TEST(Progress, LeavesTheLineAloneIfItHasDrawnNothing) {
  std::ostringstream out;
  { const Progress progress(out, true); }
  EXPECT_EQ("", out.str());
}

TEST(Progress, TakesItsLineAwayAtTheEnd) {
  std::ostringstream out;
  { Progress(out, true).Show(1, 2); }
  EXPECT_EQ("\r\033[K1 of 2 samples\r\033[K", out.str());
}

}  // namespace
