// The readers-writer mutex between threads: who waits for whom, who wakes whom, and what the trace shows.

#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/ReadersWriterMutex.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <set>
#include <string>
#include <thread>

#include "Support/OtherThread.h"
#include "Threads/ReadersWriterEither.h"

namespace Oxa::Core::Testing {

namespace {

const Elapse g_MOMENT(50, Elapse::MilliSeconds);
const Elapse g_LONG(20, Elapse::Seconds);

class ReadersWriterContention : public ReadersWriterEither {};

INSTANTIATE_TEST_SUITE_P(Both, ReadersWriterContention, ::testing::Bool(), NameOfEither);

TEST_P(ReadersWriterContention, AWriterWaitsForTheReader) {
  Read(m_first);
  ExpectSlots(1);
  m_second.Start([this] { m_mutex.WaitWriterLock(); });
  ASSERT_TRUE(AwaitWriters(1));
  EXPECT_TRUE(m_second.IsBusy());
  Unread(m_first);
  ASSERT_TRUE(m_second.Finish());
  Unwrite(m_second);
  ExpectTrace("RW>0,1 RW+0,0 WW>1,0 RL-1,0 RUB1,0 WW+0,0 WL-0,0");
  ExpectText(4, "ReaderUnlock broadcast writers");
}

TEST_P(ReadersWriterContention, AReaderWaitsForTheWriter) {
  m_first.Do([this] { m_mutex.WaitWriterLock(); });
  m_second.Start([this] { m_mutex.WaitReaderLock(); });
  ASSERT_TRUE(AwaitReaders(1));
  EXPECT_TRUE(m_second.IsBusy());
  Unwrite(m_first);
  ASSERT_TRUE(m_second.Finish());
  Unread(m_second);
  ExpectTrace("WW>1,0 WW+0,0 RW>0,1 WL-0,1 WB*0,1 RW+0,0 RL-0,0");
  ExpectText(4, "WriterUnlock broadcast all");
}

TEST_P(ReadersWriterContention, AWriterWaitsForTheWriter) {
  m_first.Do([this] { m_mutex.WaitWriterLock(); });
  m_second.Start([this] { m_mutex.WaitWriterLock(); });
  ASSERT_TRUE(AwaitWriters(1));
  Unwrite(m_first);
  ASSERT_TRUE(m_second.Finish());
  Unwrite(m_second);
  ExpectTrace("WW>1,0 WW+0,0 WW>1,0 WL-1,0 WB*1,0 WW+0,0 WL-0,0");
}

TEST_P(ReadersWriterContention, ANestedReadPassesAWaitingWriter) {
  Read(m_first);
  ExpectSlots(1);
  BlockWriter(m_second);
  Trace::Clear();
  m_first.Do([this] {
    m_mutex.WaitReaderLock();
    EXPECT_TRUE(m_mutex.TryWaitReaderLock());
    EXPECT_TRUE(m_mutex.TimedWaitReaderLock(g_MOMENT));
  });
  ExpectTrace("RW>1,1 RW+1,0 RY+1,0 RT>1,1 RT+1,0");
  m_first.Do([this] {
    for (int i = 0; i < 4; ++i) m_mutex.ReaderUnlock();
  });
  ASSERT_TRUE(m_second.Finish());
  Unwrite(m_second);
  ExpectTrace("RW>1,1 RW+1,0 RY+1,0 RT>1,1 RT+1,0 RL-1,0 RL-1,0 RL-1,0 RL-1,0 RUB1,0 WW+0,0 WL-0,0",
              "only the last level wakes the writer");
}

TEST_P(ReadersWriterContention, TheLoneReaderIsUpgradedPastAWaitingWriter) {
  Read(m_first);
  BlockWriter(m_second);
  Trace::Clear();
  m_first.Do([this] { m_mutex.WaitWriterLock(); });
  EXPECT_TRUE(m_second.IsBusy());
  m_first.Do([this] {
    m_mutex.WriterUnlock();
    m_mutex.ReaderUnlock();
  });
  ASSERT_TRUE(m_second.Finish());
  ExpectTrace("WW>2,0 WW+1,0 WL-1,0 RL-1,0 RUB1,0 WW+0,0",
              "the end of writing wakes nobody: the read lock is still in the writer's way");
  Unwrite(m_second);
}

TEST_P(ReadersWriterContention, ANewReaderStandsBackForAWaitingWriter) {
  Read(m_first);
  BlockWriter(m_second);
  ExpectSlots(1);
  Trace::Clear();
  EXPECT_FALSE(m_third.Ask([this] { return m_mutex.TryWaitReaderLock(); }));
  ExpectTrace("RLB1,0");
  ExpectText(0, "ReaderLock broadcast writers");
  Unread(m_first);
  ASSERT_TRUE(m_second.Finish());
  EXPECT_FALSE(m_third.Ask([this] { return m_mutex.TryWaitReaderLock(); }));
  Unwrite(m_second);
  EXPECT_TRUE(m_third.Ask([this] { return m_mutex.TryWaitReaderLock(); }));
  ExpectTrace("RLB1,0 RL-1,0 RUB1,0 WW+0,0 WL-0,0 RY+0,0",
              "no trace of a try that meets a writer, and no broadcast where nobody waits");
  Unread(m_third);
}

/// The writer may have seen the reader on its way to the monitor, and wait for it.
TEST_P(ReadersWriterContention, AReaderThatStandsBackWakesWhoeverWaits) {
  Read(m_first);
  BlockWriter(m_second);
  Condition& monitor = MonitorOf(m_mutex);
  std::atomic<bool> locked{false};
  std::thread onlooker([&] {
    const Lock lock(monitor);
    locked = true;
    EXPECT_TRUE(monitor.TimedWait(g_LONG));
  });
  EXPECT_TRUE(Eventually([&] { return locked.load(); }));
  EXPECT_FALSE(
      m_third.Ask([this] { return m_mutex.TryWaitReaderLock(); }));  // takes the monitor: it waits by now
  onlooker.join();
  Unread(m_first);
  ASSERT_TRUE(m_second.Finish());
  Unwrite(m_second);
}

TEST_P(ReadersWriterContention, TheWaitingWriterGoesBeforeTheReaderThatCameLater) {
  Read(m_first);
  BlockWriter(m_second);
  m_third.Start([this] { m_mutex.WaitReaderLock(); });
  ASSERT_TRUE(AwaitReaders(1));
  Unread(m_first);
  ASSERT_TRUE(m_second.Finish());
  EXPECT_TRUE(m_third.IsBusy());
  Unwrite(m_second);
  ASSERT_TRUE(m_third.Finish());
  Unread(m_third);
  ExpectCount(1, "WB*");
}

TEST_P(ReadersWriterContention, TryWaitWriterLockFailsSilently) {
  Read(m_first);
  Trace::Clear();
  EXPECT_FALSE(m_mutex.TryWaitWriterLock());
  ExpectTrace("");
  Unread(m_first);
}

TEST_P(ReadersWriterContention, TimedReaderGivesUpOnAWriter) {
  m_first.Do([this] { m_mutex.WaitWriterLock(); });
  Trace::Clear();
  EXPECT_FALSE(m_mutex.TimedWaitReaderLock(g_MOMENT));
  ExpectTrace("RT>0,1 RT<0,0");
  ExpectText(1, "TimedWaitReaderLock failed");
  Unwrite(m_first);
}

TEST_P(ReadersWriterContention, TimedReaderLooksTwiceForAWaitingWriter) {
  Read(m_first);
  BlockWriter(m_second);
  Trace::Clear();
  EXPECT_FALSE(m_mutex.TimedWaitReaderLock(g_MOMENT));
  ExpectTrace("RT>1,1 RLB1,1 RLB1,0 RT<1,0");
  Unread(m_first);
  ASSERT_TRUE(m_second.Finish());
  Unwrite(m_second);
}

TEST_P(ReadersWriterContention, TimedReaderIsWokenByTheWriter) {
  m_first.Do([this] { m_mutex.WaitWriterLock(); });
  Trace::Clear();
  m_second.Start([this] { EXPECT_TRUE(m_mutex.TimedWaitReaderLock(g_LONG)); });
  ASSERT_TRUE(AwaitReaders(1));
  Unwrite(m_first);
  ASSERT_TRUE(m_second.Finish());
  ExpectTrace("RT>0,1 WL-0,1 WB*0,1 RT+0,0");
  Unread(m_second);
}

TEST_P(ReadersWriterContention, TimedWriterIsWokenByTheLastReader) {
  Read(m_first);
  ExpectSlots(1);
  Trace::Clear();
  m_second.Start([this] { EXPECT_TRUE(m_mutex.TimedWaitWriterLock(g_LONG)); });
  ASSERT_TRUE(AwaitWriters(1));
  Unread(m_first);
  ASSERT_TRUE(m_second.Finish());
  ExpectTrace("WT>1,0 RL-1,0 RUB1,0 WT+0,0");
  Unwrite(m_second);
}

TEST_P(ReadersWriterContention, TimedWriterGivesUpAfterItsSecondAndLetsTheHeldBackReaderGo) {
  Read(m_first);
  Trace::Clear();
  bool locked = true;
  std::chrono::steady_clock::duration took{};
  m_second.Start([&] {
    const auto start = std::chrono::steady_clock::now();
    locked = m_mutex.TimedWaitWriterLock(Elapse(1, Elapse::Seconds));
    took = std::chrono::steady_clock::now() - start;
  });
  ASSERT_TRUE(AwaitWriters(1));
  m_third.Start([this] { m_mutex.WaitReaderLock(); });
  ASSERT_TRUE(AwaitReaders(1));
  EXPECT_TRUE(m_third.IsBusy());
  ASSERT_TRUE(m_second.Finish());
  ASSERT_TRUE(m_third.Finish()) << "the first reader still reads";
  EXPECT_FALSE(locked);
  EXPECT_GE(took, std::chrono::milliseconds(990));
  EXPECT_LT(took, std::chrono::seconds(10));
  ExpectTrace("WT>1,0 RW>1,1 RLB1,1 WT<0,1 WBR0,1 RW+0,0");
  ExpectText(3, "TimedWaitWriterLock failed");
  ExpectText(4, "TimedWaitWriterLock broadcast readers");
  Unread(m_first);
  Unread(m_third);
}

TEST_P(ReadersWriterContention, TimedWriterThatGivesUpWakesNobodyWhileAnotherWriterWaits) {
  Read(m_first);
  BlockWriter(m_second);
  Trace::Clear();
  EXPECT_FALSE(m_mutex.TimedWaitWriterLock(g_MOMENT));
  ExpectTrace("WT>2,0 WT<1,0");
  Unread(m_first);
  ASSERT_TRUE(m_second.Finish());
  Unwrite(m_second);
}

TEST_P(ReadersWriterContention, TimedWriterThatGivesUpWakesNobodyWhileSomebodyWrites) {
  m_first.Do([this] { m_mutex.WaitWriterLock(); });
  Trace::Clear();
  EXPECT_FALSE(m_mutex.TimedWaitWriterLock(g_MOMENT));
  ExpectTrace("WT>1,0 WT<0,0");
  Unwrite(m_first);
}

TEST_P(ReadersWriterContention, AnExpiredLimitIsOneAttempt) {
  Read(m_first);
  Trace::Clear();
  EXPECT_FALSE(m_mutex.TimedWaitWriterLock(Elapse(0, Elapse::Seconds)));
  EXPECT_FALSE(m_mutex.TimedWaitWriterLock(Elapse(-3, Elapse::Seconds)));
  ExpectTrace("WT>1,0 WT<0,0 WBR0,0 WT>1,0 WT<0,0 WBR0,0");
  EXPECT_TRUE(m_mutex.TimedWaitReaderLock(Elapse(-3, Elapse::Seconds))) << "what is free needs no time";
  m_mutex.ReaderUnlock();
  Unread(m_first);
}

TEST_P(ReadersWriterContention, WriterUnlockOfAnInnerLevelWakesNobody) {
  m_first.Do([this] {
    m_mutex.WaitWriterLock();
    m_mutex.WaitWriterLock();
  });
  BlockReader(m_second);
  Trace::Clear();
  Unwrite(m_first);
  ExpectTrace("WL-0,1");
  EXPECT_TRUE(m_second.IsBusy());
  Unwrite(m_first);
  ASSERT_TRUE(m_second.Finish());
  ExpectTrace("WL-0,1 WL-0,1 WB*0,1 RW+0,0");
  Unread(m_second);
}

TEST_P(ReadersWriterContention, WriterUnlockWakesWaitingReadersAlsoPastItsOwnReadLock) {
  m_first.Do([this] {
    m_mutex.WaitWriterLock();
    m_mutex.WaitReaderLock();
  });
  BlockReader(m_second);
  Trace::Clear();
  Unwrite(m_first);
  ASSERT_TRUE(m_second.Finish());
  ExpectTrace("WL-0,1 WB*0,1 RW+0,0");
  Unread(m_first);
  Unread(m_second);
}

TEST_P(ReadersWriterContention, WriterUnlockWithItsOwnReadLockWakesNoWriter) {
  m_first.Do([this] {
    m_mutex.WaitWriterLock();
    m_mutex.WaitReaderLock();
  });
  BlockWriter(m_second);
  Trace::Clear();
  Unwrite(m_first);
  ExpectTrace("WL-1,0");
  EXPECT_TRUE(m_second.IsBusy());
  Unread(m_first);
  ASSERT_TRUE(m_second.Finish());
  ExpectTrace("WL-1,0 RL-1,0 RUB1,0 WW+0,0");
  Unwrite(m_second);
}

TEST_P(ReadersWriterContention, EveryReaderThatWaitedGoesAtOnce) {
  m_first.Do([this] { m_mutex.WaitWriterLock(); });
  BlockReader(m_second);
  BlockReader(m_third);
  Unwrite(m_first);
  ASSERT_TRUE(m_second.Finish());
  ASSERT_TRUE(m_third.Finish());
  ExpectReaders(2);
  EXPECT_FALSE(m_mutex.TryWaitWriterLock());
  Unread(m_second);
  Unread(m_third);
}

/// The write lock comes on top of read locks that stand in a slot, and those go first.
TEST_P(ReadersWriterContention, ReadLocksGivenBackDuringTheWriteLetNobodyIn) {
  Read(m_first);
  Read(m_first);
  ExpectSlots(1);
  m_first.Do([this] { m_mutex.WaitWriterLock(); });
  BlockWriter(m_second);
  Unread(m_first);
  Unread(m_first);
  ExpectSlots(0);
  EXPECT_TRUE(AwaitWriters(1));
  EXPECT_TRUE(m_second.IsBusy());
  Unwrite(m_first);
  ASSERT_TRUE(m_second.Finish());
  EXPECT_FALSE(CanWrite(m_first));
  Unwrite(m_second);
  EXPECT_TRUE(CanWrite(m_first));
}

/// A nested read of the writer stays when the write lock is gone, and is one lock like any other.
TEST_P(ReadersWriterContention, AReadTakenDuringTheWriteOutlivesIt) {
  m_first.Do([this] {
    m_mutex.WaitWriterLock();
    m_mutex.WaitReaderLock();
    m_mutex.WriterUnlock();
    m_mutex.WaitReaderLock();
    m_mutex.ReaderUnlock();
  });
  EXPECT_FALSE(CanWrite(m_second));
  Unread(m_first);
  EXPECT_TRUE(CanWrite(m_second));
}

/// Those of construction and destruction are told where nobody else can be about.
TEST_P(ReadersWriterContention, EveryStepIsToldWithTheMonitorHeld) {
  if (!IsTraced()) GTEST_SKIP() << "nothing is told";
  std::set<std::string> told;
  Trace::SetHook([&](const std::string& code) {
    told.insert(code);
    EXPECT_FALSE(TestSupport::OtherThreadCanLock(MonitorOf(m_mutex))) << code;
  });
  Read(m_first);
  m_third.Do([this] {
    EXPECT_TRUE(m_mutex.TryWaitReaderLock());
    EXPECT_TRUE(m_mutex.TimedWaitReaderLock(g_LONG));
    m_mutex.ReaderUnlock();
    m_mutex.ReaderUnlock();
  });
  EXPECT_FALSE(m_second.Ask([this] { return m_mutex.TimedWaitWriterLock(g_MOMENT); }));
  BlockWriter(m_second);
  EXPECT_FALSE(m_third.Ask([this] { return m_mutex.TimedWaitReaderLock(g_MOMENT); }));
  Unread(m_first);
  ASSERT_TRUE(m_second.Finish());
  BlockReader(m_third);
  Unwrite(m_second);
  ASSERT_TRUE(m_third.Finish());
  Unread(m_third);
  EXPECT_TRUE(CanWrite(m_first));
  EXPECT_TRUE(m_first.Ask([this] { return m_mutex.TimedWaitWriterLock(g_LONG); }));
  Unwrite(m_first);
  Trace::SetHook(nullptr);
  EXPECT_EQ((std::set<std::string>{"RL-", "RLB", "RT+", "RT<", "RT>", "RUB", "RW+", "RW>", "RY+", "WB*",
                                   "WBR", "WL-", "WT+", "WT<", "WT>", "WW+", "WW>", "WY+"}),
            told);
}

/// Whatever closed the way beside the monitor, it is open again when no writer is about.
TEST_P(ReadersWriterContention, ReadersPassOneAnotherAgainWhenTheWriterIsGone) {
  const auto passes = [this] {
    Read(m_first);
    ExpectSlots(1);
    Unread(m_first);
    ExpectSlots(0);
  };
  m_first.Do([this] {
    m_mutex.WaitWriterLock();
    m_mutex.WriterUnlock();
  });
  passes();
  Read(m_second);
  EXPECT_FALSE(CanWrite(m_third));
  Read(m_first);
  ExpectSlots(2);
  Unread(m_first);
  EXPECT_FALSE(m_third.Ask([this] { return m_mutex.TimedWaitWriterLock(g_MOMENT); }));
  Read(m_first);
  ExpectSlots(2);
  Unread(m_first);
  BlockWriter(m_third);
  Unread(m_second);
  ASSERT_TRUE(m_third.Finish());
  Unwrite(m_third);
  passes();
}

}  // namespace

}  // namespace Oxa::Core::Testing
