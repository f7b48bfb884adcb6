// Where the helper of the library's own tests is looked for. Object-linked: the library is this program.
#include <Infrastructure/OxaCore/AutoTest.h>

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

#include "AutoTest/Module/HelperProcess.h"
#include "Platform/Machine.h"
#include "Support/TemporaryFolder.h"

using Oxa::Core::HelperProcess;

namespace {

std::string PathVariable() {
  const char* const value = ::getenv("PATH");
  return value == nullptr ? "" : value;
}

// The folders that the system looks for programs in, while it stands.
class ProgramFolders {
 public:
  explicit ProgramFolders(const std::string& folders) : m_sBefore(PathVariable()) {
    ::setenv("PATH", folders.c_str(), 1);
  }
  ~ProgramFolders() { ::setenv("PATH", m_sBefore.c_str(), 1); }
  ProgramFolders(const ProgramFolders&) = delete;
  ProgramFolders& operator=(const ProgramFolders&) = delete;

 private:
  const std::string m_sBefore;
};

std::string FailureOf(const std::vector<std::string>& arguments) {
  try {
    return std::to_string(HelperProcess(arguments).Await());
  } catch (Oxa::Core::Test::Failure& failure) {
    return failure.GetData(Oxa::Core::AlertInfo::sMESSAGE);
  }
}

}  // namespace

TEST(HelperProcess, TellsWhereItWasLookedForInVain) {
  const TestSupport::TemporaryFolder empty;
  std::filesystem::create_directory(empty.File("UnitTestProcess.exe"));  // no program
  const ProgramFolders folders("/no/such/folder:relative:" + empty.Path());
  std::string program;
  ASSERT_EQ(0, Oxa::Core::Platform::ExecutablePath(program));
  const std::string here = program.substr(0, program.rfind('/'));
  EXPECT_EQ("UnitTestProcess.exe was looked for, and not found, in:\n" + here + '\n' + here + '\n' + here +
                "/OxaCore\n/no/such/folder\n" + empty.Path(),
            FailureOf({}));
}

TEST(HelperProcess, IsFoundWhereProgramsAre) {
  const ProgramFolders folders("/no/such/folder:" UNIT_TEST_PROCESS_FOLDER);
  EXPECT_EQ("2", FailureOf({}));
  EXPECT_EQ("2", FailureOf({"-t", "Nothing", "-p1", "name"}));
}

TEST(HelperProcess, TellsWhyItCantBeStarted) {
  const TestSupport::TemporaryFolder folder;
  const std::string file = folder.Write("UnitTestProcess.exe", "no program");
  const ProgramFolders folders(folder.Path());
  EXPECT_EQ("UnitTestProcess.exe can't be started: Permission denied (" + file + ")", FailureOf({}));
}
