#include <Infrastructure/OxaCore/io/BoundedStreams.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "io/Streams.h"

namespace {

using namespace IoTests;
using testing::ElementsAre;
using testing::IsEmpty;

// Keeps the log name of the error that is raised last.
class LogNameOfError : public AlertListener {
 public:
  LogNameOfError() { AlertManager::Instance()->AddAlertListener(*this); }
  LogNameOfError(const LogNameOfError&) = delete;
  LogNameOfError& operator=(const LogNameOfError&) = delete;
  ~LogNameOfError() override { AlertManager::Instance()->RemoveAlertListener(*this); }
  void ErrorRaised(Error& error) override { m_sName = error.GetData(AlertInfo::sLOG_NAME); }

  std::string m_sName;
};

// --- input ---

TEST(BoundedInput, EndsAtItsLimit) {
  MemorySource source(Alphabet(51));
  BoundedBinaryInputStream bounded(source, 30);
  EXPECT_EQ(30u, bounded.AvailableBytes());
  EXPECT_EQ(Alphabet(20), ReadBlock(bounded, 20));
  EXPECT_EQ(20u, bounded.NumBytesInput());
  EXPECT_EQ(10u, bounded.AvailableBytes());
  long long result = 0;
  EXPECT_EQ(Alphabet(30).substr(20), ReadBlock(bounded, 20, &result));
  EXPECT_EQ(10, result);
  EXPECT_EQ(0u, bounded.AvailableBytes());
  source.m_calls.clear();
  EXPECT_EQ(-1, bounded.Read());
  ReadBlock(bounded, 20, &result);
  EXPECT_EQ(-1, result);
  EXPECT_THAT(source.m_calls, IsEmpty());
  EXPECT_EQ(30u, bounded.NumBytesInput());
  EXPECT_EQ(30u, source.m_uAt);
}

TEST(BoundedInput, CountsSingleBytes) {
  MemorySource source("abc");
  BoundedBinaryInputStream bounded(source, 2);
  EXPECT_EQ('a', bounded.Read());
  EXPECT_EQ('b', bounded.Read());
  EXPECT_EQ(2u, bounded.NumBytesInput());
  EXPECT_EQ(-1, bounded.Read());
  EXPECT_EQ(2u, source.m_uAt);
}

TEST(BoundedInput, CountsNeitherEndNorWantOfData) {
  MemorySource source("a");
  source.m_script = {-2, -2, 0};
  BoundedBinaryInputStream bounded(source, 5);
  EXPECT_EQ(-2, bounded.Read());
  long long result = 0;
  ReadBlock(bounded, 3, &result);
  EXPECT_EQ(-2, result);
  ReadBlock(bounded, 3, &result);
  EXPECT_EQ(0, result);
  EXPECT_EQ('a', bounded.Read());
  EXPECT_EQ(-1, bounded.Read());
  ReadBlock(bounded, 3, &result);
  EXPECT_EQ(-1, result);
  EXPECT_EQ(1u, bounded.NumBytesInput());
}

TEST(BoundedInput, HandsCountsBelowOneToTheSource) {
  MemorySource source("abc");
  BoundedBinaryInputStream bounded(source, 5);
  EXPECT_EQ(0, bounded.Read(nullptr, 0));
  EXPECT_EQ(0, bounded.Read(nullptr, -3));
  EXPECT_THAT(source.m_calls, ElementsAre("read 0", "read -3"));
  BoundedBinaryInputStream nothing(source, 0);
  EXPECT_EQ(-1, nothing.Read(nullptr, 0));
}

TEST(BoundedInput, SkipsWithinTheLimit) {
  MemorySource source(Alphabet(51));
  BoundedBinaryInputStream bounded(source, 30);
  EXPECT_TRUE(bounded.Skip(10));
  EXPECT_EQ(10u, bounded.NumBytesInput());
  EXPECT_TRUE(bounded.Skip(20));
  EXPECT_EQ(30u, bounded.NumBytesInput());
  EXPECT_EQ(30u, source.m_uAt);
}

TEST(BoundedInput, SkipBeyondTheLimitMovesTheSourceAndLeavesTheCount) {
  MemorySource source(Alphabet(51));
  BoundedBinaryInputStream bounded(source, 30);
  ReadBlock(bounded, 10);
  EXPECT_FALSE(bounded.Skip(21));
  EXPECT_EQ("skip 20", source.m_calls.back());
  EXPECT_EQ(30u, source.m_uAt);
  EXPECT_EQ(10u, bounded.NumBytesInput());
  EXPECT_EQ(20u, bounded.AvailableBytes());
}

TEST(BoundedInput, SkipAtTheLimitMovesNothing) {
  MemorySource source(Alphabet(51));
  BoundedBinaryInputStream bounded(source, 0);
  EXPECT_FALSE(bounded.Skip(1));
  EXPECT_THAT(source.m_calls, ElementsAre("skip 0"));
  EXPECT_TRUE(bounded.Skip(0));
  EXPECT_THAT(source.m_calls, ElementsAre("skip 0", "skip 0"));
  EXPECT_EQ(0u, bounded.NumBytesInput());
}

TEST(BoundedInput, SkipCountsBeforeTheSourceFails) {
  MemorySource source(Alphabet(51));
  source.m_script = {iRAISE, iRAISE};
  BoundedBinaryInputStream bounded(source, 30);
  EXPECT_THROW(bounded.Skip(31), XIOSystemCallFailure);
  EXPECT_EQ(0u, bounded.NumBytesInput());
  EXPECT_THROW(bounded.Skip(10), XIOSystemCallFailure);
  EXPECT_EQ(10u, bounded.NumBytesInput());
}

TEST(BoundedInput, CountsNothingOfAReadThatFails) {
  MemorySource source(Alphabet(51));
  source.m_script = {iRAISE, iRAISE};
  BoundedBinaryInputStream bounded(source, 30);
  EXPECT_THROW(bounded.Read(), XIOSystemCallFailure);
  EXPECT_THROW(ReadBlock(bounded, 5), XIOSystemCallFailure);
  EXPECT_EQ(0u, bounded.NumBytesInput());
}

TEST(BoundedInput, SkipCountsEvenWhatTheSourceLacks) {
  MemorySource source("abc");
  BoundedBinaryInputStream bounded(source, 30);
  EXPECT_FALSE(bounded.Skip(10));
  EXPECT_EQ(10u, bounded.NumBytesInput());
}

TEST(BoundedInput, OffersNoMoreThanTheSource) {
  MemorySource source("abc");
  BoundedBinaryInputStream bounded(source, 30);
  EXPECT_EQ(3u, bounded.AvailableBytes());
}

TEST(BoundedInput, TakesTheLargestLimit) {
  MemorySource source("abc");
  BoundedBinaryInputStream bounded(source, ~0ULL);
  EXPECT_EQ("abc", ReadBlock(bounded, 10));
  EXPECT_EQ(3u, bounded.NumBytesInput());
}

TEST(BoundedInput, ClosesTheSource) {
  MemorySource source;
  BoundedBinaryInputStream(source, 3).Close();
  EXPECT_THAT(source.m_calls, ElementsAre("close"));
}

// --- output ---

TEST(BoundedOutput, RefusesTheNextByteAtItsLimit) {
  MemorySink sink;
  BoundedBinaryOutputStream bounded(sink, 30);
  WriteText(bounded, Alphabet(29));
  bounded.Write('!');
  EXPECT_EQ(30u, bounded.NumBytesOutput());
  LogNameOfError logName;
  EXPECT_THROW(bounded.Write('?'), XIOExceededOutputLimit);
  EXPECT_EQ("Oxa.Core.BoundedBinaryOutputStream", logName.m_sName);
  EXPECT_EQ(Alphabet(29) + "!", sink.m_bytes);
  EXPECT_EQ(30u, bounded.NumBytesOutput());
  EXPECT_THAT(sink.m_calls, ElementsAre("write 29", "write"));
}

TEST(BoundedOutput, WritesWhatFitsOfABlockFlushesAndRaises) {
  MemorySink sink;
  BoundedBinaryOutputStream bounded(sink, 30);
  WriteText(bounded, Alphabet(20));
  EXPECT_EQ(20u, bounded.NumBytesOutput());
  LogNameOfError logName;
  EXPECT_THROW(WriteText(bounded, "0123456789ABCDEFGHIJ"), XIOExceededOutputLimit);
  EXPECT_EQ("Oxa.Core.BoundedBinaryOutputStream", logName.m_sName);
  EXPECT_EQ(30u, bounded.NumBytesOutput());
  EXPECT_EQ(Alphabet(20) + "0123456789", sink.m_bytes);
  EXPECT_THAT(sink.m_calls, ElementsAre("write 20", "write 10", "flush"));
}

TEST(BoundedOutput, OnlyFlushesAndRaisesWithNothingLeft) {
  MemorySink sink;
  BoundedBinaryOutputStream bounded(sink, 0);
  EXPECT_THROW(WriteText(bounded, "abc"), XIOExceededOutputLimit);
  EXPECT_THAT(sink.m_calls, ElementsAre("flush"));
}

TEST(BoundedOutput, TakesABlockThatJustFits) {
  MemorySink sink;
  BoundedBinaryOutputStream bounded(sink, 3);
  WriteText(bounded, "abc");
  EXPECT_EQ(3u, bounded.NumBytesOutput());
  EXPECT_THAT(sink.m_calls, ElementsAre("write 3"));
}

TEST(BoundedOutput, AnEmptyBlockDoesNothingEvenAtTheLimit) {
  MemorySink sink;
  BoundedBinaryOutputStream bounded(sink, 0);
  bounded.Write(nullptr, 0);
  EXPECT_THAT(sink.m_calls, IsEmpty());
}

TEST(BoundedOutput, CountsNothingThatTheSinkRefused) {
  MemorySink sink;
  sink.m_bFailWrite = true;
  BoundedBinaryOutputStream bounded(sink, 30);
  EXPECT_THROW(bounded.Write('a'), XIOSystemCallFailure);
  EXPECT_THROW(WriteText(bounded, "abc"), XIOSystemCallFailure);
  EXPECT_EQ(0u, bounded.NumBytesOutput());
}

TEST(BoundedOutput, AnErrorOfTheFlushAtTheLimitTakesThePlaceOfTheLimits) {
  MemorySink sink;
  sink.m_bFailFlush = true;
  BoundedBinaryOutputStream bounded(sink, 3);
  EXPECT_THROW(WriteText(bounded, "abcd"), XIOSystemCallFailure);
  EXPECT_EQ("abc", sink.m_bytes);
  EXPECT_EQ(3u, bounded.NumBytesOutput());
}

TEST(BoundedOutput, TakesTheLargestLimit) {
  MemorySink sink;
  BoundedBinaryOutputStream bounded(sink, ~0ULL);
  WriteText(bounded, "abc");
  EXPECT_EQ(3u, bounded.NumBytesOutput());
}

TEST(BoundedOutput, ForwardsFlushAndClose) {
  MemorySink sink;
  BoundedBinaryOutputStream bounded(sink, 3);
  bounded.Flush();
  bounded.Close();
  EXPECT_THAT(sink.m_calls, ElementsAre("flush", "flush", "close"));
}

}  // namespace
