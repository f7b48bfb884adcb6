#include <Infrastructure/OxaCore/RefCountedObject.h>

#include <Infrastructure/OxaCore/Time.h>

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace Oxa::Core {

namespace {

using Clock = std::chrono::steady_clock;

const Elapse g_INTERVAL(30, Elapse::MilliSeconds);

TEST(RefCountedObjectTest, CountsUpAndDown) {
  RefCountedObject object;
  EXPECT_EQ(0, object.GetRefCount());
  EXPECT_EQ(1, object.AddRef());
  EXPECT_EQ(2, object.AddRef());
  EXPECT_EQ(2, object.GetRefCount());
  EXPECT_EQ(1, object.Release());
  EXPECT_EQ(0, object.Release());
  EXPECT_EQ(0, object.GetRefCount()) << "and the object is still there";
}

TEST(RefCountedObjectTest, ReleaseBelowZeroFailsAnAssertion) {
  auto object = std::make_unique<RefCountedObject>();
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(-1, object->Release());
  std::string output = ::testing::internal::GetCapturedStderr();
  EXPECT_NE(std::string::npos, output.find("Failed Assertion(m_refCount >= 0)")) << output;
  EXPECT_EQ(0, object->AddRef());
}

TEST(RefCountedObjectTest, DyingInUseFailsAnAssertion) {
  for (const int users : {0, 1}) {
    auto object = std::make_unique<RefCountedObject>();
    for (int i = 0; i < users; ++i) object->AddRef();
    ::testing::internal::CaptureStderr();
    object.reset();
    const std::string output = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(users > 0, output.find("Failed Assertion(m_refCount == 0)") != std::string::npos) << output;
  }
}

TEST(RefCountedObjectTest, OperationsAreVirtual) {
  struct Doubled : RefCountedObject {
    int AddRef() override { return RefCountedObject::AddRef(), RefCountedObject::AddRef(); }
    int Release() override { return RefCountedObject::Release(), RefCountedObject::Release(); }
  };
  Doubled doubled;
  RefCountedObject& object = doubled;
  EXPECT_EQ(2, object.AddRef());
  EXPECT_EQ(0, object.Release());
}

TEST(RefCountedObjectTest, PollOnZeroTakesOneInterval) {
  RefCountedObject object;
  const Clock::time_point start = Clock::now();
  EXPECT_TRUE(object.PollForZeroRefCount(Elapse(20, Elapse::Seconds), g_INTERVAL));
  const Clock::duration took = Clock::now() - start;
  EXPECT_GE(took, std::chrono::milliseconds(30));
  EXPECT_LT(took, std::chrono::seconds(10));
}

TEST(RefCountedObjectTest, PollOnAPassedDeadlineTakesOneIntervalToo) {
  RefCountedObject object;
  object.AddRef();
  const Clock::time_point start = Clock::now();
  EXPECT_FALSE(object.PollForZeroRefCount(Elapse(-1, Elapse::Seconds), g_INTERVAL));
  EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(30));
  object.Release();
}

TEST(RefCountedObjectTest, PollGivesUpAfterTheTimeout) {
  RefCountedObject object;
  object.AddRef();
  const Clock::time_point start = Clock::now();
  EXPECT_FALSE(object.PollForZeroRefCount(Elapse(200, Elapse::MilliSeconds), g_INTERVAL));
  const Clock::duration took = Clock::now() - start;
  EXPECT_GE(took, std::chrono::milliseconds(220)) << "a sleep follows the last look as well";
  EXPECT_LT(took, std::chrono::seconds(10));
  object.Release();
}

TEST(RefCountedObjectTest, PollSeesTheLastUserLeave) {
  RefCountedObject object;
  object.AddRef();
  std::thread user([&object] {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    object.Release();
  });
  const Clock::time_point start = Clock::now();
  EXPECT_TRUE(object.PollForZeroRefCount(Elapse(30, Elapse::Seconds), g_INTERVAL));
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(20));
  user.join();
}

TEST(RefCountedObjectTest, AUserThatLeavesInTheLastSleepCounts) {
  RefCountedObject object;
  object.AddRef();
  std::thread user([&object] {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    object.Release();
  });
  EXPECT_TRUE(object.PollForZeroRefCount(Elapse(0, Elapse::Seconds), Elapse(2, Elapse::Seconds)))
      << "the deadline had passed, but the answer is taken after the sleep";
  user.join();
}

TEST(RefCountedObjectTest, CountsRightOnManyThreads) {
  RefCountedObject object;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&object] {
      for (int i = 0; i < 20000; ++i) object.AddRef();
      for (int i = 0; i < 19999; ++i) object.Release();
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(4, object.GetRefCount());
  for (int t = 0; t < 4; ++t) object.Release();
}

/// An owner that sees 0 deletes at once, while the last user is still on its way out of Release.
TEST(RefCountedObjectTest, TheOwnerMayDeleteWhenItSeesZero) {
  for (int i = 0; i < 500; ++i) {
    auto object = std::make_unique<RefCountedObject>();
    object->AddRef();
    std::thread user([raw = object.get()] { raw->Release(); });
    while (object->GetRefCount() > 0) std::this_thread::yield();
    object.reset();
    user.join();
  }
}

}  // namespace

}  // namespace Oxa::Core
