// What a killed thread leaves behind, and what it doesn't.
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/Semaphore.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <boost/weak_ptr.hpp>
#include <chrono>
#include <memory>
#include <thread>

#include "Support/LeakDetector.h"
#include "Threads/ThreadTestSupport.h"

using namespace ThreadTests;
using Oxa::Core::Condition;
using Oxa::Core::Lock;
using Oxa::Core::MultiWait;
using Oxa::Core::Mutex;
using Oxa::Core::OSError;
using Oxa::Core::Semaphore;
using TestSupport::ForgiveLeaks;

namespace {

constexpr int iSECOND = 1000;

// A moment in which a thread that was seen on its way into a wait gets there; being early only makes a test weaker.
void LetItFallAsleep() { std::this_thread::sleep_for(std::chrono::milliseconds(20)); }

// Takes a condition however its last owner left it.
void TakeOver(Condition& condition) {
  try {
    condition.Lock();
  } catch (OSError&) {
    // abandoned, and ours
  }
}

// Goes through the lock of a condition, which a thread that was seen to hold it gives up in its wait only.
void SeeItWait(Condition& condition) { const Lock lock(condition); }

class Kills : public testing::Test {
 protected:
  void SetUp() override { OXA_SKIP_WHERE_NOBODY_CAN_BE_KILLED(); }

  // Starts `work`, waits until it has begun and a moment more, and kills it.
  void Kill(const std::function<void(TaskDirective&)>& work) {
    Start(work);
    KillNow();
  }

  void Start(const std::function<void(TaskDirective&)>& work) {
    m_bBegun = false;
    ASSERT_TRUE(m_victim->Start(Do([this, work](TaskDirective& directive) {
      m_bBegun = true;
      work(directive);
      return 0;
    })));
    ASSERT_TRUE(Eventually([this] { return m_bBegun.load(); }));
    LetItFallAsleep();
  }

  // What waits for `condition`, and does so when this returns.
  void StartWaiterOf(Condition& condition) {
    std::atomic<bool> locked{false};
    Start([&](TaskDirective&) {
      const Lock lock(condition);
      locked = true;
      while (true) condition.Wait();
    });
    ASSERT_TRUE(Eventually([&locked] { return locked.load(); }));
    SeeItWait(condition);
  }

  void KillNow() {
    EXPECT_TRUE(m_victim->Kill(Elapse(5)));
    EXPECT_FALSE(m_victim->IsRunning());
    EXPECT_TRUE(m_victim->IsState(Thread::eTHREAD_ERROR));
  }

  std::atomic<bool> m_bBegun{false};
  SharedThread m_victim = Thread::Create("Victim");
};

[[noreturn]] void Spin() {
  volatile unsigned long count = 0;
  while (true) count = count + 1;
}

}  // namespace

TEST_F(Kills, ATaskThatIgnoresStops) {
  Hearing hearing;
  m_victim->AddListener(hearing);
  Start([](TaskDirective&) { Spin(); });
  EXPECT_FALSE(m_victim->Stop(Elapse(10, Elapse::MilliSeconds)));
  KillNow();
  EXPECT_EQ(std::vector<std::string>{"error Victim: Thread named Victim killed by call to Thread::Kill()"},
            hearing.Heard());
  EXPECT_STREQ("Thread named Victim killed by call to Thread::Kill()", m_victim->GetLastError()->what());
  EXPECT_EQ(-1, m_victim->GetResult());
  EXPECT_NE(nullptr, m_victim->GetTask());
  EXPECT_FALSE(m_victim->IsAlive());
  EXPECT_EQ(0, m_victim->GetRefCount());
}

TEST_F(Kills, WithoutATimeoutIsTrue) {
  Start([](TaskDirective&) { Spin(); });
  EXPECT_TRUE(m_victim->Kill(Elapse(0)));
  EXPECT_TRUE(m_victim->IsState(Thread::eTHREAD_ERROR));
}

TEST_F(Kills, WhatDoesNotRunIsTrueAndNothing) {
  EXPECT_TRUE(m_victim->Kill(Elapse(5)));
  EXPECT_EQ(Thread::eTHREAD_IDLE, m_victim->GetState());
  ASSERT_TRUE(m_victim->Start(Give(0)));
  ASSERT_TRUE(Eventually([this] { return m_victim->HasCompleted(); }));
  EXPECT_TRUE(m_victim->Kill(Elapse(5)));
  EXPECT_EQ(Thread::eTHREAD_COMPLETED, m_victim->GetState());
  EXPECT_EQ(nullptr, m_victim->GetLastError());
}

