#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "Platform/Threads.h"
#include "Support/Eventually.h"

namespace Platform = Oxa::Core::Platform;
using Platform::CountingSemaphore;
using Platform::Deadline;
using Platform::EWaitEnd;
using TestSupport::MillisecondsOf;

namespace {

struct Destroy {
  void operator()(CountingSemaphore* semaphore) const { CountingSemaphore::Destroy(semaphore); }
};
using Owned = std::unique_ptr<CountingSemaphore, Destroy>;

Owned Make(std::uint32_t initial) {
  int code = -1;
  Owned semaphore(CountingSemaphore::Create(initial, code));
  EXPECT_EQ(0, code);
  return semaphore;
}

EWaitEnd WaitFor(CountingSemaphore& semaphore, long long milliseconds) {
  return semaphore.Wait(Deadline::InMilliseconds(milliseconds)).m_eEnd;
}

// A thread that is in line by now, and calls `then` when it has got its one.
std::thread StandInLine(CountingSemaphore& semaphore, std::function<void()> then) {
  std::atomic<bool> inLine{false};
  std::thread waiter([&semaphore, &inLine, then] {
    const auto tell = [](void* told) { *static_cast<std::atomic<bool>*>(told) = true; };
    EXPECT_EQ(EWaitEnd::eSIGNALLED, semaphore.WaitInTurn(Deadline::Never(), tell, &inLine).m_eEnd);
    then();
  });
  EXPECT_TRUE(TestSupport::Eventually([&] { return inLine.load(); }));
  return waiter;
}

}  // namespace

TEST(CountingSemaphore, CountsDownToZeroAndNoFurther) {
  const Owned semaphore = Make(2);
  EXPECT_TRUE(semaphore->TryTake());
  EXPECT_EQ(EWaitEnd::eSIGNALLED, WaitFor(*semaphore, 0));
  EXPECT_FALSE(semaphore->TryTake());
  EXPECT_EQ(EWaitEnd::eTIMEOUT, WaitFor(*semaphore, 0));
  EXPECT_EQ(0u, semaphore->Value());
}

TEST(CountingSemaphore, WhoStandsInLineIsNoNegativeValue) {
  const Owned semaphore = Make(0);
  std::thread waiter = StandInLine(*semaphore, [] {});
  EXPECT_EQ(0u, semaphore->Value());
  semaphore->Post(1);
  waiter.join();
  EXPECT_EQ(0u, semaphore->Value());
}

TEST(CountingSemaphore, GivesSeveralAtOnceButNoMoreThanThereAre) {
  const Owned semaphore = Make(5);
  EXPECT_EQ(2u, semaphore->TryTakeSome(2));
  EXPECT_EQ(3u, semaphore->TryTakeSome(0x7FFFFFFF));
  EXPECT_EQ(0u, semaphore->TryTakeSome(1));
  EXPECT_EQ(0u, semaphore->Value());
}

TEST(CountingSemaphore, WaitRunsOutOfTime) {
  const Owned semaphore = Make(0);
  EWaitEnd end{};
  EXPECT_GE(MillisecondsOf([&] { end = WaitFor(*semaphore, 50); }), 50);
  EXPECT_EQ(EWaitEnd::eTIMEOUT, end);
  EXPECT_EQ(0, semaphore->Post(1));
  EXPECT_EQ(EWaitEnd::eSIGNALLED, WaitFor(*semaphore, 0));
}

TEST(CountingSemaphore, AboveTheMaximumThereIsNone) {
  int code = 0;
  EXPECT_EQ(nullptr, CountingSemaphore::Create(0x80000000u, code));
  EXPECT_NE(0, code);
}

TEST(CountingSemaphore, WhatWouldPassTheMaximumIsNotAdded) {
  const Owned semaphore = Make(CountingSemaphore::iMAXIMUM - 1);
  EXPECT_NE(0, semaphore->Post(2));
  EXPECT_NE(0, semaphore->Post(0xFFFFFFFFu));
  EXPECT_EQ(CountingSemaphore::iMAXIMUM - 1, semaphore->Value());
  EXPECT_EQ(0, semaphore->Post(1));
  EXPECT_EQ(CountingSemaphore::iMAXIMUM, semaphore->Value());
  EXPECT_NE(0, semaphore->Post(1));
  EXPECT_TRUE(semaphore->TryTake());
  EXPECT_EQ(0, semaphore->Post(1));
}

