// Streams of bytes: the two interfaces that every source and sink offers, and the filters that are stacked on them.
//
// Results of reading, everywhere: a single byte is 0 to 255; a block is the number of bytes delivered, 0 for a
// count below 1; -1 is the end of the stream; -2 is "no data now" of a stream that doesn't wait. Both are results
// and no errors.
//
// A filter holds nothing but a reference to the stream below, which must outlive its use, and registers itself
// there as a listener. So a stream knows what is stacked on it: before a source moves its position, or a sink must
// reach a defined state, it has the whole stack drop or write out what is buffered, outermost filter first. Each
// layer that has a lock adds it to a set, and the whole stack stands still until the caller lets go of that set.
// What a filter raises in that moment is told as a ListenerErrorOnNotification and stops nobody.
//
// Thread safety: the interfaces and the forwarding filters take no lock of their own; each class that can be shared
// says so. Stacks are built and taken apart while nobody uses them. Failures: IOErrors (IOErrors.h) of the stream
// that meets them rise to the caller; two places turn them into warnings, see the base Read and the filters' Close.
//
//   BufferedBinaryOutputStream buffered(file, BufferedBinaryOutputStream::DEFAULT_BUFFER_SIZE);
//   buffered.Write(block, size);
//   buffered.Close();  // writes out what is buffered, and closes the file
#ifndef INFRASTRUCTURE_OXACORE_IO_BINARYSTREAMS_H
#define INFRASTRUCTURE_OXACORE_IO_BINARYSTREAMS_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/Notifications.h>

#include <boost/shared_ptr.hpp>
#include <set>

namespace Oxa::Core {

/// Held locks, handed around; emptying it releases them.
using LockSet = std::set<boost::shared_ptr<Lock>>;

/// For the streams' AcquireReadLocks and AcquireWriteLocks: locks `mutex`, however long that takes, and puts the
/// lock into `locks`.
OXACORE_API void AddLock(LockSet& locks, const IMutex& mutex);

/// A source of bytes.
class OXACORE_API BinaryInputStream {
 public:
  class Listener;
  class InvalidateBufferedInputEvent;

  /// A reader of this stream in the manner of a source of Boost.Iostreams; see StreamAdapters.h.
  template <class Char>
  class Source;

  BinaryInputStream();
  BinaryInputStream(const BinaryInputStream&) = delete;
  BinaryInputStream& operator=(const BinaryInputStream&) = delete;
  virtual ~BinaryInputStream();

  /// Does nothing here.
  virtual void Close();

  /// Reads up to `count` bytes to `buffer` and gives their number; 0 for a count below 1; -1 or -2 if no byte came.
  /// Here it calls Read() until it has enough or gets one of those two. An IOError on the way becomes the warning
  /// IOErrorDuringRead ("Oxa.Core.BinaryInputStream"), and what has come so far, maybe 0, is the result.
  virtual long long Read(void* buffer, long long count);

  /// One byte, -1 or -2.
  virtual int Read() = 0;

  /// Passes over `count` bytes; false if the stream ends, or has no more data now, before.
  virtual bool Skip(unsigned long long count);

  /// How many bytes can be read at this moment.
  virtual unsigned long long AvailableBytes() = 0;

  /// Adds the lock that guards this stream's reading side to `locks`; a stream without one adds nothing.
  virtual void AcquireReadLocks(LockSet& locks);

  /// Has all that is stacked on this stream drop what it has read ahead. `locks` is emptied first, and holds the
  /// locks of the whole stack, this stream's included, when this returns.
  void InvalidateAllBufferedInput(LockSet& locks);

 private:
  friend class BinaryInputStreamFilter;

  void AddListener(Listener& listener);
  void RemoveListener(Listener& listener);
  void TellListeners(LockSet& locks);

  NotificationSupport m_listeners;  // the filters stacked on this stream
};

/// What is stacked on a source.
class OXACORE_API BinaryInputStream::Listener : public NotificationListener {
 public:
  /// Drop what is buffered, and add the lock to `locks`: the source is about to move.
  virtual void InvalidateBufferedInput(LockSet& locks) = 0;

  ~Listener() override;
};

/// Tells each BinaryInputStream::Listener to invalidate. Lives on the stack of the broadcasting call.
class OXACORE_API BinaryInputStream::InvalidateBufferedInputEvent : public Notification {
 public:
  /// `locks` must outlive this.
  explicit InvalidateBufferedInputEvent(LockSet& locks);

  /// Has `listener` invalidate, if it is one that can; what that raises passes.
  void Notify(NotificationListener& listener) override;

 private:
  LockSet* m_locks;
};

/// A sink of bytes.
class OXACORE_API BinaryOutputStream {
 public:
  class Listener;
  class FlushBufferedOutputEvent;

