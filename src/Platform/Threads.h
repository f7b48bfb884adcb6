// Locks, events, semaphores and the ids of threads, as the library needs them of the system.
//
// Nothing here raises, logs, or touches anything else of the library. What can go wrong comes back as a
// result with the system's own code. All times are of the monotonic clock. Any thread may call anything,
// unless an operation says otherwise.
#ifndef OXACORE_PLATFORM_THREADS_H
#define OXACORE_PLATFORM_THREADS_H

#include <algorithm>
#include <atomic>
#include <cstdint>

namespace Oxa::Core::Platform {

/// The system's id of the calling thread: never 0, and unlike that of any other thread now alive. Costs a
/// nanosecond. In a forked child it is the child's own.
unsigned long CurrentThreadId() noexcept;

/// The same once the calling thread has asked for it, else 0: for roads on which a call counts. Only the backend
/// writes to it.
inline std::uint32_t& KnownThreadId() noexcept {
  [[gnu::tls_model("initial-exec")]] static thread_local std::uint32_t t_uKnown = 0;
  return t_uKnown;
}

/// How many forks led from the process that loaded the library to this one.
std::uint32_t ForksSoFar() noexcept;

/// Nanoseconds of a clock that nobody sets, from some moment in the past.
long long MonotonicNow() noexcept;

/// The moment at which a wait gives up.
class Deadline {
 public:
  static Deadline Never() noexcept { return Deadline(iNEVER); }

  /// `nanoseconds` from now. Zero or less has passed already; what is beyond the clock's range is its end.
  static Deadline In(long long nanoseconds) noexcept;
  static Deadline InMilliseconds(long long milliseconds) noexcept;

  bool IsNever() const noexcept { return m_llMoment == iNEVER; }

  bool HasPassed() const noexcept;

  /// At least 0. Not to be asked of a Deadline that never comes.
  long long NanosecondsLeft() const noexcept;

  /// Of the monotonic clock.
  long long Moment() const noexcept { return m_llMoment; }

 private:
  static constexpr long long iNEVER = INT64_MAX;
  static constexpr long long iPASSED = INT64_MIN;

  explicit Deadline(long long moment) noexcept : m_llMoment(moment) {}

  long long m_llMoment;
};

/// How a wait ended. Not every backend has every way.
enum class EWaitEnd {
  eSIGNALLED,      ///< got what it waited for
  eABANDONED,      ///< got the lock, whose last owner's thread has ended without unlocking
  eIO_COMPLETION,  ///< the system ran a call-back on the thread instead
  eTIMEOUT,        ///< the deadline passed
  eFAILED,         ///< the system failed; its code tells why
  eOTHER           ///< an end that the system doesn't explain
};

struct WaitResult {
  EWaitEnd m_eEnd;
  int m_iCode;  ///< the system's error code for eFAILED, else 0
};

/// The end of a wait on an object that could not be made.
WaitResult NothingToWaitFor() noexcept;

/// A lock for a few instructions: not reentrant, no time limit. Constant-initialised and trivially
/// destructible, so that it may stand in static storage and be used before anything is built and after
/// everything has died. Nothing that can block or fail may be done under it.
class ShortLock {
 public:
  constexpr ShortLock() noexcept = default;
  ShortLock(const ShortLock&) = delete;
  ShortLock& operator=(const ShortLock&) = delete;

  void Lock() noexcept;
  bool TryLock() noexcept;
  void Unlock() noexcept;

 private:
  std::atomic<std::uint32_t> m_uWord{0};
};

/// Holds a ShortLock for the length of a scope.
class ShortGuard {
 public:
  explicit ShortGuard(ShortLock& lock) noexcept : m_lock(lock) { m_lock.Lock(); }
  ShortGuard(const ShortGuard&) = delete;
  ShortGuard& operator=(const ShortGuard&) = delete;
  ~ShortGuard() { m_lock.Unlock(); }

 private:
  ShortLock& m_lock;
};

/// Tells the processor that the calling thread spins, and takes it some dozen nanoseconds.
void PauseInSpin() noexcept;

/// Lets the calling thread's processor do what else it has to do. Gives whether there was something, by how long it
/// took.
bool YieldInSpin() noexcept;

/// Tells by what happened lately how long it pays to spin before a sleep, out of which another core would have to
/// wake the thread. It steers speed and nothing else, so that it doesn't matter when threads that meet here lose one
/// another's lessons.
class SpinBudget {
 public:
  constexpr SpinBudget() noexcept = default;

