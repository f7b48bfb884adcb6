#include <Infrastructure/OxaCore/io/Base64Streams.h>

#include <boost/endian/conversion.hpp>
#include <cstring>
#include <limits>
#include <typeinfo>

#include "Platform/Faults.h"

namespace Oxa::Core {

namespace {

constexpr char sALPHABET[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";
constexpr unsigned uPAD = sALPHABET[64];
constexpr int iBLOCK = 3;  // bytes of a group, and the characters that they become
constexpr int iGROUP = 4;

unsigned Encoded(unsigned bits) { return static_cast<unsigned char>(sALPHABET[bits & 0x3F]); }

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

// A derived class sees each byte; nobody can tell whether this one does.
void Base64EncoderStream::Write(const void* buffer, unsigned long long count) {
  if (typeid(*this) != typeid(Base64EncoderStream)) return BinaryOutputStream::Write(buffer, count);
  const unsigned char* const end = static_cast<const unsigned char*>(buffer) + count;
  for (const unsigned char* next = end - count; next != end;) {
    if (m_iBlockSize == 0 && end - next >= iBLOCK) {
      std::memcpy(m_block, next, iBLOCK);
      m_iBlockSize = iBLOCK;
      next += iBLOCK;
      EncodeDataBlock();
    } else {
      Base64EncoderStream::Write(*next++);
    }
  }
}

void Base64EncoderStream::Write(unsigned char byte) {
  m_block[m_iBlockSize++] = byte;
  if (m_iBlockSize == iBLOCK) EncodeDataBlock();
}

void Base64EncoderStream::Flush() {
  if (m_iBlockSize == 0) return;
  for (int index = m_iBlockSize; index < iBLOCK; ++index) m_block[index] = 0;
  EncodeDataBlock();
  m_sink->Flush();
}

// The group counts as written before the sink is asked: what that raises loses it, and doesn't come again. Its
// characters are stored at once, since a sink loads them so and would have to wait for single ones.
void Base64EncoderStream::EncodeDataBlock() {
  const unsigned bits = unsigned{m_block[0]} << 16 | unsigned{m_block[1]} << 8 | m_block[2];
  const unsigned third = m_iBlockSize > 1 ? Encoded(bits >> 6) : uPAD;
  const unsigned fourth = m_iBlockSize > 2 ? Encoded(bits) : uPAD;
  unsigned char group[iGROUP];
  boost::endian::store_little_u32(
      group, Encoded(bits >> 18) | Encoded(bits >> 12) << 8 | third << 16 | fourth << 24);
  m_iBlockSize = 0;
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
