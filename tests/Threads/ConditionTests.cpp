#include <Infrastructure/OxaCore/Condition.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "Support/Eventually.h"
#include "Support/OtherThread.h"

using namespace Oxa::Core;
using TestSupport::Eventually;
using TestSupport::Holder;
using TestSupport::MillisecondsOf;
using TestSupport::OtherThreadCanLock;

namespace {

static_assert(std::is_base_of_v<IMutex, Condition>);
static_assert(std::is_base_of_v<Warning, ConditionWaitEndedByAPC>);

Holder Hold(Condition& condition) {
  return Holder([&condition] { condition.Lock(); }, [&condition] { condition.Unlock(); });
}

// A number of threads in one wait each. The constructor returns when all of them wait.
class Waiters {
 public:
  Waiters(Condition& condition, int count, std::function<void()> wait) : m_condition(condition) {
    std::atomic<int> locked{0};
    for (int waiter = 0; waiter < count; ++waiter)
      m_threads.emplace_back([this, &locked, wait] {
        const Lock lock(m_condition);
        ++locked;
        wait();
        ++m_iReturned;
      });
    EXPECT_TRUE(Eventually([&] { return locked == count; }));
    const Lock lock(condition);  // released by the last of them when it began to wait
  }
  ~Waiters() { Join(); }

  void Join() {
    for (auto& thread : m_threads) thread.join();
    m_threads.clear();
  }
  int Returned() const { return m_iReturned; }

 private:
  Condition& m_condition;
  std::atomic<int> m_iReturned{0};
  std::vector<std::thread> m_threads;
};

std::string RaisedBy(const std::function<void()>& action) {
  try {
    action();
  } catch (const OSError& error) {
    EXPECT_EQ("Oxa.Core.Condition", error.GetData(AlertInfo::sLOG_NAME));
    return error.GetUnwindStack()->front().Get(CodeContext::sFUNCTION) + ": " +
           error.GetData(AlertInfo::sMESSAGE);
  }
  return "nothing";
}

// A thread that ends while it holds the lock.
void LockAndEnd(Condition& condition) {
  std::thread([&] { condition.Lock(); }).join();
}

// The time in which one that was woken too much would show itself. Too short, it only lets a fault pass.
void WatchForMore() { std::this_thread::sleep_for(std::chrono::milliseconds(50)); }

const std::string sNOT_OWNER = std::strerror(EPERM);

}  // namespace

TEST(Condition, IsAReentrantLock) {
  Condition condition(true);
  condition.Lock();
  EXPECT_TRUE(condition.TryLock());
  condition.Unlock();
  EXPECT_FALSE(OtherThreadCanLock(condition));
  condition.Unlock();
  EXPECT_TRUE(OtherThreadCanLock(condition));
}

TEST(Condition, TryLockOfAHeldLockIsFalse) {
  Condition condition(true);
  const Holder holder = Hold(condition);
  EXPECT_FALSE(condition.TryLock());
  EXPECT_FALSE(condition.TryLock(Elapse(-1)));
  bool locked = true;
  EXPECT_GE(MillisecondsOf([&] { locked = condition.TryLock(Elapse(100, Elapse::MilliSeconds)); }), 100);
  EXPECT_FALSE(locked);
}

TEST(Condition, LockThatTimesOutRaises) {
  Condition condition(true);
  const Holder holder = Hold(condition);
  EXPECT_EQ("Oxa::Core::Condition::Lock: Attempt to acquire lock timed out",
            RaisedBy([&] { condition.Lock(Elapse(50, Elapse::MilliSeconds)); }));
  EXPECT_EQ("Oxa::Core::Condition::Lock: Attempt to acquire lock timed out",
            RaisedBy([&] { condition.Lock(Elapse(-3)); }));
}

TEST(Condition, LimitsAreWholeMilliseconds) {
  Condition condition(true);
  const Holder holder = Hold(condition);
  EXPECT_FALSE(condition.TryLock(Elapse(999, Elapse::MicroSeconds)));
  EXPECT_EQ("Oxa::Core::Condition::Lock: Attempt to acquire lock timed out",
            RaisedBy([&] { condition.Lock(Elapse(999, Elapse::MicroSeconds)); }));
}

TEST(Condition, LockGetsWhatIsGivenUpInTime) {
  Condition condition(true);
  std::thread waiter;
  {
    const Holder holder = Hold(condition);
    waiter = std::thread([&] {
      for (const Elapse& limit : {Elapse(60), Elapse(0x7FFFFFFF)}) {
        EXPECT_NO_THROW(condition.Lock(limit));
        condition.Unlock();
      }
    });
  }
  waiter.join();
}

