#include <Infrastructure/OxaCore/io/BufferedStreams.h>
#include <Infrastructure/OxaCore/io/DataStreams.h>
#include <Infrastructure/OxaCore/io/IOErrors.h>
#include <Infrastructure/OxaCore/io/StreamAdapters.h>

#include <gtest/gtest.h>

#include <boost/iostreams/stream.hpp>
#include <fstream>
#include <list>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using namespace Oxa::Core;

using TextAdapter = BinaryStreamAdapter<std::stringstream>;
using TextInput = BinaryInputAdapterImpl<std::istringstream, false>;
using TextOutput = BinaryOutputAdapterImpl<std::ostringstream, false>;

std::string ReadBlock(BinaryInputStream& stream, long long count) {
  std::string block(static_cast<std::size_t>(count), '?');
  const long long got = stream.Read(block.data(), count);
  return got < 0 ? "<" + std::to_string(got) + ">" : block.substr(0, static_cast<std::size_t>(got));
}

template <class Container>
auto OverElements(const Container& container) {
  return IteratorBinaryInputAdapter<typename Container::const_iterator>(container.begin(), container.end());
}

std::vector<int> AllOf(BinaryInputStream& stream) {
  std::vector<int> bytes;
  for (int byte = stream.Read(); byte >= 0; byte = stream.Read()) bytes.push_back(byte);
  return bytes;
}

// Gives `m_text`, and then an error for ever; takes `m_ulRoom` bytes, and then answers with errors.
class FailingStream : public BinaryInputStream, public BinaryOutputStream {
 public:
  void Close() override {}

  using BinaryInputStream::Read;
  long long Read(void* buffer, long long) override {
    if (m_bGiven) OXA_RAISE_ERROR("Test", XIOFileNotOpen());
    m_bGiven = true;
    return static_cast<long long>(m_text.copy(static_cast<char*>(buffer), m_text.size()));
  }
  int Read() override { return -1; }
  unsigned long long AvailableBytes() override { return 0; }

  void Write(const void*, unsigned long long count) override {
    if (count > m_ulRoom) OXA_RAISE_ERROR("Test", XIOExceededOutputLimit());
    m_ulRoom -= count;
  }
  void Write(unsigned char byte) override { Write(&byte, 1); }
  void Flush() override {}

  std::string m_text = "good";
  bool m_bGiven = false;
  unsigned long long m_ulRoom = 4;
};

TEST(BinaryInputAdapter, BlockAtTheEndGivesNothingOnceAndThenTheEnd) {
  std::istringstream text("abcd");
  TextInput stream(text);
  EXPECT_EQ(ReadBlock(stream, 4), "abcd");
  EXPECT_EQ(ReadBlock(stream, 4), "");
  EXPECT_EQ(ReadBlock(stream, 4), "<-1>");
  EXPECT_EQ(ReadBlock(stream, 4), "<-1>");
}

TEST(BinaryInputAdapter, BlockBeyondTheEndGivesWhatThereIs) {
  std::istringstream text("abcd");
  TextInput stream(text);
  EXPECT_EQ(ReadBlock(stream, 10), "abcd");
  EXPECT_TRUE(text.eof());
  EXPECT_EQ(ReadBlock(stream, 10), "<-1>");
}

TEST(BinaryInputAdapter, BlockOfNothingReadsNothing) {
  std::istringstream text("abcd");
  TextInput stream(text);
  char byte = 'x';
  EXPECT_EQ(stream.Read(&byte, 0), 0);
  EXPECT_EQ(stream.Read(&byte, -1), 0);
  EXPECT_EQ(byte, 'x');
  EXPECT_TRUE(text.good());
  EXPECT_EQ(ReadBlock(stream, 4), "abcd");
}

TEST(BinaryInputAdapter, SingleBytesAreUnsignedAndTheirEndIsMinusOne) {
  std::istringstream text("a\xff");
  TextInput stream(text);
  EXPECT_EQ(stream.Read(), 'a');
  EXPECT_EQ(stream.Read(), 255);
  EXPECT_EQ(stream.Read(), -1);
  EXPECT_EQ(stream.Read(), -1);
}

