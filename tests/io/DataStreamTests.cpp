#include <Infrastructure/OxaCore/io/DataStreams.h>

#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/io/BinaryFileStream.h>
#include <Infrastructure/OxaCore/io/BufferedStreams.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>

#include "Support/TemporaryFolder.h"
#include "io/Streams.h"

namespace {

using namespace IoTests;

template <std::size_t Size>
std::string Bytes(const char (&literal)[Size]) {
  return std::string(literal, Size - 1);
}

template <class T>
std::string Written(const T& value, Calls* calls = nullptr) {
  MemorySink sink;
  DataOutputStream out(sink);
  EXPECT_EQ(&out, &(out << value));
  if (calls != nullptr) *calls = sink.m_calls;
  return sink.m_bytes;
}

template <class T>
T Read(const std::string& bytes, T before, Calls* calls = nullptr) {
  MemorySource source(bytes);
  DataInputStream in(source);
  EXPECT_EQ(&in, &(in >> before));
  if (calls != nullptr) *calls = source.m_calls;
  return before;
}

// Both ways: the bytes of the value, in one call of the stream below, and the value of the bytes.
template <class T>
void ExpectOnStream(T value, const std::string& bytes, const char* write, const char* read) {
  Calls calls;
  EXPECT_EQ(bytes, Written(value, &calls));
  EXPECT_EQ(Calls{write}, calls);
  EXPECT_EQ(value, Read(bytes, T(), &calls));
  EXPECT_EQ(Calls{read}, calls);
}

TEST(DataStreams, CharsAreOneByteByTheSingleByteOperations) {
  ExpectOnStream<char>('A', "A", "write", "read");
  ExpectOnStream<signed char>(-2, "\xFE", "write", "read");
  ExpectOnStream<unsigned char>(0xFE, "\xFE", "write", "read");
}

TEST(DataStreams, BoolIsOneByteByBlocksOfOne) {
  ExpectOnStream<bool>(true, "\x01", "write 1", "read 1");
  ExpectOnStream<bool>(false, Bytes("\0"), "write 1", "read 1");
  EXPECT_TRUE(Read<bool>("\x02", false));
  EXPECT_TRUE(Read<bool>("\x80", false));
}

TEST(DataStreams, ShortsAreTwoBytesLowFirst) {
  ExpectOnStream<short>(-16, "\xF0\xFF", "write 2", "read 2");
  ExpectOnStream<unsigned short>(0xFFF0, "\xF0\xFF", "write 2", "read 2");
}

TEST(DataStreams, IntsAreFourBytesLowFirst) {
  ExpectOnStream<int>(-32, "\xE0\xFF\xFF\xFF", "write 4", "read 4");
  ExpectOnStream<unsigned int>(0x04030201, "\x01\x02\x03\x04", "write 4", "read 4");
}

TEST(DataStreams, LongsAreFourBytesWithTheirSign) {
  ExpectOnStream<long>(-32, "\xE0\xFF\xFF\xFF", "write 4", "read 4");
  ExpectOnStream<long>(0x7FFFFFFF, "\xFF\xFF\xFF\x7F", "write 4", "read 4");
  ExpectOnStream<long>(-0x7FFFFFFFL - 1, Bytes("\0\0\0\x80"), "write 4", "read 4");
  ExpectOnStream<unsigned long>(0xFFFFFFFF, "\xFF\xFF\xFF\xFF", "write 4", "read 4");
}

TEST(DataStreams, LongLongsAreEightBytesLowFirst) {
  ExpectOnStream<unsigned long long>(64, Bytes("\x40\0\0\0\0\0\0\0"), "write 8", "read 8");
  ExpectOnStream<long long>(-2, "\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF", "write 8", "read 8");
}

TEST(DataStreams, FloatsAreIeee754LowFirst) {
  ExpectOnStream<float>(1.0F, Bytes("\0\0\x80\x3F"), "write 4", "read 4");
  ExpectOnStream<double>(2.0, Bytes("\0\0\0\0\0\0\0\x40"), "write 8", "read 8");
}

#if LONG_MAX > 0x7FFFFFFF

template <class T>
void ExpectRefused(T value, const std::string& text) {
  MemorySink sink;
  DataOutputStream out(sink);
  try {
    out << value;
    FAIL() << text << " was written";
  } catch (InvalidParameter& error) {
    EXPECT_EQ("Invalid Parameter: value = " + text, std::string(error.what()));
    EXPECT_EQ("Oxa.Core.DataOutputStream", error.GetData(AlertInfo::sLOG_NAME));
  }
  EXPECT_EQ(Calls(), sink.m_calls);
}

TEST(DataStreams, LongThatFourBytesCantHoldIsRefused) {
  ExpectRefused(0x80000000L, "2147483648");
  ExpectRefused(-0x80000001L, "-2147483649");
  ExpectRefused(LONG_MIN, std::to_string(LONG_MIN));
  ExpectRefused(0x100000000UL, "4294967296");
  ExpectRefused(ULONG_MAX, std::to_string(ULONG_MAX));
}

TEST(DataStreams, LongBeyondFourBytesSurvivesTheEndOfTheStream) {
  EXPECT_EQ(0x123456789AL, Read<long>("", 0x123456789AL));
  EXPECT_EQ(0x123456789AUL, Read<unsigned long>("", 0x123456789AUL));
  EXPECT_EQ(0x56780201L, Read<long>("\x01\x02", 0x1256789ABCL));
}

#endif

template <class T, class = void>
constexpr bool bWRITABLE = false;
template <class T>
constexpr bool bWRITABLE<T, std::void_t<decltype(std::declval<DataOutputStream&>() << std::declval<T>())>> =
    true;

// They would go out as a bool.
TEST(DataStreams, PointersAndLiteralsAreNoValues) {
  EXPECT_TRUE(bWRITABLE<int>);
  EXPECT_TRUE(bWRITABLE<std::string>);
  EXPECT_FALSE(bWRITABLE<const char*>);
  EXPECT_FALSE(bWRITABLE<const wchar_t*>);
  EXPECT_FALSE(bWRITABLE<int*>);
}

template <class T>
void ExpectEndOfStream(int answer) {
  MemorySource source;
  source.m_script = {answer};
  DataInputStream in(source);
  T value = 'x';
  try {
    in >> value;
    FAIL() << "no error";
  } catch (XIOEndOfStream& error) {
    EXPECT_STREQ("Hit end-of-stream after reading 0 bytes of a 1 byte read", error.what());
    EXPECT_EQ("Oxa.Core.DataInputStream", error.GetData(AlertInfo::sLOG_NAME));
  }
  EXPECT_EQ('x', value);
  EXPECT_EQ(Calls{"read"}, source.m_calls);
}

TEST(DataStreams, CharsTellOfTheEndOfTheStream) {
  for (const int answer : {-1, -2}) {
    ExpectEndOfStream<char>(answer);
    ExpectEndOfStream<signed char>(answer);
    ExpectEndOfStream<unsigned char>(answer);
  }
}

TEST(DataStreams, AllOthersKeepTheirValueAtTheEndOfTheStream) {
  Calls calls;
  EXPECT_EQ(17, Read<int>("", 17, &calls));
  EXPECT_EQ(Calls{"read 4"}, calls);
  EXPECT_TRUE(Read<bool>("", true));
  EXPECT_EQ(17, Read<short>("", 17));
  EXPECT_EQ(17U, Read<unsigned short>("", 17));
  EXPECT_EQ(17U, Read<unsigned int>("", 17));
  EXPECT_EQ(17L, Read<long>("", 17));
  EXPECT_EQ(17UL, Read<unsigned long>("", 17));
  EXPECT_EQ(17LL, Read<long long>("", 17));
  EXPECT_EQ(17ULL, Read<unsigned long long>("", 17));
  EXPECT_EQ(1.5F, Read<float>("", 1.5F));
  EXPECT_EQ(1.5, Read<double>("", 1.5));
}

TEST(DataStreams, BytesOfAValueThatCameBeforeTheEndAreInIt) {
  EXPECT_EQ(0x04030201, Read<int>("\x01\x02", 0x04030605));
}

// None of their own operations is in the way of values.
class DeafOutput : public DataOutputStream {
 public:
  using DataOutputStream::DataOutputStream;
  void Write(const void*, unsigned long long) override { ADD_FAILURE(); }
  void Write(unsigned char) override { ADD_FAILURE(); }
};

TEST(DataStreams, ValuesWithoutAPayloadGoPastTheStreamsOwnWrite) {
  MemorySink sink;
  DeafOutput out(sink);
  out << 'a' << static_cast<signed char>('b') << static_cast<unsigned char>('c') << true << 7L << 1.5
      << std::string() << std::wstring();
  EXPECT_EQ((Calls{"write", "write", "write", "write 1", "write 4", "write 8", "write 4", "write 4"}),
            sink.m_calls);
}

class DeafInput : public DataInputStream {
 public:
  using DataInputStream::DataInputStream;
  long long Read(void*, long long) override { return ADD_FAILURE(), -1; }
  int Read() override { return ADD_FAILURE(), -1; }
};

TEST(DataStreams, ValuesComePastTheStreamsOwnRead) {
  MemorySource source(Bytes("abc\1\7\0\0\0\2\0\0\0de\1\0\0\0f\0ghij"));
  DeafInput in(source);
  char first = 0;
  signed char second = 0;
  unsigned char third = 0;
  bool flag = false;
  long number = 0;
  std::string text;
  std::wstring wide;
  short scalar = 0;
  short last = 0;
  in >> first >> second >> third >> flag >> number >> text >> wide >> scalar;
  in.ReadFully(&last, sizeof last);
  EXPECT_EQ("abc", (std::string{first, static_cast<char>(second), static_cast<char>(third)}));
  EXPECT_TRUE(flag);
  EXPECT_EQ(7, number);
  EXPECT_EQ("de", text);
  EXPECT_EQ(L"f", wide);
  EXPECT_EQ(0x6867, scalar);
  EXPECT_EQ(0x6A69, last);
}

// What a source that answers by this script leaves in a buffer of "........", and what it was asked for.
struct Fully {
  explicit Fully(const std::string& bytes, const std::deque<int>& script, unsigned long long count = 8)
      : m_source(bytes) {
    m_source.m_script = script;
    DataInputStream in(m_source);
    in.ReadFully(m_buffer.data(), count);
  }
  MemorySource m_source;
  std::string m_buffer = "........";
};

TEST(ReadFully, CountOf0DoesntTouchTheSource) {
  const Fully read("abc", {}, 0);
  EXPECT_EQ(Calls(), read.m_source.m_calls);
  EXPECT_EQ("........", read.m_buffer);
}

TEST(ReadFully, GathersWhatComesInPieces) {
  const Fully read("abcdefghij", {3, 1, 8});
  EXPECT_EQ("abcdefgh", read.m_buffer);
  EXPECT_EQ((Calls{"read 8", "read 5", "read 4"}), read.m_source.m_calls);
}

TEST(ReadFully, EndAtOnceReturnsAfterOneRead) {
  const Fully read("", {});
  EXPECT_EQ("........", read.m_buffer);
  EXPECT_EQ(Calls{"read 8"}, read.m_source.m_calls);
}

TEST(ReadFully, EndAfterBytesRunsDownThroughZero) {
  const Fully read("abc", {});
  EXPECT_EQ("abc.....", read.m_buffer);
  EXPECT_EQ((Calls{"read 8", "read 5", "read 6", "read 7", "read 8"}), read.m_source.m_calls);
}

TEST(ReadFully, NoDataNowTakesTwoOffTheCount) {
  const Fully even("abcd", {4, -2, -2, -2});
  EXPECT_EQ((Calls{"read 8", "read 4", "read 6", "read 8"}), even.m_source.m_calls);
  const Fully odd("abc", {3, -2, -2});  // 3, 1, and then below 0
  EXPECT_EQ((Calls{"read 8", "read 5", "read 7"}), odd.m_source.m_calls);
}

TEST(ReadFully, BytesAfterNoDataOverwriteTheLastTwo) {
  const Fully read("abcdefghij", {4, -2, 6});
  EXPECT_EQ("abefghij", read.m_buffer);
}

TEST(ReadFully, AnswerOf0AsksAgain) {
  const Fully read("abcdefgh", {0, 0, 8});
  EXPECT_EQ("abcdefgh", read.m_buffer);
  EXPECT_EQ((Calls{"read 8", "read 8", "read 8"}), read.m_source.m_calls);
}

TEST(ReadFully, ErrorOfTheSourcePassesWithTheBytesSoFar) {
  MemorySource source("abcdefgh");
  source.m_script = {3, iRAISE};
  DataInputStream in(source);
  std::string buffer = "........";
  EXPECT_THROW(in.ReadFully(buffer.data(), 8), XIOSystemCallFailure);
  EXPECT_EQ("abc.....", buffer);
}

TEST(DataStreams, RawBytesGoStraightThrough) {
  MemorySink sink;
  DataOutputStream out(sink);
  out.Write(static_cast<unsigned char>('a'));
  out.Write("bcd", 3);
  out.Flush();
  EXPECT_EQ("abcd", sink.m_bytes);
  EXPECT_EQ((Calls{"write", "write 3", "flush"}), sink.m_calls);
}

TEST(DataStreams, ErrorOfTheSinkPasses) {
  MemorySink sink;
  sink.m_bFailWrite = true;
  DataOutputStream out(sink);
  EXPECT_THROW(out << 1, XIOSystemCallFailure);
  EXPECT_THROW(out << 'a', XIOSystemCallFailure);
  EXPECT_THROW(out << std::string("text"), XIOSystemCallFailure);
}

void WriteAll(DataOutputStream& out) {
  out << static_cast<signed char>(-1) << 'c' << static_cast<unsigned char>(0xFF) << true << false
      << static_cast<short>(-16) << static_cast<unsigned short>(0xFFF0) << -32 << 32U << -33L << 33UL << -64LL
      << 64ULL << 1.0F << 2.0 << std::string("value") << std::wstring(L"value") << std::string()
      << std::string(5000, 'x') << std::wstring(5000, L'\x20AC');
}

template <class T>
T Next(DataInputStream& in) {
  T value{};
  in >> value;
  return value;
}

void ExpectAll(DataInputStream& in) {
  EXPECT_EQ(-1, Next<signed char>(in));
  EXPECT_EQ('c', Next<char>(in));
  EXPECT_EQ(0xFF, Next<unsigned char>(in));
  EXPECT_TRUE(Next<bool>(in));
  EXPECT_FALSE(Next<bool>(in));
  EXPECT_EQ(-16, Next<short>(in));
  EXPECT_EQ(0xFFF0, Next<unsigned short>(in));
  EXPECT_EQ(-32, Next<int>(in));
  EXPECT_EQ(32U, Next<unsigned int>(in));
  EXPECT_EQ(-33L, Next<long>(in));
  EXPECT_EQ(33UL, Next<unsigned long>(in));
  EXPECT_EQ(-64LL, Next<long long>(in));
  EXPECT_EQ(64ULL, Next<unsigned long long>(in));
  EXPECT_EQ(1.0F, Next<float>(in));
  EXPECT_EQ(2.0, Next<double>(in));
  EXPECT_EQ("value", Next<std::string>(in));
  EXPECT_EQ(L"value", Next<std::wstring>(in));
  EXPECT_EQ("", Next<std::string>(in));
  EXPECT_EQ(std::string(5000, 'x'), Next<std::string>(in));
  EXPECT_EQ(std::wstring(5000, L'\x20AC'), Next<std::wstring>(in));
}

TEST(DataStreams, AllTypesComeBackThroughBufferedStreams) {
  MemorySink sink;
  BufferedBinaryOutputStream bufferedSink(sink, 16);
  DataOutputStream out(bufferedSink);
  WriteAll(out);
  out.Close();
  MemorySource source(sink.m_bytes);
  BufferedBinaryInputStream bufferedSource(source, 16);
  DataInputStream in(bufferedSource);
  ExpectAll(in);
  EXPECT_EQ(0U, in.AvailableBytes());
}

TEST(DataStreams, AllTypesComeBackFromAFile) {
  const TestSupport::TemporaryFolder folder;
  BinaryFileStream file;
  ASSERT_TRUE(file.Open(folder.File("values"), BinaryFileStream::WRITE_MODE, BinaryFileStream::eCREATE_NEW));
  {
    BufferedBinaryOutputStream buffered(file, BufferedBinaryOutputStream::DEFAULT_BUFFER_SIZE);
    DataOutputStream out(buffered);
    WriteAll(out);
    out.Close();
  }
  ASSERT_TRUE(
      file.Open(folder.File("values"), BinaryFileStream::READ_MODE, BinaryFileStream::eOPEN_IF_EXISTS));
  BufferedBinaryInputStream buffered(file, BufferedBinaryInputStream::DEFAULT_BUFFER_SIZE);
  DataInputStream in(buffered);
  ExpectAll(in);
  EXPECT_EQ(0U, in.AvailableBytes());
}

}  // namespace
