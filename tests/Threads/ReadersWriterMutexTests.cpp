// The readers-writer mutex in one thread: recursion, both locks together, the trace, and misuse.

#include <Infrastructure/OxaCore/ReadersWriterMutex.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "Threads/ReadersWriterTrace.h"

namespace Oxa::Core::Testing {

namespace {

const Elapse g_SHORT(20, Elapse::MilliSeconds);
const Elapse g_LONG(20, Elapse::Seconds);

using Locking = std::function<bool(ReadersWriterMutex&)>;

bool WaitReader(ReadersWriterMutex& mutex) { return mutex.WaitReaderLock(), true; }
bool TimedReader(ReadersWriterMutex& mutex) { return mutex.TimedWaitReaderLock(g_LONG); }
bool TryReader(ReadersWriterMutex& mutex) { return mutex.TryWaitReaderLock(); }
bool WaitWriter(ReadersWriterMutex& mutex) { return mutex.WaitWriterLock(), true; }
bool TimedWriter(ReadersWriterMutex& mutex) { return mutex.TimedWaitWriterLock(g_LONG); }
bool TryWriter(ReadersWriterMutex& mutex) { return mutex.TryWaitWriterLock(); }

class ReadersWriterMutexTest : public ::testing::Test {
 protected:
  ReadersWriterMutexTest() { Trace::Clear(); }

  /// Whether another thread could write, or read, now.
  bool OtherCanWrite() {
    return m_other.Ask([this] {
      if (!m_mutex.TryWaitWriterLock()) return false;
      m_mutex.WriterUnlock();
      return true;
    });
  }
  bool OtherCanRead() {
    return m_other.Ask([this] {
      if (!m_mutex.TryWaitReaderLock()) return false;
      m_mutex.ReaderUnlock();
      return true;
    });
  }

  void ExpectThreeReadLocks(const Locking& lock) {
    for (int i = 0; i < 3; ++i) ASSERT_TRUE(lock(m_mutex));
    EXPECT_TRUE(OtherCanRead());
    for (int i = 0; i < 3; ++i) {
      EXPECT_FALSE(OtherCanWrite()) << "with " << 3 - i << " levels held";
      m_mutex.ReaderUnlock();
    }
    EXPECT_TRUE(OtherCanWrite());
  }

  void ExpectThreeWriteLocks(const Locking& lock) {
    for (int i = 0; i < 3; ++i) ASSERT_TRUE(lock(m_mutex));
    for (int i = 0; i < 3; ++i) {
      EXPECT_FALSE(OtherCanRead()) << "with " << 3 - i << " levels held";
      m_mutex.WriterUnlock();
    }
    EXPECT_TRUE(OtherCanWrite());
  }

  /// Takes the locks in order, gives them back in reverse order, and sees the mutex free again.
  void ExpectNested(const std::vector<std::pair<Locking, bool>>& locks) {
    for (const auto& lock : locks) ASSERT_TRUE(lock.first(m_mutex));
    for (auto lock = locks.rbegin(); lock != locks.rend(); ++lock) {
      EXPECT_FALSE(OtherCanWrite());
      lock->second ? m_mutex.WriterUnlock() : m_mutex.ReaderUnlock();
    }
    EXPECT_TRUE(OtherCanWrite());
    EXPECT_TRUE(OtherCanRead());
  }

  void ExpectBothOrders(const Locking& reader, const Locking& writer) {
    const std::pair<Locking, bool> read(reader, false);
    const std::pair<Locking, bool> write(writer, true);
    ExpectNested({read, write});
    ExpectNested({write, read});
    ExpectNested({read, read, read, write, write, write});
    ExpectNested({write, write, write, read, read, read});
    ExpectNested({read, write, read, write, read, write});
    ExpectNested({write, read, write, read, write, read});
  }

