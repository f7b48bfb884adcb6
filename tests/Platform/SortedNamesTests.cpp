#include "Platform/SortedNames.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

using Oxa::Core::Platform::SortedNames;

namespace {

using Names = std::vector<std::string>;

Names Sorted(const Names& names, Names before = {}) {
  SortedNames sorted;
  for (const std::string& name : names) sorted.Add(name.c_str());
  sorted.AppendTo(before);
  return before;
}

TEST(SortedNames, ComeBehindTheNamesThatAreThere) {
  EXPECT_EQ((Names{"z", "y", "a", "b"}), Sorted({"b", "a"}, {"z", "y"}));
  EXPECT_EQ(Names{"z"}, Sorted({}, {"z"}));
  EXPECT_EQ((Names{"a", "a"}), Sorted({"a", "a"}));
}

TEST(SortedNames, TheDotsFindTheirPlacesAmongTheOthers) {
  EXPECT_EQ((Names{".", ".."}), Sorted({"..", "."}));
  EXPECT_EQ((Names{"!", ".", ".!", "..", ".....", "..a", ".a", "a"}),
            Sorted({"..", "a", ".a", ".", "!", "..a", ".!", "....."}));
}

TEST(SortedNames, MayBeginWithAnyNumberOfEqualBytes) {
  for (std::size_t length = 0; length < 40; ++length) {
    const std::string start(length, 'n');
    EXPECT_EQ(
        (Names{start + "1", start + "10000000", start + "100000001", start + "100000002", start + "2"}),
        Sorted({start + "2", start + "100000002", start + "10000000", start + "1", start + "100000001"}));
  }
}

TEST(SortedNames, BytesHaveNoSign) {
  EXPECT_EQ((Names{"a", "\x7f", "\x80", "\xff"}), Sorted({"\xff", "\x80", "\x7f", "a"}));
}

TEST(SortedNames, AnyNamesAreSortedAsTextsAre) {
  std::mt19937 random(7);
  const auto roll = [&random](std::size_t sides) { return random() % sides; };
  for (int round = 0; round < 3000; ++round) {
    const std::string start(roll(3) * 7, 'x');
    Names names;
    for (std::size_t count = roll(30); count > 0; --count) {
      std::string name = roll(8) != 0 ? start : std::string();
      for (std::size_t length = 1 + roll(14); length > 0; --length) name += ".a\xe4"[roll(3)];
      names.push_back(name);
    }
    Names expected = names;
    std::sort(expected.begin(), expected.end());
    ASSERT_EQ(expected, Sorted(names)) << round;
  }
}

// One name that differs early from all others leaves these together at first.
TEST(SortedNames, ManyNamesAreSortedWhereverTheyDiffer) {
  for (const char* const other : {"", "a", "series_", "series_0x", "\xff"}) {
    Names names;
    for (int i = 0; i < 3000; ++i) names.push_back("series_0" + std::to_string(i * 7919 % 3000) + ".xml");
    names.insert(names.begin() + 1000, other);
    Names expected = names;
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(expected, Sorted(names)) << other;
  }
}

}  // namespace