  /// Nanoseconds for the spin that is due; 0: none. Always 0 in a process that may run on one processor only. With
  /// nothing left there is the whole budget now and then, ever more seldom: times may have changed.
  long long Next() noexcept;

  /// A spin paid after `nanoseconds`.
  void Hit(long long nanoseconds) noexcept;

  /// A spin was in vain.
  void Missed() noexcept;

  /// A spin paid only because it gave way to another thread: that isn't held against it where spins have paid lately.
  void Yielded() noexcept;

 private:
  // What some systems take for a sleep and a wake on another core.
  static constexpr std::uint32_t uMOST = 50000;
  static constexpr std::uint32_t uLEAST = 1000;
  static constexpr std::uint32_t uFIRST = 3000;
  static constexpr std::uint32_t uMISSES = 4;
  static constexpr std::uint32_t uFIRST_PROBE = 16;
  static constexpr std::uint32_t uLAST_PROBE = 4096;

  std::atomic<std::uint32_t> m_uNanoseconds{uFIRST};
  std::atomic<std::uint32_t> m_uMisses{0};  // in a row
  std::atomic<std::uint32_t> m_uRefusals{0};
  std::atomic<std::uint32_t> m_uProbeEvery{uFIRST_PROBE};
};

/// Spins until `done()`, for as long as `budget` has it and not beyond `deadline`. Gives whether it is done. Where the
/// deadline has passed already nothing is done, and nothing learned: a poll doesn't tell what a wait would have met.
/// After a while it offers its processor to others at each look, perhaps to the very thread that it waits for. What one
/// of them has brought in that way is no hit: a sleep would have done as well.
template <class Done>
bool SpinBeforeSleep(SpinBudget& budget, Deadline deadline, const Done& done) noexcept {
  constexpr int roundsPerLook = 8;
  constexpr long long selfishNanoseconds = 3000;
  if (deadline.HasPassed()) return false;
  const long long nanoseconds = budget.Next();
  if (nanoseconds == 0) return false;
  const long long start = MonotonicNow();
  const long long end = std::min(start + nanoseconds, deadline.Moment());
  bool othersRan = false;
  for (long long now = start; now < end && !othersRan; now = MonotonicNow()) {
    for (int round = 0; round < roundsPerLook; ++round) {
      if (done()) {
        budget.Hit(now - start);
        return true;
      }
      PauseInSpin();
    }
    if (now - start > selfishNanoseconds) othersRan = YieldInSpin();
  }
  if (othersRan && done()) {
    budget.Yielded();
    return true;
  }
  budget.Missed();
  return false;
}

/// A lock that its owner may take again. Constant-initialised and trivially destructible as well. In a forked
/// child nobody owns what was held at the fork, not even the thread that forked: it stays locked, so fork with
/// none of these held.
class ReentrantLock {
 public:
  constexpr ReentrantLock() noexcept = default;
  ReentrantLock(const ReentrantLock&) = delete;
  ReentrantLock& operator=(const ReentrantLock&) = delete;

  /// Takes the lock, however long that may last. Tries a little before it sleeps. A lock whose owner's thread
  /// has ended is never had.
  void Lock() noexcept;

  /// One attempt; never waits.
  bool TryLock() noexcept;

  /// Takes the lock by `deadline`; at least one attempt is made. eSIGNALLED, eABANDONED or eTIMEOUT. After
  /// eABANDONED, which comes within a fraction of a second of the wait or of the owner's end, the caller owns
  /// the lock at one level, and the next one to get it knows nothing of it.
  ///
  /// An owner that ended a moment ago may still count as alive, also after it was joined; an attempt without
  /// time is eTIMEOUT then. The system gives the ids of ended threads to new ones: as long as such a thread
  /// lives, the lock counts as its own, for others and for itself.
  WaitResult LockBy(Deadline deadline) noexcept;

  bool IsOwner() const noexcept;

  /// Gives up one level. By the owner only.
  void Unlock() noexcept;

