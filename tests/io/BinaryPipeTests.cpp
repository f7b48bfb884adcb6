// One thread with a pipe: what goes through, and what is said where nothing does.
#include <Infrastructure/OxaCore/io/BinaryPipe.h>

#include <random>
#include <type_traits>

#include "Support/Eventually.h"
#include "io/PipeSupport.h"

using namespace PipeTests;
using TestSupport::MillisecondsOf;

namespace {

static_assert(std::has_virtual_destructor_v<BinaryPipe>);
static_assert(!std::is_copy_constructible_v<BinaryPipe>);
static_assert(std::is_base_of_v<BinaryInputStream, BinaryPipe>);
static_assert(BinaryPipe::DEFAULT_BUFFER_SIZE == 2048);

// One whose both sides don't wait.
class Impatient : public BinaryPipe {
 public:
  explicit Impatient(unsigned long long size = 8) : BinaryPipe(size, s_noWait, s_noWait) {}
};

// One whose both sides wait a little.
class Short : public BinaryPipe {
 public:
  explicit Short(unsigned long long size = 8) : BinaryPipe(size, Milliseconds(2), Milliseconds(2)) {}
};

// --- What it is

TEST(BinaryPipe, IsAnOutputStreamFirst) {
  Impatient pipe;
  EXPECT_EQ(static_cast<void*>(&pipe), static_cast<void*>(static_cast<BinaryOutputStream*>(&pipe)));
}

TEST(BinaryPipe, StartsOpenAndEmpty) {
  Impatient pipe;
  EXPECT_TRUE(pipe.IsOpen());
  EXPECT_FALSE(pipe.IsClosed());
  EXPECT_EQ(0u, pipe.AvailableBytes());
}

TEST(BinaryPipe, OfSize0Has2048Bytes) {
  Impatient pipe(0);
  const std::string block(3000, 'x');
  EXPECT_EQ(Written("3000 bytes, 2048 bytes sent, non-blocking mode"),
            Raised<IOTimeout>([&] { Write(pipe, block); }));
  EXPECT_EQ(2048u, pipe.AvailableBytes());
}

TEST(BinaryPipe, OfOneByteWorks) {
  Impatient pipe(1);
  for (int byte = 0; byte < 3; ++byte) {
    pipe.Write(static_cast<unsigned char>(byte));
    EXPECT_EQ(1u, pipe.AvailableBytes());
    EXPECT_EQ(byte, pipe.Read());
  }
}

TEST(BinaryPipe, HasNoLockForTheSetsAndNothingToFlush) {
  Impatient pipe;
  Write(pipe, "abc");
  LockSet locks;
  pipe.AcquireReadLocks(locks);
  pipe.AcquireWriteLocks(locks);
  pipe.Flush();
  EXPECT_TRUE(locks.empty());
  EXPECT_EQ(3u, pipe.AvailableBytes());
  EXPECT_EQ("abc", ReadBlock(pipe, 3));
}

// --- Reading

TEST(BinaryPipe, GivesEveryByteValueUnsigned) {
  Impatient pipe(256);
  for (int byte = 0; byte < 256; ++byte) pipe.Write(static_cast<unsigned char>(byte));
  for (int byte = 0; byte < 256; ++byte) EXPECT_EQ(byte, pipe.Read());
}

TEST(BinaryPipe, AnswersMinus2WithoutDataInNonBlockingMode) {
  Impatient pipe;
  EXPECT_EQ(-2, pipe.Read());
  EXPECT_EQ("-2", ReadBlock(pipe, 10));
  pipe.Write('a');
  EXPECT_EQ("a", ReadBlock(pipe, 10));
  EXPECT_EQ("-2", ReadBlock(pipe, 10));
}

TEST(BinaryPipe, ReadsNothingForACountBelow1) {
  Impatient pipe;
  EXPECT_EQ(0, pipe.Read(nullptr, 0));
  EXPECT_EQ(0, pipe.Read(nullptr, -1));
  Write(pipe, "ab");
  EXPECT_EQ(0, pipe.Read(nullptr, -9223372036854775807LL));
  EXPECT_EQ(2u, pipe.AvailableBytes());
  pipe.Close();
  EXPECT_EQ(0, pipe.Read(nullptr, 0));
  EXPECT_EQ("ab", ReadBlock(pipe, 2));
  EXPECT_EQ(0, pipe.Read(nullptr, 0));
}

TEST(BinaryPipe, RaisesATimeoutOfARead) {
  Short pipe;
  EXPECT_EQ(ReadInfo("1 byte"), Raised<IOTimeout>([&] { pipe.Read(); }));
  EXPECT_EQ(ReadInfo("10 bytes"), Raised<IOTimeout>([&] { ReadBlock(pipe, 10); }));
  EXPECT_EQ(ReadInfo("1 bytes"), Raised<IOTimeout>([&] { ReadBlock(pipe, 1); }));
  pipe.Write('a');
  EXPECT_EQ('a', pipe.Read());
}

TEST(BinaryPipe, WaitsForTheWholeReadTimeout) {
  BinaryPipe pipe(8, Milliseconds(200), s_noWait);
  EXPECT_LE(190, MillisecondsOf([&] { EXPECT_THROW(pipe.Read(), IOTimeout); }));
}

TEST(BinaryPipe, GivesWhatABlockReadHasGotWhenItsTimeIsOver) {
  Short pipe;
  Write(pipe, "abc");
  EXPECT_EQ("abc", ReadBlock(pipe, 10));
}

TEST(BinaryPipe, TakesOnlyATimeoutOfExactly0ForNonBlockingMode) {
  BinaryPipe pipe(1, Elapse(1, Elapse::TimerTicks), Elapse(1, Elapse::TimerTicks));
  EXPECT_EQ(ReadInfo("1 byte"), Raised<IOTimeout>([&] { pipe.Read(); }));
  EXPECT_EQ(Skipped("1 bytes"), Raised<IOTimeout>([&] { pipe.Skip(1); }));
  pipe.Write('a');
  EXPECT_EQ(Written("1 byte"), Raised<IOTimeout>([&] { pipe.Write('b'); }));
  pipe.SetReadTimeout(Elapse(-1));
  pipe.SetWriteTimeout(Elapse(-1));
  EXPECT_EQ(Written("1 byte"), Raised<IOTimeout>([&] { pipe.Write('b'); }));
  EXPECT_EQ('a', pipe.Read());
  EXPECT_EQ(ReadInfo("1 byte"), Raised<IOTimeout>([&] { pipe.Read(); }));
}

TEST(BinaryPipe, ReadsByTheTimeoutThatIsSet) {
  Short pipe;
  pipe.SetReadTimeout(s_noWait);
  EXPECT_EQ(-2, pipe.Read());
  pipe.SetReadTimeout(Milliseconds(1));
  EXPECT_THROW(pipe.Read(), IOTimeout);
}

// --- Skipping

TEST(BinaryPipe, Skips) {
  Impatient pipe;
  Write(pipe, "abcdefgh");
  EXPECT_TRUE(pipe.Skip(3));
  EXPECT_EQ('d', pipe.Read());
  Write(pipe, "ijkl");
  EXPECT_TRUE(pipe.Skip(6));
  EXPECT_EQ("kl", ReadBlock(pipe, 2));
}

TEST(BinaryPipe, SkipsNothingAtOnce) {
  Impatient pipe;
  EXPECT_TRUE(pipe.Skip(0));
  pipe.Close();
  EXPECT_TRUE(pipe.Skip(0));
}

TEST(BinaryPipe, RaisesWhereASkipHasNoDataInNonBlockingMode) {
  Impatient pipe;
  EXPECT_EQ(Skipped("5 bytes, non-blocking read mode"), Raised<IOTimeout>([&] { pipe.Skip(5); }));
  Write(pipe, "abc");
  EXPECT_EQ(Skipped("5 bytes, non-blocking read mode"), Raised<IOTimeout>([&] { pipe.Skip(5); }));
  EXPECT_EQ(0u, pipe.AvailableBytes());
}

TEST(BinaryPipe, RaisesATimeoutOfASkipWhereverItHasGotTo) {
  Short pipe;
  EXPECT_EQ(Skipped("7 bytes"), Raised<IOTimeout>([&] { pipe.Skip(7); }));
  Write(pipe, "abc");
  EXPECT_EQ(Skipped("18446744073709551615 bytes"),
            Raised<IOTimeout>([&] { pipe.Skip(18446744073709551615ULL); }));
  EXPECT_EQ(0u, pipe.AvailableBytes());
}

TEST(BinaryPipe, SkipsUpToTheCloseOnly) {
  Impatient pipe;
  Write(pipe, "abc");
  pipe.Close();
  EXPECT_TRUE(pipe.Skip(2));
  EXPECT_FALSE(pipe.Skip(2));
  EXPECT_EQ(0u, pipe.AvailableBytes());
  EXPECT_FALSE(pipe.Skip(1));
}

// --- Writing

TEST(BinaryPipe, WritesWhatFitsInNonBlockingMode) {
  Impatient pipe(1024);
  const std::string block(3000, 'x');
  EXPECT_EQ(Written("3000 bytes, 1024 bytes sent, non-blocking mode"),
            Raised<IOTimeout>([&] { Write(pipe, block); }));
  EXPECT_EQ(1024u, pipe.AvailableBytes());
  EXPECT_EQ(Written("2 bytes, 0 bytes sent, non-blocking mode"),
            Raised<IOTimeout>([&] { Write(pipe, "ab"); }));
  EXPECT_EQ(Written("1 byte, non-blocking write mode"), Raised<IOTimeout>([&] { pipe.Write('a'); }));
  EXPECT_EQ(std::string(1024, 'x'), ReadBlock(pipe, 2000));
}

TEST(BinaryPipe, RaisesATimeoutOfAWrite) {
  Short pipe(4);
  EXPECT_EQ(Written("6 bytes, 4 bytes sent"), Raised<IOTimeout>([&] { Write(pipe, "abcdef"); }));
  EXPECT_EQ(Written("1 bytes, 0 bytes sent"), Raised<IOTimeout>([&] { Write(pipe, "g"); }));
  EXPECT_EQ(Written("1 byte"), Raised<IOTimeout>([&] { pipe.Write('h'); }));
  EXPECT_EQ("abcd", ReadBlock(pipe, 4));
  pipe.Write('i');
  EXPECT_EQ('i', pipe.Read());
}

TEST(BinaryPipe, WaitsForTheWholeWriteTimeout) {
  BinaryPipe pipe(1, s_noWait, Milliseconds(200));
  pipe.Write('a');
  EXPECT_LE(190, MillisecondsOf([&] { EXPECT_THROW(pipe.Write('b'), IOTimeout); }));
}

TEST(BinaryPipe, WritesByTheTimeoutThatIsSet) {
  BinaryPipe pipe(1, s_noWait, s_long);
  pipe.Write('a');
  pipe.SetWriteTimeout(s_noWait);
  EXPECT_EQ(Written("1 byte, non-blocking write mode"), Raised<IOTimeout>([&] { pipe.Write('b'); }));
  pipe.SetWriteTimeout(Milliseconds(1));
  EXPECT_EQ(Written("1 byte"), Raised<IOTimeout>([&] { pipe.Write('b'); }));
}

TEST(BinaryPipe, WritesNothingAtOnceAlsoIfItIsClosed) {
  Impatient pipe;
  pipe.Write(nullptr, 0);
  pipe.Close();
  EXPECT_NO_THROW(pipe.Write(nullptr, 0));
}

TEST(BinaryPipe, RefusesToBeWrittenToOnceItIsClosed) {
  const std::string refused = "Oxa.Core.BinaryPipe.Write: Attempted to write to a closed BinaryPipe";
  Warnings warnings;
  Impatient pipe(4);
  pipe.Write('a');
  pipe.Close();
  EXPECT_EQ(refused, Raised<IOWriteToClosedPipe>([&] { pipe.Write('b'); }));
  EXPECT_EQ(refused, Raised<IOWriteToClosedPipe>([&] { Write(pipe, "bcdefgh"); }));
  EXPECT_EQ(1u, pipe.AvailableBytes());
  EXPECT_TRUE(warnings.Heard().empty());
}

// --- The ring

TEST(BinaryPipe, KeepsTheOrderAcrossTheEndOfTheRing) {
  Impatient pipe(8);
  Write(pipe, "abcde");
  EXPECT_EQ("abcde", ReadBlock(pipe, 5));
  Write(pipe, "fghijkl");
  EXPECT_EQ(7u, pipe.AvailableBytes());
  EXPECT_EQ("fghijkl", ReadBlock(pipe, 7));
}

TEST(BinaryPipe, WrapsAtExactlyItsSize) {
  Impatient pipe(4);
  Write(pipe, "abcd");
  EXPECT_EQ("abcd", ReadBlock(pipe, 4));
  Write(pipe, "efgh");
  EXPECT_EQ('e', pipe.Read());
  pipe.Write('i');
  EXPECT_TRUE(pipe.Skip(3));
  EXPECT_EQ('i', pipe.Read());
}

// What a pipe does, in its simplest form.
class Reference {
 public:
  explicit Reference(std::size_t size) : m_uSize(size) {}
  std::string Write(const std::string& text) {
    const std::string fits = text.substr(0, m_uSize - m_sBytes.size());
    m_sBytes += fits;
    if (fits.size() == text.size()) return "nothing raised";
    return Written(std::to_string(text.size()) + " bytes, " + std::to_string(fits.size()) +
                   " bytes sent, non-blocking mode");
  }
  std::string Read(std::size_t count) {
    if (m_sBytes.empty()) return "-2";
    std::string block = m_sBytes.substr(0, count);
    m_sBytes.erase(0, count);
    return block;
  }
  std::size_t Size() const { return m_sBytes.size(); }

