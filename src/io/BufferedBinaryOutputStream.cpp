#include <Infrastructure/OxaCore/io/BufferedStreams.h>

#include "io/StreamPassage.h"
#include "io/ValueCopy.h"

namespace Oxa::Core {

const unsigned long long BufferedBinaryOutputStream::DEFAULT_BUFFER_SIZE;

BufferedBinaryOutputStream::BufferedBinaryOutputStream(BinaryOutputStream& sink,
                                                       unsigned long long bufferSize)
    : BinaryOutputStreamFilter(sink), m_buffer(new unsigned char[bufferSize]), m_bufferSize(bufferSize) {}

BufferedBinaryOutputStream::~BufferedBinaryOutputStream() = default;

// Begins with a line of the cache, as single reads do.
[[gnu::aligned(64)]] void BufferedBinaryOutputStream::Write(unsigned char byte) {
  const bool written = StreamPassage::Pass(m_mutex, [this, byte] {
    if (m_fill >= m_bufferSize) return false;
    Put(byte);
    return true;
  });
  if (!written) WriteLocked(byte);
}

void BufferedBinaryOutputStream::WriteLocked(unsigned char byte) {
  const Lock lock(m_mutex);
  if (m_fill >= m_bufferSize) DoOutputBufferFlush();
  if (m_bufferSize == 0) return m_sink->Write(byte);
  Put(byte);
}

void BufferedBinaryOutputStream::Write(const void* buffer, unsigned long long count) {
  if (count == 0) return;
  {
    const StreamPassage passage(m_mutex);
    if (passage && count < m_bufferSize - m_fill) return Put(buffer, count);
  }
  WriteLocked(buffer, count);
}

void BufferedBinaryOutputStream::WriteLocked(const void* buffer, unsigned long long count) {
  const Lock lock(m_mutex);
  if (count < m_bufferSize) {
    if (count >= m_bufferSize - m_fill) DoOutputBufferFlush();
    Put(buffer, count);
  } else {
    DoOutputBufferFlush();
    m_sink->Write(buffer, count);
  }
}

inline void BufferedBinaryOutputStream::Put(unsigned char byte) {
  const unsigned long long at = m_fill;
  m_buffer.get()[at] = byte;
  m_fill = at + 1;
}

inline void BufferedBinaryOutputStream::Put(const void* from, unsigned long long count) {
  CopyValues(m_buffer.get() + m_fill, from, count);
  m_fill += count;
}

void BufferedBinaryOutputStream::Flush() {
  const Lock lock(m_mutex);
  DoOutputBufferFlush();
  m_sink->Flush();
}

void BufferedBinaryOutputStream::AcquireWriteLocks(LockSet& locks) { AddLock(locks, m_mutex); }

// The lock is held already by whoever calls this.
void BufferedBinaryOutputStream::DoOutputBufferFlush() {
  if (m_fill == 0) return;
  m_sink->Write(m_buffer.get(), m_fill);
  m_fill = 0;
}

}  // namespace Oxa::Core
