// Several threads with a pipe: waits that others end, and what a close does to who waits.
#include <Infrastructure/OxaCore/Thread.h>
#include <Infrastructure/OxaCore/io/BinaryPipe.h>

#include <pthread.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <ctime>
#include <thread>

#include "Support/Eventually.h"
#include "Support/Together.h"
#include "Threads/ThreadTestSupport.h"
#include "io/PipeSupport.h"

using namespace PipeTests;
using TestSupport::Eventually;
using TestSupport::MillisecondsOf;

namespace {

// A writer with more than the ring holds waits for certain once the ring is full: until then it holds the pipe.
bool IsFull(BinaryPipe& pipe, unsigned long long size) {
  return Eventually([&] { return pipe.AvailableBytes() == size; });
}

constexpr double dTWO_LOOKS = 195;  // in milliseconds: a close looks every tenth of a second

// A thread that stands where a signal met it, until it is let go.
class Standstill {
 public:
  explicit Standstill(std::thread& thread) {
    s_bEnd = false;
    s_bReached = false;
    struct sigaction action {};
    action.sa_handler = [](int) {
      s_bReached = true;
      const timespec moment = {0, 1000000};
      while (!s_bEnd) nanosleep(&moment, nullptr);
    };
    sigaction(SIGUSR1, &action, nullptr);
    pthread_kill(thread.native_handle(), SIGUSR1);
    EXPECT_TRUE(Eventually([] { return s_bReached.load(); }));
  }

  static void End() { s_bEnd = true; }