 private:
  const std::size_t m_uSize;
  std::string m_sBytes;
};

TEST(BinaryPipe, GivesWhatItGotWhateverTheSizes) {
  std::mt19937 random(20261121);
  unsigned char next = 0;
  for (std::size_t size = 1; size < 12; ++size) {
    Impatient pipe(size);
    Reference reference(size);
    for (int step = 0; step < 200; ++step) {
      std::string text(1 + random() % 6, ' ');
      for (char& byte : text) byte = static_cast<char>(next++);
      if (random() % 8 == 0 || text.size() + reference.Size() <= size) {
        ASSERT_EQ(reference.Write(text), Raised<IOTimeout>([&] { Write(pipe, text); }));
      }
      if (random() % 2 == 0) {
        ASSERT_EQ(reference.Read(text.size()), ReadBlock(pipe, text.size()));
      }
      ASSERT_EQ(reference.Size(), pipe.AvailableBytes());
    }
  }
}

// --- Closing and opening

TEST(BinaryPipe, GivesWhatIsLeftWhenItIsClosedAndThenTheEnd) {
  Short pipe;
  Write(pipe, "abcd");
  pipe.Close();
  EXPECT_TRUE(pipe.IsClosed());
  EXPECT_FALSE(pipe.IsOpen());
  EXPECT_EQ(4u, pipe.AvailableBytes());
  EXPECT_EQ('a', pipe.Read());
  EXPECT_EQ("bcd", ReadBlock(pipe, 10));
  EXPECT_EQ(-1, pipe.Read());
  EXPECT_EQ("-1", ReadBlock(pipe, 10));
}

TEST(BinaryPipe, TellsTheEndInNonBlockingModeAsWell) {
  Impatient pipe;
  pipe.Close();
  EXPECT_EQ(-1, pipe.Read());
  EXPECT_EQ("-1", ReadBlock(pipe, 10));
}

TEST(BinaryPipe, ThrowsTheOldBytesAwayWhenItIsOpenedAnew) {
  Impatient pipe(4);
  Write(pipe, "abc");
  pipe.Close();
  EXPECT_TRUE(pipe.Open());
  EXPECT_TRUE(pipe.IsOpen());
  EXPECT_FALSE(pipe.IsClosed());
  EXPECT_EQ(0u, pipe.AvailableBytes());
  EXPECT_EQ(-2, pipe.Read());
  Write(pipe, "defg");
  EXPECT_EQ("defg", ReadBlock(pipe, 4));
}

TEST(BinaryPipe, KeepsItsBytesWhereItWasOpenAlready) {
  Impatient pipe;
  Write(pipe, "abc");
  EXPECT_TRUE(pipe.Open());
  EXPECT_EQ("abc", ReadBlock(pipe, 3));
}

TEST(BinaryPipe, CanBeClosedFromBothBasesAndTwice) {
  Impatient pipe;
  static_cast<BinaryInputStream&>(pipe).Close();
  EXPECT_TRUE(pipe.IsClosed());
  pipe.Close();
  EXPECT_TRUE(pipe.IsClosed());
  pipe.Open();
  static_cast<BinaryOutputStream&>(pipe).Close();
  EXPECT_TRUE(pipe.IsClosed());
}

// A pause of 100 ms would show in each of them.
TEST(BinaryPipe, ClosesAtOnceWhereNobodyWaitsToWrite) {
  double quickest = dAT_ONCE;
  for (int close = 0; close < 20; ++close) {
    Impatient pipe;
    quickest = std::min(quickest, MillisecondsOf([&] { pipe.Close(); }));
  }
  EXPECT_GT(100, quickest);
}

// --- Waiters whose time was over stay counted, and are woken in vain

void TimeOut(BinaryPipe& pipe, int times) {
  pipe.SetReadTimeout(Milliseconds(1));
  for (int time = 0; time < times; ++time) EXPECT_THROW(pipe.Read(), IOTimeout);
  pipe.SetReadTimeout(s_long);
}

void ExpectEarlyLook(BinaryPipe& pipe) {
  EXPECT_GT(dAT_ONCE,
            MillisecondsOf([&] { EXPECT_EQ(ReadInfo("1 byte"), Raised<IOTimeout>([&] { pipe.Read(); })); }));
}

void ExpectWholeWait(BinaryPipe& pipe) {
  pipe.SetReadTimeout(Milliseconds(200));
  EXPECT_LE(190, MillisecondsOf([&] { EXPECT_THROW(pipe.Read(), IOTimeout); }));
}

TEST(BinaryPipe, WakesAReaderWhoseTimeWasOver) {
  BinaryPipe pipe(8, s_noWait, s_noWait);
  TimeOut(pipe, 1);
  pipe.Write('a');
  EXPECT_EQ('a', pipe.Read());
  ExpectEarlyLook(pipe);
  ExpectWholeWait(pipe);
}

TEST(BinaryPipe, WakesOneReaderPerWrittenPiece) {
  BinaryPipe pipe(8, s_noWait, s_noWait);
  TimeOut(pipe, 3);
  Write(pipe, "a");
  Write(pipe, "bc");
  EXPECT_EQ("abc", ReadBlock(pipe, 3));
  ExpectEarlyLook(pipe);
  ExpectEarlyLook(pipe);
  ExpectWholeWait(pipe);
}

TEST(BinaryPipe, HandsOnToTheNextReaderWhatAReadLeaves) {
  BinaryPipe pipe(8, s_noWait, s_noWait);
  TimeOut(pipe, 2);
  Write(pipe, "ab");
  EXPECT_EQ('a', pipe.Read());
  EXPECT_EQ('b', pipe.Read());
  ExpectEarlyLook(pipe);
  ExpectEarlyLook(pipe);
  ExpectWholeWait(pipe);
}

TEST(BinaryPipe, HandsOnFromBlockReadsAndSkipsAsWell) {
  BinaryPipe pipe(8, s_noWait, s_noWait);
  TimeOut(pipe, 4);
  Write(pipe, "abc");
  EXPECT_EQ("a", ReadBlock(pipe, 1));
  EXPECT_TRUE(pipe.Skip(1));
  EXPECT_EQ(0, pipe.Read(nullptr, 0));
  EXPECT_EQ('c', pipe.Read());
  for (int look = 0; look < 4; ++look) ExpectEarlyLook(pipe);
  ExpectWholeWait(pipe);
}

TEST(BinaryPipe, HandsNothingOnFromAnEmptyRing) {
  BinaryPipe pipe(8, s_noWait, s_noWait);
  TimeOut(pipe, 2);
  EXPECT_EQ(0, pipe.Read(nullptr, 0));
  Write(pipe, "ab");
  EXPECT_EQ("ab", ReadBlock(pipe, 2));
  ExpectEarlyLook(pipe);
  ExpectWholeWait(pipe);
}

TEST(BinaryPipe, WakesAWriterWhoseTimeWasOver) {
  BinaryPipe pipe(2, s_noWait, Milliseconds(1));
  Write(pipe, "ab");
  for (int time = 0; time < 3; ++time) EXPECT_THROW(pipe.Write('c'), IOTimeout);
  EXPECT_EQ('a', pipe.Read());  // wakes one of them
  pipe.Write('c');
  pipe.SetWriteTimeout(s_long);
  EXPECT_GT(dAT_ONCE, MillisecondsOf([&] {
              EXPECT_EQ(Written("2 bytes, 0 bytes sent"), Raised<IOTimeout>([&] { Write(pipe, "de"); }));
            }));
  pipe.SetWriteTimeout(Milliseconds(200));
  EXPECT_LE(190, MillisecondsOf([&] { EXPECT_THROW(pipe.Write('d'), IOTimeout); }));
  EXPECT_EQ("bc", ReadBlock(pipe, 2));
}

TEST(BinaryPipe, WakesAllThatAreCountedWhenItIsClosed) {
  BinaryPipe pipe(8, s_noWait, s_noWait);
  TimeOut(pipe, 3);
  pipe.Close();
  pipe.Open();
  for (int look = 0; look < 3; ++look) ExpectEarlyLook(pipe);
  ExpectWholeWait(pipe);
}

}  // namespace
