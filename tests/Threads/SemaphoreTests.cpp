#include <Infrastructure/OxaCore/Semaphore.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "Support/Eventually.h"

using namespace Oxa::Core;
using TestSupport::Eventually;
using TestSupport::MillisecondsOf;

namespace {

static_assert(std::is_base_of_v<Semaphore, MultiWait>);
static_assert(std::has_virtual_destructor_v<Semaphore>);

std::string ToldOnStandardErrorBy(const std::function<void()>& action) {
  testing::internal::CaptureStderr();
  action();
  return testing::internal::GetCapturedStderr();
}

bool Tells(const std::string& told, const std::string& assertion) {
  return told.find("): Failed Assertion(" + assertion + ")") != std::string::npos;
}

std::string RaisedBy(const std::function<void()>& action) {
  try {
    action();
  } catch (const OSError& error) {
    EXPECT_EQ("Oxa.Core.Semaphore", error.GetData(AlertInfo::sLOG_NAME));
    return error.GetUnwindStack()->front().Get(CodeContext::sFUNCTION) + ": " +
           error.GetData(AlertInfo::sMESSAGE);
  }
  return "nothing";
}

const std::string sNO_OBJECT = std::strerror(EINVAL);

// How many are in the gate is its own affair; an explicit instantiation is the one way past access control.
// The lower halves are the counts of this process.
std::uint32_t InsideNow(const MultiWait& gate);

template <std::atomic<std::uint64_t> MultiWait::*Inside>
struct Look {
  friend std::uint32_t InsideNow(const MultiWait& gate) {
    return static_cast<std::uint32_t>((gate.*Inside).load());
  }
};
template struct Look<&MultiWait::m_uInside>;

std::uint32_t CountedNow(MultiWait& gate);

template <std::uint64_t MultiWait::*Waiters, Mutex MultiWait::*Guard>
struct LookAtCount {
  friend std::uint32_t CountedNow(MultiWait& gate) {
    const Lock lock(gate.*Guard);
    return static_cast<std::uint32_t>(gate.*Waiters);
  }
};
template struct LookAtCount<&MultiWait::m_uWaiters, &MultiWait::m_mutex>;

// Threads in the gate.
class Crowd {
 public:
  Crowd(MultiWait& gate, int count) {
    for (int one = 0; one < count; ++one)
      m_threads.emplace_back([this, &gate] {
        EXPECT_TRUE(gate.wait(nullptr));
        ++m_iThrough;
      });
  }
  ~Crowd() { Join(); }
  void Join() {
    for (auto& thread : m_threads) thread.join();
    m_threads.clear();
  }
  int Through() const { return m_iThrough; }

 private:
  std::atomic<int> m_iThrough{0};
  std::vector<std::thread> m_threads;
};

}  // namespace

TEST(Semaphore, CountsDown) {
  Semaphore semaphore(2);
  EXPECT_EQ(2u, semaphore.GetCount());
  EXPECT_TRUE(semaphore.TryWait());
  EXPECT_TRUE(semaphore.TryWait());
  EXPECT_FALSE(semaphore.TryWait());
  EXPECT_EQ(0u, semaphore.GetCount());
}

TEST(Semaphore, PostAddsTheAmount) {
  Semaphore semaphore(0);
  semaphore.Post(3);
  EXPECT_EQ(3u, semaphore.GetCount());
  semaphore.Wait();
  EXPECT_TRUE(semaphore.TimedWait(Elapse(0)));
  EXPECT_TRUE(semaphore.TimedWait(Elapse(60)));
  EXPECT_EQ(0u, semaphore.GetCount());
}

TEST(Semaphore, GivesSeveralAtOnceButNoMoreThanThereAre) {
  Semaphore semaphore(5);
  EXPECT_EQ(0u, semaphore.TryWaitForSome(0));
  EXPECT_EQ(2u, semaphore.TryWaitForSome(2));
  EXPECT_EQ(3u, semaphore.GetCount());
  EXPECT_EQ(3u, semaphore.TryWaitForSome(7));
  EXPECT_EQ(0u, semaphore.TryWaitForSome(7));
  EXPECT_EQ(0u, semaphore.GetCount());
}

