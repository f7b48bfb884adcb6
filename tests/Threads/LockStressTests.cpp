// Randomised stress with checks that can't be fooled: who holds a lock is alone, and every wake arrives.
#include <Infrastructure/OxaCore/Condition.h>
#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/Semaphore.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <random>
#include <thread>
#include <vector>

#include "Support/Eventually.h"

using namespace Oxa::Core;
using TestSupport::Eventually;

namespace {

#ifdef OXACORE_SOAK
constexpr std::chrono::seconds g_length(60);
#else
constexpr std::chrono::seconds g_length(3);
#endif

using Random = std::minstd_rand;

int Below(Random& random, int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }

Elapse UpTo(Random& random, int milliseconds) {
  return Elapse(Below(random, milliseconds + 1), Elapse::MilliSeconds);
}

// Fails the program when a crowd hangs: its threads can't be ended, so neither can the test go on.
[[noreturn]] void Hang(const char* what) {
  std::cerr << "HANG: " << what << std::endl;
  std::_Exit(3);
}

// Threads that run until the time is over.
class Crowd {
 public:
  void Add(int count, const std::function<void(Random&)>& step) {
    for (int one = 0; one < count; ++one)
      m_threads.emplace_back([this, step, seed = static_cast<unsigned>(m_threads.size()) + 1] {
        Random random(seed);
        while (!m_bEnd) step(random);
        ++m_iEnded;
      });
  }
  void RunFor(std::chrono::seconds length) const { std::this_thread::sleep_for(length); }
  bool Ending() const { return m_bEnd; }
  void End() { m_bEnd = true; }
  void Join(const char* what) {
    if (!Eventually([this] { return m_iEnded == static_cast<int>(m_threads.size()); })) Hang(what);
    for (auto& thread : m_threads) thread.join();
  }

 private:
  std::atomic<bool> m_bEnd{false};
  std::atomic<int> m_iEnded{0};
  std::vector<std::thread> m_threads;
};

// Something that only one thread may be at, however deep.
class Guarded {
 public:
  void Visit() {
    const std::thread::id self = std::this_thread::get_id();
    const bool again = m_visitor == self;
    if (m_iDepth++ == 0) m_visitor = self;
    EXPECT_TRUE(again || m_iDepth == 1) << "two threads under one lock";
    ++m_llVisits;
    if (--m_iDepth == 0) m_visitor = std::thread::id();
  }
  long long Visits() const { return m_llVisits; }

 private:
  std::thread::id m_visitor;
  int m_iDepth = 0;
  long long m_llVisits = 0;
};

// Takes `lock` in one of its ways; false if the time ran out.
bool TakeInSomeWay(IMutex& lock, Random& random) {
  switch (Below(random, 8)) {
    case 0:
      return lock.TryLock();
    case 1:
      return lock.TryLock(UpTo(random, 2));
    case 2:
      try {
        lock.Lock(UpTo(random, 1));
        return true;
      } catch (const Error&) {
        return false;
      }
    default:
      lock.Lock();
      return true;
  }
}

void VisitDeep(IMutex& lock, Guarded& guarded, Random& random, int depth, std::atomic<long long>& visits) {
  if (!TakeInSomeWay(lock, random)) return;
  guarded.Visit();
  ++visits;
  if (depth > 0 && Below(random, 3) == 0) VisitDeep(lock, guarded, random, depth - 1, visits);
  if (Below(random, 64) == 0) std::this_thread::yield();
  guarded.Visit();
  ++visits;
  lock.Unlock();
}

void StressLock(IMutex& lock) {
  Guarded guarded;
  std::atomic<long long> visits{0};
  Crowd crowd;
  crowd.Add(4, [&](Random& random) { VisitDeep(lock, guarded, random, 4, visits); });
  crowd.RunFor(g_length);
  crowd.End();
  crowd.Join("threads that lock and unlock");
  EXPECT_EQ(visits, guarded.Visits());
  EXPECT_GT(guarded.Visits(), 1000);
  EXPECT_TRUE(lock.TryLock());
  lock.Unlock();
}

}  // namespace

TEST(LockStress, OneAtATimeUnderAMutex) {
  Mutex mutex;
  StressLock(mutex);
}

TEST(LockStress, OneAtATimeUnderACondition) {
  Condition condition(true);
  StressLock(condition);
}

