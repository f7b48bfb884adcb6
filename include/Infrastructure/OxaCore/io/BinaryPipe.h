// A pipe between the threads of one process: what one writes another reads, through a ring of bytes.
//
// Each side has a time-out of its own. A time-out of exactly 0 is the non-blocking mode of that side; for ever is
// IMutex::sINFINITE; whole milliseconds count. A wait looks at the ring once when it is over, for whatever reason:
// if nothing has changed there it counts as a time-out. That may come early: the pipe wakes the waiters that it has
// counted, those whose time was over stay counted until somebody has woken them in vain, and among several readers
// or writers another one may have been quicker. So who shares a side of a pipe, or goes on after a time-out, is
// ready for IOTimeout before its time. A wait of a millisecond or more begins with a spin of up to 100 microseconds,
// as long as such spins pay, and adds it to the time-out.
//
// Thread safety: any thread may use any operation, and there may be any number of readers and writers; nothing is
// promised of who is served first. What one call writes or reads is not kept together where it has to wait. All
// threads must have left a pipe before it is destroyed.
// Failures: IOTimeout and IOWriteToClosedPipe under "Oxa.Core.BinaryPipe.Read", ".Write" and ".Skip", raised without
// a lock held. The pipe can be used afterwards. Raises can return: a read then gives -1 and Skip gives false.
//
//   BinaryPipe pipe(BinaryPipe::DEFAULT_BUFFER_SIZE, Elapse(2), IMutex::sINFINITE);
//   ...
//   pipe.Write(samples, size);                         // the acquisition's thread
//   pipe.Close();
//   ...
//   while ((got = pipe.Read(block, sizeof block)) > 0) // the recorder's thread
//     Keep(block, got);
#ifndef INFRASTRUCTURE_OXACORE_IO_BINARYPIPE_H
#define INFRASTRUCTURE_OXACORE_IO_BINARYPIPE_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/Semaphore.h>
#include <Infrastructure/OxaCore/Time.h>
#include <Infrastructure/OxaCore/io/BinaryStreams.h>

#include <atomic>
#include <boost/shared_array.hpp>
#include <memory>

namespace Oxa::Core {

/// Both ends of a pipe.
class OXACORE_API BinaryPipe : public BinaryOutputStream, public BinaryInputStream {
 public:
  /// Bytes.
  static constexpr unsigned long long DEFAULT_BUFFER_SIZE = 2048;

  /// An open, empty pipe for `bufferSize` bytes at a time; 0 stands for DEFAULT_BUFFER_SIZE. std::bad_alloc passes.
  BinaryPipe(unsigned long long bufferSize, const Elapse& readTimeout, const Elapse& writeTimeout);
  BinaryPipe(const BinaryPipe&) = delete;
  BinaryPipe& operator=(const BinaryPipe&) = delete;

  /// Doesn't close the pipe.
  ~BinaryPipe() override;

  /// For the waits that begin from now on. Takes no lock.
  void SetReadTimeout(const Elapse& timeout);
  void SetWriteTimeout(const Elapse& timeout);

  /// Take no lock: old when told, where another thread opens or closes.
  bool IsOpen() const;
  bool IsClosed() const;

  /// Opens a closed pipe anew, and throws away what was left in it. An open one stays as it is. Always true.
  bool Open();

  /// Ends the stream: what is in the ring stays readable, waiting readers come out. So do waiting writers, with a
  /// warning; this call waits for them, in steps of 100 milliseconds, up to 10 seconds. It raises nothing.
  void Close() override;

  /// The bytes in the ring.
  unsigned long long AvailableBytes() override;

  /// The next byte; -1 once the pipe is closed and empty; -2 from an empty one in non-blocking mode. Raises IOTimeout
  /// ("1 byte").
  int Read() override;

  /// Stays until all `count` bytes are in `buffer`, or a time-out, the close, or an empty ring in non-blocking mode
  /// ends it with fewer, and gives their number. With none so far -1, -2 or IOTimeout ("<count> bytes"), as above.
  /// A `count` below 1 gives 0 at once.
  long long Read(void* buffer, long long count) override;

  /// Throws `count` bytes away and gives true, or false if the pipe is closed before that. Unlike Read it raises
  /// IOTimeout in non-blocking mode, too ("<count> bytes, non-blocking read mode"), and wherever it has got to
  /// ("<count> bytes").
  bool Skip(unsigned long long count) override;

  /// Raises IOWriteToClosedPipe on a closed pipe, and IOTimeout ("1 byte", or "1 byte, non-blocking write mode") on a
  /// full one. If the pipe is closed during the wait it comes back with nothing but the warning
  /// IOPendingWriteToPipeAborted.
  void Write(unsigned char byte) override;

  /// As above, for `count` bytes, which go in as room comes; what has gone in stays there in all these cases, and the
  /// information tells how many ("<count> bytes, <sent> bytes sent", and ", non-blocking mode").
  void Write(const void* buffer, unsigned long long count) override;

  /// Does nothing: the reader has got it all.
  void Flush() override;

 private:
  enum class EEnd { eALL, eWOULD_BLOCK, eTIMEOUT, eCLOSED, eABORTED };
  class Hold;
  struct SpinBudgets;

  EEnd Take(unsigned char* target, unsigned long long count, unsigned long long& taken);
  EEnd AwaitBytes(Hold& hold, unsigned long long wanted);
  unsigned long long TransferBytes(unsigned char* target, unsigned long long count);
  EEnd Put(const unsigned char* bytes, unsigned long long count, unsigned long long& sent);
  EEnd AwaitRoom(Hold& hold, unsigned long long left);
  unsigned long long StoreBytes(const unsigned char* bytes, unsigned long long count);
  bool WritesArePending();
  unsigned long long Count() const { return m_count.load(std::memory_order_relaxed); }
  void SetCount(unsigned long long count) { m_count.store(count, std::memory_order_relaxed); }

  Mutex m_mutex;  // guards all below but gates and time-outs
  boost::shared_array<unsigned char> m_buffer;
  unsigned long long m_bufferSize;
  unsigned long long m_readIndex;
  unsigned long long m_writeIndex;
  std::atomic<unsigned long long> m_count;  // bytes in the ring
  unsigned long long m_pendingWriteBytes;   // in the hands of writers that wait
  int m_waitingReaders;                     // that nobody has posted for yet, with those whose time was over
  int m_waitingWriters;
  std::atomic<bool> m_closed;
  Semaphore m_writersGate;  // where writers wait for room
  Semaphore m_readersGate;  // where readers wait for bytes
  std::atomic<Elapse> m_writeTimeout;
  std::atomic<Elapse> m_readTimeout;
  const std::unique_ptr<SpinBudgets> m_spins;
};

}  // namespace Oxa::Core

#endif