TEST(Condition, LockOfAnEndedThreadIsAbandonedAndOwned) {
  Condition condition(true);
  LockAndEnd(condition);
  EXPECT_EQ("Oxa::Core::Condition::Lock: Attempt to acquire lock abandoned",
            RaisedBy([&] { condition.Lock(); }));
  EXPECT_FALSE(OtherThreadCanLock(condition));
  condition.Unlock();
  EXPECT_TRUE(OtherThreadCanLock(condition));
}

TEST(Condition, TryLockOfAnEndedThreadsLockRaisesAsWell) {
  Condition condition(true);
  LockAndEnd(condition);
  std::string raised;
  // A thread that has been joined may be there for a moment more.
  EXPECT_TRUE(Eventually([&] {
    raised = RaisedBy([&] { EXPECT_FALSE(condition.TryLock()); });
    return raised != "nothing";
  }));
  EXPECT_EQ("Oxa::Core::Condition::TryLock: Attempt to acquire lock abandoned", raised);
  condition.Unlock();
  EXPECT_TRUE(condition.TryLock());
  condition.Unlock();
}

TEST(Condition, AWaiterWhoseMonitorIsAbandonedIsTold) {
  Condition condition(true);
  std::string told;
  Waiters waiters(condition, 1, [&] { told = RaisedBy([&] { condition.Wait(); }); });
  std::thread([&] {
    condition.Lock();
    condition.Signal();
  }).join();
  waiters.Join();
  EXPECT_EQ("Oxa::Core::Condition::Lock: Attempt to acquire lock abandoned", told);
  EXPECT_TRUE(OtherThreadCanLock(condition));
}

TEST(Condition, UnlockByAStrangerDoesNothing) {
  Condition condition(true);
  const Holder holder = Hold(condition);
  EXPECT_NO_THROW(condition.Unlock());
  EXPECT_FALSE(condition.TryLock());
}

TEST(Condition, WaitWithoutTheLockRaisesAndLeavesTheCallerWithTheLock) {
  Condition condition(true);
  EXPECT_EQ("Oxa::Core::Condition::Wait: " + sNOT_OWNER, RaisedBy([&] { condition.Wait(); }));
  EXPECT_FALSE(OtherThreadCanLock(condition));
  condition.Unlock();
  EXPECT_EQ("Oxa::Core::Condition::TimedWait: " + sNOT_OWNER,
            RaisedBy([&] { condition.TimedWait(Elapse(60)); }));
  EXPECT_FALSE(OtherThreadCanLock(condition));
  condition.Unlock();
  EXPECT_TRUE(OtherThreadCanLock(condition));
}

TEST(Condition, TimedWaitOfZeroIsFalseAtOnceWithTheLockHeld) {
  Condition condition(true);
  const Lock lock(condition);
  for (const Elapse& limit : {Elapse(0, Elapse::Seconds), Elapse(-5), Elapse(900, Elapse::MicroSeconds)}) {
    EXPECT_LT(MillisecondsOf([&] { EXPECT_FALSE(condition.TimedWait(limit)); }), 1000);
    EXPECT_FALSE(OtherThreadCanLock(condition));
  }
}

TEST(Condition, TimedWaitRunsOutOfTime) {
  Condition condition(true);
  const Lock lock(condition);
  bool woken = true;
  EXPECT_GE(MillisecondsOf([&] { woken = condition.TimedWait(Elapse(100, Elapse::MilliSeconds)); }), 100);
  EXPECT_FALSE(woken);
  EXPECT_FALSE(OtherThreadCanLock(condition));
}

TEST(Condition, TimedWaitIsTrueWhenWoken) {
  Condition condition(true);
  // The value that means "without limit" elsewhere is but a long time here.
  for (const Elapse& limit :
       {Elapse(60), Elapse(0x7FFFFFFF), Elapse(0x7FFFFFFFFFFFFFFF, Elapse::TimerTicks)}) {
    Waiters waiters(condition, 1, [&] { EXPECT_TRUE(condition.TimedWait(limit)); });
    condition.Signal();
    waiters.Join();
    EXPECT_EQ(1, waiters.Returned());
  }
}

TEST(Condition, SignalWakesOne) {
  Condition condition(true);
  Waiters waiters(condition, 3, [&] { condition.Wait(); });
  for (int count = 1; count <= 3; ++count) {
    condition.Signal();
    ASSERT_TRUE(Eventually([&] { return waiters.Returned() == count; }));
    WatchForMore();
    EXPECT_EQ(count, waiters.Returned());
  }
}

TEST(Condition, SignalWithoutAWaiterHasNoEffectOnALaterWait) {
  Condition condition(true);
  condition.Signal();
  condition.Broadcast();
  condition.Notify();
  const Lock lock(condition);
  EXPECT_FALSE(condition.TimedWait(Elapse(50, Elapse::MilliSeconds)));
}

