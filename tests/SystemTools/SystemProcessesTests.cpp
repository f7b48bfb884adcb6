#include <Infrastructure/OxaCore/SystemLibrary.h>
#include <Infrastructure/OxaCore/SystemProcesses.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string>
#include <vector>

#include "Support/BackgroundChild.h"
#include "Support/Eventually.h"
#include "Support/TemporaryFolder.h"

using namespace Oxa::Core;
using testing::Contains;
using testing::Not;
using TestSupport::BackgroundChild;
using TestSupport::Eventually;

namespace {

const char* const sSYSTEM_LIBRARY = "libc.so.6";

unsigned int OwnPID() { return static_cast<unsigned int>(getpid()); }

std::string OwnProgram() { return std::filesystem::read_symlink("/proc/self/exe").filename().string(); }

std::vector<unsigned int> LoadingPIDs(const SystemProcesses& processes, const std::string& module) {
  std::vector<unsigned int> pids;
  if (const SystemProcesses::ModuleInfo* info = processes.GetModuleInfo(module)) info->GetLoadingPIDs(pids);
  return pids;
}

std::size_t ProcessesOnThisMachine() {
  std::size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc"))
    count += std::isdigit(static_cast<unsigned char>(entry.path().filename().string()[0])) != 0 ? 1 : 0;
  return count;
}

// A picture holds no more than 1024 processes, those with the lowest ids.
class SystemProcessesTest : public testing::Test {
 protected:
  void SetUp() override {
    if (ProcessesOnThisMachine() > 1000) GTEST_SKIP() << "this process may be one that isn't seen";
  }
};

}  // namespace

TEST_F(SystemProcessesTest, TheCurrentProcessGivesItsExecutable) {
  const SystemProcesses processes;
  const SystemProcesses::ProcessInfo* info = processes.GetProcessInfo(OwnPID());
  ASSERT_NE(nullptr, info);
  EXPECT_EQ(OwnPID(), info->GetPID());
  EXPECT_EQ(OwnProgram(), info->GetName());
}

TEST_F(SystemProcessesTest, ProcessesAreFoundByTheNameOfTheirProgram) {
  const SystemProcesses processes;
  std::vector<const SystemProcesses::ProcessInfo*> found(3, nullptr);
  const int count = processes.GetProcessInfo(OwnProgram(), found);
  EXPECT_EQ(static_cast<std::size_t>(count), found.size());
  EXPECT_THAT(found, Contains(processes.GetProcessInfo(OwnPID())));
  for (const auto* info : found) EXPECT_EQ(OwnProgram(), info->GetName());
  EXPECT_EQ(0, processes.GetProcessInfo("no such program", found));
  EXPECT_TRUE(found.empty());
}

TEST_F(SystemProcessesTest, UnknownIdsAndNamesAreNull) {
  const SystemProcesses processes;
  EXPECT_EQ(nullptr, processes.GetProcessInfo(0u));
  EXPECT_EQ(nullptr, processes.GetProcessInfo(4294967295u));
  EXPECT_EQ(nullptr, processes.GetModuleInfo("no such module"));
  EXPECT_EQ(nullptr, processes.GetModuleInfo(""));
}

TEST_F(SystemProcessesTest, TheListHoldsEachProcessOnceInTheOrderOfIds) {
  const SystemProcesses processes;
  std::vector<unsigned int> pids;
  for (const SystemProcesses::ProcessInfo& info : processes.GetProcessInfos()) {
    pids.push_back(info.GetPID());
    EXPECT_EQ(&info, processes.GetProcessInfo(info.GetPID()));
  }
  EXPECT_TRUE(std::is_sorted(pids.begin(), pids.end()));
  EXPECT_EQ(pids.end(), std::adjacent_find(pids.begin(), pids.end()));
  EXPECT_THAT(pids, Contains(OwnPID()));
}

TEST_F(SystemProcessesTest, UpdateShowsWhatBeganAndWhatEnded) {
  SystemProcesses processes;
  unsigned int pid = 0;
  {
    BackgroundChild child({"/bin/sleep", "1000"});
    pid = static_cast<unsigned int>(child.Id());
    EXPECT_EQ(nullptr, processes.GetProcessInfo(pid)) << "a picture is of its moment";
    // Until the child is under way it still runs a copy of this program.
    const std::string sleeper = std::filesystem::canonical("/bin/sleep").filename().string();
    EXPECT_TRUE(Eventually([&] {
      if (!processes.Update()) return false;
      const SystemProcesses::ProcessInfo* info = processes.GetProcessInfo(pid);
      return info != nullptr && info->GetName() == sleeper;
    }));
  }
  EXPECT_NE(nullptr, processes.GetProcessInfo(pid)) << "the picture stays";
  EXPECT_TRUE(processes.Update());
  EXPECT_EQ(nullptr, processes.GetProcessInfo(pid));
}

