// What asks the system about words and threads leaves errno to the host's own calls.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <thread>

#include "Platform/Linux/Futex.h"
#include "Platform/Linux/ThreadIds.h"
#include "Platform/Threads.h"
#include "Support/WaitingThread.h"

namespace Platform = Oxa::Core::Platform;
using Platform::Deadline;

namespace {

constexpr int iOF_THE_HOST = 77;

TEST(Futex, AWaitThatEndsLeavesErrnoAlone) {
  const std::uint32_t word = 1;
  errno = iOF_THE_HOST;
  EXPECT_TRUE(Platform::FutexWait(&word, 2, Deadline::Never()));  // the word has changed already
  EXPECT_EQ(iOF_THE_HOST, errno);
  EXPECT_FALSE(Platform::FutexWait(&word, 1, Deadline::InMilliseconds(1)));
  EXPECT_EQ(iOF_THE_HOST, errno);
}

TEST(Futex, AWakeThatIsRefusedLeavesErrnoAlone) {
  const std::uint32_t words[2] = {};
  errno = iOF_THE_HOST;
  Platform::FutexWake(reinterpret_cast<const char*>(words) + 1, 1);
  EXPECT_EQ(iOF_THE_HOST, errno);
}

TEST(ThreadIds, AskingForAThreadThatIsGoneLeavesErrnoAlone) {
  constexpr std::uint32_t nobody = (1u << 22) + 1;  // ids stay below
  errno = iOF_THE_HOST;
  EXPECT_TRUE(Platform::ThreadIsGone(nobody));
  EXPECT_EQ(iOF_THE_HOST, errno);
}

// Whoever takes over what a dead thread owned takes over those who slept behind it.
TEST(Futex, WhoSleepsBehindADeadOwnerIsWokenByTheNextOne) {
  Platform::ReentrantLock lock;
  std::thread([&lock] { lock.Lock(); }).join();
  const TestSupport::Waiting sleeper([&lock] {
    lock.Lock();
    lock.Unlock();
  });
  EXPECT_EQ(Platform::EWaitEnd::eABANDONED, lock.LockBy(Deadline::InMilliseconds(60000)).m_eEnd);
  lock.Unlock();
}

}  // namespace
