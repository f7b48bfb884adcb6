// oxatest where those that start it, or the machine, don't give it what it needs.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "HangingOxatest.h"
#include "Oxatest.h"
#include "Support/Eventually.h"

using namespace OxatestTests;

namespace {

// What the system tells of a process that has only this signal in a set.
std::string Only(int signal) {
  char text[64];
  std::snprintf(text, sizeof text, "%016llx\n", 1ULL << (signal - 1));
  return text;
}

TEST(OxatestSurroundings, NeedNotLetTheEndOfAChildThrough) {
  const std::vector<std::string> tells = {WILD_MODULE, "--only=Handles/Tells signals"};
  const RunResult blocked = RunOxatest(tells, {}, {"/usr/bin/env", "--block-signal=CHLD"});
  EXPECT_EQ(0, blocked.m_iStatus) << blocked.m_sError;
  EXPECT_EQ("SigBlk:\t" + Only(SIGCHLD) + "SigIgn:\t0000000000000000\n",
            blocked.Case("Tells signals").Child("system-out").m_sText);
  const RunResult ignored = RunOxatest(tells, {}, {"/usr/bin/env", "--ignore-signal=CHLD"});
  EXPECT_EQ(0, ignored.m_iStatus) << ignored.m_sError;
  EXPECT_EQ("SigBlk:\t0000000000000000\nSigIgn:\t" + Only(SIGCHLD),
            ignored.Case("Tells signals").Child("system-out").m_sText);
}

// A process that one of the module's has left behind keeps the pipe open: only the signal tells of the end.
TEST(OxatestSurroundings, NeedNotLetTheEndThroughOfOneThatLeavesAProcess) {
  const TestSupport::TemporaryFolder folder;
  const RunResult run =
      RunOxatest({WILD_MODULE, "--only=Handles/Starts a daemon"}, {"WILD_MODULE_FILE=" + folder.File("id")},
                 {"/usr/bin/env", "--block-signal=CHLD"});
  EXPECT_EQ(0, run.m_iStatus) << run.m_sError;
}

TEST(OxatestSurroundings, MayLackStandardHandles) {
  for (const char* const closed : {">&-", "<&-", "2>&-", "<&- >&-", "<&- >&- 2>&-"}) {
    const RunResult run = RunRedirected({SUITE_MODULE, "--only=Good"}, closed);
    EXPECT_EQ(0, run.m_iStatus) << closed << run.m_sError;
    ASSERT_TRUE(run.m_bParsed) << closed;
    EXPECT_EQ("5", run.m_junit.Attribute("tests"));
    EXPECT_EQ("out of C\nout of C++\nan error of C++\n", run.Case("Prints").Child("system-out").m_sText);
  }
}

TEST(OxatestSurroundings, MayTakeNoOutput) {
  const RunResult run = RunRedirected({SUITE_MODULE, "--only=Good"}, "> /dev/full");
  EXPECT_EQ(2, run.m_iStatus);
  EXPECT_EQ("oxatest: standard output can't be written\n", run.m_sError);
  EXPECT_EQ("5", run.m_junit.Attribute("tests"));
  for (const char* const option : {"--help", "--version", "--list"}) {
    const RunResult told = RunRedirected({SUITE_MODULE, option}, "> /dev/full");
    EXPECT_EQ(2, told.m_iStatus) << option;
    EXPECT_EQ("oxatest: standard output can't be written\n", told.m_sError) << option;
  }
}

TEST(OxatestSurroundings, MayHaveNoTemporaryFolder) {
  const TestSupport::TemporaryFolder folder;
  const TestSupport::CurrentFolder current(folder.Path());
  const std::string file = folder.Write("file", "");
  for (const std::string& temporary : {std::string("/no/such"), file}) {
    const TestSupport::ChildResult run =
        TestSupport::RunChild({OXATEST, SUITE_MODULE, "--only=Good"}, {"TMPDIR=" + temporary});
    EXPECT_EQ(2, run.m_iStatus);
    EXPECT_EQ(0U, run.m_sError.find("oxatest: no temporary folder can be made in " + temporary + ": "))
        << run.m_sError;
    EXPECT_EQ("", run.m_sOutput);
  }
  EXPECT_EQ((std::set<std::string>{"file"}), folder.Names());
  EXPECT_EQ(0, TestSupport::RunChild({OXATEST, SUITE_MODULE, "--only=Good"}, {"TMPDIR="}).m_iStatus);
  EXPECT_EQ((std::set<std::string>{"file"}), folder.Names());
}

std::string TheOneIn(const std::string& folder) {
  for (const auto& entry : std::filesystem::directory_iterator(folder)) return entry.path().string();
  return "";
}

TEST(OxatestSurroundings, MayHaveAnyMask) {
  const TestSupport::TemporaryFolder temporary;
  HangingOxatest hanging(temporary, "umask 300; exec \"$0\" \"$@\" > /dev/null");
  struct stat status {};
  ASSERT_EQ(0, ::stat(TheOneIn(temporary.Path()).c_str(), &status));
  EXPECT_EQ(0700U, status.st_mode & 0777U);
}

// A pipe with a reader that doesn't read any more.
class FullPipe {
 public:
  FullPipe() {
    if (::pipe(m_ends) != 0) std::abort();
    ::fcntl(m_ends[1], F_SETFL, O_NONBLOCK);
    while (::write(m_ends[1], "full", 4) > 0) continue;
    ::fcntl(m_ends[1], F_SETFL, 0);
  }
  FullPipe(const FullPipe&) = delete;
  FullPipe& operator=(const FullPipe&) = delete;
  ~FullPipe() {
    ::close(m_ends[0]);
    ::close(m_ends[1]);
  }
  int Writer() const { return m_ends[1]; }

 private:
  int m_ends[2];
};

TEST(OxatestSurroundings, MayHaveAReaderThatStopsReading) {
  const TestSupport::TemporaryFolder temporary;
  const FullPipe pipe;
  HangingOxatest hanging(temporary, "exec \"$0\" \"$@\" > /dev/fd/" + std::to_string(pipe.Writer()));
  const pid_t oxatest = hanging.m_oxatest.Id();
  siginfo_t info{};
  const auto ends = [oxatest, &info] {
    ::kill(oxatest, SIGTERM);
    return ::waitid(P_PID, static_cast<id_t>(oxatest), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           info.si_pid == oxatest;
  };
  EXPECT_TRUE(TestSupport::Eventually(ends));
  EXPECT_EQ(128 + SIGTERM, hanging.m_oxatest.Await());
}

// A shell that becomes oxatest leaves it its children.
TEST(OxatestSurroundings, ChildrenFromBeforeLiveOn) {
  const TestSupport::TemporaryFolder folder;
  const std::string child =
      "(for i in $(seq 600); do [ -e \"$GO\" ] && { : > \"$GO.seen\"; exit; }; sleep 0.1; done) "
      "< /dev/null > /dev/null 2>&1 & exec \"$0\" \"$@\"";
  const RunResult run = RunOxatest({BAD_MODULE}, {"GO=" + folder.File("go")}, {"/bin/sh", "-c", child});
  EXPECT_EQ(0, run.m_iStatus) << run.m_sError;
  folder.Write("go", "");
  EXPECT_TRUE(TestSupport::Eventually([&] { return folder.Has("go.seen"); }));
}

}  // namespace
