#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/EnumeratedSet.h>

#include <gtest/gtest.h>

#include <unistd.h>

#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Core/LibraryState.h"
#include "Support/Allocations.h"

namespace {

using namespace Oxa::Core;
using GraphAlgo::EnumeratedSet;

EnumeratedSet<std::string> Letters() {
  EnumeratedSet<std::string> set;
  for (const char* letter : {"c", "a", "b"}) set[letter];
  return set;
}

std::vector<std::string> ItemsOf(const EnumeratedSet<std::string>& set) {
  std::vector<std::string> items;
  for (unsigned index = 0; index < set.GetItemCount(); ++index) items.push_back(set.LookupByInt(index));
  return items;
}

TEST(EnumeratedSet, CountsByFirstAppearance) {
  EnumeratedSet<std::string> set;
  EXPECT_EQ(0u, set.GetItemCount());
  EXPECT_EQ(0u, set["second in order"]);
  EXPECT_EQ(1u, set.LookupOrAdd("first in order"));
  EXPECT_EQ(2u, set.GetItemCount());
  EXPECT_EQ("second in order", set.LookupByInt(0));
  EXPECT_EQ("first in order", set.LookupByInt(1));
  EXPECT_EQ(0u, set.LookupOrAdd("second in order"));
  EXPECT_EQ(1u, set["first in order"]);
  EXPECT_EQ(2u, set.GetItemCount());
}

TEST(EnumeratedSet, LooksUpWithoutAdding) {
  const EnumeratedSet<std::string> set = Letters();
  EXPECT_TRUE(set.IsItem("a"));
  EXPECT_FALSE(set.IsItem("d"));
  unsigned index = 77;
  EXPECT_FALSE(set.LookupNoAdd("d", index));
  EXPECT_EQ(77u, index);
  EXPECT_TRUE(set.LookupNoAdd("b", index));
  EXPECT_EQ(2u, index);
  EXPECT_EQ(3u, set.GetItemCount());
}

TEST(EnumeratedSet, RaisesForAnIndexThatIsNotThere) {
  const EnumeratedSet<std::string> set = Letters();
  for (const unsigned index : {3u, 4294967295u}) {
    try {
      set.LookupByInt(index);
      FAIL() << "nothing was raised";
    } catch (IndexOutOfBounds& error) {
      EXPECT_EQ("Out of bounds index of " + std::to_string(index) + " for EnumeratedSet with size of 3",
                error.GetData(AlertInfo::sMESSAGE));
      EXPECT_EQ("Oxa.Core.GraphAlgo", error.GetData(AlertInfo::sLOG_NAME));
    }
  }
  EXPECT_THROW(EnumeratedSet<int>().LookupByInt(0), IndexOutOfBounds);
}

TEST(EnumeratedSet, ItemsStayWhereTheyAre) {
  EnumeratedSet<std::string> set;
  set["first"];
  const std::string* const first = &set.LookupByInt(0);
  for (int number = 0; number < 1000; ++number) EXPECT_EQ(unsigned(number + 1), set[std::to_string(number)]);
  EXPECT_EQ(first, &set.LookupByInt(0));
  EXPECT_EQ("first", *first);
}

TEST(EnumeratedSet, ACopyHoldsItemsOfItsOwn) {
  EnumeratedSet<std::string> copy;
  copy["gone"];
  {
    const EnumeratedSet<std::string> original = Letters();
    copy = original;
    EXPECT_NE(&original.LookupByInt(0), &copy.LookupByInt(0));
  }
  EXPECT_EQ((std::vector<std::string>{"c", "a", "b"}), ItemsOf(copy));
  EXPECT_EQ(3u, copy["gone"]);
  EnumeratedSet<std::string> second(copy);
  EXPECT_EQ(4u, second["more"]);
  EXPECT_FALSE(copy.IsItem("more"));
  EXPECT_EQ((std::vector<std::string>{"c", "a", "b", "gone", "more"}), ItemsOf(second));
  EnumeratedSet<std::string>& itself = second;
  second = itself;
  EXPECT_EQ((std::vector<std::string>{"c", "a", "b", "gone", "more"}), ItemsOf(second));
}

TEST(EnumeratedSet, AMoveTakesTheItemsAlong) {
  EnumeratedSet<std::string> from = Letters();
  const std::string* const first = &from.LookupByInt(0);
  EnumeratedSet<std::string> to(std::move(from));
  EXPECT_EQ(first, &to.LookupByInt(0));
  EXPECT_EQ(0u, from.GetItemCount());  // promised: NOLINT
  EXPECT_EQ(0u, from["anew"]);
  from = std::move(to);
  EXPECT_EQ((std::vector<std::string>{"c", "a", "b"}), ItemsOf(from));
}

// An item that only has an order; a copy fails when it is told to.
struct Fragile {
  explicit Fragile(int value) : m_iValue(value) {}
  Fragile(const Fragile& other) : m_iValue(other.m_iValue) {
    if (m_iValue < 0) throw std::runtime_error("no copy");
  }
  Fragile& operator=(const Fragile&) = delete;
  bool operator<(const Fragile& other) const { return m_iValue < other.m_iValue; }
  int m_iValue;
};

TEST(EnumeratedSet, TakesAnyItemWithAnOrder) {
  EnumeratedSet<Fragile> set;
  EXPECT_EQ(0u, set[Fragile(9)]);
  EXPECT_EQ(1u, set[Fragile(3)]);
  EXPECT_THROW(set[Fragile(-1)], std::runtime_error);
  EXPECT_EQ(2u, set.GetItemCount());
  EXPECT_FALSE(set.IsItem(Fragile(-1)));
  EXPECT_EQ(2u, set[Fragile(1)]);
  EXPECT_EQ(3, set.LookupByInt(1).m_iValue);
  EXPECT_THROW(set.LookupByInt(3), IndexOutOfBounds);
}

TEST(EnumeratedSet, AKnownItemIsNotCopied) {
  EnumeratedSet<Fragile> set;
  Fragile item(7);
  set[item];
  const unsigned long before = TestSupport::ThreadAllocations().m_ulCount;
  EXPECT_EQ(0u, set[item]);
  EXPECT_EQ(before, TestSupport::ThreadAllocations().m_ulCount);
}

// Whether an item is added though the `number`th allocation from now on fails.
bool AddsWithout(unsigned long number, EnumeratedSet<std::string>& set, const std::string& item) {
  const TestSupport::FailAllocation fail(number);
  try {
    set.LookupOrAdd(item);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

// Every allocation of every addition fails once.
TEST(EnumeratedSet, StaysAsItWasWithoutMemory) {
  EnumeratedSet<std::string> set;
  unsigned failures = 0;
  for (unsigned number = 0; number < 40; ++number) {
    const std::string item = std::string(50, 'x') + std::to_string(number * 7 % 40);
    for (unsigned long failing = 1; !AddsWithout(failing, set, item); ++failing) {
      ++failures;
      ASSERT_EQ(number, set.GetItemCount());
      ASSERT_FALSE(set.IsItem(item));
    }
    ASSERT_EQ(item, set.LookupByInt(number));
    ASSERT_EQ(number + 1, set.GetItemCount());
  }
  EXPECT_GE(failures, 80u);
}

// There is no way back from unloading, where raises return: a child goes it.
TEST(EnumeratedSet, GivesADefaultItemWhereTheRaiseReturns) {
  EXPECT_EXIT(
      {
        SetLibraryUnloading();
        EXPECT_EQ("", Letters().LookupByInt(3));
        EXPECT_THROW(EnumeratedSet<Fragile>().LookupByInt(0), std::out_of_range);
        ::_exit(testing::Test::HasFailure() ? 1 : 0);
      },
      testing::ExitedWithCode(0), "Out of bounds index of 3 for EnumeratedSet");
}

}  // namespace