TEST(Semaphore, TimedWaitRunsOutOfTime) {
  Semaphore semaphore(0);
  bool taken = true;
  EXPECT_GE(MillisecondsOf([&] { taken = semaphore.TimedWait(Elapse(100, Elapse::MilliSeconds)); }), 100);
  EXPECT_FALSE(taken);
  EXPECT_LT(MillisecondsOf([&] { taken = semaphore.TimedWait(Elapse(-7)); }), 1000);
  EXPECT_FALSE(taken);
  EXPECT_EQ(0u, semaphore.GetCount());
}

TEST(Semaphore, WaitSleepsUntilSomethingIsPosted) {
  Semaphore semaphore(0);
  std::atomic<int> taken{0};
  std::vector<std::thread> waiters;
  const auto add = [&](const std::function<bool()>& wait) {
    waiters.emplace_back([&taken, wait] {
      EXPECT_TRUE(wait());
      ++taken;
    });
  };
  add([&] { return semaphore.Wait(), true; });
  add([&] { return semaphore.TimedWait(Elapse(60)); });
  add([&] { return semaphore.TimedWait(Elapse(0x7FFFFFFF)); });
  semaphore.Post(1);
  EXPECT_TRUE(Eventually([&] { return taken == 1; }));
  semaphore.Post(2);
  for (auto& waiter : waiters) waiter.join();
  EXPECT_EQ(0u, semaphore.GetCount());
}

TEST(Semaphore, PostOfZeroFailsTheAssertion) {
  Semaphore semaphore(1);
  EXPECT_TRUE(Tells(ToldOnStandardErrorBy([&] { semaphore.Post(0); }), "amount > 0"));
  EXPECT_EQ(1u, semaphore.GetCount());
}

TEST(Semaphore, WhatPassesTheMaximumIsCountedButNotThere) {
  Semaphore semaphore(0x7FFFFFFF);
  EXPECT_EQ("", ToldOnStandardErrorBy([&] { semaphore.Post(1); }));
  EXPECT_EQ(0x80000000u, semaphore.GetCount());
  EXPECT_TRUE(semaphore.TryWait());
  EXPECT_EQ(0x7FFFFFFFu, semaphore.GetCount());
  semaphore.Post(1);  // there is room again
  EXPECT_EQ(0x80000000u, semaphore.GetCount());
  semaphore.Post(3);
  EXPECT_EQ(0x80000003u, semaphore.GetCount());
}

TEST(Semaphore, AboveTheMaximumConstructionFailsTheAssertionAndWaitsRaise) {
  std::unique_ptr<Semaphore> semaphore;
  const auto make = [&] { semaphore = std::make_unique<Semaphore>(0x80000000u); };
  EXPECT_TRUE(Tells(ToldOnStandardErrorBy(make), "0 != m_hSemaphore"));
  EXPECT_EQ(0x80000000u, semaphore->GetCount());
  EXPECT_EQ("Oxa::Core::Semaphore::Wait: " + sNO_OBJECT, RaisedBy([&] { semaphore->Wait(); }));
  EXPECT_EQ("Oxa::Core::Semaphore::TimedWait: " + sNO_OBJECT,
            RaisedBy([&] { semaphore->TimedWait(Elapse(1)); }));
  EXPECT_EQ("Oxa::Core::Semaphore::TimedWait: " + sNO_OBJECT, RaisedBy([&] { semaphore->TryWait(); }));
  semaphore->Post(1);
  EXPECT_EQ(0x80000001u, semaphore->GetCount());
}

TEST(MultiWait, ALimitBelowZeroHasPassed) {
  MultiWait gate;
  Elapse limit(-30);
  bool through = true;
  EXPECT_LT(MillisecondsOf([&] { through = gate.wait(&limit); }), 15000);
  EXPECT_FALSE(through);
}

