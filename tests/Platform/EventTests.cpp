#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include "Platform/Threads.h"
#include "Support/Eventually.h"

namespace Platform = Oxa::Core::Platform;
using Platform::Deadline;
using Platform::Event;
using Platform::EWaitEnd;
using TestSupport::Eventually;
using TestSupport::MillisecondsOf;

namespace {

class Events : public testing::Test {
 protected:
  struct Destroy {
    void operator()(Event* event) const { Event::Destroy(event); }
  };
  using Owned = std::unique_ptr<Event, Destroy>;

  Owned m_event{Event::Create()};
  Owned m_other{Event::Create()};
  Platform::ReentrantLock m_lock;

  EWaitEnd TryTake(Event& event) { return event.Wait(Deadline::In(0)).m_eEnd; }

  // The lock is free again once the waiter stands in line, since both are one step.
  std::thread StartWaiter(std::atomic<int>& woken, std::atomic<int>* order = nullptr) {
    std::atomic<bool> locked{false};
    std::thread waiter([this, &woken, &locked, order] {
      m_lock.Lock();
      locked = true;
      EXPECT_EQ(EWaitEnd::eSIGNALLED, m_event->ReleaseAndWait(m_lock, Deadline::Never()).m_eEnd);
      const int place = ++woken;
      if (order != nullptr) *order = place;
    });
    EXPECT_TRUE(Eventually([&] { return locked.load(); }));
    m_lock.Lock();
    m_lock.Unlock();
    return waiter;
  }
};

}  // namespace

TEST_F(Events, StartUnset) { EXPECT_EQ(EWaitEnd::eTIMEOUT, TryTake(*m_event)); }

TEST_F(Events, SetLetsOneThroughLater) {
  m_event->Set();
  EXPECT_EQ(EWaitEnd::eSIGNALLED, TryTake(*m_event));
  EXPECT_EQ(EWaitEnd::eTIMEOUT, TryTake(*m_event));
}

TEST_F(Events, SetTwiceBeforeAnybodyWaitsCountsOnce) {
  m_event->Set();
  m_event->Set();
  EXPECT_EQ(EWaitEnd::eSIGNALLED, TryTake(*m_event));
  EXPECT_EQ(EWaitEnd::eTIMEOUT, TryTake(*m_event));
}

TEST_F(Events, WaitRunsOutOfTime) {
  EWaitEnd end{};
  EXPECT_GE(MillisecondsOf([&] { end = m_event->Wait(Deadline::InMilliseconds(50)).m_eEnd; }), 50);
  EXPECT_EQ(EWaitEnd::eTIMEOUT, end);
}

TEST_F(Events, SetTwiceWakesTwoThatWait) {
  std::atomic<int> woken{0};
  std::thread first = StartWaiter(woken);
  std::thread second = StartWaiter(woken);
  m_event->Set();
  m_event->Set();
  first.join();
  second.join();
  EXPECT_EQ(EWaitEnd::eTIMEOUT, TryTake(*m_event));
}

TEST_F(Events, ASetIsHandedToWhoWaitsAndNotToWhoComesLater) {
  for (int round = 0; round < 200; ++round) {
    std::atomic<int> woken{0};
    std::thread waiter = StartWaiter(woken);
    m_event->Set();
    EXPECT_EQ(EWaitEnd::eTIMEOUT, TryTake(*m_event));
    waiter.join();
  }
}

TEST_F(Events, TheLongestWaiterComesFirst) {
  std::atomic<int> woken{0};
  std::atomic<int> order[3] = {};
  std::vector<std::thread> waiters;
  for (auto& place : order) waiters.push_back(StartWaiter(woken, &place));
  for (int count = 1; count <= 3; ++count) {
    m_event->Set();
    ASSERT_TRUE(Eventually([&] { return woken == count; }));
  }
  for (auto& waiter : waiters) waiter.join();
  EXPECT_EQ(1, order[0]);
  EXPECT_EQ(2, order[1]);
  EXPECT_EQ(3, order[2]);
}

