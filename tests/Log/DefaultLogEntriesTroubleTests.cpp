// The entries file in trouble: owners of the lock that die, disks without room, names that can't be given, and hands
// that meddle.
#include "Log/DefaultLogEntriesFile.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "Log/DefaultLogDocument.h"
#include "Log/FileLimit.h"
#include "Log/LogFolder.h"
#include "station/WithoutPrivileges.h"

namespace {

using namespace Oxa::Core;
using LogTests::EntryOfSize;
using LogTests::EntryText;
using LogTests::FileLimit;
using LogTests::LockOf;
using LogTests::LogFolder;

constexpr std::size_t uFULL = 1400000;

/// Takes the lock on a thread that ends without giving it up, after doing `work`.
template <class Work>
void DieWithTheLock(const LogFolder& folder, const Work& work) {
  std::thread([&] {
    ASSERT_EQ(Platform::EWaitEnd::eSIGNALLED, LockOf(folder).TryLock().m_eEnd);
    work();
  }).join();
}

// --- Owners of the lock that die

TEST(DefaultLogEntriesFile, CutsOffWhatADeadWriterLeftUnfinished) {
  const LogFolder folder;
  DefaultLogEntriesFile file;
  CreateDefaultLogDocument();
  const std::string first = EntryText("whole");
  ASSERT_TRUE(file.Write(first));
  DieWithTheLock(folder, [&] { folder.Put("DefaultLog.entries", first + EntryText("torn").substr(0, 150)); });
  const std::string second = EntryText("whole as well");
  EXPECT_TRUE(file.Write(second));
  EXPECT_EQ(first + second, folder.Entries());
  EXPECT_EQ("", folder.Faults());
}

TEST(DefaultLogEntriesFile, FollowsADeadWriterThatWasTurningOver) {
  const LogFolder folder;
  DefaultLogEntriesFile one;
  DefaultLogEntriesFile other;
  const std::string old = EntryText("old");
  ASSERT_TRUE(one.Write(old));
  ASSERT_TRUE(other.Open());
  DieWithTheLock(folder, [&] {
    std::filesystem::rename(folder.File("DefaultLog.entries"), folder.File("DefaultLog.archive"));
  });
  const std::string young = EntryText("young");
  EXPECT_TRUE(one.Write(young));
  EXPECT_TRUE(other.Write(young));
  EXPECT_EQ(old, folder.Archive());
  EXPECT_EQ(young + young, folder.Entries());
}

// --- Disks that are full

TEST(DefaultLogEntriesFile, LosesWholeEntriesWithoutRoomAndGoesOnWhenThereIsSome) {
  const LogFolder folder;
  DefaultLogEntriesFile file;
  CreateDefaultLogDocument();
  const std::string text = EntryOfSize(1000);
  {
    FileLimit limit(4500);
    for (int i = 0; i < 20; ++i) EXPECT_TRUE(file.Write(text));
    EXPECT_EQ(4000U, folder.Size("DefaultLog.entries"));
    EXPECT_EQ("", folder.Faults());
    limit.Set(6000);  // the last entry ends at the limit, where a write sends a signal
    for (int i = 0; i < 20; ++i) EXPECT_TRUE(file.Write(text));
    EXPECT_EQ(6000U, folder.Size("DefaultLog.entries"));
    limit.Set(100);
    EXPECT_TRUE(file.Write(text));
    EXPECT_EQ(6000U, folder.Size("DefaultLog.entries"));
  }
  const std::string last = EntryText("room again");
  EXPECT_TRUE(file.Write(last));
  EXPECT_EQ(last, folder.Entries().substr(6000));
  EXPECT_EQ("", folder.Faults());
}

// --- When the file can't be given the other name

class WhereNothingCanBeRenamed : public testing::Test {
 protected:
  void Fill(std::size_t entries) {
    m_folder.Put("DefaultLog.archive", "of last year");
    m_folder.Put("DefaultLog.entries", std::string(entries, ' '));
    m_folder.Allow("DefaultLog.archive", 0666);
    m_folder.Allow("DefaultLog.entries", 0666);
    m_folder.Allow("", 0555);
  }

