// A counting semaphore that tells its count, and a gate that one call opens for all.
//
// Thread safety: any thread may use any operation.
// Failures: raised as OSError under "Oxa.Core.Semaphore".
//
//   Semaphore m_free(4);
//   ...
//   if (m_free.TimedWait(Elapse(2))) { Use(); m_free.Post(1); }
#ifndef INFRASTRUCTURE_OXACORE_SEMAPHORE_H
#define INFRASTRUCTURE_OXACORE_SEMAPHORE_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/Time.h>

#include <atomic>
#include <cstdint>

namespace Oxa::Core {

namespace Platform {
class CountingSemaphore;
class Deadline;
struct WaitResult;
}  // namespace Platform

/// Counts what is free. At most 0x7FFFFFFF.
class OXACORE_API Semaphore {
 public:
  /// Starts at `initial`. Above the maximum, or without memory, the assertion "0 != m_hSemaphore" fails, and
  /// all waits of the object raise.
  explicit Semaphore(unsigned int initial);
  Semaphore(const Semaphore&) = delete;
  Semaphore& operator=(const Semaphore&) = delete;

  /// Nobody may wait.
  virtual ~Semaphore();

  /// Adds `amount` and wakes as many waiters. 0 fails the assertion "amount > 0". What would pass the maximum
  /// is not added, silently; GetCount counts it all the same.
  void Post(unsigned int amount);

  /// Takes one, sleeping until there is one. Raises OSError if the system fails.
  void Wait();

  /// As Wait, true when one was taken, false when `timeout` (whole milliseconds, negative is 0; no value
  /// means "without limit") is over.
  bool TimedWait(const Elapse& timeout);

  /// Takes one if there is one.
  bool TryWait();

  /// Takes as many as there are, `most` at most, and gives how many that is. Doesn't wait.
  unsigned int TryWaitForSome(unsigned int most);

  /// Initial count and all that was posted, less the successful waits. For diagnostics: it is old when told.
  unsigned int GetCount() const;

 private:
  friend class MultiWait;

  Platform::WaitResult WaitBy(Platform::Deadline deadline);
  bool WaitInTurn(const Elapse* timeout, void (*inLine)(void* subject), void* subject);

  Platform::CountingSemaphore* m_hSemaphore;
  std::atomic<unsigned int> m_uRefused;  ///< what was posted or asked for but exceeded the maximum
};

/// A gate: holds any number of threads until one call releases them all.
///
/// A waiter that left because its time was over stays counted: the next release lets one more through. Otherwise each
/// waiter that a release has counted gets through by it, however soon another one of them waits again.
class OXACORE_API MultiWait : public Semaphore {
 public:
  MultiWait();

  /// Releases whoever is still in wait, and then waits, without limit, until all of them have left it. Nobody
  /// may come in any more. In a forked child it doesn't wait for threads that stayed behind in the parent.
  ~MultiWait() override;

  /// Waits for the next release. Null waits without limit and gives true; otherwise false when `*timeout` is
  /// over. Raises as Semaphore does.
  bool wait(Elapse* timeout);

  /// Lets all through that were counted since the last release.
  void releaseWaiters();

 private:
  void addWaiter();

  // Both counts tell in their upper half after how many forks they were begun.
  Mutex m_mutex;  ///< guards m_uWaiters, and keeps count and post together
  std::uint64_t m_uWaiters;
  std::atomic<std::uint64_t> m_uInside;  ///< threads in wait, whom the destructor sees off
};

}  // namespace Oxa::Core

#endif
