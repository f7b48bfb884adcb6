// Who waits for whom to leave a handler, and who doesn't.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "Log/HandlerCalls.h"
#include "Log/LogFakes.h"
#include "Support/Eventually.h"

namespace {

using namespace Oxa::Core;
using TestSupport::Eventually;
using TestSupport::Holder;

class HandlerCallsTest : public testing::Test {
 protected:
  HandlerCalls m_calls;
  LogFakes::Handler m_first, m_second;
};

TEST_F(HandlerCallsTest, NobodyInsideIsNoWait) { m_calls.AwaitOthers(&m_first); }

TEST_F(HandlerCallsTest, TheCallersOwnStaysAreNotWaitedFor) {
  const HandlerStay stay(m_calls, &m_first);
  const HandlerStay nested(m_calls, &m_first);
  m_calls.AwaitOthers(&m_first);
}

TEST_F(HandlerCallsTest, OtherHandlersAreNotWaitedFor) {
  Holder holder([this] { m_calls.Enter(&m_second); }, [this] { m_calls.Leave(&m_second); });
  m_calls.AwaitOthers(&m_first);
}

TEST_F(HandlerCallsTest, ThreadThatEnteredNullWaitsForNobodyUntilItLeaves) {
  Holder holder([this] { m_calls.Enter(&m_first); }, [this] { m_calls.Leave(&m_first); });
  {
    const HandlerStay waitsForNobody(m_calls, nullptr);
    m_calls.AwaitOthers(&m_first);
  }
  std::atomic<bool> done{false};
  std::thread waiter([&] {
    { const HandlerStay over(m_calls, nullptr); }
    m_calls.AwaitOthers(&m_first);
    done = true;
  });
  EXPECT_FALSE(done);
  holder.Leave();
  waiter.join();
}

TEST_F(HandlerCallsTest, EveryStayOfAnotherThreadIsWaitedFor) {
  std::atomic<bool> done{false};
  Holder outer([this] { m_calls.Enter(&m_first); }, [this] { m_calls.Leave(&m_first); });
  Holder inner(
      [this] {
        m_calls.Enter(&m_first);
        m_calls.Enter(&m_first);
      },
      [this] {
        m_calls.Leave(&m_first);
        m_calls.Leave(&m_first);
      });
  std::thread waiter([&] {
    m_calls.AwaitOthers(&m_first);
    done = true;
  });
  outer.Leave();
  EXPECT_FALSE(done);
  inner.Leave();
  waiter.join();
  EXPECT_TRUE(done);
}

// Two threads, each inside one handler, wait for the other one's to be left.
TEST_F(HandlerCallsTest, HandlersThatUnregisterOneAnotherBothReturn) {
  for (int i = 0; i < 200; ++i) {
    std::atomic<int> inside{0};
    const auto cross = [&](IOxaLogHandler* own, IOxaLogHandler* other) {
      const HandlerStay stay(m_calls, own);
      ++inside;
      while (inside < 2) std::this_thread::yield();
      m_calls.AwaitOthers(other);
    };
    std::thread first([&] { cross(&m_first, &m_second); });
    cross(&m_second, &m_first);
    first.join();
  }
}

TEST_F(HandlerCallsTest, CircleOfThreeComesToAnEnd) {
  for (int i = 0; i < 100; ++i) {
    LogFakes::Handler third;
    std::atomic<int> inside{0};
    const auto cross = [&](IOxaLogHandler* own, IOxaLogHandler* other) {
      const HandlerStay stay(m_calls, own);
      ++inside;
      while (inside < 3) std::this_thread::yield();
      m_calls.AwaitOthers(other);
    };
    std::thread first([&] { cross(&m_first, &m_second); });
    std::thread second([&] { cross(&m_second, &third); });
    cross(&third, &m_first);
    first.join();
    second.join();
  }
}

TEST_F(HandlerCallsTest, SameHandlerOnTwoThreadsMayUnregisterItselfOnBoth) {
  for (int i = 0; i < 200; ++i) {
    std::atomic<int> inside{0};
    const auto leave = [&] {
      const HandlerStay stay(m_calls, &m_first);
      ++inside;
      while (inside < 2) std::this_thread::yield();
      m_calls.AwaitOthers(&m_first);
    };
    std::thread other(leave);
    leave();
    other.join();
  }
}

// Whoever waits inside a handler for something else is waited for by those outside: the handler is in use.
TEST_F(HandlerCallsTest, HandlerWhoseThreadWaitsForAnotherOneIsStillInUse) {
  std::atomic<bool> waits{false}, firstIsFree{false}, secondIsFree{false};
  Holder holder([this] { m_calls.Enter(&m_second); }, [this] { m_calls.Leave(&m_second); });
  std::thread inFirst([&] {
    const HandlerStay stay(m_calls, &m_first);
    waits = true;
    m_calls.AwaitOthers(&m_second);
    secondIsFree = true;
  });
  ASSERT_TRUE(Eventually([&] { return waits.load(); }));
  std::thread outside([&] {
    m_calls.AwaitOthers(&m_first);
    firstIsFree = secondIsFree.load();
  });
  std::this_thread::yield();
  holder.Leave();
  inFirst.join();
  outside.join();
  EXPECT_TRUE(firstIsFree);
}

}  // namespace
