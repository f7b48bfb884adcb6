#include "Log/DefaultLogEntriesFile.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "Log/DefaultLogDocument.h"
#include "Log/FileLimit.h"
#include "Log/LogFileMutex.h"
#include "Log/LogFolder.h"
#include "Support/Eventually.h"
#include "Support/ThreadSanitizer.h"
#include "station/WithoutPrivileges.h"

namespace {

using namespace Oxa::Core;
using LogTests::EntryOfSize;
using LogTests::EntryText;
using LogTests::FileLimit;
using LogTests::LockOf;
using LogTests::LogFolder;
using Names = std::set<std::string>;

constexpr std::size_t uFULL = 1400000;

// --- Open and closed

TEST(DefaultLogEntriesFile, IsClosedAtFirst) {
  const LogFolder folder;
  DefaultLogEntriesFile file;
  EXPECT_FALSE(file.IsOpen());
  file.Close();
  EXPECT_FALSE(file.IsOpen());
  EXPECT_EQ(Names{}, folder.Names());
}

TEST(DefaultLogEntriesFile, OpensOnceAndClosesAtItsEnd) {
  const LogFolder folder;
  DefaultLogEntriesFile file;
  EXPECT_TRUE(file.Open());
  EXPECT_TRUE(file.Open());
  EXPECT_TRUE(file.IsOpen());
  EXPECT_EQ(Names{"DefaultLog.entries"}, folder.Names());
  file.Close();
  EXPECT_FALSE(file.IsOpen());
}

TEST(DefaultLogEntriesFile, LeavesNothingOpenBehind) {
  const LogFolder folder;
  const auto filesOfTheProcess = [] {
    const std::filesystem::directory_iterator first("/proc/self/fd");
    return std::distance(begin(first), end(first));
  };
  const auto before = filesOfTheProcess();
  {
    DefaultLogEntriesFile closed, open;
    ASSERT_TRUE(closed.Open() && open.Open());
    EXPECT_EQ(before + 2, filesOfTheProcess());
    closed.Close();
    EXPECT_EQ(before + 1, filesOfTheProcess());
  }
  EXPECT_EQ(before, filesOfTheProcess());
}

TEST(DefaultLogEntriesFile, CannotBeOpenedInAFolderThatIsNotThere) {
  const LogFolder folder;
  System::Instance()->SetProcessPath(folder.Path() + "missing/");
  DefaultLogEntriesFile file;
  EXPECT_FALSE(file.Open());
  EXPECT_FALSE(file.Write(EntryText("lost")));
  EXPECT_FALSE(file.IsOpen());
  std::filesystem::create_directory(folder.File("missing"));
  EXPECT_TRUE(file.Write(EntryText("found")));
  EXPECT_TRUE(file.IsOpen());
  EXPECT_EQ(std::string::npos, folder.Read("missing/DefaultLog.entries").find("lost"));
  EXPECT_NE(std::string::npos, folder.Read("missing/DefaultLog.entries").find("found"));
}

TEST(DefaultLogEntriesFile, CannotBeOpenedWithoutTheRightToWrite) {
  const LogFolder folder;
  folder.Allow("", 0555);
  const StationTests::WithoutPrivileges nobody;
  DefaultLogEntriesFile file;
  EXPECT_FALSE(file.Write(EntryText("lost")));
  EXPECT_EQ(Names{}, folder.Names());
}

TEST(DefaultLogEntriesFile, AppendsToWhatAnEarlierProcessLeft) {
  const LogFolder folder;
  const std::string old = EntryText("old");
  const std::string young = EntryText("young");
  folder.Put("DefaultLog.entries", old);
  DefaultLogEntriesFile file;
  EXPECT_TRUE(file.Write(young));
  EXPECT_EQ(old + young, folder.Entries());
}

TEST(DefaultLogEntriesFile, GoesToTheFolderOfTheMomentWhenItIsOpened) {
  const LogFolder folder;
  std::filesystem::create_directory(folder.File("other"));
  DefaultLogEntriesFile file;
  file.Open();
  System::Instance()->SetProcessPath(folder.Path() + "other/");
  file.Write(EntryText("here"));
  file.Close();
  file.Write(EntryText("there"));
  EXPECT_NE(std::string::npos, folder.Entries().find("here"));
  EXPECT_NE(std::string::npos, folder.Read("other/DefaultLog.entries").find("there"));
}

// --- One document at all times

TEST(DefaultLogEntriesFile, IsPartOfADocumentFromTheFirstEntryOn) {
  const LogFolder folder;
  DefaultLogEntriesFile file;
  CreateDefaultLogDocument();
  file.Open();
  EXPECT_EQ("", folder.Faults());  // without any entry
  EXPECT_TRUE(file.Write(EntryText("first < second")));
  EXPECT_EQ("", folder.Faults());
  EXPECT_EQ(0U, folder.Entries().find("<LogEntry Severity="));
  EXPECT_FALSE(folder.Has("DefaultLog.archive"));
  EXPECT_EQ((Names{"DefaultLog.entries", "DefaultLog.xml"}), folder.Names());
}

TEST(DefaultLogEntriesFile, HasEachEntryOnDiskWhenItsWriterReturns) {
  const LogFolder folder;
  DefaultLogEntriesFile file;
  std::string all;
  for (int i = 0; i < 20; ++i) {
    all += EntryText("entry " + std::to_string(i));
    ASSERT_TRUE(file.Write(all.substr(folder.Entries().size())));
    ASSERT_EQ(all, folder.Entries());
  }
}

TEST(DefaultLogEntriesFile, TakesEntriesOfManyThreadsWhole) {
  const LogFolder folder;
  DefaultLogEntriesFile file;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&file, t] {
      for (int i = 0; i < 500; ++i) file.Write(EntryText("<" + std::to_string(t * 500 + i) + ">"));
    });
  for (std::thread& thread : threads) thread.join();
  CreateDefaultLogDocument();
  EXPECT_EQ("", folder.Faults());
  const std::string entries = folder.Entries();
  for (int i = 0; i < 2000; ++i)
    EXPECT_NE(std::string::npos, entries.find("<Message>&lt;" + std::to_string(i) + "&gt;<")) << i;
}

