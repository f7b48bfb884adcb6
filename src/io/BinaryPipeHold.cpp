#include "io/BinaryPipeHold.h"

#include <algorithm>

#include "Threads/WholeMilliseconds.h"

#include "Platform/Threads.h"

namespace Oxa::Core {

namespace {

constexpr long long llLINGER_NS = 1000;
constexpr int iPAUSES_PER_LOOK = 8;  // each look takes a cache line away from who works with it
constexpr int iFEWEST_LINGERING_PAUSES = 4;
constexpr int iMOST_LINGERING_PAUSES = 64;
constexpr long long llSHORTEST_WATCHED_WAIT = 10000;  // in ticks: a millisecond

void Pause(int times) {
  for (int time = 0; time < times; ++time) Platform::PauseInSpin();
}

}  // namespace

// Comes back also where the wait raises.
class BinaryPipe::Hold::Away {
 public:
  explicit Away(Hold& hold) : m_hold(hold) { m_hold.LetGo(); }
  Away(const Away&) = delete;
  Away& operator=(const Away&) = delete;
  ~Away() { m_hold.Lock(); }

 private:
  Hold& m_hold;
};

// Bytes that a close must wait for; with the lock held at both ends.
class BinaryPipe::Hold::Pending {
 public:
  Pending(unsigned long long& total, unsigned long long bytes) : m_total(total), m_bytes(bytes) {
    m_total += m_bytes;
  }
  Pending(const Pending&) = delete;
  Pending& operator=(const Pending&) = delete;
  ~Pending() { m_total -= m_bytes; }

 private:
  unsigned long long& m_total;
  const unsigned long long m_bytes;
};

// The lock is held for moments, and a wake takes many of them.
void BinaryPipe::Hold::LockSlowly() {
  if (!Platform::SpinBeforeSleep(m_pipe.m_spins->m_lock, Platform::Deadline::Never(), [this] {
        Pause(iPAUSES_PER_LOOK);
        return m_pipe.m_mutex.TryLock();
      }))
    m_pipe.m_mutex.Lock(IMutex::sINFINITE);
}

void BinaryPipe::Hold::LetGo() {
  m_pipe.m_mutex.Unlock();
  if (m_iReaders > 0) m_pipe.m_readersGate.Post(static_cast<unsigned int>(m_iReaders));
  if (m_iWriters > 0) m_pipe.m_writersGate.Post(static_cast<unsigned int>(m_iWriters));
  m_iReaders = 0;
  m_iWriters = 0;
}

void BinaryPipe::Hold::Owe(int& waiters, int most, int& owed) {
  const int woken = std::min(waiters, most);
  waiters -= woken;
  owed += woken;
}

void BinaryPipe::Hold::WaitForBytes(unsigned long long wanted, const Elapse& timeout) {
  const unsigned long long enough = std::min(wanted, m_pipe.m_bufferSize);
  if (!Watch(0, timeout, [enough](unsigned long long count) { return count >= enough; }))
    WaitAt(m_pipe.m_readersGate, timeout, m_pipe.m_waitingReaders);
}

void BinaryPipe::Hold::WaitForRoom(unsigned long long left, const Elapse& timeout) {
  const unsigned long long size = m_pipe.m_bufferSize;
  const unsigned long long enough = size - std::min(left, size);
  const Pending pending(m_pipe.m_pendingWriteBytes, left);
  if (!Watch(size, timeout, [enough](unsigned long long count) { return count <= enough; }))
    WaitAt(m_pipe.m_writersGate, timeout, m_pipe.m_waitingWriters);
}

void BinaryPipe::Hold::WaitAt(Semaphore& gate, const Elapse& timeout, int& waiters) {
  if (waiters < INT_MAX) ++waiters;
  const Away away(*this);
  gate.TimedWait(timeout);
}

// Before anybody has to be woken: on another core the other side may be through sooner than this one is asleep. Gives
// whether the ring isn't as it was, or is closed.
template <class Enough>
bool BinaryPipe::Hold::Watch(unsigned long long unchanged, const Elapse& timeout, const Enough& enough) {
  if (timeout.GetRawTimerTicks() < llSHORTEST_WATCHED_WAIT) return false;
  {
    const Away away(*this);
    const auto done = [&] {
      Pause(iPAUSES_PER_LOOK);
      return enough(m_pipe.Count()) || m_pipe.IsClosed();
    };
    if (Platform::SpinBeforeSleep(m_pipe.m_spins->m_ring, ExactDeadline(timeout), done)) Linger();
  }
  return m_pipe.Count() != unchanged || m_pipe.IsClosed();
}

// As long as the other side goes on: two that take turns at a whole ring are quicker than two that take the lock and
// the ring's memory from one another for each block. Not for ever: among several sharers the ring may never become
// full or empty.
void BinaryPipe::Hold::Linger() const {
  Platform::SpinBudget& budget = m_pipe.m_spins->m_linger;
  const unsigned long long first = m_pipe.Count();
  unsigned long long seen = first;
  const auto through = [&] { return seen == 0 || seen == m_pipe.m_bufferSize || m_pipe.IsClosed(); };
  const long long nanoseconds = through() ? 0 : budget.Next();
  if (nanoseconds == 0) return;
  const long long start = Platform::MonotonicNow();
  const long long end = start + nanoseconds;
  long long changed = start;
  for (int pauses = iFEWEST_LINGERING_PAUSES; !through();) {
    Pause(pauses);
    const unsigned long long count = m_pipe.Count();
    const long long now = Platform::MonotonicNow();
    if (now > end || (count == seen && now - changed > llLINGER_NS)) break;
    if (count == seen) continue;
    seen = count;
    changed = now;
    pauses = std::min(2 * pauses, iMOST_LINGERING_PAUSES);
  }
  seen != first ? budget.Hit(changed - start) : budget.Missed();
}

}  // namespace Oxa::Core
