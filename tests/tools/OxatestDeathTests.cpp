// oxatest on modules that can't be run, and on tests that end their process.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>

#include "Oxatest.h"
#include "Support/BackgroundChild.h"
#include "Support/Eventually.h"

using namespace OxatestTests;

namespace {

const char* const sTIMEOUT = "--timeout=20";  // for what isn't to hang

TEST(OxatestOnBadModules, SaysWhatIsWrong) {
  const struct {
    const char* m_wanted;
    const char* m_complaint;
  } rows[] = {{"null", ": GetModuleTestSuite gives no suite\n"},
              {"raises", ": GetModuleTestSuite throws: "},
              {"throws", ": GetModuleTestSuite throws: of the language\n"},
              {"throws a number",
               ": GetModuleTestSuite throws: an exception that is neither an Error nor a std::exception\n"},
              {"exits", ": ended with exit status 0 in GetModuleTestSuite\n"},
              {"dies", ": ended by signal 9 (Killed) in GetModuleTestSuite\n"},
              {"dies on loading", ": ended by signal 9 (Killed) while it was loaded\n"}};
  for (const auto& row : rows) {
    const RunResult run = RunOxatest({BAD_MODULE, SUITE_MODULE, "--only", "Good/Passes", sTIMEOUT},
                                     {"BAD_MODULE=" + std::string(row.m_wanted)});
    EXPECT_EQ(2, run.m_iStatus) << row.m_wanted;
    EXPECT_EQ(0U, run.m_sError.find(std::string("oxatest: " BAD_MODULE) + row.m_complaint)) << run.m_sError;
    EXPECT_TRUE(run.Says("1 passed in ")) << row.m_wanted << ": the other module is taken along";
    ASSERT_TRUE(run.m_bParsed);
    EXPECT_EQ("bad module", run.Case("(module)").Child("error").Attribute("type")) << row.m_wanted;
    EXPECT_EQ("1", run.m_junit.Attribute("errors"));
  }
}

TEST(OxatestOnBadModules, SaysWhyOneCannotBeLoaded) {
  const TestSupport::TemporaryFolder folder;
  const std::string text = folder.Write("text.so", "no library\n");
  const RunResult run = RunOxatest({"/no/such.so", text, folder.Path(), NO_SUITE_MODULE, BAD_MODULE});
  EXPECT_EQ(2, run.m_iStatus);
  EXPECT_TRUE(run.Complains("oxatest: /no/such.so: can't be loaded: /no/such.so: ")) << run.m_sError;
  EXPECT_TRUE(run.Complains("oxatest: " + text + ": can't be loaded: " + text + ": "));
  EXPECT_TRUE(run.Complains("oxatest: " + folder.Path() + ": can't be loaded: "));
  EXPECT_TRUE(run.Complains("oxatest: " NO_SUITE_MODULE ": has no function GetModuleTestSuite\n"));
  EXPECT_TRUE(run.Says("1 passed in "));
  EXPECT_EQ("5", run.m_junit.Attribute("tests"));
  EXPECT_EQ("4", run.m_junit.Attribute("errors"));
}

#ifndef __SANITIZE_ADDRESS__  // which ends a process with two copies by itself
TEST(OxatestOnBadModules, RefusesAnotherCopyOfTheLibrary) {
  const TestSupport::TemporaryFolder folder;
  const std::string copy = folder.Write("libOxaCore.so", TestSupport::ReadFile(OXACORE_LIBRARY));
  const RunResult run = RunOxatest({copy, sTIMEOUT});
  EXPECT_EQ(2, run.m_iStatus);
  EXPECT_TRUE(run.Complains("oxatest: " + copy +
                            ": brings along another copy of OxaCore than the one that oxatest runs with\n"))
      << run.m_sError;
}
#endif

TEST(OxatestOnBadModules, EndsOneThatHangs) {
  const RunResult run = RunOxatest({BAD_MODULE, "--timeout=" HANG_LIMIT}, {"BAD_MODULE=hangs"});
  EXPECT_EQ(2, run.m_iStatus);
  EXPECT_TRUE(run.Complains(": ended since it took more than " HANG_LIMIT " s in GetModuleTestSuite\n"))
      << run.m_sError;
}

TEST(OxatestOnBadModules, KillsOneThatDoesntEndWhenItIsAsked) {
  const RunResult run =
      RunOxatest({BAD_MODULE, "--timeout=" HANG_LIMIT}, {"BAD_MODULE=hangs whatever it is asked"});
  EXPECT_EQ(2, run.m_iStatus);
  EXPECT_TRUE(run.Complains(": ended since it took more than " HANG_LIMIT " s in GetModuleTestSuite\n"))
      << run.m_sError;
}

TEST(OxatestOnBadModules, BlamesNoTestForWhatIsBehindAll) {
  for (const char* const wanted : {"dies with its tree", "dies on unloading"}) {
    const RunResult run = RunOxatest({BAD_MODULE, sTIMEOUT}, {"BAD_MODULE=" + std::string(wanted)});
    EXPECT_EQ(1, run.m_iStatus) << wanted << run.m_sError;
    EXPECT_TRUE(run.Says("1 passed, 1 crashed in ")) << run.m_sOutput;
    const Element crash = run.Case("(behind all tests)").Child("error");
    EXPECT_EQ("ended by signal 9 (Killed), behind all tests, while the tree or the library was given up",
              crash.Attribute("message"));
  }
}

// All tests of "Deadly" up to the one that ends the process, and one behind it.
RunResult RunDeadly(const std::string& name, const std::vector<std::string>& more = {}) {
  std::vector<std::string> arguments = {
      SUITE_MODULE, "--only=Deadly/Before", "--only=Deadly/" + name, "--only=Deadly/After",
      BAD_MODULE,   "--only=Passes"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  return RunOxatest(arguments);
}

void ExpectBlamed(const RunResult& run, const std::string& name, const std::string& type,
                  const std::string& how) {
  EXPECT_EQ(1, run.m_iStatus) << name << ": " << run.m_sError;
  EXPECT_TRUE(run.Says("Did not pass:\n  " SUITE_MODULE ": Deadly/" + name + "\n2 passed, 1 " + type +
                       ", 1 not run in "))
      << run.m_sOutput;
  ASSERT_TRUE(run.m_bParsed);
  EXPECT_EQ(type, run.Case(name).Child("error").Attribute("type"));
  EXPECT_EQ(how, run.Case(name).Child("error").Attribute("message"));
  EXPECT_EQ("(none)", run.Case("Before").Child("error").Attribute("type"));
  EXPECT_EQ("not run", run.Case("After").Child("skipped").Attribute("message"));
  EXPECT_EQ("testcase", run.Case("Passes").m_sName) << "the other module is taken along";
}

TEST(OxatestOnDeadlyTests, NamesTheOneThatExits) {
  ExpectBlamed(RunDeadly("Exits", {sTIMEOUT}), "Exits", "crashed", "ended with exit status 3");
  ExpectBlamed(RunDeadly("Exits as if all were well", {sTIMEOUT}), "Exits as if all were well", "crashed",
               "ended with exit status 0");
}

TEST(OxatestOnDeadlyTests, NamesTheOneThatAborts) {
  ExpectBlamed(RunDeadly("Aborts"), "Aborts", "crashed", "ended by signal 6 (Aborted)");
}

TEST(OxatestOnDeadlyTests, NamesTheOneThatCutsItOff) {
  ExpectBlamed(RunDeadly("Closes all", {sTIMEOUT}), "Closes all", "crashed", "ended with exit status 1");
}

TEST(OxatestOnDeadlyTests, NamesTheOneThatHangs) {
  const RunResult run = RunDeadly("Hangs", {"--timeout=" HANG_LIMIT});
  ExpectBlamed(run, "Hangs", "hung", "ended since it took more than " HANG_LIMIT " s");
  EXPECT_EQ("waits for ever\n", run.Case("Hangs").Child("system-out").m_sText);
  EXPECT_GE(std::atof(run.Case("Hangs").Attribute("time").c_str()), std::atof(HANG_LIMIT));
}

TEST(OxatestOnDeadlyTests, NamesTheOneWhoseTearDownCrashes) {
  const std::string name = "Crashes in its tear-down";
  const RunResult run = RunDeadly(name);
  const std::string how =
      "ended by signal 9 (Killed), after the test: in its tear-down, or in what its suite does itself";
  ExpectBlamed(run, name, "crashed", how);
  EXPECT_EQ(how + "\nits text", run.Case(name).Child("error").m_sText);
}

TEST(OxatestOnDeadlyTests, NamesTheSuiteWhoseSetUpCrashes) {
  const RunResult run = RunOxatest({SUITE_MODULE, "--only=Good/Passes", "--only=Ends in its set-up"});
  EXPECT_EQ(1, run.m_iStatus);
  EXPECT_EQ("ended by signal 9 (Killed) in the set-up of the suite, or in what it does itself",
            run.Case("Ends in its set-up").Child("error").Attribute("message"));
  EXPECT_TRUE(run.Says("1 passed, 1 crashed, 1 not run in ")) << run.m_sOutput;
}

// Runs oxatest, with what is temporary in a folder, until a test hangs that tells so.
class Hanging {
 public:
  Hanging(const TestSupport::TemporaryFolder& folder, const std::string& name)
      : m_oxatest({"/usr/bin/env", "TMPDIR=" + folder.Path(), "SUITE_MODULE_FILE=" + folder.File("runs"),
                   OXATEST, SUITE_MODULE, "--only=Deadly/Before", "--only=Deadly/" + name,
                   "--only=Deadly/After", "--junit", folder.File("junit.xml"), BAD_MODULE}) {
    const auto told = [&folder] { return folder.Read("runs").find('\n') != std::string::npos; };
    EXPECT_TRUE(TestSupport::Eventually(told));
    m_module = std::atoi(folder.Read("runs").c_str());
  }

  TestSupport::BackgroundChild m_oxatest;
  pid_t m_module = 0;  // the process in which the test hangs
};

// Sends a signal to oxatest alone. Gives the module's process, which is gone, in `module`.
RunResult Interrupt(const std::string& name, int signal, pid_t& module) {
  TestSupport::ExpectDeaths();
  const TestSupport::TemporaryFolder folder;
  Hanging hanging(folder, name);
  module = hanging.m_module;
  ::kill(hanging.m_oxatest.Id(), signal);
  RunResult run;
  run.m_iStatus = hanging.m_oxatest.Await();
  run.m_bParsed = ReadJUnit(folder.File("junit.xml"), run.m_junit);
  EXPECT_EQ((std::set<std::string>{"junit.xml", "runs"}), folder.Names());
  return run;
}

void ExpectInterrupted(const RunResult& run, const std::string& name) {
  ASSERT_TRUE(run.m_bParsed);
  EXPECT_EQ("testcase", run.Case("Before").m_sName);
  EXPECT_EQ("", run.Case("Before").Child("error").m_sName);
  EXPECT_EQ("interrupted", run.Case(name).Child("error").Attribute("type"));
  EXPECT_EQ("1", run.m_junit.Attribute("errors"));
  EXPECT_EQ("not run", run.Case("After").Child("skipped").Attribute("message"));
  EXPECT_EQ("", run.Case("Passes").m_sName) << "another module was begun";
}

TEST(OxatestInterrupted, TellsWhatIsKnown) {
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
    pid_t module = 0;
    const RunResult run = Interrupt("Hangs", signal, module);
    EXPECT_EQ(128 + signal, run.m_iStatus);
    ExpectInterrupted(run, "Hangs");
    EXPECT_NE(0, ::kill(module, 0)) << "the module's process is still there";
  }
}

// From now on what loses its parent becomes this process's own: it can be waited for, whatever init does.
void AdoptOrphans() { ASSERT_EQ(0, ::prctl(PR_SET_CHILD_SUBREAPER, 1)); }

// Whether no member of the group is left.
bool IsGone(pid_t group) {
  while (::waitpid(-group, nullptr, WNOHANG) > 0) continue;
  return ::kill(-group, 0) != 0;
}

TEST(OxatestInterrupted, LeavesNoProcess) {
  AdoptOrphans();
  pid_t module = 0;
  ExpectInterrupted(Interrupt("Hangs together", SIGTERM, module), "Hangs together");
  EXPECT_TRUE(TestSupport::Eventually([module] { return IsGone(module); }));
}

TEST(OxatestInterrupted, TakesTheModuleAlongWhenItIsKilled) {
  TestSupport::ExpectDeaths();
  AdoptOrphans();
  const TestSupport::TemporaryFolder folder;
  folder.Write("junit.xml", "of the run before");
  Hanging hanging(folder, "Hangs");
  hanging.m_oxatest.Kill();
  EXPECT_EQ("of the run before", folder.Read("junit.xml"));
  EXPECT_TRUE(TestSupport::Eventually([&hanging] { return IsGone(hanging.m_module); }));
}

TEST(OxatestOnFaults, LeavesAnErrorWhatTheLibraryMakesOne) {
  const RunResult run = RunOxatest({SUITE_MODULE, "--only=Bad/Null write", "--only=Deadly/After"});
  EXPECT_EQ(1, run.m_iStatus);
  EXPECT_EQ("error", run.Case("Null write").Child("error").Attribute("type"));
  EXPECT_EQ(
      0U,
      run.Case("Null write").Child("error").Attribute("message").find("Illegal write to virtual address 0 "))
      << run.Case("Null write").Child("error").Attribute("message");
  EXPECT_TRUE(run.Says("1 passed, 1 error in "));
}

TEST(OxatestOnFaults, NamesTheTestThatCrashesAndKeepsTheReport) {
  const TestSupport::TemporaryFolder folder;
  const RunResult run = RunDeadly("Crashes", {"--reports", folder.Path()});
  ExpectBlamed(run, "Crashes", "crashed", "ended by signal 11 (Segmentation fault)");
  EXPECT_EQ(0U, run.Case("Crashes").Child("system-out").m_sText.find("said before the crash\n"));
  EXPECT_NE("", TestSupport::RecordsIn(folder));
}

}  // namespace
