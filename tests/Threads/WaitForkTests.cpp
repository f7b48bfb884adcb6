// In a forked child nobody waits for threads that stayed behind in the parent.
#include <Infrastructure/OxaCore/Condition.h>
#include <Infrastructure/OxaCore/Semaphore.h>
#include <Infrastructure/OxaCore/ThreadPool.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <boost/make_shared.hpp>
#include <iterator>
#include <memory>
#include <new>
#include <thread>

#include "Support/ThreadSanitizer.h"
#include "Support/WaitingThread.h"

using namespace Oxa::Core;
using TestSupport::Eventually;
using TestSupport::ExpectInChild;
using TestSupport::Waiting;

namespace {

// Two threads wait, and both leave when all are woken.
bool TwoCanBeWoken(Condition& condition) {
  bool go = false;
  int waiting = 0;
  const auto wait = [&] {
    const Lock lock(condition);
    for (++waiting; !go;) condition.Wait();
  };
  std::thread one(wait), other(wait);
  for (bool both = false; !both; std::this_thread::yield()) {
    const Lock lock(condition);
    both = waiting == 2;
  }
  {
    const Lock lock(condition);
    go = true;
    condition.Broadcast();
  }
  one.join();
  other.join();
  return true;
}

}  // namespace

TEST(WaitFork, ABroadcastIsForThoseThatAreInTheChild) {
  OXA_SKIP_UNDER_THREAD_SANITIZER("it starts no threads in children of several threads");
  Condition condition(true);
  bool end = false;
  const auto wait = [&] {
    const Lock lock(condition);
    while (!end) condition.Wait();
  };
  const Waiting one(wait), other(wait);
  ExpectInChild([&] {
    const Lock lock(condition);
    condition.Broadcast();
    condition.Signal();
    return !condition.TimedWait(Elapse(0));
  });
  ExpectInChild([&] { return TwoCanBeWoken(condition); });
  const Lock lock(condition);
  end = true;
  condition.Broadcast();
}

TEST(WaitFork, AGateIsForThoseThatAreInTheChild) {
  OXA_SKIP_UNDER_THREAD_SANITIZER("it starts no threads in children of several threads");
  auto gate = std::make_unique<MultiWait>();
  const auto wait = [&] { EXPECT_TRUE(gate->wait(nullptr)); };
  {
    const Waiting one(wait), other(wait);
    ExpectInChild([&] {
      gate->releaseWaiters();
      Elapse moment(1, Elapse::MilliSeconds);
      return !gate->wait(&moment);
    });
    ExpectInChild([&] {
      {
        const Waiting own(wait);
        gate->releaseWaiters();
      }
      return gate->GetCount() == 0;  // once the waiter has ended
    });
    ExpectInChild([&] {
      gate.reset();
      return true;
    });
    gate->releaseWaiters();
  }
  EXPECT_EQ(0u, gate->GetCount());
}

TEST(WaitFork, APoolsEndIsForThreadsThatAreInTheChild) {
  OXA_SKIP_UNDER_THREAD_SANITIZER("it starts no threads in children of several threads");
  static std::atomic<int> s_iCalled;
  s_iCalled = 0;
  auto pool = std::make_unique<ThreadPool<int>>("Pool", 2);
  pool->Start();
  const auto count = boost::make_shared<GlobalCallbackArg<int>>([](int) { ++s_iCalled; });
  for (int item = 0; item < 10; ++item) pool->Enqueue(count, item);
  ASSERT_TRUE(Eventually([] { return s_iCalled == 10; }));
  pool->Start();  // comes back when both have begun: one of them may have done it all
  ExpectInChild([&] {
    pool.reset();
    return true;
  });
}

// Who leaves the gate still writes to it.
TEST(WaitFork, TheEndOfAGateWaitsForThoseThatAreInTheChild) {
  OXA_SKIP_UNDER_THREAD_SANITIZER("it starts no threads in children of several threads");
  alignas(MultiWait) unsigned char room[sizeof(MultiWait)];
  constexpr unsigned char gone = 0x5A;
  auto* const gate = ::new (static_cast<void*>(room)) MultiWait;
  const auto wait = [&] { gate->wait(nullptr); };
  {
    const Waiting one(wait), other(wait);
    ExpectInChild([&] {
      {
        const Waiting own(wait);
        gate->~MultiWait();
        std::fill(std::begin(room), std::end(room), gone);
      }
      return std::count(std::begin(room), std::end(room), gone) == sizeof room;
    });
    gate->releaseWaiters();
  }
  gate->~MultiWait();
}
