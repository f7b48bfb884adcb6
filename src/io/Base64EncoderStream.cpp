#include <Infrastructure/OxaCore/io/Base64Streams.h>

#include <array>
#include <boost/endian/conversion.hpp>
#include <cstdint>
#include <cstring>
#include <limits>
#include <typeinfo>

#include "Platform/Faults.h"
#include "io/BufferWindows.h"

namespace Oxa::Core {

namespace {

constexpr char sALPHABET[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint32_t uPAD = '=';
constexpr int iBLOCK = 3;  // bytes of a group, and the characters that they become
constexpr int iGROUP = 4;
constexpr unsigned long long ullWORTH_ASKING = 16;  // bytes from which on it pays to look what the sink is

using Pairs = std::array<std::uint16_t, 4096>;

// The characters of twelve bits, the first one in the low bits.
constexpr Pairs MakePairs() {
  Pairs pairs{};
  for (unsigned bits = 0; bits != pairs.size(); ++bits) {
    const unsigned first = static_cast<unsigned char>(sALPHABET[bits >> 6]);
    const unsigned second = static_cast<unsigned char>(sALPHABET[bits & 0x3F]);
    pairs[bits] = static_cast<std::uint16_t>(first | second << 8);
  }
  return pairs;
}

constexpr Pairs s_pairs = MakePairs();

// The characters of three bytes, the first one in the low bits.
std::uint32_t WholeGroup(const unsigned char* bytes) {
  const unsigned bits = unsigned{bytes[0]} << 16 | unsigned{bytes[1]} << 8 | bytes[2];
  return s_pairs[bits >> 12] | std::uint32_t{s_pairs[bits & 0xFFF]} << 16;
}

// Encodes to the buffer of `sink` as far as that goes without it being written out, but stops at the group that
// begins at or before `last`. Gives where.
const unsigned char* EncodeBuffered(BufferedBinaryOutputStream& sink, const unsigned char* next,
                                    const unsigned char* last) {
  OutputWindow window(sink);
  unsigned char* to = window.Begin();
  for (; last - next >= iBLOCK && window.End() - to > iGROUP; to += iGROUP) {
    boost::endian::store_little_u32(to, WholeGroup(next));
    next += iBLOCK;
  }
  window.WrittenUpTo(to);
  return next;
}

}  // namespace

Base64EncoderStream::Base64EncoderStream(BinaryOutputStream& sink, bool insertNewlines, int lineLength,
                                         const std::string& lineSeparator)
    : BinaryOutputStreamFilter(sink),
      m_block{},
      m_bInsertNewlines(insertNewlines),
      m_lineSeparator(lineSeparator),
      m_iBlockSize(0),
      m_iLineLength(lineLength),
      m_iLineCount(0) {}

Base64EncoderStream::~Base64EncoderStream() {
  if (m_iBlockSize == 0) return;
  try {
    EncodeDataBlock();
  } catch (...) {
    Platform::LetCancellationPass();
  }
}

void Base64EncoderStream::InsertNewlines(bool insertNewlines, int lineLength,
                                         const std::string& lineSeparator) {
  m_lineSeparator = lineSeparator;  // first, since it can fail
  m_bInsertNewlines = insertNewlines;
  m_iLineLength = lineLength;
}

// A derived class sees each byte, by the way of the base's base; nobody can tell whether this one does.
void Base64EncoderStream::Write(const void* buffer, unsigned long long count) {
  if (typeid(*this) != typeid(Base64EncoderStream)) {
    return BinaryOutputStream::Write(buffer, count);  // NOLINT(bugprone-parent-virtual-call)
  }
  auto* const buffered = count < ullWORTH_ASKING ? nullptr : Exactly<BufferedBinaryOutputStream>(*m_sink);
  const unsigned char* const end = static_cast<const unsigned char*>(buffer) + count;
  for (const unsigned char* next = end - count; next != end;) {
    if (m_iBlockSize != 0 || end - next < iBLOCK) {
      Base64EncoderStream::Write(*next++);
      continue;
    }
    if (buffered != nullptr && !m_bInsertNewlines) next = EncodeBuffered(*buffered, next, end - iBLOCK);
    const std::uint32_t group = WholeGroup(next);
    std::memcpy(m_block, next, iBLOCK);
    next += iBLOCK;
    PutGroup(group);
  }
}

void Base64EncoderStream::Write(unsigned char byte) {
  m_block[m_iBlockSize++] = byte;
  if (m_iBlockSize != iBLOCK) return;
  m_iBlockSize = 0;
  PutGroup(WholeGroup(m_block));
}

void Base64EncoderStream::Flush() {
  if (m_iBlockSize == 0) return;
  for (int index = m_iBlockSize; index < iBLOCK; ++index) m_block[index] = 0;
  EncodeDataBlock();
  m_sink->Flush();
}

// Of one or two bytes; what stands behind them gives bits, too.
void Base64EncoderStream::EncodeDataBlock() {
  const std::uint32_t pads = m_iBlockSize == 1 ? uPAD << 16 | uPAD << 24 : uPAD << 24;
  const std::uint32_t kept = m_iBlockSize == 1 ? 0x0000FFFF : 0x00FFFFFF;
  m_iBlockSize = 0;
  PutGroup((WholeGroup(m_block) & kept) | pads);
}

// The group counts as written before the sink is asked: what that raises loses it, and it doesn't come again. Its
// characters are stored at once, since a sink loads them so and would have to wait for single ones.
inline void Base64EncoderStream::PutGroup(unsigned int characters) {
  unsigned char group[iGROUP];
  boost::endian::store_little_u32(group, characters);
  m_sink->Write(group, iGROUP);
  if (m_bInsertNewlines) CountLine();
}

// Deliberately "at least": a separator behind every group, or none at all. The count stops before it overflows, or
// a negative one would bring a separator after two thousand million characters.
void Base64EncoderStream::CountLine() {
  if (m_iLineCount <= std::numeric_limits<int>::max() - iGROUP) m_iLineCount += iGROUP;
  if (m_iLineLength < m_iLineCount) return;
  m_sink->Write(m_lineSeparator.data(), m_lineSeparator.size());
  m_iLineCount = 0;
}

}  // namespace Oxa::Core
