#include <Infrastructure/OxaCore/io/BufferedStreams.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <thread>

#include "io/Held.h"
#include "io/Streams.h"

namespace {

using namespace IoTests;
using testing::ElementsAre;
using testing::IsEmpty;

// A buffer of ten over a sink.
class Ten {
 public:
  void Write(const std::string& bytes) { WriteText(m_buffered, bytes); }

  /// What was called since the last time that this was asked.
  Calls NewCalls() {
    Calls calls;
    calls.swap(m_sink.m_calls);
    return calls;
  }

  MemorySink m_sink;
  BufferedBinaryOutputStream m_buffered{m_sink, 10};
};

TEST(BufferedOutput, HasABufferOf512AsAHabit) {
  EXPECT_EQ(512u, BufferedBinaryOutputStream::DEFAULT_BUFFER_SIZE);
  MemorySink sink;
  const unsigned long long& size = BufferedBinaryOutputStream::DEFAULT_BUFFER_SIZE;
  BufferedBinaryOutputStream buffered(sink, size);
  for (int i = 0; i != 512; ++i) buffered.Write('x');
  EXPECT_THAT(sink.m_calls, IsEmpty());
  buffered.Write('y');
  EXPECT_THAT(sink.m_calls, ElementsAre("write 512"));
  EXPECT_EQ(std::string(512, 'x'), sink.m_bytes);
}

TEST(BufferedOutput, SingleBytesMayFillTheBufferAndAreWrittenByTheNext) {
  Ten ten;
  for (const char byte : std::string("abcdefghij")) ten.m_buffered.Write(static_cast<unsigned char>(byte));
  EXPECT_THAT(ten.NewCalls(), IsEmpty());
  ten.m_buffered.Write('k');
  EXPECT_THAT(ten.NewCalls(), ElementsAre("write 10"));
  ten.m_buffered.Flush();
  EXPECT_EQ("abcdefghijk", ten.m_sink.m_bytes);
}

TEST(BufferedOutput, ABlockThatJustFillsTheBufferFlushesFirst) {
  Ten ten;
  ten.Write("abcd");
  ten.Write("efghij");
  EXPECT_THAT(ten.NewCalls(), ElementsAre("write 4"));
  ten.Write("klm");  // there are six in the buffer: four free
  EXPECT_THAT(ten.NewCalls(), IsEmpty());
  ten.Write("n");  // and now one
  EXPECT_THAT(ten.NewCalls(), ElementsAre("write 9"));
  ten.m_buffered.Flush();
  EXPECT_EQ("abcdefghijklmn", ten.m_sink.m_bytes);
}

TEST(BufferedOutput, ABlockThatIsLargerThanWhatIsFreeFlushesFirst) {
  Ten ten;
  ten.Write("abcd");
  ten.Write("efghijk");
  EXPECT_THAT(ten.NewCalls(), ElementsAre("write 4"));
}

TEST(BufferedOutput, ABlockThatLeavesRoomIsOnlyCopied) {
  Ten ten;
  ten.Write("abcd");
  ten.Write("efghi");
  EXPECT_THAT(ten.NewCalls(), IsEmpty());
}

TEST(BufferedOutput, ABlockOfTheBuffersSizeGoesStraightToTheSink) {
  Ten ten;
  ten.Write("0123456789");
  EXPECT_THAT(ten.NewCalls(), ElementsAre("write 10"));
  ten.Write("abc");
  ten.Write("0123456789AB");
  EXPECT_THAT(ten.NewCalls(), ElementsAre("write 3", "write 12"));
  EXPECT_EQ("0123456789abc0123456789AB", ten.m_sink.m_bytes);
}

TEST(BufferedOutput, CountsBeyond32BitsReachTheSinkWhole) {
  class Blind : public MemorySink {
   public:
    using MemorySink::Write;
    void Write(const void*, unsigned long long count) override {
      m_calls.push_back("write " + std::to_string(count));
    }
  } sink;
  BufferedBinaryOutputStream stream(sink, 4);
  stream.Write('a');
  stream.Write("bc", 0x100000002ULL);
  EXPECT_EQ((Calls{"write 1", "write 4294967298"}), sink.m_calls);
}

TEST(BufferedOutput, AnEmptyBlockDoesNothingAndTakesNoLock) {
  Ten ten;
  LockSet locks;
  ten.m_buffered.AcquireWriteLocks(locks);
  std::thread([&] { ten.m_buffered.Write(nullptr, 0); }).join();
  EXPECT_THAT(ten.NewCalls(), IsEmpty());
}

TEST(BufferedOutput, FlushWritesOutAndFlushesTheSink) {
  Ten ten;
  ten.Write("abc");
  ten.m_buffered.Flush();
  EXPECT_THAT(ten.NewCalls(), ElementsAre("write 3", "flush"));
  ten.m_buffered.Flush();
  EXPECT_THAT(ten.NewCalls(), ElementsAre("flush"));
}

TEST(BufferedOutput, CloseWritesOutFlushesAndCloses) {
  Ten ten;
  ten.Write("abc");
  ten.m_buffered.Close();
  EXPECT_THAT(ten.NewCalls(), ElementsAre("write 3", "flush", "close"));
}

TEST(BufferedOutput, CloseWarnsOfAnErrorAndClosesAllTheSame) {
  Ten ten;
  ten.Write("abc");
  ten.m_sink.m_bFailWrite = true;
  Warnings warnings;
  ten.m_buffered.Close();
  EXPECT_THAT(warnings.m_messages,
              ElementsAre(std::string("Flush raised the following i/o error:\n") + sRAISED));
  EXPECT_THAT(ten.NewCalls(), ElementsAre("write 3", "close"));
}

TEST(BufferedOutput, WhatIsNotFlushedIsLostWithTheStream) {
  MemorySink sink;
  {
    BufferedBinaryOutputStream buffered(sink, 10);
    WriteText(buffered, "abc");
  }
  EXPECT_THAT(sink.m_calls, IsEmpty());
}

TEST(BufferedOutput, FlushAllWritesOut) {
  Ten ten;
  ten.Write("abc");
  LockSet locks;
  ten.m_sink.FlushAllBufferedOutput(locks);
  EXPECT_EQ(1u, locks.size());
  EXPECT_THAT(ten.NewCalls(), ElementsAre("write 3", "flush"));
}

TEST(BufferedOutput, FlushAllOfTwoLayersBringsEverythingDownInOrder) {
  MemorySink sink;
  BufferedBinaryOutputStream inner(sink, 100);
  BufferedBinaryOutputStream outer(inner, 10);
  WriteText(inner, "abc");
  WriteText(outer, "def");
  LockSet locks;
  sink.FlushAllBufferedOutput(locks);
  EXPECT_EQ("abcdef", sink.m_bytes);
  EXPECT_EQ(2u, locks.size());
}

TEST(BufferedOutput, AnErrorInFlushAllIsAWarningAndKeepsTheBytes) {
  Ten ten;
  ten.Write("abc");
  ten.m_sink.m_bFailWrite = true;
  Warnings warnings;
  {
    LockSet locks;
    ten.m_sink.FlushAllBufferedOutput(locks);
    EXPECT_EQ(1u, locks.size());
  }
  EXPECT_THAT(warnings.m_messages,
              ElementsAre(std::string("Listener threw error during notification: ") + sRAISED));
  ten.m_sink.m_bFailWrite = false;
  ten.m_buffered.Flush();
  EXPECT_EQ("abc", ten.m_sink.m_bytes);
}

TEST(BufferedOutput, AnErrorOfTheSinkKeepsTheBytesAndReleasesTheLock) {
  Ten ten;
  ten.Write("abcd");
  ten.m_sink.m_bFailWrite = true;
  EXPECT_THROW(ten.Write("efghij"), XIOSystemCallFailure);
  EXPECT_THROW(ten.Write("0123456789"), XIOSystemCallFailure);
  EXPECT_THROW(ten.m_buffered.Flush(), XIOSystemCallFailure);
  ten.Write("klmno");
  ten.m_buffered.Write('p');
  EXPECT_THROW(ten.m_buffered.Write('q'), XIOSystemCallFailure);
  ten.m_sink.m_bFailWrite = false;
  std::thread([&] { ten.m_buffered.Flush(); }).join();
  EXPECT_EQ("abcdklmnop", ten.m_sink.m_bytes);
}

TEST(BufferedOutput, AllOperationsWaitForWhoHoldsTheLock) {
  for (const int before : {1, 100}) {  // the first thread may come often, or not
    MemorySink sink;
    BufferedBinaryOutputStream buffered(sink, 200);
    for (int i = 0; i != before; ++i) buffered.Write('x');
    ExpectToWait(
        [&](LockSet& locks) { buffered.AcquireWriteLocks(locks); },
        {[&] { buffered.Write('y'); }, [&] { WriteText(buffered, "zz"); }, [&] { buffered.Flush(); }});
    EXPECT_EQ(std::string(static_cast<std::size_t>(before), 'x') + "yzz", sink.m_bytes);
  }
}

TEST(BufferedOutput, TheSinkIsCalledUnderTheLock) {
  class Probing : public MemorySink {
   public:
    using MemorySink::Write;
    void Write(const void* buffer, unsigned long long count) override {
      m_probe();
      MemorySink::Write(buffer, count);
    }
    void Flush() override { m_probe(); }

    std::function<void()> m_probe = [] {};
  };
  using Operation = std::function<void(BinaryOutputStream&)>;
  const Operation operations[] = {
      [](auto& stream) { stream.Write('x'); }, [](auto& stream) { WriteText(stream, "xyz"); },
      [](auto& stream) { WriteText(stream, Alphabet(20)); }, [](auto& stream) { stream.Flush(); }};
  for (const std::size_t before : {std::size_t{10}, std::size_t{0}}) {
    for (const Operation& operation : operations) {
      Probing sink;
      BufferedBinaryOutputStream buffered(sink, 10);
      for (std::size_t i = 0; i != before; ++i) buffered.Write('a');
      std::unique_ptr<Waiter> waiter;
      sink.m_probe = [&] {
        if (waiter) return;
        waiter = std::make_unique<Waiter>([&] {
          LockSet locks;
          buffered.AcquireWriteLocks(locks);
        });
        EXPECT_TRUE(waiter->Waits());
      };
      operation(buffered);
      EXPECT_TRUE(waiter || before == 0);
    }
  }
}

// A sink that writes to the stream above it while that holds its lock and hands on its buffer: what it writes is lost
// with the rest of the buffer, but nobody waits for himself.
TEST(BufferedOutput, ASinkMayCallBack) {
  class CallingBack : public MemorySink {
   public:
    using MemorySink::Write;
    void Write(const void* buffer, unsigned long long count) override {
      MemorySink::Write(buffer, count);
      m_pAbove->Write('!');
    }
    BinaryOutputStream* m_pAbove = nullptr;
  } sink;
  BufferedBinaryOutputStream buffered(sink, 1000);
  sink.m_pAbove = &buffered;
  for (int i = 0; i != 200; ++i) buffered.Write('x');
  buffered.Flush();
  for (int i = 0; i != 200; ++i) buffered.Write('y');
  std::thread([&] { buffered.Flush(); }).join();
  EXPECT_EQ(std::string(200, 'x') + std::string(200, 'y'), sink.m_bytes);
}

TEST(BufferedOutput, WithoutABufferEverythingGoesToTheSink) {
  MemorySink sink;
  BufferedBinaryOutputStream buffered(sink, 0);
  buffered.Write('a');
  WriteText(buffered, "bc");
  buffered.Flush();
  EXPECT_EQ("abc", sink.m_bytes);
  EXPECT_THAT(sink.m_calls, ElementsAre("write", "write 2", "flush"));
}

TEST(BufferedOutput, WithoutMemoryThereIsNoObject) {
  MemorySink sink;
  EXPECT_THROW(BufferedBinaryOutputStream(sink, ~0ULL), std::bad_alloc);
  LockSet locks;
  sink.FlushAllBufferedOutput(locks);
  EXPECT_TRUE(locks.empty());
}

// A thread that calls a stream over and over takes another road through its lock: it has to give the same.
TEST(BufferedOutput, WritesTheSameHoweverOftenOneThreadCalls) {
  const std::string bytes = Alphabet(5000);
  MemorySink sink;
  BufferedBinaryOutputStream buffered(sink, 100);
  for (std::size_t at = 0; at < bytes.size();) {
    const std::size_t block = std::min<std::size_t>(at % 11 == 5 ? 1 + at % 120 : 1, bytes.size() - at);
    if (block == 1) {
      buffered.Write(static_cast<unsigned char>(bytes[at]));
    } else {
      buffered.Write(bytes.data() + at, block);
    }
    at += block;
  }
  buffered.Flush();
  EXPECT_EQ(bytes, sink.m_bytes);
}

TEST(BufferedOutput, ABlockThatJustFillsTheBufferFlushesFirstOnABusyStreamToo) {
  MemorySink sink;
  BufferedBinaryOutputStream buffered(sink, 1000);
  for (int i = 0; i != 400; ++i) buffered.Write('x');
  WriteText(buffered, std::string(600, 'y'));
  EXPECT_THAT(sink.m_calls, ElementsAre("write 400"));
  WriteText(buffered, std::string(399, 'z'));
  EXPECT_THAT(sink.m_calls, ElementsAre("write 400"));
}

TEST(BufferedOutput, FlushByAnotherThreadReachesABusyStream) {
  MemorySink sink;
  BufferedBinaryOutputStream buffered(sink, 2000);
  for (int i = 0; i != 300; ++i) buffered.Write('x');
  std::thread([&] {
    LockSet locks;
    sink.FlushAllBufferedOutput(locks);
    EXPECT_EQ(300u, sink.m_bytes.size());
  }).join();
  buffered.Write('y');
  buffered.Flush();
  EXPECT_EQ(std::string(300, 'x') + 'y', sink.m_bytes);
}

}  // namespace
