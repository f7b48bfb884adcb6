// Dumps where something stands in their way: less is in them, and they end.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <link.h>
#include <sys/stat.h>

#include "Dump/DumpScene.h"
#include "Platform/Ending.h"
#include "Platform/Faults.h"
#include "Support/ChildProcess.h"

namespace {

using namespace TestSupport;

constexpr int iCANNOT = 77;

int WriteTo(const std::string& name, Platform::DumpFilter filter = nullptr, void* parameter = nullptr,
            int milliseconds = iDUMP_TIME) {
  return Platform::WriteDump(name.c_str(), nullptr, 0, filter, parameter, milliseconds);
}

TEST(DumpTrouble, AFolderThatDoesntExist) {
  const TemporaryFolder folder;
  EXPECT_EQ(WriteTo(folder.File("missing/x.dmp")), ENOENT);
  EXPECT_TRUE(folder.Names().empty());
}

TEST(DumpTrouble, AFolderInPlaceOfAFile) {
  const TemporaryFolder folder;
  EXPECT_EQ(WriteTo(folder.Path()), EISDIR);
}

TEST(DumpTrouble, ANameThatIsTooLong) { EXPECT_EQ(WriteTo("/tmp/" + std::string(5000, 'x')), ENAMETOOLONG); }

TEST(DumpTrouble, AnOldFileIsReplacedAndBecomesTheOwnersOnly) {
  const TemporaryFolder folder;
  const std::string name = folder.Write("old.dmp", std::string(20 << 20, 'x'));
  ASSERT_EQ(::chmod(name.c_str(), 0644), 0);
  ASSERT_EQ(WriteTo(name), 0);
  EXPECT_LT(std::filesystem::file_size(name), 10U << 20U);
  struct stat status = {};
  ASSERT_EQ(::stat(name.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
  EXPECT_NO_THROW(DumpReader(folder.Read("old.dmp")).Threads());
}

TEST(DumpTrouble, BothSeparatorsName) {
  const TemporaryFolder folder;
  EXPECT_EQ(WriteTo(folder.Path() + "\\x.dmp"), 0);
  EXPECT_TRUE(folder.Has("x.dmp"));
}

struct SecondDump {
  std::string m_sPath;
  std::atomic<int> m_iCode{0};
};

// The filter runs while a dump is on its way: what it asks for is the second one at once.
bool AskForAnother(unsigned /*callback*/, unsigned& /*flags*/, void* parameter) {
  SecondDump& second = *static_cast<SecondDump*>(parameter);
  second.m_iCode = WriteTo(second.m_sPath);
  return true;
}

TEST(DumpTrouble, OneAtATime) {
  const TemporaryFolder folder;
  SecondDump second{folder.File("never.dmp"), {0}};
  EXPECT_EQ(WriteTo(folder.File("x.dmp"), &AskForAnother, &second), 0);
  EXPECT_EQ(second.m_iCode, EBUSY);
  EXPECT_FALSE(folder.Has("never.dmp"));
  EXPECT_EQ(WriteTo(folder.File("x.dmp")), 0) << "and one after the other";
}

#ifndef __SANITIZE_ADDRESS__  // it would wait for the threads that stand still
// On a stack of its own: what it came from is the one that a dump is made on.
void DumpAndExit(void* path) { ::_exit(WriteTo(*static_cast<const std::string*>(path))); }

bool ForkOnce(unsigned /*callback*/, unsigned& /*flags*/, void* parameter) {
  SecondDump& second = *static_cast<SecondDump*>(parameter);
  if (second.m_iCode != -1) return true;
  const pid_t child = ::fork();
  if (child == 0) Platform::CallOnNewStack(256 * 1024, &DumpAndExit, &second.m_sPath);
  second.m_iCode = AwaitChild(child, std::chrono::seconds(60));
  return true;
}

// By a process without other threads: one that stands still may hold what forking has to lock.
TEST(DumpTrouble, AChildThatWasForkedOffMeanwhileHasItsOwn) {
  const TemporaryFolder folder;
  const pid_t alone = ::fork();
  if (alone == 0) {
    SecondDump second{folder.File("child.dmp"), {-1}};
    const int code = WriteTo(folder.File("x.dmp"), &ForkOnce, &second);
    ::_exit(code == 0 ? second.m_iCode.load() : iCANNOT);
  }
  EXPECT_EQ(AwaitChild(alone, std::chrono::seconds(120)), 0);
  EXPECT_EQ(ReadDump(folder.File("child.dmp")).Threads().size(), 1U);
}
#endif

bool Hang(unsigned /*callback*/, unsigned& /*flags*/, void* /*parameter*/) {
  for (;;) ::syscall(SYS_pause);
}

TEST(DumpTrouble, WhatHangsIsCutShortAndTheThreadsGoOn) {
  const KnownThread thread("known");
  const TemporaryFolder folder;
  const double took =
      MillisecondsOf([&] { EXPECT_EQ(WriteTo(folder.File("x.dmp"), &Hang, nullptr, 500), 0); });
  EXPECT_GE(took, 400);
  EXPECT_LT(took, 20000);
  const std::uint64_t rounds = thread.Rounds();
  EXPECT_TRUE(Eventually([&] { return thread.Rounds() > rounds + 2; }));
}

// The first helper dies while the threads stand still.
bool KillOnce(unsigned /*callback*/, unsigned& /*flags*/, void* parameter) {
  std::atomic<bool>& killed = *static_cast<std::atomic<bool>*>(parameter);
  if (!killed.exchange(true)) ::syscall(SYS_kill, ::syscall(SYS_getpid), SIGKILL);
  return true;
}

// Whether the dump has the place of the thread, which may just be on its way.
bool HasPlaceWithoutFirstHelper(const KnownThread& thread) {
  std::atomic<bool> killed{false};
  const TemporaryFolder folder;
  EXPECT_EQ(WriteTo(folder.File("x.dmp"), &KillOnce, &killed), 0);
  EXPECT_TRUE(killed);
  const DumpReader::Registers registers = ReadDump(folder.File("x.dmp")).ThreadOf(thread.Id()).m_registers;
  EXPECT_EQ(registers.m_uFlags, 0x00100001U) << "not more than that";
  return registers.m_uPlace != 0;
}

TEST(DumpTrouble, AHelperThatIsKilledIsFollowedByAnotherThatLetsTheThreadsRun) {
  const KnownThread thread("known", 7);
  EXPECT_TRUE(Eventually([&thread] { return HasPlaceWithoutFirstHelper(thread); }));
  const std::uint64_t rounds = thread.Rounds();
  EXPECT_TRUE(Eventually([&] { return thread.Rounds() > rounds + 2; }));
}

bool HangAtModules(unsigned callback, unsigned& flags, void* parameter) {
  constexpr unsigned uINCLUDE_MODULE = 4;
  return callback != uINCLUDE_MODULE || Hang(callback, flags, parameter);
}

TEST(DumpTrouble, WhatHangsLaterLeavesWhatCameFirst) {
  const KnownThread thread("known", 7);
  const TemporaryFolder folder;
  EXPECT_EQ(WriteTo(folder.File("x.dmp"), &HangAtModules, nullptr, 500), 0);
  const DumpReader dump = ReadDump(folder.File("x.dmp"));
  EXPECT_THAT(dump.Types(), testing::ElementsAre(3, 6, 7, 15));
  EXPECT_EQ(dump.ThreadOf(thread.Id()).m_registers.m_uFlags, 0x0010000fU);
  EXPECT_EQ(dump.TheException().m_uThread, dump.Threads().front().m_uId);
}

// It writes who it is where the test can read that, and waits for ever.
bool TellAndHang(unsigned /*callback*/, unsigned& /*flags*/, void* parameter) {
  const auto helper = static_cast<pid_t>(::syscall(SYS_getpid));
  if (::syscall(SYS_write, *static_cast<int*>(parameter), &helper, sizeof helper) < 0) return false;
  for (;;) ::syscall(SYS_pause);
}

// Gone, or nothing but an entry that whoever is responsible for orphans hasn't cleared away.
bool IsDead(pid_t process) {
  const std::string stat = ReadFile("/proc/" + std::to_string(process) + "/stat");
  return stat.empty() || stat.find(") Z") != std::string::npos || stat.find(") X") != std::string::npos;
}

TEST(DumpTrouble, NoHelperOutlivesWhoAskedForIt) {
  const TemporaryFolder folder;
  int ends[2] = {};
  ASSERT_EQ(::pipe(ends), 0);
  const pid_t asking = ::fork();
  if (asking == 0) ::_exit(WriteTo(folder.File("x.dmp"), &TellAndHang, &ends[1], 600000));
  pid_t helper = 0;
  ASSERT_EQ(::read(ends[0], &helper, sizeof helper), static_cast<ssize_t>(sizeof helper));
  EXPECT_NE(helper, asking);
  EXPECT_FALSE(IsDead(helper));
  ::kill(asking, SIGKILL);
  AwaitChild(asking, std::chrono::seconds(60));
  EXPECT_TRUE(Eventually([helper] { return IsDead(helper); }));
  for (const int end : ends) ::close(end);
}

TEST(DumpTrouble, TheWatchOfADeathRunsOn) {
  const TemporaryFolder folder;
  const pid_t dying = ::fork();
  if (dying == 0) {
    Platform::StartDeathWatch(500, 9);
    WriteTo(folder.File("x.dmp"), &Hang, nullptr, 600000);
    ::_exit(1);
  }
  EXPECT_EQ(AwaitChild(dying, std::chrono::seconds(60)), 9);
}

TEST(DumpTrouble, ThreadsStandStillMeanwhileAndGoOn) {
  const KnownThread thread("known");
  struct Watch {
    const KnownThread* m_pThread;
    bool m_bMoved;
  } watch = {&thread, false};
  const Platform::DumpFilter look = [](unsigned /*callback*/, unsigned& /*flags*/, void* parameter) {
    Watch& seen = *static_cast<Watch*>(parameter);
    const std::uint64_t before = seen.m_pThread->Rounds();
    const timespec moment = {0, 5000000};
    ::syscall(SYS_nanosleep, &moment, nullptr);
    seen.m_bMoved = seen.m_bMoved || seen.m_pThread->Rounds() != before;
    return true;
  };
  const TemporaryFolder folder;
  EXPECT_EQ(WriteTo(folder.File("x.dmp"), look, &watch), 0);
  EXPECT_FALSE(watch.m_bMoved);
  const std::uint64_t rounds = thread.Rounds();
  EXPECT_TRUE(Eventually([&] { return thread.Rounds() > rounds + 2; }));
}

std::atomic<int> s_iHeard{0};

// From another process, since the threads of this one stand still now and then.
pid_t SendSignals(int thread, int count) {
  const pid_t process = ::getpid();
  const pid_t sender = ::fork();
  if (sender != 0) return sender;
  const timespec moment = {0, 20000};
  for (int sent = 0; sent < count; ::syscall(SYS_nanosleep, &moment, nullptr)) {
    if (::syscall(SYS_tgkill, process, thread, SIGRTMIN) == 0) ++sent;
  }
  ::_exit(0);
}

TEST(DumpTrouble, SignalsThatArriveMeanwhileAreNotLost) {
  constexpr int iSENT = 2000;
  ::signal(SIGRTMIN, [](int) { ++s_iHeard; });
  const KnownThread thread("known");
  const TemporaryFolder folder;
  const pid_t sender = SendSignals(static_cast<int>(thread.Id()), iSENT);
  int status = 0;
  while (::waitpid(sender, &status, WNOHANG) == 0) EXPECT_EQ(WriteTo(folder.File("x.dmp")), 0);
  EXPECT_TRUE(Eventually([] { return s_iHeard == iSENT; })) << s_iHeard;
}

TEST(DumpTrouble, NothingOfItIsLeftBehind) {
  const TemporaryFolder folder;
  const auto open = [] {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return std::distance(begin(all), end(all));
  };
  const auto before = open();
  sigset_t mask;
  sigset_t after;
  pthread_sigmask(SIG_BLOCK, nullptr, &mask);
  errno = 12345;
  EXPECT_EQ(WriteTo(folder.File("x.dmp")), 0);
  EXPECT_EQ(errno, 12345);
  pthread_sigmask(SIG_BLOCK, nullptr, &after);
  for (int signal = 1; signal < 32; ++signal)
    EXPECT_EQ(sigismember(&mask, signal), sigismember(&after, signal));
  EXPECT_EQ(open(), before);
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG | __WALL), -1) << "no child";
  EXPECT_EQ(errno, ECHILD);
}

TEST(DumpTrouble, FiftyThreads) {
  std::vector<std::unique_ptr<KnownThread>> threads;
  for (unsigned i = 0; i < 50; ++i)
    threads.push_back(std::make_unique<KnownThread>("channel " + std::to_string(i), i));
  for (const unsigned contents : {0U, uPOLICY_2}) {
    const DumpReader dump = DumpNow(contents);
    const auto names = dump.ThreadNames();
    for (unsigned i = 0; i < 50; ++i) {
      const std::string name = "channel " + std::to_string(i);
      EXPECT_EQ(dump.Memory<std::uint64_t>(threads[i]->Mark()), KnownThread::uMARK + i);
      EXPECT_EQ(names.at(threads[i]->Id()), std::u16string(name.begin(), name.end()));
      EXPECT_EQ(dump.ThreadOf(threads[i]->Id()).m_registers.m_uFlags, 0x0010000fU);
    }
  }
}

// --- In a process of its own

struct Outcome {
  int m_iStatus;
  std::string m_sOutput;
  std::string m_sDump;
};

Outcome RunHost(const std::string& way, unsigned contents = 0, const std::string& host = DUMP_HOST) {
  const TemporaryFolder folder;
  std::filesystem::permissions(folder.Path(), std::filesystem::perms::all);
  const std::string name = folder.File("host.dmp");
  const ChildResult result =
      RunChild({host, way, name, std::to_string(contents)}, {}, std::chrono::seconds(120));
  return {result.m_iStatus, result.m_sOutput, folder.Has("host.dmp") ? folder.Read("host.dmp") : ""};
}

#define RUN_OR_SKIP(outcome, ...)                                                    \
  const Outcome outcome = RunHost(__VA_ARGS__);                                      \
  if (outcome.m_iStatus == iCANNOT) GTEST_SKIP() << "the system doesn't let us try"; \
  ASSERT_EQ(outcome.m_iStatus, 0)

// A thread that can't be stopped is in the dump all the same, by its place and stack if the system tells them.
void ExpectPlaceOf(const Outcome& outcome, bool known) {
  const DumpReader dump(outcome.m_sDump);
  const DumpReader::Thread thread = dump.ThreadOf(static_cast<std::uint32_t>(std::stoul(outcome.m_sOutput)));
  EXPECT_EQ(thread.m_registers.m_uFlags, 0x00100001U);
  if (!known) return;
  EXPECT_NE(thread.m_registers.m_uPlace, 0U);
  EXPECT_GT(thread.m_stack.m_uSize, 0U);
  EXPECT_TRUE(dump.HasMemory(thread.m_registers.m_general[4]));
}

TEST(DumpTrouble, TracingForbiddenByTheProcess) {
  RUN_OR_SKIP(outcome, "no-tracing");
  ExpectPlaceOf(outcome, false);
  EXPECT_GT(DumpReader(outcome.m_sDump).Modules().size(), 3U);
}

TEST(DumpTrouble, TracingForbiddenByASandbox) {
  RUN_OR_SKIP(outcome, "ptrace-fails");
  ExpectPlaceOf(outcome, true);
}

TEST(DumpTrouble, TracingKillsWhoTriesIt) {
  RUN_OR_SKIP(outcome, "ptrace-kills");
  ExpectPlaceOf(outcome, true);
}

// The time goes into the memory all the same.
TEST(DumpTrouble, AThreadThatDoesNotStop) {
  RUN_OR_SKIP(outcome, "thread-does-not-stop", uPOLICY_1);
  ExpectPlaceOf(outcome, false);
  const DumpReader dump(outcome.m_sDump);
  EXPECT_GT(dump.Modules().size(), 3U);
  EXPECT_TRUE(dump.HasMemory(dump.Threads().front().m_registers.m_general[4]));
}

TEST(DumpTrouble, NoHelperToBeHad) {
  RUN_OR_SKIP(outcome, "clone-fails");
  ExpectPlaceOf(outcome, true);
}

TEST(DumpTrouble, ReadingOfMemoryForbiddenByASandbox) {
  RUN_OR_SKIP(outcome, "reading-fails", uPOLICY_1);
  const DumpReader dump(outcome.m_sDump);
  EXPECT_EQ(dump.Threads().size(), 3U);  // the library's own too
  EXPECT_FALSE(dump.Modules().front().m_sBuildId.empty());
}

TEST(DumpTrouble, NoProc) {
  RUN_OR_SKIP(outcome, "no-proc");
  const DumpReader dump(outcome.m_sDump);
  EXPECT_EQ(dump.Threads().size(), 1U);
  EXPECT_GT(dump.Threads().front().m_stack.m_uSize, 0U);
  EXPECT_GT(dump.Modules().size(), 3U);
  EXPECT_FALSE(dump.Modules().front().m_sBuildId.empty());
  EXPECT_EQ(dump.Modules().front().m_sName, DUMP_HOST);
}

TEST(DumpTrouble, AFullDiskHasWhatCameFirst) {
  for (const unsigned contents : {0U, uPOLICY_2}) {
    RUN_OR_SKIP(outcome, "full-disk", contents);
    const DumpReader dump(outcome.m_sDump);
    EXPECT_LE(dump.Size(), 65536U);
    EXPECT_FALSE(dump.Threads().empty());
    EXPECT_EQ(dump.TheException().m_uCode, 0xffffffffU);
  }
}

TEST(DumpTrouble, TheLimitForFilesCutsItShort) {
  RUN_OR_SKIP(outcome, "file-limit", uPOLICY_2);
  const DumpReader dump(outcome.m_sDump);
  EXPECT_LE(dump.Size(), 100000U);
  EXPECT_FALSE(dump.Threads().empty());
  EXPECT_GT(dump.Modules().size(), 3U);
  EXPECT_GT(dump.Ranges().size(), 0U);
  EXPECT_GT(dump.Threads().front().m_stack.m_uSize, 0U);
}

TEST(DumpTrouble, NoDescriptorLeft) {
  const Outcome outcome = RunHost("no-descriptors");
  EXPECT_EQ(outcome.m_iStatus, EMFILE);
  EXPECT_EQ(outcome.m_sDump, "");
}

TEST(DumpTrouble, ThreadsThatComeAndGo) {
  RUN_OR_SKIP(outcome, "dying-threads", uPOLICY_1);
  EXPECT_NO_THROW(DumpReader(outcome.m_sDump).Ranges());
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(DumpTrouble, NothingIsAllocated) {
  for (const unsigned contents : {0U, uPOLICY_1, uPOLICY_2, uPOLICY_3}) {
    RUN_OR_SKIP(outcome, "allocations", contents);
    EXPECT_EQ(outcome.m_sOutput, "0\n") << contents;
  }
}
#endif

// What is in memory counts, not what lies under its name by now.
TEST(DumpTrouble, AProgramThatWasReplaced) {
  const TemporaryFolder folder;
  const std::string copy = folder.File("host");
  std::filesystem::copy_file(DUMP_HOST, copy);
  RUN_OR_SKIP(original, "file-limit");
  RUN_OR_SKIP(outcome, "replaced", 0, copy);
  const DumpReader::Module program = DumpReader(outcome.m_sDump).Modules().front();
  EXPECT_EQ(program.m_sName, copy);
  EXPECT_EQ(program.m_sBuildId, DumpReader(original.m_sDump).Modules().front().m_sBuildId);
}

TEST(DumpTrouble, AStackThatOverflowed) {
  const Outcome outcome = RunHost("overflow");
  ASSERT_EQ(outcome.m_iStatus, 3);
  const DumpReader dump(outcome.m_sDump);
  EXPECT_EQ(dump.TheException().m_uCode, static_cast<unsigned>(SIGSEGV));
  EXPECT_GT(dump.Threads().front().m_stack.m_uSize, 100000U);
  EXPECT_LT(dump.Size(), 4U << 20U);
}

TEST(DumpTrouble, ADeathOnAThread) {
  const Outcome outcome = RunHost("thread", uPOLICY_1);
  ASSERT_EQ(outcome.m_iStatus, 3);
  const DumpReader dump(outcome.m_sDump);
  EXPECT_EQ(dump.TheException().m_uCode, static_cast<unsigned>(SIGSEGV));
  EXPECT_NE(dump.TheException().m_uThread, dump.At<std::uint32_t>(dump.Stream(15).m_uPosition + 8));
  EXPECT_EQ(dump.TheException().m_registers.m_uPlace,
            dump.ThreadOf(dump.TheException().m_uThread).m_registers.m_uPlace);
}

}  // namespace
