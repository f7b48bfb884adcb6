#include <Infrastructure/OxaCore/io/BinaryStreams.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>

#include "io/Streams.h"

namespace {

using namespace IoTests;
using testing::ElementsAre;
using testing::IsEmpty;

// --- the base class of sources ---

TEST(BinaryInputStream, ReadsABlockByteByByte) {
  ByteSource source("abcdef");
  EXPECT_EQ("abcd", ReadBlock(source, 4));
  EXPECT_THAT(source.m_calls, ElementsAre("read", "read", "read", "read"));
}

TEST(BinaryInputStream, ReadsNothingForACountBelowOne) {
  ByteSource source("abc");
  long long result = 99;
  ReadBlock(source, 0, &result);
  EXPECT_EQ(0, result);
  EXPECT_EQ(0, source.BinaryInputStream::Read(nullptr, -7));
  EXPECT_THAT(source.m_calls, IsEmpty());
}

TEST(BinaryInputStream, TellsOfTheEndOnlyWhenNothingCame) {
  ByteSource source("abcd");
  long long result = 0;
  EXPECT_EQ("abcd", ReadBlock(source, 10, &result));
  EXPECT_EQ(4, result);
  EXPECT_EQ("", ReadBlock(source, 10, &result));
  EXPECT_EQ(-1, result);
}

TEST(BinaryInputStream, TellsOfNoDataOnlyWhenNothingCame) {
  ByteSource source("abcd");
  source.m_script = {1, 1, -2, -2};
  long long result = 0;
  EXPECT_EQ("ab", ReadBlock(source, 10, &result));
  EXPECT_EQ(2, result);
  ReadBlock(source, 10, &result);
  EXPECT_EQ(-2, result);
  EXPECT_EQ("cd", ReadBlock(source, 2));
}

TEST(BinaryInputStream, DeliversBytesAbove127) {
  ByteSource source("\x80\xFF");
  EXPECT_EQ(0x80, source.Read());
  EXPECT_EQ(0xFF, source.Read());
}

TEST(BinaryInputStream, AnErrorDuringABlockBecomesAWarning) {
  ByteSource source("abcdef");
  source.m_script = {1, 1, 1, iRAISE};
  Warnings warnings;
  long long result = 0;
  EXPECT_EQ("abc", ReadBlock(source, 5, &result));
  EXPECT_EQ(3, result);
  EXPECT_THAT(warnings.m_messages,
              ElementsAre(std::string("Read of 5 bytes ended after 3 bytes read due to error:\n") + sRAISED));
  EXPECT_THAT(warnings.m_logNames, ElementsAre("Oxa.Core.BinaryInputStream"));
  EXPECT_EQ("def", ReadBlock(source, 5));
}

TEST(BinaryInputStream, AnErrorAtTheFirstByteOfABlockGivesZero) {
  ByteSource source("abc");
  source.m_script = {iRAISE};
  Warnings warnings;
  long long result = 99;
  ReadBlock(source, 2, &result);
  EXPECT_EQ(0, result);
  EXPECT_THAT(warnings.m_messages,
              ElementsAre(std::string("Read of 2 bytes ended after 0 bytes read due to error:\n") + sRAISED));
}

// The message of an error is its data; what() may be another's idea of it.
class Wordy : public ErrorClass<Wordy, IOError> {
 public:
  Wordy() : ErrorClass("the message") {}
  const char* what() const noexcept override { return "something else"; }
};

TEST(BinaryInputStream, TheWarningQuotesTheMessageOfTheError) {
  class Broken : public ByteSource {
   public:
    int Read() override {
      OXA_RAISE_ERROR("Test", Wordy());
      return -1;
    }
    using ByteSource::Read;
  } source;
  Warnings warnings;
  ReadBlock(source, 2);
  EXPECT_THAT(warnings.m_messages,
              ElementsAre("Read of 2 bytes ended after 0 bytes read due to error:\nthe message"));
}

TEST(BinaryOutputStreamFilter, TheWarningQuotesTheMessageOfTheError) {
  class Broken : public MemorySink {
   public:
    void Flush() override { OXA_RAISE_ERROR("Test", Wordy()); }
  } sink;
  BinaryOutputStreamFilter filter(sink);
  Warnings warnings;
  filter.Close();
  EXPECT_THAT(warnings.m_messages, ElementsAre("Flush raised the following i/o error:\nthe message"));
}

TEST(BinaryInputStream, OtherExceptionsPassThroughABlock) {
  class Broken : public ByteSource {
   public:
    int Read() override { throw std::runtime_error("broken"); }
    using ByteSource::Read;
  } source;
  EXPECT_THROW(ReadBlock(source, 2), std::runtime_error);
  class OtherError : public ByteSource {
   public:
    int Read() override {
      OXA_RAISE_ERROR("Test", LogicError("no error of reading"));
      return -1;
    }
    using ByteSource::Read;
  } other;
  EXPECT_THROW(ReadBlock(other, 2), LogicError);
}

TEST(BinaryInputStream, SkipsByteByByte) {
  ByteSource source("abcd");
  EXPECT_TRUE(source.Skip(3));
  EXPECT_THAT(source.m_calls, ElementsAre("read", "read", "read"));
  EXPECT_EQ('d', source.Read());
}

TEST(BinaryInputStream, SkipsNothingWithoutTouchingTheSource) {
  ByteSource source;
  EXPECT_TRUE(source.Skip(0));
  EXPECT_THAT(source.m_calls, IsEmpty());
}

TEST(BinaryInputStream, SkipsNotBeyondTheEndNorWithoutData) {
  ByteSource source("ab");
  EXPECT_FALSE(source.Skip(3));
  EXPECT_EQ(3u, source.m_calls.size());
  ByteSource empty("abc");
  empty.m_script = {1, -2};
  EXPECT_FALSE(empty.Skip(3));
  EXPECT_TRUE(empty.Skip(2));
}

TEST(BinaryInputStream, CloseAndLocksDoNothingInTheBase) {
  ByteSource source("a");
  source.BinaryInputStream::Close();
  LockSet locks;
  source.AcquireReadLocks(locks);
  EXPECT_TRUE(locks.empty());
  EXPECT_EQ('a', source.Read());
}

// --- the base class of sinks ---

TEST(BinaryOutputStream, WritesABlockByteByByte) {
  ByteSink sink;
  WriteText(sink, "abc");
  EXPECT_EQ("abc", sink.m_bytes);
  EXPECT_THAT(sink.m_calls, ElementsAre("write", "write", "write"));
}

TEST(BinaryOutputStream, ErrorsPassThroughABlock) {
  ByteSink sink;
  sink.m_bFailWrite = true;
  Warnings warnings;
  EXPECT_THROW(WriteText(sink, "abc"), XIOSystemCallFailure);
  EXPECT_THAT(sink.m_calls, ElementsAre("write"));
  EXPECT_THAT(warnings.m_messages, IsEmpty());
}

TEST(BinaryOutputStream, CloseAndLocksDoNothingInTheBase) {
  ByteSink sink;
  sink.BinaryOutputStream::Close();
  LockSet locks;
  sink.AcquireWriteLocks(locks);
  EXPECT_TRUE(locks.empty());
  EXPECT_THAT(sink.m_calls, IsEmpty());
}

// --- filters that only forward ---

TEST(BinaryInputStreamFilter, ForwardsEverything) {
  MemorySource source("abcdefgh");
  BinaryInputStreamFilter filter(source);
  EXPECT_EQ(8u, filter.AvailableBytes());
  EXPECT_EQ('a', filter.Read());
  EXPECT_EQ("bc", ReadBlock(filter, 2));
  EXPECT_TRUE(filter.Skip(3));
  EXPECT_FALSE(filter.Skip(3));
  filter.Close();
  EXPECT_THAT(source.m_calls, ElementsAre("read", "read 2", "skip 3", "skip 3", "close"));
}

TEST(BinaryInputStreamFilter, GivesWhatTheSourceGives) {
  MemorySource source("abc");
  source.m_script = {-2, -2, 0, iRAISE};
  BinaryInputStreamFilter filter(source);
  EXPECT_EQ(-2, filter.Read());
  long long result = 0;
  ReadBlock(filter, 2, &result);
  EXPECT_EQ(-2, result);
  ReadBlock(filter, 2, &result);
  EXPECT_EQ(0, result);
  EXPECT_THROW(ReadBlock(filter, 2), XIOSystemCallFailure);
  EXPECT_EQ(0, filter.Read(nullptr, -1));
  EXPECT_EQ("read -1", source.m_calls.back());
}

TEST(BinaryOutputStreamFilter, ForwardsEverything) {
  MemorySink sink;
  BinaryOutputStreamFilter filter(sink);
  filter.Write('a');
  WriteText(filter, "bcd");
  filter.Flush();
  EXPECT_EQ("abcd", sink.m_bytes);
  EXPECT_THAT(sink.m_calls, ElementsAre("write", "write 3", "flush"));
}

TEST(BinaryOutputStreamFilter, CloseFlushesDownTheChainAndThenClosesDownTheChain) {
  MemorySink sink;
  BinaryOutputStreamFilter inner(sink);
  BinaryOutputStreamFilter outer(static_cast<BinaryOutputStream&>(inner));
  outer.Close();
  // The flush of the outer one, that of the inner one's own close, and the close of the sink.
  EXPECT_THAT(sink.m_calls, ElementsAre("flush", "flush", "close"));
}

TEST(BinaryOutputStreamFilter, CloseTurnsAnErrorOfTheFlushIntoAWarningAndClosesAllTheSame) {
  MemorySink sink;
  sink.m_bFailFlush = true;
  BinaryOutputStreamFilter filter(sink);
  Warnings warnings;
  filter.Close();
  EXPECT_THAT(warnings.m_messages,
              ElementsAre(std::string("Flush raised the following i/o error:\n") + sRAISED));
  EXPECT_THAT(warnings.m_logNames, ElementsAre("Oxa.Core.BinaryOutputStreamFilter"));
  EXPECT_THAT(sink.m_calls, ElementsAre("flush", "close"));
}

TEST(BinaryOutputStreamFilter, OtherExceptionsOfTheFlushLeaveTheSinkOpen) {
  class Broken : public MemorySink {
   public:
    void Flush() override { throw std::runtime_error("broken"); }
  } sink;
  BinaryOutputStreamFilter filter(sink);
  EXPECT_THROW(filter.Close(), std::runtime_error);
  EXPECT_THAT(sink.m_calls, IsEmpty());
  class OtherError : public MemorySink {
   public:
    void Flush() override { OXA_RAISE_ERROR("Test", LogicError("no error of writing")); }
  } other;
  BinaryOutputStreamFilter otherFilter(other);
  EXPECT_THROW(otherFilter.Close(), LogicError);
  EXPECT_THAT(other.m_calls, IsEmpty());
}

TEST(BinaryOutputStreamFilter, DestructorsNeitherFlushNorClose) {
  MemorySink sink;
  MemorySource source;
  {
    BinaryOutputStreamFilter out(sink);
    BinaryInputStreamFilter in(source);
  }
  EXPECT_THAT(sink.m_calls, IsEmpty());
  EXPECT_THAT(source.m_calls, IsEmpty());
}

// Hosts compiled before and after agree on the order of the virtual operations.
#if defined(__GNUC__) && defined(__x86_64__)

template <class Function>
long SlotOf(Function function) {
  long words[2];
  static_assert(sizeof words == sizeof function);
  std::memcpy(words, &function, sizeof words);
  return (words[0] - 1) / static_cast<long>(sizeof(void*));
}

TEST(SlotOrder, OfSources) {
  // The destructor has the first two.
  EXPECT_EQ(2, SlotOf(&BinaryInputStream::Close));
  EXPECT_EQ(3, SlotOf<long long (BinaryInputStream::*)(void*, long long)>(&BinaryInputStream::Read));
  EXPECT_EQ(4, SlotOf<int (BinaryInputStream::*)()>(&BinaryInputStream::Read));
  EXPECT_EQ(5, SlotOf(&BinaryInputStream::Skip));
  EXPECT_EQ(6, SlotOf(&BinaryInputStream::AvailableBytes));
  EXPECT_EQ(7, SlotOf(&BinaryInputStream::AcquireReadLocks));
}

TEST(SlotOrder, OfSinks) {
  using Block = void (BinaryOutputStream::*)(const void*, unsigned long long);
  EXPECT_EQ(2, SlotOf(&BinaryOutputStream::Close));
  EXPECT_EQ(3, SlotOf<Block>(&BinaryOutputStream::Write));
  EXPECT_EQ(4, SlotOf<void (BinaryOutputStream::*)(unsigned char)>(&BinaryOutputStream::Write));
  EXPECT_EQ(5, SlotOf(&BinaryOutputStream::Flush));
  EXPECT_EQ(6, SlotOf(&BinaryOutputStream::AcquireWriteLocks));
}

TEST(SlotOrder, OfListeners) {
  // Of the base: two of sources, two of the destructor, and the word that a source is gone.
  EXPECT_EQ(5, SlotOf(&BinaryInputStream::Listener::InvalidateBufferedInput));
  EXPECT_EQ(5, SlotOf(&BinaryOutputStream::Listener::FlushBufferedOutput));
}

TEST(SlotOrder, OfFilters) {
  struct Input : BinaryInputStreamFilter {
    static long Slot() { return SlotOf(&Input::DoBufferedInputInvalidation); }
  };
  struct Output : BinaryOutputStreamFilter {
    static long Slot() { return SlotOf(&Output::DoOutputBufferFlush); }
  };
  EXPECT_LT(7, Input::Slot());
  EXPECT_LT(6, Output::Slot());
}

#endif

}  // namespace
