// Processes that this one starts, tried with the shell as the program.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "Platform/Processes.h"
#include "Support/ChildProcess.h"
#include "Support/Eventually.h"
#include "Support/TemporaryFolder.h"

namespace Platform = Oxa::Core::Platform;
using Platform::StartedProcess;
using TestSupport::TemporaryFolder;

namespace {

constexpr long iLIMIT = 60000;
constexpr long iSHORT = 50;
const std::string sSHELL = "/bin/sh";
// Goes on for ever, and as one process.
const std::string sFOR_EVER = "while :; do read line < /dev/zero; done";

std::vector<std::string> Shell(const std::string& script, const std::vector<std::string>& arguments = {}) {
  std::vector<std::string> command{sSHELL, "-c", script, sSHELL};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return command;
}

int StatusOf(const std::vector<std::string>& command) {
  StartedProcess process;
  EXPECT_EQ(0, process.Start(command));
  int status = -1000;
  EXPECT_EQ(0, process.Wait(iLIMIT, status));
  return status;
}

// What `script` writes.
std::string TextOf(const std::string& script, const std::vector<std::string>& arguments = {}) {
  const TemporaryFolder folder;
  std::vector<std::string> all{folder.File("text")};
  all.insert(all.end(), arguments.begin(), arguments.end());
  EXPECT_EQ(0, StatusOf(Shell("exec 3> \"$1\"; shift; " + script, all)));
  return folder.Read("text");
}

bool HasChildren() { return ::waitpid(-1, nullptr, WNOHANG) >= 0; }

}  // namespace

TEST(StartedProcess, TellsItsExitStatus) {
  EXPECT_EQ(0, StatusOf(Shell("exit 0")));
  EXPECT_EQ(1, StatusOf(Shell("exit 1")));
  EXPECT_EQ(255, StatusOf(Shell("exit 255")));
  EXPECT_FALSE(HasChildren());
}

TEST(StartedProcess, TellsTheSignalThatEndedIt) { EXPECT_EQ(-SIGTERM, StatusOf(Shell("kill -TERM $$"))); }

TEST(StartedProcess, HandsArgumentsOnAsTheyAre) {
  EXPECT_EQ("<a b><><$HOME><'\"\\><*><;exit 3>",
            TextOf("printf '<%s>' \"$@\" >&3", {"a b", "", "$HOME", "'\"\\", "*", ";exit 3"}));
}

TEST(StartedProcess, HasNothingToReadAndNowhereToWrite) {
  EXPECT_EQ("/dev/null\n/dev/null\n",
            TextOf("files=$(readlink /proc/$$/fd/0 /proc/$$/fd/1); printf '%s\n' \"$files\" >&3"));
  EXPECT_EQ("read 0", TextOf("read line || printf 'read %s' \"${#line}\" >&3"));
}

TEST(StartedProcess, HasOurErrorOutputOurFolderAndOurEnvironment) {
  const TemporaryFolder folder;
  const TestSupport::TemporaryFile errors;
  const int before = ::dup(STDERR_FILENO);
  ::dup2(errors.Handle(), STDERR_FILENO);
  ::setenv("OXACORE_TEST_OF_STARTED", "known", 1);
  {
    const TestSupport::CurrentFolder current(folder.Path());
    EXPECT_EQ(0, StatusOf(Shell("echo \"$OXACORE_TEST_OF_STARTED $(pwd -P)\" >&2")));
  }
  ::unsetenv("OXACORE_TEST_OF_STARTED");
  ::dup2(before, STDERR_FILENO);
  ::close(before);
  EXPECT_EQ("known " + std::filesystem::canonical(folder.Path()).string() + "\n", errors.Content());
}

TEST(StartedProcess, InheritsNoOtherOpenFile) {
  const int open = ::open("/dev/null", O_RDONLY);
  const int high = ::fcntl(open, F_DUPFD, 700);
  ASSERT_GE(high, 700);
  EXPECT_EQ(0, StatusOf(Shell("for file in /proc/$$/fd/*; do n=${file##*/}; [ $n -lt 3 ] || [ $n = 255 ] || "
                              "[ \"$(readlink $file)\" != /dev/null ] || exit 7; done; [ ! -e /proc/$$/fd/" +
                              std::to_string(high) + " ]")));
  ::close(high);
  ::close(open);
}

