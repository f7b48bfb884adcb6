// What only chance brings about, tried until it has come.
#include <Infrastructure/OxaCore/Condition.h>

#include <gtest/gtest.h>
#include <sched.h>

#include <atomic>
#include <chrono>
#include <thread>

using namespace Oxa::Core;

namespace {

// Not those of the machine: the process may be bound to some of them.
int ProcessorsForThis() {
  cpu_set_t processors;
  return ::sched_getaffinity(0, sizeof processors, &processors) == 0 ? CPU_COUNT(&processors) : 1;
}

// One thread signals once a round, a little later each time.
class OneSignalARound {
 public:
  explicit OneSignalARound(Condition& condition) : m_condition(condition), m_thread([this] { Run(); }) {}
  ~OneSignalARound() {
    m_iAsked = -1;
    m_thread.join();
  }
  void Ask() { m_iAsked = m_iDone + 1; }
  void Await() const {
    while (m_iDone != m_iAsked) std::this_thread::yield();
  }

 private:
  void Run() {
    while (m_iAsked >= 0) {
      if (m_iAsked == m_iDone) continue;
      for (std::atomic<int> delay{0}; delay < m_iDone % 97;) ++delay;
      m_condition.Signal();
      m_iDone = m_iDone + 1;
    }
  }

  Condition& m_condition;
  std::atomic<int> m_iAsked{0};
  std::atomic<int> m_iDone{0};
  std::thread m_thread;  // last: it uses the others
};

}  // namespace

// A signal that lands while a timed wait is expiring is not cancelled: it wakes the next waiter, and only that.
TEST(LateSignal, StaysPendingForTheNextWaiter) {
  if (ProcessorsForThis() < 2)
    GTEST_SKIP() << "needs two processors: the two have to be at it in the same microsecond";
  Condition condition(true);
  OneSignalARound signals(condition);
  const Lock lock(condition);
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  bool late = false;
  while (!late && std::chrono::steady_clock::now() < end) {
    signals.Ask();
    const bool woken = condition.TimedWait(Elapse(0));
    signals.Await();
    const bool wokenNext = condition.TimedWait(Elapse(0));
    ASSERT_FALSE(woken && wokenNext) << "one signal woke two";
    ASSERT_FALSE(condition.TimedWait(Elapse(0)));
    late = wokenNext;
  }
  EXPECT_TRUE(late);
}