TEST_F(Kills, TheKilledCanBeStartedAgain) {
  for (int i = 0; i != 5; ++i) Kill([](TaskDirective&) { Spin(); });
  std::atomic<bool> ran{false};
  ASSERT_TRUE(m_victim->Start(Do([&ran](TaskDirective&) {
    ran = true;
    return 4;
  })));
  EXPECT_TRUE(Eventually([&] { return m_victim->HasCompleted(); }));
  EXPECT_TRUE(ran);
  EXPECT_EQ(4, m_victim->GetResult());
}

TEST_F(Kills, TheTaskOfTheKilledIsKeptByTheThreadAlone) {
  boost::weak_ptr<Task> weak;
  {
    const SharedTask task = Do([this](TaskDirective&) {
      m_bBegun = true;
      Spin();
      return 0;
    });
    weak = task;
    ASSERT_TRUE(m_victim->Start(task));
  }
  ASSERT_TRUE(Eventually([this] { return m_bBegun.load(); }));
  KillNow();
  EXPECT_EQ(weak.lock(), m_victim->GetTask());
  ASSERT_TRUE(m_victim->Start(Give(0)));
  EXPECT_TRUE(weak.expired());
  EXPECT_TRUE(Eventually([this] { return m_victim->HasCompleted(); }));
}

TEST_F(Kills, TheNextThreadFindsNoDataOfTheDeadOne) {
  pthread_key_t key;
  ASSERT_EQ(0, pthread_key_create(&key, nullptr));
  for (int i = 0; i != 20; ++i) {
    Start([key, this](TaskDirective&) {
      pthread_setspecific(key, this);
      Spin();
    });
    KillNow();
    std::atomic<int> found{-1};
    ASSERT_TRUE(m_victim->Start(Do([&found, key](TaskDirective&) {
      found = pthread_getspecific(key) != nullptr;
      return 0;
    })));
    ASSERT_TRUE(Eventually([&] { return found != -1 && m_victim->HasCompleted(); }));
    EXPECT_EQ(0, found);
  }
  pthread_key_delete(key);
}

TEST_F(Kills, TheKilledIsKeptByNobody) {
  boost::weak_ptr<Thread> weak(m_victim);
  Kill([](TaskDirective&) { Spin(); });
  EXPECT_EQ(1, m_victim.use_count());
  m_victim.reset();
  EXPECT_TRUE(weak.expired());
}

TEST_F(Kills, TheLastReferenceMayBeTheVictimsOwn) {
  boost::weak_ptr<Thread> weak(m_victim);
  Start([](TaskDirective&) { Spin(); });
  Thread* const raw = m_victim.get();
  m_victim.reset();
  EXPECT_TRUE(raw->Kill(Elapse(5)));
  EXPECT_TRUE(weak.expired());
}

TEST_F(Kills, AMutexOfTheVictimStaysHeld) {
  auto* const mutex = new Mutex;  // never destroyed: that would wait for its owner
  static Mutex* s_pKept = mutex;
  ASSERT_EQ(mutex, s_pKept);
  std::atomic<bool> locked{false};
  Start([&locked, mutex](TaskDirective&) {
    mutex->Lock();
    locked = true;
    Spin();
  });
  ASSERT_TRUE(Eventually([&locked] { return locked.load(); }));
  KillNow();
  EXPECT_FALSE(mutex->TryLock());
}

TEST_F(Kills, AConditionOfTheVictimIsAbandoned) {
  Condition condition(true);
  std::atomic<bool> locked{false};
  Start([&](TaskDirective&) {
    condition.Lock();
    locked = true;
    Spin();
  });
  ASSERT_TRUE(Eventually([&locked] { return locked.load(); }));
  KillNow();
  std::string text;
  try {
    condition.Lock();
  } catch (OSError& error) {
    text = error.what();
  }
  EXPECT_EQ("Attempt to acquire lock abandoned", text);
  condition.Unlock();
}

TEST_F(Kills, AWaiterOfAConditionIsCountedNoMore) {
  Condition condition(true);
  StartWaiterOf(condition);
  KillNow();
  ASSERT_TRUE(condition.TryLock(Elapse(1)));
  condition.Unlock();
  bool go = false;
  std::atomic<int> waiting{0};
  std::vector<std::thread> others;
  for (int i = 0; i != 2; ++i)
    others.emplace_back([&] {
      const Lock lock(condition);
      ++waiting;
      while (!go) condition.Wait();
    });
  ASSERT_TRUE(Eventually([&] { return waiting == 2; }));
  {
    const Lock lock(condition);
    go = true;
    condition.Broadcast();
  }
  for (std::thread& other : others) other.join();
}