TEST(Condition, WokenThreadsOwnTheMonitorOneAfterAnother) {
  Condition condition(true);
  std::atomic<int> inside{0}, most{0};
  Waiters waiters(condition, 4, [&] {
    condition.Wait();
    most = std::max<int>(most, ++inside);
    std::this_thread::yield();
    --inside;
  });
  condition.Broadcast();
  waiters.Join();
  EXPECT_EQ(1, most);
}

// While the caller holds the monitor nobody comes back from Wait, and yet all have left the wait itself: another
// broadcast finds nobody, and a later wait is not woken by what this one left behind.
TEST(Condition, BroadcastReturnsWhenAllHaveLeftTheWait) {
  for (int round = 0; round < 50; ++round) {
    Condition condition(true);
    Waiters waiters(condition, 3, [&] { condition.Wait(); });
    {
      const Lock lock(condition);
      condition.Broadcast();
      EXPECT_EQ(0, waiters.Returned());
      condition.Signal();  // for one that was still in the wait this would stay pending
      EXPECT_FALSE(condition.TimedWait(Elapse(0)));
    }
    waiters.Join();
    EXPECT_EQ(3, waiters.Returned());
    const Lock lock(condition);
    EXPECT_FALSE(condition.TimedWait(Elapse(0)));
  }
}

TEST(Condition, BroadcastToOneWakesIt) {
  Condition condition(true);
  Waiters waiters(condition, 1, [&] { condition.Wait(); });
  const auto broadcast = [&] {
    const Lock lock(condition);
    condition.Broadcast();
  };
  broadcast();
  waiters.Join();
  EXPECT_EQ(1, waiters.Returned());
}

TEST(Condition, NotifyBroadcastsIfToldSo) {
  Condition condition(true);
  Waiters waiters(condition, 3, [&] { condition.Wait(); });
  condition.Notify();
  waiters.Join();
  EXPECT_EQ(3, waiters.Returned());
}

TEST(Condition, NotifySignalsOtherwise) {
  Condition condition(false);
  Waiters waiters(condition, 2, [&] { condition.Wait(); });
  condition.Notify();
  ASSERT_TRUE(Eventually([&] { return waiters.Returned() == 1; }));
  WatchForMore();
  EXPECT_EQ(1, waiters.Returned());
  condition.Broadcast();  // an explicit one stays one
  waiters.Join();
}

TEST(Condition, AWaitReleasesOneLevelOnly) {
  Condition condition(true);
  condition.Lock();
  condition.Lock();
  std::atomic<bool> tried{false};
  std::thread other([&] {
    EXPECT_FALSE(condition.TryLock(Elapse(20, Elapse::MilliSeconds)));
    tried = true;
  });
  EXPECT_FALSE(condition.TimedWait(Elapse(100, Elapse::MilliSeconds)));
  other.join();
  EXPECT_TRUE(tried);
  condition.Unlock();
  condition.Unlock();
  EXPECT_TRUE(OtherThreadCanLock(condition));
}

namespace {

// A derived class that counts how it is locked.
class CountingCondition : public Condition {
 public:
  CountingCondition() : Condition(true) {}
  void Lock(const Elapse& timeout = sINFINITE) override {
    m_timeouts.push_back(timeout);
    Condition::Lock(timeout);
  }
  std::vector<Elapse> m_timeouts;
};

}  // namespace

TEST(Condition, AWaitTakesTheMonitorBackThroughTheVirtualLockWithoutLimit) {
  CountingCondition condition;
  condition.Lock();
  condition.m_timeouts.clear();
  EXPECT_FALSE(condition.TimedWait(Elapse(0)));
  ASSERT_EQ(1u, condition.m_timeouts.size());
  EXPECT_EQ(Elapse(0x7FFFFFFF, Elapse::Seconds), condition.m_timeouts.front());
  condition.Unlock();
}

TEST(Condition, APredicateIsPassedToAndFro) {
  Condition condition(false);
  constexpr int rounds = 5000;
  int turn = 0;
  const auto play = [&](int me) {
    const Lock lock(condition);
    for (int round = 0; round < rounds; ++round) {
      while (turn != me) condition.Wait();
      turn = 1 - me;
      condition.Notify();
    }
  };
  std::thread partner([&] { play(1); });
  play(0);
  partner.join();
  EXPECT_EQ(0, turn);
}

TEST(ConditionWaitEndedByAPC, TextAndSeverity) {
  const ConditionWaitEndedByAPC warning;
  EXPECT_EQ("A wait on a Condition object was ended by a unser mode APC",
            warning.GetData(AlertInfo::sMESSAGE));
  EXPECT_EQ(AlertInfo::eWARNING, warning.GetSeverity());
}
