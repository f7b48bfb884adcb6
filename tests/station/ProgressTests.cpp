#include "Progress.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using Station::Progress;

TEST(Progress, ShowsNothingOffATerminal) {
  std::ostringstream out;
  {
    Progress progress(out, false);
    progress.Show("a", 1, 2);
    progress.Clear();
  }
  EXPECT_EQ("", out.str());
}

TEST(Progress, DrawsOneLineOnATerminalAndTakesItAway) {
  std::ostringstream out;
  Progress progress(out, true);
  progress.Show("fast", 17, 500);
  EXPECT_EQ("\r\033[Kfast: 17 of 500", out.str());
  progress.Clear();
  EXPECT_EQ("\r\033[Kfast: 17 of 500\r\033[K", out.str());
}

TEST(Progress, LeavesTheLineAloneIfItHasDrawnNothing) {
  std::ostringstream out;
  { const Progress progress(out, true); }
  EXPECT_EQ("", out.str());
}

TEST(Progress, TakesItsLineAwayAtTheEnd) {
  std::ostringstream out;
  { Progress(out, true).Show("a", 1, 2); }
  EXPECT_EQ("\r\033[Ka: 1 of 2\r\033[K", out.str());
}

}  // namespace
