#include "Platform/NamedLock.h"

#include <gtest/gtest.h>

#include <iterator>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "NamedLockSupport.h"
#include "Support/Eventually.h"
#include "Support/Together.h"

namespace Platform = Oxa::Core::Platform;
using NamedLockTests::NamedLockTest;
using Platform::Deadline;
using Platform::EWaitEnd;
using Platform::NamedLock;
using TestSupport::Eventually;
using TestSupport::Holder;
using TestSupport::MillisecondsOf;
using TestSupport::Together;

namespace {

EWaitEnd LockOf(NamedLock& lock) { return lock.LockBy(Deadline::Never()).m_eEnd; }

EWaitEnd TryOf(NamedLock& lock) { return lock.TryLock().m_eEnd; }

// By another thread, which gives it back.
EWaitEnd OtherThreadTries(NamedLock& lock) {
  EWaitEnd end = EWaitEnd::eOTHER;
  std::thread([&] {
    end = TryOf(lock);
    lock.Unlock();
  }).join();
  return end;
}

Holder Hold(NamedLock& lock) {
  return Holder([&lock] { LockOf(lock); }, [&lock] { lock.Unlock(); });
}

TEST_F(NamedLockTest, OneNameIsOneLock) {
  const std::string name = Name();
  NamedLock& lock = Open(name.c_str());
  EXPECT_EQ(&lock, &Open(std::string(name).c_str()));
  EXPECT_NE(&lock, &Open(Name("other")));
}

TEST_F(NamedLockTest, ThreadsThatOpenANewNameTogetherGetOneLock) {
  constexpr int threads = 4;
  for (int round = 0; round < 100; ++round) {
    const char* const name = Name();
    NamedLock* locks[threads];
    Together(threads, [&](int index) { locks[index] = &Open(name); });
    EXPECT_EQ(std::set<NamedLock*>{locks[0]}, std::set<NamedLock*>(std::begin(locks), std::end(locks)));
  }
}

TEST_F(NamedLockTest, AnyTextIsAName) {
  const std::string names[] = {"a/b",  "a\\b", "a%2Fb",  "a_b", "A/b", "a/b ",
                               "/a/b", "..",   "../../", "",    " ",   "\xC3\xB5\x01"};
  std::set<NamedLock*> locks;
  for (const std::string& name : names) {
    NamedLock& lock = Open(Name(name));
    EXPECT_EQ(0u, lock.Generation()) << name;  // no other name's lock
    lock.Generation() = 1;
    EXPECT_EQ(EWaitEnd::eSIGNALLED, LockOf(lock));
    lock.Unlock();
    locks.insert(&lock);
  }
  EXPECT_EQ(std::size(names), locks.size());
}

TEST_F(NamedLockTest, LongNamesThatDifferAtTheirEndOnlyAreDifferentLocks) {
  for (const std::size_t length : {100u, 200u, 1000u, 3500u}) {
    const std::string start(length, 'n');
    NamedLock& one = Open(Name(start + "1"));
    NamedLock& two = Open(Name(start + "2"));
    EXPECT_NE(&one, &two);
    EXPECT_EQ(EWaitEnd::eSIGNALLED, LockOf(one));
    EXPECT_EQ(EWaitEnd::eSIGNALLED, OtherThreadTries(two));
    EXPECT_EQ(EWaitEnd::eTIMEOUT, OtherThreadTries(one));
    one.Unlock();
  }
}

TEST_F(NamedLockTest, ANameBeyondAllReasonIsRefusedWithACode) {
  int code = 0;
  EXPECT_EQ(nullptr, NamedLock::Open(std::string(100000, 'n').c_str(), code));
  EXPECT_NE(0, code);
}

TEST_F(NamedLockTest, ExcludesOtherThreads) {
  NamedLock& lock = Open();
  EXPECT_EQ(EWaitEnd::eSIGNALLED, LockOf(lock));
  EXPECT_EQ(EWaitEnd::eTIMEOUT, OtherThreadTries(lock));
  EXPECT_EQ(0, lock.Unlock());
  EXPECT_EQ(EWaitEnd::eSIGNALLED, OtherThreadTries(lock));
}

TEST_F(NamedLockTest, ItsOwnerTakesItAgainAndGivesItUpAsManyTimes) {
  NamedLock& lock = Open();
  EXPECT_EQ(EWaitEnd::eSIGNALLED, LockOf(lock));
  EXPECT_EQ(EWaitEnd::eSIGNALLED, TryOf(lock));
  EXPECT_EQ(EWaitEnd::eSIGNALLED, lock.LockBy(Deadline::In(0)).m_eEnd);
  for (int level = 0; level < 3; ++level) {
    EXPECT_EQ(EWaitEnd::eTIMEOUT, OtherThreadTries(lock)) << level;
    EXPECT_EQ(0, lock.Unlock()) << level;
  }
  EXPECT_EQ(EWaitEnd::eSIGNALLED, OtherThreadTries(lock));
}

TEST_F(NamedLockTest, OnlyItsOwnerGivesItUp) {
  NamedLock& lock = Open();
  EXPECT_NE(0, lock.Unlock());
  const Holder holder = Hold(lock);
  EXPECT_NE(0, lock.Unlock());
  EXPECT_EQ(EWaitEnd::eTIMEOUT, TryOf(lock));
}

TEST_F(NamedLockTest, ADeadlineThatHasPassedMakesOneAttempt) {
  NamedLock& lock = Open();
  EXPECT_EQ(EWaitEnd::eSIGNALLED, lock.LockBy(Deadline::In(-1)).m_eEnd);
  lock.Unlock();
  const Holder holder = Hold(lock);
  EXPECT_EQ(EWaitEnd::eTIMEOUT, lock.LockBy(Deadline::In(-1)).m_eEnd);
  EXPECT_EQ(EWaitEnd::eTIMEOUT, lock.LockBy(Deadline::In(0)).m_eEnd);
}

TEST_F(NamedLockTest, ADeadlineIsWaitedFor) {
  NamedLock& lock = Open();
  const Holder holder = Hold(lock);
  EXPECT_LE(100.0, MillisecondsOf([&] {
              const Platform::WaitResult result = lock.LockBy(Deadline::InMilliseconds(100));
              EXPECT_EQ(EWaitEnd::eTIMEOUT, result.m_eEnd);
              EXPECT_EQ(0, result.m_iCode);
            }));
}

TEST_F(NamedLockTest, AWaiterGetsItWhenItIsGivenUp) {
  NamedLock& lock = Open();
  for (const Deadline deadline : {Deadline::Never(), Deadline::InMilliseconds(60000)}) {
    EXPECT_EQ(EWaitEnd::eSIGNALLED, LockOf(lock));
    std::atomic<bool> begun{false}, done{false};
    std::thread waiter([&] {
      begun = true;
      EXPECT_EQ(EWaitEnd::eSIGNALLED, lock.LockBy(deadline).m_eEnd);
      done = true;
      lock.Unlock();
    });
    EXPECT_TRUE(Eventually([&] { return begun.load(); }));
    EXPECT_FALSE(done);
    lock.Unlock();
    waiter.join();
    EXPECT_TRUE(done);
  }
}

TEST_F(NamedLockTest, KeepsThreadsApart) {
  NamedLock& lock = Open();
  int count = 0;
  std::vector<std::thread> workers;
  for (int worker = 0; worker < 4; ++worker)
    workers.emplace_back([&, worker] {
      for (int round = 0; round < 2000; ++round) {
        const bool limited = worker % 2 == 0;
        EXPECT_EQ(EWaitEnd::eSIGNALLED,
                  lock.LockBy(limited ? Deadline::InMilliseconds(60000) : Deadline::Never()).m_eEnd);
        ++count;
        lock.Unlock();
      }
    });
  for (std::thread& worker : workers) worker.join();
  EXPECT_EQ(8000, count);
}

TEST_F(NamedLockTest, WhatAThreadLeavesLockedIsAbandonedOnce) {
  NamedLock& lock = Open();
  for (int round = 0; round < 3; ++round) {
    std::thread([&lock] {
      LockOf(lock);
      LockOf(lock);
    }).join();
    EXPECT_EQ(EWaitEnd::eABANDONED, LockOf(lock));
    EXPECT_EQ(EWaitEnd::eTIMEOUT, OtherThreadTries(lock));
    EXPECT_EQ(0, lock.Unlock());  // one level, whatever the other had
    EXPECT_EQ(EWaitEnd::eSIGNALLED, OtherThreadTries(lock));
  }
}

TEST_F(NamedLockTest, AnAttemptAtAnAbandonedLockOwnsIt) {
  NamedLock& lock = Open();
  std::thread([&lock] { LockOf(lock); }).join();
  EXPECT_EQ(EWaitEnd::eABANDONED, TryOf(lock));
  EXPECT_EQ(EWaitEnd::eSIGNALLED, TryOf(lock));
  EXPECT_EQ(0, lock.Unlock());
  EXPECT_EQ(EWaitEnd::eTIMEOUT, OtherThreadTries(lock));
  EXPECT_EQ(0, lock.Unlock());
  EXPECT_EQ(EWaitEnd::eSIGNALLED, OtherThreadTries(lock));
}

TEST_F(NamedLockTest, AWaitWithADeadlineGetsAnAbandonedLock) {
  NamedLock& lock = Open();
  std::thread([&lock] { LockOf(lock); }).join();
  EXPECT_EQ(EWaitEnd::eABANDONED, lock.LockBy(Deadline::InMilliseconds(60000)).m_eEnd);
  lock.Unlock();
}

TEST_F(NamedLockTest, WhoeverWaitsWhenTheOwnersThreadEndsGetsIt) {
  NamedLock& lock = Open();
  std::atomic<bool> waiting{false};
  EWaitEnd end = EWaitEnd::eOTHER;
  std::thread waiter;
  {
    Holder holder([&lock] { LockOf(lock); }, [] {});
    waiter = std::thread([&] {
      waiting = true;
      end = LockOf(lock);
      lock.Unlock();
    });
    EXPECT_TRUE(Eventually([&] { return waiting.load(); }));
  }
  waiter.join();
  EXPECT_EQ(EWaitEnd::eABANDONED, end);
}

TEST_F(NamedLockTest, ItsNumberStartsAtZeroAndKeepsWhatIsPutThere) {
  NamedLock& lock = Open();
  EXPECT_EQ(0u, lock.Generation());
  lock.Generation() = 0x123456789abcdefu;
  LockOf(lock);
  lock.Unlock();
  EXPECT_EQ(0x123456789abcdefu, lock.Generation());
  EXPECT_EQ(0u, Open(Name("other")).Generation());
}

}  // namespace
