// Several entries that go to the file at once: it becomes what it would be if each were written by itself.
#include "Log/DefaultLogEntriesFile.h"

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <new>
#include <numeric>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Log/FileLimit.h"
#include "Log/LogFolder.h"
#include "Support/Allocations.h"
#include "Support/ThreadSanitizer.h"

namespace {

// Called when a file is about to be cut, and when a place in one is asked for or set.
std::function<void()> s_onCut;
std::function<void()> s_onSeek;

}  // namespace

// In place of the system's.
// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): the system's names are reserved
extern "C" int ftruncate(int file, off_t length) noexcept {
  if (s_onCut) s_onCut();
  return static_cast<int>(::syscall(SYS_ftruncate, file, length));
}

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): as above
extern "C" off_t lseek(int file, off_t offset, int origin) noexcept {
  if (s_onSeek) std::exchange(s_onSeek, nullptr)();
  return ::syscall(SYS_lseek, file, offset, origin);
}

namespace {

using namespace Oxa::Core;
using LogTests::EntryOfSize;
using LogTests::EntryText;
using LogTests::FileLimit;
using LogTests::LockOf;
using LogTests::LogFolder;

constexpr std::size_t uFULL = 1400000;
constexpr std::size_t uNO_LIMIT = std::size_t{1} << 40;

using Texts = std::vector<std::string>;

/// Texts one behind the other.
class Joined {
 public:
  explicit Joined(const Texts& texts) : m_sText(std::accumulate(texts.begin(), texts.end(), std::string())) {
    std::size_t end = 0;
    for (const std::string& text : texts) m_ends.push_back(end += text.size());
  }
  const std::string& Text() const { return m_sText; }
  LogRun Run() const { return {m_sText, m_ends.data(), m_ends.size()}; }

