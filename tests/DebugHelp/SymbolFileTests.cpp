// Where debug data is found that isn't in the module: by its build id, and by the name that the module gives.

#include <cstdlib>

#include "DebugHelp/StackHostRuns.h"
#include "Support/TemporaryFolder.h"

namespace StackTests {
namespace {

namespace fs = std::filesystem;

void Call(const std::string& command) { ASSERT_EQ(std::system(command.c_str()), 0) << command; }

// A copy of a module whose debug data lies in a file of its own, in a folder that nobody looks into by itself.
class Separate : public ::testing::Test {
 protected:
  void Split(const std::string& victim) {
    m_sModule = m_folder.File("module.so");
    fs::create_directories(m_folder.File("elsewhere"));
    m_sDebug = m_folder.File("elsewhere/module.debug");
    const std::string objcopy = OBJCOPY;
    Call(objcopy + " --only-keep-debug " + Victim(victim) + " " + m_sDebug);
    Call(objcopy + " --strip-all --add-gnu-debuglink=" + m_sDebug + " " + Victim(victim) + " " + m_sModule);
  }

  void MoveDebugTo(const std::string& name) {
    fs::create_directories(fs::path(m_folder.File(name)).parent_path());
    fs::rename(m_sDebug, m_folder.File(name));
  }

  // "/.build-id/12/3456….debug"
  std::string NameById() {
    Call("LC_ALL=C readelf -n " + m_sModule + " | sed -n 's/.*Build ID: //p' > " + m_folder.File("id"));
    std::string id = m_folder.Read("id");
    id.erase(id.find_last_not_of('\n') + 1);
    EXPECT_EQ(id.size(), 40U);
    return ".build-id/" + id.substr(0, 2) + "/" + id.substr(2) + ".debug";
  }

  bool IsFound(const std::vector<std::string>& environment = {}) {
    const Printed printed = RunHost(m_sModule, "templated", 0, {}, environment);
    EXPECT_TRUE(printed.Has(" main [StackHost]")) << printed.All();
    return printed.Has(At("templated") + "victim::Templated<long> [module]");
  }

  const TestSupport::TemporaryFolder m_folder;
  std::string m_sModule;
  std::string m_sDebug;
};

TEST_F(Separate, IsNotFoundElsewhere) {
  Split("VictimO0");
  EXPECT_FALSE(IsFound());
}

TEST_F(Separate, IsFoundBesideTheModule) {
  Split("VictimO0");
  MoveDebugTo("module.debug");
  EXPECT_TRUE(IsFound());
}

TEST_F(Separate, IsFoundBeneathTheModule) {
  Split("VictimO0");
  MoveDebugTo(".debug/module.debug");
  EXPECT_TRUE(IsFound());
}

// One of the two has no lines.
TEST_F(Separate, IsFoundBesideTheModuleBeforeBeneathIt) {
  const std::string strip = std::string(OBJCOPY) + " -R .debug_line ";
  Split("VictimO0");
  fs::create_directories(m_folder.File(".debug"));
  Call(strip + m_sDebug + " " + m_folder.File(".debug/module.debug"));
  MoveDebugTo("module.debug");
  EXPECT_TRUE(IsFound());
  fs::rename(m_folder.File("module.debug"), m_folder.File("whole"));
  fs::rename(m_folder.File(".debug/module.debug"), m_folder.File("module.debug"));
  fs::rename(m_folder.File("whole"), m_folder.File(".debug/module.debug"));
  EXPECT_FALSE(IsFound());
}

TEST_F(Separate, IsFoundByItsChecksumWithoutIds) {
  Split("VictimNoIds");
  MoveDebugTo("module.debug");
  EXPECT_TRUE(IsFound());
}

TEST_F(Separate, OfOtherCodeIsNotTaken) {
  Split("VictimO0");
  Call(std::string(OBJCOPY) + " --only-keep-debug " + Victim("VictimO2") + " " + m_sDebug);
  MoveDebugTo("module.debug");
  EXPECT_FALSE(IsFound());
}

TEST_F(Separate, WithAnotherChecksumIsNotTaken) {
  Split("VictimNoIds");
  std::ofstream(m_sDebug, std::ios::app) << "more";
  MoveDebugTo("module.debug");
  EXPECT_FALSE(IsFound());
}

TEST_F(Separate, IsFoundByTheVariablesOfTheEnvironment) {
  Split("VictimO0");
  const std::string folder = m_folder.File("elsewhere");
  EXPECT_TRUE(IsFound({"_NT_SYMBOL_PATH=" + folder}));
  EXPECT_TRUE(IsFound({"_NT_ALTERNATE_SYMBOL_PATH=" + folder}));
  EXPECT_TRUE(IsFound({"_NT_SYMBOL_PATH=/nowhere;" + folder + "/"}));
  EXPECT_TRUE(IsFound({"SYSTEMROOT=" + folder}));
}

TEST_F(Separate, IsFoundByItsIdInTheFoldersOfTheSearchPath) {
  Split("VictimO0");
  MoveDebugTo("store/" + NameById());
  EXPECT_FALSE(IsFound());
  EXPECT_TRUE(IsFound({"_NT_SYMBOL_PATH=" + m_folder.File("store")}));
}

TEST_F(Separate, IsFoundInTheFoldersOfTheProcess) {
  Split("VictimO0");
  const std::string process = "folder=" + m_folder.Path() + "/process/";
  MoveDebugTo("process/Symbols/module.debug");
  EXPECT_TRUE(RunHost(m_sModule, "templated", 0, {process}).Has(At("templated")));
  m_sDebug = m_folder.File("process/Symbols/module.debug");
  MoveDebugTo("process/Packages/module.debug");
  EXPECT_TRUE(RunHost(m_sModule, "templated", 0, {process}).Has(At("templated")));
  m_sDebug = m_folder.File("process/Packages/module.debug");
  MoveDebugTo("process/module.debug");
  EXPECT_TRUE(RunHost(m_sModule, "templated", 0, {process}).Has(At("templated")));
}

TEST_F(Separate, AVariableOf260CharactersCountsAsUnset) {
  Split("VictimO0");
  const std::string folder = m_folder.File("elsewhere");
  const std::string filled = folder + ";/" + std::string(259 - folder.size() - 2, 'x');
  EXPECT_TRUE(IsFound({"_NT_SYMBOL_PATH=" + filled}));
  EXPECT_FALSE(IsFound({"_NT_SYMBOL_PATH=" + filled + "x"}));
}

// Unloading a module that was replaced on disk: the memory goes on being right, the file doesn't.
TEST_F(Separate, AFileThatWasReplacedWhileItsCodeRunsIsNotRead) {
  const std::string module = m_folder.File("module.so");
  const std::string other = m_folder.File("other.so");
  for (const char* const victim : {"VictimO0", "VictimNoIds"}) {
    fs::copy_file(Victim(victim), module, fs::copy_options::overwrite_existing);
    fs::copy_file(Victim("VictimG1"), other, fs::copy_options::overwrite_existing);
    const Printed printed = RunHost(module, "descend", 3, {"replace=" + other});
    EXPECT_FALSE(printed.Has("Victim.cpp")) << printed.All();
    EXPECT_TRUE(printed.Has(" main [StackHost]")) << printed.All();
  }
}

}  // namespace
}  // namespace StackTests
