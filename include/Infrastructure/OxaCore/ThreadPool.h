// Named threads that share the work: each item goes to a callback, on the next thread that is free.
//
// Contract: items wait in a queue of at most 3000, which reports on standard error from 1000 on. They are taken in
// the order of their coming; with several threads, a later one may overtake on the way to its callback. What a
// callback throws is lost without a trace (what was raised as an alert has been told by then), and the thread goes
// on.
// Thread safety: any thread may use any operation, callbacks of the pool too. While a pool is being destroyed its
// own callbacks may enqueue, and nobody else may use it. No callback of a pool may destroy it.
// Failures: what copying an item throws passes out of Enqueue; errors of Condition and Semaphore pass.
//
//   ThreadPool<Sample> pool("Statistics", 2);
//   pool.Start();
//   pool.Enqueue(callback, sample);
#ifndef INFRASTRUCTURE_OXACORE_THREADPOOL_H
#define INFRASTRUCTURE_OXACORE_THREADPOOL_H

#include <Infrastructure/OxaCore/Callback.h>
#include <Infrastructure/OxaCore/CallbackTask.h>
#include <Infrastructure/OxaCore/Condition.h>
#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/Queue.h>
#include <Infrastructure/OxaCore/Thread.h>
#include <Infrastructure/OxaCore/Time.h>

#include <atomic>
#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace Oxa::Core {

/// For the clause that catches what a callback of a pool throws: swallows it, but lets the cancellation of the
/// thread pass.
OXACORE_API void SwallowFailureOfPool();

/// A task that several threads run, and the threads.
template <class T>
class ThreadPool : public Task {
 public:
  /// A pool of `threadCount` threads called "NAME_0", "NAME_1"..., none if that is below 1. They don't run yet.
  ThreadPool(const std::string& name, int threadCount)
      : m_name(name),
        m_queue(name, nullptr, uFIRST_REPORT_LEVEL, uREPORT_STEP, uHARD_LIMIT),
        m_condition(true) {
    for (int index = 0; index < threadCount; ++index)
      m_threads.push_back(Thread::Create(m_name + "_" + std::to_string(index)));
  }
  ThreadPool(const ThreadPool&) = delete;
  ThreadPool& operator=(const ThreadPool&) = delete;

  /// Lets the callbacks that are at work end, however long they take, and drops the items that still wait, with
  /// those that come meanwhile.
  /// Takes at least 100 ms for each thread. In a forked child it finds threads gone that had begun in the parent, and
  /// doesn't wait for them; but for ever for one that the fork met on its way to its beginning.
  ~ThreadPool() override {
    // A thread that was started and hasn't begun can't be told to stop, and would come too late.
    OnEachThread([](Thread& thread) { AwaitBegin(thread); });
    OnEachThread([](Thread& thread) { thread.Stop(Elapse(0, Elapse::Seconds)); });
    m_queue.SetReleased(true);
    OnEachThread([](Thread& thread) { thread.WaitForState(Thread::eTHREAD_NOT_RUNNING); });
    m_queue.Drain();
    m_threads.clear();
  }

  /// Starts the threads. Called again, it starts those that couldn't be started or that an error has ended.
  void Start() {
    const Lock lock(m_condition);
    const boost::shared_ptr<Task> self(this, [](Task*) {});
    for (boost::shared_ptr<Thread>& thread : m_threads) StartThread(thread, self);
  }

  /// Has `callback` called with `item`. If the queue is full, the item is dropped. A null callback is passed
  /// over when its turn comes.
  void Enqueue(boost::shared_ptr<CallbackArg<T>> callback, T item) {
    boost::shared_ptr<TaskCallback> work =
        boost::make_shared<TaskCallback>(std::move(callback), std::move(item));
    Count(1);
    bool pushed = false;
    try {
      pushed = m_queue.Push(std::move(work));
    } catch (...) {
      Count(-1);
      throw;
    }
    if (!pushed) Count(-1);
  }

  /// The body of each thread; gives 0. For the threads.
  int Run(TaskDirective& directive) override {
    while (!directive.MustStop()) {
      m_queue.GetSemaphore().Wait();
      m_queue.WakeNext();
      boost::shared_ptr<TaskCallback> work;
      if (!m_queue.TryPop(work)) continue;
      Do(std::move(work));
      Count(-1);
    }
    return 0;
  }

 private:
  static constexpr std::uint32_t uFIRST_REPORT_LEVEL = 1000;
  static constexpr std::uint32_t uREPORT_STEP = 100;
  static constexpr std::uint32_t uHARD_LIMIT = 3000;

  struct TaskCallback {
    TaskCallback(boost::shared_ptr<CallbackArg<T>>&& callback, T&& item)
        : m_spCallback(std::move(callback)), m_item(std::move(item)) {}
    boost::shared_ptr<CallbackArg<T>> m_spCallback;
    T m_item;
  };

  static void AwaitBegin(Thread& thread) {
    if (thread.GetTask() && !thread.HasBegun())
      thread.WaitForState(Thread::eTHREAD_RUNNING | Thread::eTHREAD_COMPLETED | Thread::eTHREAD_ERROR);
  }

  // One that has ended is replaced: its old state would pass for the new run's until that begins.
  static void StartThread(boost::shared_ptr<Thread>& thread, const boost::shared_ptr<Task>& self) {
    AwaitBegin(*thread);
    if (thread->IsRunning()) return;
    if (thread->HasBegun()) thread = Thread::Create(thread->GetName());
    thread->Start(self, Elapse(0, Elapse::Seconds));
  }

  // Takes the work over, so that nothing is left of it when it counts as done, also if it failed.
  static void Do(boost::shared_ptr<TaskCallback> work) {
    try {
      if (work->m_spCallback) (*work->m_spCallback)(std::move(work->m_item));
    } catch (...) {
      SwallowFailureOfPool();
    }
  }

  // Without the condition's lock, for which all threads would queue up with each item: nobody waits on a count.
  void Count(std::int32_t change) {
    m_iCount.fetch_add(change);
    if (change < 0) m_condition.Notify();
  }

  template <class Action>
  void OnEachThread(Action action) {
    for (const boost::shared_ptr<Thread>& thread : m_threads) {
      try {
        action(*thread);
      } catch (...) {
        SwallowFailureOfPool();
      }
    }
  }

  const std::string m_name;
  std::vector<boost::shared_ptr<Thread>> m_threads;
  Queue<boost::shared_ptr<TaskCallback>> m_queue;
  Condition m_condition;                  // keeps starts apart, and hears of each item that is done
  std::atomic<std::int32_t> m_iCount{0};  // items in the queue and at work
};

}  // namespace Oxa::Core

#endif
