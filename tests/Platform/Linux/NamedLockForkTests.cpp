// Named locks in forked children, which share the parent's memory of them.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>

#include "NamedLockSupport.h"
#include "Platform/NamedLock.h"
#include "Support/ChildProcess.h"

namespace Platform = Oxa::Core::Platform;
using NamedLockTests::NamedLockTest;
using Platform::Deadline;
using Platform::EWaitEnd;
using Platform::NamedLock;

namespace {

template <class Action>
int InForkedChild(const Action& action) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(action());
  return TestSupport::AwaitChild(child, std::chrono::seconds(60));
}

TEST_F(NamedLockTest, AForkedChildDoesNotOwnWhatItsParentHolds) {
  NamedLock& lock = Open();
  lock.LockBy(Deadline::Never());
  EXPECT_EQ(static_cast<int>(EWaitEnd::eTIMEOUT),
            InForkedChild([&] { return lock.Unlock() == 0 ? -1 : static_cast<int>(lock.TryLock().m_eEnd); }));
  EXPECT_EQ(EWaitEnd::eSIGNALLED, lock.TryLock().m_eEnd);
  EXPECT_EQ(0, lock.Unlock());
  EXPECT_EQ(0, lock.Unlock());
}

TEST_F(NamedLockTest, AForkedChildUsesTheLockThatItInherited) {
  const char* const name = Name();
  NamedLock& lock = Open(name);
  EXPECT_EQ(0, InForkedChild([&] {
              const bool got = lock.LockBy(Deadline::Never()).m_eEnd == EWaitEnd::eSIGNALLED;
              lock.Generation() = 5;
              int code;
              return got && NamedLock::Open(name, code) == &lock && lock.Unlock() == 0 ? 0 : 1;
            }));
  EXPECT_EQ(5u, lock.Generation());
  EXPECT_EQ(EWaitEnd::eSIGNALLED, lock.TryLock().m_eEnd);
  lock.Unlock();
}

TEST_F(NamedLockTest, WhatAForkedChildHeldWhenItWasKilledIsAbandoned) {
  NamedLock& lock = Open();
  EXPECT_EQ(-9, InForkedChild([&] {
    lock.LockBy(Deadline::Never());
    return ::kill(::getpid(), SIGKILL);
  }));
  EXPECT_EQ(EWaitEnd::eABANDONED, lock.LockBy(Deadline::Never()).m_eEnd);
  lock.Unlock();
}

// The parent keeps the lock although the child ends.
TEST_F(NamedLockTest, TheEndOfAForkedChildTakesNothingFromItsParent) {
  NamedLock& lock = Open();
  lock.LockBy(Deadline::Never());
  EXPECT_EQ(0, InForkedChild([] { return 0; }));
  EXPECT_EQ(static_cast<int>(EWaitEnd::eTIMEOUT),
            InForkedChild([&] { return static_cast<int>(lock.TryLock().m_eEnd); }));
  EXPECT_EQ(0, lock.Unlock());
}

}  // namespace