  /// A writer to this stream in the manner of a sink of Boost.Iostreams; see StreamAdapters.h.
  template <class Char>
  class Sink;

  BinaryOutputStream();
  BinaryOutputStream(const BinaryOutputStream&) = delete;
  BinaryOutputStream& operator=(const BinaryOutputStream&) = delete;
  virtual ~BinaryOutputStream();

  /// Does nothing here.
  virtual void Close();

  /// Writes `count` bytes. Here one by one, by Write(byte); what that raises passes, and the rest isn't written.
  virtual void Write(const void* buffer, unsigned long long count);

  /// Writes one byte.
  virtual void Write(unsigned char byte) = 0;

  /// Hands on all that waits in a buffer.
  virtual void Flush() = 0;

  /// Adds the lock that guards this stream's writing side to `locks`; a stream without one adds nothing.
  virtual void AcquireWriteLocks(LockSet& locks);

  /// Has all that is stacked on this stream write out what it holds, and flushes this stream. `locks` is emptied
  /// first, and holds the locks of the whole stack, this stream's included, when this returns. What this stream's
  /// own Flush raises passes.
  void FlushAllBufferedOutput(LockSet& locks);

 private:
  friend class BinaryOutputStreamFilter;

  void AddListener(Listener& listener);
  void RemoveListener(Listener& listener);
  void TellListeners(LockSet& locks);

  NotificationSupport m_listeners;  // the filters stacked on this stream
};

/// What is stacked on a sink.
class OXACORE_API BinaryOutputStream::Listener : public NotificationListener {
 public:
  /// Write out what is buffered, and add the lock to `locks`: the sink is about to move.
  virtual void FlushBufferedOutput(LockSet& locks) = 0;

  ~Listener() override;
};

/// Tells each BinaryOutputStream::Listener to write out. Lives on the stack of the broadcasting call.
class OXACORE_API BinaryOutputStream::FlushBufferedOutputEvent : public Notification {
 public:
  /// `locks` must outlive this.
  explicit FlushBufferedOutputEvent(LockSet& locks);

  /// Has `listener` write out, if it is one that can; what that raises passes.
  void Notify(NotificationListener& listener) override;

 private:
  LockSet* m_locks;
};

/// Base of what is stacked on a source: forwards everything to it. Not closed by its destructor. To stack one on
/// another of the very same class, hand that over as a BinaryInputStream&, or it would mean a copy.
class OXACORE_API BinaryInputStreamFilter : public BinaryInputStream, protected BinaryInputStream::Listener {
 public:
  /// `source` must outlive the use of this filter, though not the filter; it isn't owned.
  explicit BinaryInputStreamFilter(BinaryInputStream& source);
  ~BinaryInputStreamFilter() override;

  /// Closes the source.
  void Close() override;

  long long Read(void* buffer, long long count) override;
  int Read() override;
  bool Skip(unsigned long long count) override;
  unsigned long long AvailableBytes() override;

 protected:
  /// The filters stacked on this one first, then this one's lock, then its DoBufferedInputInvalidation.
  void InvalidateBufferedInput(LockSet& locks) override;

  /// Drops what is buffered. Called with this filter's lock taken, by the thread that moves the source, which may
  /// be any. Does nothing here.
  virtual void DoBufferedInputInvalidation();

  BinaryInputStream* m_source;  ///< the stream below; not owned
};

/// Base of what is stacked on a sink: forwards everything to it. Neither flushed nor closed by its destructor. To
/// stack one on another of the very same class, hand that over as a BinaryOutputStream&, or it would mean a copy.
class OXACORE_API BinaryOutputStreamFilter : public BinaryOutputStream,
                                             protected BinaryOutputStream::Listener {
 public:
  /// `sink` must outlive the use of this filter, though not the filter; it isn't owned.
  explicit BinaryOutputStreamFilter(BinaryOutputStream& sink);
  ~BinaryOutputStreamFilter() override;

  /// Flushes this filter and closes the sink. An IOError of the flush becomes the warning IOErrorDuringFlush
  /// ("Oxa.Core.BinaryOutputStreamFilter"); anything else passes, and leaves the sink open.
  void Close() override;

  void Write(const void* buffer, unsigned long long count) override;
  void Write(unsigned char byte) override;
  void Flush() override;

 protected:
  /// The filters stacked on this one first, then this one's lock, then its DoOutputBufferFlush.
  void FlushBufferedOutput(LockSet& locks) override;

  /// Hands what is buffered to the sink. Called with this filter's lock taken, by the thread that moves the sink,
  /// which may be any. Does nothing here.
  virtual void DoOutputBufferFlush();

  BinaryOutputStream* m_sink;  ///< the stream below; not owned
};

}  // namespace Oxa::Core

#endif