  /// The same, but for a thread that isn't the owner it does nothing and gives the system's code for that.
  int UnlockIfOwner() noexcept;

 private:
  bool TakeAtOnce() noexcept;
  bool FreeAtOnce() noexcept;
  void LockSlowly() noexcept;
  bool TryLockSlowly() noexcept;
  bool Reenter(std::uint32_t self) noexcept;
  void UnlockSlowly() noexcept;
  int UnlockSlowlyIfOwner() noexcept;

  std::atomic<std::uint32_t> m_uWord{0};   // owner's id, and a bit that tells of sleepers; 0: free
  std::atomic<std::uint32_t> m_uDepth{0};  // levels beyond the first; the owner's alone
  SpinBudget m_spinBudget;
};

// Nearly always the lock is free, and the thread has asked for its id before. Whatever else there is to do comes by a
// call in last place, so that this way saves no registers: an atomic step waits for each store before it.
inline bool ReentrantLock::TakeAtOnce() noexcept {
  const std::uint32_t self = KnownThreadId();
  std::uint32_t expected = 0;
  return self != 0 && m_uWord.compare_exchange_strong(expected, self, std::memory_order_acquire,
                                                      std::memory_order_relaxed);
}

// Nearly always: one level, and nobody asleep. Fails for a thread that isn't the owner.
inline bool ReentrantLock::FreeAtOnce() noexcept {
  std::uint32_t self = KnownThreadId();
  return self != 0 && m_uDepth.load(std::memory_order_relaxed) == 0 &&
         m_uWord.compare_exchange_strong(self, 0, std::memory_order_release, std::memory_order_relaxed);
}

inline void ReentrantLock::Lock() noexcept {
  if (!TakeAtOnce()) LockSlowly();
}

inline bool ReentrantLock::TryLock() noexcept { return TakeAtOnce() || TryLockSlowly(); }

inline void ReentrantLock::Unlock() noexcept {
  if (!FreeAtOnce()) UnlockSlowly();
}

inline int ReentrantLock::UnlockIfOwner() noexcept { return FreeAtOnce() ? 0 : UnlockSlowlyIfOwner(); }

/// A thread that waits. It stands on that thread's stack.
struct Waiter;

/// Threads that wait, in the order of their coming. For the classes below, each under a lock of its own.
class WaitLine {
 public:
  bool IsEmpty() const noexcept { return m_pFirst == nullptr; }

  void Append(Waiter& waiter) noexcept;

  /// Takes one out that is in line, wherever it stands.
  void Remove(Waiter& waiter) noexcept;

  /// Takes out the first `count`, which are in line. Gives the first of them, which leads to the others.
  Waiter* TakeFirst(std::uint32_t count) noexcept;

  /// Whether there may be threads in it that stayed behind in the parent of this forked process. Needs no lock.
  bool MayHaveForeign() const noexcept;

  /// Takes those out. Before anything else is done with the line.
  void DropForeign() noexcept;

 private:
  Waiter* m_pFirst = nullptr;  // longest in line
  Waiter* m_pLast = nullptr;
  std::atomic<std::uint32_t> m_uForks{0};
};

/// An event that resets itself: setting it lets one waiter through, now or later; setting it twice before
/// anybody waits counts once. A set event is handed to the waiter that has waited longest, before anybody who
/// comes later can take it.
class Event {
 public:
  /// A new event, not set, or null without memory.
  static Event* Create() noexcept;

  /// Nobody may wait. Null does nothing.
  static void Destroy(Event* event) noexcept;

  void Set() noexcept;

  /// Waits for the event. eSIGNALLED or eTIMEOUT.
  WaitResult Wait(Deadline deadline) noexcept;

  /// Gives up one level of `lock`, which the caller owns, and waits, as one step: no Set by a thread that
  /// takes the lock afterwards is missed, and the waiter stands in line behind those who began before. With a
  /// lock that the caller doesn't own it is eFAILED, and nothing happened.
  WaitResult ReleaseAndWait(ReentrantLock& lock, Deadline deadline) noexcept;

  /// Sets `other` and waits for this one, as one step.
  WaitResult SetAndWait(Event& other, Deadline deadline) noexcept;

 private:
  struct Place;

