// The buffers of buffered streams, for filters of ours that go through one byte by byte or group by group: with its
// lock taken once, and without a call for each. What is done here can't be told from as many single reads of what
// the buffer holds, or from as many writes of blocks that leave room in it; the stream below isn't touched.
#ifndef OXACORE_IO_BUFFERWINDOWS_H
#define OXACORE_IO_BUFFERWINDOWS_H

#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/io/BufferedStreams.h>

#include <typeinfo>

namespace Oxa::Core {

/// `stream` if it is a `Buffered` and not of a class derived from that, which would want to see each call; or null.
template <class Buffered, class Stream>
Buffered* Exactly(Stream& stream) {
  return typeid(stream) == typeid(Buffered) ? static_cast<Buffered*>(&stream) : nullptr;
}

/// What can be read without the source.
class InputWindow {
 public:
  explicit InputWindow(BufferedBinaryInputStream& stream) : m_lock(stream.m_mutex), m_stream(stream) {}

  const unsigned char* Begin() const { return m_stream.m_buffer.get() + m_stream.m_readIndex; }
  const unsigned char* End() const { return m_stream.m_buffer.get() + m_stream.m_dataSize; }

  /// What stands before `next`, which is in the window, counts as read.
  void ReadUpTo(const unsigned char* next) {
    m_stream.m_readIndex = static_cast<unsigned long long>(next - m_stream.m_buffer.get());
  }

 private:
  const Lock m_lock;
  BufferedBinaryInputStream& m_stream;
};

/// Where can be written without the sink, as long as at least one byte stays free.
class OutputWindow {
 public:
  explicit OutputWindow(BufferedBinaryOutputStream& stream) : m_lock(stream.m_mutex), m_stream(stream) {}

  unsigned char* Begin() const { return m_stream.m_buffer.get() + m_stream.m_fill; }
  unsigned char* End() const { return m_stream.m_buffer.get() + m_stream.m_bufferSize; }

  /// What stands before `next`, which is in the window, counts as written.
  void WrittenUpTo(const unsigned char* next) {
    m_stream.m_fill = static_cast<unsigned long long>(next - m_stream.m_buffer.get());
  }

 private:
  const Lock m_lock;
  BufferedBinaryOutputStream& m_stream;
};

}  // namespace Oxa::Core

#endif
