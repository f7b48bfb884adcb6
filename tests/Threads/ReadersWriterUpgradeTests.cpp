// Readers that become writers beside other readers, and what a wait for it does to their read lock.

#include <Infrastructure/OxaCore/ReadersWriterMutex.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "Threads/ReadersWriterTrace.h"

namespace Oxa::Core::Testing {

namespace {

const Elapse g_MOMENT(50, Elapse::MilliSeconds);
const Elapse g_LONG(20, Elapse::Seconds);

class ReadersWriterUpgrade : public ::testing::Test {
 protected:
  ReadersWriterUpgrade() : m_mutex(&Trace::Log) { Trace::Clear(); }
  ~ReadersWriterUpgrade() override { Trace::SetHook(nullptr); }

  bool CanWrite(Worker& worker) {
    return worker.Ask([this] {
      if (!m_mutex.TryWaitWriterLock()) return false;
      m_mutex.WriterUnlock();
      return true;
    });
  }

  void Read(Worker& worker) {
    worker.Do([this] { m_mutex.WaitReaderLock(); });
  }
  void Unread(Worker& worker) {
    worker.Do([this] { m_mutex.ReaderUnlock(); });
  }
  void Unwrite(Worker& worker) {
    worker.Do([this] { m_mutex.WriterUnlock(); });
  }

