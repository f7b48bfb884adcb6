// Several threads on one stack: some read or write, one moves the source or has the sink flushed.
#include <Infrastructure/OxaCore/io/BufferedStreams.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <thread>
#include <vector>

#include "Support/Together.h"
#include "io/Streams.h"

namespace {

using namespace IoTests;

#ifdef OXACORE_SOAK
constexpr std::chrono::seconds tSTRESS(30);
#else
constexpr std::chrono::milliseconds tSTRESS(700);
#endif

class Deadline {
 public:
  bool IsNear() const { return std::chrono::steady_clock::now() >= m_end; }

 private:
  const std::chrono::steady_clock::time_point m_end = std::chrono::steady_clock::now() + tSTRESS;
};

void Breathe(int microseconds) { std::this_thread::sleep_for(std::chrono::microseconds(microseconds)); }

// Records of 8 bytes, whose number is their place; never ends.
class Records : public BinaryInputStream {
 public:
  using BinaryInputStream::Read;

  long long Read(void* buffer, long long count) override {
    const Lock lock(m_mutex);
    auto* const bytes = static_cast<unsigned char*>(buffer);
    for (long long i = 0; i != count; ++i) bytes[i] = Next();
    return count;
  }
  int Read() override {
    const Lock lock(m_mutex);
    return Next();
  }
  unsigned long long AvailableBytes() override { return 0; }
  void AcquireReadLocks(LockSet& locks) override { AddLock(locks, m_mutex); }

  /// To the begin of a record, with the whole stack standing still.
  void MoveTo(unsigned long long record) {
    LockSet locks;
    InvalidateAllBufferedInput(locks);
    m_ullAt = record * 8;
  }

 private:
  unsigned char Next() {
    const unsigned long long record = m_ullAt / 8;
    return static_cast<unsigned char>(record >> (8 * (m_ullAt++ % 8)));
  }

  Mutex m_mutex;  // guards m_ullAt
  unsigned long long m_ullAt = 0;
};

// Reads whole records under the lock of the outermost filter, so that nobody comes between its bytes.
unsigned long long ReadRecord(BinaryInputStream& stream, bool bytewise) {
  unsigned long long record = 0;
  unsigned char bytes[8];
  LockSet locks;
  stream.AcquireReadLocks(locks);
  if (bytewise) {
    for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(stream.Read());
  } else {
    EXPECT_EQ(8, stream.Read(bytes, 8));
  }
  for (int i = 0; i != 8; ++i) record |= static_cast<unsigned long long>(bytes[i]) << (8 * i);
  return record;
}

// A move is a jump to a number of its own range, so each record read must be the successor of some record, or the
// first after a move: what is torn, stale or out of place has a number that nobody moved to.
TEST(StreamStress, ReadersAndAMoverSeeWholeRecords) {
  constexpr unsigned long long range = 1ULL << 20;
  constexpr unsigned long long mark = 0x0101010101ULL << 20;
  Records source;
  BufferedBinaryInputStream inner(source, 64);
  BufferedBinaryInputStream outer(inner, 24);
  source.MoveTo(mark);
  const Deadline deadline;
  std::atomic<unsigned long long> moves{0};
  std::atomic<unsigned long long> records{0};
  TestSupport::Together(3, [&](int index) {
    while (!deadline.IsNear()) {
      if (index == 0) {
        source.MoveTo(mark + (++moves % 2) * range);
        Breathe(100);
      } else {
        const unsigned long long record = ReadRecord(outer, index == 1);
        ASSERT_LE(mark, record);
        ASSERT_GT(mark + 2 * range, record);
        ++records;
      }
    }
  });
  EXPECT_LT(0u, records);
  EXPECT_LT(0u, moves);
}

// One reader calls byte by byte without a lock around; the other thread moves the source to where the number of a
// byte is what it was, so that what is read has to go on without a gap.
TEST(StreamStress, MovingTheSourceToWhereTheReaderIsLosesNothing) {
  class Counter : public BinaryInputStream {
   public:
    long long Read(void* buffer, long long count) override {
      const Lock lock(m_mutex);
      auto* const bytes = static_cast<unsigned char*>(buffer);
      for (long long i = 0; i != count; ++i) bytes[i] = static_cast<unsigned char>(m_ullAt++);
      return count;
    }
    int Read() override { return -1; }
    unsigned long long AvailableBytes() override { return 0; }
    void AcquireReadLocks(LockSet& locks) override { AddLock(locks, m_mutex); }

    // `read` bytes have been taken from the outermost filter, whose lock is held when it is asked for.
    void MoveTo(const unsigned long long& read) {
      LockSet locks;
      InvalidateAllBufferedInput(locks);
      m_ullAt = read;
    }

   private:
    Mutex m_mutex;  // guards m_ullAt
    unsigned long long m_ullAt = 0;
  } source;
  // Counts what it delivers, under the lock that the filter beneath has already.
  class Counting : public BufferedBinaryInputStream {
   public:
    using BufferedBinaryInputStream::BufferedBinaryInputStream;
    using BufferedBinaryInputStream::Read;
    int Read() override {
      LockSet locks;
      AcquireReadLocks(locks);
      ++m_ullRead;
      return BufferedBinaryInputStream::Read();
    }
    unsigned long long m_ullRead = 0;
  } stream(source, 64);
  const Deadline deadline;
  TestSupport::Together(2, [&](int index) {
    for (unsigned long long expected = 0; !deadline.IsNear();) {
      if (index == 0) {
        for (int i = 0; i != 100; ++i) ASSERT_EQ(static_cast<int>(expected++ % 256), stream.Read());
      } else {
        source.MoveTo(stream.m_ullRead);
        Breathe(50);
      }
    }
  });
  EXPECT_LT(0u, stream.m_ullRead);
}

class LockedSink : public MemorySink {
 public:
  using MemorySink::Write;
  void Write(const void* buffer, unsigned long long count) override {
    const Lock lock(m_mutex);
    m_bytes.append(static_cast<const char*>(buffer), count);
  }
  void Write(unsigned char byte) override { Write(&byte, 1); }
  void Flush() override {}
  void AcquireWriteLocks(LockSet& locks) override { AddLock(locks, m_mutex); }