TEST(BinaryInputAdapter, SkipTellsWhetherTheStreamIsStillGood) {
  std::istringstream text(
      "abc\xff"
      "efg");
  TextInput stream(text);
  EXPECT_TRUE(stream.Skip(0));
  EXPECT_TRUE(stream.Skip(5));  // a byte of 255 is nothing that it stops at
  EXPECT_EQ(stream.Read(), 'f');
  EXPECT_FALSE(stream.Skip(2));
  EXPECT_TRUE(text.eof());
  EXPECT_FALSE(stream.Skip(0));
}

TEST(BinaryInputAdapter, SkipOfMoreThanAStreamCanCountGoesToTheEnd) {
  std::istringstream text("abcd");
  TextInput stream(text);
  EXPECT_FALSE(stream.Skip(~0ULL));
  EXPECT_EQ(stream.Read(), -1);
}

TEST(BinaryInputAdapter, AvailableBytesAreThoseOfTheBuffer) {
  std::istringstream text("abcd");
  TextInput stream(text);
  EXPECT_EQ(stream.AvailableBytes(), 4U);
  stream.Read();
  EXPECT_EQ(stream.AvailableBytes(), 3U);
}

TEST(BinaryInputAdapter, AvailableBytesOfAFileThatIsNotOpenAreNone) {
  std::ifstream closed;
  BinaryInputAdapterImpl<std::ifstream, false> stream(closed);
  EXPECT_EQ(closed.rdbuf()->in_avail(), -1);
  EXPECT_EQ(stream.AvailableBytes(), 0U);
}

TEST(BinaryInputAdapter, CloseLeavesTheStandardStreamAlone) {
  std::istringstream text("abcd");
  TextInput stream(text);
  stream.Close();
  EXPECT_EQ(ReadBlock(stream, 4), "abcd");
}

TEST(BinaryOutputAdapter, WritesBlocksAndBytes) {
  std::ostringstream text;
  TextOutput stream(text);
  stream.Write("abc", 3);
  stream.Write(static_cast<unsigned char>('d'));
  stream.Write(nullptr, 0);
  stream.Flush();
  stream.Close();
  EXPECT_EQ(text.str(), "abcd");
}

class FlushCounter : public std::stringbuf {
 public:
  int m_iFlushes = 0;

 protected:
  int sync() override { return ++m_iFlushes, 0; }
};

TEST(BinaryOutputAdapter, FlushReachesTheStandardStream) {
  FlushCounter buffer;
  std::ostream text(&buffer);
  BinaryOutputAdapterImpl<std::ostream, false> stream(text);
  stream.Write("abc", 3);
  EXPECT_EQ(buffer.m_iFlushes, 0);
  stream.Flush();
  EXPECT_EQ(buffer.m_iFlushes, 1);
  stream.Close();
  EXPECT_EQ(buffer.m_iFlushes, 1);
}

TEST(BinaryOutputAdapter, FailureStaysInTheFlags) {
  std::ofstream closed;
  BinaryOutputAdapterImpl<std::ofstream, false> stream(closed);
  stream.Write("abc", 3);
  EXPECT_TRUE(closed.bad());
  stream.Write(static_cast<unsigned char>('d'));
  stream.Flush();
  EXPECT_TRUE(closed.bad());
}

TEST(BinaryOutputAdapter, WritingNothingToAFailedStreamDoesNotTouchIt) {
  std::ofstream closed;
  closed.setstate(std::ios::failbit);
  closed.exceptions(std::ios::badbit);
  BinaryOutputAdapterImpl<std::ofstream, false> stream(closed);
  stream.Write("", 0);
  EXPECT_FALSE(closed.bad());
}

TEST(StandardStreamAdapter, ExceptionsOfTheStandardStreamPass) {
  std::stringstream text;
  text.exceptions(std::ios::eofbit);
  TextAdapter stream(text);
  EXPECT_THROW(stream.Read(), std::ios_base::failure);
}

TEST(StandardStreamAdapter, OneObjectForBothDirections) {
  std::stringstream text;
  TextAdapter stream(text);
  stream.Write("abcd", 4);
  EXPECT_EQ(stream.Read(), 'a');
  EXPECT_EQ(stream.AvailableBytes(), 3U);
  EXPECT_TRUE(stream.Skip(1));
  stream.Write(static_cast<unsigned char>('e'));
  stream.Flush();
  EXPECT_EQ(ReadBlock(stream, 9), "cde");
}