  Event() = default;
  bool TakeOrEnqueue(Place& place) noexcept;
  bool GiveUp(Place& place) noexcept;
  WaitResult Sleep(Place& place, Deadline deadline) noexcept;
  static void LeaveKilled(void* place);

  ShortLock m_lock;     // guards the next two, and the links and marks of the waiters
  bool m_bSet = false;  // never while somebody is in line
  WaitLine m_line;
  SpinBudget m_spinBudget;
};

/// Counts up and down, and lets nobody take it below 0. At most iMAXIMUM. What is posted for threads in line is handed
/// to those that have waited longest, before anybody who comes later can take it.
class CountingSemaphore {
 public:
  static constexpr std::uint32_t iMAXIMUM = 0x7FFFFFFF;

  /// A new one, or null and the system's code if `initial` is above the maximum or memory is out.
  static CountingSemaphore* Create(std::uint32_t initial, int& code) noexcept;

  /// Nobody may wait. Null does nothing.
  static void Destroy(CountingSemaphore* semaphore) noexcept;

  /// Adds `amount` and wakes as many. If that passes the maximum nothing is added, and the system's code
  /// comes back; 0 otherwise.
  int Post(std::uint32_t amount) noexcept;

  /// The same where nobody is in line. False if it wasn't done, since somebody is or it would pass the maximum.
  bool PostAtOnce(std::uint32_t amount) noexcept;

  /// Takes one if there is one.
  bool TryTake() noexcept;

  /// Takes as many as there are, `most` at most, and gives how many that is.
  std::uint32_t TryTakeSome(std::uint32_t most) noexcept;

  /// Takes one by `deadline`; at least one attempt is made. eSIGNALLED or eTIMEOUT.
  WaitResult Wait(Deadline deadline) noexcept;

  /// The same, but in line from the first moment on. As soon as one is taken, or the place in line is sure,
  /// `inLine(subject)` is called, which may neither raise nor wait.
  WaitResult WaitInTurn(Deadline deadline, void (*inLine)(void* subject), void* subject) noexcept;

  std::uint32_t Value() const noexcept;

 private:
  explicit CountingSemaphore(std::uint32_t initial) noexcept : m_llBalance(initial) {}
  struct Place;

  int PostSlowly(std::uint32_t amount) noexcept;
  void HandOut(std::uint32_t count) noexcept;
  void DropForeign() noexcept;
  WaitResult WaitSlowly(Deadline deadline) noexcept;
  bool TakeOrEnqueue(Place& place) noexcept;
  bool Sleep(Place& place, Deadline deadline) noexcept;
  bool GiveUp(Place& place) noexcept;
  bool Withdraw() noexcept;
  static void LeaveKilled(void* place);

  std::atomic<std::int64_t> m_llBalance;  // the value, or minus the waiters that nobody has posted for
  ShortLock m_lock;                       // guards the line, and the links and marks of the waiters
  WaitLine m_line;                        // nobody is missing in it who is counted in the balance
  SpinBudget m_spinBudget;
};

// Nobody may see a balance that is taken back again: a refused post must leave no trace.
inline bool CountingSemaphore::PostAtOnce(std::uint32_t amount) noexcept {
  std::int64_t before = m_llBalance.load(std::memory_order_relaxed);
  while (before >= 0 && before + amount <= iMAXIMUM)
    if (m_llBalance.compare_exchange_weak(before, before + amount, std::memory_order_release,
                                          std::memory_order_relaxed))
      return true;
  return false;
}

inline int CountingSemaphore::Post(std::uint32_t amount) noexcept {
  return PostAtOnce(amount) ? 0 : PostSlowly(amount);
}

inline bool CountingSemaphore::TryTake() noexcept { return TryTakeSome(1) != 0; }

inline std::uint32_t CountingSemaphore::TryTakeSome(std::uint32_t most) noexcept {
  std::int64_t balance = m_llBalance.load(std::memory_order_relaxed);
  while (balance > 0) {
    const std::int64_t taken = balance < most ? balance : most;
    if (m_llBalance.compare_exchange_weak(balance, balance - taken, std::memory_order_acquire,
                                          std::memory_order_relaxed))
      return static_cast<std::uint32_t>(taken);
  }
  return 0;
}

}  // namespace Oxa::Core::Platform

#endif
