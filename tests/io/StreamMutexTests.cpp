#include <Infrastructure/OxaCore/io/StreamMutex.h>

#include <gtest/gtest.h>

#include <functional>
#include <thread>

namespace {

using namespace Oxa::Core;

void OnAnotherThread(const std::function<void()>& action) { std::thread(action).join(); }

// Makes this thread the one that is let by: it comes often, and alone.
void ComeOften(StreamMutex& mutex) {
  for (int i = 0; i != 1000; ++i) {
    mutex.Lock();
    mutex.Unlock();
  }
}

TEST(StreamMutex, IsReentrantAndHeldUntilTheLastLevelIsGivenUp) {
  StreamMutex mutex;
  mutex.Lock();
  EXPECT_TRUE(mutex.TryLock());
  mutex.Unlock();
  OnAnotherThread([&] { EXPECT_FALSE(mutex.TryLock()); });
  mutex.Unlock();
  OnAnotherThread([&] {
    EXPECT_TRUE(mutex.TryLock());
    mutex.Unlock();
  });
}

TEST(StreamMutex, ExcludesOthersAfterOneThreadHasComeOften) {
  StreamMutex mutex;
  ComeOften(mutex);
  mutex.Lock();
  OnAnotherThread([&] {
    EXPECT_FALSE(mutex.TryLock());
    EXPECT_THROW(mutex.Lock(Elapse(5, Elapse::MilliSeconds)), LockTimeout);
  });
  mutex.Unlock();
  OnAnotherThread([&] {
    const Lock lock(mutex);
    std::thread([&] { EXPECT_FALSE(mutex.TryLock()); }).join();
  });
}

TEST(StreamMutex, IsHeldByAGuardThroughTheInterface) {
  StreamMutex mutex;
  ComeOften(mutex);
  const IMutex& interface = mutex;
  const Lock lock(interface);
  OnAnotherThread([&] { EXPECT_FALSE(mutex.TryLock(Elapse(2, Elapse::MilliSeconds))); });
}

}  // namespace