TEST(StartedProcess, BlocksAndIgnoresNoSignal) {
  sigset_t blocked, before;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGTERM);
  ::pthread_sigmask(SIG_BLOCK, &blocked, &before);
  const auto usual = ::signal(SIGUSR1, SIG_IGN);
  EXPECT_EQ(-SIGTERM, StatusOf(Shell("kill -TERM $$; exit 5")));
  EXPECT_EQ(-SIGUSR1, StatusOf(Shell("kill -USR1 $$; exit 5")));
  ::signal(SIGUSR1, usual);
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST(StartedProcess, WaitsNoLongerThanItsLimit) {
  StartedProcess process;
  ASSERT_EQ(0, process.Start(Shell(sFOR_EVER)));
  int status = -1000;
  EXPECT_EQ(ETIMEDOUT, process.Wait(0, status));
  EXPECT_LE(1.0 * iSHORT,
            TestSupport::MillisecondsOf([&] { EXPECT_EQ(ETIMEDOUT, process.Wait(iSHORT, status)); }));
  EXPECT_EQ(-1000, status);
  EXPECT_EQ(EBUSY, process.Start(Shell("exit 0")));
}

TEST(StartedProcess, LeavesNothingOfWhatStillRuns) {
  {
    StartedProcess process;
    ASSERT_EQ(0, process.Start(Shell(sFOR_EVER)));
    EXPECT_TRUE(HasChildren());
  }
  EXPECT_FALSE(HasChildren());
}

TEST(StartedProcess, LeavesNothingOfWhatNobodyWaitedFor) {
  {
    StartedProcess process;
    ASSERT_EQ(0, process.Start(Shell("exit 3")));
  }
  EXPECT_FALSE(HasChildren());
}

TEST(StartedProcess, IsStartedAgainOnceItEnded) {
  StartedProcess process;
  int status = -1000;
  for (const std::string expected : {"3", "4"}) {
    ASSERT_EQ(0, process.Start(Shell("exit " + expected)));
    EXPECT_EQ(0, process.Wait(iLIMIT, status));
    EXPECT_EQ(std::stoi(expected), status);
  }
  ASSERT_EQ(0, process.Start(Shell(sFOR_EVER)));
  process.Kill();
  process.Kill();
  EXPECT_EQ(ECHILD, process.Wait(0, status));
  EXPECT_FALSE(HasChildren());
}

TEST(StartedProcess, TellsWhyItCantStart) {
  StartedProcess process;
  EXPECT_EQ(EINVAL, process.Start({}));
  EXPECT_EQ(EINVAL, process.Start({"", "argument"}));
  EXPECT_EQ(ENOENT, process.Start({"/no/such/program"}));
  EXPECT_EQ(EACCES, process.Start({"/tmp"}));
  int status = -1000;
  EXPECT_EQ(ECHILD, process.Wait(iLIMIT, status));
  EXPECT_EQ(-1000, status);
  process.Kill();
}

// A host that wants to hear nothing of its children: their ends leave no status behind.
TEST(StartedProcess, TellsThatNobodyKnowsTheStatus) {
  const auto usual = ::signal(SIGCHLD, SIG_IGN);
  StartedProcess process;
  EXPECT_EQ(0, process.Start(Shell("exit 0")));
  int status = -1000;
  EXPECT_EQ(ECHILD, process.Wait(iLIMIT, status));
  ::signal(SIGCHLD, usual);
  EXPECT_EQ(-1000, status);
}

TEST(ProgramFolders, AreThoseOfThePathInItsOrder) {
  const char* const value = ::getenv("PATH");
  const std::string before = value != nullptr ? value : "";
  std::vector<std::string> folders{"untouched"};
  ::setenv("PATH", "/one:relative::/two words:/three/:", 1);
  EXPECT_EQ(0, Platform::ProgramFolders(folders));
  EXPECT_EQ((std::vector<std::string>{"/one", "/two words", "/three/"}), folders);
  ::unsetenv("PATH");
  EXPECT_EQ(0, Platform::ProgramFolders(folders));
  EXPECT_TRUE(folders.empty());
  if (value != nullptr) ::setenv("PATH", before.c_str(), 1);
}
