// One thread locks and unlocks what nobody else wants: what every guarded field costs.
#include <Infrastructure/OxaCore/Condition.h>
#include <Infrastructure/OxaCore/Lock.h>

#include <chrono>
#include <mutex>

#include "BenchSupport.h"

#ifdef OXA_PEER_QT
#include <QMutex>
#endif
#ifdef OXA_PEER_POCO
#include <Poco/Mutex.h>
#endif
#ifdef OXA_PEER_BOOST
#include <boost/thread/recursive_mutex.hpp>
#endif

namespace {

using Oxa::Core::Elapse;

const Elapse g_limit(10, Elapse::MilliSeconds);
constexpr std::chrono::milliseconds g_stdLimit(10);

void OursPair(benchmark::State& state) {
  Oxa::Core::Mutex mutex;
  for (auto _ : state) {
    mutex.Lock();
    mutex.Unlock();
  }
}
OXA_BENCH("Reentrant lock pair, free", "Ours", OursPair);

void OursTimedPair(benchmark::State& state) {
  Oxa::Core::Mutex mutex;
  for (auto _ : state) {
    benchmark::DoNotOptimize(mutex.TryLock(g_limit));
    mutex.Unlock();
  }
}
OXA_BENCH("Reentrant lock pair with a time limit, free", "Ours", OursTimedPair);

void OursGuard(benchmark::State& state) {
  Oxa::Core::Mutex mutex;
  for (auto _ : state) const Oxa::Core::Lock lock(mutex);
}
OXA_BENCH("Scoped guard on a reentrant lock, free", "Ours", OursGuard);

void OursMonitor(benchmark::State& state) {
  Oxa::Core::Condition condition(true);
  for (auto _ : state) {
    condition.Lock();
    condition.Unlock();
  }
}
OXA_BENCH("Lock pair of a condition's monitor, free", "Ours", OursMonitor);

template <class StdMutex>
void StdPair(benchmark::State& state) {
  StdMutex mutex;
  for (auto _ : state) {
    mutex.lock();
    mutex.unlock();
  }
}
OXA_BENCH("Reentrant lock pair, free", "std", StdPair<std::recursive_mutex>);
OXA_BENCH("Lock pair of a condition's monitor, free", "std", StdPair<std::mutex>);

void StdTimedPair(benchmark::State& state) {
  std::recursive_timed_mutex mutex;
  for (auto _ : state) {
    benchmark::DoNotOptimize(mutex.try_lock_for(g_stdLimit));
    mutex.unlock();
  }
}
OXA_BENCH("Reentrant lock pair with a time limit, free", "std", StdTimedPair);

void StdGuard(benchmark::State& state) {
  std::recursive_mutex mutex;
  for (auto _ : state) const std::lock_guard<std::recursive_mutex> lock(mutex);
}
OXA_BENCH("Scoped guard on a reentrant lock, free", "std", StdGuard);

#ifdef OXA_PEER_QT
void QtPair(benchmark::State& state) {
  QRecursiveMutex mutex;
  for (auto _ : state) {
    mutex.lock();
    mutex.unlock();
  }
}
OXA_BENCH("Reentrant lock pair, free", "Qt", QtPair);

void QtTimedPair(benchmark::State& state) {
  QRecursiveMutex mutex;
  for (auto _ : state) {
    benchmark::DoNotOptimize(mutex.tryLock(10));
    mutex.unlock();
  }
}
OXA_BENCH("Reentrant lock pair with a time limit, free", "Qt", QtTimedPair);
#endif

#ifdef OXA_PEER_POCO
void PocoPair(benchmark::State& state) {
  Poco::Mutex mutex;
  for (auto _ : state) {
    mutex.lock();
    mutex.unlock();
  }
}
OXA_BENCH("Reentrant lock pair, free", "Poco", PocoPair);
#endif

#ifdef OXA_PEER_BOOST
void BoostPair(benchmark::State& state) {
  boost::recursive_mutex mutex;
  for (auto _ : state) {
    mutex.lock();
    mutex.unlock();
  }
}
OXA_BENCH("Reentrant lock pair, free", "boost", BoostPair);
#endif

}  // namespace
