// The holding of a pipe's lock, and the waits in which it is given up.
#ifndef OXACORE_IO_BINARYPIPEHOLD_H
#define OXACORE_IO_BINARYPIPEHOLD_H

#include <Infrastructure/OxaCore/io/BinaryPipe.h>

#include <climits>

#include "Platform/Threads.h"

namespace Oxa::Core {

/// How long it pays to spin. Steers speed and nothing else.
struct BinaryPipe::SpinBudgets {
  Platform::SpinBudget m_lock;
  Platform::SpinBudget m_ring;
  Platform::SpinBudget m_linger;
};

/// Holds the pipe for the length of a scope, and wakes whom it owes a wake once it lets go: nobody is woken into a
/// lock that is still held.
class BinaryPipe::Hold {
 public:
  explicit Hold(BinaryPipe& pipe) : m_pipe(pipe) { Lock(); }
  Hold(const Hold&) = delete;
  Hold& operator=(const Hold&) = delete;
  ~Hold() { LetGo(); }

  /// Owes a post to `most` of those that wait.
  void WakeReaders(int most = INT_MAX) { Owe(m_pipe.m_waitingReaders, most, m_iReaders); }
  void WakeWriters(int most = INT_MAX) { Owe(m_pipe.m_waitingWriters, most, m_iWriters); }

  /// With an empty ring: waits once, without the lock. The caller looks at the ring, whatever ended the wait.
  void WaitForBytes(unsigned long long wanted, const Elapse& timeout);

  /// With a full ring, for a writer that has `left` bytes in its hands: the same.
  void WaitForRoom(unsigned long long left, const Elapse& timeout);

 private:
  class Away;
  class Pending;

  void Lock() {
    if (!m_pipe.m_mutex.TryLock()) LockSlowly();
  }
  void LockSlowly();
  void LetGo();
  void WaitAt(Semaphore& gate, const Elapse& timeout, int& waiters);
  template <class Enough>
  bool Watch(unsigned long long unchanged, const Elapse& timeout, const Enough& enough);
  void Linger() const;
  static void Owe(int& waiters, int most, int& owed);

  BinaryPipe& m_pipe;
  int m_iReaders = 0;  // to be posted for
  int m_iWriters = 0;
};

}  // namespace Oxa::Core

#endif