 private:
  std::string m_sText;
  std::vector<std::size_t> m_ends;
};

/// Gives how many were done.
std::size_t WriteFrom(std::size_t first, DefaultLogEntriesFile& file, const Texts& texts) {
  const Joined joined(texts);
  file.Write(joined.Run(), first);
  return first;
}

void WriteTogether(DefaultLogEntriesFile& file, const Texts& texts) {
  EXPECT_EQ(texts.size(), WriteFrom(0, file, texts));
}

void WriteOneByOne(DefaultLogEntriesFile& file, const Texts& texts) {
  for (const std::string& text : texts) EXPECT_TRUE(file.Write(text));
}

struct Result {
  std::string m_sEntries;
  std::string m_sArchive;
};

/// What becomes of a file of `before` bytes.
template <class Write>
Result Written(const Write& write, const Texts& texts, std::size_t before, std::size_t limit = uNO_LIMIT) {
  const LogFolder folder;
  folder.Put("DefaultLog.entries", std::string(before, ' '));
  DefaultLogEntriesFile file;
  EXPECT_TRUE(file.Open());  // which may make the file of the lock
  {
    const FileLimit fileLimit(limit);
    write(file, texts);
  }
  return {folder.Entries(), folder.Has("DefaultLog.archive") ? folder.Archive() : ""};
}

void ExpectTheSame(const Texts& texts, std::size_t before, std::size_t limit = uNO_LIMIT) {
  const Result one = Written(WriteOneByOne, texts, before, limit);
  const Result together = Written(WriteTogether, texts, before, limit);
  EXPECT_EQ(one.m_sEntries.size(), together.m_sEntries.size()) << before << ' ' << limit;
  EXPECT_TRUE(one.m_sEntries == together.m_sEntries) << before << ' ' << limit;
  EXPECT_TRUE(one.m_sArchive == together.m_sArchive) << before << ' ' << limit;
}

Texts Numbered(std::size_t count) {
  Texts texts;
  for (std::size_t number = 0; number < count; ++number)
    texts.push_back(EntryText("number " + std::to_string(number) + std::string(number % 7, '.')));
  return texts;
}

TEST(DefaultLogRun, IsInTheFileByteForByteAndInItsOrder) {
  const LogFolder folder;
  DefaultLogEntriesFile file;
  const Texts texts = Numbered(64);
  WriteTogether(file, texts);
  EXPECT_EQ(Joined(texts).Text(), folder.Entries());
}

TEST(DefaultLogRun, BeginsWhereItIsTold) {
  const LogFolder folder;
  DefaultLogEntriesFile file;
  const Texts texts = Numbered(5);
  EXPECT_EQ(5U, WriteFrom(3, file, texts));
  EXPECT_EQ(texts[3] + texts[4], folder.Entries());
  EXPECT_EQ(5U, WriteFrom(5, file, texts));
  EXPECT_EQ(texts[3] + texts[4], folder.Entries());
}

TEST(DefaultLogRun, IsNotBegunWhereTheFileCannotBeOpened) {
  const LogFolder folder;
  System::Instance()->SetProcessPath(folder.Path() + "missing/");
  DefaultLogEntriesFile file;
  EXPECT_EQ(2U, WriteFrom(2, file, Numbered(5)));
}

// --- Turning over

TEST(DefaultLogRun, TurnsOverBehindTheEntryThatTakesTheFileAboveItsFullLength) {
  const std::string text = EntryOfSize(1000);
  const Texts texts(10, text);
  const Result result = Written(WriteTogether, texts, uFULL - 4000);
  EXPECT_EQ(uFULL + 1000, result.m_sArchive.size());
  EXPECT_EQ(5000U, result.m_sEntries.size());
  for (const std::size_t before : {uFULL - 4001, uFULL - 4000, uFULL - 3999, uFULL - 1, uFULL, uFULL - 10000,
                                   uFULL - 10001, uFULL - 9999})
    ExpectTheSame(texts, before);
}

TEST(DefaultLogRun, MayTurnOverSeveralTimes) {
  Texts texts;
  for (const std::size_t size : {400000U, 1000U, 900000U, 200000U, 1400000U, 1U, 1400001U, 500U})
    texts.push_back(EntryOfSize(std::max<std::size_t>(size, 400)));
  ExpectTheSame(texts, 0);
  ExpectTheSame(texts, 99999);
}

TEST(DefaultLogRun, GoesToTheNewFileOfAnotherOneThatTurnedOver) {
  const LogFolder folder;
  DefaultLogEntriesFile one;
  DefaultLogEntriesFile other;
  ASSERT_TRUE(one.Open());
  ASSERT_TRUE(other.Write(EntryOfSize(uFULL + 1)));
  const Texts texts = Numbered(10);
  WriteTogether(one, texts);
  EXPECT_EQ(Joined(texts).Text(), folder.Entries());
}

TEST(DefaultLogRun, MendsWhatADeadWriterLeft) {
  const LogFolder folder;
  DefaultLogEntriesFile file;
  const std::string first = EntryText("whole");
  ASSERT_TRUE(file.Write(first));
  std::thread([&] {
    ASSERT_EQ(Platform::EWaitEnd::eSIGNALLED, LockOf(folder).TryLock().m_eEnd);
    folder.Put("DefaultLog.entries", first + EntryText("torn").substr(0, 150));
  }).join();
  const Texts texts = Numbered(3);
  WriteTogether(file, texts);
  EXPECT_EQ(first + Joined(texts).Text(), folder.Entries());
}

// --- Disks that are full

TEST(DefaultLogRun, LosesThoseThatDoNotFitAndNoOthers) {
  const std::string large = EntryOfSize(1000);
  const std::string small = EntryOfSize(400);
  const Texts texts{large, large, large, small, large, small};
  const Result result = Written(WriteTogether, texts, 0, 2900);
  EXPECT_EQ(large + large + small + small, result.m_sEntries);
  for (std::size_t limit = 300; limit < 5200; limit += 100) ExpectTheSame(texts, 0, limit);
  for (const std::size_t limit : {999U, 1000U, 1001U, 2999U, 3000U, 3001U, 3400U})
    ExpectTheSame(texts, 0, limit);
}

// One whose first piece went to a disk without room is tried once more by itself.
TEST(DefaultLogRun, LosesNothingWhereThereIsRoomAgainForTheOneThatWasCutOff) {
  const LogFolder folder;
  DefaultLogEntriesFile file;
  ASSERT_TRUE(file.Open());  // which may make the file of the lock
  const Texts texts(5, EntryOfSize(1000));
  int cuts = 0;
  {
    FileLimit limit(2500);
    s_onCut = [&] {
      ++cuts;
      EXPECT_EQ(2500U, folder.Size("DefaultLog.entries"));
      limit.Set(uNO_LIMIT);
    };
    WriteTogether(file, texts);
    s_onCut = nullptr;
  }
  EXPECT_EQ(1, cuts);
  EXPECT_EQ(Joined(texts).Text(), folder.Entries());
}

TEST(DefaultLogRun, IsTheSameAsOneByOneWhateverHappens) {
  std::mt19937 random(4711);
  for (int round = 0; round < 60; ++round) {
    Texts texts;
    const std::size_t count = 1 + random() % 64;
    for (std::size_t number = 0; number < count; ++number)
      texts.push_back(EntryOfSize(400 + (random() % 8 == 0 ? random() % 60000 : random() % 500)));
    const std::size_t length = Joined(texts).Text().size();
    const std::size_t before = round % 2 == 0 ? uFULL - random() % length : 400 + random() % 10000;
    ExpectTheSame(texts, before, round % 3 == 0 ? before + random() % length : uNO_LIMIT);
  }
}

// --- Without memory

// A failure is put down to one entry, which isn't tried once more: behind the first one only turning over can fail, which
// is put down to the one that is in the file already.
TEST(DefaultLogRun, HasEachEntryOnceWhateverFailsForWantOfMemoryBehindTheFirst) {
  const Texts texts{EntryText("first" + std::string(1000, '.')), EntryText("second" + std::string(1000, '.')),
                    EntryText("third")};
  const Joined joined(texts);
  bool failed = true;
  for (unsigned long number = 1; failed; ++number) {
    const LogFolder folder;
    folder.Put("DefaultLog.entries", std::string(uFULL - 2000, ' '));
    DefaultLogEntriesFile file;
    std::size_t done = 0;
    std::size_t lost = texts.size();
    {
      const TestSupport::FailAllocation failing(number);
      try {
        file.Write(joined.Run(), done);
      } catch (const std::bad_alloc&) {
        lost = done++;
      }
      failed = failing.Happened();
    }
    file.Write(joined.Run(), done);
    const std::string all = folder.Archive() + folder.Entries();
    for (std::size_t entry = 0; entry < texts.size(); ++entry) {
      EXPECT_EQ(all.find(texts[entry]), all.rfind(texts[entry])) << number << ' ' << entry;
      EXPECT_TRUE((entry == 0 && lost == 0) || all.find(texts[entry]) != std::string::npos)
          << number << ' ' << entry;
    }
  }
}

// --- Others at the same time

TEST(DefaultLogRun, StaysWholeAmongThoseOfOthers) {
  const LogFolder folder;
  constexpr std::size_t uTHREADS = 4;
  constexpr std::size_t uRUNS = 20;
  std::vector<std::thread> threads;
  for (std::size_t thread = 0; thread < uTHREADS; ++thread)
    threads.emplace_back([thread] {
      DefaultLogEntriesFile file;
      const Texts texts(32, EntryText("of thread " + std::to_string(thread)));
      for (std::size_t run = 0; run < uRUNS; ++run) WriteTogether(file, texts);
    });
  for (std::thread& thread : threads) thread.join();
  const std::string entries = folder.Entries();
  const std::size_t size = Joined(Texts(32, EntryText("of thread 0"))).Text().size();
  ASSERT_EQ(uTHREADS * uRUNS * size, entries.size());
  for (std::size_t at = 0; at < entries.size(); at += size) {
    const std::size_t name = entries.find("of thread ", at);
    const std::string who = entries.substr(name, 11);
    std::size_t count = 0;
    for (std::size_t found = name; found < at + size; found = entries.find("of thread ", found + 1))
      count += entries.substr(found, 11) == who;
    ASSERT_EQ(32U, count) << at;
  }
}

// What is written without the lock goes entry by entry: its owner may turn over in between, as here, when the length is
// looked at behind the first one.
TEST(DefaultLogRun, GoesAheadAfterTenSecondsWithoutTheLock) {
  const LogFolder folder;
  DefaultLogEntriesFile file;
  const Texts texts = Numbered(3);
  std::thread([&] {
    ASSERT_EQ(Platform::EWaitEnd::eSIGNALLED, LockOf(folder).TryLock().m_eEnd);
    s_onSeek = [&] {
      std::filesystem::rename(folder.File("DefaultLog.entries"), folder.File("DefaultLog.archive"));
      LockOf(folder).Generation().fetch_add(1);
    };
    std::thread([&] { WriteTogether(file, texts); }).join();
    LockOf(folder).Unlock();
  }).join();
  EXPECT_EQ(texts[0], folder.Archive());
  EXPECT_EQ(texts[1] + texts[2], folder.Entries());
}

}  // namespace
