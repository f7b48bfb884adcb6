#include <Infrastructure/OxaCore/io/Base64Streams.h>

#include <Infrastructure/OxaCore/Assert.h>

#include <array>

namespace Oxa::Core {

namespace {

constexpr char sALPHABET[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";
constexpr unsigned char cPAD = 64;    // its place in the alphabet
constexpr unsigned char cSKIP = 255;  // not in the alphabet
constexpr unsigned uLAST_BYTE = 255;  // this one alone counts as the first letter
constexpr int iGROUP = 4;

constexpr std::array<unsigned char, 256> MakeTable() {
  std::array<unsigned char, 256> table{};
  for (unsigned char& value : table) value = cSKIP;
  for (unsigned char value = 0; value <= cPAD; ++value)
    table[static_cast<unsigned char>(sALPHABET[value])] = value;
  table[uLAST_BYTE] = 0;
  return table;
}

constexpr std::array<unsigned char, 256> s_table = MakeTable();

}  // namespace

Base64DecoderStream::Base64DecoderStream(BinaryInputStream& source)
    : BinaryInputStreamFilter(source), m_decoded{}, m_iNumDecodedBytes(0), m_iDecodeIndex(0) {}

Base64DecoderStream::~Base64DecoderStream() = default;

long long Base64DecoderStream::Read(void* buffer, long long count) {
  return BinaryInputStream::Read(buffer, count);
}

int Base64DecoderStream::Read() {
  if (m_iNumDecodedBytes == 0 && DecodeNextBlock() == 0) return -1;
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
  m_iDecodeIndex = 0;
  unsigned group[iGROUP] = {};
  int valid = 0;
  for (int count = 0; count < iGROUP;) {
    const int character = m_source->Read();
    if (character < 0) break;
    const unsigned char value = s_table[static_cast<unsigned char>(character)];
    if (value == cSKIP) continue;
    if (value != cPAD) {
      group[count] = value;
      ++valid;
    }
    ++count;
  }
  const unsigned bits = group[0] << 18 | group[1] << 12 | group[2] << 6 | group[3];
  m_decoded[0] = static_cast<unsigned char>(bits >> 16);
  m_decoded[1] = static_cast<unsigned char>(bits >> 8);
  m_decoded[2] = static_cast<unsigned char>(bits);
  if (valid > 0) m_iNumDecodedBytes = valid < 3 ? 1 : valid - 1;
  OXA_ASSERT(0 <= m_iNumDecodedBytes && 4 > m_iNumDecodedBytes);
  return m_iNumDecodedBytes;
}

}  // namespace Oxa::Core
