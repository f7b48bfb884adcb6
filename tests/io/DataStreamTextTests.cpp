// Strings and wide strings on a typed stream.
#include <Infrastructure/OxaCore/io/DataStreams.h>

#include <Infrastructure/OxaCore/CommonErrors.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "Support/Allocations.h"
#include "io/Streams.h"

namespace {

using namespace IoTests;
using TestSupport::FailAllocation;
using TestSupport::ThreadAllocations;

template <std::size_t Size>
std::string Bytes(const char (&literal)[Size]) {
  return std::string(literal, Size - 1);
}

std::string LengthBytes(std::size_t length) {
  std::string bytes;
  for (int byte = 0; byte < 4; ++byte) bytes += static_cast<char>(length >> 8 * byte & 0xFF);
  return bytes;
}

template <class Text>
std::string Written(const Text& text, Calls* calls = nullptr) {
  MemorySink sink;
  DataOutputStream out(sink);
  EXPECT_EQ(&out, &(out << text));
  if (calls != nullptr) *calls = sink.m_calls;
  return sink.m_bytes;
}

template <class Text>
Text Read(const std::string& bytes, const Text& before = Text()) {
  MemorySource source(bytes);
  DataInputStream in(source);
  Text text = before;
  EXPECT_EQ(&in, &(in >> text));
  return text;
}

TEST(DataStreamString, IsLengthAndBytes) {
  Calls calls;
  EXPECT_EQ(Bytes("\5\0\0\0value"), Written(std::string("value"), &calls));
  EXPECT_EQ((Calls{"write 4", "write 5"}), calls);
  EXPECT_EQ("value", Read<std::string>(Bytes("\5\0\0\0value")));
}

TEST(DataStreamString, EmptyOneIsFourZeroBytesAndNoOtherCall) {
  Calls calls;
  EXPECT_EQ(Bytes("\0\0\0\0"), Written(std::string(), &calls));
  EXPECT_EQ(Calls{"write 4"}, calls);
  EXPECT_EQ("", Read<std::string>(Bytes("\0\0\0\0"), "before"));
}

TEST(DataStreamString, HoldsAnyBytes) {
  const std::string bytes = Bytes("a\0b\xFF\x80");
  EXPECT_EQ(bytes, Read<std::string>(Written(bytes)));
}

TEST(DataStreamString, EndOfTheStreamGivesAnEmptyOne) { EXPECT_EQ("", Read<std::string>("", "before")); }

// The payload of these goes through Write, the length doesn't.
class Watching : public DataOutputStream {
 public:
  using DataOutputStream::DataOutputStream;
  using DataOutputStream::Write;
  void Write(const void* buffer, unsigned long long count) override {
    m_payload.append(static_cast<const char*>(buffer), count);
    ++m_iWrites;
    DataOutputStream::Write(buffer, count);
  }
  std::string m_payload;
  int m_iWrites = 0;
};

TEST(DataStreamString, PayloadGoesThroughTheStreamsOwnWrite) {
  MemorySink sink;
  Watching out(sink);
  out << std::string("value") << 7 << std::string() << std::wstring() << std::wstring(L"w");
  EXPECT_EQ(Bytes("valuew\0"), out.m_payload);
  EXPECT_EQ(2, out.m_iWrites);
  EXPECT_EQ(Bytes("\5\0\0\0value\7\0\0\0\0\0\0\0\0\0\0\0\1\0\0\0w\0"), sink.m_bytes);
}

// Allocations on the way of reading `length` characters into a string that has room for them.
template <class Text>
unsigned long AllocationsToRead(std::size_t length, const std::string& payload) {
  MemorySource source(LengthBytes(length) + payload);
  DataInputStream in(source);
  Text text(1000, 'x');
  source.m_calls.reserve(10);
  const unsigned long before = ThreadAllocations().m_ulCount;
  in >> text;
  const unsigned long allocations = ThreadAllocations().m_ulCount - before;
  EXPECT_EQ(Text(length, 'a'), text);
  EXPECT_EQ(length, text.size());
  return allocations;
}

TEST(DataStreamString, Of255BytesNeedsNoMemoryAndOf256One) {
  EXPECT_EQ(0U, AllocationsToRead<std::string>(255, std::string(255, 'a')));
  EXPECT_EQ(1U, AllocationsToRead<std::string>(256, std::string(256, 'a')));
}

std::string WideLetters(std::size_t count) {
  std::string bytes;
  for (std::size_t i = 0; i < count; ++i) bytes += Bytes("a\0");
  return bytes;
}

TEST(DataStreamWideString, Of127CharactersNeedsNoMemoryAndOf128One) {
  EXPECT_EQ(0U, AllocationsToRead<std::wstring>(127, WideLetters(127)));
  EXPECT_EQ(1U, AllocationsToRead<std::wstring>(128, WideLetters(128)));
}

TEST(DataStreamWideString, IsWrittenWithoutMemoryUpTo127Units) {
  for (const std::size_t length : {127U, 128U}) {
    MemorySink sink;
    sink.m_bytes.reserve(1000);
    sink.m_calls.reserve(10);
    DataOutputStream out(sink);
    const std::wstring text(length, L'a');
    const unsigned long before = ThreadAllocations().m_ulCount;
    out << text;
    EXPECT_EQ(length == 127 ? 0U : 1U, ThreadAllocations().m_ulCount - before);
    EXPECT_EQ(LengthBytes(length) + WideLetters(length), sink.m_bytes);
  }
}

TEST(DataStreamString, CutOneHasItsLengthAndZerosForWhatDidntCome) {
  EXPECT_EQ(Bytes("ab\0\0\0"), Read<std::string>(Bytes("\5\0\0\0ab")));
  const std::string read = Read<std::string>(Bytes("\0\1\0\0ab"));
  EXPECT_EQ("ab" + std::string(254, '\0'), read);
}

TEST(DataStreamString, CutOneHasAlsoWhatCameBeforeTheCountWentBack) {
  MemorySource source(Bytes("\10\0\0\0abcdX"));
  source.m_script = {4, 4, -2, 1};
  DataInputStream in(source);
  std::string text;
  in >> text;
  EXPECT_EQ(Bytes("abXd\0\0\0\0"), text);
}

TEST(DataStreamString, CutLengthCountsWithItsMissingBytes0) {
  EXPECT_EQ(std::string(2, '\0'), Read<std::string>("\2"));
}

template <class Text>
void ExpectNoMemory(std::size_t length, unsigned long failing, const std::string& bytes) {
  MemorySource source(LengthBytes(length) + "some payload");
  source.m_calls.reserve(10 + 1000);
  DataInputStream in(source);
  Text text(3, 'b');
  try {
    const FailAllocation fail(failing);
    in >> text;
    FAIL() << "no error";
  } catch (AllocationFailed& error) {
    EXPECT_EQ("Attempt to allocate " + bytes + " bytes for a string from the stream failed",
              std::string(error.what()));
    EXPECT_EQ("Oxa.Core.DataInputStream", error.GetData(AlertInfo::sLOG_NAME));
  }
  EXPECT_EQ(Text(3, 'b'), text);
}

TEST(DataStreamString, LengthBeyondTheMemoryIsAnError) {
  ExpectNoMemory<std::string>(0xFFFFFFFF, 1, "4294967295");
  ExpectNoMemory<std::wstring>(0xFFFFFFFF, 1, "8589934590");
}

TEST(DataStreamString, SoIsOneForWhichTheStringItselfFindsNoRoom) {
  ExpectNoMemory<std::string>(300, 2, "300");
  ExpectNoMemory<std::wstring>(300, 2, "600");
}

TEST(DataStreamString, ErrorOfTheSourceLeavesItAsItWas) {
  for (const std::size_t length : {10U, 1000U}) {
    MemorySource source(LengthBytes(length) + "abc");
    source.m_script = {4, 2, iRAISE};
    DataInputStream in(source);
    std::string text = "before";
    EXPECT_THROW(in >> text, XIOSystemCallFailure);
    EXPECT_EQ("before", text);
  }
}

TEST(DataStreamWideString, IsLengthAndCodeUnitsLowFirst) {
  Calls calls;
  const std::string bytes = Bytes("\5\0\0\0v\0a\0l\0u\0e\0");
  EXPECT_EQ(bytes, Written(std::wstring(L"value"), &calls));
  EXPECT_EQ((Calls{"write 4", "write 10"}), calls);
  EXPECT_EQ(L"value", Read<std::wstring>(bytes));
  EXPECT_EQ(Bytes("\1\0\0\0\xAC\x20"), Written(std::wstring(L"\x20AC")));
}

TEST(DataStreamWideString, EmptyOneIsFourZeroBytesAndNoOtherCall) {
  Calls calls;
  EXPECT_EQ(Bytes("\0\0\0\0"), Written(std::wstring(), &calls));
  EXPECT_EQ(Calls{"write 4"}, calls);
  EXPECT_EQ(L"", Read<std::wstring>(Bytes("\0\0\0\0"), L"before"));
  EXPECT_EQ(L"", Read<std::wstring>("", L"before"));
}

void ExpectBothWays(const std::wstring& text, const std::string& bytes) {
  EXPECT_EQ(bytes, Written(text));
  EXPECT_EQ(text, Read<std::wstring>(bytes));
}

TEST(DataStreamWideString, CharacterBeyondTwoBytesIsAPairOfSurrogates) {
  ExpectBothWays(L"a\U0001F600z", Bytes("\4\0\0\0a\0\x3D\xD8\x00\xDEz\0"));
  ExpectBothWays(std::wstring(1, L'\xFFFF'), Bytes("\1\0\0\0\xFF\xFF"));
  ExpectBothWays(L"\U00010000", Bytes("\2\0\0\0\x00\xD8\x00\xDC"));
  ExpectBothWays(L"\U0010FFFF", Bytes("\2\0\0\0\xFF\xDB\xFF\xDF"));
}

TEST(DataStreamWideString, SurrogateWithoutItsPartnerStaysAsItIs) {
  const wchar_t high = static_cast<wchar_t>(0xD83D);
  const wchar_t low = static_cast<wchar_t>(0xDE00);
  ExpectBothWays({high}, Bytes("\1\0\0\0\x3D\xD8"));
  ExpectBothWays({low}, Bytes("\1\0\0\0\x00\xDE"));
  ExpectBothWays({low, high}, Bytes("\2\0\0\0\x00\xDE\x3D\xD8"));
  ExpectBothWays({high, L'a'}, Bytes("\2\0\0\0\x3D\xD8\x61\x00"));
  ExpectBothWays({high, L'\U0001F600'}, Bytes("\3\0\0\0\x3D\xD8\x3D\xD8\x00\xDE"));
}

TEST(DataStreamWideString, HalvesOfAPairArriveAsOneCharacter) {
  const std::wstring halves = {static_cast<wchar_t>(0xD83D), static_cast<wchar_t>(0xDE00)};
  EXPECT_EQ(L"\U0001F600", Read<std::wstring>(Written(halves)));
}

TEST(DataStreamWideString, PairsCountAsTwoForTheLimitOfTheStack) {
  const std::wstring pairs(64, L'\U0001F600');  // 128 units
  EXPECT_EQ(pairs, Read<std::wstring>(Written(pairs)));
  EXPECT_EQ(LengthBytes(128), Written(pairs).substr(0, 4));
  const std::wstring mixed = std::wstring(63, L'\U0001F600') + L"a";  // 127
  EXPECT_EQ(mixed, Read<std::wstring>(Written(mixed)));
}

void ExpectRefused(const std::wstring& text, const std::string& value) {
  MemorySink sink;
  DataOutputStream out(sink);
  try {
    out << text;
    FAIL() << value << " was written";
  } catch (InvalidParameter& error) {
    EXPECT_EQ("Invalid Parameter: value = " + value, std::string(error.what()));
    EXPECT_EQ("Oxa.Core.DataOutputStream", error.GetData(AlertInfo::sLOG_NAME));
  }
  EXPECT_EQ(Calls(), sink.m_calls);
}

TEST(DataStreamWideString, WhatIsNoCharacterIsRefused) {
  ExpectRefused(L"a" + std::wstring(1, static_cast<wchar_t>(0x110000)), "1114112");
  ExpectRefused(std::wstring(1, static_cast<wchar_t>(-1)), "-1");
}

TEST(DataStreamWideString, NoMemoryToWriteItIsAnErrorAndWritesNothing) {
  MemorySink sink;
  DataOutputStream out(sink);
  const std::wstring text(200, L'a');
  try {
    const FailAllocation fail(1);
    out << text;
    FAIL() << "no error";
  } catch (AllocationFailed& error) {
    EXPECT_STREQ("Attempt to allocate 400 bytes for a string on its way to the stream failed", error.what());
    EXPECT_EQ("Oxa.Core.DataOutputStream", error.GetData(AlertInfo::sLOG_NAME));
  }
  EXPECT_EQ(Calls(), sink.m_calls);
}

TEST(DataStreamWideString, CutOneEndsInNullCharacters) {
  EXPECT_EQ((std::wstring{L'a', L'\0', L'\0'}), Read<std::wstring>(Bytes("\3\0\0\0a\0")));
  EXPECT_EQ((std::wstring{L'a', static_cast<wchar_t>(0xAC), L'\0'}),
            Read<std::wstring>(Bytes("\3\0\0\0a\0\xAC")));
  EXPECT_EQ(L'a' + std::wstring(199, L'\0'), Read<std::wstring>(Bytes("\xC8\0\0\0a\0")));
}

// Leaves something behind what it gives, in the room that it was given.
class UntidySource : public MemorySource {
 public:
  using MemorySource::MemorySource;
  using MemorySource::Read;

  long long Read(void* buffer, long long count) override {
    const long long given = MemorySource::Read(buffer, count);
    if (given > 0)
      std::memset(static_cast<char*>(buffer) + given, 0xEE, static_cast<std::size_t>(count - given));
    return given;
  }
};

TEST(DataStreamWideString, ACharacterOfWhichHalfCameHasAZeroForTheOther) {
  UntidySource source(Bytes("\3\0\0\0a\0b"));
  DataInputStream in(source);
  std::wstring text = L"before";
  in >> text;
  EXPECT_EQ(std::wstring(L"ab\0", 3), text);
}

#ifdef OXACORE_SOAK

// Takes more than 4 GB of memory.
TEST(DataStreamString, BeyondFourGigabytesIsCutToTheLowHalfOfItsLength) {
  std::string text(0x100000003, 'x');
  text[0] = 'a';
  EXPECT_EQ(Bytes("\3\0\0\0axx"), Written(text));
}

#endif

}  // namespace
