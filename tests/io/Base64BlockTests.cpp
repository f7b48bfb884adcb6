// Blocks of Base64 have roads of their own: over any stream, and over our buffered ones. Nobody may see a difference
// to single bytes, whatever the stream below does: not in the bytes, the errors and warnings, nor in the calls that
// the stream beneath all of them gets. Classes derived from ours go the long way, and so they are the yardstick.
#include <Infrastructure/OxaCore/io/Base64Streams.h>
#include <Infrastructure/OxaCore/io/BufferedStreams.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <deque>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "Support/Together.h"
#include "io/Streams.h"

namespace {

using namespace IoTests;

#ifdef OXACORE_SOAK
constexpr unsigned uROUNDS = 100000;
#else
constexpr unsigned uROUNDS = 1500;
#endif

template <class Stream>
class Derived : public Stream {
 public:
  using Stream::Stream;
};

class Dice {
 public:
  explicit Dice(unsigned seed) : m_engine(seed) {}
  unsigned operator()(unsigned sides) { return static_cast<unsigned>(m_engine() % sides); }

 private:
  std::minstd_rand m_engine;
};

// Mostly the alphabet, with all that can stand between.
std::string RandomEncoded(Dice& dice) {
  static const std::string s_letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  static const std::string s_odd = "=====\r\n\r\n -_\xFF\xFE";
  std::string encoded;
  const unsigned oddities = 2 + dice(60);
  for (unsigned length = dice(120); length > 0; --length) {
    const bool odd = dice(oddities) == 0;
    encoded += odd ? s_odd[dice(static_cast<unsigned>(s_odd.size()))] : s_letters[dice(64)];
    if (odd && dice(10) == 0) encoded += "====";
  }
  return encoded;
}

std::deque<int> RandomAnswers(Dice& dice) {
  static const int s_answers[] = {-2, -1, iRAISE, 0, 1, 2, 3, 50};
  std::deque<int> answers;
  if (dice(3) == 0) return answers;
  for (unsigned count = dice(30); count > 0; --count)
    answers.push_back(dice(4) == 0 ? s_answers[dice(8)] : 7);
  return answers;
}

// What somebody sees who reads: the answers, the bytes, the errors.
template <class Decoder>
std::string SeenByReader(BinaryInputStream& below, Dice dice) {
  Decoder decoder(below);
  std::string seen;
  for (int operation = 0; operation < 8; ++operation) {
    try {
      long long result = 0;
      switch (dice(5)) {
        case 0:
          seen += std::to_string(decoder.Read());
          break;
        case 1:
          seen += std::to_string(decoder.AvailableBytes());
          break;
        default:
          seen += ReadBlock(decoder, dice(60), &result);
          seen += std::to_string(result);
      }
    } catch (XIOSystemCallFailure&) {
      seen += "raised";
    }
    seen += ';';
  }
  return seen;
}

// Decodes by the letter of the rule, one character after the other.
class PlainDecoder : public BinaryInputStream {
 public:
  using BinaryInputStream::Read;

  explicit PlainDecoder(BinaryInputStream& source) : m_source(source) {}

  int Read() override {
    if (m_decoded.empty()) DecodeGroup();
    if (m_decoded.empty()) return -1;
    const int byte = m_decoded.front();
    m_decoded.pop_front();
    return byte;
  }
  unsigned long long AvailableBytes() override {
    return m_source.AvailableBytes() * 3 / 4 + m_decoded.size();
  }

 private:
  void DecodeGroup() {
    static const std::string s_alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";
    std::vector<std::size_t> group;
    int valid = 0;
    while (group.size() != 4) {
      const int character = m_source.Read();
      if (character < 0) break;
      const std::size_t value = character == 255 ? 0 : s_alphabet.find(static_cast<char>(character));
      if (value == std::string::npos) continue;
      if (value != 64) ++valid;
      group.push_back(value % 64);
    }
    group.resize(4);
    if (valid > 0) m_decoded.push_back(static_cast<unsigned char>(group[0] << 2 | group[1] >> 4));
    if (valid > 2) m_decoded.push_back(static_cast<unsigned char>(group[1] << 4 | group[2] >> 2));
    if (valid > 3) m_decoded.push_back(static_cast<unsigned char>(group[2] << 6 | group[3]));
  }