TEST(DefaultLogEntriesFile, MayBeClosedWhileOthersWrite) {
  const LogFolder folder;
  DefaultLogEntriesFile file;
  std::atomic<int> written{0};
  std::thread writer([&] {
    for (int i = 0; i < 2000; ++i) written += file.Write(EntryText("entry")) ? 1 : 0;
  });
  while (written < 1000) file.Close();
  writer.join();
  EXPECT_EQ(2000, written);
  EXPECT_EQ(2000 * EntryText("entry").size(), folder.Size("DefaultLog.entries"));
}

// --- Turning over

TEST(DefaultLogEntriesFile, StaysAtItsFullLength) {
  const LogFolder folder;
  folder.Put("DefaultLog.entries", std::string(uFULL - 1000, ' '));
  DefaultLogEntriesFile file;
  EXPECT_TRUE(file.Write(EntryOfSize(1000)));
  EXPECT_EQ(uFULL, folder.Size("DefaultLog.entries"));
  EXPECT_FALSE(folder.Has("DefaultLog.archive"));
}

TEST(DefaultLogEntriesFile, TurnsOverBehindTheEntryThatTakesItAboveThat) {
  const LogFolder folder;
  folder.Put("DefaultLog.entries", std::string(uFULL - 1, ' '));
  DefaultLogEntriesFile file;
  const std::string last = EntryText("last of the old");
  EXPECT_TRUE(file.Write(last));
  EXPECT_TRUE(file.IsOpen());
  EXPECT_EQ(std::string(uFULL - 1, ' ') + last, folder.Archive());
  EXPECT_EQ("", folder.Entries());
  const std::string first = EntryText("first of the new");
  EXPECT_TRUE(file.Write(first));
  EXPECT_EQ(first, folder.Entries());
  EXPECT_EQ(uFULL - 1 + last.size(), folder.Size("DefaultLog.archive"));
}

