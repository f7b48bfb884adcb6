#include <Infrastructure/OxaCore/io/BufferedStreams.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <thread>

#include "Support/Allocations.h"
#include "io/Held.h"
#include "io/Streams.h"

namespace {

using namespace IoTests;
using testing::ElementsAre;
using testing::IsEmpty;

// A buffer of ten over a source.
class Ten {
 public:
  explicit Ten(const std::string& bytes = std::string()) : m_source(bytes) {}

  /// What was called since the last time that this was asked.
  Calls NewCalls() {
    Calls calls;
    calls.swap(m_source.m_calls);
    return calls;
  }
  std::string Read(long long count) { return ReadBlock(m_buffered, count, &m_llResult); }

  MemorySource m_source;
  BufferedBinaryInputStream m_buffered{m_source, 10};
  long long m_llResult = 99;
};

TEST(BufferedInput, HasABufferOf2048AsAHabit) {
  EXPECT_EQ(2048u, BufferedBinaryInputStream::DEFAULT_BUFFER_SIZE);
  MemorySource source(Alphabet(51));
  const unsigned long long& size = BufferedBinaryInputStream::DEFAULT_BUFFER_SIZE;
  BufferedBinaryInputStream buffered(source, size);
  EXPECT_EQ(51u, buffered.AvailableBytes());
  EXPECT_EQ('a', buffered.Read());
  EXPECT_THAT(source.m_calls, ElementsAre("read 2048"));
  EXPECT_EQ(50u, buffered.AvailableBytes());
  EXPECT_EQ(0u, source.AvailableBytes());
  EXPECT_EQ(Alphabet(51).substr(1), ReadBlock(buffered, 50));
  EXPECT_EQ(0u, buffered.AvailableBytes());
}

TEST(BufferedInput, AvailableBytesAreThoseOfBufferAndSource) {
  Ten ten(Alphabet(51));
  EXPECT_EQ(51u, ten.m_buffered.AvailableBytes());
  ten.m_buffered.Read();
  EXPECT_EQ(41u, ten.m_source.AvailableBytes());
  EXPECT_EQ(50u, ten.m_buffered.AvailableBytes());
}

TEST(BufferedInput, ReadsSingleBytesFromOneBlock) {
  Ten ten("abcdefghijkl");
  for (const char expected : std::string("abcdefghij")) EXPECT_EQ(expected, ten.m_buffered.Read());
  EXPECT_THAT(ten.NewCalls(), ElementsAre("read 10"));
  EXPECT_EQ('k', ten.m_buffered.Read());
  EXPECT_EQ('l', ten.m_buffered.Read());
  EXPECT_EQ(-1, ten.m_buffered.Read());
  EXPECT_THAT(ten.NewCalls(), ElementsAre("read 10", "read 10"));
}

TEST(BufferedInput, DeliversBytesAbove127) {
  Ten ten("\xFF\x80");
  EXPECT_EQ(0xFF, ten.m_buffered.Read());
  EXPECT_EQ(0x80, ten.m_buffered.Read());
}

TEST(BufferedInput, ASingleByteTurnsWantOfDataIntoTheEndAndABlockDoesNot) {
  Ten ten("abc");
  ten.m_source.m_script = {-2};
  EXPECT_EQ(-1, ten.m_buffered.Read());
  ten.m_source.m_script = {-2, -2};
  ten.Read(4);
  EXPECT_EQ(-2, ten.m_llResult);
  EXPECT_EQ('a', ten.m_buffered.Read());
}

TEST(BufferedInput, ASourceThatAnswersZeroGivesTheEndAndNoStaleByte) {
  Ten ten("ab");
  EXPECT_EQ('a', ten.m_buffered.Read());
  EXPECT_EQ('b', ten.m_buffered.Read());
  ten.m_source.m_bytes += "c";
  ten.m_source.m_script = {0};
  EXPECT_EQ(-1, ten.m_buffered.Read());
  EXPECT_EQ(1u, ten.m_buffered.AvailableBytes());
  EXPECT_EQ('c', ten.m_buffered.Read());
}

TEST(BufferedInput, ABlockBelowOneGivesZeroWithoutLockOrSource) {
  Ten ten("abc");
  LockSet locks;
  ten.m_buffered.AcquireReadLocks(locks);
  std::thread([&] {
    EXPECT_EQ(0, ten.m_buffered.Read(nullptr, 0));
    EXPECT_EQ(0, ten.m_buffered.Read(nullptr, -1));
    EXPECT_TRUE(ten.m_buffered.Skip(0));
  }).join();
  EXPECT_THAT(ten.NewCalls(), IsEmpty());
}

TEST(BufferedInput, ABlockThatTheBufferHoldsLeavesTheSourceAlone) {
  Ten ten(Alphabet(20));
  ten.m_buffered.Read();
  ten.NewCalls();
  EXPECT_EQ("bcdefghij", ten.Read(9));
  EXPECT_EQ(9, ten.m_llResult);
  EXPECT_THAT(ten.NewCalls(), IsEmpty());
}

TEST(BufferedInput, ABlockOfAnEmptyBufferComesStraightAndIsFollowedByReadingAhead) {
  Ten ten(Alphabet(30));
  EXPECT_EQ("abc", ten.Read(3));
  EXPECT_EQ(3, ten.m_llResult);
  EXPECT_THAT(ten.NewCalls(), ElementsAre("read 3", "read 10"));
  EXPECT_EQ("defghijklm", ten.Read(10));
  EXPECT_THAT(ten.NewCalls(), IsEmpty());
  EXPECT_EQ(Alphabet(30).substr(13), ten.Read(40));
  EXPECT_EQ(17, ten.m_llResult);
  EXPECT_THAT(ten.NewCalls(), ElementsAre("read 40", "read 10"));
}

TEST(BufferedInput, ReadsAheadWhateverTheBlockGave) {
  Ten ten("abc");
  for (const int result : {-1, -2, 0}) {
    ten.m_source.m_script = {result, -1};
    ten.Read(3);
    EXPECT_EQ(result, ten.m_llResult);
    EXPECT_THAT(ten.NewCalls(), ElementsAre("read 3", "read 10"));
  }
  ten.m_source.m_script = {-2};
  ten.Read(3);
  EXPECT_EQ(-2, ten.m_llResult);
  ten.NewCalls();
  EXPECT_EQ("abc", ten.Read(3));  // read ahead
  EXPECT_THAT(ten.NewCalls(), IsEmpty());
}

TEST(BufferedInput, ReadingAheadWithoutSuccessLeavesTheBufferEmpty) {
  for (const int result : {-1, -2, 0}) {
    Ten ten("abcdef");
    ten.m_source.m_script = {3, result};
    EXPECT_EQ("abc", ten.Read(3));
    EXPECT_EQ(3u, ten.m_buffered.AvailableBytes());
    ten.NewCalls();
    EXPECT_EQ('d', ten.m_buffered.Read());
    EXPECT_THAT(ten.NewCalls(), ElementsAre("read 10"));
  }
}

TEST(BufferedInput, ABlockBeyondTheBufferTakesTheRestStraightAndDoesNotReadAhead) {
  Ten ten(Alphabet(26));
  ten.Read(1);  // the buffer holds b to k
  ten.Read(7);
  ten.NewCalls();
  EXPECT_EQ("ijklmn", ten.Read(6));
  EXPECT_EQ(6, ten.m_llResult);
  EXPECT_THAT(ten.NewCalls(), ElementsAre("read 3"));
  EXPECT_EQ('o', ten.m_buffered.Read());
  EXPECT_THAT(ten.NewCalls(), ElementsAre("read 10"));
}

TEST(BufferedInput, ABlockBeyondTheBufferGivesWhatThereWasIfTheSourceHasNothing) {
  for (const int result : {-1, -2, 0}) {
    Ten ten("abcdefghijklmnopqrstuvwxyz");
    ten.m_buffered.Read();
    ten.m_source.m_script = {result};
    EXPECT_EQ("bcdefghij", ten.Read(12));
    EXPECT_EQ(9, ten.m_llResult);
    EXPECT_EQ('k', ten.m_buffered.Read());
  }
}

TEST(BufferedInput, ABlockBeyondTheBufferMayComeShort) {
  Ten ten(Alphabet(26));
  ten.m_buffered.Read();
  ten.m_source.m_script = {2};
  EXPECT_EQ("bcdefghijkl", ten.Read(15));
  EXPECT_EQ(11, ten.m_llResult);
}

TEST(BufferedInput, SkipsWithinTheBuffer) {
  Ten ten(Alphabet(26));
  ten.m_buffered.Read();
  ten.NewCalls();
  EXPECT_TRUE(ten.m_buffered.Skip(8));
  EXPECT_THAT(ten.NewCalls(), IsEmpty());
  EXPECT_EQ('j', ten.m_buffered.Read());
}

TEST(BufferedInput, SkipsTheWholeBufferAndFillsItAnew) {
  Ten ten(Alphabet(26));
  ten.m_buffered.Read();
  ten.NewCalls();
  EXPECT_TRUE(ten.m_buffered.Skip(9));
  EXPECT_THAT(ten.NewCalls(), ElementsAre("read 10"));
  EXPECT_EQ('k', ten.m_buffered.Read());
  EXPECT_THAT(ten.NewCalls(), IsEmpty());
}

TEST(BufferedInput, SkipsBeyondTheBufferInTheSourceAndFillsItAnew) {
  Ten ten(Alphabet(26));
  ten.m_buffered.Read();
  ten.NewCalls();
  EXPECT_TRUE(ten.m_buffered.Skip(12));
  EXPECT_THAT(ten.NewCalls(), ElementsAre("skip 3", "read 10"));
  EXPECT_EQ('n', ten.m_buffered.Read());
}

TEST(BufferedInput, ASkipThatTheSourceRefusesKeepsTheBuffer) {
  Ten ten(Alphabet(26));
  ten.m_buffered.Read();
  ten.NewCalls();
  ten.m_source.m_script = {-2};
  EXPECT_FALSE(ten.m_buffered.Skip(12));
  EXPECT_THAT(ten.NewCalls(), ElementsAre("skip 3"));
  EXPECT_EQ("bcdefghij", ten.Read(9));
}

TEST(BufferedInput, SkipIsTrueWhateverFillingAnewGives) {
  for (const int result : {-1, -2, 0}) {
    Ten ten(Alphabet(26));
    ten.m_source.m_script = {5, result};
    ten.m_buffered.Read();
    EXPECT_TRUE(ten.m_buffered.Skip(4));
    EXPECT_EQ('f', ten.m_buffered.Read());
  }
}

TEST(BufferedInput, CountsBeyond32BitsReachTheSourceWhole) {
  constexpr long long llMUCH = 0x100000004LL;
  MemorySource source("abcde");
  BufferedBinaryInputStream stream(source, 4);
  char bytes[4] = {};
  EXPECT_EQ('a', stream.Read());
  EXPECT_FALSE(stream.Skip(llMUCH));
  EXPECT_EQ(3, stream.Read(bytes, llMUCH));
  EXPECT_EQ(-1, stream.Read(bytes, llMUCH));
  EXPECT_EQ((Calls{"read 4", "skip 4294967297", "read 4294967297", "read 4294967300", "read 4"}),
            source.m_calls);
}

TEST(BufferedInput, InvalidationDropsTheBuffer) {
  Ten ten(Alphabet(26));
  ten.m_buffered.Read();
  {
    LockSet locks;
    ten.m_source.InvalidateAllBufferedInput(locks);
    EXPECT_EQ(1u, locks.size());
    ten.m_source.m_uAt = 20;
  }
  EXPECT_EQ(6u, ten.m_buffered.AvailableBytes());
  EXPECT_EQ('u', ten.m_buffered.Read());
}

// What derives from the stream learns of moves by that operation, and of nothing else.
TEST(BufferedInput, OnlyMovesOfTheSourceCountAsInvalidation) {
  class Counting : public BufferedBinaryInputStream {
   public:
    using BufferedBinaryInputStream::BufferedBinaryInputStream;
    void DoBufferedInputInvalidation() override {
      ++m_iMoves;
      BufferedBinaryInputStream::DoBufferedInputInvalidation();
    }
    int m_iMoves = 0;
  };
  MemorySource source(Alphabet(200));
  Counting buffered(source, 10);
  buffered.Read();
  ReadBlock(buffered, 9);
  ReadBlock(buffered, 30);
  buffered.Skip(10);
  buffered.Skip(30);
  for (int i = 0; i != 30; ++i) buffered.BufferedBinaryInputStream::Read();
  EXPECT_EQ(0, buffered.m_iMoves);
  LockSet locks;
  source.InvalidateAllBufferedInput(locks);
  EXPECT_EQ(1, buffered.m_iMoves);
}

TEST(BufferedInput, AllOperationsWaitForWhoHoldsTheLock) {
  for (const int before : {1, 100}) {  // the first thread may come often, or not
    MemorySource source(Alphabet(200));
    BufferedBinaryInputStream buffered(source, 190);
    for (int i = 0; i != before; ++i) buffered.Read();
    ExpectToWait(
        [&](LockSet& locks) { buffered.AcquireReadLocks(locks); },
        {[&] { EXPECT_LE(0, buffered.Read()); }, [&] { EXPECT_EQ(2u, ReadBlock(buffered, 2).size()); },
         [&] { EXPECT_TRUE(buffered.Skip(2)); },
         [&] { EXPECT_EQ(195u - static_cast<unsigned>(before), buffered.AvailableBytes()); }});
  }
}

TEST(BufferedInput, TheSourceIsCalledUnderTheLock) {
  class Probing : public MemorySource {
   public:
    using MemorySource::MemorySource;
    using MemorySource::Read;
    long long Read(void* buffer, long long count) override {
      return m_probe(), MemorySource::Read(buffer, count);
    }
    bool Skip(unsigned long long count) override { return m_probe(), MemorySource::Skip(count); }
    unsigned long long AvailableBytes() override { return m_probe(), MemorySource::AvailableBytes(); }

    std::function<void()> m_probe = [] {};
  };
  using Operation = std::function<void(BinaryInputStream&)>;
  const Operation operations[] = {
      [](auto& stream) { stream.Read(); }, [](auto& stream) { ReadBlock(stream, 3); },
      [](auto& stream) { stream.Skip(3); }, [](auto& stream) { stream.AvailableBytes(); }};
  for (const Operation& operation : operations) {
    Probing source(Alphabet(50));
    BufferedBinaryInputStream buffered(source, 10);
    std::unique_ptr<Waiter> waiter;
    source.m_probe = [&] {
      if (waiter) return;
      waiter = std::make_unique<Waiter>([&] {
        LockSet locks;
        buffered.AcquireReadLocks(locks);
      });
      EXPECT_TRUE(waiter->Waits());
    };
    operation(buffered);
    EXPECT_TRUE(waiter);
  }
}

TEST(BufferedInput, AnErrorOfTheSourcePassesAndReleasesTheLock) {
  Ten ten(Alphabet(26));
  ten.m_source.m_script = {iRAISE, iRAISE};
  EXPECT_THROW(ten.m_buffered.Read(), XIOSystemCallFailure);
  EXPECT_THROW(ten.Read(4), XIOSystemCallFailure);
  std::thread([&] { EXPECT_EQ('a', ten.m_buffered.Read()); }).join();
}

TEST(BufferedInput, WhatWasCopiedBeforeAnErrorStaysCopied) {
  Ten ten(Alphabet(26));
  ten.m_buffered.Read();
  ten.m_source.m_script = {iRAISE};
  char bytes[13] = "############";
  EXPECT_THROW(ten.m_buffered.Read(bytes, 12), XIOSystemCallFailure);
  EXPECT_STREQ("bcdefghij###", bytes);
  EXPECT_EQ('k', ten.m_buffered.Read());
}

TEST(BufferedInput, AnErrorWhileReadingAheadPassesToo) {
  Ten ten(Alphabet(26));
  ten.m_source.m_script = {3, iRAISE};
  char bytes[4] = "###";
  EXPECT_THROW(ten.m_buffered.Read(bytes, 3), XIOSystemCallFailure);
  EXPECT_STREQ("abc", bytes);
  EXPECT_EQ('d', ten.m_buffered.Read());
}

TEST(BufferedInput, WithoutABufferEverythingComesFromTheSource) {
  MemorySource source("abcdef");
  BufferedBinaryInputStream buffered(source, 0);
  EXPECT_EQ('a', buffered.Read());
  EXPECT_EQ("bc", ReadBlock(buffered, 2));
  EXPECT_TRUE(buffered.Skip(1));
  EXPECT_EQ("ef", ReadBlock(buffered, 9));
  EXPECT_EQ(-1, buffered.Read());
  source.m_script = {-2};
  EXPECT_EQ(-1, buffered.Read());
}

TEST(BufferedInput, WithoutMemoryThereIsNoObject) {
  MemorySource source("abc");
  EXPECT_THROW(BufferedBinaryInputStream(source, ~0ULL), std::bad_alloc);
  for (unsigned long failing = 1; failing < 100; ++failing) {
    const TestSupport::FailAllocation fail(failing);
    try {
      const BufferedBinaryInputStream buffered(source, 100);
      if (!fail.Happened()) break;
    } catch (std::bad_alloc&) {
    }
    ASSERT_LT(failing, 99u);
  }
  LockSet locks;
  source.InvalidateAllBufferedInput(locks);
  EXPECT_TRUE(locks.empty());  // nobody is left behind as a listener
}

TEST(BufferedInput, ClosesTheSource) {
  Ten ten;
  ten.m_buffered.Close();
  EXPECT_THAT(ten.NewCalls(), ElementsAre("close"));
}

// A thread that calls a stream over and over takes another road through its lock: it has to give the same.
TEST(BufferedInput, GivesTheSameHoweverOftenOneThreadCalls) {
  const std::string bytes = Alphabet(5000);
  MemorySource source(bytes);
  BufferedBinaryInputStream buffered(source, 100);
  std::string got;
  for (int round = 0; got.size() < bytes.size(); ++round) {
    if (round % 7 == 3) {
      got += ReadBlock(buffered, 1 + round % 13);
    } else if (round % 100 == 99) {
      EXPECT_EQ(bytes.size() - got.size(), buffered.AvailableBytes());
    } else if (round % 50 == 20 && bytes.size() - got.size() > 3) {
      EXPECT_TRUE(buffered.Skip(3));
      got += bytes.substr(got.size(), 3);
    } else {
      got += static_cast<char>(buffered.Read());
    }
  }
  EXPECT_EQ(bytes, got);
  EXPECT_EQ(-1, buffered.Read());
}

TEST(BufferedInput, InvalidationByAnotherThreadReachesABusyStream) {
  MemorySource source(Alphabet(26 * 40));
  BufferedBinaryInputStream buffered(source, 2000);
  for (int i = 0; i != 300; ++i) buffered.Read();
  std::thread([&] {
    LockSet locks;
    source.InvalidateAllBufferedInput(locks);
    source.m_uAt = 26 * 20 + 5;
  }).join();
  EXPECT_EQ('f', buffered.Read());
}

}  // namespace
