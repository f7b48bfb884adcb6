#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>
#include <type_traits>
#include <vector>

#include "Platform/Threads.h"
#include "Support/Eventually.h"
#include "Support/OtherThread.h"

namespace Platform = Oxa::Core::Platform;
using Platform::Deadline;
using Platform::EWaitEnd;
using TestSupport::Eventually;
using TestSupport::Holder;
using TestSupport::MillisecondsOf;
using TestSupport::OtherThreadCanLock;

namespace {

static_assert(std::is_trivially_destructible_v<Platform::ShortLock>);
static_assert(std::is_trivially_destructible_v<Platform::ReentrantLock>);

constexpr long long llMILLISECOND = 1000000;

Platform::ShortLock s_shortLock;  // usable without having been built

// Leaves the lock behind at `levels` levels.
void LockAndEnd(Platform::ReentrantLock& lock, int levels = 1) {
  std::thread([&] {
    for (int level = 0; level < levels; ++level) lock.Lock();
  }).join();
}

template <class LockKind>
int CountUnder(LockKind& lock, int threads, int rounds) {
  int count = 0;
  std::vector<std::thread> workers;
  for (int worker = 0; worker < threads; ++worker)
    workers.emplace_back([&] {
      for (int round = 0; round < rounds; ++round) {
        lock.Lock();
        ++count;
        lock.Unlock();
      }
    });
  for (auto& worker : workers) worker.join();
  return count;
}

}  // namespace

TEST(ThreadId, IsStableAndDifferentForLivingThreads) {
  const unsigned long mine = Platform::CurrentThreadId();
  EXPECT_NE(0u, mine);
  EXPECT_EQ(mine, Platform::CurrentThreadId());
  std::atomic<unsigned long> first{0}, second{0};
  Holder a([&] { first = Platform::CurrentThreadId(); }, [] {});
  Holder b([&] { second = Platform::CurrentThreadId(); }, [] {});
  EXPECT_EQ(3u, (std::set<unsigned long>{mine, first, second}).size());
}

TEST(MonotonicClock, GoesForward) {
  const long long start = Platform::MonotonicNow();
  EXPECT_TRUE(Eventually([&] { return Platform::MonotonicNow() > start + llMILLISECOND; }));
}

TEST(Deadline, ZeroAndNegativeHavePassed) {
  for (const long long span : {0LL, -1LL, -9300000000000LL, INT64_MIN + 0LL}) {
    EXPECT_TRUE(Deadline::In(span).HasPassed()) << span;
    EXPECT_TRUE(Deadline::InMilliseconds(span).HasPassed()) << span;
    EXPECT_EQ(0, Deadline::In(span).NanosecondsLeft()) << span;
  }
}

TEST(Deadline, NeverNeitherPassesNorIsReachedByLargeSpans) {
  EXPECT_TRUE(Deadline::Never().IsNever());
  EXPECT_FALSE(Deadline::Never().HasPassed());
  for (const Deadline& far : {Deadline::In(INT64_MAX), Deadline::InMilliseconds(INT64_MAX)}) {
    EXPECT_FALSE(far.IsNever());
    EXPECT_FALSE(far.HasPassed());
    EXPECT_GT(far.NanosecondsLeft(), INT64_MAX / 2);
  }
}

TEST(Deadline, PassesWhenItsTimeIsOver) {
  const Deadline deadline = Deadline::InMilliseconds(20);
  EXPECT_LE(deadline.NanosecondsLeft(), 20 * llMILLISECOND);
  EXPECT_TRUE(Eventually([&] { return deadline.HasPassed(); }));
  EXPECT_EQ(0, deadline.NanosecondsLeft());
}

TEST(ShortLock, ExcludesOthersAndIsNotReentrant) {
  s_shortLock.Lock();
  EXPECT_FALSE(s_shortLock.TryLock());
  s_shortLock.Unlock();
  ASSERT_TRUE(s_shortLock.TryLock());
  s_shortLock.Unlock();
  { const Platform::ShortGuard guard(s_shortLock); }
  EXPECT_TRUE(s_shortLock.TryLock());
  s_shortLock.Unlock();
}

TEST(ShortLock, CountsRightUnderContention) { EXPECT_EQ(200000, CountUnder(s_shortLock, 4, 50000)); }

TEST(ReentrantLock, CountsRightUnderContention) {
  Platform::ReentrantLock lock;
  EXPECT_EQ(200000, CountUnder(lock, 4, 50000));
}

TEST(ReentrantLock, OwnerTakesItAgainAndGivesItUpAsOften) {
  Platform::ReentrantLock lock;
  lock.Lock();
  EXPECT_TRUE(lock.TryLock());
  EXPECT_EQ(EWaitEnd::eSIGNALLED, lock.LockBy(Deadline::In(0)).m_eEnd);
  lock.Lock();
  for (int level = 0; level < 3; ++level) {
    lock.Unlock();
    EXPECT_FALSE(OtherThreadCanLock(lock)) << level;
    EXPECT_TRUE(lock.IsOwner());
  }
  lock.Unlock();
  EXPECT_FALSE(lock.IsOwner());
  EXPECT_TRUE(OtherThreadCanLock(lock));
}