TEST(DefaultLogEntriesFile, TurnsOverOneByteAbove) {
  const LogFolder folder;
  folder.Put("DefaultLog.entries", std::string(uFULL - 999, ' '));
  DefaultLogEntriesFile file;
  EXPECT_TRUE(file.Write(EntryOfSize(1000)));
  EXPECT_EQ(uFULL + 1, folder.Size("DefaultLog.archive"));
  EXPECT_EQ(0U, folder.Size("DefaultLog.entries"));
}

TEST(DefaultLogEntriesFile, ReplacesTheArchive) {
  const LogFolder folder;
  folder.Put("DefaultLog.archive", "of last year");
  folder.Put("DefaultLog.entries", std::string(uFULL, ' '));
  const std::uint64_t before = LockOf(folder).Generation();
  DefaultLogEntriesFile file;
  EXPECT_TRUE(file.Write("<a/>"));
  EXPECT_EQ(before + 1, LockOf(folder).Generation()) << "it was renamed, not copied";
  EXPECT_EQ(std::string(uFULL, ' ') + "<a/>", folder.Archive());
  EXPECT_EQ((Names{"DefaultLog.archive", "DefaultLog.entries"}), folder.Names());
}

TEST(DefaultLogEntriesFile, KeepsTheDocumentReadableWhenItTurnsOver) {
  const LogFolder folder;
  DefaultLogEntriesFile file;
  CreateDefaultLogDocument();
  while (!folder.Has("DefaultLog.archive")) ASSERT_TRUE(file.Write(EntryOfSize(20000)));
  EXPECT_EQ("", folder.Faults());
  file.Write(EntryText("next"));
  EXPECT_EQ("", folder.Faults());
}

TEST(DefaultLogEntriesFile, CountsItsLengthIn32Bits) {
  const LogFolder folder;
  folder.Put("DefaultLog.entries", "");
  std::filesystem::resize_file(folder.File("DefaultLog.entries"), 4294967296);  // takes no room on the disk
  DefaultLogEntriesFile file;
  EXPECT_TRUE(file.Write(EntryOfSize(1000)));
  EXPECT_EQ(4294968296U, folder.Size("DefaultLog.entries"));
  EXPECT_FALSE(folder.Has("DefaultLog.archive"));
}

TEST(DefaultLogEntriesFile, LosesNothingOf100000EntriesButWhatTwoGenerationsCannotHold) {
  OXA_SKIP_UNDER_THREAD_SANITIZER("one thread, and much that is watched for nothing");
  const LogFolder folder;
  DefaultLogEntriesFile file;
  CreateDefaultLogDocument();
  std::string expected;  // of the archive and the entries behind it
  std::size_t entries = 0;
  int rollovers = 0;
  for (int i = 0; i < 100000; ++i) {
    const std::string text = EntryText("message " + std::to_string(i));
    ASSERT_TRUE(file.Write(text));
    expected += text;
    entries += text.size();
    if (entries <= uFULL) continue;
    ++rollovers;
    ASSERT_EQ(0U, folder.Size("DefaultLog.entries"));
    expected.erase(0, expected.size() - entries);
    ASSERT_EQ(expected, folder.Archive()) << i;
    entries = 0;
  }
  EXPECT_GT(rollovers, 15);
  EXPECT_EQ(expected, folder.Archive() + folder.Entries());
  EXPECT_EQ("", folder.Faults());
}

// --- Several that have it open; an object knows as much of another one as of another process

TEST(DefaultLogEntriesFile, FollowsAnotherOneThatTurnedOver) {
  const LogFolder folder;
  DefaultLogEntriesFile one;
  DefaultLogEntriesFile other;
  ASSERT_TRUE(one.Open());
  ASSERT_TRUE(other.Write(EntryOfSize(uFULL + 1)));
  const std::string text = EntryText("behind it");
  ASSERT_TRUE(one.Write(text));
  EXPECT_EQ(uFULL + 1, folder.Size("DefaultLog.archive"));
  EXPECT_EQ(text, folder.Entries());
  ASSERT_TRUE(other.Write(text));
  EXPECT_EQ(text + text, folder.Entries());
}