TEST_F(Kills, ASignalForADeadWaiterGoesToTheNext) {
  Condition condition(false);
  StartWaiterOf(condition);
  bool go = false;
  std::atomic<bool> waiting{false};
  std::thread other([&] {
    const Lock lock(condition);
    waiting = true;
    while (!go) condition.Wait();
  });
  ASSERT_TRUE(Eventually([&] { return waiting.load(); }));
  SeeItWait(condition);
  KillNow();
  {
    const Lock lock(condition);
    go = true;
    condition.Signal();  // the victim had waited longest
  }
  other.join();
}

TEST_F(Kills, ABroadcastThatADeadWaiterWasPartOfComesToItsEnd) {
  Condition condition(true);
  for (int i = 0; i != 50; ++i) {
    m_bBegun = false;
    std::atomic<bool> end{false};
    std::thread other([&] {
      while (!end) {
        try {
          condition.Lock();
          if (!end) condition.TimedWait(Elapse(1));
        } catch (OSError&) {
          // the victim had just taken the lock
        }
        condition.Unlock();
      }
    });
    ASSERT_TRUE(m_victim->Start(Do([&](TaskDirective&) {
      const Lock lock(condition);
      m_bBegun = true;
      while (true) condition.Wait();
      return 0;
    })));
    ASSERT_TRUE(Eventually([this] { return m_bBegun.load(); }));
    std::thread killer([this] { m_victim->Kill(Elapse(5)); });
    for (int broadcast = 0; broadcast != 20; ++broadcast) {
      TakeOver(condition);
      condition.Broadcast();
      condition.Unlock();
    }
    killer.join();
    TakeOver(condition);
    end = true;
    condition.Broadcast();
    condition.Unlock();
    other.join();
  }
}

TEST_F(Kills, AWaiterOfASemaphoreTakesNothingAlong) {
  Semaphore semaphore(0);
  Kill([&semaphore](TaskDirective&) { semaphore.Wait(); });
  semaphore.Post(1);
  EXPECT_EQ(1u, semaphore.GetCount());
  EXPECT_TRUE(semaphore.TryWait());
  EXPECT_FALSE(semaphore.TryWait());
}

TEST_F(Kills, APostMeetsTheOtherWaiterOfASemaphore) {
  Semaphore semaphore(0);
  Start([&semaphore](TaskDirective&) { semaphore.TimedWait(Elapse(100)); });
  std::thread other([&semaphore] { semaphore.Wait(); });
  LetItFallAsleep();
  KillNow();
  semaphore.Post(1);
  other.join();
  EXPECT_EQ(0u, semaphore.GetCount());
}

TEST_F(Kills, AGateThatTheVictimWaitedAtCanBeDestroyed) {
  auto gate = std::make_unique<MultiWait>();
  Kill([&gate](TaskDirective&) { gate->wait(nullptr); });
  EXPECT_LT(TestSupport::MillisecondsOf([&gate] { gate.reset(); }), 5 * iSECOND);
}

TEST_F(Kills, AMutexThatTheVictimSpunForCanBeDestroyed) {
  auto mutex = std::make_unique<Mutex>();
  mutex->Lock();
  Kill([&mutex](TaskDirective&) { mutex->TryLock(Elapse(100)); });
  mutex->Unlock();
  EXPECT_LT(TestSupport::MillisecondsOf([&mutex] { mutex.reset(); }), 4 * iSECOND);
}

TEST_F(Kills, ASleeperBehindADeadOneGetsTheMutex) {
  for (int i = 0; i != 50; ++i) {
    Mutex mutex;
    mutex.Lock();
    m_bBegun = false;
    ASSERT_TRUE(m_victim->Start(Do([&](TaskDirective&) {
      m_bBegun = true;
      mutex.Lock();
      mutex.Unlock();
      Spin();
      return 0;
    })));
    ASSERT_TRUE(Eventually([this] { return m_bBegun.load(); }));
    std::thread other([&mutex] { const Lock lock(mutex); });
    if (i % 2 == 0) LetItFallAsleep();
    std::thread killer([this] { m_victim->Kill(Elapse(5)); });
    killer.join();
    mutex.Unlock();
    other.join();
  }
}