TEST_F(SystemProcessesTest, ASystemLibraryIsLoadedByTheCurrentProcess) {
  const SystemProcesses processes;
  const SystemProcesses::ModuleInfo* module = processes.GetModuleInfo(sSYSTEM_LIBRARY);
  ASSERT_NE(nullptr, module);
  EXPECT_EQ(sSYSTEM_LIBRARY, module->GetName());
  std::vector<unsigned int> pids(2, 0);
  const int count = module->GetLoadingPIDs(pids);
  EXPECT_EQ(static_cast<std::size_t>(count), pids.size());
  EXPECT_THAT(pids, Contains(OwnPID()));
  EXPECT_TRUE(std::is_sorted(pids.begin(), pids.end()));
}

TEST_F(SystemProcessesTest, ProgramsAreNoModules) {
  const SystemProcesses processes;
  EXPECT_EQ(nullptr, processes.GetModuleInfo(OwnProgram()));
}

TEST_F(SystemProcessesTest, APathLimitsTheResult) {
  const TestSupport::TemporaryFolder folder;
  const std::string copy = folder.File(PLUGIN_NAME);
  std::filesystem::copy_file(PLUGIN, copy);
  const boost::shared_ptr<SystemLibrary> library = SystemLibrary::Load(PathName(copy));
  ASSERT_TRUE(library);
  const SystemProcesses processes;
  const SystemProcesses::ModuleInfo* module = processes.GetModuleInfo(PLUGIN_NAME);
  ASSERT_NE(nullptr, module);
  std::vector<unsigned int> pids;
  EXPECT_EQ(1, module->GetLoadingPIDs(std::filesystem::canonical(copy).string(), pids));
  EXPECT_EQ(std::vector<unsigned int>{OwnPID()}, pids);
  EXPECT_EQ(0, module->GetLoadingPIDs("/nowhere/" PLUGIN_NAME, pids));
  EXPECT_TRUE(pids.empty());
  EXPECT_EQ(0, module->GetLoadingPIDs(PLUGIN_NAME, pids)) << "the name is no path";
}

TEST_F(SystemProcessesTest, AModuleShowsWhileItIsLoaded) {
  SystemProcesses processes;
  EXPECT_THAT(LoadingPIDs(processes, PLUGIN_NAME), Not(Contains(OwnPID())));
  {
    const boost::shared_ptr<SystemLibrary> library = SystemLibrary::Load(PathName(PLUGIN));
    EXPECT_TRUE(processes.Update());
    EXPECT_THAT(LoadingPIDs(processes, PLUGIN_NAME), Contains(OwnPID()));
  }
  EXPECT_TRUE(processes.Update());
  EXPECT_THAT(LoadingPIDs(processes, PLUGIN_NAME), Not(Contains(OwnPID())));
}

TEST_F(SystemProcessesTest, CopiesStandOnTheirOwn) {
  SystemProcesses assigned;
  {
    const SystemProcesses original;
    const SystemProcesses copy(original);
    EXPECT_NE(original.GetProcessInfo(OwnPID()), copy.GetProcessInfo(OwnPID()));
    EXPECT_EQ(original.GetProcessInfos().size(), copy.GetProcessInfos().size());
    assigned = copy;
    SystemProcesses& itself = assigned;
    assigned = itself;
  }
  ASSERT_NE(nullptr, assigned.GetProcessInfo(OwnPID()));
  EXPECT_EQ(OwnProgram(), assigned.GetProcessInfo(OwnPID())->GetName());
  std::vector<const SystemProcesses::ProcessInfo*> found;
  EXPECT_GE(assigned.GetProcessInfo(OwnProgram(), found), 1);
  EXPECT_THAT(found, Contains(assigned.GetProcessInfo(OwnPID())));
  EXPECT_THAT(LoadingPIDs(assigned, sSYSTEM_LIBRARY), Contains(OwnPID()));
}
