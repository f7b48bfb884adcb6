// Several processes on one log, and what becomes of it when they are killed.
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "Log/DefaultLogDocument.h"
#include "Log/DefaultLogEntriesFile.h"
#include "Log/LogFolder.h"
#include "Log/LogProgress.h"
#include "Platform/NamedLock.h"
#include "Support/Eventually.h"
#include "Support/ThreadSanitizer.h"

namespace {

using namespace Oxa::Core;
using LogTests::LogFolder;
using LogTests::LogProgress;

constexpr std::size_t uSMALL = 60;      // about 400 bytes an entry
constexpr std::size_t uLARGE = 700000;  // every second or third entry fills the file
constexpr std::uint64_t uLL_ROUND =
    1500;  // entries of a process in a round: two processes stay below one file
constexpr double dLONGEST_STALL = 10000;  // milliseconds

#ifdef OXACORE_SOAK
constexpr unsigned uSECONDS = 60;
#else
constexpr unsigned uSECONDS = 6;
#endif

/// A process that writes.
class Host {
 public:
  Host(const LogFolder& folder, const std::string& name, std::size_t size, std::size_t together = 1)
      : m_rProgress(LogTests::MapProgress(folder.File(name + ".progress"))),
        m_sName(name),
        m_uSize(size),
        m_uTogether(together) {
    const std::string sizeText = std::to_string(size);
    const std::string togetherText = std::to_string(together);
    m_child = ::fork();
    if (m_child != 0) return;
    ::execl(LOG_FILE_HOST, LOG_FILE_HOST, folder.Path().c_str(), name.c_str(), sizeText.c_str(),
            togetherText.c_str(), nullptr);
    ::_exit(127);
  }
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;
  ~Host() { Kill(); }

  void Kill() {
    if (m_child <= 0) return;
    ::kill(m_child, SIGKILL);
    ::waitpid(m_child, nullptr, 0);
    m_child = 0;
  }

  void Allow(std::uint64_t more) { m_rProgress.m_ullAllowed += more; }
  bool IsDone() const { return m_rProgress.m_ullFlushed >= m_rProgress.m_ullAllowed; }
  std::uint64_t Flushed() const { return m_rProgress.m_ullFlushed; }
  const std::string& Name() const { return m_sName; }
  std::size_t Size() const { return m_uSize; }
  std::size_t Together() const { return m_uTogether; }

  void ExpectGoodEnd() const {
    EXPECT_EQ(0U, m_rProgress.m_ullFailed) << m_sName;
    EXPECT_LT(static_cast<double>(m_rProgress.m_llLongest) / 1e6, dLONGEST_STALL) << m_sName;
  }

 private:
  LogProgress& m_rProgress;
  const std::string m_sName;
  const std::size_t m_uSize;
  const std::size_t m_uTogether;
  pid_t m_child = 0;
};

/// Holds the lock between the processes.
class LogPause {
 public:
  explicit LogPause(const LogFolder& folder) {
    int code = 0;
    m_pLock = Platform::NamedLock::Open(folder.File("DefaultLog.entries").c_str(), code);
    EXPECT_EQ(Platform::EWaitEnd::eSIGNALLED,
              m_pLock->LockBy(Platform::Deadline::InMilliseconds(10000)).m_eEnd);
  }
  LogPause(const LogPause&) = delete;
  LogPause& operator=(const LogPause&) = delete;
  ~LogPause() { m_pLock->Unlock(); }

 private:
  Platform::NamedLock* m_pLock = nullptr;
};

/// Which entries of which writers have been seen. The archive of one look was the entries of another one, as
/// long as fewer entries than one file holds are written from look to look.
class Follower {
 public:
  void Expect(const Host& host) { m_sizes[host.Name()] = host.Size(); }

  void Look(const LogFolder& folder) {
    LookAt(folder.Archive());
    LookAt(folder.Entries());
  }

  bool HasSeen(const std::string& writer, std::uint64_t number) const {
    const auto seen = m_seen.find(writer);
    return seen != m_seen.end() && number < seen->second.size() && seen->second[number];
  }

