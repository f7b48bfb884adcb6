// Many readers or one writer, reentrant on both sides, with upgrade from reading to writing.
//
// What sets it apart: a thread may take either lock again while it holds either; the writer may also read; a
// reader becomes the writer without giving up its read lock, and two readers that upgrade at once don't
// deadlock; waiting writers go before new readers, while nested reads always pass.
//
// Nobody is served in turn. In particular two writers or more of whom one always waits while another writes keep new
// readers out for as long as they go on: writers that come over and over are to pause between their turns.
//
// Locks are owned by threads: each is given back by the thread that took it, as many times as it took it.
//
// An upgrade by a timed wait that times out leaves the thread's read lock in place but no longer in the way
// of writers: until that thread has given its read lock back and taken it anew, a writer may enter beside it.
// A thread whose TimedWaitWriterLock returned false shall not go on reading under a lock that it held before.
// While WaitWriterLock waits for an upgrade the same holds for its duration: what was read before is to be
// read again once the write lock is held.
//
// The timed forms measure their limit by the wall clock: whoever sets it meanwhile makes the wait longer or
// shorter.
//
// Readers that stand back for a writer wake everybody who waits, and so one another: each looks again, and stands
// back again. With many of them the wait for a writer costs processor time.
//
// An attempt of TryWaitWriterLock, even in vain, closes the shortcut by which readers pass one another for a
// moment. A reader that comes just then may be counted although it has no lock yet: another attempt of that
// moment to write without waiting may be refused with nobody reading. Who waits gets in all the same.
//
// Thread safety: every operation may be called from any thread at any time.
//
// The destructor needs that every other call has returned. Having had the write lock doesn't show that: a
// reader's ReaderUnlock gives the lock away first, and looks at the mutex once more to wake a writer. Join the
// readers, or learn in another way that their calls are over, before the mutex goes.
// Failures: timed and try forms answer false. Misuse is a failed assertion, and nothing is changed then. The
// errors of Condition pass through. A lock that ends by an error is not held, and a writer that an error took
// out of its wait no longer keeps readers waiting. A thread that ends inside a call (or in the logger) leaves the
// monitor behind: the next call that needs it raises "Attempt to acquire lock abandoned", and the ones after that
// work on whatever state the thread left. A thread that ends with a read or write lock holds it for ever.
//
//   ReadersWriterMutex m_rwMutex;  // guards m_table
//   ...
//   ReaderLock reading(m_rwMutex);
//   if (m_table.count(key) == 0) {
//     WriterLock writing(m_rwMutex);  // upgrades; look again, somebody may have been faster
//     m_table.emplace(key, Make(key));
//   }
#ifndef INFRASTRUCTURE_OXACORE_READERSWRITERMUTEX_H
#define INFRASTRUCTURE_OXACORE_READERSWRITERMUTEX_H

#include <Infrastructure/OxaCore/Condition.h>
#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Time.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Oxa::Core {

/// A reentrant, upgradeable lock for many readers or one writer.
class OXACORE_API ReadersWriterMutex {
 public:
  /// Thread id to the number of read locks that the thread holds; never 0.
  using ReaderCounts = std::unordered_map<unsigned long, unsigned long>;

  /// Hears of every step: the writer's thread id and its recursion count (0: nobody writes, whatever the id
  /// says), the readers, how many writers and readers wait, a three-letter code, and a text. It is called
  /// with the monitor held, so it sees one consistent state; it shall be quick, throw nothing, and not use
  /// the mutex.
  using LogFunction = void (*)(const std::pair<unsigned long, unsigned long>& writer,
                               const ReaderCounts& readers, int writersWaiting, int readersWaiting,
                               const char* code, const char* text);

  /// A free mutex. `logger` may be null; it must stay callable until the mutex is destroyed.
  explicit ReadersWriterMutex(LogFunction logger = nullptr);

  ReadersWriterMutex(const ReadersWriterMutex&) = delete;
  ReadersWriterMutex& operator=(const ReadersWriterMutex&) = delete;

  virtual ~ReadersWriterMutex();

  /// Blocks until this thread holds one more read lock. At once if it holds any lock already; but a thread whose
  /// timed upgrade ran out of time waits even so while another one writes.
  void WaitReaderLock();

  /// The same for at most about `timeout`; true when locked.
  bool TimedWaitReaderLock(const Elapse& timeout);

  /// True when locked; never waits for the lock itself. A failure because writers wait, with nobody writing at
  /// that moment, makes them look again.
  bool TryWaitReaderLock();

  /// Gives one read lock of this thread back. Asserts that there is one.
  void ReaderUnlock();

  /// Blocks until this thread holds one more write lock.
  void WaitWriterLock();

  /// The same for at most about `timeout`; true when locked. See above for an upgrade that times out.
  bool TimedWaitWriterLock(const Elapse& timeout);

  /// True when locked; never waits for the lock itself. See above for what may refuse it.
  bool TryWaitWriterLock();