TEST(ReentrantLock, OnlyTheOwnerUnlocksWhenAsked) {
  Platform::ReentrantLock lock;
  EXPECT_NE(0, lock.UnlockIfOwner());
  const Holder holder([&] { lock.Lock(); }, [&] { lock.Unlock(); });
  EXPECT_FALSE(lock.IsOwner());
  EXPECT_NE(0, lock.UnlockIfOwner());
  EXPECT_FALSE(lock.TryLock());
}

// Runs `use` on a thread that hasn't asked for its id.
template <class Use>
void OnNewThread(const Use& use) {
  std::thread([&] {
    ASSERT_EQ(0u, Platform::KnownThreadId());
    use();
  }).join();
}

TEST(ReentrantLock, ServesThreadsThatHaveNotAskedForTheirIds) {
  Platform::ReentrantLock lock;
  OnNewThread([&] {
    EXPECT_NE(0, lock.UnlockIfOwner());
    EXPECT_TRUE(OtherThreadCanLock(lock));
  });
  OnNewThread([&] {
    lock.Lock();
    EXPECT_TRUE(lock.IsOwner());
    EXPECT_FALSE(OtherThreadCanLock(lock));
    EXPECT_EQ(0, lock.UnlockIfOwner());
  });
  OnNewThread([&] {
    EXPECT_TRUE(lock.TryLock());
    EXPECT_TRUE(lock.IsOwner());
    EXPECT_TRUE(lock.TryLock());
    lock.Unlock();
    EXPECT_FALSE(OtherThreadCanLock(lock));
    lock.Unlock();
    EXPECT_TRUE(OtherThreadCanLock(lock));
  });
  const Holder holder([&] { lock.Lock(); }, [&] { lock.Unlock(); });
  OnNewThread([&] {
    EXPECT_FALSE(lock.TryLock());
    EXPECT_NE(0, lock.UnlockIfOwner());
  });
}

TEST(ReentrantLock, LockByRunsOutOfTime) {
  Platform::ReentrantLock lock;
  const Holder holder([&] { lock.Lock(); }, [&] { lock.Unlock(); });
  EXPECT_EQ(EWaitEnd::eTIMEOUT, lock.LockBy(Deadline::In(0)).m_eEnd);
  EWaitEnd end{};
  EXPECT_GE(MillisecondsOf([&] { end = lock.LockBy(Deadline::InMilliseconds(120)).m_eEnd; }), 120);
  EXPECT_EQ(EWaitEnd::eTIMEOUT, end);
}

TEST(ReentrantLock, LockByGetsWhatIsGivenUpInTime) {
  Platform::ReentrantLock lock;
  std::atomic<bool> locked{false};
  Holder holder([&] { lock.Lock(); }, [&] { lock.Unlock(); });
  std::thread waiter([&] {
    EXPECT_EQ(EWaitEnd::eSIGNALLED, lock.LockBy(Deadline::InMilliseconds(60000)).m_eEnd);
    locked = true;
    lock.Unlock();
  });
  EXPECT_FALSE(locked);
  holder.Leave();
  waiter.join();
  EXPECT_TRUE(locked);
}

TEST(ReentrantLock, ALockOfAnEndedThreadIsAbandonedOnce) {
  Platform::ReentrantLock lock;
  LockAndEnd(lock, 3);
  EWaitEnd end{};
  EXPECT_LT(MillisecondsOf([&] { end = lock.LockBy(Deadline::InMilliseconds(60000)).m_eEnd; }), 30000);
  EXPECT_EQ(EWaitEnd::eABANDONED, end);
  EXPECT_TRUE(lock.IsOwner());
  EXPECT_FALSE(OtherThreadCanLock(lock));
  lock.Unlock();  // owned at one level, however deep the dead owner was in
  EXPECT_TRUE(OtherThreadCanLock(lock));
  EXPECT_EQ(EWaitEnd::eSIGNALLED, lock.LockBy(Deadline::In(0)).m_eEnd);
  lock.Unlock();
}

TEST(ReentrantLock, AnAttemptWithoutTimeNoticesAbandonmentAsWell) {
  Platform::ReentrantLock lock;
  LockAndEnd(lock);
  EWaitEnd end{};
  // A thread that has been joined may be there for a moment more.
  EXPECT_TRUE(Eventually([&] {
    end = lock.LockBy(Deadline::In(0)).m_eEnd;
    return end != EWaitEnd::eTIMEOUT;
  }));
  EXPECT_EQ(EWaitEnd::eABANDONED, end);
  EXPECT_EQ(0, lock.UnlockIfOwner());
}

TEST(ReentrantLock, AbandonedWhileSomebodyWaits) {
  Platform::ReentrantLock lock;
  std::atomic<int> abandoned{0}, got{0};
  std::vector<std::thread> waiters;
  {
    Holder holder([&] { lock.Lock(); }, [] {});
    for (int waiter = 0; waiter < 3; ++waiter)
      waiters.emplace_back([&] {
        const EWaitEnd end = lock.LockBy(Deadline::Never()).m_eEnd;
        ++(end == EWaitEnd::eABANDONED ? abandoned : got);
        lock.Unlock();
      });
  }
  for (auto& waiter : waiters) waiter.join();
  EXPECT_EQ(1, abandoned);
  EXPECT_EQ(2, got);
}

TEST(ReentrantLock, PlainAttemptsDontHaveWhatADeadThreadOwns) {
  Platform::ReentrantLock lock;
  LockAndEnd(lock);
  EXPECT_FALSE(lock.TryLock());
  EXPECT_FALSE(lock.IsOwner());
}