TEST_F(Events, WhoGaveUpInTheMiddleOfTheLineIsForgotten) {
  std::atomic<int> woken{0};
  std::thread first = StartWaiter(woken);
  EXPECT_EQ(EWaitEnd::eTIMEOUT, m_event->Wait(Deadline::InMilliseconds(5)).m_eEnd);
  std::thread second = StartWaiter(woken);
  EXPECT_EQ(EWaitEnd::eTIMEOUT, m_event->Wait(Deadline::InMilliseconds(5)).m_eEnd);
  m_event->Set();
  m_event->Set();
  first.join();
  second.join();
  EXPECT_EQ(EWaitEnd::eTIMEOUT, TryTake(*m_event));
}

TEST_F(Events, ReleaseAndWaitGivesUpOneLevel) {
  m_lock.Lock();
  m_lock.Lock();
  EXPECT_EQ(EWaitEnd::eTIMEOUT, m_event->ReleaseAndWait(m_lock, Deadline::In(0)).m_eEnd);
  EXPECT_TRUE(m_lock.IsOwner());
  EXPECT_EQ(EWaitEnd::eTIMEOUT, m_event->ReleaseAndWait(m_lock, Deadline::In(0)).m_eEnd);
  EXPECT_FALSE(m_lock.IsOwner());
}

TEST_F(Events, ReleaseAndWaitTakesASetEventAndReleasesNevertheless) {
  m_event->Set();
  m_lock.Lock();
  EXPECT_EQ(EWaitEnd::eSIGNALLED, m_event->ReleaseAndWait(m_lock, Deadline::Never()).m_eEnd);
  EXPECT_FALSE(m_lock.IsOwner());
}

TEST_F(Events, ReleaseAndWaitWithoutTheLockFailsAndTakesNothing) {
  m_event->Set();
  const Platform::WaitResult result = m_event->ReleaseAndWait(m_lock, Deadline::Never());
  EXPECT_EQ(EWaitEnd::eFAILED, result.m_eEnd);
  EXPECT_NE(0, result.m_iCode);
  EXPECT_EQ(EWaitEnd::eSIGNALLED, TryTake(*m_event));
}

TEST_F(Events, SetAndWaitSetsTheOther) {
  EXPECT_EQ(EWaitEnd::eTIMEOUT, m_event->SetAndWait(*m_other, Deadline::In(0)).m_eEnd);
  EXPECT_EQ(EWaitEnd::eSIGNALLED, TryTake(*m_other));
  m_event->Set();
  EXPECT_EQ(EWaitEnd::eSIGNALLED, m_event->SetAndWait(*m_other, Deadline::Never()).m_eEnd);
  EXPECT_EQ(EWaitEnd::eSIGNALLED, TryTake(*m_other));
}

TEST_F(Events, TwoThreadsPassTheTurnToAndFro) {
  constexpr int rounds = 20000;
  std::thread partner([&] {
    for (int round = 0; round < rounds; ++round) {
      m_event->Wait(Deadline::Never());
      m_other->Set();
    }
  });
  for (int round = 0; round < rounds; ++round)
    EXPECT_EQ(EWaitEnd::eSIGNALLED, m_other->SetAndWait(*m_event, Deadline::Never()).m_eEnd);
  partner.join();
}

// Every Set with somebody in line is one wake; what comes with nobody in line stays once.
TEST_F(Events, NoSetIsLostAgainstWaitsThatRunOut) {
  constexpr int sets = 4000;
  std::atomic<int> taken{0};
  std::atomic<bool> end{false};
  std::vector<std::thread> waiters;
  for (int waiter = 0; waiter < 3; ++waiter)
    waiters.emplace_back([&] {
      while (!end)
        if (m_event->Wait(Deadline::In(20000)).m_eEnd == EWaitEnd::eSIGNALLED) ++taken;
    });
  for (int set = 0; set < sets; ++set) {
    const int before = taken;
    m_event->Set();
    ASSERT_TRUE(Eventually([&] { return taken > before; })) << set;
    ASSERT_EQ(before + 1, taken) << set;
  }
  end = true;
  for (auto& waiter : waiters) waiter.join();
}
