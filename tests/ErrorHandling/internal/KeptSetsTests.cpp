#include "ErrorHandling/KeptSets.h"

#include <gtest/gtest.h>
#include <boost/make_shared.hpp>

#include <cstdint>
#include <functional>
#include <string>

#include "Support/Allocations.h"

using namespace Oxa::Core;

namespace {

// Two slots, of which the keys 0 and 1 go to one each.
class KeptNumbers {
 public:
  KeptNumbers() = default;
  KeptNumbers(const KeptNumbers&) = delete;
  KeptNumbers& operator=(const KeptNumbers&) = delete;
  ~KeptNumbers() { m_sets.Forget(); }

  void Keep(std::uint64_t key, int number) {
    const auto isSame = [=](const Pointer& kept) { return *kept == number; };
    m_sets.Keep(key, isSame, [=] { return boost::make_shared<const int>(number); });
  }
  void KeepUpTo(int last, std::uint64_t key) {
    for (int number = 1; number <= last; ++number) Keep(key, number);
  }
  bool Has(std::uint64_t key, int number) {
    return m_sets.Find<bool>(key, [=](const Pointer& kept) { return *kept == number; });
  }
  std::string All(std::uint64_t key) {
    std::string all;
    for (int number = 1; number <= 20; ++number) {
      if (Has(key, number)) all += std::to_string(number) + " ";
    }
    return all;
  }
  void Forget() { m_sets.Forget(); }
  /// Calls `action` while the slot is in use.
  void Within(std::uint64_t key, const std::function<void()>& action) {
    m_sets.Find<bool>(key, [&](const Pointer&) {
      action();
      return true;
    });
  }

 private:
  using Pointer = boost::shared_ptr<const int>;

  KeptSets<int, 1> m_sets;
};

}  // namespace

TEST(KeptSets, WhatWasKeptLongestIsDrivenOut) {
  KeptNumbers numbers;
  EXPECT_EQ("", numbers.All(0));
  numbers.KeepUpTo(8, 0);
  EXPECT_EQ("1 2 3 4 5 6 7 8 ", numbers.All(0));
  numbers.Keep(0, 9);
  EXPECT_EQ("2 3 4 5 6 7 8 9 ", numbers.All(0));
  for (int number = 10; number <= 17; ++number) numbers.Keep(0, number);
  EXPECT_EQ("10 11 12 13 14 15 16 17 ", numbers.All(0));
}

TEST(KeptSets, WhatIsTheSameIsKeptOnce) {
  KeptNumbers numbers;
  numbers.KeepUpTo(8, 0);
  for (int time = 0; time < 8; ++time) numbers.Keep(0, 5);
  EXPECT_EQ("1 2 3 4 5 6 7 8 ", numbers.All(0));
}

TEST(KeptSets, SlotsHaveNothingToDoWithOneAnother) {
  KeptNumbers numbers;
  numbers.KeepUpTo(2, 0);
  numbers.KeepUpTo(9, 1);
  EXPECT_EQ("1 2 ", numbers.All(0));
  EXPECT_EQ("2 3 4 5 6 7 8 9 ", numbers.All(1));
  numbers.Forget();
  EXPECT_EQ("", numbers.All(0));
  EXPECT_EQ("", numbers.All(1));
}

// As on a thread whose slot another one holds, which may never let it go.
TEST(KeptSets, WhoFindsASlotInUseGoesWithout) {
  KeptNumbers numbers;
  numbers.KeepUpTo(2, 0);
  numbers.Within(0, [&] {
    EXPECT_FALSE(numbers.Has(0, 1));
    numbers.Keep(0, 3);
    numbers.Forget();
    numbers.Keep(1, 4);
  });
  EXPECT_EQ("1 2 ", numbers.All(0));
  EXPECT_EQ("4 ", numbers.All(1));
}

TEST(KeptSets, WithoutMemoryNothingIsKept) {
  for (unsigned long failing = 1;; ++failing) {
    KeptNumbers numbers;
    bool happened = true;
    {
      const TestSupport::FailAllocation fail(failing);
      numbers.Keep(0, 1);
      happened = fail.Happened();
    }
    EXPECT_EQ(happened ? "" : "1 ", numbers.All(0)) << failing;
    numbers.Keep(0, 1);
    EXPECT_EQ("1 ", numbers.All(0)) << failing;
    if (!happened) break;
    ASSERT_LT(failing, 10U);
  }
}

TEST(KeptSets, WhatIsLetGoMayUseTheSlot) {
  struct Thing {
    ~Thing() { m_gone(); }
    std::function<void()> m_gone;
  };
  using Things = KeptSets<Thing, 1>;
  Things things;
  int found = 0;
  int gone = 0;
  const auto count = [&] {
    ++gone;
    found += things.Find<bool>(0, [](const Things::Pointer&) { return true; }) ? 1 : 0;
  };
  const auto keep = [&] {
    things.Keep(
        0, [](const Things::Pointer&) { return false; },
        [&] {
          auto thing = boost::make_shared<Thing>();
          thing->m_gone = count;
          return thing;
        });
  };
  for (int time = 0; time < 10; ++time) keep();
  EXPECT_EQ(2, gone);
  EXPECT_EQ(2, found) << "the slot was free";
  things.Forget();
  EXPECT_EQ(10, gone);
  EXPECT_EQ(2, found) << "nothing was kept any more";
}

TEST(KeptSlot, WhoComesSecondLeavesWhatIsThere) {
  KeptSlot<int> slot;
  const auto kept = [&] { return slot.Find<int>([](int& number) { return number; }); };
  slot.Keep(new int(1));
  slot.Keep(new int(2));
  EXPECT_EQ(1, kept());
  slot.Forget();
  EXPECT_EQ(0, kept());
  slot.Keep(new int(3));
  EXPECT_EQ(3, kept());
  slot.Forget();
}
