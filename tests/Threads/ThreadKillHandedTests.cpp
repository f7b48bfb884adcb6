// Kills of threads that have just been handed what they waited for, and of one that wakes others: the victim, or one
// that it waits for, is frozen in the moment between.
#include <Infrastructure/OxaCore/Condition.h>
#include <Infrastructure/OxaCore/Semaphore.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

#include "Support/WaitingThread.h"
#include "Threads/ThreadTestSupport.h"

using namespace ThreadTests;
using Oxa::Core::Condition;
using Oxa::Core::Lock;
using Oxa::Core::Mutex;
using Oxa::Core::Semaphore;

namespace {

// Stops a thread by a signal whose handler doesn't come back before the end of the scope.
class Frozen {
 public:
  explicit Frozen(unsigned long id) {
    s_iState = iSENT;
    struct sigaction action {};
    action.sa_handler = [](int) {
      s_iState = iFROZEN;
      while (s_iState == iFROZEN) {
      }
    };
    sigaction(SIGUSR1, &action, &m_before);
    ::syscall(SYS_tgkill, ::getpid(), static_cast<pid_t>(id), SIGUSR1);
    EXPECT_TRUE(Eventually([] { return s_iState == iFROZEN; }));
  }
  ~Frozen() {
    s_iState = iTHAWED;
    sigaction(SIGUSR1, &m_before, nullptr);
  }

 private:
  static constexpr int iSENT = 0, iFROZEN = 1, iTHAWED = 2;
  static inline std::atomic<int> s_iState{iTHAWED};
  struct sigaction m_before;
};

// Binds this thread, and those that it starts, to the processor that it runs on.
class OneProcessor {
 public:
  OneProcessor() {
    ::sched_getaffinity(0, sizeof m_before, &m_before);
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(::sched_getcpu(), &one);
    ::sched_setaffinity(0, sizeof one, &one);
  }
  ~OneProcessor() { ::sched_setaffinity(0, sizeof m_before, &m_before); }

 private:
  cpu_set_t m_before;
};

class KillsOfTheHanded : public testing::Test {
 protected:
  void SetUp() override { OXA_SKIP_WHERE_NOBODY_CAN_BE_KILLED(); }

  // A victim that is asleep in its wait.
  void StartVictim(const std::function<void()>& wait) {
    ASSERT_TRUE(m_victim->Start(Do([this, wait](TaskDirective&) {
      m_bBegun = true;
      wait();
      return 0;
    })));
    ASSERT_TRUE(Eventually([this] { return m_bBegun.load(); }));
    TestSupport::AwaitSleepOf(m_victim->GetThreadID());
  }

  SharedThread m_victim = Thread::Create("Victim");

 private:
  std::atomic<bool> m_bBegun{false};
};

}  // namespace

TEST_F(KillsOfTheHanded, WhatWasPostedIsForTheNext) {
  Semaphore semaphore(0);
  StartVictim([&] { semaphore.Wait(); });
  {
    const Frozen frozen(m_victim->GetThreadID());
    semaphore.Post(1);
    EXPECT_TRUE(m_victim->Kill(Elapse(60)));
  }
  EXPECT_EQ(1u, semaphore.GetCount());
  EXPECT_TRUE(semaphore.TryWait());
  EXPECT_EQ(-1, m_victim->GetResult());
}

TEST_F(KillsOfTheHanded, ASignalIsForTheNext) {
  Condition condition(false);
  const auto wait = [&] {
    const Lock lock(condition);
    EXPECT_TRUE(condition.TimedWait(Elapse(20)));
  };
  StartVictim(wait);
  const TestSupport::Waiting next(wait);
  const Frozen frozen(m_victim->GetThreadID());
  condition.Signal();
  EXPECT_TRUE(m_victim->Kill(Elapse(60)));
}

// The victim doesn't run before the kill, since it yields to whoever wakes it.
TEST_F(KillsOfTheHanded, AWakeIsForTheNextSleeperOfAMutex) {
  const OneProcessor bound;
  Mutex mutex;
  mutex.Lock();
  StartVictim([&] {
    mutex.Lock();
    mutex.Unlock();
    while (true) std::this_thread::yield();
  });
  m_victim->SetPriority(Thread::ePRIORITY_IDLE);
  const TestSupport::Waiting next([&] { const Lock lock(mutex); });
  mutex.Unlock();
  EXPECT_TRUE(m_victim->Kill(Elapse(60)));
}

// It would leave a broadcast behind that nobody waits for.
TEST_F(KillsOfTheHanded, WhoWaitsForTheEndOfABroadcastIsSparedUntilThen) {
  Condition condition(true);
  std::atomic<bool> killed{false};
  const auto wait = [&] {
    const Lock lock(condition);
    condition.Wait();
  };
  const TestSupport::Waiting first(wait), second(wait);
  std::thread killer;
  {
    const Frozen frozen(first.Id());
    StartVictim([&] { condition.Broadcast(); });
    killer = std::thread([&] { killed = m_victim->Kill(Elapse(60)); });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));  // being early only makes the test weaker
    EXPECT_FALSE(killed);
    EXPECT_TRUE(m_victim->IsRunning());
  }
  killer.join();
  EXPECT_TRUE(killed);
}
