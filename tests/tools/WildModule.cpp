// A module whose tests know no bounds.
#include <Infrastructure/OxaCore/AutoTest.h>
#include <Infrastructure/OxaCore/OxaCore.h>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "Support/Eventually.h"
#include "Tests.h"

using namespace Oxa::Core;
using namespace ModuleTests;

namespace {

const std::size_t uMEGABYTE = 1U << 20;

// 65535 characters of one byte, and then of two.
std::string SayMuch() {
  std::string text(65535, 'x');
  for (std::size_t i = 0; i < 5 * uMEGABYTE; ++i) text += "\xC2\xB5";
  return text;
}

// The part of standard output's file that takes up space.
std::size_t SpaceOfOutput() {
  struct stat status {};
  return ::fstat(STDOUT_FILENO, &status) == 0 ? static_cast<std::size_t>(status.st_blocks) * 512 : 0;
}

std::string PrintAndWait() {
  const std::string line = std::string(1023, '.') + '\n';
  for (std::size_t i = 0; i < 24 * 1024; ++i) std::fputs(line.c_str(), stdout);
  std::puts("the end");
  std::fflush(stdout);
  OXA_TEST_ASSERT(TestSupport::Eventually([] { return SpaceOfOutput() < 4 * uMEGABYTE; }));
  return "";
}

const char* File() {
  const char* const file = std::getenv("WILD_MODULE_FILE");
  return file == nullptr ? "/dev/null" : file;
}

// Leaves the group and the session, as services do. Its name looks like the end of a name, with a state and a parent.
std::string StartDaemon() {
  const pid_t between = ::fork();
  if (between == 0) {
    ::setsid();
    if (::fork() != 0) ::_exit(0);
    ::prctl(PR_SET_NAME, "a) S 1 (b) S 1");
    ::alarm(120);  // it isn't to stay for ever if nobody ends it
    std::ofstream(File()) << ::getpid() << '\n';
    for (;;) ::pause();
  }
  ::waitpid(between, nullptr, 0);
  const auto isThere = [] { return std::ifstream(File()).peek() != EOF; };
  OXA_TEST_ASSERT(TestSupport::Eventually(isThere));
  return "";
}

// For that of its runner.
[[noreturn]] std::string LeaveTheGroup() {
  OXA_TEST_EQUALS(0, ::setpgid(0, ::getpgid(::getppid())));
  ::alarm(120);
  for (;;) ::pause();
}

std::string ComeOutTwice() {
  const pid_t copy = ::fork();
  if (copy == 0) return "of the copy";
  int status = 0;
  ::waitpid(copy, &status, 0);
  OXA_TEST_EQUALS(1, WEXITSTATUS(status));
  return "of the test";
}

// Whether it is the end of a pipe to write to, and wasn't inherited from those that started the runner.
bool IsOwnPipe(int handle) {
  struct stat status {};
  return ::fstat(handle, &status) == 0 && S_ISFIFO(status.st_mode) &&
         ::fcntl(handle, F_GETFD) == FD_CLOEXEC && (::fcntl(handle, F_GETFL) & O_ACCMODE) == O_WRONLY;
}

std::vector<int> Pipes() {
  std::vector<int> pipes;
  for (int handle = 3; handle < 1024; ++handle)
    if (IsOwnPipe(handle)) pipes.push_back(handle);
  OXA_TEST_ASSERT(!pipes.empty());
  return pipes;
}

void WriteIntoPipes(const std::string& bytes) {
  for (const int pipe : Pipes())
    if (::write(pipe, bytes.data(), bytes.size()) < 0) std::perror("pipe");
}

std::string ReplacePipes() {
  const int file = ::open(File(), O_WRONLY | O_CREAT, 0600);
  for (const int pipe : Pipes()) ::dup2(file, pipe);
  return "";
}

// What the process was given by those that started it.
std::string TellSignals() {
  std::ifstream status("/proc/thread-self/status");
  for (std::string line; std::getline(status, line);)
    if (line.rfind("SigBlk:", 0) == 0 || line.rfind("SigIgn:", 0) == 0) std::cout << line << '\n';
  return "";
}

class Announcing : public Test {
 public:
  Announcing(const std::string& name, bool forEver) : Test(name), m_bForEver(forEver) {}

 protected:
  Result Execute() override {
    std::thread([this] { Announce(); }).join();  // any thread may
    while (m_bForEver) {
      Announce();
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return Result(GetName(), Result::ePASSED, "");
  }

 private:
  void Announce() {
    const Doing announcement("This will take\nabout 2 \x1B minutes.", nullptr);
    Test::CustomNotification notification(announcement);
    Broadcast(notification);
  }

  const bool m_bForEver;
};

// Runs another test of the tree, and fails when that is done.
class Running : public Test {
 public:
  Running(const std::string& name, const boost::shared_ptr<Test>& other) : Test(name), m_spOther(other) {}

 protected:
  Result Execute() override {
    m_spOther->RunTest();
    return Result(GetName(), Result::eFAILED, "after another one");
  }

 private:
  const boost::shared_ptr<Test> m_spOther;
};

SuitePtr Nested() {
  const auto inner = boost::make_shared<Doing>("Inner", [] { return "at rest"; });
  SuitePtr suite = boost::make_shared<Suite>("Nested");
  suite->AddTest(boost::make_shared<Running>("Outer", inner));
  suite->AddTest(inner);
  return suite;
}

SuitePtr Handles() {
  SuitePtr suite = boost::make_shared<Suite>("Handles");
  suite->With("Starts a daemon", &StartDaemon).With("Comes out twice", &ComeOutTwice);
  suite->With("Writes into pipes", [] {
    WriteIntoPipes("what nobody expects there");
    return "";
  });
  suite->With("Dies within a message", []() -> std::string {
    WriteIntoPipes("Tax");
    std::_Exit(0);
  });
  suite->With("Replaces pipes", &ReplacePipes).With("Tells signals", &TellSignals);
  suite->With("Leaves the group", &LeaveTheGroup);
  suite->With("After", [] { return ""; });
  return suite;
}

// All say 64 KiB, more than is kept.
SuitePtr Talkative() {
  SuitePtr suite = boost::make_shared<Suite>("Talkative");
  for (int i = 0; i < 300; ++i)
    suite->With("Talks " + std::to_string(i), [] { return std::string(100000, 'y'); });
  return suite;
}

SuitePtr Loud(int number) {
  const auto print = [] { std::cout << std::string(60000, 'z') << std::endl; };
  SuitePtr suite = boost::make_shared<Suite>("Loud " + std::to_string(number), print);
  suite->With("Silent", [] { return ""; });
  return suite;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) boost::shared_ptr<TestSuite> GetModuleTestSuite();
boost::shared_ptr<TestSuite> GetModuleTestSuite() {
  SuitePtr root = boost::make_shared<Suite>("Wild Tests");
  root->With("Says much", &SayMuch).With("Prints much and waits", &PrintAndWait);
  root->AddTest(boost::make_shared<Announcing>("Announces", false));
  root->AddTest(boost::make_shared<Announcing>("Announces for ever", true));
  root->AddTest(Handles());
  root->AddTest(Nested());
  root->AddTest(Talkative());
  for (int i = 0; i < 3; ++i) root->AddTest(Loud(i));
  return root;
}
