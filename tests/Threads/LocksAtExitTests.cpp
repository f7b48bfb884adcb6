// Locks where raises return: in a process that exits after a fatal error.
#include <Infrastructure/OxaCore/Condition.h>
#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/Semaphore.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>

#include "Core/LibraryState.h"
#include "Support/Eventually.h"
#include "Support/OtherThread.h"

using namespace Oxa::Core;
using TestSupport::Eventually;
using TestSupport::Holder;
using TestSupport::MillisecondsOf;
using TestSupport::OtherThreadCanLock;

namespace {

constexpr int iSTATUS = 3;

// Runs `verdict` in the exit of a child, and expects what it says there.
template <bool (*verdict)()>
void ExpectAtExit() {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        std::atexit([] { std::fputs(verdict() ? "as required" : "otherwise", stderr); });
        ExitAfterFatalError(iSTATUS);
      },
      testing::ExitedWithCode(iSTATUS), "as required");
}

// The raise that tells of the abandonment returns. Until then the lock is simply held.
bool TryLockOfAnAbandonedConditionIsFalse() {
  Condition condition(true);
  std::thread([&] { condition.Lock(); }).join();
  bool everTrue = false;
  const bool owned = Eventually([&] {
    everTrue = condition.TryLock() || everTrue;
    return !everTrue && !OtherThreadCanLock(condition) && (condition.Unlock(), OtherThreadCanLock(condition));
  });
  return owned && !everTrue;
}

// It fails because the caller doesn't hold the lock, and nevertheless comes back with it.
bool TimedWaitWithoutTheLockIsFalse() {
  Condition condition(true);
  return !condition.TimedWait(Elapse(60)) && !OtherThreadCanLock(condition);
}

bool TimedWaitOnNoSemaphoreIsFalse() {
  Semaphore semaphore(0x80000000u);
  return !semaphore.TimedWait(Elapse(60)) && !semaphore.TryWait();
}

bool AGuardWithoutTheLockFreesNothing() {
  Mutex mutex;
  const Holder holder([&] { mutex.Lock(); }, [&] { mutex.Unlock(); });
  { const Lock lock(mutex, Elapse(10, Elapse::MilliSeconds)); }
  return !OtherThreadCanLock(mutex);
}

bool DestructionOfAHeldMutexDoesNotWait() {
  alignas(Mutex) static unsigned char s_room[sizeof(Mutex)];
  Mutex* const mutex = ::new (static_cast<void*>(s_room)) Mutex;
  const Holder holder([&] { mutex->Lock(); }, [] {});
  return MillisecondsOf([&] { mutex->~Mutex(); }) < 1000;
}

}  // namespace

TEST(LocksAtExitDeathTest, TryLockIsFalseAfterARaiseThatReturns) {
  ExpectAtExit<&TryLockOfAnAbandonedConditionIsFalse>();
}

TEST(LocksAtExitDeathTest, TimedWaitOfAConditionIsFalseAfterARaiseThatReturns) {
  ExpectAtExit<&TimedWaitWithoutTheLockIsFalse>();
}

TEST(LocksAtExitDeathTest, TimedWaitOfASemaphoreIsFalseAfterARaiseThatReturns) {
  ExpectAtExit<&TimedWaitOnNoSemaphoreIsFalse>();
}

TEST(LocksAtExitDeathTest, AGuardThatGotNoLockFreesNothing) {
  ExpectAtExit<&AGuardWithoutTheLockFreesNothing>();
}

TEST(LocksAtExitDeathTest, AHeldMutexIsDestroyedWithoutWaiting) {
  ExpectAtExit<&DestructionOfAHeldMutexDoesNotWait>();
}