TEST(MultiWait, OneReleaseLetsAllThrough) {
  MultiWait gate;
  Crowd crowd(gate, 10);
  // Ten that wait are ten that the release lets through, whenever they came.
  EXPECT_TRUE(Eventually([&] {
    gate.releaseWaiters();
    return crowd.Through() == 10;
  }));
  crowd.Join();
  EXPECT_EQ(0u, gate.GetCount());
}

TEST(MultiWait, AReleaseWithNobodyThereIsLost) {
  MultiWait gate;
  gate.releaseWaiters();
  EXPECT_EQ(0u, gate.GetCount());
  Elapse limit(20, Elapse::MilliSeconds);
  EXPECT_FALSE(gate.wait(&limit));
}

TEST(MultiWait, WaitWithALimitIsTrueWhenReleased) {
  MultiWait gate;
  std::atomic<bool> through{false};
  std::thread waiter([&] {
    Elapse limit(60);
    EXPECT_TRUE(gate.wait(&limit));
    through = true;
  });
  EXPECT_TRUE(Eventually([&] {
    gate.releaseWaiters();
    return through.load();
  }));
  waiter.join();
}

// Who left because the time was over stays counted: the next release posts one too many, and a later waiter
// passes at once.
TEST(MultiWait, AWaiterThatTimedOutStaysCounted) {
  MultiWait gate;
  Elapse limit(1, Elapse::MilliSeconds);
  EXPECT_FALSE(gate.wait(&limit));
  gate.releaseWaiters();
  EXPECT_EQ(1u, gate.GetCount());
  EXPECT_TRUE(gate.wait(nullptr));
  EXPECT_EQ(0u, gate.GetCount());
  Elapse shortTime(20, Elapse::MilliSeconds);
  EXPECT_FALSE(gate.wait(&shortTime));
}

TEST(MultiWait, TenThatTimedOutAreTenThatPassLater) {
  MultiWait gate;
  Elapse limit(1, Elapse::MilliSeconds);
  for (int waiter = 0; waiter < 10; ++waiter) EXPECT_FALSE(gate.wait(&limit));
  EXPECT_EQ(0u, gate.GetCount());
  gate.releaseWaiters();
  EXPECT_EQ(10u, gate.GetCount());
  for (int waiter = 0; waiter < 10; ++waiter) EXPECT_TRUE(gate.wait(nullptr));
  EXPECT_EQ(0u, gate.GetCount());
  EXPECT_FALSE(gate.wait(&limit));
}

// However soon one of the released waits again: it isn't let through by what was posted for the other.
TEST(MultiWait, EachReleaseIsForThoseThatItHasCounted) {
  constexpr int iRELEASES = 5000;
  MultiWait gate;
  std::atomic<bool> over{false};
  std::atomic<int> passed[2] = {{0}, {0}};
  std::vector<std::thread> waiters;
  for (std::atomic<int>& own : passed)
    waiters.emplace_back([&] {
      for (; gate.wait(nullptr) && !over; ++own) {
      }
    });
  int releases = 0;
  const auto twiceByOne = [&] { return passed[0] > releases || passed[1] > releases; };
  for (; releases < iRELEASES && !twiceByOne(); gate.releaseWaiters()) {
    if (!Eventually([&] { return CountedNow(gate) == 2 || twiceByOne(); })) break;
    ++releases;
  }
  EXPECT_FALSE(twiceByOne());
  EXPECT_EQ(iRELEASES, releases);
  over = true;
  gate.Post(2);
  for (std::thread& waiter : waiters) waiter.join();
}

// Those inside may be counted as waiters already, or not yet.
TEST(MultiWait, TheDestructorLetsEverybodyThrough) {
  for (int round = 0; round < 20; ++round) {
    std::atomic<int> through{0};
    std::vector<std::thread> waiters;
    {
      MultiWait gate;
      for (int waiter = 0; waiter < 4; ++waiter)
        waiters.emplace_back([&] {
          EXPECT_TRUE(gate.wait(nullptr));
          ++through;
        });
      EXPECT_TRUE(Eventually([&] { return InsideNow(gate) == 4; }));
    }
    for (auto& waiter : waiters) waiter.join();
    EXPECT_EQ(4, through);
  }
}
