// The readers-writer mutex between threads: who waits for whom, who wakes whom, and what the trace shows.

#include <Infrastructure/OxaCore/ReadersWriterMutex.h>

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "Threads/ReadersWriterTrace.h"

namespace Oxa::Core::Testing {

namespace {

const Elapse g_MOMENT(50, Elapse::MilliSeconds);
const Elapse g_LONG(20, Elapse::Seconds);

class ReadersWriterContention : public ::testing::Test {
 protected:
  ReadersWriterContention() : m_mutex(&Trace::Log) { Trace::Clear(); }

  // A thread that has told of its start lets the monitor go by falling asleep: whatever comes next in these
  // tests finds it asleep.
  void BlockWriter(Worker& worker) {
    const int before = Trace::CountOf("WW>");
    worker.Start([this] { m_mutex.WaitWriterLock(); });
    ASSERT_TRUE(Trace::Await("WW>", before + 1));
  }

  void BlockReader(Worker& worker) {
    const int before = Trace::CountOf("RW>");
    worker.Start([this] { m_mutex.WaitReaderLock(); });
    ASSERT_TRUE(Trace::Await("RW>", before + 1));
  }

  Worker m_first;
  Worker m_second;
  Worker m_third;
  ReadersWriterMutex m_mutex;
};

TEST_F(ReadersWriterContention, AWriterWaitsForTheReader) {
  m_first.Do([this] { m_mutex.WaitReaderLock(); });
  m_second.Start([this] { m_mutex.WaitWriterLock(); });
  ASSERT_TRUE(Trace::Await("WW>"));
  EXPECT_TRUE(m_second.IsBusy());
  m_first.Do([this] { m_mutex.ReaderUnlock(); });
  ASSERT_TRUE(m_second.Finish());
  m_second.Do([this] { m_mutex.WriterUnlock(); });
  EXPECT_EQ("RW>0,1 RW+0,0 WW>1,0 RL-1,0 RUB1,0 WW+0,0 WL-0,0", Trace::CodesAndCounts());
  EXPECT_EQ("ReaderUnlock broadcast writers", Trace::Entries()[4].text);
}

TEST_F(ReadersWriterContention, AReaderWaitsForTheWriter) {
  m_first.Do([this] { m_mutex.WaitWriterLock(); });
  m_second.Start([this] { m_mutex.WaitReaderLock(); });
  ASSERT_TRUE(Trace::Await("RW>"));
  EXPECT_TRUE(m_second.IsBusy());
  m_first.Do([this] { m_mutex.WriterUnlock(); });
  ASSERT_TRUE(m_second.Finish());
  m_second.Do([this] { m_mutex.ReaderUnlock(); });
  EXPECT_EQ("WW>1,0 WW+0,0 RW>0,1 WL-0,1 WB*0,1 RW+0,0 RL-0,0", Trace::CodesAndCounts());
  EXPECT_EQ("WriterUnlock broadcast all", Trace::Entries()[4].text);
}

TEST_F(ReadersWriterContention, AWriterWaitsForTheWriter) {
  m_first.Do([this] { m_mutex.WaitWriterLock(); });
  m_second.Start([this] { m_mutex.WaitWriterLock(); });
  ASSERT_TRUE(Trace::Await("WW>", 2));
  m_first.Do([this] { m_mutex.WriterUnlock(); });
  ASSERT_TRUE(m_second.Finish());
  m_second.Do([this] { m_mutex.WriterUnlock(); });
  EXPECT_EQ("WW>1,0 WW+0,0 WW>1,0 WL-1,0 WB*1,0 WW+0,0 WL-0,0", Trace::CodesAndCounts());
}

TEST_F(ReadersWriterContention, ANestedReadPassesAWaitingWriter) {
  m_first.Do([this] { m_mutex.WaitReaderLock(); });
  BlockWriter(m_second);
  Trace::Clear();
  m_first.Do([this] {
    m_mutex.WaitReaderLock();
    EXPECT_TRUE(m_mutex.TryWaitReaderLock());
    EXPECT_TRUE(m_mutex.TimedWaitReaderLock(g_MOMENT));
  });
  EXPECT_EQ("RW>1,1 RW+1,0 RY+1,0 RT>1,1 RT+1,0", Trace::CodesAndCounts());
  m_first.Do([this] {
    for (int i = 0; i < 4; ++i) m_mutex.ReaderUnlock();
  });
  ASSERT_TRUE(m_second.Finish());
  m_second.Do([this] { m_mutex.WriterUnlock(); });
  EXPECT_EQ("RW>1,1 RW+1,0 RY+1,0 RT>1,1 RT+1,0 RL-1,0 RL-1,0 RL-1,0 RL-1,0 RUB1,0 WW+0,0 WL-0,0",
            Trace::CodesAndCounts())
      << "only the last level wakes the writer";
}

TEST_F(ReadersWriterContention, TheLoneReaderIsUpgradedPastAWaitingWriter) {
  m_first.Do([this] { m_mutex.WaitReaderLock(); });
  BlockWriter(m_second);
  Trace::Clear();
  m_first.Do([this] { m_mutex.WaitWriterLock(); });
  EXPECT_TRUE(m_second.IsBusy());
  m_first.Do([this] {
    m_mutex.WriterUnlock();
    m_mutex.ReaderUnlock();
  });
  ASSERT_TRUE(m_second.Finish());
  EXPECT_EQ("WW>2,0 WW+1,0 WL-1,0 RL-1,0 RUB1,0 WW+0,0", Trace::CodesAndCounts())
      << "the end of writing wakes nobody: the read lock is still in the writer's way";
  m_second.Do([this] { m_mutex.WriterUnlock(); });
}

TEST_F(ReadersWriterContention, ANewReaderStandsBackForAWaitingWriter) {
  m_first.Do([this] { m_mutex.WaitReaderLock(); });
  BlockWriter(m_second);
  Trace::Clear();
  EXPECT_FALSE(m_third.Ask([this] { return m_mutex.TryWaitReaderLock(); }));
  EXPECT_EQ("RLB1,0", Trace::CodesAndCounts());
  EXPECT_EQ("ReaderLock broadcast writers", Trace::Last().text);
  m_first.Do([this] { m_mutex.ReaderUnlock(); });
  ASSERT_TRUE(m_second.Finish());
  EXPECT_FALSE(m_third.Ask([this] { return m_mutex.TryWaitReaderLock(); }));
  m_second.Do([this] { m_mutex.WriterUnlock(); });
  EXPECT_TRUE(m_third.Ask([this] { return m_mutex.TryWaitReaderLock(); }));
  EXPECT_EQ("RLB1,0 RL-1,0 RUB1,0 WW+0,0 WL-0,0 RY+0,0", Trace::CodesAndCounts())
      << "no trace of a try that meets a writer, and no broadcast where nobody waits";
  m_third.Do([this] { m_mutex.ReaderUnlock(); });
}

TEST_F(ReadersWriterContention, TheWaitingWriterGoesBeforeTheReaderThatCameLater) {
  m_first.Do([this] { m_mutex.WaitReaderLock(); });
  BlockWriter(m_second);
  m_third.Start([this] { m_mutex.WaitReaderLock(); });
  ASSERT_TRUE(Trace::Await("RLB"));
  m_first.Do([this] { m_mutex.ReaderUnlock(); });
  ASSERT_TRUE(m_second.Finish());
  EXPECT_TRUE(m_third.IsBusy());
  m_second.Do([this] { m_mutex.WriterUnlock(); });
  ASSERT_TRUE(m_third.Finish());
  m_third.Do([this] { m_mutex.ReaderUnlock(); });
  EXPECT_EQ(1, Trace::CountOf("WB*"));
}

TEST_F(ReadersWriterContention, TryWaitWriterLockFailsSilently) {
  m_first.Do([this] { m_mutex.WaitReaderLock(); });
  Trace::Clear();
  EXPECT_FALSE(m_mutex.TryWaitWriterLock());
  EXPECT_EQ("", Trace::Codes());
  m_first.Do([this] { m_mutex.ReaderUnlock(); });
}

TEST_F(ReadersWriterContention, TimedReaderGivesUpOnAWriter) {
  m_first.Do([this] { m_mutex.WaitWriterLock(); });
  Trace::Clear();
  EXPECT_FALSE(m_mutex.TimedWaitReaderLock(g_MOMENT));
  EXPECT_EQ("RT>0,1 RT<0,0", Trace::CodesAndCounts());
  EXPECT_EQ("TimedWaitReaderLock failed", Trace::Last().text);
  m_first.Do([this] { m_mutex.WriterUnlock(); });
}

TEST_F(ReadersWriterContention, TimedReaderLooksTwiceForAWaitingWriter) {
  m_first.Do([this] { m_mutex.WaitReaderLock(); });
  BlockWriter(m_second);
  Trace::Clear();
  EXPECT_FALSE(m_mutex.TimedWaitReaderLock(g_MOMENT));
  EXPECT_EQ("RT>1,1 RLB1,1 RLB1,0 RT<1,0", Trace::CodesAndCounts());
  m_first.Do([this] { m_mutex.ReaderUnlock(); });
  ASSERT_TRUE(m_second.Finish());
  m_second.Do([this] { m_mutex.WriterUnlock(); });
}

TEST_F(ReadersWriterContention, TimedReaderIsWokenByTheWriter) {
  m_first.Do([this] { m_mutex.WaitWriterLock(); });
  Trace::Clear();
  m_second.Start([this] { EXPECT_TRUE(m_mutex.TimedWaitReaderLock(g_LONG)); });
  ASSERT_TRUE(Trace::Await("RT>"));
  m_first.Do([this] { m_mutex.WriterUnlock(); });
  ASSERT_TRUE(m_second.Finish());
  EXPECT_EQ("RT>0,1 WL-0,1 WB*0,1 RT+0,0", Trace::CodesAndCounts());
  m_second.Do([this] { m_mutex.ReaderUnlock(); });
}

TEST_F(ReadersWriterContention, TimedWriterIsWokenByTheLastReader) {
  m_first.Do([this] { m_mutex.WaitReaderLock(); });
  Trace::Clear();
  m_second.Start([this] { EXPECT_TRUE(m_mutex.TimedWaitWriterLock(g_LONG)); });
  ASSERT_TRUE(Trace::Await("WT>"));
  m_first.Do([this] { m_mutex.ReaderUnlock(); });
  ASSERT_TRUE(m_second.Finish());
  EXPECT_EQ("WT>1,0 RL-1,0 RUB1,0 WT+0,0", Trace::CodesAndCounts());
  m_second.Do([this] { m_mutex.WriterUnlock(); });
}

TEST_F(ReadersWriterContention, TimedWriterGivesUpAfterItsSecondAndLetsTheHeldBackReaderGo) {
  m_first.Do([this] { m_mutex.WaitReaderLock(); });
  Trace::Clear();
  bool locked = true;
  std::chrono::steady_clock::duration took{};
  m_second.Start([&] {
    const auto start = std::chrono::steady_clock::now();
    locked = m_mutex.TimedWaitWriterLock(Elapse(1, Elapse::Seconds));
    took = std::chrono::steady_clock::now() - start;
  });
  ASSERT_TRUE(Trace::Await("WT>"));
  m_third.Start([this] { m_mutex.WaitReaderLock(); });
  ASSERT_TRUE(Trace::Await("RLB"));
  EXPECT_TRUE(m_third.IsBusy());
  ASSERT_TRUE(m_second.Finish());
  ASSERT_TRUE(m_third.Finish()) << "the first reader still reads";
  EXPECT_FALSE(locked);
  EXPECT_GE(took, std::chrono::milliseconds(990));
  EXPECT_LT(took, std::chrono::seconds(10));
  EXPECT_EQ("WT>1,0 RW>1,1 RLB1,1 WT<0,1 WBR0,1 RW+0,0", Trace::CodesAndCounts());
  EXPECT_EQ("TimedWaitWriterLock failed", Trace::Entries()[3].text);
  EXPECT_EQ("TimedWaitWriterLock broadcast readers", Trace::Entries()[4].text);
  m_first.Do([this] { m_mutex.ReaderUnlock(); });
  m_third.Do([this] { m_mutex.ReaderUnlock(); });
}

TEST_F(ReadersWriterContention, TimedWriterThatGivesUpWakesNobodyWhileAnotherWriterWaits) {
  m_first.Do([this] { m_mutex.WaitReaderLock(); });
  BlockWriter(m_second);
  Trace::Clear();
  EXPECT_FALSE(m_mutex.TimedWaitWriterLock(g_MOMENT));
  EXPECT_EQ("WT>2,0 WT<1,0", Trace::CodesAndCounts());
  m_first.Do([this] { m_mutex.ReaderUnlock(); });
  ASSERT_TRUE(m_second.Finish());
  m_second.Do([this] { m_mutex.WriterUnlock(); });
}

TEST_F(ReadersWriterContention, TimedWriterThatGivesUpWakesNobodyWhileSomebodyWrites) {
  m_first.Do([this] { m_mutex.WaitWriterLock(); });
  Trace::Clear();
  EXPECT_FALSE(m_mutex.TimedWaitWriterLock(g_MOMENT));
  EXPECT_EQ("WT>1,0 WT<0,0", Trace::CodesAndCounts());
  m_first.Do([this] { m_mutex.WriterUnlock(); });
}

TEST_F(ReadersWriterContention, AnExpiredLimitIsOneAttempt) {
  m_first.Do([this] { m_mutex.WaitReaderLock(); });
  Trace::Clear();
  EXPECT_FALSE(m_mutex.TimedWaitWriterLock(Elapse(0, Elapse::Seconds)));
  EXPECT_FALSE(m_mutex.TimedWaitWriterLock(Elapse(-3, Elapse::Seconds)));
  EXPECT_EQ("WT>1,0 WT<0,0 WBR0,0 WT>1,0 WT<0,0 WBR0,0", Trace::CodesAndCounts());
  EXPECT_TRUE(m_mutex.TimedWaitReaderLock(Elapse(-3, Elapse::Seconds))) << "what is free needs no time";
  m_mutex.ReaderUnlock();
  m_first.Do([this] { m_mutex.ReaderUnlock(); });
}

TEST_F(ReadersWriterContention, WriterUnlockOfAnInnerLevelWakesNobody) {
  m_first.Do([this] {
    m_mutex.WaitWriterLock();
    m_mutex.WaitWriterLock();
  });
  BlockReader(m_second);
  Trace::Clear();
  m_first.Do([this] { m_mutex.WriterUnlock(); });
  EXPECT_EQ("WL-0,1", Trace::CodesAndCounts());
  EXPECT_TRUE(m_second.IsBusy());
  m_first.Do([this] { m_mutex.WriterUnlock(); });
  ASSERT_TRUE(m_second.Finish());
  EXPECT_EQ("WL-0,1 WL-0,1 WB*0,1 RW+0,0", Trace::CodesAndCounts());
  m_second.Do([this] { m_mutex.ReaderUnlock(); });
}

TEST_F(ReadersWriterContention, WriterUnlockWakesWaitingReadersAlsoPastItsOwnReadLock) {
  m_first.Do([this] {
    m_mutex.WaitWriterLock();
    m_mutex.WaitReaderLock();
  });
  BlockReader(m_second);
  Trace::Clear();
  m_first.Do([this] { m_mutex.WriterUnlock(); });
  ASSERT_TRUE(m_second.Finish());
  EXPECT_EQ("WL-0,1 WB*0,1 RW+0,0", Trace::CodesAndCounts());
  m_first.Do([this] { m_mutex.ReaderUnlock(); });
  m_second.Do([this] { m_mutex.ReaderUnlock(); });
}

TEST_F(ReadersWriterContention, WriterUnlockWithItsOwnReadLockWakesNoWriter) {
  m_first.Do([this] {
    m_mutex.WaitWriterLock();
    m_mutex.WaitReaderLock();
  });
  BlockWriter(m_second);
  Trace::Clear();
  m_first.Do([this] { m_mutex.WriterUnlock(); });
  EXPECT_EQ("WL-1,0", Trace::CodesAndCounts());
  EXPECT_TRUE(m_second.IsBusy());
  m_first.Do([this] { m_mutex.ReaderUnlock(); });
  ASSERT_TRUE(m_second.Finish());
  EXPECT_EQ("WL-1,0 RL-1,0 RUB1,0 WW+0,0", Trace::CodesAndCounts());
  m_second.Do([this] { m_mutex.WriterUnlock(); });
}

TEST_F(ReadersWriterContention, EveryReaderThatWaitedGoesAtOnce) {
  m_first.Do([this] { m_mutex.WaitWriterLock(); });
  BlockReader(m_second);
  BlockReader(m_third);
  m_first.Do([this] { m_mutex.WriterUnlock(); });
  ASSERT_TRUE(m_second.Finish());
  ASSERT_TRUE(m_third.Finish());
  EXPECT_EQ(2u, Trace::Last().readers.size());
  m_second.Do([this] { m_mutex.ReaderUnlock(); });
  m_third.Do([this] { m_mutex.ReaderUnlock(); });
}

}  // namespace

}  // namespace Oxa::Core::Testing