  /// The last one that was flushed, or one of those of the write in which its writer was killed: they may have turned
  /// the file over twice.
  bool HasSeenTheLastOf(const Host& host) const {
    bool has = false;
    for (std::size_t more = 0; more <= (host.Together() == 1 ? 0 : host.Together()); ++more)
      has = has || HasSeen(host.Name(), host.Flushed() - 1 + more);
    return has;
  }

  /// All that was flushed, and beyond that at most the entries of one write, whose writer was killed before it could
  /// say so: the first of them, without a gap.
  void ExpectAllOf(const Host& host) const {
    std::uint64_t missing = 0;
    for (std::uint64_t number = 0; number < host.Flushed(); ++number)
      missing += !HasSeen(host.Name(), number);
    EXPECT_EQ(0U, missing) << host.Name();
    std::uint64_t beyond = host.Flushed();
    while (HasSeen(host.Name(), beyond)) ++beyond;
    EXPECT_LE(beyond, host.Flushed() + host.Together()) << host.Name();
    for (std::size_t more = 1; more <= host.Together(); ++more)
      EXPECT_FALSE(HasSeen(host.Name(), beyond + more)) << host.Name();
  }

 private:
  void LookAt(const std::string& content) {
    std::size_t at = 0;
    while (at < content.size()) {
      const std::size_t separator = content.find(sLOG_ENTRY_SEPARATOR, at);
      ASSERT_NE(std::string::npos, separator) << content.substr(at, 1000);
      const std::size_t next = separator + sLOG_ENTRY_SEPARATOR.size();
      NoteWhole(content.substr(at, next - at));
      at = next;
    }
  }

  void NoteWhole(const std::string& text) {
    std::size_t message = text.find("<Message>");
    ASSERT_NE(std::string::npos, message) << text.substr(0, 1000);
    message = text.find_first_not_of(" \n", message + 9);
    const std::size_t blank = text.find(' ', message);
    const std::string writer = text.substr(message, blank - message);
    const std::uint64_t number = std::stoull(text.substr(blank + 1));
    ASSERT_EQ(1U, m_sizes.count(writer)) << writer;
    ExpectSameButTime(LogTests::EntryText(LogTests::NumberedMessage(writer, number, m_sizes[writer])), text);
    std::vector<bool>& seen = m_seen[writer];
    if (seen.size() <= number) seen.resize(number + 1);
    seen[number] = true;
  }

  static void ExpectSameButTime(std::string expected, const std::string& text) {
    ASSERT_EQ(expected.size(), text.size()) << text.substr(0, 1000);
    const std::size_t time = expected.find("<TimeStamp>") + 11;
    expected.replace(time, 23, text, time, 23);
    ASSERT_TRUE(expected == text) << text.substr(0, 1000);
  }

  std::map<std::string, std::size_t> m_sizes;
  std::map<std::string, std::vector<bool>> m_seen;
};

/// How many entries a process writes at once.
class LogProcesses : public testing::TestWithParam<std::size_t> {};

INSTANTIATE_TEST_SUITE_P(Together, LogProcesses, testing::Values(1U, 50U));

TEST_P(LogProcesses, ThatTurnOverInTurnLoseNothing) {
  OXA_SKIP_UNDER_THREAD_SANITIZER("processes of one thread, and much that is watched for nothing");
  const LogFolder folder;
  Host one(folder, "One", uSMALL, GetParam());
  Host other(folder, "Other", uSMALL, GetParam());
  Follower follower;
  follower.Expect(one);
  follower.Expect(other);
  std::uint64_t written = 0;
  for (; written < 100000 && !testing::Test::HasFailure(); written += 2 * uLL_ROUND) {
    one.Allow(uLL_ROUND);
    other.Allow(uLL_ROUND);
    ASSERT_TRUE(TestSupport::Eventually([&] { return one.IsDone() && other.IsDone(); }));
    follower.Look(folder);
  }
  follower.ExpectAllOf(one);
  follower.ExpectAllOf(other);
  EXPECT_EQ(written, one.Flushed() + other.Flushed());
  EXPECT_TRUE(folder.Has("DefaultLog.archive"));
  EXPECT_EQ("", folder.Faults());
  one.ExpectGoodEnd();
  other.ExpectGoodEnd();
}

/// Goes on for a time, and on a slow machine until enough was done to mean something.
class Rounds {
 public:
  explicit Rounds(unsigned seconds)
      : m_end(std::chrono::steady_clock::now() + std::chrono::seconds(seconds)) {}
  bool GoOn(unsigned round) const {
    return !testing::Test::HasFailure() && (round < uSECONDS || std::chrono::steady_clock::now() < m_end);
  }