  LogFolder m_folder;
  DefaultLogEntriesFile m_file;
};

TEST_F(WhereNothingCanBeRenamed, TheEntriesAreCopiedToTheArchiveAndCut) {
  Fill(uFULL);
  const StationTests::WithoutPrivileges nobody;
  DefaultLogEntriesFile other;
  ASSERT_TRUE(other.Open());
  EXPECT_TRUE(m_file.Write("<a/>"));
  EXPECT_EQ(std::string(uFULL, ' ') + "<a/>", m_folder.Archive());
  EXPECT_EQ("", m_folder.Entries());
  EXPECT_TRUE(m_file.IsOpen());
  EXPECT_TRUE(m_file.Write("<b/>"));
  EXPECT_TRUE(other.Write("<c/>"));
  EXPECT_EQ("<b/><c/>", m_folder.Entries());
}

TEST_F(WhereNothingCanBeRenamed, NothingIsCutWhereTheLogHasMovedTo) {
  Fill(uFULL);
  const LogFolder other;
  other.Put("DefaultLog.entries", "<mine/>");
  other.Allow("DefaultLog.entries", 0666);
  other.Allow("", 0777);
  System::Instance()->SetProcessPath(m_folder.Path());
  const StationTests::WithoutPrivileges nobody;
  ASSERT_TRUE(m_file.Open());
  System::Instance()->SetProcessPath(other.Path());
  EXPECT_TRUE(m_file.Write("<a/>"));
  EXPECT_TRUE(m_file.Write("<b/>"));
  EXPECT_EQ(std::string(uFULL, ' ') + "<a/>", m_folder.Archive());
  EXPECT_EQ("<mine/><b/>", other.Entries());
}

TEST_F(WhereNothingCanBeRenamed, NothingIsCutThatCouldNotBeCopied) {
  Fill(uFULL);
  m_folder.Allow("DefaultLog.archive", 0444);
  const StationTests::WithoutPrivileges nobody;
  EXPECT_TRUE(m_file.Write("<a/>"));
  EXPECT_TRUE(m_file.Write("<b/>"));
  EXPECT_EQ("of last year", m_folder.Archive());
  EXPECT_EQ(std::string(uFULL, ' ') + "<a/><b/>", m_folder.Entries());
}

TEST(DefaultLogEntriesFile, IsNotCutWhereAFolderHasTheNameOfTheArchive) {
  const LogFolder folder;
  std::filesystem::create_directory(folder.File("DefaultLog.archive"));
  folder.Put("DefaultLog.entries", std::string(uFULL, ' '));
  DefaultLogEntriesFile file;
  EXPECT_TRUE(file.Write("<a/>"));
  EXPECT_TRUE(file.Write("<b/>"));
  EXPECT_EQ(std::string(uFULL, ' ') + "<a/><b/>", folder.Entries());
}

// --- Hands that meddle

TEST(DefaultLogEntriesFile, ThatWasRemovedIsWrittenOnUntilItIsFull) {
  const LogFolder folder;
  folder.Put("DefaultLog.archive", "of last year");
  DefaultLogEntriesFile file;
  ASSERT_TRUE(file.Open());
  std::filesystem::remove(folder.File("DefaultLog.entries"));
  EXPECT_TRUE(file.Write(EntryText("lost")));
  EXPECT_FALSE(folder.Has("DefaultLog.entries"));
  EXPECT_TRUE(file.Write(EntryOfSize(uFULL)));
  const std::string text = EntryText("there again");
  EXPECT_TRUE(file.Write(text));
  EXPECT_EQ(text, folder.Entries());
  EXPECT_EQ("of last year", folder.Archive());
}

}  // namespace