  BinaryInputStream& m_source;
  std::deque<unsigned char> m_decoded;
};

// All that comes of a reading, as texts.
template <class Decoder, class Buffered>
Calls Read(unsigned round) {
  Dice dice(round);
  MemorySource source(RandomEncoded(dice));
  source.m_script = RandomAnswers(dice);
  const Warnings warnings;
  Calls outcome;
  if constexpr (std::is_void_v<Buffered>) {
    outcome.push_back(SeenByReader<Decoder>(source, dice));
  } else {
    Buffered buffered(source, 1 + dice(40));
    outcome.push_back(SeenByReader<Decoder>(buffered, dice));
    outcome.push_back(std::to_string(buffered.AvailableBytes()));
  }
  for (const Calls& calls : {source.m_calls, warnings.m_messages, warnings.m_logNames})
    outcome.insert(outcome.end(), calls.begin(), calls.end());
  return outcome;
}

TEST(Base64Blocks, BlocksAndBytesAreDecodedByTheRule) {
  for (unsigned round = 1; round <= uROUNDS; ++round)
    ASSERT_EQ((Read<PlainDecoder, void>(round)), (Read<Base64DecoderStream, void>(round))) << round;
}

TEST(Base64Blocks, DecodedAreLikeSingleBytes) {
  for (unsigned round = 1; round <= uROUNDS; ++round)
    ASSERT_EQ((Read<Derived<Base64DecoderStream>, void>(round)), (Read<Base64DecoderStream, void>(round)))
        << round;
}

TEST(Base64Blocks, DecodedFromABufferedStreamAreLikeSingleBytes) {
  for (unsigned round = 1; round <= uROUNDS; ++round)
    ASSERT_EQ((Read<Derived<Base64DecoderStream>, Derived<BufferedBinaryInputStream>>(round)),
              (Read<Base64DecoderStream, BufferedBinaryInputStream>(round)))
        << round;
}

std::string RandomPlain(Dice& dice) {
  std::string plain(dice(80), '\0');
  for (char& byte : plain) byte = static_cast<char>(dice(256));
  return plain;
}

// What somebody sees who writes, and then what the sink got.
template <class Encoder>
void Operate(Encoder& encoder, MemorySink& sink, Dice& dice) {
  sink.m_bFailWrite = dice(10) == 0;
  switch (dice(10)) {
    case 0:
      return encoder.Write(static_cast<unsigned char>(dice(256)));
    case 1:
      return encoder.Flush();
    case 2:
      return encoder.InsertNewlines(dice(2) == 0, static_cast<int>(dice(12)), std::string(dice(3), '|'));
    default:
      return WriteText(encoder, RandomPlain(dice));
  }
}

template <class Encoder>
Calls SeenByWriter(BinaryOutputStream& below, MemorySink& sink, Dice& dice) {
  Calls seen;
  {
    Encoder encoder(below, dice(3) == 0, 76, "\r\n");
    for (int operation = 0; operation < 8; ++operation) {
      Dice own(dice(1000000));
      try {
        Operate(encoder, sink, own);
      } catch (XIOSystemCallFailure&) {
        seen.push_back("raised");
      }
      seen.push_back(sink.m_bytes);
    }
  }
  return seen;
}

template <class Encoder, class Buffered>
Calls Write(unsigned round) {
  Dice dice(round);
  MemorySink sink;
  Calls seen;
  if constexpr (std::is_void_v<Buffered>) {
    seen = SeenByWriter<Encoder>(sink, sink, dice);
  } else {
    Buffered buffered(sink, 1 + dice(40));
    seen = SeenByWriter<Encoder>(buffered, sink, dice);
    sink.m_bFailWrite = false;
    buffered.Flush();
  }
  seen.push_back(sink.m_bytes);
  seen.insert(seen.end(), sink.m_calls.begin(), sink.m_calls.end());
  return seen;
}

TEST(Base64Blocks, EncodedAreLikeSingleBytes) {
  for (unsigned round = 1; round <= uROUNDS; ++round)
    ASSERT_EQ((Write<Derived<Base64EncoderStream>, void>(round)), (Write<Base64EncoderStream, void>(round)))
        << round;
}

TEST(Base64Blocks, EncodedToABufferedStreamAreLikeSingleBytes) {
  for (unsigned round = 1; round <= uROUNDS; ++round)
    ASSERT_EQ((Write<Derived<Base64EncoderStream>, Derived<BufferedBinaryOutputStream>>(round)),
              (Write<Base64EncoderStream, BufferedBinaryOutputStream>(round)))
        << round;
}

// --- Buffered streams of others

class CountingSink : public BufferedBinaryOutputStream {
 public:
  using BufferedBinaryOutputStream::BufferedBinaryOutputStream;
  using BufferedBinaryOutputStream::Write;
  void Write(const void* buffer, unsigned long long count) override {
    m_counts.push_back(count);
    BufferedBinaryOutputStream::Write(buffer, count);
  }
  std::vector<unsigned long long> m_counts;
};

TEST(Base64Blocks, BufferedStreamOfADerivedClassSeesEachGroup) {
  MemorySink sink;
  CountingSink counting(sink, 512);
  Base64EncoderStream encoder(counting, false, 0, "");
  WriteText(encoder, Alphabet(60));
  EXPECT_EQ(std::vector<unsigned long long>(20, 4), counting.m_counts);
}

class CountingSource : public BufferedBinaryInputStream {
 public:
  using BufferedBinaryInputStream::BufferedBinaryInputStream;
  using BufferedBinaryInputStream::Read;
  int Read() override {
    ++m_iReads;
    return BufferedBinaryInputStream::Read();
  }
  int m_iReads = 0;
};

TEST(Base64Blocks, BufferedStreamOfADerivedClassIsAskedForEachCharacter) {
  MemorySource source(std::string(80, 'A'));
  CountingSource counting(source, 512);
  Base64DecoderStream decoder(counting);
  EXPECT_EQ(std::string(60, '\0'), ReadBlock(decoder, 60));
  EXPECT_EQ(80, counting.m_iReads);
}

// The other thread writes what can be told from all that an encoder does.
TEST(Base64Blocks, AnotherThreadMayWriteToTheSameBufferedStream) {
  constexpr int strangers = 100000;
  int blocks = 0;
  std::atomic<bool> end{false};
  MemorySink sink;
  BufferedBinaryOutputStream buffered(sink, 512);
  TestSupport::Together(2, [&](int index) {
    Base64EncoderStream encoder(buffered, false, 0, "");
    for (; index == 0 && !end; ++blocks) WriteText(encoder, std::string(30, '\0'));
    for (int stranger = 0; index != 0 && stranger < strangers; ++stranger) buffered.Write('.');
    end = true;
  });
  buffered.Flush();
  EXPECT_EQ(strangers, std::count(sink.m_bytes.begin(), sink.m_bytes.end(), '.'));
  EXPECT_EQ(blocks * 40, std::count(sink.m_bytes.begin(), sink.m_bytes.end(), 'A'));
  EXPECT_EQ(static_cast<std::size_t>(blocks * 40 + strangers), sink.m_bytes.size());
}

// Bytes that so many characters become.
std::size_t DecodedSize(std::size_t characters) {
  const std::size_t rest = characters % 4;
  return characters / 4 * 3 + (rest < 2 ? rest : rest - 1);
}

TEST(Base64Blocks, AnotherThreadMayReadFromTheSameBufferedStream) {
  constexpr std::size_t characters = 400000;
  MemorySource source(std::string(characters, 'A'));
  BufferedBinaryInputStream buffered(source, 512);
  std::size_t decoded = 0;
  std::size_t taken = 0;
  TestSupport::Together(2, [&](int index) {
    Base64DecoderStream decoder(buffered);
    if (index != 0)
      while (buffered.Read() >= 0) ++taken;
    else
      for (std::string block = ReadBlock(decoder, 30); !block.empty(); block = ReadBlock(decoder, 30))
        decoded += block.size();
  });
  EXPECT_EQ(DecodedSize(characters - taken), decoded);
}

}  // namespace
