#include <Infrastructure/OxaCore/Lock.h>

#include <gtest/gtest.h>

#include <atomic>
#include <ctime>
#include <memory>
#include <string>
#include <thread>

#include "Support/Eventually.h"

using namespace Oxa::Core;
using TestSupport::Eventually;
using TestSupport::Holder;
using TestSupport::MillisecondsOf;

namespace {

Holder Hold(IMutex& mutex) {
  return Holder([&mutex] { mutex.Lock(); }, [&mutex] { mutex.Unlock(); });
}

bool OtherThreadCanLock(Mutex& mutex) {
  bool locked = false;
  std::thread([&] {
    locked = mutex.TryLock();
    if (locked) mutex.Unlock();
  }).join();
  return locked;
}

// Processor time of the calling thread, in milliseconds.
double ThreadMilliseconds() {
  timespec time;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

// A place for a mutex whose memory stays readable after its destruction, as that of a static object does.
class Site {
 public:
  Site() : m_pMutex(::new (static_cast<void*>(m_room)) Mutex) {}
  Mutex& operator*() { return *m_pMutex; }
  void Destroy() { m_pMutex->~Mutex(); }

 private:
  alignas(Mutex) unsigned char m_room[sizeof(Mutex)];
  Mutex* m_pMutex;
};

// By full name: these may meet a mutex whose destructor is at work or through, and with it its virtual table.
[[gnu::no_sanitize("undefined")]] void LockDying(Mutex& mutex, const Elapse& timeout) {
  mutex.Mutex::Lock(timeout);
}
[[gnu::no_sanitize("undefined")]] bool TryLockDying(Mutex& mutex, const Elapse& timeout) {
  return mutex.Mutex::TryLock(timeout);
}

}  // namespace

TEST(Mutex, TryLockOnAFreeMutexIsTrue) {
  Mutex mutex;
  EXPECT_TRUE(mutex.TryLock());
  EXPECT_FALSE(OtherThreadCanLock(mutex));
  mutex.Unlock();
  EXPECT_TRUE(OtherThreadCanLock(mutex));
}

TEST(Mutex, TryLockOnAHeldMutexIsFalse) {
  Mutex mutex;
  const Holder holder = Hold(mutex);
  EXPECT_FALSE(mutex.TryLock());
  EXPECT_FALSE(mutex.TryLock(Elapse(-1)));
}

TEST(Mutex, TheOwnersTryLockNeedsASecondUnlock) {
  Mutex mutex;
  mutex.Lock();
  EXPECT_TRUE(mutex.TryLock());
  mutex.Unlock();
  EXPECT_FALSE(OtherThreadCanLock(mutex));
  mutex.Unlock();
  EXPECT_TRUE(OtherThreadCanLock(mutex));
}

TEST(Mutex, TheOwnerLocksAgainInAllForms) {
  Mutex mutex;
  mutex.Lock();
  mutex.Lock(Elapse(1));
  EXPECT_TRUE(mutex.TryLock(Elapse(1)));
  for (int level = 0; level < 3; ++level) {
    EXPECT_FALSE(OtherThreadCanLock(mutex));
    mutex.Unlock();
  }
  EXPECT_TRUE(OtherThreadCanLock(mutex));
}

TEST(Mutex, ALockThatTimesOutRaises) {
  Mutex mutex;
  const Holder holder = Hold(mutex);
  const double took = MillisecondsOf([&] {
    try {
      const Lock lock(mutex, Elapse(1, Elapse::Seconds));
      FAIL() << "got a lock that is held elsewhere";
    } catch (const LockTimeout& error) {
      EXPECT_EQ("Attempt to lock mutex timed out after waiting for 00:00:01.000.000.000",
                error.GetData(AlertInfo::sMESSAGE));
      EXPECT_EQ("Oxa.Core.Mutex", error.GetData(AlertInfo::sLOG_NAME));
      ASSERT_TRUE(error.GetUnwindStack());
      EXPECT_EQ("Oxa::Core::Mutex::Lock", error.GetUnwindStack()->front().Get(CodeContext::sFUNCTION));
    }
  });
  EXPECT_GE(took, 1000);
  EXPECT_LT(took, 20000);
}

TEST(Mutex, ATryLockThatTimesOutIsFalse) {
  Mutex mutex;
  const Holder holder = Hold(mutex);
  bool locked = true;
  EXPECT_GE(MillisecondsOf([&] { locked = mutex.TryLock(Elapse(1, Elapse::Seconds)); }), 1000);
  EXPECT_FALSE(locked);
}

TEST(Mutex, ATimedTryLockSpinsInsteadOfSleeping) {
  Mutex mutex;
  const Holder holder = Hold(mutex);
  const double before = ThreadMilliseconds();
  EXPECT_FALSE(mutex.TryLock(Elapse(500, Elapse::MilliSeconds)));
  EXPECT_GT(ThreadMilliseconds() - before, 50);  // a sleeper uses next to nothing
}

TEST(Mutex, AnUntimedLockSleeps) {
  Mutex mutex;
  std::atomic<double> used{-1};
  std::thread waiter;
  {
    const Holder holder = Hold(mutex);
    std::atomic<bool> started{false};
    waiter = std::thread([&] {
      started = true;
      mutex.Lock();
      mutex.Unlock();
      used = ThreadMilliseconds();
    });
    EXPECT_TRUE(Eventually([&] { return started.load(); }));
    std::this_thread::sleep_for(std::chrono::milliseconds(500));  // the length of the wait, not a hope
  }
  waiter.join();
  EXPECT_LT(used, 250);
}

TEST(Mutex, ATimedLockGetsWhatIsGivenUpInTime) {
  Mutex mutex;
  std::thread waiter;
  {
    const Holder holder = Hold(mutex);
    waiter = std::thread([&] {
      EXPECT_NO_THROW(mutex.Lock(Elapse(60)));
      mutex.Unlock();
      EXPECT_TRUE(mutex.TryLock(Elapse(60)));
      mutex.Unlock();
    });
  }
  waiter.join();
}

// The owner itself destroys, so that the waiter can't come first.
TEST(Mutex, AWaiterOfADyingMutexGetsTheError) {
  Site site;
  (*site).Lock();
  std::atomic<int> phase{0};
  std::thread waiter([&] {
    phase = 1;
    try {
      TryLockDying(*site, Elapse(60));
    } catch (const MutexDestroyedBeforeLockAcquired& error) {
      EXPECT_EQ("Oxa.Core.Mutex", error.GetData(AlertInfo::sLOG_NAME));
      EXPECT_EQ("Oxa::Core::Mutex::TryLock", error.GetUnwindStack()->front().Get(CodeContext::sFUNCTION));
      phase = 2;
    }
  });
  ASSERT_TRUE(Eventually([&] { return phase == 1; }));
  std::this_thread::sleep_for(std::chrono::milliseconds(20));  // whether it waits or comes later: the same
  EXPECT_LT(MillisecondsOf([&] { site.Destroy(); }), 4500);
  waiter.join();
  EXPECT_EQ(2, phase);
}

TEST(Mutex, OnceDestructionHasBegunNothingIsHeld) {
  Site site;
  site.Destroy();
  EXPECT_NO_THROW(LockDying(*site, IMutex::sINFINITE));
  EXPECT_NO_THROW(LockDying(*site, Elapse(1)));
  EXPECT_THROW(TryLockDying(*site, Elapse(0)), MutexDestroyedBeforeLockAcquired);
  EXPECT_THROW(TryLockDying(*site, Elapse(1)), MutexDestroyedBeforeLockAcquired);
}

TEST(Mutex, AMutexThatStaysHeldIsDestroyedAfterFiveSeconds) {
  Site site;
  Holder holder([&] { (*site).Lock(); }, [] {});
  const double took = MillisecondsOf([&] { site.Destroy(); });
  EXPECT_GE(took, 5000);
  EXPECT_LT(took, 20000);
  EXPECT_NO_THROW(TryLockDying(*site, Elapse(0)));  // deleted without having touched the flag
}

TEST(Mutex, DestructionOfAFreeMutexDoesNotWait) {
  EXPECT_LT(MillisecondsOf([] { Mutex mutex; }), 1000);
}
