// Tables of processes from a folder that stands in the place of /proc.
#include <Infrastructure/OxaCore/SystemProcesses.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Platform/Linux/ProcFile.h"
#include "Support/ProcFolder.h"

namespace {

using Oxa::Core::SystemProcesses;
using testing::ElementsAre;
using TestSupport::FakeProc;

std::string CodeOf(const std::string& file) { return "8000-9000 r-xp 00000000 fe:01 13   " + file + "\n"; }

std::vector<unsigned int> Ids(const SystemProcesses& processes) {
  std::vector<unsigned int> ids;
  for (const SystemProcesses::ProcessInfo& info : processes.GetProcessInfos()) ids.push_back(info.GetPID());
  return ids;
}

std::vector<unsigned int> LoadingIds(const SystemProcesses& processes, const std::string& module) {
  std::vector<unsigned int> ids;
  if (const SystemProcesses::ModuleInfo* info = processes.GetModuleInfo(module)) info->GetLoadingPIDs(ids);
  return ids;
}

void ExpectEmpty(const SystemProcesses& processes) {
  EXPECT_TRUE(processes.GetProcessInfos().empty());
  EXPECT_EQ(nullptr, processes.GetProcessInfo(5U));
  EXPECT_EQ(nullptr, processes.GetModuleInfo("a.so"));
  std::vector<const SystemProcesses::ProcessInfo*> found;
  EXPECT_EQ(0, processes.GetProcessInfo("probe", found));
}

}  // namespace

TEST(ProcessTables, WithoutAListUpdateFailsUntilThereIsOne) {
  const FakeProc proc;
  proc.AddProcess("5", "/opt/probe", CodeOf("/lib/a.so"));
  SystemProcesses processes;
  ExpectEmpty(processes);
  EXPECT_FALSE(processes.Update());
  ExpectEmpty(processes);
  proc.AddSelf();
  EXPECT_TRUE(processes.Update());
  EXPECT_THAT(Ids(processes), ElementsAre(5U));
}

TEST(ProcessTables, AListThatCantBeReadThisTimeLeavesThemEmptyAndIsNoFailure) {
  const FakeProc proc;
  proc.AddSelf();
  proc.AddProcess("5", "/opt/probe", CodeOf("/lib/a.so"));
  SystemProcesses processes;
  EXPECT_THAT(LoadingIds(processes, "a.so"), ElementsAre(5U));
  Oxa::Core::Platform::SetProcFolder("/no/such/folder");
  EXPECT_TRUE(processes.Update());
  ExpectEmpty(processes);
}

TEST(ProcessTables, HoldTheFirst1024Processes) {
  const FakeProc proc;
  proc.AddSelf();
  for (int id = 1; id <= 1025; ++id) proc.AddProcess(std::to_string(id), "/opt/probe", "");
  const SystemProcesses processes;
  EXPECT_EQ(1024U, processes.GetProcessInfos().size());
  EXPECT_NE(nullptr, processes.GetProcessInfo(1024U));
  EXPECT_EQ(nullptr, processes.GetProcessInfo(1025U));
}

TEST(ProcessTables, AProcessThatCantBeOpenedIsPassedOver) {
  const FakeProc proc;
  proc.AddSelf();
  std::filesystem::create_directory(proc.Folder().File("4"));
  proc.AddProcess("5", "/opt/probe", "");
  EXPECT_THAT(Ids(SystemProcesses()), ElementsAre(5U));
}

TEST(ProcessTables, ModulesOfOneNameShareAnEntryWhereverTheyLie) {
  const FakeProc proc;
  proc.AddSelf();
  proc.AddProcess("5", "/opt/probe", CodeOf("/opt/probe") + CodeOf("/lib/a.so") + CodeOf("/lib/b.so"));
  proc.AddProcess("6", "/usr/probe", CodeOf("/old/a.so"));
  proc.AddProcess("7", "/usr/other", CodeOf("/old/a.so") + CodeOf("/lib/a.so"));
  const SystemProcesses processes;
  std::vector<const SystemProcesses::ProcessInfo*> found;
  EXPECT_EQ(2, processes.GetProcessInfo("probe", found));
  const SystemProcesses::ModuleInfo* const module = processes.GetModuleInfo("a.so");
  ASSERT_NE(nullptr, module);
  EXPECT_EQ("a.so", module->GetName());
  EXPECT_EQ("/lib/a.so", module->GetPath());
  std::vector<unsigned int> ids;
  EXPECT_EQ(3, module->GetLoadingPIDs(ids));
  EXPECT_THAT(ids, ElementsAre(5U, 6U, 7U));
  EXPECT_EQ(2, module->GetLoadingPIDs("/old/a.so", ids));
  EXPECT_THAT(ids, ElementsAre(6U, 7U));
  EXPECT_THAT(LoadingIds(processes, "b.so"), ElementsAre(5U));
  EXPECT_EQ(nullptr, processes.GetModuleInfo("probe"));
}