 private:
  const std::chrono::steady_clock::time_point m_end;
};

/// Lets time pass that is no multiple of anything, so that death comes at any point of the work.
class AnyMoment {
 public:
  void Pass(unsigned long maximumMicroseconds) {
    const auto end =
        std::chrono::steady_clock::now() + std::chrono::microseconds(m_random() % maximumMicroseconds);
    while (std::chrono::steady_clock::now() < end) {
    }
  }

 private:
  std::mt19937_64 m_random{20261121};
};

TEST_P(LogProcesses, ThatAreKilledLoseNothingOfTheirOwnNorOfOthers) {
  const LogFolder folder;
  Follower follower;
  AnyMoment moment;
  std::vector<std::unique_ptr<Host>> hosts;
  const auto start = [&] {
    hosts.push_back(
        std::make_unique<Host>(folder, "Writer" + std::to_string(hosts.size()), uSMALL, GetParam()));
    follower.Expect(*hosts.back());
  };
  start();
  start();
  std::size_t living[2] = {0, 1};
  const Rounds rounds(uSECONDS);
  for (unsigned round = 0; rounds.GoOn(round); ++round) {
    const auto next = std::chrono::steady_clock::now() + std::chrono::milliseconds(100);
    Host& victim = *hosts[living[round % 2]];
    Host& survivor = *hosts[living[(round + 1) % 2]];
    const std::uint64_t before = victim.Flushed();
    victim.Allow(uLL_ROUND);
    survivor.Allow(uLL_ROUND);
    ASSERT_TRUE(TestSupport::Eventually([&] { return victim.Flushed() > before; }));
    moment.Pass(3000);
    victim.Kill();
    survivor.Allow(1);  // so that it takes the lock once more
    ASSERT_TRUE(TestSupport::Eventually([&] { return survivor.IsDone(); }));
    follower.Look(folder);
    ASSERT_EQ("", folder.Faults());
    living[round % 2] = hosts.size();
    start();
    std::this_thread::sleep_until(next);
  }
  for (const auto& host : hosts) {
    follower.ExpectAllOf(*host);
    host->ExpectGoodEnd();
  }
}

TEST_P(LogProcesses, ThatAreKilledWhileTheyTurnOverLeaveTheLastEntriesAndAReadableDocument) {
  const LogFolder folder;
  AnyMoment moment;
  DefaultLogEntriesFile file;  // of one that comes behind them
  const Rounds rounds(uSECONDS / 2);
  for (unsigned round = 0; rounds.GoOn(round); ++round) {
    Follower follower;
    Host host(folder, "Writer" + std::to_string(round), uLARGE, 1 + GetParam() / 25);
    follower.Expect(host);
    host.Allow(1000000);
    ASSERT_TRUE(TestSupport::Eventually([&] { return host.Flushed() > 3; }));
    moment.Pass(20000);
    host.Kill();
    ASSERT_TRUE(file.Write(""));  // mends what is to be mended
    ASSERT_EQ("", folder.Faults());
    const LogPause pause(folder);
    follower.Look(folder);
    EXPECT_TRUE(follower.HasSeenTheLastOf(host)) << round;
    host.ExpectGoodEnd();
    std::filesystem::remove(folder.File("DefaultLog.archive"));
    std::filesystem::resize_file(folder.File("DefaultLog.entries"), 0);
  }
}

}  // namespace
