// A queue between threads that never lets a writer wait, and that says on standard error how full it has been.
//
// Writers push; a push is refused once the hard limit is reached. Readers wait on the queue's semaphore, pass
// the release on, and then try to pop. The semaphore may count more than there is: reckon with an empty pop.
//
// Thread safety: any thread may use any operation. Items are copied and moved under the queue's mutex, so that
// must not wait for another user of the queue. The clean-up is called without it. A thread that Thread::Kill
// ends in the middle of an operation leaves the queue's mutex held, like any other: who comes after it waits for ever.
// Failures: what copying or moving an item throws passes, and the queue is then as it was. The queue raises
// nothing by itself, but what its Mutex and Semaphore raise passes.
//
//   Queue<Sample> m_samples("Samples", nullptr, 1000, 100, 3000);
//   ...
//   if (!m_samples.Push(sample)) ++m_iLost;                     // a writer
//   ...
//   while (!directive.MustStop()) {                             // a reader
//     m_samples.GetSemaphore().Wait();
//     m_samples.WakeNext();
//     Sample sample;
//     if (m_samples.TryPop(sample)) Use(sample);
//   }
//   ...
//   m_samples.SetReleased(true);                                // all readers wake, one after another
#ifndef INFRASTRUCTURE_OXACORE_QUEUE_H
#define INFRASTRUCTURE_OXACORE_QUEUE_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/Semaphore.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <utility>

namespace Oxa::Core {

/// Writes the high watermark `peak` of the queue called `queueName` to standard error, with the local time and
/// the name of the process, in one piece, and flushes. At `hardLimit` it says so. Works at any time, also before
/// main and behind exit; throws nothing, but lets the cancellation of the thread pass.
OXACORE_API void ReportQueueWatermark(const std::string& queueName, std::uint32_t peak,
                                      std::uint32_t hardLimit);

/// A bounded queue, first in, first out. T can be moved or copied, and assigned.
template <class T>
class Queue {
 public:
  /// Is given each item that the queue discards.
  using Cleanup = void (*)(T&);

  /// An empty `name` becomes "Queue #0", "Queue #1"... in the order of construction, counted for each T by
  /// itself. `cleanup` may be null. Sizes are numbers of items: at most `hardLimit` are held. A new greatest
  /// size is reported from `firstReportLevel` on, whenever it has grown by `reportStep` since the last report,
  /// and at the hard limit, unless that is below the first level.
  Queue(const std::string& name, Cleanup cleanup, std::uint32_t firstReportLevel, std::uint32_t reportStep,
        std::uint32_t hardLimit)
      : m_semaphore(0),
        m_name(name.empty() ? DefaultName() : name),
        m_cleanup(cleanup),
        m_firstReportLevel(firstReportLevel),
        m_reportStep(reportStep),
        m_hardLimit(hardLimit) {}
  Queue(const Queue&) = delete;
  Queue& operator=(const Queue&) = delete;

  /// Discards what is left, as Drain does; what the clean-up throws ends here. Nobody may use the queue; what a
  /// clean-up pushes nevertheless is destroyed without another one.
  virtual ~Queue() {
    for (std::size_t left = m_items.size(); left > 0; --left, m_items.pop_front())
      DiscardSilently(m_items.front());
  }

  /// Appends the item, and wakes a reader. False if the queue is full; the item isn't stored then, nor moved
  /// from.
  bool Push(const T& item) { return PushItem(item); }
  bool Push(T&& item) { return PushItem(std::move(item)); }

  /// Takes the oldest item out. False if there is none, and `item` is left alone. Doesn't touch the semaphore.
  bool TryPop(T& item) {
    const Hold hold(m_mutex);
    if (m_items.empty()) return false;
    item = std::move(m_items.front());
    m_items.pop_front();
    return true;
  }

  /// Moves the oldest items to `items`, which has room for `most`, and gives how many there were. Doesn't touch
  /// the semaphore: a reader that has waited for one takes the others by Semaphore::TryWaitForSome, and calls
  /// WakeNext behind that. If moving one throws, those before it have left the queue.
  std::size_t TryPopSome(T* items, std::size_t most) {
    const Hold hold(m_mutex);
    std::size_t count = 0;
    for (; count < most && !m_items.empty(); ++count, m_items.pop_front())
      items[count] = std::move(m_items.front());
    return count;
  }

