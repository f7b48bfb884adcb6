// What the benchmark programs share.
//
// A benchmark is named "Area/Who": "Reentrant lock pair, free/Ours" beside ".../Qt", ".../std", and so on. The
// report puts "Ours" against every other one of the same area from the same run. What Google Benchmark appends
// ("/threads:2", an argument) belongs to the area. An area in which ours sets bytes or items per second is one
// of throughput, where more is better; a counter "bytes" is an amount of memory; in all others time counts. Of time
// and memory, less is better.
//
//   void OursLock(benchmark::State& state) { ... }
//   OXA_BENCH("Reentrant lock pair, free", "Ours", OursLock);
//   #ifdef OXA_PEER_QT
//   void QtLock(benchmark::State& state) { ... }
//   OXA_BENCH("Reentrant lock pair, free", "Qt", QtLock);
//   #endif
//
// Time means processor time for one thread, and wall time for "->Threads(n)" and "->UseRealTime()".
#ifndef OXACORE_BENCH_BENCHSUPPORT_H
#define OXACORE_BENCH_BENCHSUPPORT_H

#include <benchmark/benchmark.h>
#include <pthread.h>
#include <sched.h>

#include <condition_variable>
#include <mutex>
#include <thread>

/// Registers `function` as the figure of `who` in `area`; ->Threads(2) and the like may follow.
#define OXA_BENCH(area, who, function) BENCHMARK(function)->Name(area "/" who)

namespace OxaBench {

/// A second thread that sleeps as long as the object lives. In a process with one thread the C library takes
/// cheap paths (a recursive mutex costs half), which no measuring program ever sees. Main.cpp keeps one.
class SleepingThread {
 public:
  SleepingThread() : m_thread([this] { Sleep(); }) {}
  SleepingThread(const SleepingThread&) = delete;
  SleepingThread& operator=(const SleepingThread&) = delete;
  ~SleepingThread() {
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_bEnd = true;
    }
    m_end.notify_one();
    m_thread.join();
  }

 private:
  void Sleep() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_end.wait(lock, [this] { return m_bEnd; });
  }

  std::mutex m_mutex;  ///< guards m_bEnd
  std::condition_variable m_end;
  bool m_bEnd = false;
  std::thread m_thread;  // last: it uses the others
};

/// Ties the calling thread to one core, counted round the cores that there are. Figures of two threads depend
/// on whether the partner sits on the same core: tie both, ours and the peer's alike.
inline void PinThisThread(unsigned core) {
  const unsigned cores = std::thread::hardware_concurrency();
  cpu_set_t set;
  CPU_ZERO(&set);
  CPU_SET(core % (cores == 0 ? 1 : cores), &set);
  pthread_setaffinity_np(pthread_self(), sizeof(set), &set);
}

/// Lets the calling thread run on every core again.
inline void UnpinThisThread() {
  cpu_set_t set;
  CPU_ZERO(&set);
  for (unsigned core = 0; core < std::thread::hardware_concurrency(); ++core) CPU_SET(core, &set);
  pthread_setaffinity_np(pthread_self(), sizeof(set), &set);
}

}  // namespace OxaBench

#endif
