// What an error of the monitor does to those who wait: a thread that ends with the monitor in its hand.

#include <Infrastructure/OxaCore/ReadersWriterMutex.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include "Threads/ReadersWriterEither.h"

namespace Oxa::Core::Testing {

namespace {

class ReadersWriterErrors : public ReadersWriterEither {
 protected:
  // Wakes the one that has slept longest, and ends: the woken one is told when it takes the monitor back.
  void AbandonBeforeTheFirstSleeper() {
    std::thread([this] {
      MonitorOf(m_mutex).Lock();
      MonitorOf(m_mutex).Signal();
    }).join();
  }

  static std::string RaisedBy(const std::function<void()>& action) {
    try {
      action();
    } catch (const OSError& error) {
      return error.GetData(AlertInfo::sMESSAGE);
    }
    return "nothing";
  }

  // A writer waits, and behind it somebody sleeps for whom nobody else is there to wake him. The error takes the
  // writer out of its wait.
  void TakeOutAWriter(const std::function<void()>& wait) {
    std::string raised;
    m_second.Start([&] { raised = RaisedBy(wait); });
    ASSERT_TRUE(AwaitWriters(1));
    std::atomic<bool> inside{false};
    m_third.Start([&] {
      const Lock monitor(MonitorOf(m_mutex));
      inside = true;
      MonitorOf(m_mutex).Wait();
    });
    ASSERT_TRUE(Eventually([&] { return inside.load(); }));
    AbandonBeforeTheFirstSleeper();
    ASSERT_TRUE(m_second.Finish());
    EXPECT_EQ("Attempt to acquire lock abandoned", raised);
    ASSERT_TRUE(m_third.Finish()) << "a reader that had stood back would sleep for ever";
    EXPECT_EQ(0, WritersWaiting(m_mutex));
  }
};

INSTANTIATE_TEST_SUITE_P(Both, ReadersWriterErrors, ::testing::Bool(), NameOfEither);

const Elapse g_LONG(60, Elapse::Seconds);

TEST_P(ReadersWriterErrors, AWriterThatAnErrorTookOutOfItsWaitLetsReadersGo) {
  Read(m_first);
  TakeOutAWriter([this] { m_mutex.WaitWriterLock(); });
  m_third.Do([this] { EXPECT_TRUE(m_mutex.TryWaitReaderLock()); });
  ExpectSlots(2);
  Unread(m_third);
  EXPECT_FALSE(CanWrite(m_second));
  Unread(m_first);
  EXPECT_TRUE(CanWrite(m_second));
}

TEST_P(ReadersWriterErrors, ATimedWriterThatAnErrorTookOutOfItsWaitLetsReadersGo) {
  Read(m_first);
  TakeOutAWriter([this] { m_mutex.TimedWaitWriterLock(g_LONG); });
  m_third.Do([this] { EXPECT_TRUE(m_mutex.TryWaitReaderLock()); });
  ExpectSlots(2);
  Unread(m_third);
  Unread(m_first);
  EXPECT_TRUE(CanWrite(m_second));
}

/// An error is no time-out: the read lock of the thread that wanted to upgrade is in the way of writers again.
TEST_P(ReadersWriterErrors, AnUpgradeThatEndsByAnErrorLeavesTheReadLockInForce) {
  for (const bool timed : {false, true}) {
    Read(m_first);
    Read(m_second);
    TakeOutAWriter([this, timed] {
      timed ? static_cast<void>(m_mutex.TimedWaitWriterLock(g_LONG)) : m_mutex.WaitWriterLock();
    });
    Unread(m_first);
    EXPECT_FALSE(CanWrite(m_third)) << timed;
    Unread(m_second);
    EXPECT_TRUE(CanWrite(m_third)) << timed;
  }
}

}  // namespace

}  // namespace Oxa::Core::Testing