  /// What readers wait on: a count of the items, which may run ahead of them.
  Semaphore& GetSemaphore() { return m_semaphore; }

  /// For a reader, right after its wait: if the queue is released, passes the release on to the next one.
  void WakeNext() {
    // Who was woken by the release sees the flag; all others are woken by it later.
    if (!m_released.load(std::memory_order_acquire)) return;
    const Hold hold(m_mutex);
    if (m_released.load(std::memory_order_relaxed)) m_semaphore.Post(1);
  }

  /// The number of items.
  std::size_t GetCount() const {
    const Hold hold(m_mutex);
    return m_items.size();
  }

  /// Discards the items that are in the queue at this moment: each is given to the clean-up, if there is one,
  /// and destroyed. What the clean-up throws passes; the items behind that one are left in the queue.
  void Drain() {
    for (std::size_t left = GetCount(); left > 0 && DiscardFirst(); --left) {
    }
  }

  /// Releases the readers, or holds new ones again. On a change to true one reader is woken; with WakeNext
  /// each wakes the next one, until all have found out.
  void SetReleased(bool released) {
    const Hold hold(m_mutex);
    if (m_released.exchange(released, std::memory_order_release) != released && released) m_semaphore.Post(1);
  }

 private:
  // A Lock that knows what it locks, which saves two calls each way.
  class Hold {
   public:
    explicit Hold(Mutex& mutex) : m_mutex(mutex) { m_mutex.Mutex::Lock(); }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;
    ~Hold() { m_mutex.Mutex::Unlock(); }

   private:
    Mutex& m_mutex;
  };

  // Posts at the end of its life for an item that was stored, also where the report is cut short.
  class Announcement {
   public:
    explicit Announcement(Semaphore& semaphore) : m_semaphore(semaphore) {}
    Announcement(const Announcement&) = delete;
    Announcement& operator=(const Announcement&) = delete;
    ~Announcement() {
      if (m_bStored) m_semaphore.Post(1);
    }
    void SetStored() { m_bStored = true; }

   private:
    Semaphore& m_semaphore;
    bool m_bStored = false;
  };

  static std::string DefaultName() {
    static std::atomic<int> s_iNext{0};
    return "Queue #" + std::to_string(s_iNext.fetch_add(1));
  }

  template <class Item>
  bool PushItem(Item&& item) {
    Announcement announcement(m_semaphore);  // before the lock: it is to post behind the unlocking
    const Hold hold(m_mutex);
    const std::size_t before = m_items.size();
    if (before >= m_hardLimit) return false;
    m_items.push_back(std::forward<Item>(item));
    announcement.SetStored();
    if (before >= m_peak) RaisePeak(static_cast<std::uint32_t>(before + 1));
    return true;
  }

  // With the mutex held.
  void RaisePeak(std::uint32_t peak) {
    m_peak = peak;
    if (m_peak < m_firstReportLevel) return;
    if (m_peak < m_lastReported + m_reportStep && m_peak < m_hardLimit) return;
    ReportQueueWatermark(m_name, m_peak, m_hardLimit);
    m_lastReported = m_peak;
  }

  // The clean-up is the host's: it is called without the mutex.
  bool DiscardFirst() {
    Lock lock(m_mutex);
    if (m_items.empty()) return false;
    T item(std::move(m_items.front()));
    m_items.pop_front();
    lock.Release();
    if (m_cleanup != nullptr) m_cleanup(item);
    return true;
  }

  void DiscardSilently(T& item) {
    try {
      if (m_cleanup != nullptr) m_cleanup(item);
    } catch (...) {
      // A destructor can't tell, and the other items want their clean-up too.
    }
  }

  Semaphore m_semaphore;              // counts the items, and the release
  [[maybe_unused]] char m_apart[64];  // who posts or waits shares no cache line with those that lock
  mutable Mutex m_mutex;              // guards the items, the watermark and the release
  std::deque<T> m_items;
  const std::string m_name;
  const Cleanup m_cleanup;
  const std::uint32_t m_firstReportLevel;
  const std::uint32_t m_reportStep;
  const std::uint32_t m_hardLimit;
  std::uint32_t m_lastReported = 0;  // the size in the last report
  std::uint32_t m_peak = 0;          // the greatest size so far
  std::atomic<bool> m_released{false};
};

}  // namespace Oxa::Core

#endif
