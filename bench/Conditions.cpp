// Two threads pass the turn to and fro. "Asleep": the answer is so late that both really sleep. "Answer within
// 2 us": the partner answers at once, and whoever waits a moment before it sleeps needs no system call.
#include <Infrastructure/OxaCore/Condition.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "BenchSupport.h"

#ifdef OXA_PEER_GLIB
#include <glib.h>
#endif
#ifdef OXA_PEER_ABSL
#include <absl/synchronization/mutex.h>
#endif

namespace {

struct Ours {
  Oxa::Core::Condition m_condition{false};
  void Lock() { m_condition.Lock(); }
  void Unlock() { m_condition.Unlock(); }
  void Wait() { m_condition.Wait(); }
  void Signal() { m_condition.Signal(); }
};

struct Std {
  std::mutex m_mutex;
  std::condition_variable m_condition;
  void Lock() { m_mutex.lock(); }
  void Unlock() { m_mutex.unlock(); }
  void Wait() {
    std::unique_lock<std::mutex> lock(m_mutex, std::adopt_lock);
    m_condition.wait(lock);
    lock.release();
  }
  void Signal() { m_condition.notify_one(); }
};

#ifdef OXA_PEER_GLIB
struct GLib {
  GMutex m_mutex;
  GCond m_condition;
  GLib() {
    g_mutex_init(&m_mutex);
    g_cond_init(&m_condition);
  }
  ~GLib() {
    g_cond_clear(&m_condition);
    g_mutex_clear(&m_mutex);
  }
  void Lock() { g_mutex_lock(&m_mutex); }
  void Unlock() { g_mutex_unlock(&m_mutex); }
  void Wait() { g_cond_wait(&m_condition, &m_mutex); }
  void Signal() { g_cond_signal(&m_condition); }
};
#endif

#ifdef OXA_PEER_ABSL
struct Absl {
  absl::Mutex m_mutex;
  absl::CondVar m_condition;
  void Lock() { m_mutex.Lock(); }
  void Unlock() { m_mutex.Unlock(); }
  void Wait() { m_condition.Wait(&m_mutex); }
  void Signal() { m_condition.Signal(); }
};
#endif

void Busy(std::chrono::nanoseconds time) {
  const auto end = std::chrono::steady_clock::now() + time;
  while (std::chrono::steady_clock::now() < end) {
  }
}

// A partner on a core of its own that gives every turn back, after having thought for a while.
template <class Monitor>
class Partner {
 public:
  Partner(Monitor& monitor, std::chrono::nanoseconds thought, unsigned core)
      : m_monitor(monitor), m_thread([this, thought, core] { Play(thought, core); }) {}
  ~Partner() {
    m_monitor.Lock();
    m_iTurn = iOVER;
    m_monitor.Signal();
    m_monitor.Unlock();
    m_thread.join();
  }

  void RoundTrip(std::chrono::nanoseconds thought) {
    m_monitor.Lock();
    m_iTurn = iPARTNER;
    m_monitor.Signal();
    while (m_iTurn != iMINE) m_monitor.Wait();
    m_monitor.Unlock();
    if (thought.count() > 0) Busy(thought);
  }

 private:
  static constexpr int iMINE = 0, iPARTNER = 1, iOVER = 2;

  void Play(std::chrono::nanoseconds thought, unsigned core) {
    OxaBench::PinThisThread(core);
    m_monitor.Lock();
    while (m_iTurn != iOVER) {
      if (m_iTurn == iMINE) {
        m_monitor.Wait();
        continue;
      }
      m_monitor.Unlock();
      if (thought.count() > 0) Busy(thought);
      m_monitor.Lock();
      if (m_iTurn == iOVER) break;
      m_iTurn = iMINE;
      m_monitor.Signal();
    }
    m_monitor.Unlock();
  }

  Monitor& m_monitor;
  int m_iTurn = iMINE;
  std::thread m_thread;  // last: it uses the others
};

template <class Monitor>
void Trips(benchmark::State& state, std::chrono::nanoseconds thought, unsigned partnersCore) {
  OxaBench::PinThisThread(0);
  {
    Monitor monitor;
    Partner<Monitor> partner(monitor, thought, partnersCore);
    for (auto _ : state) partner.RoundTrip(thought);
  }
  OxaBench::UnpinThisThread();
}

// Both think for longer than anybody spins, so that the other one is asleep when the turn comes. The time of
// thinking is the same for all and taken out of the figure.
template <class Monitor>
void Asleep(benchmark::State& state) {
  constexpr std::chrono::nanoseconds thought(100000);
  OxaBench::PinThisThread(0);
  {
    Monitor monitor;
    Partner<Monitor> partner(monitor, thought, 1);
    for (auto _ : state) {
      const auto start = std::chrono::steady_clock::now();
      partner.RoundTrip(std::chrono::nanoseconds(0));
      const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start - thought;
      state.SetIterationTime(took.count());
      Busy(thought);
    }
  }
  OxaBench::UnpinThisThread();
}

template <class Monitor>
void SameCore(benchmark::State& state) {
  Trips<Monitor>(state, std::chrono::nanoseconds(0), 0);
}

template <class Monitor>
void Answered(benchmark::State& state) {
  Trips<Monitor>(state, std::chrono::nanoseconds(0), 1);
}

#define CONDITION_BENCH(who, Monitor)                                                           \
  OXA_BENCH("Condition round trip, asleep", who, Asleep<Monitor>)->UseManualTime();             \
  OXA_BENCH("Condition round trip, answer within 2 us", who, Answered<Monitor>)->UseRealTime(); \
  OXA_BENCH("Condition round trip, both on one core", who, SameCore<Monitor>)->UseRealTime()

CONDITION_BENCH("Ours", Ours);
CONDITION_BENCH("std", Std);
#ifdef OXA_PEER_GLIB
CONDITION_BENCH("GLib", GLib);
#endif
#ifdef OXA_PEER_ABSL
CONDITION_BENCH("absl", Absl);
#endif

}  // namespace
