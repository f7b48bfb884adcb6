#include <Infrastructure/OxaCore/io/Base64Streams.h>

#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/io/BufferedStreams.h>

#include <gtest/gtest.h>

#include <cctype>
#include <memory>
#include <string>
#include <vector>

#include "io/Streams.h"

namespace {

using namespace IoTests;

struct Encoder {
  explicit Encoder(bool newlines = false, int lineLength = 0, const std::string& separator = "")
      : m_pStream(new Base64EncoderStream(m_sink, newlines, lineLength, separator)) {}
  Base64EncoderStream* operator->() { return m_pStream.get(); }

  MemorySink m_sink;
  std::unique_ptr<Base64EncoderStream> m_pStream;
};

std::string Encode(const std::string& plain) {
  Encoder encoder;
  WriteText(*encoder.m_pStream, plain);
  encoder->Flush();
  return encoder.m_sink.m_bytes;
}

std::string Decode(const std::string& encoded) {
  MemorySource source(encoded);
  Base64DecoderStream decoder(source);
  return ReadBlock(decoder, 10000);
}

// What Read() gives, call by call.
std::vector<int> Results(Base64DecoderStream& decoder, int calls) {
  std::vector<int> results;
  while (calls-- > 0) results.push_back(decoder.Read());
  return results;
}

std::vector<int> Results(const std::string& encoded, int calls) {
  MemorySource source(encoded);
  Base64DecoderStream decoder(source);
  return Results(decoder, calls);
}

using Ints = std::vector<int>;

TEST(Base64Encoder, GroupsOfThreeTwoAndOne) {
  EXPECT_EQ("TWFu", Encode("Man"));
  EXPECT_EQ("TWE=", Encode("Ma"));
  EXPECT_EQ("TQ==", Encode("M"));
  EXPECT_EQ("", Encode(""));
}

TEST(Base64Encoder, TestVectorsOfTheStandard) {
  EXPECT_EQ("Zg==", Encode("f"));
  EXPECT_EQ("Zm8=", Encode("fo"));
  EXPECT_EQ("Zm9v", Encode("foo"));
  EXPECT_EQ("Zm9vYg==", Encode("foob"));
  EXPECT_EQ("Zm9vYmE=", Encode("fooba"));
  EXPECT_EQ("Zm9vYmFy", Encode("foobar"));
}

TEST(Base64Encoder, UsesTheWholeAlphabet) {
  std::string plain;
  for (unsigned i = 0; i < 64; i += 4) {
    const unsigned bits = i << 18 | (i + 1) << 12 | (i + 2) << 6 | (i + 3);
    plain += {static_cast<char>(bits >> 16), static_cast<char>(bits >> 8), static_cast<char>(bits)};
  }
  EXPECT_EQ("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/", Encode(plain));
  EXPECT_EQ(plain, Decode(Encode(plain)));
}

TEST(Base64Encoder, WritesEachGroupAsOneBlockAtItsThirdByte) {
  Encoder encoder;
  encoder->Write('M');
  encoder->Write('a');
  EXPECT_EQ(Calls(), encoder.m_sink.m_calls);
  encoder->Write('n');
  EXPECT_EQ(Calls{"write 4"}, encoder.m_sink.m_calls);
  WriteText(*encoder.m_pStream, "1234567");
  EXPECT_EQ((Calls{"write 4", "write 4", "write 4"}), encoder.m_sink.m_calls);
}

TEST(Base64Encoder, BlocksContinueWhatSingleBytesBegan) {
  const std::string plain = Alphabet(60);
  for (std::size_t first = 0; first < 8; ++first)
    for (std::size_t second = 0; second < 8; ++second) {
      Encoder encoder;
      for (std::size_t i = 0; i < first; ++i) encoder->Write(static_cast<unsigned char>(plain[i]));
      WriteText(*encoder.m_pStream, plain.substr(first, second));
      WriteText(*encoder.m_pStream, plain.substr(first + second));
      encoder->Flush();
      EXPECT_EQ(Encode(plain), encoder.m_sink.m_bytes) << first << ", " << second;
    }
}

TEST(Base64Encoder, FlushPassesOnOnlyWithBytesPending) {
  Encoder encoder;
  encoder->Flush();
  EXPECT_EQ(Calls(), encoder.m_sink.m_calls);
  WriteText(*encoder.m_pStream, "Man");
  encoder->Flush();
  EXPECT_EQ(Calls{"write 4"}, encoder.m_sink.m_calls);
  encoder->Write('M');
  encoder->Flush();
  EXPECT_EQ((Calls{"write 4", "write 4", "flush"}), encoder.m_sink.m_calls);
  WriteText(*encoder.m_pStream, "Man");
  EXPECT_EQ("TWFuTQ==TWFu", encoder.m_sink.m_bytes);
}

TEST(Base64Encoder, CloseEncodesCleanlyAndClosesTheSink) {
  Encoder encoder;
  WriteText(*encoder.m_pStream, "\xFF\xFF\xFFM");
  encoder->Close();
  EXPECT_EQ("////TQ==", encoder.m_sink.m_bytes);
  EXPECT_EQ((Calls{"write 4", "write 4", "flush", "close"}), encoder.m_sink.m_calls);
}

TEST(Base64Encoder, SeparatorAfterEveryGroupForALineLengthOf76) {
  Encoder encoder(true, 76, "\r\n");
  WriteText(*encoder.m_pStream, "ManMan");
  EXPECT_EQ("TWFu\r\nTWFu\r\n", encoder.m_sink.m_bytes);
  EXPECT_EQ((Calls{"write 4", "write 2", "write 4", "write 2"}), encoder.m_sink.m_calls);
}

TEST(Base64Encoder, SeparatorFromLineLength4OnAndNeverBelow) {
  for (const int lineLength : {4, 5, 8, 0x7FFFFFFF}) {
    Encoder encoder(true, lineLength, "|");
    WriteText(*encoder.m_pStream, "ManManManM");
    encoder->Flush();
    EXPECT_EQ("TWFu|TWFu|TWFu|TQ==|", encoder.m_sink.m_bytes) << lineLength;
  }
  for (const int lineLength : {3, 1, 0, -1, -0x7FFFFFFF - 1}) {
    Encoder encoder(true, lineLength, "|");
    WriteText(*encoder.m_pStream, "ManManManM");
    encoder->Flush();
    EXPECT_EQ("TWFuTWFuTWFuTQ==", encoder.m_sink.m_bytes) << lineLength;
  }
}

TEST(Base64Encoder, NoSeparatorWithNewlinesOff) {
  Encoder encoder(false, 76, "|");
  WriteText(*encoder.m_pStream, "ManMan");
  EXPECT_EQ("TWFuTWFu", encoder.m_sink.m_bytes);
}

TEST(Base64Encoder, EmptySeparatorIsAWriteOfNothing) {
  Encoder encoder(true, 76, "");
  WriteText(*encoder.m_pStream, "Man");
  EXPECT_EQ((Calls{"write 4", "write 0"}), encoder.m_sink.m_calls);
}

TEST(Base64Encoder, NewlinesCanBeChangedAtAnyTime) {
  Encoder encoder;
  WriteText(*encoder.m_pStream, "Man");
  encoder->InsertNewlines(true, 4, "|");
  WriteText(*encoder.m_pStream, "Man");
  encoder->InsertNewlines(true, 4, "--");
  WriteText(*encoder.m_pStream, "Man");
  encoder->InsertNewlines(false, 4, "--");
  WriteText(*encoder.m_pStream, "Man");
  EXPECT_EQ("TWFuTWFu|TWFu--TWFu", encoder.m_sink.m_bytes);
}

TEST(Base64Encoder, CharactersSinceTheLastSeparatorCountOnWhenTheLineLengthIsRaised) {
  Encoder encoder(true, 3, "|");
  WriteText(*encoder.m_pStream, "ManMan");  // 8 characters
  encoder->InsertNewlines(true, 11, "|");
  WriteText(*encoder.m_pStream, "Man");  // 12 are above it
  encoder->InsertNewlines(true, 16, "|");
  WriteText(*encoder.m_pStream, "Man");  // 16 aren't
  EXPECT_EQ("TWFuTWFuTWFuTWFu|", encoder.m_sink.m_bytes);
}

TEST(Base64Encoder, DestroyedWithABytePendingEncodesTheBitsOfTheGroupBefore) {
  Encoder encoder;
  WriteText(*encoder.m_pStream, "\xFF\xFF\xFFM");
  encoder.m_pStream.reset();
  EXPECT_EQ("////Tf==", encoder.m_sink.m_bytes);  // and not TQ==
  EXPECT_EQ((Calls{"write 4", "write 4"}), encoder.m_sink.m_calls);
}

TEST(Base64Encoder, DestroyedWithTwoBytesPendingToo) {
  Encoder encoder;
  WriteText(*encoder.m_pStream, "\xFF\xFF\xFFMa");
  encoder.m_pStream.reset();
  EXPECT_EQ("////TWH=", encoder.m_sink.m_bytes);  // and not TWE=
}

TEST(Base64Encoder, FirstGroupOfAllHasNoStaleBits) {
  Encoder encoder;
  encoder->Write('M');
  encoder.m_pStream.reset();
  EXPECT_EQ("TQ==", encoder.m_sink.m_bytes);
}

TEST(Base64Encoder, DestroyedWithABytePendingSeparatesItToo) {
  Encoder encoder(true, 4, "|");
  WriteText(*encoder.m_pStream, "ManM");
  encoder.m_pStream.reset();
  EXPECT_EQ("TWFu|TW==|", encoder.m_sink.m_bytes);
}

TEST(Base64Encoder, DestroyedWithNothingPendingWritesNothing) {
  Encoder encoder;
  WriteText(*encoder.m_pStream, "Man");
  encoder.m_pStream.reset();
  EXPECT_EQ(Calls{"write 4"}, encoder.m_sink.m_calls);
}

TEST(Base64Encoder, DestructorKeepsErrorsOfTheSinkToItself) {
  Encoder encoder;
  encoder->Write('M');
  encoder.m_sink.m_bFailWrite = true;
  EXPECT_NO_THROW(encoder.m_pStream.reset());
  EXPECT_EQ(Calls{"write 4"}, encoder.m_sink.m_calls);
}

TEST(Base64Encoder, GroupThatTheSinkRefusesIsLost) {
  Encoder encoder;
  encoder.m_sink.m_bFailWrite = true;
  EXPECT_THROW(WriteText(*encoder.m_pStream, "abcdef"), XIOSystemCallFailure);
  EXPECT_EQ(Calls{"write 4"}, encoder.m_sink.m_calls);
  encoder.m_sink.m_bFailWrite = false;
  WriteText(*encoder.m_pStream, "Man");
  EXPECT_EQ("TWFu", encoder.m_sink.m_bytes);
}

// Takes groups, and separators only if it is told to.
class SinkOfGroups : public MemorySink {
 public:
  using MemorySink::Write;
  void Write(const void* buffer, unsigned long long count) override {
    m_bFailWrite = count != 4 && m_bRefuse;
    MemorySink::Write(buffer, count);
  }
  bool m_bRefuse = true;
};

TEST(Base64Encoder, CharactersBeforeARefusedSeparatorStayCounted) {
  SinkOfGroups sink;
  Base64EncoderStream encoder(sink, true, 4, "|");
  EXPECT_THROW(WriteText(encoder, "Man"), XIOSystemCallFailure);
  sink.m_bRefuse = false;
  WriteText(encoder, "Man");  // 8 are above the line length
  EXPECT_EQ("TWFuTWFu", sink.m_bytes);
}

#ifdef OXACORE_SOAK

class NoSink : public BinaryOutputStream {
 public:
  using BinaryOutputStream::Write;
  void Write(unsigned char) override { ADD_FAILURE(); }
  void Write(const void*, unsigned long long count) override { m_bOnlyGroups = m_bOnlyGroups && count == 4; }
  void Flush() override {}
  bool m_bOnlyGroups = true;
};

TEST(Base64Encoder, CountOfCharactersHasNoOverflow) {
  NoSink sink;
  Base64EncoderStream encoder(sink, true, 3, "|");
  const std::string block(3 << 20, 'x');
  for (int times = 0; times < 520; ++times) WriteText(encoder, block);  // 4 MiB of characters each
  EXPECT_TRUE(sink.m_bOnlyGroups);
}

#endif

TEST(Base64Encoder, CloseTurnsAnErrorOfTheFlushIntoAWarning) {
  Encoder encoder;
  encoder->Write('M');
  encoder.m_sink.m_bFailFlush = true;
  Warnings warnings;
  encoder->Close();
  EXPECT_EQ(std::vector<std::string>{std::string("Flush raised the following i/o error:\n") + sRAISED},
            warnings.m_messages);
  EXPECT_EQ((Calls{"write 4", "flush", "close"}), encoder.m_sink.m_calls);
}

// Sees each byte of a block, since that is written byte by byte.
class CountingEncoder : public Base64EncoderStream {
 public:
  using Base64EncoderStream::Base64EncoderStream;
  using Base64EncoderStream::Write;
  void Write(unsigned char byte) override {
    ++m_iBytes;
    Base64EncoderStream::Write(byte);
  }
  int m_iBytes = 0;
};

TEST(Base64Encoder, DerivedOneSeesEachByteOfABlock) {
  MemorySink sink;
  CountingEncoder encoder(sink, false, 0, "");
  WriteText(encoder, "ManManM");
  EXPECT_EQ(7, encoder.m_iBytes);
  EXPECT_EQ("TWFuTWFu", sink.m_bytes);
}

TEST(Base64Decoder, GroupsOfThreeTwoAndOne) {
  EXPECT_EQ((Ints{77, 97, 110, -1}), Results("TWFu", 4));
  EXPECT_EQ((Ints{77, 97, -1}), Results("TWE=", 3));
  EXPECT_EQ((Ints{77, -1}), Results("TQ==", 2));
  EXPECT_EQ((Ints{-1, -1}), Results("", 2));
}

TEST(Base64Decoder, PadsMayBeMissingAtTheEnd) {
  EXPECT_EQ((Ints{77, -1}), Results("TQ", 2));
  EXPECT_EQ((Ints{77, 97, -1}), Results("TWE", 3));
  EXPECT_EQ((Ints{76, -1}), Results("T", 2));
}

TEST(Base64Decoder, PadsCountAsZerosWhereverTheyStand) {
  EXPECT_EQ((Ints{0, 197, -1}), Results("=MXU", 3));  // two of the three bytes 0, 197, 212
  EXPECT_EQ((Ints{76, 1, -1}), Results("T=Fu", 3));
  EXPECT_EQ((Ints{76, -1}), Results("T==u", 2));
  EXPECT_EQ((Ints{0, -1}), Results("===u", 2));
}

TEST(Base64Decoder, GroupOfPadsReadsAsAnEndAndMoreMayFollow) {
  EXPECT_EQ((Ints{-1, 77, 97, 110, -1}), Results("====TWFu", 5));
  MemorySource source("TWFu====TWFu");
  Base64DecoderStream decoder(source);
  EXPECT_EQ("Man", ReadBlock(decoder, 100));
  EXPECT_EQ(4U, source.AvailableBytes());
  EXPECT_EQ("Man", ReadBlock(decoder, 100));
}

TEST(Base64Decoder, SkipsWhatIsOutsideTheAlphabet) {
  EXPECT_EQ("ManMan", Decode("TW\r\nFu\r\nT W\tF\vu\r\n"));
  std::string odd;
  for (int byte = 0; byte < 255; ++byte)
    if (std::isalnum(byte) == 0 && byte != '+' && byte != '/' && byte != '=') odd += static_cast<char>(byte);
  EXPECT_EQ(190U, odd.size());
  EXPECT_EQ("Man", Decode("T" + odd + "WF" + odd + "u" + odd));
}

TEST(Base64Decoder, Byte255CountsAsTheLetterA) {
  EXPECT_EQ(std::string(3, '\0'), Decode("AAAA"));
  EXPECT_EQ(std::string(3, '\0'), Decode("\xFF\xFF\xFF\xFF"));
  EXPECT_EQ(Decode("TAFu"), Decode("T\xFF"
                                   "Fu"));
}

TEST(Base64Decoder, BitsBesideAPadDontMatter) { EXPECT_EQ("M", Decode("TX==")); }

TEST(Base64Decoder, ReadsSingleBytesAndNotMoreThanItNeeds) {
  MemorySource source("TWFuTWFu");
  Base64DecoderStream decoder(source);
  EXPECT_EQ("Ma", ReadBlock(decoder, 2));
  EXPECT_EQ((Calls{"read", "read", "read", "read"}), source.m_calls);
  EXPECT_EQ('n', decoder.Read());
  EXPECT_EQ(4U, source.AvailableBytes());
  EXPECT_EQ("M", ReadBlock(decoder, 1));
  EXPECT_EQ(0U, source.AvailableBytes());
}

TEST(Base64Decoder, LineEndBehindTheLastGroupIsLeftAlone) {
  MemorySource source("TWFu\r\nTWFu\r\n");
  Base64DecoderStream decoder(source);
  EXPECT_EQ("ManMan", ReadBlock(decoder, 6));
  EXPECT_EQ(2U, source.AvailableBytes());
}

TEST(Base64Decoder, LineEndBehindTheLastGroupIsLeftInTheBufferToo) {
  MemorySource source("TWFuTWFuTWFuTWFuTWFuTWFu\r\nTWFu");
  BufferedBinaryInputStream buffered(source, 100);
  Base64DecoderStream decoder(buffered);
  EXPECT_EQ("M", ReadBlock(decoder, 1));  // which fills the buffer
  EXPECT_EQ("anManManManManMan", ReadBlock(decoder, 17));
  EXPECT_EQ(6U, buffered.AvailableBytes());
  EXPECT_EQ('\r', buffered.Read());
}

TEST(Base64Decoder, BlockOfNoneIs0AndTouchesNothing) {
  MemorySource source("TWFu");
  Base64DecoderStream decoder(source);
  for (const long long count : {0LL, -1LL}) {
    long long result = 7;
    EXPECT_EQ("", ReadBlock(decoder, count, &result));
    EXPECT_EQ(0, result);
  }
  EXPECT_EQ(Calls(), source.m_calls);
}

TEST(Base64Decoder, BlocksOfAnySizeGiveTheSameBytes) {
  const std::string plain = Alphabet(100);
  const std::string encoded = Encode(plain);
  for (long long size = 1; size < 12; ++size) {
    MemorySource source(encoded);
    Base64DecoderStream decoder(source);
    std::string decoded;
    long long result = 0;
    for (std::string block = ReadBlock(decoder, size, &result); result > 0;
         block = ReadBlock(decoder, size, &result))
      decoded += block;
    EXPECT_EQ(-1, result);
    EXPECT_EQ(plain, decoded) << size;
  }
}

TEST(Base64Decoder, NoDataNowReadsAsAnEndAndBreaksTheGroup) {
  MemorySource source("TWFuTWFu");
  source.m_script = {1, 1, -2, 1, 1, 1, 1, -2};
  Base64DecoderStream decoder(source);
  EXPECT_EQ((Ints{77, 22}), Results(decoder, 2));  // TW, and then FuTW
}

TEST(Base64Decoder, ErrorOfTheSourcePassesFromASingleReadAndLosesTheGroup) {
  MemorySource source("TWTWFu");
  source.m_script = {1, 1, iRAISE};
  Base64DecoderStream decoder(source);
  EXPECT_THROW(decoder.Read(), XIOSystemCallFailure);
  EXPECT_EQ("Man", ReadBlock(decoder, 3));
}

TEST(Base64Decoder, ErrorOfTheSourceEndsABlockWithAWarning) {
  MemorySource source("TWFuTWFu");
  source.m_script = {1, 1, 1, 1, 1, iRAISE};
  Base64DecoderStream decoder(source);
  Warnings warnings;
  EXPECT_EQ("Man", ReadBlock(decoder, 6));
  EXPECT_EQ(std::vector<std::string>{std::string("Read of 6 bytes ended after 3 bytes read due to error:\n") +
                                     sRAISED},
            warnings.m_messages);
  EXPECT_EQ(std::vector<std::string>{"Oxa.Core.BinaryInputStream"}, warnings.m_logNames);
}

TEST(Base64Decoder, ErrorOfTheSourceAtOnceIsABlockOfNone) {
  MemorySource source("TWFu");
  source.m_script = {iRAISE};
  Base64DecoderStream decoder(source);
  Warnings warnings;
  long long result = 7;
  EXPECT_EQ("", ReadBlock(decoder, 6, &result));
  EXPECT_EQ(0, result);
  EXPECT_EQ(1U, warnings.m_messages.size());
}

class BrokenSource : public ByteSource {
 public:
  using ByteSource::ByteSource;
  using ByteSource::Read;
  int Read() override {
    if (m_uAt == m_bytes.size()) OXA_RAISE_ERROR("Test.Streams", AllocationFailed("nothing"));
    return ByteSource::Read();
  }
};

TEST(Base64Decoder, OtherErrorsOfTheSourcePassFromABlock) {
  BrokenSource source("TWFu");
  Base64DecoderStream decoder(source);
  const Warnings warnings;
  EXPECT_THROW(ReadBlock(decoder, 6), AllocationFailed);
  EXPECT_EQ(Calls(), warnings.m_messages);
}

TEST(Base64Decoder, AvailableBytesIsAnEstimate) {
  MemorySource source("TWFuTW\r\n==");
  Base64DecoderStream decoder(source);
  EXPECT_EQ(7U, decoder.AvailableBytes());  // 10 * 3 / 4
  decoder.Read();
  EXPECT_EQ(4U + 2U, decoder.AvailableBytes());
  ReadBlock(decoder, 100);
  EXPECT_EQ(0U, decoder.AvailableBytes());
}

class EndlessSource : public ByteSource {
 public:
  unsigned long long AvailableBytes() override { return ~0ULL; }
};

TEST(Base64Decoder, EstimateOfAnEndlessSourceIsThreeQuarters) {
  EndlessSource source;
  Base64DecoderStream decoder(source);
  EXPECT_EQ(0xBFFFFFFFFFFFFFFFULL, decoder.AvailableBytes());
}

TEST(Base64Decoder, InvalidationDropsWhatIsDecoded) {
  MemorySource source("TWFuMTIz");
  Base64DecoderStream decoder(source);
  EXPECT_EQ('M', decoder.Read());
  LockSet locks;
  source.InvalidateAllBufferedInput(locks);
  EXPECT_TRUE(locks.empty());
  EXPECT_EQ("123", ReadBlock(decoder, 100));
}

TEST(Base64Decoder, SkipForwardsToTheSource) {
  MemorySource source("TWFuMTIz");
  Base64DecoderStream decoder(source);
  EXPECT_TRUE(decoder.Skip(4));
  EXPECT_EQ(Calls{"skip 4"}, source.m_calls);
  EXPECT_EQ("123", ReadBlock(decoder, 100));
}

class CountingDecoder : public Base64DecoderStream {
 public:
  using Base64DecoderStream::Base64DecoderStream;
  using Base64DecoderStream::Read;
  int Read() override {
    ++m_iReads;
    return Base64DecoderStream::Read();
  }
  int m_iReads = 0;
};

TEST(Base64Decoder, DerivedOneIsAskedForEachByteOfABlock) {
  MemorySource source("TWFuTWFu");
  CountingDecoder decoder(source);
  EXPECT_EQ("ManM", ReadBlock(decoder, 4));
  EXPECT_EQ(4, decoder.m_iReads);
}

// With one byte at a time as the yardstick: blocks of all sizes, over a buffered source and sink of all sizes.
TEST(Base64, ThroughBufferedStreamsOfAnySize) {
  const std::string plain = Alphabet(200);
  for (unsigned long long buffer = 1; buffer < 20; ++buffer) {
    MemorySink sink;
    BufferedBinaryOutputStream bufferedSink(sink, buffer);
    Base64EncoderStream encoder(bufferedSink, true, 76, "\r\n");
    WriteText(encoder, plain);
    encoder.Close();
    MemorySource source(sink.m_bytes);
    BufferedBinaryInputStream bufferedSource(source, buffer);
    Base64DecoderStream decoder(bufferedSource);
    EXPECT_EQ(plain, ReadBlock(decoder, 1000)) << buffer;
  }
}

}  // namespace