  Worker m_first;
  Worker m_second;
  Worker m_third;
  ReadersWriterMutex m_mutex;
};

TEST_F(ReadersWriterUpgrade, TwoReadersThatUpgradeAtOnceDoNotDeadlock) {
  Read(m_first);
  Read(m_second);
  Trace::Clear();
  m_first.Start([this] { m_mutex.WaitWriterLock(); });
  ASSERT_TRUE(Trace::Await("WW>"));
  m_second.Start([this] { m_mutex.WaitWriterLock(); });
  ASSERT_TRUE(Trace::Await("WW>", 2));
  // The first has stepped aside, so the second is alone, and writes while the first still holds its read
  // lock.
  ASSERT_TRUE(m_second.Finish());
  EXPECT_TRUE(m_first.IsBusy());
  EXPECT_EQ("WW>1,0 WW>2,0 WW+1,0", Trace::CodesAndCounts());
  EXPECT_EQ(2u, Trace::Last().readers.size());
  Unwrite(m_second);
  EXPECT_TRUE(m_first.IsBusy()) << "the second reads again";
  Unread(m_second);
  ASSERT_TRUE(m_first.Finish());
  EXPECT_EQ("WW>1,0 WW>2,0 WW+1,0 WL-1,0 RL-1,0 RUB1,0 WW+0,0", Trace::CodesAndCounts());
  Unwrite(m_first);
  EXPECT_FALSE(CanWrite(m_third)) << "the first reads again, and stands in the way";
  Unread(m_first);
  EXPECT_TRUE(CanWrite(m_third));
}

TEST_F(ReadersWriterUpgrade, TwoReadersThatUpgradeAtOnceWithLimitsDoNotDeadlock) {
  Read(m_first);
  Read(m_second);
  Trace::Clear();
  m_first.Start([this] { EXPECT_TRUE(m_mutex.TimedWaitWriterLock(g_LONG)); });
  ASSERT_TRUE(Trace::Await("WT>"));
  m_second.Start([this] { EXPECT_TRUE(m_mutex.TimedWaitWriterLock(g_LONG)); });
  ASSERT_TRUE(m_second.Finish());
  EXPECT_EQ("WT>1,0 WT>2,0 WT+1,0", Trace::CodesAndCounts());
  Unwrite(m_second);
  Unread(m_second);
  ASSERT_TRUE(m_first.Finish());
  Unwrite(m_first);
  EXPECT_FALSE(CanWrite(m_third)) << "put back after the wake";
  Unread(m_first);
  EXPECT_TRUE(CanWrite(m_third));
}

TEST_F(ReadersWriterUpgrade, AWaitForAnUpgradeLetsAnotherThreadWriteBesideTheReadLock) {
  Read(m_first);
  Read(m_second);
  m_first.Start([this] { m_mutex.WaitWriterLock(); });
  ASSERT_TRUE(Trace::Await("WW>"));
  EXPECT_FALSE(CanWrite(m_third)) << "the second reader is in the way";
  Unread(m_second);
  ASSERT_TRUE(m_first.Finish());
  EXPECT_EQ(1u, Trace::Last().readers.size());
  Unwrite(m_first);
  Unread(m_first);
}

TEST_F(ReadersWriterUpgrade, TryingToUpgradeBesideAnotherReaderFailsAndChangesNothing) {
  Read(m_first);
  Read(m_second);
  EXPECT_FALSE(CanWrite(m_first));
  Unread(m_second);
  EXPECT_FALSE(CanWrite(m_third)) << "the first still stands in the way";
  EXPECT_TRUE(CanWrite(m_first));
  Unread(m_first);
}

TEST_F(ReadersWriterUpgrade, AfterAnUpgradeThatTimedOutTheReadLockBlocksNoWriter) {
  Read(m_first);
  Read(m_second);
  Trace::Clear();
  EXPECT_FALSE(m_first.Ask([this] { return m_mutex.TimedWaitWriterLock(g_MOMENT); }));
  EXPECT_EQ("WT>1,0 WT<0,0 WBR0,0", Trace::CodesAndCounts());
  EXPECT_EQ(2u, Trace::Last().readers.size()) << "it still holds its read lock";
  EXPECT_FALSE(CanWrite(m_third)) << "the second reader is in the way";
  Unread(m_second);
  EXPECT_TRUE(CanWrite(m_third)) << "the first no more";
  m_first.Do([this] { m_mutex.WaitReaderLock(); });
  EXPECT_TRUE(CanWrite(m_third)) << "a nested lock doesn't change that";
  Unread(m_first);
  Unread(m_first);
  Read(m_first);
  EXPECT_FALSE(CanWrite(m_third)) << "the next lock blocks again";
  Unread(m_first);
  EXPECT_TRUE(CanWrite(m_third));
}

TEST_F(ReadersWriterUpgrade, AnUpgradeThatTimedOutIsNotMendedByALaterUpgrade) {
  Read(m_first);
  Read(m_second);
  EXPECT_FALSE(m_first.Ask([this] { return m_mutex.TimedWaitWriterLock(g_MOMENT); }));
  Unread(m_second);
  EXPECT_TRUE(m_first.Ask([this] { return m_mutex.TimedWaitWriterLock(g_LONG); }));
  Unwrite(m_first);
  EXPECT_TRUE(CanWrite(m_third)) << "only an id that this very wait took out is put back";
  Unread(m_first);
}

/// Between the end of a limit and the last attempt the last other reader leaves: its unlock is held up, with
/// the monitor, until the limit is long over.
TEST_F(ReadersWriterUpgrade, TheLastAttemptAfterTheLimitMaySucceedAndPutsTheReaderBack) {
  Read(m_first);
  Read(m_second);
  Trace::Clear();
  Trace::SetHook([](const std::string& code) {
    if (code == "RL-") std::this_thread::sleep_for(std::chrono::milliseconds(2500));
  });
  m_first.Start([this] { EXPECT_TRUE(m_mutex.TimedWaitWriterLock(Elapse(1500, Elapse::MilliSeconds))); });
  ASSERT_TRUE(Trace::Await("WT>"));
  Unread(m_second);
  ASSERT_TRUE(m_first.Finish());
  Trace::SetHook(nullptr);
  EXPECT_EQ("WT>1,0 RL-1,0 RUB1,0 WT+0,0", Trace::CodesAndCounts());
  Unwrite(m_first);
  EXPECT_FALSE(CanWrite(m_third)) << "the first stands in the way again";
  Unread(m_first);
  EXPECT_TRUE(CanWrite(m_third));
}

/// A wake that brings no lock puts the id of a timed upgrade back before the attempt, and takes it out again
/// for the next wait. An untimed one stays aside all along. Either way others see it aside.
TEST_F(ReadersWriterUpgrade, AWakeInVainLeavesTheUpgradeStandingAside) {
  for (const bool timed : {false, true}) {
    Read(m_first);
    Read(m_second);
    Trace::Clear();
    std::atomic<bool> writes{false};
    m_first.Start([&] {
      timed ? static_cast<void>(m_mutex.TimedWaitWriterLock(g_LONG)) : m_mutex.WaitWriterLock();
      writes = true;
    });
    ASSERT_TRUE(Trace::Await(timed ? "WT>" : "WW>"));
    for (int i = 0; i < 5; ++i) EXPECT_FALSE(m_third.Ask([this] { return m_mutex.TryWaitReaderLock(); }));
    EXPECT_EQ(5, Trace::CountOf("RLB")) << "each one wakes the writer";
    EXPECT_FALSE(writes);
    EXPECT_TRUE(CanWrite(m_second)) << "the first stands aside";
    Unread(m_second);
    ASSERT_TRUE(m_first.Finish());
    Unwrite(m_first);
    EXPECT_FALSE(CanWrite(m_third));
    Unread(m_first);
  }
}

TEST_F(ReadersWriterUpgrade, ANestedWriterWaitNeverWaits) {
  m_first.Do([this] {
    m_mutex.WaitReaderLock();
    m_mutex.WaitWriterLock();
  });
  m_second.Start([this] { m_mutex.WaitWriterLock(); });
  ASSERT_TRUE(Trace::Await("WW>", 2));
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
