// Threads that are ended while they are in the middle of something. For tests of the inside.
#ifndef OXACORE_TESTS_SUPPORT_ENDEDBYFORCE_H
#define OXACORE_TESTS_SUPPORT_ENDEDBYFORCE_H

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

#include "Platform/NativeThread.h"
#include "Support/Eventually.h"

namespace TestSupport {

/// Runs `work` on a thread that is cancelled from the beginning. Gives whether it came to its end before that counted.
class CancelledThread {
 public:
  static bool Finishes(const std::function<void()>& work) {
    CancelledThread self(work);
    pthread_t thread;
    void* result = nullptr;
    EXPECT_EQ(0, ::pthread_create(&thread, nullptr, &Run, &self));
    EXPECT_EQ(0, ::pthread_join(thread, &result));
    EXPECT_EQ(PTHREAD_CANCELED, result);
    return self.m_bDone;
  }

 private:
  explicit CancelledThread(const std::function<void()>& work) : m_work(work) {}

  static void* Run(void* self) {
    static_cast<CancelledThread*>(self)->Work();
    ::pthread_testcancel();
    return nullptr;
  }
  // Not inlined: the address sanitizer minds variables on a stack that a cancellation leaves.
  [[gnu::noinline]] void Work() {
    ::pthread_cancel(::pthread_self());
    m_work();
    m_bDone = true;
  }

  const std::function<void()>& m_work;
  bool m_bDone = false;
};

/// Runs `work` on a thread that is killed from the moment on in which it sets its argument; waits until it is gone. No
/// destructor of what `work` has on its stack may matter.
class KilledThread {
 public:
  using Work = std::function<void(std::atomic<bool>& now)>;

  static void Run(const Work& work) {
    using Oxa::Core::Platform::Deadline;
    KilledThread self(work);
    const auto thread = Oxa::Core::Platform::NativeThread::Create();
    unsigned long id = 0;
    ASSERT_EQ(0, Oxa::Core::Platform::NativeThread::Start(thread, 0, &Routine, &self, id));
    unsigned int code = 0;
    ASSERT_TRUE(Eventually([&] { return self.m_bNow || thread->HasEnded(code); }));
    thread->Kill(1, Deadline::InMilliseconds(10000));
    EXPECT_TRUE(Eventually([&] { return thread->HasEnded(code); }));
  }

  /// What a kill that nothing keeps waiting doesn't survive.
  static void GiveAKillTime() { std::this_thread::sleep_for(std::chrono::milliseconds(50)); }

 private:
  explicit KilledThread(const Work& work) : m_work(work) {}

  static unsigned int Routine(void* self) {
    auto& killed = *static_cast<KilledThread*>(self);
    killed.m_work(killed.m_bNow);
    return 0;
  }

  const Work& m_work;
  std::atomic<bool> m_bNow{false};
};

}  // namespace TestSupport

#endif