TEST_F(Kills, AWaitForAStopIsNoHindrance) {
  Kill([](TaskDirective& directive) { directive.WaitForStopRequest(); });
  Kill([](TaskDirective& directive) { directive.TimedWaitForStopRequest(Elapse(100)); });
  Kill([](TaskDirective& directive) {
    while (directive.KeepRunning()) {
    }
  });
}

TEST_F(Kills, AThreadThatTheVictimWaitedForIsAsBefore) {
  const Running other(UntilStopped());
  Kill([&other](TaskDirective&) { other->WaitFor(nullptr); });
  EXPECT_TRUE(other->TimedWaitForState(Thread::eTHREAD_RUNNING, Elapse(5)));
  EXPECT_TRUE(other->Stop(Elapse(5)));
}

TEST_F(Kills, AVictimWithErrorsInFlightLeavesNoneBehind) {
  for (int i = 0; i != 12; ++i) {
    Kill([](TaskDirective&) {
      ForgiveLeaks();
      try {
        OXA_RAISE_ERROR("Acme", Oxa::Core::InvalidParameter("gain"));
      } catch (Error&) {
        Spin();
      }
    });
  }
  EXPECT_THROW(OXA_RAISE_ERROR("Acme", Oxa::Core::InvalidParameter("gain")), Oxa::Core::InvalidParameter);
}

TEST_F(Kills, ABlockedSignalIsNoHindranceWhereThreadsInheritIt) {
  sigset_t all, before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  Kill([](TaskDirective&) { Spin(); });
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

// It could run on: nothing has changed for it.
TEST_F(Kills, AVictimThatCannotBeReachedIsAnErrorOfTheSystem) {
  std::atomic<bool> end{false};
  Start([&end](TaskDirective&) {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, nullptr);
    while (!end) {
    }
  });
  try {
    m_victim->Kill(Elapse(5));
    ADD_FAILURE() << "no error";
  } catch (OSError& error) {
    EXPECT_STREQ("Connection timed out", error.what());
    EXPECT_EQ("Oxa.Core.Thread.Kill", error.GetData(Error::sLOG_NAME));
  }
  EXPECT_TRUE(m_victim->IsRunning());
  EXPECT_TRUE(m_victim->IsAlive());
  end = true;
  EXPECT_TRUE(m_victim->WaitFor(nullptr));
  EXPECT_EQ(Thread::eTHREAD_COMPLETED, m_victim->GetState());
  EXPECT_EQ(nullptr, m_victim->GetLastError());
}