TEST(DefaultLogEntriesFile, LosesNothingWhenTwoTurnOverInTurn) {
  OXA_SKIP_UNDER_THREAD_SANITIZER("one thread, and much that is watched for nothing");
  const LogFolder folder;
  DefaultLogEntriesFile files[2];
  std::string expected;
  std::size_t length = 0;
  for (std::size_t i = 0; i < 400; ++i) {
    const std::string text = EntryText("message " + std::to_string(i) + std::string(50000, 'x'));
    ASSERT_TRUE(files[i / 28 % 2].Write(text));
    expected += text;
    length += text.size();
    if (length <= uFULL) continue;
    expected.erase(0, expected.size() - length);
    length = 0;
    ASSERT_EQ(expected, folder.Archive() + folder.Entries()) << i;
  }
  EXPECT_EQ(expected, folder.Archive() + folder.Entries());
}

// Ten seconds are long: both wait at once, the second where it has no room.
TEST(DefaultLogEntriesFile, GoesAheadAfterTenSecondsWithoutTheLock) {
  const LogFolder folder;
  DefaultLogEntriesFile file;
  ASSERT_TRUE(file.Open());
  const LogFolder fullFolder;
  DefaultLogEntriesFile fullFile;
  const std::string there = EntryOfSize(1000);
  ASSERT_TRUE(fullFile.Write(there));
  const FileLimit limit(1500);
  const TestSupport::Holder holder(
      [&] {
        LockOf(folder).TryLock();
        LockOf(fullFolder).TryLock();
      },
      [&] {
        LockOf(folder).Unlock();
        LockOf(fullFolder).Unlock();
      });
  std::thread writer([&] { EXPECT_TRUE(fullFile.Write(there)); });
  bool written = false;
  const std::string text = EntryText("no waiting for ever");
  const double milliseconds = TestSupport::MillisecondsOf([&] { written = file.Write(text); });
  writer.join();
  EXPECT_TRUE(written);
  EXPECT_GE(milliseconds, 9990);
  EXPECT_LT(milliseconds, 14000);
  EXPECT_EQ(text, folder.Entries());
  EXPECT_EQ(there, fullFolder.Entries());
}

TEST(DefaultLogEntriesFile, WaitsForTheLockOfWhoeverWritesToTheSameFile) {
  const LogFolder folder;
  DefaultLogEntriesFile file;
  ASSERT_TRUE(file.Open());
  std::atomic<bool> written{false};
  std::thread writer;
  {
    const TestSupport::Holder holder([&] { LockOf(folder).TryLock(); }, [&] { LockOf(folder).Unlock(); });
    writer = std::thread([&] { written = file.Write(EntryText("later")); });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));  // it could write in that time
    EXPECT_FALSE(written);
    EXPECT_EQ("", folder.Entries());
  }
  writer.join();
  EXPECT_TRUE(written);
  EXPECT_NE(std::string::npos, folder.Entries().find("later"));
}

// --- The lock

TEST(LogFileMutex, GoesByTheFullPathWithForwardSlashes) {
  const LogFolder folder;
  int code = 0;
  Platform::NamedLock& lock = LockOf(folder);
  EXPECT_EQ(&lock, Platform::NamedLock::Open(folder.File("DefaultLog.entries").c_str(), code));
  const std::uint64_t before = lock.Generation();
  LogFileMutex(folder.Path() + "x\\..\\DefaultLog.entries").CountGeneration();
  EXPECT_EQ(before + 1, lock.Generation());
  const std::filesystem::path here = std::filesystem::current_path();
  std::filesystem::current_path(folder.Path());
  LogFileMutex("DefaultLog.entries").CountGeneration();
  LogFileMutex(".\\DefaultLog.entries").CountGeneration();
  std::filesystem::current_path(here);
  EXPECT_EQ(before + 3, lock.Generation());
}

TEST(LogFileMutex, ThatTheSystemDoesNotGiveIsDoneWithout) {
  const boost::shared_ptr<LogFileMutex> none(new LogFileMutex(std::string(100000, 'x')));
  none->CountGeneration();
  EXPECT_EQ(0U, none->GetGeneration());
  const LogFileLock lock(none);
  EXPECT_FALSE(lock.IsOwner());
  EXPECT_FALSE(lock.WasAbandoned());
}

}  // namespace
