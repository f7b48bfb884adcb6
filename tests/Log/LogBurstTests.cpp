// Bursts of entries, which the thread of the log manager takes several at a time where they go to the default log.
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/Thread.h>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <string>
#include <thread>
#include <vector>

#include "Log/BurstFolder.h"
#include "Log/LogTape.h"
#include "Platform/NamedLock.h"
#include "Support/Sanitized.h"

namespace {

using namespace Oxa::Core;
using LogTests::BurstFolder;
using LogTests::Eventually;
using LogTests::Manager;
using LogTests::Numbers;
using LogTests::sBURST_PATH;
using LogTests::TapeHandler;
using LogTests::Write;

constexpr int iBURST = 2500;  // below the limit of the queue
constexpr int iROUNDS = 10;

/// A burst from another thread, of which the first entries are in the file when this is made.
class Burst {
 public:
  explicit Burst(const BurstFolder& folder) : m_writer([] { Write(0, iBURST); }) {
    EXPECT_TRUE(Eventually([&] { return !folder.Numbers().empty(); }));
  }
  /// Waits until it has arrived.
  void Await() {
    m_writer.join();
    Manager().SetBufferingMode(true);
    Manager().SetBufferingMode(false);
    Manager().SetBufferingMode(true);
  }

 private:
  std::thread m_writer;
};

// One entry is in the file, and the rest of 200 waits until `lock` is free again.
void HoldUp(const BurstFolder& folder, Platform::NamedLock& lock) {
  Write(0, 1);
  ASSERT_TRUE(Eventually([&] { return folder.Numbers().size() == 1; }));
  ASSERT_EQ(Platform::EWaitEnd::eSIGNALLED, lock.LockBy(Platform::Deadline::InMilliseconds(10000)).m_eEnd);
  Write(1, 200);
}

std::vector<int> NumbersOf(const std::vector<OxaLogEntry>& entries) {
  std::vector<int> numbers;
  for (const OxaLogEntry& entry : entries)
    if (entry.m_sLoggerPath == sBURST_PATH) numbers.push_back(std::stoi(entry.m_sMessage.substr(7, 6)));
  return numbers;
}

// What was retained before comes first, and is in the file as well.
void ExpectTheRestOf(const BurstFolder& folder, const LogTests::Tape<OxaLogEntry>& tape) {
  std::vector<int> numbers = folder.Numbers();
  const std::vector<int> taken = NumbersOf(tape.Items());
  const std::ptrdiff_t rest = iBURST - static_cast<std::ptrdiff_t>(numbers.size());
  ASSERT_LE(rest, static_cast<std::ptrdiff_t>(taken.size()));
  numbers.insert(numbers.end(), taken.end() - rest, taken.end());
  ASSERT_EQ(Numbers(iBURST), numbers) << taken.size();
}

constexpr int iAS_EXPECTED = 7;

// A forked child's thread sends the child's entries, and nothing that the parent's one had in hand.
int SentByChild(const LogTests::Tape<OxaLogEntry>& tape) {
  Manager().SetBufferingMode(false);
  Manager().SetBufferingMode(true);
  Write(iBURST, iBURST + 1);
  Eventually([&] {
    const std::vector<int> numbers = NumbersOf(tape.Items());
    return !numbers.empty() && numbers.back() == iBURST;
  });
  return NumbersOf(tape.Items()) == std::vector<int>{iBURST} ? iAS_EXPECTED : 1;
}

TEST(LogBurst, IsInTheFileInItsOrder) {
  const BurstFolder folder;
  Write(0, iBURST);
  EXPECT_TRUE(Eventually([&] { return folder.Numbers().size() >= static_cast<std::size_t>(iBURST); }));
  EXPECT_EQ(Numbers(iBURST), folder.Numbers());
}

TEST(LogBurst, IsInTheFileWhenBufferingIsOff) {
  const BurstFolder folder;
  for (int round = 0; round < 5; ++round) {
    Write(round * 500, round * 500 + 500);
    Manager().SetBufferingMode(false);
    EXPECT_EQ(Numbers(round * 500 + 500), folder.Numbers());
    Manager().SetBufferingMode(true);
  }
}

TEST(LogBurst, GoesToAHandlerFromThereOnWhereOneComes) {
  for (int round = 0; round < iROUNDS; ++round) {
    const BurstFolder folder;
    Burst burst(folder);
    LogTests::Tape<OxaLogEntry> tape;
    std::atomic<bool> registered{false};
    const unsigned long thisThread = Thread::GetCurrentId();
    const TapeHandler handler([&](const OxaLogEntry& entry) {
      // What was retained comes on this thread, while the other one goes on.
      if (registered || Thread::GetCurrentId() != thisThread) tape.Add(entry);
    });
    registered = true;
    burst.Await();
    ASSERT_NO_FATAL_FAILURE(ExpectTheRestOf(folder, tape));
  }
}

// It is called with the first of several that the thread has taken: these were to go to the file.
TEST(LogBurst, KeepsItsOrderWhereAHandlerComesAndSwitchesBufferingOff) {
  const BurstFolder folder;
  Platform::NamedLock& lock = LogTests::LockOf(folder.Folder());
  ASSERT_NO_FATAL_FAILURE(HoldUp(folder, lock));
  LogTests::Tape<OxaLogEntry> tape;
  const unsigned long thisThread = Thread::GetCurrentId();
  const TapeHandler handler([&](const OxaLogEntry& entry) {
    if (Thread::GetCurrentId() == thisThread) return;  // it was retained
    tape.Add(entry);
    Manager().SetBufferingMode(false);
  });
  lock.Unlock();
  EXPECT_TRUE(Eventually([&] { return folder.Numbers().size() + tape.Count() >= 200; }));
  std::vector<int> numbers = folder.Numbers();
  EXPECT_GE(65U, numbers.size());
  for (const int number : NumbersOf(tape.Items())) numbers.push_back(number);
  EXPECT_EQ(Numbers(200), numbers);
  Manager().SetBufferingMode(true);
}

// Its thread is called with the first of several.
TEST(LogBurst, StaysTheParentsWhereAForkedChildGoesOnBuffering) {
  if (TestSupport::bSANITIZED) GTEST_SKIP() << "a sanitizer's own locks don't survive a fork among threads";
  const BurstFolder folder;
  Platform::NamedLock& lock = LogTests::LockOf(folder.Folder());
  ASSERT_NO_FATAL_FAILURE(HoldUp(folder, lock));
  LogTests::Tape<OxaLogEntry> tape;
  std::atomic<bool> called{false};
  std::atomic<bool> forked{false};
  const unsigned long thisThread = Thread::GetCurrentId();
  const pid_t parent = ::getpid();
  const TapeHandler handler([&](const OxaLogEntry& entry) {
    if (::getpid() == parent) {
      if (Thread::GetCurrentId() == thisThread) return;  // it was retained
      called = true;
      Eventually([&] { return forked.load(); });
    }
    tape.Add(entry);
  });
  lock.Unlock();
  EXPECT_TRUE(Eventually([&] { return called.load(); }));
  const pid_t child = ::fork();
  if (child == 0) {
    ::alarm(20);
    ::_exit(SentByChild(tape));
  }
  forked = true;
  int status = 0;
  ASSERT_EQ(child, ::waitpid(child, &status, 0));
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(iAS_EXPECTED, WEXITSTATUS(status));
  EXPECT_TRUE(Eventually([&] { return folder.Numbers().size() + tape.Count() >= 200; }));
}

TEST(LogBurst, GoesToAServiceFromThereOnWhereOneIsInstalled) {
  for (int round = 0; round < iROUNDS; ++round) {
    const BurstFolder folder;
    Burst burst(folder);
    LogTests::TapeService service;
    service.m_iClaimedHandlers = 1;
    Manager().InstallLogService(service);
    burst.Await();
    ASSERT_NO_FATAL_FAILURE(ExpectTheRestOf(folder, service.m_tape));
  }
}

}  // namespace
