// Named locks among processes. Each case opens the name anew in the other one.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "NamedLockSupport.h"
#include "Platform/NamedLock.h"
#include "Support/BackgroundChild.h"
#include "Support/ChildProcess.h"
#include "Support/Eventually.h"

namespace Platform = Oxa::Core::Platform;
using NamedLockTests::NamedLockTest;
using Platform::Deadline;
using Platform::EWaitEnd;
using Platform::NamedLock;
using TestSupport::BackgroundChild;
using TestSupport::Eventually;

namespace {

#ifdef OXACORE_SOAK
constexpr int iKILLS = 600;
constexpr long iROUNDS = 1000000;
#else
constexpr int iKILLS = 20;
constexpr long iROUNDS = 20000;
#endif

constexpr int iKILLED = -9;

EWaitEnd LockOf(NamedLock& lock) { return lock.LockBy(Deadline::Never()).m_eEnd; }

int RunHost(const std::string& command, const char* name, long number = 0) {
  return TestSupport::RunChild({NAMED_LOCK_HOST, command, name, std::to_string(number)}).m_iStatus;
}

EWaitEnd OtherProcess(const std::string& command, const char* name, long number = 0) {
  return static_cast<EWaitEnd>(RunHost(command, name, number));
}

TEST_F(NamedLockTest, ExcludesOtherProcesses) {
  const char* const name = Name();
  NamedLock& lock = Open(name);
  EXPECT_EQ(EWaitEnd::eSIGNALLED, LockOf(lock));
  EXPECT_EQ(EWaitEnd::eTIMEOUT, OtherProcess("try", name));
  EXPECT_EQ(EWaitEnd::eTIMEOUT, OtherProcess("wait", name, 50));
  lock.Unlock();
  EXPECT_EQ(EWaitEnd::eSIGNALLED, OtherProcess("try", name));
}

TEST_F(NamedLockTest, IsExcludedByOtherProcesses) {
  const char* const name = Name();
  NamedLock& lock = Open(name);
  BackgroundChild holder({NAMED_LOCK_HOST, "hold", name});
  ASSERT_TRUE(Eventually([&] { return lock.Generation() == 1; }));
  EXPECT_EQ(EWaitEnd::eTIMEOUT, lock.TryLock().m_eEnd);
  EXPECT_EQ(EWaitEnd::eTIMEOUT, lock.LockBy(Deadline::InMilliseconds(50)).m_eEnd);
  EXPECT_NE(0, lock.Unlock());
  EXPECT_EQ(EWaitEnd::eTIMEOUT, OtherProcess("try", name));
  lock.Generation() = 2;
  EXPECT_EQ(EWaitEnd::eSIGNALLED, LockOf(lock));
  lock.Unlock();
  EXPECT_EQ(static_cast<int>(EWaitEnd::eSIGNALLED), holder.Await());
}

TEST_F(NamedLockTest, AnotherNameIsFreeMeanwhile) {
  NamedLock& lock = Open();
  LockOf(lock);
  EXPECT_EQ(EWaitEnd::eSIGNALLED, OtherProcess("try", Name("other")));
  lock.Unlock();
}

TEST_F(NamedLockTest, AProcessThatEndsWithItLeavesItAbandoned) {
  const char* const name = Name();
  EXPECT_EQ(EWaitEnd::eSIGNALLED, OtherProcess("leave", name));
  NamedLock& lock = Open(name);
  EXPECT_EQ(EWaitEnd::eABANDONED, LockOf(lock));
  EXPECT_EQ(EWaitEnd::eTIMEOUT, OtherProcess("try", name));
  EXPECT_EQ(0, lock.Unlock());
  EXPECT_EQ(EWaitEnd::eSIGNALLED, OtherProcess("try", name));
}

TEST_F(NamedLockTest, AKilledProcessLeavesItAbandoned) {
  const char* const name = Name();
  EXPECT_EQ(iKILLED, RunHost("die", name));
  EXPECT_EQ(EWaitEnd::eABANDONED, OtherProcess("wait", name, 60000));
  EXPECT_EQ(EWaitEnd::eABANDONED, OtherProcess("try", name));  // that one ended with the lock, too
  EXPECT_EQ(EWaitEnd::eSIGNALLED, OtherProcess("try", name));
}

TEST_F(NamedLockTest, WhoeverWaitsWhenTheOwnerIsKilledGetsIt) {
  const char* const name = Name();
  NamedLock& lock = Open(name);
  BackgroundChild holder({NAMED_LOCK_HOST, "hold", name});
  ASSERT_TRUE(Eventually([&] { return lock.Generation() == 1; }));
  std::atomic<bool> waiting{false};
  EWaitEnd end = EWaitEnd::eOTHER;
  std::thread waiter([&] {
    waiting = true;
    end = LockOf(lock);
    lock.Unlock();
  });
  EXPECT_TRUE(Eventually([&] { return waiting.load(); }));
  holder.Kill();
  waiter.join();
  EXPECT_EQ(EWaitEnd::eABANDONED, end);
  EXPECT_EQ(EWaitEnd::eSIGNALLED, OtherProcess("try", name));
}

TEST_F(NamedLockTest, KeepsProcessesApart) {
  const char* const name = Name();
  NamedLock& lock = Open(name);
  BackgroundChild one({NAMED_LOCK_HOST, "count", name, std::to_string(iROUNDS)});
  BackgroundChild two({NAMED_LOCK_HOST, "count", name, std::to_string(iROUNDS)});
  for (long round = 0; round < iROUNDS; ++round) {
    if (LockOf(lock) != EWaitEnd::eSIGNALLED) ADD_FAILURE();
    lock.Generation().store(lock.Generation().load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    lock.Unlock();
  }
  EXPECT_EQ(0, one.Await());
  EXPECT_EQ(0, two.Await());
  EXPECT_EQ(static_cast<unsigned long>(3 * iROUNDS), lock.Generation());
}

// Odd while somebody holds it: that can be seen only by one who is told that the lock was abandoned.
TEST_F(NamedLockTest, OwnersMayBeKilledAtAnyMoment) {
  const char* const name = Name();
  NamedLock& lock = Open(name);
  BackgroundChild other({NAMED_LOCK_HOST, "turns", name});
  for (int round = 0; round < iKILLS; ++round) {
    const std::uint64_t before = lock.Generation();
    BackgroundChild victim({NAMED_LOCK_HOST, "turns", name});
    ASSERT_TRUE(Eventually([&] { return lock.Generation() > before + 20; })) << round;
    std::this_thread::sleep_for(std::chrono::microseconds(round * 137 % 3000));
    victim.Kill();
    const EWaitEnd end = lock.LockBy(Deadline::InMilliseconds(30000)).m_eEnd;
    ASSERT_TRUE(end == EWaitEnd::eSIGNALLED || end == EWaitEnd::eABANDONED) << round;
    if (end == EWaitEnd::eSIGNALLED) {
      EXPECT_EQ(0u, lock.Generation() % 2) << round;
    }
    if (lock.Generation() % 2 != 0) ++lock.Generation();
    lock.Unlock();
  }
  other.Kill();
}

TEST_F(NamedLockTest, WhoOpensARemovedNameHasAnotherLock) {
  const char* const name = Name();
  NamedLock& lock = Open(name);
  LockOf(lock);
  EXPECT_EQ(EWaitEnd::eTIMEOUT, OtherProcess("try", name));
  Platform::RemoveNamedLock(name);
  EXPECT_EQ(EWaitEnd::eSIGNALLED, OtherProcess("try", name));
  EXPECT_EQ(EWaitEnd::eSIGNALLED, OtherProcess("leave", name));
  EXPECT_EQ(EWaitEnd::eABANDONED, OtherProcess("try", name));
  EXPECT_EQ(0, lock.Unlock());
  Platform::RemoveNamedLock(Name("never made"));
}

TEST_F(NamedLockTest, TheNumberBesideItIsCommonToAllProcesses) {
  const char* const name = Name();
  EXPECT_EQ(0, RunHost("count", name, 7));
  EXPECT_EQ(7u, Open(name).Generation());
  EXPECT_EQ(0, RunHost("count", name, 5));
  EXPECT_EQ(12u, Open(name).Generation());
}

}  // namespace
