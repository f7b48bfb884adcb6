// oxatest on tests that leave its processes alive: what runs, what is told, and what the status is.
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <sstream>

#include "Oxatest.h"

using namespace OxatestTests;

namespace {

std::vector<std::string> Lines(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

TEST(Oxatest, PassesWhatPasses) {
  const RunResult run = RunOxatest({SUITE_MODULE, "--only", "Good"});
  EXPECT_EQ(0, run.m_iStatus) << run.m_sError;
  EXPECT_EQ("", run.m_sError);
  const std::vector<std::string> lines = Lines(run.m_sOutput);
  ASSERT_EQ(7U, lines.size()) << run.m_sOutput;
  EXPECT_EQ(SUITE_MODULE ": Module <Tests>, 5 tests", lines[0]);
  EXPECT_EQ("  disabled      0.000 s  Good/Not now", lines[1]);
  EXPECT_EQ(0U, lines[2].find("  passed  ")) << lines[2];
  EXPECT_NE(std::string::npos, lines[2].find(" s  Good/Passes")) << lines[2];
  EXPECT_EQ(0U, lines[6].find("4 passed, 1 disabled in ")) << lines[6];
}

TEST(Oxatest, WritesWhatPassedAsJUnit) {
  const RunResult run = RunOxatest({SUITE_MODULE, "--only", "Good"});
  ASSERT_TRUE(run.m_bParsed);
  EXPECT_EQ("testsuites", run.m_junit.m_sName);
  EXPECT_EQ("5", run.m_junit.Attribute("tests"));
  ASSERT_EQ(1U, run.m_junit.m_children.size());
  const Element& suite = run.m_junit.m_children[0];
  EXPECT_EQ("Module &lt;Tests&gt;", suite.Attribute("name"));
  EXPECT_EQ(SUITE_MODULE, suite.Attribute("package"));
  EXPECT_EQ("5", suite.Attribute("tests"));
  EXPECT_EQ("0", suite.Attribute("failures"));
  EXPECT_EQ("0", suite.Attribute("errors"));
  EXPECT_EQ("1", suite.Attribute("skipped"));
  EXPECT_EQ(19U, suite.Attribute("timestamp").size());
  const Element passed = run.Case("Passes");
  EXPECT_EQ("Module &lt;Tests&gt;.Good", passed.Attribute("classname"));
  EXPECT_GE(std::atof(passed.Attribute("time").c_str()), 0);
  EXPECT_EQ("all channels answer", passed.Child("system-out").m_sText);
  EXPECT_EQ("disabled", run.Case("Not now").Child("skipped").Attribute("message"));
}

TEST(Oxatest, KeepsTheOutputWithItsTest) {
  const RunResult run = RunOxatest({SUITE_MODULE, "--only", "Good"});
  EXPECT_EQ("out of C\nout of C++\nan error of C++\n", run.Case("Prints").Child("system-out").m_sText);
  EXPECT_EQ("", run.Case("Silent").Child("system-out").m_sName);
  const std::string much = run.Case("Prints a lot").Child("system-out").m_sText;
  EXPECT_EQ(0U, much.find("printed\n[3123354 bytes left out]\n")) << much.substr(0, 100);
  EXPECT_NE(std::string::npos, much.find("\nline 99999 of what nobody reads\n"));
  EXPECT_LT(much.size(), 66000U);
}

TEST(Oxatest, TellsWhatFailed) {
  const RunResult run = RunOxatest({SUITE_MODULE, "--only=Bad/Fails", "--only=Bad/Throws"});
  EXPECT_EQ(1, run.m_iStatus);
  EXPECT_TRUE(run.Says("  failed "));
  EXPECT_TRUE(run.Says(" s  Bad/Fails\n      expected: 8 but was: 7\n      at "));
  EXPECT_TRUE(run.Says("      | said before the failure\n"));
  EXPECT_TRUE(run.Says("  error "));
  EXPECT_TRUE(run.Says(" s  Bad/Throws\n      Unknown exception\n"));
  EXPECT_TRUE(run.Says("Did not pass:\n  " SUITE_MODULE ": Bad/Fails\n  " SUITE_MODULE ": Bad/Throws\n"));
  EXPECT_TRUE(run.Says("1 failed, 1 error in "));
}

TEST(Oxatest, WritesWhatFailedAsJUnit) {
  const RunResult run = RunOxatest({SUITE_MODULE, "--only=Bad/Fails", "--only=Bad/Raises"});
  ASSERT_TRUE(run.m_bParsed);
  EXPECT_EQ("1", run.m_junit.Attribute("failures"));
  EXPECT_EQ("1", run.m_junit.Attribute("errors"));
  const Element failure = run.Case("Fails").Child("failure");
  EXPECT_EQ("failed", failure.Attribute("type"));
  EXPECT_EQ("expected: 8 but was: 7", failure.Attribute("message"));
  EXPECT_EQ(0U, failure.m_sText.find("expected: 8 but was: 7\nat ")) << failure.m_sText;
  EXPECT_NE(std::string::npos, failure.m_sText.find("SuiteModule.cpp:")) << failure.m_sText;
  EXPECT_EQ("said before the failure\n", run.Case("Fails").Child("system-out").m_sText);
  const Element error = run.Case("Raises").Child("error");
  EXPECT_EQ("error", error.Attribute("type"));
  EXPECT_EQ("Probe &lt;3 &amp; 4&gt; is gone", error.Attribute("message"));
}

TEST(Oxatest, TellsWhichSuiteFailedByItself) {
  const RunResult run = RunOxatest({SUITE_MODULE, "--only", "Raises in its set-up", "--only", "Good/Passes"});
  EXPECT_EQ(1, run.m_iStatus);
  EXPECT_TRUE(run.Says(" s  Raises in its set-up\n      Probe <3 & 4> is gone\n"));
  EXPECT_EQ("not run", run.Case("Never").Child("skipped").Attribute("message"));
  EXPECT_EQ("Module &lt;Tests&gt;", run.Case("Raises in its set-up").Attribute("classname"));
  EXPECT_TRUE(run.Says("1 passed, 1 error, 1 not run in "));
}

TEST(Oxatest, ListsWithoutRunning) {
  const RunResult run = RunOxatest(
      {SUITE_MODULE, "--list", "--only", "Good/*", "--only", "Deadly/Cr?shes", "--disable", "Good/Silent"});
  EXPECT_EQ(0, run.m_iStatus) << run.m_sError;
  EXPECT_EQ(
      "Good/Passes\nGood/Prints\nGood/Prints a lot\nGood/Silent (disabled)\nGood/Not now (disabled)\n"
      "Deadly/Crashes\n",
      run.m_sOutput);
}

TEST(Oxatest, ListsSeveralModules) {
  const RunResult run =
      RunOxatest({SUITE_MODULE, BAD_MODULE, "--list", "--only", "Good/Passes", "--only", "Passes"});
  EXPECT_EQ(0, run.m_iStatus) << run.m_sError;
  EXPECT_EQ(SUITE_MODULE ":\n  Good/Passes\n" BAD_MODULE ":\n  Passes\n", run.m_sOutput);
}

TEST(Oxatest, ComparesPatternsWithWholePaths) {
  const struct {
    const char* m_pattern;
    const char* m_listed;
  } rows[] = {{"Good/P*s", "Good/Passes\nGood/Prints\n"},
              {"Good/P*t", "Good/Prints a lot\n"},
              {"Good/Pass??", "Good/Passes\n"},
              {"*/*/*/*Bottom", "DEEP\n"},
              {"*Bottom", "DEEP\n"},
              {"Deep", "DEEP\n"},
              {"Deep/Deep", "DEEP\n"},
              {"Strange*/[a[*]b*", ""},
              {"Strange*/[a*b?] 'q'/x", "Strange <names> & \"texts\"/[a*b?] 'q'/x\n"},
              {"Good/Pass", ""},
              {"good/passes", ""},
              {"Passes", ""},
              {"Strange*/\\[a\\*b\\?] *", ""},
              {"Strange*/[a\\*b\\?] *", "Strange <names> & \"texts\"/[a*b?] 'q'/x\n"},
              {"Strange*/[a\\?b\\?] *", ""},
              {"Good/Pass\\?\\?", ""},
              {"Good/Pass?\\*", ""},
              {"Back\\slash \\\\*", "Back\\slash \\*\n"},
              {"Back\\\\slash \\\\\\*", "Back\\slash \\*\n"},
              {"Back\\slash \\*", ""},
              {"Back*\\", ""}};
  std::string deep;
  for (int i = 0; i <= 30; ++i) deep += "Deep/";
  for (const auto& row : rows) {
    const RunResult run = RunOxatest({SUITE_MODULE, "--list", "--only", row.m_pattern});
    const bool nothing = *row.m_listed == '\0';
    EXPECT_EQ(row.m_listed == std::string("DEEP\n") ? deep + "Bottom\n" : row.m_listed, run.m_sOutput)
        << row.m_pattern;
    EXPECT_EQ(nothing ? 2 : 0, run.m_iStatus) << row.m_pattern;
    EXPECT_EQ(nothing, run.Complains(std::string("oxatest: --only ") + row.m_pattern + " matches no test\n"));
  }
}

TEST(Oxatest, DisablesWhatIsToBeDisabled) {
  const RunResult run = RunOxatest({SUITE_MODULE, "--only", "Good", "--only", "Deadly/*e*", "--disable",
                                    "Deadly", "--disable=Good/Prints*"});
  EXPECT_EQ(0, run.m_iStatus) << run.m_sError;
  EXPECT_TRUE(run.Says("2 passed, 10 disabled in ")) << run.m_sOutput;
}

TEST(Oxatest, TellsPatternsThatMatchNothing) {
  const RunResult run =
      RunOxatest({SUITE_MODULE, "--only", "Good/Passes", "--only", "Bda/*", "--disable", "Hangs"});
  EXPECT_EQ(2, run.m_iStatus);
  EXPECT_EQ("oxatest: --only Bda/* matches no test\noxatest: --disable Hangs matches no test\n",
            run.m_sError);
  EXPECT_TRUE(run.Says("1 passed in "));
}

TEST(Oxatest, IsContentWithSeveralPatternsForOneTest) {
  const RunResult run = RunOxatest({SUITE_MODULE, "--only=Good/Passes", "--only=Good/P*s", "--only=*asses",
                                    "--disable=Good/Prints", "--disable=*Prints"});
  EXPECT_EQ(0, run.m_iStatus);
  EXPECT_EQ("", run.m_sError);
  EXPECT_TRUE(run.Says("1 passed, 1 disabled in ")) << run.m_sOutput;
}

TEST(Oxatest, IsContentWithAMatchInOneModule) {
  const RunResult run = RunOxatest({SUITE_MODULE, BAD_MODULE, "--only", "Good/Passes"});
  EXPECT_EQ(0, run.m_iStatus) << run.m_sError;
  EXPECT_TRUE(run.Says("Bad Module Tests, 0 tests\n"));
  EXPECT_TRUE(run.Says("1 passed in "));
}

TEST(Oxatest, IsNotContentWithNoTest) {
  const RunResult run = RunOxatest({BAD_MODULE}, {"BAD_MODULE=empty"});
  EXPECT_EQ(1, run.m_iStatus);
  EXPECT_EQ("oxatest: no test ran\n", run.m_sError);
  EXPECT_TRUE(run.m_bParsed);
  const RunResult disabled = RunOxatest({BAD_MODULE, "--disable", "Passes"});
  EXPECT_EQ(1, disabled.m_iStatus);
  EXPECT_TRUE(disabled.Says("1 disabled in "));
}

TEST(Oxatest, RepeatsOnNewTrees) {
  const RunResult run = RunOxatest({SUITE_MODULE, "--repeat", "3", "--only", "Once only"});
  EXPECT_EQ(1, run.m_iStatus);
  EXPECT_TRUE(run.Says(", 1 test, time 1\n  passed "));
  EXPECT_TRUE(run.Says(", 1 test, time 3\n  failed "));
  EXPECT_TRUE(run.Says("      expected: 1 but was: 3\n"));
  EXPECT_TRUE(run.Says("1 passed, 2 failed in "));
  ASSERT_TRUE(run.m_bParsed);
  EXPECT_EQ(3U, run.m_junit.m_children.size());
}

// Those in which all went well are forgotten where no file is to tell of them.
TEST(Oxatest, RemembersRepetitionsInWhichSomethingFailed) {
  const TestSupport::ChildResult run =
      TestSupport::RunChild({OXATEST, SUITE_MODULE, "--repeat", "3", "--only", "Once only"});
  EXPECT_EQ(1, run.m_iStatus);
  const std::string once = "  " SUITE_MODULE ": Once only\n";
  EXPECT_NE(std::string::npos, run.m_sOutput.find("Did not pass:\n" + once + once + "1 passed, 2 failed in "))
      << run.m_sOutput;
}

TEST(Oxatest, AnswersBadArguments) {
  const struct {
    std::vector<std::string> m_arguments;
    const char* m_complaint;
  } rows[] = {
      {{}, "oxatest: no module is given\n"},
      {{BAD_MODULE, "--colour"}, "unrecognized option '--colour'\n"},
      {{BAD_MODULE, "--list=7"}, "doesn't allow an argument\n"},
      {{BAD_MODULE, "--repeat", "0"}, "oxatest: --repeat wants a whole number from 1 to 1000000000, not 0\n"},
      {{BAD_MODULE, "--repeat", "1000000001"},
       "oxatest: --repeat wants a whole number from 1 to 1000000000, not 1000000001\n"},
      {{BAD_MODULE, "--only", ""}, "oxatest: --only wants a text that isn't empty\n"},
      {{BAD_MODULE, "--disable="}, "oxatest: --disable wants a text that isn't empty\n"},
      {{BAD_MODULE, "--junit", ""}, "oxatest: --junit wants a text that isn't empty\n"},
      {{BAD_MODULE, "--reports="}, "oxatest: --reports wants a text that isn't empty\n"},
      {{BAD_MODULE, ""}, "oxatest: a module without a name is given\n"},

      {{BAD_MODULE, "--repeat", "2x"},
       "oxatest: --repeat wants a whole number from 1 to 1000000000, not 2x\n"},
      {{BAD_MODULE, "--timeout", "0"}, "oxatest: --timeout wants a number of seconds above 0, not 0\n"},
      {{BAD_MODULE, "--timeout="}, "oxatest: --timeout wants a number of seconds above 0, not \n"},
      {{BAD_MODULE, "--timeout", "inf"}, "oxatest: --timeout wants a number of seconds above 0, not inf\n"},
      {{BAD_MODULE, "--reports", "/dev/null/folder"}, "oxatest: /dev/null/folder: "}};
  for (const auto& row : rows) {
    const RunResult run = RunOxatest(row.m_arguments);
    EXPECT_EQ(2, run.m_iStatus) << row.m_complaint;
    EXPECT_TRUE(run.Complains(row.m_complaint)) << run.m_sError;
    EXPECT_EQ("", run.m_sOutput);
  }
}

TEST(Oxatest, TakesOptionsBehindModulesWhateverTheHabitOfTheSystem) {
  const TestSupport::ChildResult result =
      TestSupport::RunChild({OXATEST, BAD_MODULE, "--list"}, {"POSIXLY_CORRECT=1"});
  EXPECT_EQ(0, result.m_iStatus);
  EXPECT_EQ("Passes\n", result.m_sOutput);
  EXPECT_EQ("", result.m_sError);
}

TEST(Oxatest, AnswersAnOptionWithoutItsArgument) {
  const TestSupport::ChildResult result = TestSupport::RunChild({OXATEST, BAD_MODULE, "--only"});
  EXPECT_EQ(2, result.m_iStatus);
  EXPECT_NE(std::string::npos, result.m_sError.find("oxatest --help tells what can be asked for\n"));
}

TEST(Oxatest, AnswersWhereItCannotWrite) {
  const TestSupport::ChildResult early =
      TestSupport::RunChild({OXATEST, BAD_MODULE, "--junit", "/no/such/folder/junit.xml"});
  EXPECT_EQ(2, early.m_iStatus);
  EXPECT_EQ("oxatest: /no/such/folder/junit.xml: can't be written: No such file or directory\n",
            early.m_sError);
  EXPECT_EQ("", early.m_sOutput);
  const TestSupport::ChildResult late = TestSupport::RunChild({OXATEST, BAD_MODULE, "--junit", "/dev/full"});
  EXPECT_EQ(2, late.m_iStatus);
  EXPECT_EQ("oxatest: /dev/full: can't be written: No space left on device\n", late.m_sError);
}

TEST(Oxatest, TellsAboutItself) {
  const TestSupport::ChildResult help = TestSupport::RunChild({OXATEST, "--help"});
  EXPECT_EQ(0, help.m_iStatus);
  EXPECT_EQ(0U, help.m_sOutput.find("usage: oxatest MODULE... [options]\n"));
  EXPECT_NE(std::string::npos, help.m_sOutput.find("  129, 130, 131, 143\n"));
  const TestSupport::ChildResult version = TestSupport::RunChild({OXATEST, "--version"});
  EXPECT_EQ(0, version.m_iStatus);
  EXPECT_EQ("oxatest " OXACORE_VERSION "\n", version.m_sOutput);
}

TEST(Oxatest, FindsAModuleOfTheCurrentFolder) {
  const std::filesystem::path module = BAD_MODULE;
  const TestSupport::CurrentFolder folder(module.parent_path().string());
  const RunResult run = RunOxatest({module.filename().string()});
  EXPECT_EQ(0, run.m_iStatus) << run.m_sError;
}

TEST(Oxatest, FindsAModuleWhereTheSystemLooksForLibraries) {
  const std::filesystem::path module = BAD_MODULE;
  const RunResult run =
      RunOxatest({module.filename().string()}, {"LD_LIBRARY_PATH=" + module.parent_path().string()});
  EXPECT_EQ(0, run.m_iStatus) << run.m_sError;
}

// What the tests raise would otherwise be logged beside the program.
TEST(Oxatest, LeavesTheLogOnlyWhereItIsToldTo) {
  const TestSupport::TemporaryFolder folder;
  const RunResult run = RunOxatest({SUITE_MODULE, "--only", "Bad/Raises", "--reports", folder.File("a/b")});
  EXPECT_EQ(1, run.m_iStatus);
  EXPECT_TRUE(folder.Has("a/b/DefaultLog.xml"));
  EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(OXATEST).parent_path() / "DefaultLog.xml"));
}

