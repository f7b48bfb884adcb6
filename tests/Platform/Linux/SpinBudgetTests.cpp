#include <gtest/gtest.h>
#include <sched.h>
#include <stdlib.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>

#include "Platform/Threads.h"

namespace {

using namespace Oxa::Core::Platform;

constexpr long long llWHOLE = 50000;

bool SeveralProcessors() {
  cpu_set_t set;
  return sched_getaffinity(0, sizeof(set), &set) == 0 && CPU_COUNT(&set) > 1;
}

// Misses until a wait may not spin any more. Gives how long the spins were in all.
long long WearOut(SpinBudget& budget) {
  long long spun = 0;
  while (const long long given = budget.Next()) {
    spun += given;
    budget.Missed();
  }
  return spun;
}

int RefusalsUntilProbe(SpinBudget& budget) {
  int refusals = 0;
  while (budget.Next() == 0) ++refusals;
  return refusals;
}

TEST(SpinBudget, IsSmallAtFirstAndSoonGoneInVain) {
  if (!SeveralProcessors()) GTEST_SKIP() << "There is one processor.";
  SpinBudget budget;
  const long long spun = WearOut(budget);
  EXPECT_GT(spun, 0);
  EXPECT_LT(spun, llWHOLE / 2);
}

TEST(SpinBudget, IsHalvedWhenMissesComeInARowOnly) {
  if (!SeveralProcessors()) GTEST_SKIP() << "There is one processor.";
  SpinBudget budget;
  budget.Hit(llWHOLE);
  for (int round = 0; round < 10; ++round) {
    budget.Missed();
    budget.Missed();
    budget.Hit(10);
  }
  EXPECT_EQ(budget.Next(), llWHOLE);
  for (int miss = 0; miss < 4; ++miss) budget.Missed();
  EXPECT_EQ(budget.Next(), llWHOLE / 2);
}

TEST(SpinBudget, GrowsWithEachHitToTheWhole) {
  if (!SeveralProcessors()) GTEST_SKIP() << "There is one processor.";
  SpinBudget budget;
  const long long first = budget.Next();
  budget.Hit(10);
  EXPECT_EQ(budget.Next(), 2 * first);
  budget.Hit(3 * first);
  EXPECT_EQ(budget.Next(), 6 * first);
  for (int hit = 0; hit < 10; ++hit) budget.Hit(10);
  EXPECT_EQ(budget.Next(), llWHOLE);
}

TEST(SpinBudget, ProbesEverMoreSeldomUntilAHit) {
  if (!SeveralProcessors()) GTEST_SKIP() << "There is one processor.";
  SpinBudget budget;
  WearOut(budget);
  const int first = RefusalsUntilProbe(budget);
  budget.Missed();
  EXPECT_GT(RefusalsUntilProbe(budget), first + first / 2);
  for (int probe = 0; probe < 100; ++probe) {
    budget.Missed();
    EXPECT_LE(RefusalsUntilProbe(budget), 4096);
  }
  budget.Hit(10);
  WearOut(budget);
  EXPECT_LE(RefusalsUntilProbe(budget), first);
}

TEST(SpinBudget, AWaitWhoseTimeIsOverTeachesNothing) {
  if (!SeveralProcessors()) GTEST_SKIP() << "There is one processor.";
  SpinBudget budget;
  const long long first = budget.Next();
  for (int poll = 0; poll < 100; ++poll)
    EXPECT_FALSE(SpinBeforeSleep(budget, Deadline::In(0), [] { return true; }));
  EXPECT_EQ(budget.Next(), first);
}

TEST(SpinBudget, APassOfTheProcessorIsNoHitAndNoMissWhereSpinsPay) {
  if (!SeveralProcessors()) GTEST_SKIP() << "There is one processor.";
  SpinBudget budget;
  budget.Hit(llWHOLE);
  for (int pass = 0; pass < 100; ++pass) budget.Yielded();
  EXPECT_EQ(budget.Next(), llWHOLE);
  WearOut(budget);
  const int first = RefusalsUntilProbe(budget);
  budget.Yielded();
  EXPECT_GT(RefusalsUntilProbe(budget), first + first / 2);
}

// Both threads on one processor: who spins must let the other one run, or it spins in vain.
TEST(SpinBudget, ASpinLetsTheThreadRunThatItWaitsFor) {
  if (!SeveralProcessors()) GTEST_SKIP() << "There is one processor.";
  int paid = 0;
  std::thread([&paid] {
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(sched_getcpu(), &set);
    ASSERT_EQ(sched_setaffinity(0, sizeof(set), &set), 0);  // of this thread and the next one
    std::atomic<int> asked{0};
    std::atomic<int> answered{0};
    std::thread other([&] {
      while (asked >= 0) {
        answered = asked.load();
        sched_yield();
      }
    });
    for (int round = 1; round <= 1000; ++round) {
      SpinBudget budget;
      budget.Hit(llWHOLE);
      asked = round;
      paid += SpinBeforeSleep(budget, Deadline::Never(), [&] { return answered == round; });
    }
    asked = -1;
    other.join();
  }).join();
  EXPECT_GT(paid, 500);
}

// Run by the next one.
TEST(SpinBudget, DISABLED_HasNothing) {
  SpinBudget budget;
  for (int time = 0; time < 10000; ++time) {
    ASSERT_EQ(budget.Next(), 0);
    budget.Hit(10);
  }
}

TEST(SpinBudget, IsNothingInAProcessOnOneProcessor) {
  const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
  int status = -1;
  std::thread([&] {
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(sched_getcpu(), &set);
    ASSERT_EQ(sched_setaffinity(0, sizeof(set), &set), 0);
    status = system(
        ("'" + self + "' --gtest_also_run_disabled_tests --gtest_filter=SpinBudget.DISABLED_HasNothing")
            .c_str());
  }).join();
  EXPECT_EQ(status, 0);
}

}  // namespace