TEST(StandardStreamAdapter, ItsOneCloseDoesNothingFromEitherSide) {
  std::stringstream text("ab");
  TextAdapter stream(text);
  stream.Close();
  static_cast<BinaryInputStream&>(stream).Close();
  static_cast<BinaryOutputStream&>(stream).Close();
  EXPECT_EQ(ReadBlock(stream, 2), "ab");
}

TEST(StandardStreamAdapter, AFileStreamHasBothDirectionsToo) {
  static_assert(
      std::is_base_of_v<BinaryInputAdapterImpl<std::fstream, true>, BinaryStreamAdapter<std::fstream>>);
  static_assert(
      std::is_base_of_v<BinaryOutputAdapterImpl<std::fstream, true>, BinaryStreamAdapter<std::fstream>>);
  std::fstream closed;
  BinaryStreamAdapter<std::fstream> stream(closed);
  EXPECT_EQ(stream.Read(), -1);
  closed.clear();
  stream.Write("a", 1);
  EXPECT_TRUE(closed.bad());
}

template <class Value>
void ExpectSame(const Value& value) {
  std::stringstream text;
  TextAdapter stream(text);
  DataOutputStream out(stream);
  out << value;
  Value read{};
  DataInputStream in(stream);
  in >> read;
  EXPECT_EQ(read, value);
  EXPECT_EQ(stream.AvailableBytes(), 0U);
}

TEST(StandardStreamAdapter, AllTypedValuesComeBack) {
  ExpectSame('x');
  ExpectSame(static_cast<signed char>(-8));
  ExpectSame(static_cast<unsigned char>(200));
  ExpectSame(true);
  ExpectSame(static_cast<short>(-16));
  ExpectSame(static_cast<unsigned short>(65500));
  ExpectSame(-32);
  ExpectSame(4000000000U);
  ExpectSame(-33L);
  ExpectSame(4000000001UL);
  ExpectSame(-64LL);
  ExpectSame(64ULL);
  ExpectSame(1.5F);
  ExpectSame(2.25);
  ExpectSame(std::string("value\0with zero", 15));
  ExpectSame(std::string(300, 'v'));
  ExpectSame(std::wstring(L"value"));
  ExpectSame(std::wstring(200, L'v'));
}

TEST(StandardStreamAdapter, TypedValuesInARowComeBackInTheirOrder) {
  std::stringstream text;
  TextAdapter stream(text);
  DataOutputStream out(stream);
  out << 'a' << static_cast<short>(-2) << 3U << 4.5 << std::string("five") << std::wstring(L"six") << 7LL;
  char letter = 0;
  short two = 0;
  unsigned int three = 0;
  double four = 0;
  std::string five;
  std::wstring six;
  long long seven = 0;
  DataInputStream in(stream);
  in >> letter >> two >> three >> four >> five >> six >> seven;
  EXPECT_EQ(letter, 'a');
  EXPECT_EQ(two, -2);
  EXPECT_EQ(three, 3U);
  EXPECT_EQ(four, 4.5);
  EXPECT_EQ(five, "five");
  EXPECT_EQ(six, L"six");
  EXPECT_EQ(seven, 7);
}

TEST(IteratorBinaryInputAdapter, AStringGivesItsText) {
  const std::string text = "some text";
  auto stream = OverElements(text);
  EXPECT_EQ(stream.AvailableBytes(), 9U);
  EXPECT_EQ(ReadBlock(stream, 100), text);
  EXPECT_EQ(stream.AvailableBytes(), 0U);
  EXPECT_EQ(ReadBlock(stream, 100), "<-1>");
}

TEST(IteratorBinaryInputAdapter, IntegersGiveTheirLowBytesFirst) {
  const std::vector<int> values = {0x04030201, -2};
  auto stream = OverElements(values);
  EXPECT_EQ(AllOf(stream), (std::vector<int>{1, 2, 3, 4, 0xFE, 0xFF, 0xFF, 0xFF}));
  EXPECT_EQ(stream.Read(), -1);
}

