#include "LogFolder.h"

#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/System.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TemporaryFolder.h"
#include "WithoutPrivileges.h"

namespace {

using Oxa::Core::eLOG_INFORMATIONAL;
using Oxa::Core::LogManager;
using Oxa::Core::System;
using Station::LogDocument;
using Station::SendLogTo;
using StationTests::ReadFile;
using StationTests::TemporaryFolder;
using StationTests::WithoutPrivileges;
using testing::HasSubstr;

void Log(const std::string& text) {
  LogManager::Instance()->GetLogger("Test")->WriteLog(eLOG_INFORMATIONAL, "%s", text.c_str());
}

TEST(LogFolder, IsWhereTheLogIsWritten) {
  const TemporaryFolder folder;
  EXPECT_EQ("", SendLogTo(folder.Path()));
  EXPECT_EQ(folder.File("DefaultLog.xml"), LogDocument());
  Log("some text");
  Station::FinishLog();
  EXPECT_THAT(ReadFile(LogDocument()), HasSubstr("&entries;"));
  EXPECT_THAT(ReadFile(folder.File("DefaultLog.entries")), HasSubstr("<Message>some text</Message>"));
}

TEST(LogFolder, HoldsWhatIsLoggedAfterTheLogWasFinished) {
  const TemporaryFolder folder;
  EXPECT_EQ("", SendLogTo(folder.Path()));
  Station::FinishLog();
  Log("late text");
  EXPECT_THAT(ReadFile(folder.File("DefaultLog.entries")), HasSubstr("<Message>late text</Message>"));
}

TEST(LogFolder, KeepsWhatItHolds) {
  const TemporaryFolder folder;
  folder.Write("DefaultLog.entries", "<!-- old -->\n");
  EXPECT_EQ("", SendLogTo(folder.Path()));
  EXPECT_EQ("<!-- old -->\n", ReadFile(folder.File("DefaultLog.entries")));
}

TEST(LogFolder, IsMadeWithThoseAboveIt) {
  const TemporaryFolder folder;
  EXPECT_EQ("", SendLogTo(folder.File("a/b")));
  EXPECT_TRUE(std::filesystem::is_directory(folder.File("a/b")));
}

TEST(LogFolder, MayEndInASeparator) {
  const TemporaryFolder folder;
  EXPECT_EQ("", SendLogTo(folder.Path() + '/'));
  EXPECT_EQ(folder.File("DefaultLog.xml"), LogDocument());
}

TEST(LogFolder, MayBeWrittenWithBackslashesAsTheLibraryMayHaveIt) {
  const TemporaryFolder folder;
  EXPECT_EQ("", SendLogTo(folder.Path() + "\\a\\b"));
  EXPECT_EQ(folder.File("a/b/DefaultLog.xml"), LogDocument());
  EXPECT_TRUE(std::filesystem::is_directory(folder.File("a/b")));
}

class LogFolderCalled : public testing::TestWithParam<const char*> {};

TEST_P(LogFolderCalled, AnythingIsFine) {
  const TemporaryFolder folder;
  EXPECT_EQ("", SendLogTo(folder.File(GetParam())));
  Log("some text");
  Station::FinishLog();
  EXPECT_TRUE(std::filesystem::exists(folder.File(GetParam()) + "/DefaultLog.xml"));
  EXPECT_THAT(ReadFile(folder.File(GetParam()) + "/DefaultLog.entries"), HasSubstr("some text"));
}

INSTANTIATE_TEST_SUITE_P(Names, LogFolderCalled,
                         testing::Values("with blank", "C:", "a|b*?", "<&\">", "\xC3\xA9 \xB5", "100%s%n",
                                         "..", "a/../b"));

TEST(LogFolder, IsThatOfTheProgramUnlessAnotherIsWanted) {
  std::string path;
  System::Instance()->GetProcessPath(path);
  EXPECT_EQ(path + "DefaultLog.xml", LogDocument());
  const TemporaryFolder folder;
  System::Instance()->SetProcessPath(folder.Path() + '/');
  EXPECT_EQ("", SendLogTo(""));
  EXPECT_EQ(folder.File("DefaultLog.xml"), LogDocument());
}

TEST(LogFolder, CannotBeAFile) {
  const TemporaryFolder folder;
  const std::string file = folder.Write("file", "");
  EXPECT_EQ("The log folder \"" + file + "/\" can't be used: Not a directory", SendLogTo(file));
  EXPECT_EQ("The log folder \"" + file + "/x/\" can't be used: Not a directory", SendLogTo(file + "/x"));
}

TEST(LogFolder, CannotBeWhereNothingCanBeMade) {
  EXPECT_EQ("The log folder \"/proc/\\xB5/\" can't be used: No such file or directory",
            SendLogTo("/proc/\xB5"));
}

TEST(LogFolder, MustHoldAFileThatCanBeWritten) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.File("DefaultLog.entries"));
  EXPECT_EQ("The log folder \"" + folder.Path() + "/\" can't be used: Is a directory",
            SendLogTo(folder.Path()));
}

TEST(LogFolder, NeedsPermission) {
  const TemporaryFolder folder;
  std::filesystem::permissions(folder.Path(),
                               std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
  const WithoutPrivileges nobody;
  EXPECT_EQ("The log folder \"" + folder.Path() + "/\" can't be used: Permission denied",
            SendLogTo(folder.Path()));
  EXPECT_EQ("The log folder \"" + folder.File("new") + "/\" can't be used: Permission denied",
            SendLogTo(folder.File("new")));
}

}  // namespace
