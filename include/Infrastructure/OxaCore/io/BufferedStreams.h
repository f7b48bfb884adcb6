// Buffered streams: filters between a user who reads and writes in small pieces and a stream that is better called
// seldom. Blocks of at least the buffer's size go past the buffer without a copy.
//
// Both take part in what BinaryStreams.h tells: the buffer is dropped or written out before the stream below moves.
// Neither destructor flushes: what was not flushed or closed is lost.
//
// Thread safety: threads may share one; each call is whole. The stream below is called with the lock of the filter
// held, so that lock comes before those of the streams beneath. Locks without a time limit throughout.
// Failures: what the stream below raises passes unchanged; what had been copied stays copied.
//
//   BufferedBinaryInputStream in(file, BufferedBinaryInputStream::DEFAULT_BUFFER_SIZE);
//   for (int byte = in.Read(); byte >= 0; byte = in.Read()) Use(byte);
#ifndef INFRASTRUCTURE_OXACORE_IO_BUFFEREDSTREAMS_H
#define INFRASTRUCTURE_OXACORE_IO_BUFFEREDSTREAMS_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/io/BinaryStreams.h>
#include <Infrastructure/OxaCore/io/StreamMutex.h>

#include <boost/shared_array.hpp>

namespace Oxa::Core {

/// Reads ahead from a source.
class OXACORE_API BufferedBinaryInputStream : public BinaryInputStreamFilter {
 public:
  /// Bytes.
  static const unsigned long long DEFAULT_BUFFER_SIZE = 2048;

  /// A size of 0 is not corrected: nothing is buffered then. Throws std::bad_alloc without memory for the buffer.
  BufferedBinaryInputStream(BinaryInputStream& source, unsigned long long bufferSize);
  ~BufferedBinaryInputStream() override;

  /// From the buffer, if that holds `count` bytes. An empty buffer: straight from the source, and then the buffer
  /// is filled anew, so that a source that waits may wait twice. A buffer with less: what it holds and, straight
  /// from the source, as much of the rest as comes at once. -1 and -2 of the source only if no byte came.
  long long Read(void* buffer, long long count) override;

  /// -1 whenever the source gives no byte, also where it only has none now.
  int Read() override;

  /// In the buffer, and for what goes beyond it in the source; there `false` leaves the buffer as it is. An emptied
  /// buffer is filled anew.
  bool Skip(unsigned long long count) override;

  /// Those in the buffer and those of the source.
  unsigned long long AvailableBytes() override;

  /// Adds the lock that all calls take, with no limit of the wait.
  void AcquireReadLocks(LockSet& locks) override;

 protected:
  /// Only for the moves of the source; what else empties the buffer doesn't call this. The lock is held.
  void DoBufferedInputInvalidation() override;

  /// Reads the source to the begin of the buffer and gives the result, of which 0 and above become what the buffer
  /// holds. The lock is held, and the buffer is empty.
  long long FillBuffer();

 private:
  friend class InputWindow;

  unsigned long long Left() const { return m_dataSize - m_readIndex; }
  bool TakeAll(void* to, long long count);
  void Take(void* to, unsigned long long count);
  int ReadLocked();
  long long ReadLocked(void* buffer, long long count);
  long long ReadBeyond(unsigned char* to, long long count);
  void Drop();
  void Refill();

  StreamMutex m_mutex;  // guards all the others
  boost::shared_array<unsigned char> m_buffer;
  unsigned long long m_bufferSize;
  unsigned long long m_dataSize = 0;   // bytes of the buffer that hold data
  unsigned long long m_readIndex = 0;  // the next one to deliver
};

/// Collects what is written, and hands it to a sink in larger pieces.
class OXACORE_API BufferedBinaryOutputStream : public BinaryOutputStreamFilter {
 public:
  /// Bytes.
  static const unsigned long long DEFAULT_BUFFER_SIZE = 512;

  /// A size of 0 is not corrected: nothing is buffered then. Throws std::bad_alloc without memory for the buffer.
  BufferedBinaryOutputStream(BinaryOutputStream& sink, unsigned long long bufferSize);
  ~BufferedBinaryOutputStream() override;

  /// A block that would fill the buffer, or more, has it written out first. One of at least the buffer's size goes
  /// straight to the sink. If writing out raises, the buffer keeps what it held and nothing of the block is taken.
  void Write(const void* buffer, unsigned long long count) override;

  /// A full buffer is written out first.
  void Write(unsigned char byte) override;

  /// Writes out the buffer, and flushes the sink.
  void Flush() override;

  /// Adds the lock that all calls take, with no limit of the wait.
  void AcquireWriteLocks(LockSet& locks) override;

 protected:
  /// Writes out the buffer, which is empty then, or as it was if that raises. Doesn't flush the sink. The lock is held.
  void DoOutputBufferFlush() override;

 private:
  friend class OutputWindow;

  void Put(const void* from, unsigned long long count);
  void Put(unsigned char byte);
  void WriteLocked(const void* buffer, unsigned long long count);
  void WriteLocked(unsigned char byte);

  StreamMutex m_mutex;  // guards all the others
  boost::shared_array<unsigned char> m_buffer;
  unsigned long long m_bufferSize;
  unsigned long long m_fill = 0;  // bytes that wait in the buffer
};

}  // namespace Oxa::Core

#endif