 private:
  static inline std::atomic<bool> s_bReached{false};
  static inline std::atomic<bool> s_bEnd{false};
};

TEST(BinaryPipeWaits, AReaderWaitsForAByte) {
  BinaryPipe pipe(8, s_long, s_long);
  int got = 0;
  std::thread reader([&] { got = pipe.Read(); });
  pipe.Write('a');
  reader.join();
  EXPECT_EQ('a', got);
}

TEST(BinaryPipeWaits, ABlockReadStaysUntilAllIsIn) {
  BinaryPipe pipe(4, s_long, s_long);
  std::string got;
  std::thread reader([&] { got = ReadBlock(pipe, 10); });
  Write(pipe, "abc");
  Write(pipe, "defgh");
  EXPECT_TRUE(Eventually([&] { return pipe.AvailableBytes() == 0; }));
  Write(pipe, "ij");
  reader.join();
  EXPECT_EQ("abcdefghij", got);
}

TEST(BinaryPipeWaits, AWriterWaitsForRoom) {
  BinaryPipe pipe(4, s_long, s_long);
  std::thread writer([&] { Write(pipe, "abcdefghij"); });
  ASSERT_TRUE(IsFull(pipe, 4));
  EXPECT_EQ("abcdefghij", ReadBlock(pipe, 10));
  writer.join();
}

TEST(BinaryPipeWaits, ASkipWaitsForBytesAndMakesRoom) {
  BinaryPipe pipe(4, s_long, s_long);
  std::thread writer([&] { Write(pipe, "abcdefghij"); });
  EXPECT_TRUE(pipe.Skip(8));
  EXPECT_EQ("ij", ReadBlock(pipe, 2));
  writer.join();
}

TEST(BinaryPipeWaits, OneWriteServesManyReadersWhoHandOn) {
  constexpr int readers = 4;
  BinaryPipe pipe(8, IMutex::sINFINITE, s_long);
  std::atomic<int> sum{0};
  TestSupport::Together(readers + 1, [&](int index) {
    if (index == readers)
      Write(pipe, "\1\2\3\4");
    else
      sum += pipe.Read();
  });
  EXPECT_EQ(10, sum);
}

TEST(BinaryPipeWaits, AWaitHasTheTimeoutOfItsBegin) {
  BinaryPipe pipe(1, s_long, s_long);
  std::thread writer([&] { Write(pipe, "ab"); });
  ASSERT_TRUE(IsFull(pipe, 1));
  pipe.SetWriteTimeout(s_noWait);
  EXPECT_EQ("ab", ReadBlock(pipe, 2));
  writer.join();
}

// --- Close

TEST(BinaryPipeWaits, ACloseEndsTheWaitsOfReaders) {
  BinaryPipe pipe(8, s_long, s_long);
  int byte = 0;
  std::string block;
  bool skipped = true;
  std::thread first([&] { byte = pipe.Read(); });
  std::thread second([&] { block = ReadBlock(pipe, 10); });
  std::thread third([&] { skipped = pipe.Skip(10); });
  EXPECT_GT(dAT_ONCE, MillisecondsOf([&] {
              pipe.Close();
              first.join();
              second.join();
              third.join();
            }));
  EXPECT_EQ(-1, byte);
  EXPECT_EQ("-1", block);
  EXPECT_FALSE(skipped);
}

// The first moments of a wait are none in which anybody can be woken.
TEST(BinaryPipeWaits, ACloseEndsAWaitAtWhateverMomentItComes) {
  const double all = MillisecondsOf([] {
    for (int delay = 0; delay < 100; ++delay) {
      BinaryPipe pipe(8, s_long, s_long);
      std::atomic<bool> begun{false};
      int byte = 0;
      std::thread reader([&] {
        begun = true;
        byte = pipe.Read();
      });
      while (!begun) std::this_thread::yield();
      const auto end = std::chrono::steady_clock::now() + std::chrono::microseconds(delay);
      while (std::chrono::steady_clock::now() < end) {
      }
      pipe.Close();
      reader.join();
      ASSERT_EQ(-1, byte);
    }
  });
  EXPECT_GT(dAT_ONCE, all);
}

TEST(BinaryPipeWaits, ACloseLeavesAReaderWhatItHas) {
  BinaryPipe pipe(8, s_long, s_long);
  std::string got;
  std::thread reader([&] { got = ReadBlock(pipe, 10); });
  Write(pipe, "abc");
  EXPECT_TRUE(Eventually([&] { return pipe.AvailableBytes() == 0; }));
  pipe.Close();
  reader.join();
  EXPECT_EQ("abc", got);
}

TEST(BinaryPipeWaits, ACloseLetsAWriterGoWithAWarning) {
  Warnings warnings;
  BinaryPipe pipe(1024, s_long, s_long);
  std::thread writer([&] { EXPECT_NO_THROW(Write(pipe, std::string(3000, 'x'))); });
  ASSERT_TRUE(IsFull(pipe, 1024));
  const double closing = MillisecondsOf([&] { pipe.Close(); });
  writer.join();
  EXPECT_LE(95, closing);
  EXPECT_GT(9000, closing);  // it wasn't its patience that ended it
  EXPECT_EQ(std::vector<std::string>({Aborted(1976)}), warnings.Heard());
  EXPECT_EQ(std::string(1024, 'x'), ReadBlock(pipe, 3000));
  EXPECT_EQ(-1, pipe.Read());
}

// It looks every tenth of a second. A busy machine can make that longer, but not each time.
TEST(BinaryPipeWaits, ACloseDoesntOutstayItsWriterForLong) {
  const bool soon = Eventually([] {
    BinaryPipe pipe(4, s_long, s_long);
    std::thread writer([&] { Write(pipe, "abcdefgh"); });
    EXPECT_TRUE(IsFull(pipe, 4));
    const double closing = MillisecondsOf([&] { pipe.Close(); });
    writer.join();
    return closing < dTWO_LOOKS;
  });
  EXPECT_TRUE(soon);
}

// It looks three times in vain.
TEST(BinaryPipeWaits, ACloseStaysForAWriterThatTakesItsTime) {
  const bool soon = Eventually([] {
    BinaryPipe pipe(4, s_long, s_long);
    std::thread writer([&] { Write(pipe, "abcdefgh"); });
    EXPECT_TRUE(IsFull(pipe, 4));
    const Standstill standstill(writer);
    std::atomic<bool> closed{false};
    std::thread closer([&] {
      pipe.Close();
      closed = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(350));
    EXPECT_FALSE(closed);
    Standstill::End();
    const double late = MillisecondsOf([&] { closer.join(); });
    writer.join();
    return late < dTWO_LOOKS;
  });
  EXPECT_TRUE(soon);
}

// There is no sign of a single-byte writer's wait but the time that a close takes.
TEST(BinaryPipeWaits, ACloseLetsAWriterOfOneByteGoWithAWarning) {
  const bool waited = Eventually([] {
    Warnings warnings;
    BinaryPipe pipe(1, s_long, s_long);
    pipe.Write('a');
    std::atomic<bool> begun{false};
    bool refused = false;
    std::thread writer([&] {
      begun = true;
      try {
        pipe.Write('b');
      } catch (IOWriteToClosedPipe&) {
        refused = true;
      }
    });
    while (!begun) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    pipe.Close();
    writer.join();
    EXPECT_EQ('a', pipe.Read());
    EXPECT_EQ(-1, pipe.Read());
    if (refused) return false;
    EXPECT_EQ(std::vector<std::string>({Aborted(1)}), warnings.Heard());
    return true;
  });
  EXPECT_TRUE(waited);
}

TEST(BinaryPipeWaits, ACloseLetsAllWritersGo) {
  Warnings warnings;
  BinaryPipe pipe(4, s_long, s_long);
  std::thread first([&] { Write(pipe, std::string(104, 'x')); });
  ASSERT_TRUE(IsFull(pipe, 4));
  std::atomic<bool> refused{false};
  std::thread second([&] {
    try {
      Write(pipe, std::string(7, 'y'));
    } catch (IOWriteToClosedPipe&) {
      refused = true;
    }
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  pipe.Close();
  first.join();
  second.join();
  std::vector<std::string> expected = {Aborted(100)};
  if (!refused) expected.push_back(Aborted(7));
  EXPECT_EQ(expected, warnings.Heard());
}

// Whom a close meets before it is back at the ring doesn't write any more, though there is room.
TEST(BinaryPipeWaits, ACloseLetsAWriterGoAlsoWhereRoomHasCome) {
  const bool aborted = Eventually([] {
    Warnings warnings;
    BinaryPipe pipe(1, s_long, s_long);
    std::thread writer([&] { Write(pipe, "ab"); });
    EXPECT_TRUE(IsFull(pipe, 1));
    EXPECT_EQ('a', pipe.Read());
    pipe.Close();
    writer.join();
    const bool written = pipe.Read() == 'b';
    EXPECT_EQ(written ? std::vector<std::string>() : std::vector<std::string>({Aborted(1)}),
              warnings.Heard());
    return !written;
  });
  EXPECT_TRUE(aborted);
}

TEST(BinaryPipeWaits, AWriterThatTimedOutIsNotPending) {
  BinaryPipe pipe(4, s_long, Milliseconds(1));
  EXPECT_THROW(Write(pipe, "abcdefgh"), IOTimeout);
  EXPECT_GT(9000, MillisecondsOf([&] { pipe.Close(); }));
  EXPECT_EQ("abcd", ReadBlock(pipe, 8));
}

#ifdef OXACORE_SOAK
// Ten seconds of patience are too many for the short form.
TEST(BinaryPipeWaits, ACloseGivesUpWaitingForAWriterThatIsGone) {
  OXA_SKIP_WHERE_NOBODY_CAN_BE_KILLED();
  BinaryPipe pipe(4, s_long, s_long);
  const ThreadTests::SharedThread writer = Thread::Create("writer");
  writer->Start(ThreadTests::Do([&](TaskDirective&) {
                  Write(pipe, "abcdefgh");
                  return 0;
                }),
                Elapse(30));
  ASSERT_TRUE(IsFull(pipe, 4));
  ASSERT_TRUE(writer->Kill(Elapse(30)));
  double closing = 0;
  EXPECT_NO_THROW(closing = MillisecondsOf([&] { pipe.Close(); }));
  EXPECT_LE(9900, closing);
  EXPECT_GT(dAT_ONCE, closing);
  EXPECT_EQ("abcd", ReadBlock(pipe, 8));
  EXPECT_EQ(-1, pipe.Read());
}
#endif

}  // namespace