TEST(CountingSemaphore, WhatIsOwedDoesntCountForTheMaximum) {
  const Owned semaphore = Make(0);
  std::thread waiter = StandInLine(*semaphore, [] {});
  EXPECT_NE(0, semaphore->Post(CountingSemaphore::iMAXIMUM + 2u));
  EXPECT_EQ(0, semaphore->Post(CountingSemaphore::iMAXIMUM + 1u));
  waiter.join();
  EXPECT_EQ(CountingSemaphore::iMAXIMUM, semaphore->Value());
}

TEST(CountingSemaphore, OnePostWakesAsManyAsItAdds) {
  const Owned semaphore = Make(0);
  std::atomic<int> through{0};
  std::vector<std::thread> waiters;
  waiters.reserve(5);
  for (int waiter = 0; waiter < 5; ++waiter)
    waiters.emplace_back([&] {
      semaphore->Wait(Deadline::Never());
      ++through;
    });
  semaphore->Post(3);
  EXPECT_TRUE(TestSupport::Eventually([&] { return through == 3; }));
  semaphore->Post(2);
  for (auto& waiter : waiters) waiter.join();
  EXPECT_EQ(0u, semaphore->Value());
}

TEST(CountingSemaphore, TheLongestInLineComesFirst) {
  const Owned semaphore = Make(0);
  std::atomic<int> through{0};
  std::atomic<int> order[3] = {};
  std::vector<std::thread> waiters;
  for (auto& place : order) waiters.push_back(StandInLine(*semaphore, [&] { place = ++through; }));
  for (int count = 1; count <= 3; ++count) {
    EXPECT_EQ(0, semaphore->Post(1));
    EXPECT_TRUE(TestSupport::Eventually([&] { return through == count; }));
  }
  for (auto& waiter : waiters) waiter.join();
  for (int place = 0; place < 3; ++place) EXPECT_EQ(place + 1, order[place]);
}

TEST(CountingSemaphore, APostForSomebodyInLineIsNotForWhoComesLater) {
  const Owned semaphore = Make(0);
  for (int round = 0; round < 200; ++round) {
    std::thread waiter = StandInLine(*semaphore, [] {});
    EXPECT_EQ(0, semaphore->Post(1));
    EXPECT_FALSE(semaphore->TryTake());
    EXPECT_EQ(0u, semaphore->Value());
    waiter.join();
  }
}

// What was posted was taken or is still there, with waits that run out in between.
TEST(CountingSemaphore, NothingIsLostOrInventedUnderContention) {
  constexpr int posts = 100000;
  const Owned semaphore = Make(0);
  std::atomic<int> taken{0}, posting{2};
  std::vector<std::thread> workers;
  workers.reserve(5);
  for (int poster = 0; poster < 2; ++poster)
    workers.emplace_back([&] {
      for (int post = 0; post < posts; ++post) semaphore->Post(1);
      --posting;
    });
  for (int taker = 0; taker < 3; ++taker)
    workers.emplace_back([&] {
      while (posting > 0 || semaphore->Value() > 0)
        if (semaphore->Wait(Deadline::In(20000)).m_eEnd == EWaitEnd::eSIGNALLED)
          taken += 1 + static_cast<int>(semaphore->TryTakeSome(3));
    });
  for (auto& worker : workers) worker.join();
  EXPECT_EQ(2 * posts, taken);
  EXPECT_EQ(0u, semaphore->Value());
}

// A post that passes the maximum must not be seen by anybody, not even for a moment.
TEST(CountingSemaphore, ARefusedPostLeavesNoTrace) {
  constexpr int posts = 200000;
  const Owned semaphore = Make(2);
  std::atomic<bool> stop{false};
  std::thread refused([&] {
    while (!stop) EXPECT_NE(0, semaphore->Post(CountingSemaphore::iMAXIMUM));
  });
  int accepted = 0;
  for (int post = 0; post < posts; ++post) accepted += semaphore->Post(1) == 0 ? 1 : 0;
  stop = true;
  refused.join();
  EXPECT_EQ(posts, accepted);
  EXPECT_EQ(2u + posts, semaphore->Value());
}
