// One item through a bounded queue: alone, by two threads that both push and pop, and from one thread to another.
#include <Infrastructure/OxaCore/Queue.h>

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

#include "BenchSupport.h"

#ifdef OXA_PEER_TBB
#include <tbb/concurrent_queue.h>
#endif
#ifdef OXA_PEER_BOOST
#define BOOST_THREAD_VERSION 4
#include <boost/thread/sync_bounded_queue.hpp>
#endif

namespace {

using Item = void*;

constexpr std::size_t uLIMIT = 3000;
constexpr int iITEMS = 10000;  // that a reader gets in one iteration

// Each queue: Push never waits, Pop does.
class Ours {
 public:
  Ours() : m_queue("Bench", nullptr, uLIMIT + 1, uLIMIT, uLIMIT) {}  // no report
  bool Push(Item item) { return m_queue.Push(item); }
  Item Pop() {
    Item item = nullptr;
    do {
      m_queue.GetSemaphore().Wait();
      m_queue.WakeNext();
    } while (!m_queue.TryPop(item));
    return item;
  }

 private:
  Oxa::Core::Queue<Item> m_queue;
};

class Std {
 public:
  bool Push(Item item) {
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      if (m_items.size() >= uLIMIT) return false;
      m_items.push_back(item);
    }
    m_filled.notify_one();
    return true;
  }
  Item Pop() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_filled.wait(lock, [this] { return !m_items.empty(); });
    Item item = m_items.front();
    m_items.pop_front();
    return item;
  }

 private:
  std::mutex m_mutex;  // guards m_items
  std::condition_variable m_filled;
  std::deque<Item> m_items;
};

#ifdef OXA_PEER_TBB
class Tbb {
 public:
  Tbb() { m_queue.set_capacity(uLIMIT); }
  bool Push(Item item) { return m_queue.try_push(item); }
  Item Pop() {
    Item item = nullptr;
    m_queue.pop(item);
    return item;
  }

 private:
  tbb::concurrent_bounded_queue<Item> m_queue;
};
#endif

#ifdef OXA_PEER_BOOST
class Boost {
 public:
  Boost() : m_queue(uLIMIT) {}
  bool Push(Item item) { return m_queue.try_push_back(item) == boost::queue_op_status::success; }
  Item Pop() { return m_queue.pull_front(); }

 private:
  boost::sync_bounded_queue<Item> m_queue;
};
#endif

// Whoever pops gets what somebody has pushed before, so that nobody ever waits for long.
template <class TheQueue>
void Pair(benchmark::State& state) {
  static TheQueue* const queue = new TheQueue;
  if (state.threads() > 1) OxaBench::PinThisThread(static_cast<unsigned>(state.thread_index()));
  for (auto _ : state) {
    queue->Push(&state);
    benchmark::DoNotOptimize(queue->Pop());
  }
  OxaBench::UnpinThisThread();
}

// A writer that is refused gives way and tries again.
template <class TheQueue>
void Fill(TheQueue& queue, int count) {
  OxaBench::PinThisThread(1);
  while (count > 0)
    if (queue.Push(&queue))
      --count;
    else
      std::this_thread::yield();
}

template <class TheQueue>
void Transfer(benchmark::State& state) {
  TheQueue queue;
  OxaBench::PinThisThread(0);
  for (auto _ : state) {
    std::thread writer(Fill<TheQueue>, std::ref(queue), iITEMS);
    for (int item = 0; item < iITEMS; ++item) benchmark::DoNotOptimize(queue.Pop());
    writer.join();
  }
  OxaBench::UnpinThisThread();
  state.SetItemsProcessed(state.iterations() * iITEMS);
}

#define QUEUE_BENCHES(who, TheQueue)                                                               \
  OXA_BENCH("Queue push and pop", who, Pair<TheQueue>);                                            \
  OXA_BENCH("Queue push and pop, by two threads", who, Pair<TheQueue>)->Threads(2)->UseRealTime(); \
  OXA_BENCH("Queue from thread to thread", who, Transfer<TheQueue>)->UseRealTime()

QUEUE_BENCHES("Ours", Ours);
QUEUE_BENCHES("std", Std);
#ifdef OXA_PEER_TBB
QUEUE_BENCHES("tbb", Tbb);
#endif
#ifdef OXA_PEER_BOOST
QUEUE_BENCHES("boost", Boost);
#endif

}  // namespace
