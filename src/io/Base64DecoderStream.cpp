#include <Infrastructure/OxaCore/io/Base64Streams.h>

#include <Infrastructure/OxaCore/Assert.h>
#include <Infrastructure/OxaCore/io/IOErrors.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <typeinfo>

#include "io/BufferWindows.h"

namespace Oxa::Core {

namespace {

constexpr char sLOG_NAME[] = "Oxa.Core.BinaryInputStream";  // that of every block that ends so
constexpr char sALPHABET[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";
constexpr unsigned char uPAD = 64;    // its place in the alphabet
constexpr unsigned char uSKIP = 255;  // not in the alphabet
constexpr unsigned uLAST_BYTE = 255;  // this one alone counts as the first letter
constexpr int iGROUP = 4;             // characters, and the bytes that they become
constexpr int iBLOCK = 3;
constexpr long long llWORTH_ASKING = 16;  // bytes from which on it pays to look what the source is

constexpr std::array<unsigned char, 256> MakeTable() {
  std::array<unsigned char, 256> table{};
  for (unsigned char& value : table) value = uSKIP;
  for (unsigned char value = 0; value <= uPAD; ++value)
    table[static_cast<unsigned char>(sALPHABET[value])] = value;
  table[uLAST_BYTE] = 0;
  return table;
}

constexpr std::array<unsigned char, 256> s_table = MakeTable();

constexpr unsigned uNOT_WHOLE = 1u << 31;

using Places = std::array<std::uint32_t, 256>;

// The values where they stand in the bits of a group; whatever has none makes the bits uNOT_WHOLE or more.
constexpr Places MakePlaces(int shift) {
  Places places{};
  for (std::size_t character = 0; character != places.size(); ++character) {
    const std::uint32_t value = s_table[character];
    places[character] = value < uPAD ? value << shift : uNOT_WHOLE;
  }
  return places;
}

constexpr Places s_first = MakePlaces(18);
constexpr Places s_second = MakePlaces(12);
constexpr Places s_third = MakePlaces(6);
constexpr Places s_fourth = MakePlaces(0);

struct Group {
  unsigned m_uBits;
  int m_iBytes;  // that it decodes to
};

void StoreBlock(unsigned bits, unsigned char* bytes) {
  bytes[0] = static_cast<unsigned char>(bits >> 16);
  bytes[1] = static_cast<unsigned char>(bits >> 8);
  bytes[2] = static_cast<unsigned char>(bits);
}

unsigned ValueOf(unsigned char character) { return s_table[character]; }

// uNOT_WHOLE or more unless all four have a value.
unsigned BitsOf(unsigned char first, unsigned char second, unsigned char third, unsigned char fourth) {
  return s_first[first] | s_second[second] | s_third[third] | s_fourth[fourth];
}

// Up to four values, the first one in the high bits; pads count as values of 0, but not as valid ones. `begun` are
// the first answers of the source, of which those behind a negative one don't count. Asks for each further
// character, and for none behind the group.
[[gnu::noinline]] Group FinishGroup(BinaryInputStream& source, const std::array<int, iGROUP> begun) {
  unsigned bits = 0;
  int valid = 0;
  int missing = iGROUP;
  for (std::size_t asked = 0; missing != 0; ++asked) {
    const int character = asked < begun.size() ? begun[asked] : source.Read();
    if (character < 0) break;
    const unsigned value = ValueOf(static_cast<unsigned char>(character));
    if (value == uSKIP) continue;
    --missing;
    bits <<= 6;
    if (value == uPAD) continue;
    bits |= value;
    ++valid;
  }
  return {bits << 6 * missing, valid < 2 ? valid : valid - 1};
}

// A group takes four characters at least, so they are asked for without a look at what they are.
inline Group ReadGroup(BinaryInputStream& source) {
  const int first = source.Read();
  const int second = first < 0 ? first : source.Read();
  const int third = second < 0 ? second : source.Read();
  const int fourth = third < 0 ? third : source.Read();
  if (fourth >= 0) {
    const unsigned bits = BitsOf(static_cast<unsigned char>(first), static_cast<unsigned char>(second),
                                 static_cast<unsigned char>(third), static_cast<unsigned char>(fourth));
    if (bits < uNOT_WHOLE) return {bits, iBLOCK};
  }
  return FinishGroup(source, {first, second, third, fourth});
}

// Decodes whole groups of what `source` has buffered, as many as `to` has room for: up to one that has a pad, a
// foreign character between its own, or not all of them in the buffer. Gives the number of bytes. Who still has room
// then reads on at the source, as it would have with single bytes.
long long DecodeBuffered(BufferedBinaryInputStream& source, unsigned char* to, long long room) {
  InputWindow window(source);
  const unsigned char* next = window.Begin();
  const unsigned char* const end = window.End();
  long long stored = 0;
  for (; room - stored >= iBLOCK; stored += iBLOCK) {
    while (next != end && ValueOf(*next) == uSKIP) ++next;
    if (end - next < iGROUP) break;
    const unsigned bits = BitsOf(next[0], next[1], next[2], next[3]);
    if (bits >= uNOT_WHOLE) break;
    StoreBlock(bits, to + stored);
    next += iGROUP;
  }
  window.ReadUpTo(next);
  return stored;
}

}  // namespace

Base64DecoderStream::Base64DecoderStream(BinaryInputStream& source)
    : BinaryInputStreamFilter(source), m_decoded{}, m_iNumDecodedBytes(0), m_iDecodeIndex(0) {}

Base64DecoderStream::~Base64DecoderStream() = default;

// A derived class is asked for each byte, by the way of the base's base; nobody can tell whether this one is.
long long Base64DecoderStream::Read(void* buffer, long long count) {
  if (typeid(*this) != typeid(Base64DecoderStream)) {
    return BinaryInputStream::Read(buffer, count);  // NOLINT(bugprone-parent-virtual-call)
  }
  long long stored = 0;
  try {
    return ReadBlock(static_cast<unsigned char*>(buffer), count, stored);
  } catch (IOError& error) {
    OXA_RAISE_WARNING(sLOG_NAME, IOErrorDuringRead(count, stored, error.GetData(AlertInfo::sMESSAGE)));
  }
  return stored;
}

long long Base64DecoderStream::ReadBlock(unsigned char* bytes, long long count, long long& stored) {
  auto* const buffered = count < llWORTH_ASKING ? nullptr : Exactly<BufferedBinaryInputStream>(*m_source);
  while (stored < count) {
    if (m_iNumDecodedBytes == 0) {
      if (buffered != nullptr) stored += DecodeBuffered(*buffered, bytes + stored, count - stored);
      if (stored == count) break;
      const Group group = ReadGroup(*m_source);
      if (group.m_iBytes == iBLOCK && count - stored >= iBLOCK) {
        StoreBlock(group.m_uBits, bytes + stored);
        stored += iBLOCK;
        continue;
      }
      if (Keep(group.m_uBits, group.m_iBytes) == 0) return stored != 0 ? stored : -1;
    }
    do bytes[stored++] = NextDecoded();
    while (m_iNumDecodedBytes != 0 && stored < count);
  }
  return stored;
}

int Base64DecoderStream::Read() {
  if (m_iNumDecodedBytes == 0 && DecodeNextBlock() == 0) return -1;
  return NextDecoded();
}

inline unsigned char Base64DecoderStream::NextDecoded() {
  OXA_ASSERT(0 < m_iNumDecodedBytes && 4 > m_iNumDecodedBytes);
  --m_iNumDecodedBytes;
  OXA_ASSERT(0 <= m_iDecodeIndex && m_iDecodeIndex < 4);
  return m_decoded[m_iDecodeIndex++];
}

// Not three quarters of the product: that overflows where a source tells that it has no end.
unsigned long long Base64DecoderStream::AvailableBytes() {
  const unsigned long long below = m_source->AvailableBytes();
  return below / 4 * 3 + below % 4 * 3 / 4 + static_cast<unsigned long long>(m_iNumDecodedBytes);
}

void Base64DecoderStream::DoBufferedInputInvalidation() {
  m_iNumDecodedBytes = 0;
  m_iDecodeIndex = 0;
}

int Base64DecoderStream::DecodeNextBlock() {
  OXA_ASSERT(0 == m_iNumDecodedBytes);
  const Group group = ReadGroup(*m_source);
  return Keep(group.m_uBits, group.m_iBytes);
}

inline int Base64DecoderStream::Keep(unsigned int bits, int bytes) {
  StoreBlock(bits, m_decoded);
  m_iDecodeIndex = 0;
  m_iNumDecodedBytes = bytes;
  OXA_ASSERT(0 <= m_iNumDecodedBytes && 4 > m_iNumDecodedBytes);
  return m_iNumDecodedBytes;
}

}  // namespace Oxa::Core
