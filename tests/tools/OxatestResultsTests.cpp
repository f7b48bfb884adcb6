// Where the results go, and what of them.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "HangingOxatest.h"
#include "Oxatest.h"

using namespace OxatestTests;

namespace {

TEST(OxatestResults, KeepTheRightsAndTheLinkOfTheFile) {
  const TestSupport::TemporaryFolder folder;
  const std::string file = folder.Write("results.xml", "of the run before");
  ASSERT_EQ(0, ::chmod(file.c_str(), 0604));
  std::filesystem::create_symlink("results.xml", folder.File("link.xml"));
  const TestSupport::ChildResult run =
      TestSupport::RunChild({OXATEST, BAD_MODULE, "--junit", folder.File("link.xml")});
  EXPECT_EQ(0, run.m_iStatus) << run.m_sError;
  EXPECT_EQ((std::set<std::string>{"link.xml", "results.xml"}), folder.Names());
  EXPECT_TRUE(std::filesystem::is_symlink(folder.File("link.xml")));
  struct stat status {};
  ASSERT_EQ(0, ::stat(file.c_str(), &status));
  EXPECT_EQ(0604U, status.st_mode & 0777U);
  Element root;
  EXPECT_TRUE(ReadJUnit(file, root));
  EXPECT_EQ("1", root.Attribute("tests"));
}

TEST(OxatestResults, AreRefusedBeforeTheRun) {
  const TestSupport::TemporaryFolder folder;
  const TestSupport::ChildResult run = TestSupport::RunChild({OXATEST, BAD_MODULE, "--junit", folder.Path()});
  EXPECT_EQ(2, run.m_iStatus);
  EXPECT_EQ("oxatest: " + folder.Path() + ": is a folder\n", run.m_sError);
  EXPECT_EQ("", run.m_sOutput);
  const TestSupport::ChildResult output = TestSupport::RunChild({OXATEST, BAD_MODULE, "--junit=/dev/stdout"});
  EXPECT_EQ(2, output.m_iStatus);
  EXPECT_EQ("oxatest: /dev/stdout: takes the output already\n", output.m_sError);
}

TEST(OxatestResults, AreWrittenIntoAPipe) {
  const TestSupport::TemporaryFolder folder;
  const std::string name = folder.File("pipe");
  ASSERT_EQ(0, ::mkfifo(name.c_str(), 0600));
  const TestSupport::ChildResult run =
      TestSupport::RunChild({"/bin/sh", "-c", "\"$0\" \"$1\" --junit \"$2\" > /dev/null & cat \"$2\"; wait",
                             OXATEST, BAD_MODULE, name});
  EXPECT_NE(std::string::npos, run.m_sOutput.find("</testsuites>"));
}

// A shell that becomes oxatest keeps its number, by which the file beside is named.
TEST(OxatestResults, AreWrittenUnderAnotherNameWhereTheFirstIsTaken) {
  const TestSupport::TemporaryFolder folder;
  const TestSupport::ChildResult run = TestSupport::RunChild(
      {"/bin/sh", "-c", "echo mine > \"$2/.oxatest$$.0\"; exec \"$0\" \"$1\" --junit \"$2/results.xml\"",
       OXATEST, BAD_MODULE, folder.Path()});
  EXPECT_EQ(0, run.m_iStatus) << run.m_sError;
  Element root;
  EXPECT_TRUE(ReadJUnit(folder.File("results.xml"), root));
  std::set<std::string> names = folder.Names();
  EXPECT_EQ(1U, names.erase("results.xml"));
  ASSERT_EQ(1U, names.size());
  EXPECT_EQ("mine\n", folder.Read(*names.begin()));
}

// Files may be no longer than 512 bytes here, and what goes beyond is refused rather than deadly.
TEST(OxatestResults, LeaveTheFileOfTheRunBeforeWhereTheyCannotBeWritten) {
  const TestSupport::TemporaryFolder folder;
  const std::string file = folder.Write("results.xml", "of the run before");
  const TestSupport::ChildResult run = TestSupport::RunChild(
      {"/bin/sh", "-c",
       "trap '' XFSZ; ulimit -f 1; exec \"$0\" \"$1\" --only=Good/Passes --only=Deep --junit \"$2\"", OXATEST,
       SUITE_MODULE, file});
  EXPECT_EQ(2, run.m_iStatus);
  EXPECT_EQ("oxatest: " + file + ": can't be written: File too large\n", run.m_sError);
  EXPECT_NE(std::string::npos, run.m_sOutput.find("2 passed in ")) << run.m_sOutput;
  EXPECT_EQ((std::set<std::string>{"results.xml"}), folder.Names());
  EXPECT_EQ("of the run before", folder.Read("results.xml"));
}

TEST(OxatestResults, AreKeptWhereTheyCannotBePutInTheirPlace) {
  const TestSupport::TemporaryFolder folder;
  const TestSupport::TemporaryFolder temporary;
  const std::string place = folder.File("results.xml");
  HangingOxatest hanging(temporary, "exec \"$0\" \"$@\" --junit '" + place + "' > /dev/null 2> '" +
                                        folder.File("complaint") + "'");
  std::filesystem::create_directory(place);  // since it was looked at
  ::kill(hanging.m_oxatest.Id(), SIGTERM);
  EXPECT_EQ(128 + SIGTERM, hanging.m_oxatest.Await());
  const std::string complaint = folder.Read("complaint");
  const std::string before = "oxatest: " + place + ": can't be written: Is a directory; the results are in ";
  ASSERT_EQ(0U, complaint.find(before)) << complaint;
  Element root;
  EXPECT_TRUE(ReadJUnit(complaint.substr(before.size(), complaint.size() - before.size() - 1), root));
  EXPECT_EQ("1", root.Attribute("tests"));
}

// With the last repetition, or with what keeps the next one from being run.
TEST(OxatestResults, HoldWhatAModulePrintsOnce) {
  const RunResult run = RunOxatest({BAD_MODULE, "--repeat=3"}, {"BAD_MODULE=prints"});
  EXPECT_EQ(0, run.m_iStatus) << run.m_sError;
  ASSERT_EQ(3U, run.m_junit.m_children.size());
  EXPECT_EQ("", run.m_junit.m_children[0].Child("system-out").m_sName);
  EXPECT_EQ("", run.m_junit.m_children[1].Child("system-out").m_sName);
  EXPECT_EQ("a tree\na tree\na tree\n", run.m_junit.m_children[2].Child("system-out").m_sText);
  const RunResult trouble = RunOxatest({BAD_MODULE, "--repeat=3"}, {"BAD_MODULE=prints but once"});
  EXPECT_EQ(2, trouble.m_iStatus) << trouble.m_sError;
  ASSERT_EQ(2U, trouble.m_junit.m_children.size());
  EXPECT_EQ("", trouble.m_junit.m_children[0].Child("system-out").m_sName);
  EXPECT_EQ("a tree\n", trouble.Case("(module)").Child("system-out").m_sText);
}

}  // namespace
