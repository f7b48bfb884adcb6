// Threads that end behind the library's back.
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <boost/weak_ptr.hpp>
#include <thread>

#include "Threads/ThreadTestSupport.h"

using namespace ThreadTests;
using Oxa::Core::LogicError;

namespace {

void ExpectFoundGone(const SharedThread& thread) {
  Hearing hearing;
  thread->AddListener(hearing);
  EXPECT_TRUE(Eventually([&] { return !thread->IsAlive(); }));
  const std::string text = "Thread named " + thread->GetName() + " terminated by OS before thread ended";
  EXPECT_EQ(Thread::eTHREAD_ERROR, thread->GetState());
  EXPECT_EQ(text, thread->GetLastError()->what());
  EXPECT_EQ(std::vector<std::string>{"error " + thread->GetName() + ": " + text}, hearing.Heard());
  EXPECT_FALSE(thread->IsAlive());
  EXPECT_EQ(1u, hearing.Heard().size());
}

SharedTask Exiting() {
  return Do([](TaskDirective&) -> int { pthread_exit(nullptr); });
}

}  // namespace

TEST(ThreadGone, ATaskThatExitsItsThread) {
  const SharedThread thread = Thread::Create("Exiting");
  ASSERT_TRUE(thread->Start(Exiting()));
  ASSERT_TRUE(thread->TimedWaitForState(Thread::eTHREAD_RUNNING, Elapse(30)));
  ExpectFoundGone(thread);
  EXPECT_TRUE(Eventually([&] { return thread.use_count() == 1; }));
  EXPECT_EQ(0, thread->GetRefCount());
  EXPECT_EQ(-1, thread->GetResult());
}

TEST(ThreadGone, ACancelledThread) {
  const SharedThread thread = Thread::Create("Cancelled");
  std::atomic<pthread_t> self{};
  ASSERT_TRUE(thread->Start(Do([&self](TaskDirective&) {
    self = pthread_self();
    while (true) {
      pthread_testcancel();  // the thread sanitizer loses its way where a call that it wraps is left by a cancellation
      std::this_thread::yield();
    }
    return 0;
  })));
  ASSERT_TRUE(Eventually([&self] { return self.load() != pthread_t{}; }));
  ASSERT_EQ(0, pthread_cancel(self));
  ExpectFoundGone(thread);
  EXPECT_TRUE(Eventually([&] { return thread.use_count() == 1; }));
}

// The last reference goes with its end, and nobody may get a new one.
TEST(ThreadGone, OneThatDiesOfItsEndIsHandedToNobody) {
  class Surviving : public Thread::Listener {
   public:
    void OnThreadComplete(SharedThread) override { ++m_iTold; }
    void OnThreadError(SharedThread, Error&) override { ++m_iTold; }
    std::atomic<int> m_iTold{0};
    std::atomic<bool> m_bSourceGone{false};

   protected:
    void NotificationSourceIsRemoved(const Oxa::Core::NotificationSupport&) override { m_bSourceGone = true; }
  };
  Surviving surviving;
  std::atomic<bool> alone{false};
  SharedThread thread = Thread::Create("Dying");
  thread->AddListener(surviving);
  ASSERT_TRUE(thread->Start(Do([&alone](TaskDirective&) -> int {
    Eventually([&alone] { return alone.load(); });
    pthread_exit(nullptr);
  })));
  thread.reset();
  alone = true;
  EXPECT_TRUE(Eventually([&] { return surviving.m_bSourceGone.load(); }));
  EXPECT_EQ(0, surviving.m_iTold);
}

// What ended the task is being handled then: whatever the cancellation met would take it for an exception.
TEST(ThreadGone, ACancellationWhileAFailureIsToldComesTooLate) {
  class Cancellable : public Thread::Listener {
   public:
    void OnThreadError(SharedThread, Error&) override {
      ++m_iTold;
      pthread_testcancel();
    }
    std::atomic<int> m_iTold{0};
  };
  for (const bool known : {true, false}) {
    const SharedThread thread = Thread::Create("Cancelled late");
    Cancellable cancellable;
    thread->AddListener(cancellable);
    ASSERT_TRUE(thread->Start(Do([known](TaskDirective&) -> int {
      pthread_cancel(pthread_self());
      if (known) throw LogicError("dark");
      throw 1;
    })));
    ASSERT_TRUE(thread->TimedWaitForState(Thread::eTHREAD_ERROR, Elapse(30)));
    EXPECT_STREQ(
        known ? "dark" : "Thread Cancelled late terminated due to an unknown error thrown from Task Run()",
        thread->GetLastError()->what());
    EXPECT_EQ(1, cancellable.m_iTold);
    EXPECT_TRUE(Eventually([&] { return thread.use_count() == 1; }));
  }
}

TEST(ThreadGone, StopFindsItAndItCanBeStartedAgain) {
  const SharedThread thread = Thread::Create("");
  for (int i = 0; i != 20; ++i) {
    ASSERT_TRUE(thread->Start(Exiting()));
    ASSERT_TRUE(Eventually([&] {
      thread->Stop();
      return thread->GetState() == Thread::eTHREAD_ERROR && thread.use_count() == 1;
    }));
  }
  ASSERT_TRUE(thread->Start(Give(1)));
  EXPECT_TRUE(Eventually([&] { return thread->HasCompleted(); }));
}

TEST(ThreadGone, OneThatNobodyHoldsGoesWithItsThread) {
  SharedThread thread = Thread::Create("");
  const boost::weak_ptr<Thread> weak(thread);
  thread->Start(Exiting());
  thread.reset();
  EXPECT_TRUE(Eventually([&weak] { return weak.expired(); }));
}

// Such a thread keeps itself for ever, and what it has with it.
TEST(ThreadGone, AThreadThatTheSystemTookWithoutUnwinding) {
  OXA_SKIP_WHERE_NOBODY_CAN_BE_KILLED();
  static pthread_key_t s_key;
  static SharedThread& s_thread = *new SharedThread(Thread::Create("Vanished"));
  ASSERT_EQ(0, pthread_key_create(&s_key, nullptr));
  ASSERT_TRUE(s_thread->Start(Do([](TaskDirective&) {
    pthread_setspecific(s_key, &s_key);
    ::syscall(SYS_exit, 0);
    return 0;
  })));
  ASSERT_TRUE(s_thread->TimedWaitForState(Thread::eTHREAD_RUNNING, Elapse(30)));
  ExpectFoundGone(s_thread);
  for (int round = 0; round != 3; ++round) {  // the ends of the first ones give memory back to the next
    std::atomic<int> asked{0}, inherited{0};
    const SharedTask task = Do([&](TaskDirective& directive) {
      inherited += pthread_getspecific(s_key) != nullptr;
      ++asked;
      directive.WaitForStopRequest();
      return 0;
    });
    const Running next[] = {Running(task), Running(task), Running(task)};
    EXPECT_TRUE(Eventually([&asked, &next] { return asked == static_cast<int>(std::size(next)); }));
    EXPECT_EQ(0, inherited);
  }
}