// Each broadcast is answered by all who wait without limit before the next one comes, while timed waits expire
// and stray signals fall: one lost wake, or one broadcast that doesn't complete, and the game stands still.
TEST(ConditionStress, EveryBroadcastCompletesAndReachesAllThatWait) {
  constexpr int faithful = 3;
  Condition condition(true);
  Guarded guarded;
  long long generation = 0;
  std::atomic<int> answers{0};
  std::atomic<long long> broadcasts{0};
  bool over = false;
  Crowd crowd;
  crowd.Add(faithful, [&](Random&) {
    const Lock lock(condition);
    thread_local long long seen = 0;
    while (generation == seen && !over) {
      condition.Wait();
      guarded.Visit();
    }
    if (generation != seen) ++answers;
    seen = generation;
  });
  crowd.Add(3, [&](Random& random) {
    const Lock lock(condition);
    condition.TimedWait(UpTo(random, 1));
    guarded.Visit();
  });
  crowd.Add(1, [&](Random& random) {
    condition.Signal();
    if (Below(random, 4) == 0) std::this_thread::yield();
  });
  Random random(77);
  const auto end = std::chrono::steady_clock::now() + g_length;
  for (; std::chrono::steady_clock::now() < end; ++broadcasts) {
    Lock lock(condition);
    answers = 0;
    ++generation;
    if (Below(random, 3) == 0) lock.Release();
    condition.Broadcast();
    lock.Release();
    if (!Eventually([&] { return answers >= faithful; })) Hang("waiters that a broadcast didn't reach");
  }
  crowd.End();
  Eventually([&] {
    const Lock lock(condition);
    over = true;
    condition.Broadcast();
    return true;
  });
  crowd.Join("waiters at the end");
  EXPECT_GT(broadcasts, 100);
}

// Every token is announced by one signal only and must be taken: by somebody who waits without limit, or by a
// timed waiter that finds it when it looks again.
TEST(ConditionStress, EverySignalIsWorthOneToken) {
  Condition condition(false);
  Guarded guarded;
  int tokens = 0;
  bool over = false;
  std::atomic<long long> taken{0}, given{0};
  Crowd crowd;
  const auto take = [&](const std::function<void()>& wait) {
    const Lock lock(condition);
    while (tokens == 0 && !over) {
      wait();
      guarded.Visit();
    }
    if (tokens > 0) --tokens, ++taken;
  };
  crowd.Add(2, [&](Random&) { take([&] { condition.Wait(); }); });
  crowd.Add(2, [&](Random& random) { take([&] { condition.TimedWait(UpTo(random, 1)); }); });
  Random random(5);
  const auto end = std::chrono::steady_clock::now() + g_length;
  while (std::chrono::steady_clock::now() < end) {
    const int batch = 1 + Below(random, 3);
    for (int token = 0; token < batch; ++token) {
      const Lock lock(condition);
      ++tokens;
      ++given;
      condition.Notify();
    }
    if (Below(random, 2) == 0 && !Eventually([&] { return taken == given; }))
      Hang("tokens that nobody takes");
  }
  if (!Eventually([&] { return taken == given; })) Hang("last tokens");
  crowd.End();
  {
    const Lock lock(condition);
    over = true;
    condition.Broadcast();
  }
  crowd.Join("takers at the end");
  EXPECT_EQ(given, taken);
  EXPECT_GT(given, 100);
}

TEST(SemaphoreStress, WhatIsPostedIsTakenOnce) {
  Semaphore semaphore(0);
  std::atomic<long long> posted{0}, taken{0};
  Crowd posters, takers;
  posters.Add(2, [&](Random& random) {
    const unsigned amount = 1 + static_cast<unsigned>(Below(random, 3));
    if (posted - taken > 1000) return std::this_thread::yield();
    posted += amount;
    semaphore.Post(amount);
  });
  takers.Add(3, [&](Random& random) {
    const int way = Below(random, 3);
    if (way == 0) semaphore.Wait(), ++taken;
    if (way == 1 && semaphore.TimedWait(UpTo(random, 1))) ++taken;
    if (way == 2 && semaphore.TryWait()) ++taken;
  });
  posters.RunFor(g_length);
  takers.End();
  takers.Join("takers of a semaphore that is being fed");
  posters.End();
  posters.Join("posters");
  while (semaphore.TryWait()) ++taken;
  EXPECT_EQ(posted, taken);
  EXPECT_EQ(0u, semaphore.GetCount());
}
