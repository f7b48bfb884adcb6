#include <Infrastructure/OxaCore/SystemProcesses.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Support/ProcFolder.h"

using Oxa::Core::SystemProcesses;
using TestSupport::FakeProc;

namespace {

const char* const sMAPPINGS =
    "5000-6000 r-xp 00000000 fe:01 11   /opt/probe\n"
    "6000-7000 r-xp 00000000 fe:01 12   /lib/libprobe.so\n";

bool IsEmpty(const SystemProcesses& processes) {
  return processes.GetProcessInfos().empty() && processes.GetProcessInfo(5) == nullptr &&
         processes.GetModuleInfo("libprobe.so") == nullptr;
}

std::vector<unsigned int> Loading(const SystemProcesses& processes, const std::string& path = std::string()) {
  std::vector<unsigned int> pids;
  const SystemProcesses::ModuleInfo* module = processes.GetModuleInfo("libprobe.so");
  if (module != nullptr) path.empty() ? module->GetLoadingPIDs(pids) : module->GetLoadingPIDs(path, pids);
  return pids;
}

}  // namespace

TEST(ProcessList, WithoutOneEveryTableIsEmptyAndUpdateIsFalseUntilThereIsOne) {
  const FakeProc proc;
  SystemProcesses processes;
  EXPECT_FALSE(processes.Update());
  EXPECT_TRUE(IsEmpty(processes));
  proc.AddProcess("5", "/opt/probe", sMAPPINGS);
  EXPECT_FALSE(processes.Update());
  EXPECT_TRUE(IsEmpty(processes));
  proc.AddSelf();
  EXPECT_TRUE(processes.Update());
  EXPECT_FALSE(IsEmpty(processes));
}

TEST(ProcessList, OneThatCannotBeReadAnyMoreLeavesTheTablesEmptyAndIsNoFailure) {
  const FakeProc proc;
  proc.AddSelf();
  proc.AddProcess("5", "/opt/probe", sMAPPINGS);
  SystemProcesses processes;
  EXPECT_FALSE(IsEmpty(processes));
  std::filesystem::remove_all(proc.Folder().Path());
  EXPECT_TRUE(processes.Update());
  EXPECT_TRUE(IsEmpty(processes));
  SystemProcesses copy(processes);
  EXPECT_TRUE(copy.Update()) << "a copy knows that there is a list, too";
  SystemProcesses fresh;
  EXPECT_FALSE(fresh.Update());
  fresh = copy;
  EXPECT_TRUE(fresh.Update());
}

TEST(ProcessList, ProcessesBeyondThe1024thAreNotSeen) {
  const FakeProc proc;
  proc.AddSelf();
  for (unsigned int pid = 1100; pid > 1100 - 1026; --pid)
    proc.AddProcess(std::to_string(pid), "/opt/probe", "");
  const SystemProcesses processes;
  EXPECT_EQ(1024u, processes.GetProcessInfos().size());
  EXPECT_NE(nullptr, processes.GetProcessInfo(75));
  EXPECT_NE(nullptr, processes.GetProcessInfo(1098));
  EXPECT_EQ(nullptr, processes.GetProcessInfo(1099));
  std::vector<const SystemProcesses::ProcessInfo*> found;
  EXPECT_EQ(1024, processes.GetProcessInfo("probe", found));
}

TEST(ProcessList, AProcessThatCannotBeOpenedCountsAndIsSkipped) {
  const FakeProc proc;
  proc.AddSelf();
  std::filesystem::create_directory(proc.Folder().File("4"));
  proc.AddProcess("5", "/opt/probe", sMAPPINGS);
  const SystemProcesses processes;
  EXPECT_EQ(1u, processes.GetProcessInfos().size());
  EXPECT_EQ(nullptr, processes.GetProcessInfo(4));
  ASSERT_NE(nullptr, processes.GetProcessInfo(5));
  EXPECT_EQ("probe", processes.GetProcessInfo(5)->GetName());
}

TEST(ProcessList, ModulesOfOneNameInSeveralFoldersAreOneWithSeveralPaths) {
  const FakeProc proc;
  proc.AddSelf();
  proc.AddProcess("5", "/opt/probe", sMAPPINGS);
  proc.AddProcess("7", "/usr/probe",
                  "6000-7000 r-xp 0 0 0 /old/libprobe.so\n7000-8000 r-xp 0 0 0 /lib/libprobe.so\n");
  proc.AddProcess("60", "/opt/other", "6000-7000 r-xp 0 0 0 /old/libprobe.so\n");
  const SystemProcesses processes;
  std::vector<const SystemProcesses::ProcessInfo*> found;
  EXPECT_EQ(2, processes.GetProcessInfo("probe", found));
  ASSERT_NE(nullptr, processes.GetModuleInfo("libprobe.so"));
  EXPECT_EQ("libprobe.so", processes.GetModuleInfo("libprobe.so")->GetName());
  EXPECT_EQ("/lib/libprobe.so", processes.GetModuleInfo("libprobe.so")->GetPath());
  EXPECT_EQ((std::vector<unsigned int>{5, 7, 60}), Loading(processes));
  EXPECT_EQ((std::vector<unsigned int>{5, 7}), Loading(processes, "/lib/libprobe.so"));
  EXPECT_EQ((std::vector<unsigned int>{7, 60}), Loading(processes, "/old/libprobe.so"));
  EXPECT_TRUE(Loading(processes, "/elsewhere/libprobe.so").empty());
  EXPECT_EQ(nullptr, processes.GetModuleInfo("/lib/libprobe.so"));
  EXPECT_EQ(nullptr, processes.GetModuleInfo("probe"));
}
