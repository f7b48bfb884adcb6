#include <gtest/gtest.h>
#include <sched.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

#include "Platform/NativeThread.h"
#include "Platform/Threads.h"

namespace Platform = Oxa::Core::Platform;

TEST(ThreadIdOnLinux, IsTheKernels) {
  EXPECT_EQ(static_cast<unsigned long>(syscall(SYS_gettid)), Platform::CurrentThreadId());
  std::thread([] {
    EXPECT_EQ(static_cast<unsigned long>(syscall(SYS_gettid)), Platform::CurrentThreadId());
  }).join();
}

TEST(ThreadIdOnLinux, AForkedChildHasItsOwn) {
  const unsigned long parent = Platform::CurrentThreadId();
  const pid_t child = fork();
  if (child == 0) {
    const unsigned long own = Platform::CurrentThreadId();
    _exit(own != parent && own == static_cast<unsigned long>(getpid()) ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(child, waitpid(child, &status, 0));
  EXPECT_EQ(0, status);
  EXPECT_EQ(parent, Platform::CurrentThreadId());
}

TEST(ThreadIdOnLinux, LocksWorkInAForkedChild) {
  Platform::ReentrantLock lock;
  lock.Lock();
  lock.Unlock();
  const pid_t child = fork();
  if (child == 0) {
    lock.Lock();
    const bool works = lock.IsOwner() && lock.TryLock();
    _exit(works ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(child, waitpid(child, &status, 0));
  EXPECT_EQ(0, status);
}

// For the system its id would be that of whoever asks.
TEST(ThreadIdOnLinux, AThreadThatHasNoneYetLeavesTheCallersPriorityAlone) {
  const int policy = ::sched_getscheduler(0);
  Platform::NativeThread::Create()->SetPriority(-15);
  EXPECT_EQ(policy, ::sched_getscheduler(0));
}