// All that a run on a terminal of `columns` shows.
std::string OnTerminal(const std::vector<std::string>& command, unsigned short columns, const char* kind) {
  const winsize size = {24, columns, 0, 0};
  int terminal = -1;
  const pid_t child = ::forkpty(&terminal, nullptr, nullptr, &size);
  if (child == 0) {
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    ::setenv("TERM", kind, 1);
    ::execv(arguments[0], arguments.data());
    ::_exit(127);
  }
  std::string shown;
  char bytes[4096];
  for (ssize_t count = 0; (count = ::read(terminal, bytes, sizeof bytes)) > 0;)
    shown.append(bytes, static_cast<std::size_t>(count));
  ::close(terminal);
  EXPECT_EQ(1, TestSupport::AwaitChild(child, std::chrono::seconds(60)));
  return shown;
}

TEST(OxatestOnATerminal, ShowsHowFarItIs) {
  const std::string shown =
      OnTerminal({OXATEST, SUITE_MODULE, "--only", "Good", "--only", "Bad/Fails"}, 20, "xterm");
  EXPECT_NE(std::string::npos, shown.find("\r\x1B[K[1/6] Good/Passes\r\x1B[K[2/6] Good/Prints\r\x1B[K"))
      << shown;
  EXPECT_NE(std::string::npos, shown.find("\x1B[K[3/6] Good/Prints a\r\x1B[K")) << "not in its width";
  EXPECT_NE(std::string::npos, shown.find("[5/6] Bad/Fails\r\x1B[K  failed ")) << shown;
  EXPECT_NE(std::string::npos, shown.find("4 passed, 1 failed, 1 disabled in "));
  EXPECT_EQ(std::string::npos, shown.find("  passed "));
}

TEST(OxatestOnATerminal, KeepsToPlainLinesWhereThatCannotBe) {
  const std::string shown =
      OnTerminal({OXATEST, SUITE_MODULE, "--only", "Good", "--only", "Bad/Fails"}, 24, "dumb");
  EXPECT_EQ(std::string::npos, shown.find('\x1B')) << shown;
  EXPECT_NE(std::string::npos, shown.find("  passed "));
}

}  // namespace
