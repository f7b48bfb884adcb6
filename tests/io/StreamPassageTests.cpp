// What a StreamMutex tells to whom it lets by.
#include "io/StreamPassage.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <thread>

#include "Core/LibraryState.h"

namespace {

using namespace Oxa::Core;

constexpr int iENOUGH = 64;

bool Passes(StreamMutex& mutex) { return static_cast<bool>(StreamPassage(mutex)); }

template <class... Timeout>
void Take(StreamMutex& mutex, int times, const Timeout&... timeout) {
  for (int i = 0; i != times; ++i) {
    mutex.Lock(timeout...);
    mutex.Unlock();
  }
}

TEST(StreamPassage, IsForWhoLocksOverAndOver) {
  StreamMutex mutex;
  Take(mutex, iENOUGH - 1);
  EXPECT_FALSE(Passes(mutex));
  Take(mutex, 1);
  EXPECT_TRUE(Passes(mutex));
  std::thread([&] { EXPECT_FALSE(Passes(mutex)); }).join();
}

TEST(StreamPassage, AStepIsDoneOnTheWayThroughOrNotAtAll) {
  StreamMutex mutex;
  int steps = 0;
  const auto step = [&steps] { return ++steps == 1; };
  EXPECT_FALSE(StreamPassage::Pass(mutex, step));
  EXPECT_EQ(0, steps);
  Take(mutex, iENOUGH);
  EXPECT_TRUE(StreamPassage::Pass(mutex, step));
  EXPECT_FALSE(StreamPassage::Pass(mutex, step)) << "though it has passed";
  EXPECT_EQ(2, steps);
  std::thread([&] {
    EXPECT_FALSE(StreamPassage::Pass(mutex, step));
    Take(mutex, 1);  // or it would wait for ever for a thread that is still inside
  }).join();
  EXPECT_EQ(2, steps);
}

TEST(StreamPassage, ALockWithALimitCountsOnceAsWell) {
  StreamMutex mutex;
  const Elapse limit(60, Elapse::Seconds);
  Take(mutex, iENOUGH - 1, limit);
  EXPECT_FALSE(Passes(mutex));
  Take(mutex, 1, limit);
  EXPECT_TRUE(Passes(mutex));
}

TEST(StreamPassage, EndsWithAnySuccessOfAnotherThread) {
  for (const bool withLimit : {false, true}) {
    StreamMutex mutex;
    Take(mutex, iENOUGH);
    std::thread([&] {
      EXPECT_TRUE(mutex.TryLock(withLimit ? Elapse(60, Elapse::Seconds) : IMutex::sNO_WAIT));
      mutex.Unlock();
    }).join();
    EXPECT_FALSE(Passes(mutex));
  }
}

TEST(StreamPassage, EndsNotWithAFailureOfAnotherThread) {
  StreamMutex mutex;
  Take(mutex, iENOUGH);
  mutex.Lock();
  std::thread([&] {
    EXPECT_FALSE(mutex.TryLock());
    EXPECT_THROW(mutex.Lock(Elapse(1, Elapse::MilliSeconds)), LockTimeout);
  }).join();
  EXPECT_TRUE(Passes(mutex));
  mutex.Unlock();
}

// While the library unloads a lock comes back without an error, and without being had.
TEST(StreamPassageDeathTest, EndsNotWithALockThatIsNotHadWhileUnloading) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        StreamMutex mutex;
        Take(mutex, iENOUGH);
        mutex.Lock();
        SetLibraryUnloading();
        std::thread([&] { mutex.Lock(Elapse(1, Elapse::MilliSeconds)); }).join();
        _exit(Passes(mutex) ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