  Worker m_other;
  ReadersWriterMutex m_mutex;
};

TEST_F(ReadersWriterMutexTest, WaitReaderLockThreeTimesNeedsThreeUnlocks) {
  ExpectThreeReadLocks(WaitReader);
}
TEST_F(ReadersWriterMutexTest, TryWaitReaderLockThreeTimesNeedsThreeUnlocks) {
  ExpectThreeReadLocks(TryReader);
}
TEST_F(ReadersWriterMutexTest, TimedWaitReaderLockThreeTimesNeedsThreeUnlocks) {
  ExpectThreeReadLocks(TimedReader);
}
TEST_F(ReadersWriterMutexTest, WaitWriterLockThreeTimesNeedsThreeUnlocks) {
  ExpectThreeWriteLocks(WaitWriter);
}
TEST_F(ReadersWriterMutexTest, TryWaitWriterLockThreeTimesNeedsThreeUnlocks) {
  ExpectThreeWriteLocks(TryWriter);
}
TEST_F(ReadersWriterMutexTest, TimedWaitWriterLockThreeTimesNeedsThreeUnlocks) {
  ExpectThreeWriteLocks(TimedWriter);
}

TEST_F(ReadersWriterMutexTest, OneThreadReadsAndWritesInAnyOrderWaiting) {
  ExpectBothOrders(WaitReader, WaitWriter);
}
TEST_F(ReadersWriterMutexTest, OneThreadReadsAndWritesInAnyOrderTrying) {
  ExpectBothOrders(TryReader, TryWriter);
}
TEST_F(ReadersWriterMutexTest, OneThreadReadsAndWritesInAnyOrderTimed) {
  ExpectBothOrders(TimedReader, TimedWriter);
}

TEST_F(ReadersWriterMutexTest, WritesMayBeGivenBackBeforeReadsAndTheOtherWayRound) {
  m_mutex.WaitReaderLock();
  m_mutex.WaitWriterLock();
  m_mutex.ReaderUnlock();
  EXPECT_FALSE(OtherCanRead());
  m_mutex.WriterUnlock();
  EXPECT_TRUE(OtherCanWrite());

  m_mutex.WaitWriterLock();
  m_mutex.WaitReaderLock();
  m_mutex.WriterUnlock();
  EXPECT_TRUE(OtherCanRead()) << "writing has become reading";
  EXPECT_FALSE(OtherCanWrite());
  m_mutex.ReaderUnlock();
  EXPECT_TRUE(OtherCanWrite());
}

TEST_F(ReadersWriterMutexTest, ManyThreadsReadAtOnce) {
  std::vector<Worker> readers(40);
  for (Worker& reader : readers) {
    EXPECT_TRUE(reader.Ask([this] { return m_mutex.TryWaitReaderLock(); }));
  }
  for (Worker& reader : readers) {
    EXPECT_FALSE(OtherCanWrite());
    reader.Do([this] { m_mutex.ReaderUnlock(); });
  }
  EXPECT_TRUE(OtherCanWrite());
}

TEST_F(ReadersWriterMutexTest, ReaderUnlockWithoutAReadLockFailsAnAssertion) {
  m_other.Do([this] { m_mutex.WaitReaderLock(); });
  ::testing::internal::CaptureStderr();
  m_mutex.ReaderUnlock();
  const std::string output = ::testing::internal::GetCapturedStderr();
  EXPECT_NE(std::string::npos, output.find("Failed Assertion(it != m_readers.end())")) << output;
  EXPECT_FALSE(m_mutex.TryWaitWriterLock()) << "the other thread's lock is untouched";
  m_other.Do([this] { m_mutex.ReaderUnlock(); });
  EXPECT_TRUE(m_mutex.TryWaitWriterLock());
  m_mutex.WriterUnlock();
}

TEST_F(ReadersWriterMutexTest, WriterUnlockByAnotherThreadFailsAnAssertion) {
  m_other.Do([this] { m_mutex.WaitWriterLock(); });
  ::testing::internal::CaptureStderr();
  m_mutex.WriterUnlock();
  const std::string output = ::testing::internal::GetCapturedStderr();
  EXPECT_NE(std::string::npos, output.find("Failed Assertion(m_writer.first == threadID)")) << output;
  EXPECT_EQ(std::string::npos, output.find("m_writer.second")) << output;
  EXPECT_FALSE(m_mutex.TryWaitReaderLock()) << "the writer still writes";
  m_other.Do([this] { m_mutex.WriterUnlock(); });
  EXPECT_TRUE(OtherCanWrite());
}

TEST_F(ReadersWriterMutexTest, WriterUnlockWithNobodyWritingFailsBothAssertions) {
  ::testing::internal::CaptureStderr();
  m_mutex.WriterUnlock();
  const std::string output = ::testing::internal::GetCapturedStderr();
  const std::size_t first = output.find("Failed Assertion(m_writer.second > 0)");
  const std::size_t second = output.find("Failed Assertion(m_writer.first == threadID)");
  EXPECT_NE(std::string::npos, first) << output;
  EXPECT_NE(std::string::npos, second) << output;
  EXPECT_LT(first, second);
  EXPECT_TRUE(OtherCanWrite());
}

TEST_F(ReadersWriterMutexTest, AWriterOfThePastThatUnlocksOnceMoreFailsTheCountOnly) {
  m_mutex.WaitWriterLock();
  m_mutex.WriterUnlock();
  ::testing::internal::CaptureStderr();
  m_mutex.WriterUnlock();
  const std::string output = ::testing::internal::GetCapturedStderr();
  EXPECT_NE(std::string::npos, output.find("Failed Assertion(m_writer.second > 0)")) << output;
  EXPECT_EQ(std::string::npos, output.find("m_writer.first")) << "its id stays known: " << output;
  EXPECT_TRUE(OtherCanWrite());
}

TEST(ReadersWriterTraceTest, TellsOfConstructionAndDestruction) {
  Trace::Clear();
  {
    ReadersWriterMutex mutex(&Trace::Log);
    EXPECT_EQ("RWC0,0", Trace::CodesAndCounts());
    EXPECT_EQ("ReadersWriterMutex constructor", Trace::Last().text);
    EXPECT_EQ((std::pair<unsigned long, unsigned long>(0, 0)), Trace::Last().writer);
    EXPECT_TRUE(Trace::Last().readers.empty());
  }
  EXPECT_EQ("RWC0,0 RWD0,0", Trace::CodesAndCounts());
  EXPECT_EQ("ReadersWriterMutex destructor", Trace::Last().text);
}

TEST(ReadersWriterTraceTest, WaitReaderLockAndUnlock) {
  ReadersWriterMutex mutex(&Trace::Log);
  const unsigned long id = IdOfThisThread();
  Trace::Clear();
  mutex.WaitReaderLock();
  mutex.WaitReaderLock();
  mutex.ReaderUnlock();
  mutex.ReaderUnlock();
  const std::vector<TraceEntry> entries = Trace::Entries();
  EXPECT_EQ("RW>0,1 RW+0,0 RW>0,1 RW+0,0 RL-0,0 RL-0,0", Trace::CodesAndCounts());
  ASSERT_EQ(6u, entries.size());
  EXPECT_EQ("WaitReaderLock started", entries[0].text);
  EXPECT_EQ("WaitReaderLock succeeded", entries[1].text);
  EXPECT_EQ("ReaderUnlock", entries[4].text);
  using Readers = ReadersWriterMutex::ReaderCounts;
  EXPECT_EQ(Readers(), entries[0].readers);
  EXPECT_EQ((Readers{{id, 1}}), entries[1].readers);
  EXPECT_EQ((Readers{{id, 1}}), entries[2].readers);
  EXPECT_EQ((Readers{{id, 2}}), entries[3].readers);
  EXPECT_EQ((Readers{{id, 1}}), entries[4].readers);
  EXPECT_EQ(Readers(), entries[5].readers) << "no entry is kept with a count of 0";
}

TEST(ReadersWriterTraceTest, TimedWaitReaderLock) {
  ReadersWriterMutex mutex(&Trace::Log);
  Trace::Clear();
  EXPECT_TRUE(mutex.TimedWaitReaderLock(g_SHORT));
  EXPECT_EQ("RT>0,1 RT+0,0", Trace::CodesAndCounts());
  EXPECT_EQ("TimedWaitReaderLock started", Trace::Entries().front().text);
  EXPECT_EQ("TimedWaitReaderLock succeeded", Trace::Last().text);
  mutex.ReaderUnlock();
}

TEST(ReadersWriterTraceTest, TryWaitReaderLock) {
  ReadersWriterMutex mutex(&Trace::Log);
  Trace::Clear();
  EXPECT_TRUE(mutex.TryWaitReaderLock());
  EXPECT_EQ("RY+0,0", Trace::CodesAndCounts());
  EXPECT_EQ("TryWaitReaderLock succeeded", Trace::Last().text);
  mutex.ReaderUnlock();
}

TEST(ReadersWriterTraceTest, WaitWriterLockAndUnlock) {
  ReadersWriterMutex mutex(&Trace::Log);
  const unsigned long id = IdOfThisThread();
  Trace::Clear();
  mutex.WaitWriterLock();
  mutex.WaitWriterLock();
  mutex.WriterUnlock();
  mutex.WriterUnlock();
  const std::vector<TraceEntry> entries = Trace::Entries();
  EXPECT_EQ("WW>1,0 WW+0,0 WW>1,0 WW+0,0 WL-0,0 WL-0,0", Trace::CodesAndCounts());
  ASSERT_EQ(6u, entries.size());
  EXPECT_EQ("WaitWriterLock started", entries[0].text);
  EXPECT_EQ("WaitWriterLock succeeded", entries[1].text);
  EXPECT_EQ("WriterUnlock", entries[4].text);
  using Writer = std::pair<unsigned long, unsigned long>;
  EXPECT_EQ(Writer(0, 0), entries[0].writer);
  EXPECT_EQ(Writer(id, 1), entries[1].writer);
  EXPECT_EQ(Writer(id, 2), entries[3].writer);
  EXPECT_EQ(Writer(id, 1), entries[4].writer);
  EXPECT_EQ(Writer(id, 0), entries[5].writer) << "the id stays, the count alone says that the writer is gone";
}

TEST(ReadersWriterTraceTest, TimedWaitWriterLock) {
  ReadersWriterMutex mutex(&Trace::Log);
  Trace::Clear();
  EXPECT_TRUE(mutex.TimedWaitWriterLock(g_SHORT));
  EXPECT_EQ("WT>1,0 WT+0,0", Trace::CodesAndCounts());
  EXPECT_EQ("TimedWaitWriterLock started", Trace::Entries().front().text);
  EXPECT_EQ("TimedWaitWriterLock succeeded", Trace::Last().text);
  mutex.WriterUnlock();
}

TEST(ReadersWriterTraceTest, TryWaitWriterLock) {
  ReadersWriterMutex mutex(&Trace::Log);
  Trace::Clear();
  EXPECT_TRUE(mutex.TryWaitWriterLock());
  EXPECT_EQ("WY+0,0", Trace::CodesAndCounts());
  EXPECT_EQ("TryWaitWriterLock succeeded", Trace::Last().text);
  mutex.WriterUnlock();
}

TEST(ReadersWriterTraceTest, TheWriterThatReadsIsAReaderAsWell) {
  ReadersWriterMutex mutex(&Trace::Log);
  const unsigned long id = IdOfThisThread();
  mutex.WaitWriterLock();
  mutex.WaitReaderLock();
  EXPECT_EQ((std::pair<unsigned long, unsigned long>(id, 1)), Trace::Last().writer);
  EXPECT_EQ((ReadersWriterMutex::ReaderCounts{{id, 1}}), Trace::Last().readers);
  mutex.WriterUnlock();
  mutex.ReaderUnlock();
}

TEST(ReadersWriterTraceTest, MisuseIsNotTraced) {
  ReadersWriterMutex mutex(&Trace::Log);
  Trace::Clear();
  ::testing::internal::CaptureStderr();
  mutex.ReaderUnlock();
  mutex.WriterUnlock();
  ::testing::internal::GetCapturedStderr();
  EXPECT_EQ("", Trace::Codes());
}

}  // namespace

}  // namespace Oxa::Core::Testing
