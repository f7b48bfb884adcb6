#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/Lock.h>

#include <gtest/gtest.h>

#include <pthread.h>

#include <atomic>
#include <csignal>
#include <ctime>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Support/Eventually.h"
#include "Support/OtherThread.h"

using namespace Oxa::Core;
using TestSupport::Eventually;
using TestSupport::Holder;
using TestSupport::MillisecondsOf;
using TestSupport::OtherThreadCanLock;

namespace {

Holder Hold(IMutex& mutex) {
  return Holder([&mutex] { mutex.Lock(); }, [&mutex] { mutex.Unlock(); });
}

double MillisecondsOn(clockid_t clock) {
  timespec time;
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

// Processor time of the calling thread.
double ThreadMilliseconds() { return MillisecondsOn(CLOCK_THREAD_CPUTIME_ID); }

// A thread that waits for `mutex` with a limit and can be frozen in the midst of it, by a signal whose handler
// doesn't come back. The destructor of the mutex waits for it then, and shows its state to others.
class FrozenWaiter {
 public:
  explicit FrozenWaiter(Mutex& mutex) : m_thread([this, &mutex] { Wait(mutex); }) {
    EXPECT_TRUE(Eventually([this] { return m_bStarted.load(); }));
    clockid_t clock;
    pthread_getcpuclockid(m_thread.native_handle(), &clock);
    EXPECT_TRUE(Eventually([&] { return MillisecondsOn(clock) > 10; }));  // it spins: inside for sure
    s_iState = iRUNNING;
    struct sigaction action {};
    action.sa_handler = [](int) {
      s_iState = iFROZEN;
      while (s_iState == iFROZEN) {
      }
    };
    sigaction(SIGUSR1, &action, nullptr);
    pthread_kill(m_thread.native_handle(), SIGUSR1);
    EXPECT_TRUE(Eventually([] { return s_iState == iFROZEN; }));
  }
  ~FrozenWaiter() { m_thread.join(); }

  static void Thaw() { s_iState = iTHAWED; }
  bool WasTurnedAway() const { return m_bTurnedAway; }

 private:
  static constexpr int iRUNNING = 0, iFROZEN = 1, iTHAWED = 2;
  static inline std::atomic<int> s_iState{iRUNNING};

  void Wait(Mutex& mutex) {
    m_bStarted = true;
    try {
      mutex.TryLock(Elapse(60));
    } catch (const MutexDestroyedBeforeLockAcquired& error) {
      EXPECT_EQ("Oxa.Core.Mutex", error.GetData(AlertInfo::sLOG_NAME));
      EXPECT_EQ("Oxa::Core::Mutex::TryLock", error.GetUnwindStack()->front().Get(CodeContext::sFUNCTION));
      m_bTurnedAway = true;
    }
  }

  std::atomic<bool> m_bStarted{false};
  std::atomic<bool> m_bTurnedAway{false};
  std::thread m_thread;  // last: it uses the others
};

bool SaysThatItIsDying(Mutex& mutex, const Elapse& timeout) {
  try {
    mutex.TryLock(timeout);
  } catch (const MutexDestroyedBeforeLockAcquired&) {
    return true;
  }
  return false;
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

TEST(Mutex, UnlockByAStrangerDoesNothing) {
  Mutex mutex;
  const Holder holder = Hold(mutex);
  mutex.Unlock();
  EXPECT_FALSE(mutex.TryLock());
}

namespace {

// A derived class that has its own way to try.
class StubbornMutex : public Mutex {
 public:
  bool TryLock(const Elapse& timeout) override {
    m_timeouts.push_back(timeout);
    return m_bAnswer;
  }
  std::vector<Elapse> m_timeouts;
  bool m_bAnswer = false;
};

}  // namespace

TEST(Mutex, ALockWithALimitAsksTheVirtualTryLock) {
  StubbornMutex mutex;
  EXPECT_THROW(mutex.Lock(Elapse(7)), LockTimeout);
  mutex.m_bAnswer = true;
  EXPECT_NO_THROW(mutex.Lock(Elapse(0)));
  EXPECT_EQ((std::vector<Elapse>{Elapse(7), Elapse(0)}), mutex.m_timeouts);
  mutex.Lock();
  EXPECT_EQ(2u, mutex.m_timeouts.size()) << "without a limit nobody is asked";
  mutex.Unlock();
}

TEST(Mutex, ALockThatTimesOutIsNotSettledInPlace) {
  class Settling : public ErrorHandler {
    bool Handle(Error&) override { return true; }
  };
  const boost::shared_ptr<ErrorHandler> handler(new Settling);
  AlertManager::Instance()->AddErrorHandler(typeid(LockTimeout).name(), handler);
  StubbornMutex mutex;
  EXPECT_THROW(mutex.Lock(Elapse(7)), LockTimeout);
  AlertManager::Instance()->RemoveErrorHandler(typeid(LockTimeout).name(), handler);
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

// The owner destroys, so that no waiter can come first, and the destructor is kept busy by the frozen one.
TEST(Mutex, ADyingMutexTurnsEverybodyAway) {
  auto mutex = std::make_unique<Mutex>();
  Mutex& dying = *mutex;
  dying.Lock();
  FrozenWaiter waiter(dying);
  std::thread others([&] {
    EXPECT_TRUE(Eventually([&] { return SaysThatItIsDying(dying, Elapse(0)); }));
    EXPECT_TRUE(SaysThatItIsDying(dying, Elapse(1)));
    EXPECT_NO_THROW(dying.Lock());           // comes back at once,
    EXPECT_NO_THROW(dying.Lock(Elapse(1)));  // with nothing in hand
    FrozenWaiter::Thaw();
  });
  EXPECT_LT(MillisecondsOf([&] { mutex.reset(); }), 20000);
  others.join();
  EXPECT_TRUE(Eventually([&] { return waiter.WasTurnedAway(); }));
}

TEST(Mutex, DestructionDoesNotWaitForAFrozenWaiterForEver) {
  alignas(Mutex) unsigned char room[sizeof(Mutex)];
  Mutex* const mutex = ::new (static_cast<void*>(room)) Mutex;
  mutex->Lock();
  FrozenWaiter waiter(*mutex);
  const double took = MillisecondsOf([&] { mutex->~Mutex(); });
  EXPECT_GE(took, 5000);
  EXPECT_LT(took, 20000);
  ::new (static_cast<void*>(room)) Mutex;  // the waiter will look for one
  FrozenWaiter::Thaw();
}

TEST(Mutex, AMutexThatStaysHeldIsDestroyedAfterFiveSeconds) {
  auto mutex = std::make_unique<Mutex>();
  Mutex& dying = *mutex;
  const Holder holder([&] { dying.Lock(); }, [] {});
  std::atomic<bool> destroying{false};
  std::thread other([&] {
    EXPECT_TRUE(Eventually([&] { return destroying.load(); }));
    EXPECT_FALSE(dying.TryLock(Elapse(1)));  // nobody is turned away as long as it isn't the destructor's
  });
  const double took = MillisecondsOf([&] {
    destroying = true;
    mutex.reset();
  });
  other.join();
  EXPECT_GE(took, 5000);
  EXPECT_LT(took, 20000);
}

TEST(Mutex, DestructionOfAFreeMutexDoesNotWait) {
  EXPECT_LT(MillisecondsOf([] { Mutex mutex; }), 1000);
}
