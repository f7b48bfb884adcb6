// Stands in for the comparison with UDUNITS-2 where that isn't installed, so that its absence is seen.
#include <gtest/gtest.h>

namespace {

TEST(UnitsOfTheWorld, AreComparedWhereUdunitsIsInstalled) {
  GTEST_SKIP()
      << "No figure was compared with the world's: install the package libudunits2-dev and configure again.";
}

}  // namespace