  Mutex m_mutex;  // guards m_bytes
};

// What writers send: their number in the upper 8 bits, and below it how many they have sent before.
constexpr unsigned uMOST_WORDS = 1u << 22;

unsigned Word(int writer, unsigned number) { return static_cast<unsigned>(writer) << 24 | number; }

void ExpectEachWritersNumbersInOrder(const std::string& bytes, const std::vector<unsigned>& written) {
  std::vector<unsigned> next(written.size(), 0);
  ASSERT_EQ(0u, bytes.size() % 4);
  for (std::size_t at = 0; at != bytes.size(); at += 4) {
    unsigned word = 0;
    std::memcpy(&word, bytes.data() + at, 4);
    ASSERT_GT(next.size(), word >> 24);
    ASSERT_EQ(Word(static_cast<int>(word >> 24), next[word >> 24]), word);
    ++next[word >> 24];
  }
  EXPECT_EQ(written, next);
}

TEST(StreamStress, WritersAndAFlusherLoseNothingAndTearNothing) {
  LockedSink sink;
  BufferedBinaryOutputStream inner(sink, 256);
  BufferedBinaryOutputStream outer(inner, 64);
  std::vector<unsigned> written(3, 0);
  const Deadline deadline;
  TestSupport::Together(4, [&](int index) {
    while (!deadline.IsNear()) {
      if (index == 3) {
        LockSet locks;
        sink.FlushAllBufferedOutput(locks);
        EXPECT_EQ(0u, sink.m_bytes.size() % 4);
        locks.clear();
        Breathe(300);
        continue;
      }
      // The first one nearly alone, the others by fits and starts.
      for (int i = 0; i != (index == 0 ? 500 : 20) && written[static_cast<std::size_t>(index)] < uMOST_WORDS;
           ++i) {
        const unsigned word = Word(index, written[static_cast<std::size_t>(index)]++);
        outer.Write(&word, sizeof word);
      }
      if (index != 0) Breathe(500);
    }
  });
  outer.Flush();
  ExpectEachWritersNumbersInOrder(sink.m_bytes, written);
}

// Counts letters.
class CountingSink : public BinaryOutputStream {
 public:
  void Write(const void* buffer, unsigned long long count) override {
    const Lock lock(m_mutex);
    const auto* const letters = static_cast<const char*>(buffer);
    for (unsigned long long i = 0; i != count; ++i) ++m_counts.at(static_cast<std::size_t>(letters[i] - 'a'));
  }
  void Write(unsigned char byte) override { Write(&byte, 1); }
  void Flush() override {}
  void AcquireWriteLocks(LockSet& locks) override { AddLock(locks, m_mutex); }

  Mutex m_mutex;  // guards m_counts
  std::vector<unsigned long long> m_counts{0, 0, 0};
};

TEST(StreamStress, SingleBytesOfWritersAndAFlusherAllArrive) {
  CountingSink sink;
  BufferedBinaryOutputStream outer(sink, 64);
  std::vector<unsigned long long> written(3, 0);
  const Deadline deadline;
  TestSupport::Together(4, [&](int index) {
    while (!deadline.IsNear()) {
      if (index == 3) {
        LockSet locks;
        sink.FlushAllBufferedOutput(locks);
      } else {
        const int burst = index == 0 ? 5000 : 20;
        for (int i = 0; i != burst; ++i) outer.Write(static_cast<unsigned char>('a' + index));
        written[static_cast<std::size_t>(index)] += static_cast<unsigned>(burst);
      }
      if (index != 0) Breathe(250);
    }
  });
  outer.Flush();
  EXPECT_EQ(written, sink.m_counts);
}

}  // namespace
