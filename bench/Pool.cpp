// Tiny tasks on a pool of two threads: what it costs to hand a piece of work over, all in all.
#include <Infrastructure/OxaCore/ThreadPool.h>

#include <atomic>
#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <thread>

#include "BenchSupport.h"

#ifdef OXA_PEER_BOOST
#include <boost/asio/post.hpp>
#include <boost/asio/thread_pool.hpp>
#endif
#ifdef OXA_PEER_QT
#include <QRunnable>
#include <QThreadPool>
#endif
#ifdef OXA_PEER_POCO
#include <Poco/Notification.h>
#include <Poco/NotificationQueue.h>
#include <Poco/Runnable.h>
#include <Poco/ThreadPool.h>
#endif

namespace {

constexpr int iTHREADS = 2;
constexpr int iTASKS = 2000;  // in one burst: below the limit of our queue
std::atomic<int> g_done{0};

void AwaitAll() {
  while (g_done.load(std::memory_order_acquire) < iTASKS) std::this_thread::yield();
}

// Sends bursts of tasks and waits for each.
template <class Send>
void Bursts(benchmark::State& state, const Send& send) {
  for (auto _ : state) {
    g_done = 0;
    for (int task = 0; task < iTASKS; ++task) send(task);
    AwaitAll();
  }
}

class Tiny : public Oxa::Core::CallbackArg<int> {
 public:
  void operator()(int) override { g_done.fetch_add(1, std::memory_order_release); }
};

void Ours(benchmark::State& state) {
  Oxa::Core::ThreadPool<int> pool("Bench", iTHREADS);
  const boost::shared_ptr<Oxa::Core::CallbackArg<int>> callback = boost::make_shared<Tiny>();
  pool.Start();
  Bursts(state, [&](int task) { pool.Enqueue(callback, task); });
}
OXA_BENCH("Pool of two, 2000 tiny tasks", "Ours", Ours)->UseRealTime();

#ifdef OXA_PEER_BOOST
void Asio(benchmark::State& state) {
  boost::asio::thread_pool pool(iTHREADS);
  Bursts(state,
         [&](int) { boost::asio::post(pool, [] { g_done.fetch_add(1, std::memory_order_release); }); });
  pool.join();
}
OXA_BENCH("Pool of two, 2000 tiny tasks", "asio", Asio)->UseRealTime();
#endif

#ifdef OXA_PEER_QT
class QtTiny : public QRunnable {
 public:
  void run() override { g_done.fetch_add(1, std::memory_order_release); }
};

void Qt(benchmark::State& state) {
  QThreadPool pool;
  pool.setMaxThreadCount(iTHREADS);
  Bursts(state, [&](int) { pool.start(new QtTiny); });
  pool.waitForDone();
}
OXA_BENCH("Pool of two, 2000 tiny tasks", "Qt", Qt)->UseRealTime();
#endif

#ifdef OXA_PEER_POCO
// That pool takes no more work than it has threads: its users put a queue of notifications before it.
class PocoTiny : public Poco::Notification {
 public:
  void Run() { g_done.fetch_add(1, std::memory_order_release); }
};

class PocoEnd : public Poco::Notification {};

class PocoWorker : public Poco::Runnable {
 public:
  explicit PocoWorker(Poco::NotificationQueue& queue) : m_queue(queue) {}
  void run() override {
    while (true) {
      Poco::Notification::Ptr work(m_queue.waitDequeueNotification());
      PocoTiny* const tiny = dynamic_cast<PocoTiny*>(work.get());
      if (tiny == nullptr) return;
      tiny->Run();
    }
  }

 private:
  Poco::NotificationQueue& m_queue;
};

void PocoQueue(benchmark::State& state) {
  Poco::NotificationQueue queue;
  PocoWorker worker(queue);
  Poco::ThreadPool pool(iTHREADS, iTHREADS);
  for (int thread = 0; thread < iTHREADS; ++thread) pool.start(worker);
  Bursts(state, [&](int) { queue.enqueueNotification(new PocoTiny); });
  for (int thread = 0; thread < iTHREADS; ++thread) queue.enqueueNotification(new PocoEnd);
  pool.joinAll();
}
OXA_BENCH("Pool of two, 2000 tiny tasks", "Poco", PocoQueue)->UseRealTime();
#endif

}  // namespace
