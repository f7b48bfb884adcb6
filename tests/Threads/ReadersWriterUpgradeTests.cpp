// Readers that become writers beside other readers, and what a wait for it does to their read lock.

#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/ReadersWriterMutex.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "Threads/ReadersWriterEither.h"

namespace Oxa::Core::Testing {

namespace {

const Elapse g_MOMENT(50, Elapse::MilliSeconds);
const Elapse g_LONG(20, Elapse::Seconds);

class ReadersWriterUpgrade : public ReadersWriterEither {};

INSTANTIATE_TEST_SUITE_P(Both, ReadersWriterUpgrade, ::testing::Bool(), NameOfEither);

TEST_P(ReadersWriterUpgrade, TwoReadersThatUpgradeAtOnceDoNotDeadlock) {
  Read(m_first);
  Read(m_second);
  ExpectSlots(2);
  Trace::Clear();
  m_first.Start([this] { m_mutex.WaitWriterLock(); });
  ASSERT_TRUE(AwaitWriters(1));
  m_second.Start([this] { m_mutex.WaitWriterLock(); });
  // The first has stepped aside, so the second is alone, and writes while the first still holds its read
  // lock.
  ASSERT_TRUE(m_second.Finish());
  EXPECT_TRUE(m_first.IsBusy());
  ExpectTrace("WW>1,0 WW>2,0 WW+1,0");
  ExpectReaders(2);
  Unwrite(m_second);
  EXPECT_TRUE(m_first.IsBusy()) << "the second reads again";
  Unread(m_second);
  ASSERT_TRUE(m_first.Finish());
  ExpectTrace("WW>1,0 WW>2,0 WW+1,0 WL-1,0 RL-1,0 RUB1,0 WW+0,0");
  Unwrite(m_first);
  EXPECT_FALSE(CanWrite(m_third)) << "the first reads again, and stands in the way";
  Unread(m_first);
  EXPECT_TRUE(CanWrite(m_third));
}

TEST_P(ReadersWriterUpgrade, TwoReadersThatUpgradeAtOnceWithLimitsDoNotDeadlock) {
  Read(m_first);
  Read(m_second);
  Trace::Clear();
  m_first.Start([this] { EXPECT_TRUE(m_mutex.TimedWaitWriterLock(g_LONG)); });
  ASSERT_TRUE(AwaitWriters(1));
  m_second.Start([this] { EXPECT_TRUE(m_mutex.TimedWaitWriterLock(g_LONG)); });
  ASSERT_TRUE(m_second.Finish());
  ExpectTrace("WT>1,0 WT>2,0 WT+1,0");
  Unwrite(m_second);
  Unread(m_second);
  ASSERT_TRUE(m_first.Finish());
  Unwrite(m_first);
  EXPECT_FALSE(CanWrite(m_third)) << "put back after the wake";
  Unread(m_first);
  EXPECT_TRUE(CanWrite(m_third));
}

TEST_P(ReadersWriterUpgrade, AWaitForAnUpgradeLetsAnotherThreadWriteBesideTheReadLock) {
  Read(m_first);
  Read(m_second);
  m_first.Start([this] { m_mutex.WaitWriterLock(); });
  ASSERT_TRUE(AwaitWriters(1));
  EXPECT_FALSE(CanWrite(m_third)) << "the second reader is in the way";
  Unread(m_second);
  ASSERT_TRUE(m_first.Finish());
  ExpectReaders(1);
  Unwrite(m_first);
  Unread(m_first);
}

TEST_P(ReadersWriterUpgrade, TryingToUpgradeBesideAnotherReaderFailsAndChangesNothing) {
  Read(m_first);
  Read(m_second);
  EXPECT_FALSE(CanWrite(m_first));
  Unread(m_second);
  EXPECT_FALSE(CanWrite(m_third)) << "the first still stands in the way";
  EXPECT_TRUE(CanWrite(m_first));
  Unread(m_first);
}

TEST_P(ReadersWriterUpgrade, AfterAnUpgradeThatTimedOutTheReadLockBlocksNoWriter) {
  Read(m_first);
  Read(m_second);
  Trace::Clear();
  EXPECT_FALSE(m_first.Ask([this] { return m_mutex.TimedWaitWriterLock(g_MOMENT); }));
  ExpectTrace("WT>1,0 WT<0,0 WBR0,0");
  ExpectReaders(2);  // it still holds its read lock
  EXPECT_FALSE(CanWrite(m_third)) << "the second reader is in the way";
  Unread(m_second);
  EXPECT_TRUE(CanWrite(m_third)) << "the first no more";
  Read(m_first);
  EXPECT_TRUE(CanWrite(m_third)) << "a nested lock doesn't change that";
  Unread(m_first);
  Unread(m_first);
  Read(m_first);
  EXPECT_FALSE(CanWrite(m_third)) << "the next lock blocks again";
  Unread(m_first);
  EXPECT_TRUE(CanWrite(m_third));
}

/// Another one may write beside its read lock, and then even a nested read would see what is half written.
TEST_P(ReadersWriterUpgrade, AfterAnUpgradeThatTimedOutANestedReadWaitsForTheWriter) {
  Read(m_first);
  Read(m_second);
  EXPECT_FALSE(m_first.Ask([this] { return m_mutex.TimedWaitWriterLock(g_MOMENT); }));
  Unread(m_second);
  m_third.Do([this] { m_mutex.WaitWriterLock(); });
  EXPECT_FALSE(m_first.Ask([this] { return m_mutex.TryWaitReaderLock(); }));
  EXPECT_FALSE(m_first.Ask([this] { return m_mutex.TimedWaitReaderLock(g_MOMENT); }));
  BlockReader(m_first);
  Unwrite(m_third);
  ASSERT_TRUE(m_first.Finish());
  Unread(m_first);
  Unread(m_first);
}

TEST_P(ReadersWriterUpgrade, AnUpgradeThatTimedOutIsNotMendedByALaterUpgrade) {
  Read(m_first);
  Read(m_second);
  EXPECT_FALSE(m_first.Ask([this] { return m_mutex.TimedWaitWriterLock(g_MOMENT); }));
  Unread(m_second);
  EXPECT_TRUE(m_first.Ask([this] { return m_mutex.TimedWaitWriterLock(g_LONG); }));
  Unwrite(m_first);
  EXPECT_TRUE(CanWrite(m_third)) << "only an id that this very wait took out is put back";
  Unread(m_first);
}

/// Between the end of a limit and the last attempt the last other reader leaves: the monitor is held until the
/// limit is long over.
TEST_P(ReadersWriterUpgrade, TheLastAttemptAfterTheLimitMaySucceedAndPutsTheReaderBack) {
  Read(m_first);
  Read(m_second);
  Trace::Clear();
  const auto overLimit = [] { std::this_thread::sleep_for(std::chrono::milliseconds(2500)); };
  Trace::SetHook([overLimit](const std::string& code) {
    if (code == "RL-") overLimit();
  });
  m_first.Start([this] { EXPECT_TRUE(m_mutex.TimedWaitWriterLock(Elapse(1500, Elapse::MilliSeconds))); });
  ASSERT_TRUE(AwaitWriters(1));
  if (IsTraced()) {
    Unread(m_second);  // the logger holds it up
  } else {
    const Lock monitor(MonitorOf(m_mutex));
    m_second.Start([this] { m_mutex.ReaderUnlock(); });  // gives its slot back, and stops before the wake
    EXPECT_TRUE(Eventually([this] { return SlotsTaken(m_mutex) == 0; }));
    overLimit();
  }
  ASSERT_TRUE(m_first.Finish());
  ASSERT_TRUE(m_second.Finish());
  Trace::SetHook(nullptr);
  ExpectTrace("WT>1,0 RL-1,0 RUB1,0 WT+0,0");
  Unwrite(m_first);
  EXPECT_FALSE(CanWrite(m_third)) << "the first stands in the way again";
  Unread(m_first);
  EXPECT_TRUE(CanWrite(m_third));
}

/// A wake that brings no lock puts the id of a timed upgrade back before the attempt, and takes it out again
/// for the next wait. An untimed one stays aside all along. Either way others see it aside.
TEST_P(ReadersWriterUpgrade, AWakeInVainLeavesTheUpgradeStandingAside) {
  for (const bool timed : {false, true}) {
    Read(m_first);
    Read(m_second);
    Trace::Clear();
    std::atomic<bool> writes{false};
    m_first.Start([&] {
      timed ? static_cast<void>(m_mutex.TimedWaitWriterLock(g_LONG)) : m_mutex.WaitWriterLock();
      writes = true;
    });
    ASSERT_TRUE(AwaitWriters(1));
    for (int i = 0; i < 5; ++i) EXPECT_FALSE(m_third.Ask([this] { return m_mutex.TryWaitReaderLock(); }));
    ExpectCount(5, "RLB");  // each one wakes the writer
    EXPECT_FALSE(writes);
    EXPECT_TRUE(CanWrite(m_second)) << "the first stands aside";
    Unread(m_second);
    ASSERT_TRUE(m_first.Finish());
    Unwrite(m_first);
    EXPECT_FALSE(CanWrite(m_third));
    Unread(m_first);
  }
}

/// What a slot counted is counted on when the wait for the upgrade moves it to the table.
TEST_P(ReadersWriterUpgrade, ThreeReadLocksOutliveAnUpgradeThatTimedOut) {
  for (int level = 0; level < 3; ++level) Read(m_first);
  Read(m_second);
  ExpectSlots(2);
  EXPECT_FALSE(m_first.Ask([this] { return m_mutex.TimedWaitWriterLock(g_MOMENT); }));
  ExpectSlots(1);
  BlockWriter(m_third);
  const auto readsOnce = [this] {
    if (!m_mutex.TryWaitReaderLock()) return false;
    m_mutex.ReaderUnlock();
    return true;
  };
  for (int level = 3; level > 0; --level) {
    EXPECT_TRUE(m_first.Ask(readsOnce)) << "nested at " << level << ", so it passes the waiting writer";
    Unread(m_first);
  }
  EXPECT_FALSE(m_first.Ask(readsOnce)) << "a new reader stands back";
  Unread(m_second);
  ASSERT_TRUE(m_third.Finish());
  Unwrite(m_third);
  Read(m_first);
  ExpectSlots(1);
  EXPECT_FALSE(CanWrite(m_third));
  Unread(m_first);
}

TEST_P(ReadersWriterUpgrade, ANestedWriterWaitNeverWaits) {
  m_first.Do([this] {
    m_mutex.WaitReaderLock();
    m_mutex.WaitWriterLock();
  });
  m_second.Start([this] { m_mutex.WaitWriterLock(); });
  ASSERT_TRUE(AwaitWriters(1));
  m_first.Do([this] {
    m_mutex.WaitWriterLock();
    EXPECT_TRUE(m_mutex.TryWaitWriterLock());
    EXPECT_TRUE(m_mutex.TimedWaitWriterLock(g_MOMENT));
    for (int i = 0; i < 4; ++i) m_mutex.WriterUnlock();
    m_mutex.ReaderUnlock();
  });
  ASSERT_TRUE(m_second.Finish());
  Unwrite(m_second);
}

}  // namespace

}  // namespace Oxa::Core::Testing
