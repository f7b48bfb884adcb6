#include "Platform/Processes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include "Platform/Machine.h"

namespace Platform = Oxa::Core::Platform;

namespace {

constexpr std::size_t uALL = std::numeric_limits<std::size_t>::max();

unsigned int OwnId() { return static_cast<unsigned int>(Platform::ProcessId()); }

}  // namespace

TEST(Processes, TheListHoldsThisProcessAndIsSorted) {
  ASSERT_EQ(0, Platform::FindProcessList());
  std::vector<unsigned int> ids{0};
  ASSERT_EQ(0, Platform::ListProcesses(uALL, ids));
  EXPECT_THAT(ids, testing::Contains(OwnId()));
  EXPECT_THAT(ids, testing::Not(testing::Contains(0u)));
  EXPECT_TRUE(std::is_sorted(ids.begin(), ids.end()));
  EXPECT_EQ(ids.end(), std::adjacent_find(ids.begin(), ids.end()));
}

TEST(Processes, NoMoreAreListedThanAskedFor) {
  std::vector<unsigned int> ids;
  ASSERT_EQ(0, Platform::ListProcesses(1, ids));
  EXPECT_EQ(1u, ids.size());
  ASSERT_EQ(0, Platform::ListProcesses(0, ids));
  EXPECT_TRUE(ids.empty());
}

TEST(Processes, ThisProcessRunsItsProgramAndLibraries) {
  std::string program;
  std::vector<std::string> modules;
  Platform::AllowLookingIntoProcesses();
  ASSERT_EQ(0, Platform::LookIntoProcess(OwnId(), program, modules));
  std::string own;
  ASSERT_EQ(0, Platform::ExecutablePath(own));
  EXPECT_EQ(own, program);
  EXPECT_FALSE(modules.empty());
  EXPECT_THAT(modules, testing::Not(testing::Contains(program)));
  EXPECT_THAT(modules, testing::Each(testing::Not(testing::IsEmpty())));
  std::sort(modules.begin(), modules.end());
  EXPECT_EQ(modules.end(), std::adjacent_find(modules.begin(), modules.end()));
}

TEST(Processes, WhatIsNoProcessLeavesEverything) {
  for (const unsigned int id : {0u, 4294967295u}) {
    std::string program = "untouched";
    std::vector<std::string> modules{"untouched"};
    EXPECT_NE(0, Platform::LookIntoProcess(id, program, modules)) << id;
    EXPECT_EQ("untouched", program);
    EXPECT_EQ(std::vector<std::string>{"untouched"}, modules);
  }
}