// A listener that hears of the missing task holds the start up, and with it the kill. That the task of an earlier run
// was started doesn't count.
TEST_F(Kills, AThreadThatIsStartingIsSpared) {
  class Slow : public Thread::Listener {
   public:
    void OnThreadError(SharedThread, Error&) override {
      m_bIn = true;
      while (!m_bEnd) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    std::atomic<bool> m_bIn{false}, m_bEnd{false};
  } slow;
  ASSERT_TRUE(m_victim->Start(Give(0)));
  ASSERT_TRUE(Eventually([this] { return m_victim->HasCompleted() && m_victim.use_count() == 1; }));
  m_victim->AddListener(slow);
  m_victim->Start(SharedTask());
  ASSERT_TRUE(Eventually([&slow] { return slow.m_bIn.load(); }));
#if defined(OXACORE_SOAK)
  EXPECT_GE(TestSupport::MillisecondsOf([this] { EXPECT_FALSE(m_victim->Kill(Elapse(5))); }), 9.9 * iSECOND);
#endif
  std::atomic<int> killed{-1};
  std::thread killer([&] { killed = m_victim->Kill(Elapse(5)); });
  LetItFallAsleep();
  EXPECT_EQ(-1, killed);
  slow.m_bEnd = true;
  EXPECT_LT(TestSupport::MillisecondsOf([&killer] { killer.join(); }), 5 * iSECOND)
      << "there is nobody to wait for";
  EXPECT_EQ(1, killed);
  EXPECT_TRUE(Eventually([this] { return m_victim.use_count() == 1; }));
  EXPECT_STREQ("Attempted to run thread Victim with a NULL Task pointer", m_victim->GetLastError()->what());
}

// Who finds a thread gone holds its state while it tells so.
TEST_F(Kills, AThreadThatTheVictimFoundGoneCanStillBeAsked) {
  class Stopping : public Thread::Listener {
   public:
    void OnThreadError(SharedThread, Error&) override {
      if (++m_iTold == 1) Spin();
    }
    std::atomic<int> m_iTold{0};
  };
  ForgiveLeaks();  // the victim holds the thread that it tells of
  Stopping stopping;
  const SharedThread gone = Thread::Create("Gone");
  gone->AddListener(stopping);
  ASSERT_TRUE(gone->Start(Do([](TaskDirective&) -> int { pthread_exit(nullptr); })));
  ASSERT_TRUE(Eventually([&gone] { return gone.use_count() == 1; }));
  const SharedThread victim = Thread::Create("Victim");
  ASSERT_TRUE(victim->Start(Do([&gone](TaskDirective&) {
    ForgiveLeaks();
    return gone->IsAlive() ? 1 : 0;
  })));
  ASSERT_TRUE(Eventually([&stopping] { return stopping.m_iTold == 1; }));
  EXPECT_TRUE(victim->Kill(Elapse(60)));
  EXPECT_NO_THROW(EXPECT_FALSE(gone->IsAlive()));
  EXPECT_EQ(2, stopping.m_iTold);
  EXPECT_EQ(Thread::eTHREAD_ERROR, gone->GetState());
}

// What the listeners of a failed thread do then is done to its end.
TEST_F(Kills, AThreadThatTellsItsFailureIsSpared) {
  class Slow : public Thread::Listener {
   public:
    void OnThreadError(SharedThread, Error&) override {
      ++m_iBegun;
      m_bDone = Eventually([this] { return m_bGoOn.load(); });
    }
    std::atomic<int> m_iBegun{0};
    std::atomic<bool> m_bGoOn{false}, m_bDone{false};
  };
  for (const bool known : {true, false}) {
    Slow slow;
    const SharedThread thread = Thread::Create("Failed");
    thread->AddListener(slow);
    ASSERT_TRUE(thread->Start(Do([known](TaskDirective&) -> int {
      if (known) throw Oxa::Core::LogicError("dark");
      throw 1;
    })));
    ASSERT_TRUE(Eventually([&] { return slow.m_iBegun == 1; }));
    EXPECT_TRUE(thread->Kill(Elapse(0)));
    slow.m_bGoOn = true;
    EXPECT_TRUE(Eventually([&] { return thread.use_count() == 1; }));
    EXPECT_TRUE(slow.m_bDone);
    EXPECT_EQ(1, slow.m_iBegun);
    EXPECT_EQ(Thread::eTHREAD_ERROR, thread->GetState());
    EXPECT_STREQ(known ? "dark" : "Thread Failed terminated due to an unknown error thrown from Task Run()",
                 thread->GetLastError()->what());
  }
}

TEST_F(Kills, TwoAtOnceTellOneEnd) {
  for (int i = 0; i != 30; ++i) {
    const SharedThread thread = m_victim;
    Hearing hearing;
    thread->AddListener(hearing);
    m_bBegun = false;
    ASSERT_TRUE(thread->Start(Do([this](TaskDirective&) {
      m_bBegun = true;
      Spin();
      return 0;
    })));
    ASSERT_TRUE(Eventually([this] { return m_bBegun.load(); }));
    std::thread first([&] { EXPECT_TRUE(thread->Kill(Elapse(5))); });
    std::thread second([&] { EXPECT_TRUE(thread->Kill(Elapse(5))); });
    std::thread third([&] { thread->IsAlive(); });
    first.join();
    second.join();
    third.join();
    thread->RemoveListener(hearing);
    EXPECT_EQ(1u, hearing.Heard().size());
    EXPECT_EQ(0, thread->GetRefCount());
  }
}

TEST_F(Kills, AKillAgainstANormalEndIsOneOfTheTwo) {
  for (int i = 0; i != 200; ++i) {
    Hearing hearing;
    m_victim->AddListener(hearing);
    std::atomic<bool> end{false};
    m_bBegun = false;
    ASSERT_TRUE(m_victim->Start(Do([&](TaskDirective&) {
      m_bBegun = true;
      while (!end) {
      }
      return 0;
    })));
    ASSERT_TRUE(Eventually([this] { return m_bBegun.load(); }));
    std::thread killer([this] { EXPECT_TRUE(m_victim->Kill(Elapse(5))); });
    end = true;
    killer.join();
    ASSERT_TRUE(Eventually([&] { return m_victim.use_count() == 1; }));
    m_victim->RemoveListener(hearing);
    ASSERT_EQ(1u, hearing.Heard().size());
    EXPECT_EQ(hearing.Heard()[0] == "complete Victim", m_victim->HasCompleted());
    EXPECT_EQ(0, m_victim->GetRefCount());
  }
}