TEST(IteratorBinaryInputAdapter, ElementsOfEveryWidth) {
  const std::vector<unsigned short> two = {0xBBAA};
  const std::list<long long> eight = {0x0807060504030201};
  auto narrow = OverElements(two);
  auto wide = OverElements(eight);
  EXPECT_EQ(AllOf(narrow), (std::vector<int>{0xAA, 0xBB}));
  EXPECT_EQ(AllOf(wide), (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST(IteratorBinaryInputAdapter, CharactersAreSigned) {
  const std::string text = "\x80\xff";
  auto stream = OverElements(text);
  EXPECT_EQ(stream.Read(), -128);
  EXPECT_EQ(stream.Read(), -1);
  EXPECT_EQ(stream.AvailableBytes(), 0U);
  const std::vector<signed char> values = {-3};
  EXPECT_EQ(OverElements(values).Read(), -3);
}

TEST(IteratorBinaryInputAdapter, ABlockEndsAtACharacterThatLooksLikeTheEnd) {
  const std::string text =
      "ab\xff"
      "cd";
  auto stream = OverElements(text);
  EXPECT_EQ(ReadBlock(stream, 10), "ab");
  EXPECT_EQ(ReadBlock(stream, 10), "cd");
}

TEST(IteratorBinaryInputAdapter, UnsignedElementsAreExact) {
  const std::vector<unsigned char> bytes = {0, 127, 128, 255};
  auto stream = OverElements(bytes);
  EXPECT_EQ(AllOf(stream), (std::vector<int>{0, 127, 128, 255}));
}

TEST(IteratorBinaryInputAdapter, AvailableBytesCountElements) {
  const std::vector<short> values = {1, 2, 3};
  auto stream = OverElements(values);
  EXPECT_EQ(stream.AvailableBytes(), 3U);
  stream.Read();
  EXPECT_EQ(stream.AvailableBytes(), 2U);  // three elements less one byte
  stream.Read();
  EXPECT_EQ(stream.AvailableBytes(), 2U);
}

TEST(IteratorBinaryInputAdapter, AvailableBytesNeverGoBelowNone) {
  const std::vector<int> values = {1};
  auto stream = OverElements(values);
  stream.Skip(3);
  EXPECT_EQ(stream.AvailableBytes(), 0U);
  stream.Read();
  EXPECT_EQ(stream.AvailableBytes(), 0U);
}

TEST(IteratorBinaryInputAdapter, PlainPointersAndSkip) {
  const unsigned int values[] = {0x04030201, 0x08070605};
  IteratorBinaryInputAdapter<const unsigned int*> stream(values, values + 2);
  EXPECT_TRUE(stream.Skip(5));
  EXPECT_EQ(stream.Read(), 6);
  EXPECT_FALSE(stream.Skip(3));
}

TEST(IteratorBinaryInputAdapter, AnEmptyContainerIsAtItsEnd) {
  const std::vector<int> none;
  auto stream = OverElements(none);
  EXPECT_EQ(stream.AvailableBytes(), 0U);
  EXPECT_EQ(stream.Read(), -1);
}

TEST(BoostSource, IsAStandardInputStream) {
  const std::string text = "first line\nsecond 42\n";
  auto elements = OverElements(text);
  boost::iostreams::stream<BinaryInputStream::Source<char>> in(elements);
  std::string line;
  std::string word;
  int number = 0;
  std::getline(in, line);
  in >> word >> number;
  EXPECT_EQ(line, "first line");
  EXPECT_EQ(word, "second");
  EXPECT_EQ(number, 42);
  std::getline(in, line);
  EXPECT_FALSE(std::getline(in, line));
  EXPECT_TRUE(in.eof());
  EXPECT_FALSE(in.bad());
}

TEST(BoostSource, LongerThanTheBuffers) {
  std::string text;
  for (int line = 0; line < 3000; ++line) text += std::to_string(line) + '\n';
  auto elements = OverElements(text);
  BufferedBinaryInputStream buffered(elements, BufferedBinaryInputStream::DEFAULT_BUFFER_SIZE);
  boost::iostreams::stream<BinaryInputStream::Source<char>> in(buffered);
  std::ostringstream out;
  out << in.rdbuf();
  EXPECT_EQ(out.str(), text);
}

TEST(BoostSource, AnErrorPassesIfTheMaskLetsIt) {
  FailingStream failing;
  boost::iostreams::stream<BinaryInputStream::Source<char>> in(failing);
  in.exceptions(std::ios::badbit);
  std::string word;
  EXPECT_THROW(in >> word, XIOFileNotOpen);
  EXPECT_TRUE(in.bad());
}

TEST(BoostSource, AnErrorStaysInTheFlagsIfTheMaskDoesNotLetIt) {
  FailingStream failing;
  boost::iostreams::stream<BinaryInputStream::Source<char>> in(failing);
  std::string word;
  EXPECT_NO_THROW(in >> word);
  EXPECT_TRUE(in.bad());
  EXPECT_EQ(word, "good");
}

TEST(BoostSink, IsAStandardOutputStream) {
  std::ostringstream text;
  TextOutput stream(text);
  boost::iostreams::stream<BinaryOutputStream::Sink<char>> out(stream);
  out << "number " << 42;
  EXPECT_EQ(text.str(), "");
  out.flush();
  EXPECT_EQ(text.str(), "number 42");
  out << '\n';
  out.close();
  EXPECT_EQ(text.str(), "number 42\n");
  EXPECT_TRUE(out.good());
}

TEST(BoostSink, GivesTheWholeCount) {
  std::ostringstream text;
  TextOutput stream(text);
  EXPECT_EQ(BinaryOutputStream::Sink<char>(stream).write("abcd", 3), 3);
  EXPECT_EQ(text.str(), "abc");
}

TEST(BoostSink, FlushesNoFurtherThanItself) {
  FlushCounter buffer;
  std::ostream text(&buffer);
  BinaryOutputAdapterImpl<std::ostream, false> stream(text);
  boost::iostreams::stream<BinaryOutputStream::Sink<char>> out(stream);
  out << "abc";
  out.flush();
  EXPECT_EQ(buffer.str(), "abc");
  EXPECT_EQ(buffer.m_iFlushes, 0);
}

TEST(BoostSink, AnErrorPassesIfTheMaskLetsIt) {
  FailingStream failing;
  boost::iostreams::stream<BinaryOutputStream::Sink<char>> out(BinaryOutputStream::Sink<char>(failing),
                                                               4);  // a buffer of four bytes
  out.exceptions(std::ios::badbit);
  EXPECT_THROW(out << "more than four and four", XIOExceededOutputLimit);
  EXPECT_TRUE(out.bad());
}

TEST(BoostSink, AnErrorStaysInTheFlagsIfTheMaskDoesNotLetIt) {
  FailingStream failing;
  boost::iostreams::stream<BinaryOutputStream::Sink<char>> out(BinaryOutputStream::Sink<char>(failing), 4);
  EXPECT_NO_THROW(out << "more than four and four");
  EXPECT_TRUE(out.bad());
}

TEST(BoostSink, AnErrorDuringAFlushIsDroppedByBoost) {
  FailingStream failing;
  boost::iostreams::stream<BinaryOutputStream::Sink<char>> out(BinaryOutputStream::Sink<char>(failing), 100);
  out << "more than four";
  out.flush();
  EXPECT_TRUE(out.bad());
  out.clear();
  out.exceptions(std::ios::badbit);
  EXPECT_THROW(out.flush(), std::ios_base::failure);
}

TEST(BoostSourceAndSink, AStackOfStandardAndOwnStreams) {
  std::stringstream text;
  TextAdapter adapter(text);
  {
    BufferedBinaryOutputStream buffered(adapter, 16);
    boost::iostreams::stream<BinaryOutputStream::Sink<char>> out(buffered);
    for (int number = 0; number < 100; ++number) out << number << ' ';
    out.flush();
    buffered.Flush();
  }
  boost::iostreams::stream<BinaryInputStream::Source<char>> in(adapter);
  int number = -1;
  for (int expected = 0; expected < 100; ++expected) {
    ASSERT_TRUE(in >> number);
    ASSERT_EQ(number, expected);
  }
  EXPECT_FALSE(in >> number);
}

}  // namespace