  /// Gives one write lock of this thread back. Asserts that there is one.
  void WriterUnlock();

 private:
  /// Thread id and read recursion count of a thread that holds read locks.
  struct Reader : std::pair<unsigned long, unsigned long> {
    bool m_bActive;  ///< whether it stands in the way of writers; not while it waits to upgrade
  };
  using Readers = std::vector<Reader>;

  /// Keeps the read locks of one thread, taken while no writer was about; see TakeSlot. As long as a line of
  /// cache, so that readers on different cores don't slow one another down.
  struct alignas(16) Slot {
    std::atomic<unsigned long> m_ulThread{0};  ///< 0: free
    unsigned long m_ulCount = 0;               ///< never 0 for long; touched by m_ulThread only
    char m_room[64 - sizeof(std::atomic<unsigned long>) - sizeof(unsigned long)];
  };
  static constexpr std::size_t uSLOTS = 8;

  bool PrivateTryWaitReaderLock(unsigned long threadID);
  bool PrivateTryWaitWriterLock(unsigned long threadID);
  void CallLogger(const char* code, const char* text);
  template <class Step>
  void Trace(const Step& step);

  bool WaitForReaderTurn(unsigned long threadID, const Time& deadline);
  void WaitForWriterTurn(unsigned long threadID);
  bool WaitForWriterTurn(unsigned long threadID, const Time& deadline);
  void LetReadersGo();

  Slot& SlotOf(unsigned long threadID) noexcept;
  bool TakeSlot(unsigned long threadID) noexcept;
  bool LeaveSlot(unsigned long threadID);
  std::size_t CountSlots() const noexcept;
  void CloseGate() noexcept;
  void MoveToTable(unsigned long threadID);
  void UpdateGate() noexcept;

  Readers::iterator FindReader(unsigned long threadID) noexcept;
  bool IsActiveReader(unsigned long threadID) noexcept;
  void SetActive(unsigned long threadID, bool active) noexcept;
  void AddReader(unsigned long threadID, unsigned long count);
  void RemoveReader(Readers::iterator reader) noexcept;

  Condition m_monitor;                               ///< guards all fields below; where everybody waits
  std::pair<unsigned long, unsigned long> m_writer;  ///< thread id and recursion count; 0: nobody writes
  Readers m_readers;                                 ///< who holds read locks; few at any moment
  int m_iWritersWaiting = 0;
  int m_iReadersWaiting = 0;
  std::size_t m_activeReaders = 0;  ///< how many of m_readers stand in the way of writers
  LogFunction m_pLogger;

  // Beside the monitor, and touched without it.
  Slot m_slots[uSLOTS];
  /// Behind the slots, whose last one has room at its end: every reader looks here, and would lose the line to
  /// whoever changes a slot or a field beside it.
  /// Whose read locks must go by the monitor: a bit for the threads of m_readers each; all bits while somebody
  /// writes or waits to write, or where a logger hears of every step. Written with the monitor held.
  std::atomic<std::uint64_t> m_uGate;
};

/// Holds a read lock for the length of a scope. For one thread.
class OXACORE_API ReaderLock {
 public:
  /// Takes a read lock with WaitReaderLock.
  explicit ReaderLock(const ReadersWriterMutex& mutex);

  /// The same. A null pointer is a failed assertion, and the guard holds nothing.
  explicit ReaderLock(const ReadersWriterMutex* mutex);

  ReaderLock(const ReaderLock&) = delete;
  ReaderLock& operator=(const ReaderLock&) = delete;

  /// Releases. Errors end here: a scope that ends can't hand them on.
  ~ReaderLock();

  /// Gives the lock back, if it is still held.
  void Release();

  /// Does nothing if the guard stands for `mutex`; otherwise releases what it holds and takes a read lock of
  /// `mutex`.
  void Reset(const ReadersWriterMutex& mutex);

 private:
  ReadersWriterMutex* m_rwMutex;  ///< null when nothing is held
};

/// Holds a write lock for the length of a scope. For one thread.
class OXACORE_API WriterLock {
 public:
  /// Takes a write lock with WaitWriterLock.
  explicit WriterLock(const ReadersWriterMutex& mutex);

  /// The same. A null pointer is a failed assertion, and the guard holds nothing.
  explicit WriterLock(const ReadersWriterMutex* mutex);

  WriterLock(const WriterLock&) = delete;
  WriterLock& operator=(const WriterLock&) = delete;

  /// Releases. Errors end here: a scope that ends can't hand them on.
  ~WriterLock();

  /// Gives the lock back, if it is still held.
  void Release();

  /// Does nothing if the guard stands for `mutex`; otherwise releases what it holds and takes a write lock of
  /// `mutex`.
  void Reset(const ReadersWriterMutex& mutex);

 private:
  ReadersWriterMutex* m_rwMutex;  ///< null when nothing is held
};

}  // namespace Oxa::Core

#endif
