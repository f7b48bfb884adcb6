#include <Infrastructure/OxaCore/io/BoundedStreams.h>

#include <Infrastructure/OxaCore/io/IOErrors.h>

#include <algorithm>

namespace Oxa::Core {

namespace {

const char* const sOUTPUT_LOG_NAME = "Oxa.Core.BoundedBinaryOutputStream";

}  // namespace

BoundedBinaryInputStream::BoundedBinaryInputStream(BinaryInputStream& source, unsigned long long limit)
    : BinaryInputStreamFilter(source), m_limit(limit) {}

BoundedBinaryInputStream::~BoundedBinaryInputStream() = default;

int BoundedBinaryInputStream::Read() {
  if (m_count >= m_limit) return -1;
  const int byte = m_source->Read();
  if (byte >= 0) ++m_count;
  return byte;
}

long long BoundedBinaryInputStream::Read(void* buffer, long long count) {
  if (m_count == m_limit) return -1;
  const unsigned long long left = m_limit - m_count;
  if (count > 0 && left < static_cast<unsigned long long>(count)) count = static_cast<long long>(left);
  const long long result = m_source->Read(buffer, count);
  if (result > 0) m_count += static_cast<unsigned long long>(result);
  return result;
}

bool BoundedBinaryInputStream::Skip(unsigned long long count) {
  const unsigned long long left = m_limit - m_count;
  if (left < count) {
    m_source->Skip(left);
    return false;
  }
  m_count += count;
  return m_source->Skip(count);
}

unsigned long long BoundedBinaryInputStream::AvailableBytes() {
  return std::min(m_source->AvailableBytes(), m_limit - m_count);
}

BoundedBinaryOutputStream::BoundedBinaryOutputStream(BinaryOutputStream& sink, unsigned long long limit)
    : BinaryOutputStreamFilter(sink), m_limit(limit) {}

BoundedBinaryOutputStream::~BoundedBinaryOutputStream() = default;

void BoundedBinaryOutputStream::Write(unsigned char byte) {
  if (m_count >= m_limit) {
    OXA_RAISE_ERROR(sOUTPUT_LOG_NAME, XIOExceededOutputLimit());
    return;
  }
  m_sink->Write(byte);
  ++m_count;
}

void BoundedBinaryOutputStream::Write(const void* buffer, unsigned long long count) {
  const unsigned long long left = m_limit - m_count;
  const unsigned long long fitting = std::min(left, count);
  if (fitting != 0) {
    m_sink->Write(buffer, fitting);
    m_count += fitting;
  }
  if (fitting == count) return;
  m_sink->Flush();
  OXA_RAISE_ERROR(sOUTPUT_LOG_NAME, XIOExceededOutputLimit());
}

}  // namespace Oxa::Core
