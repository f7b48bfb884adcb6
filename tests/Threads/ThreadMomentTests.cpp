// What holds at the very moments at which a thread changes its state, and at those of its waits and its death.
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <thread>
#include <vector>

#include "Threads/ThreadTestSupport.h"

using namespace ThreadTests;
using Oxa::Core::InvalidParameter;

namespace {

// What went to the debugger while `action` ran: failed assertions.
template <class Action>
std::string ToldBy(const Action& action) {
  testing::internal::CaptureStderr();
  action();
  return testing::internal::GetCapturedStderr();
}

int CountOf(const std::string& part, const std::string& text) {
  int count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

// Who waits at the state is the thread's own affair, and its count the lower half of a word; an explicit instantiation
// is the one way past access control.
std::uint32_t WaitersOf(const Thread& thread);

template <Oxa::Core::Condition Thread::*Monitor, std::atomic<std::uint64_t> Oxa::Core::Condition::*Waiters>
struct LookAtWaiters {
  friend std::uint32_t WaitersOf(const Thread& thread) {
    return static_cast<std::uint32_t>((thread.*Monitor.*Waiters).load());
  }
};
template struct LookAtWaiters<&Thread::m_stateCondition, &Oxa::Core::Condition::m_waiters>;

// Notes the state of the thread that it hears of, and whether others get at its stop meanwhile.
class Looking : public Thread::Listener {
 public:
  ~Looking() override {
    if (m_other.joinable()) m_other.join();
  }
  void OnThreadComplete(SharedThread thread) override { Look(thread); }
  void OnThreadError(SharedThread thread, Error&) override { Look(thread); }

  std::atomic<int> m_iState{0};
  std::atomic<bool> m_bOthersWait{false};
  std::atomic<bool> m_bHeard{false};

 private:
  void Look(const SharedThread& thread) {
    m_iState = thread->GetState();
    std::atomic<bool> begun{false};
    m_other = std::thread([this, thread, &begun] {
      begun = true;
      thread->MustStop();
      m_bThrough = true;
    });
    while (!begun) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    m_bOthersWait = !m_bThrough;
    m_bHeard = true;
  }

  std::atomic<bool> m_bThrough{false};
  std::thread m_other;
};

}  // namespace

TEST(ThreadMoments, ACompletionIsToldUnderTheStateThatHasChangedAlready) {
  Looking looking;
  const SharedThread thread = Thread::Create("");
  thread->AddListener(looking);
  ASSERT_TRUE(thread->Start(Give(0)));
  ASSERT_TRUE(Eventually([&] { return looking.m_bHeard && thread.use_count() == 1; }));
  EXPECT_EQ(Thread::eTHREAD_COMPLETED, looking.m_iState);
  EXPECT_TRUE(looking.m_bOthersWait);
}

// The limit runs out between the change of the state and the wake.
TEST(ThreadMoments, AWaitThatRunsOutLooksOnceMore) {
  class Slow : public Thread::Listener {
   public:
    void OnThreadComplete(SharedThread) override {
      std::this_thread::sleep_for(std::chrono::milliseconds(1000));
    }
  };
  bool ended = false;
  for (int attempt = 0; attempt != 5 && !ended; ++attempt) {  // a busy machine may be too late for the limit
    Slow slow;
    std::atomic<bool> end{false};
    const SharedThread thread = Thread::Create("");
    thread->AddListener(slow);
    ASSERT_TRUE(thread->Start(
        Do([&end](TaskDirective&) { return Eventually([&end] { return end.load(); }) ? 0 : 1; }),
        Elapse(30)));
    std::thread waiter([&] {
      ended = thread->TimedWaitForState(Thread::eTHREAD_NOT_RUNNING, Elapse(500, Elapse::MilliSeconds));
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));  // being early only makes the test weaker
    end = true;
    waiter.join();
    ASSERT_TRUE(Eventually([&] { return thread.use_count() == 1; }));
  }
  EXPECT_TRUE(ended);
}

TEST(ThreadMoments, AnErrorIsToldUnderNoLockAndBeforeTheStateChanges) {
  bool othersWait = true;
  for (int attempt = 0; attempt != 10 && othersWait; ++attempt) {  // a busy machine may take longer
    Looking looking;
    const SharedThread thread = Thread::Create("");
    thread->AddListener(looking);
    ASSERT_TRUE(thread->Start(Do([](TaskDirective&) -> int { throw 1; })));
    ASSERT_TRUE(Eventually([&] { return looking.m_bHeard && thread.use_count() == 1; }));
    EXPECT_EQ(Thread::eTHREAD_RUNNING, looking.m_iState);
    EXPECT_EQ(Thread::eTHREAD_ERROR, thread->GetState());
    othersWait = looking.m_bOthersWait;
  }
  EXPECT_FALSE(othersWait);
}

TEST(ThreadMoments, EachKindOfErrorIsToldBeforeTheStateChanges) {
  class Noting : public Thread::Listener {
   public:
    void OnThreadError(SharedThread thread, Error&) override { m_iState = thread->GetState(); }
    std::atomic<int> m_iState{0};
  };
  const auto stateWhenToldOf = [](const SharedTask& task, const std::function<void(Thread&)>& end) {
    Noting noting;
    const SharedThread thread = Thread::Create("");
    thread->AddListener(noting);
    EXPECT_TRUE(thread->Start(task));
    EXPECT_TRUE(Eventually([&] {
      if (thread->IsRunning()) end(*thread);
      return thread->IsState(Thread::eTHREAD_ERROR) && thread.use_count() == 1;
    }));
    return noting.m_iState.load();
  };
  const auto nothing = [](Thread&) {};
  EXPECT_EQ(Thread::eTHREAD_RUNNING, stateWhenToldOf(Do([](TaskDirective&) {
                                                       OXA_RAISE_ERROR("Acme", InvalidParameter("gain"));
                                                       return 0;
                                                     }),
                                                     nothing));
  EXPECT_EQ(Thread::eTHREAD_RUNNING, stateWhenToldOf(Do([](TaskDirective&) -> int { pthread_exit(nullptr); }),
                                                     [](Thread& thread) { thread.IsAlive(); }));
#if !defined(__SANITIZE_THREAD__)
  EXPECT_EQ(Thread::eTHREAD_RUNNING,
            stateWhenToldOf(UntilStopped(), [](Thread& thread) { thread.Kill(Elapse(5)); }));
#endif
}

TEST(ThreadMoments, EachWaitForItselfFailsItsAssertion) {
  const SharedThread thread = Thread::Create("");
  const std::string told = ToldBy([&] {
    ASSERT_TRUE(thread->Start(Do([raw = thread.get()](TaskDirective&) {
      raw->WaitForState(Thread::eTHREAD_RUNNING);
      raw->TimedWaitForState(Thread::eTHREAD_RUNNING, Elapse(30));
      return 0;
    })));
    ASSERT_TRUE(Eventually([&] { return thread->HasCompleted(); }));
  });
  EXPECT_EQ(4, CountOf("Failed Assertion(!IsCurrentThread())", told))
      << told;  // each looks with TryWaitForState
}

// One who waits for something else stands before them in the same line.
TEST(ThreadMoments, AnEndWakesAllThatWaitForIt) {
  constexpr Elapse limit(20, Elapse::Seconds);
  for (unsigned int count = 1; count <= 3; ++count) {
    std::atomic<bool> over{false};
    std::atomic<unsigned int> late{0};
    const SharedThread thread = Thread::Create("Awaited");
    const SharedTask task =
        Do([&](TaskDirective&) { return Eventually([&] { return over.load(); }) ? 0 : 1; });
    EXPECT_TRUE(thread->Start(task, limit));  // before that it counts as one that doesn't run
    std::thread forStop([&] { EXPECT_TRUE(thread->TimedWaitForStopRequest(Elapse(60))); });
    EXPECT_TRUE(Eventually([&] { return WaitersOf(*thread) == 1; }));
    std::vector<std::thread> waiters;
    for (unsigned int waiter = 0; waiter < count; ++waiter)
      waiters.emplace_back([&] {
        if (TestSupport::MillisecondsOf([&] { EXPECT_TRUE(thread->WaitFor(&limit)); }) > 15000) ++late;
      });
    EXPECT_TRUE(Eventually([&] { return WaitersOf(*thread) == 1 + count; }));
    over = true;
    for (std::thread& waiter : waiters) waiter.join();
    EXPECT_EQ(0U, late);
    EXPECT_TRUE(thread->Start(UntilStopped(), limit) && thread->Stop(limit));
    forStop.join();
  }
}

// The first one ends shortly before the limit, the other one never: one limit for all, or the sum of both.
TEST(ThreadMoments, AWaitForAllHasOneLimit) {
  double milliseconds = 0;
  for (int attempt = 0; attempt != 5; ++attempt) {  // a machine that is busy may need another one
    const Running late(UntilStopped());
    SharedThread threads[] = {Thread::Create(""), late.Get()};
    ASSERT_TRUE(threads[0]->Start(Do([](TaskDirective& directive) {
                                    directive.TimedWaitForStopRequest(Elapse(400, Elapse::MilliSeconds));
                                    return 0;
                                  }),
                                  Elapse(30)));
    Elapse timeout(500, Elapse::MilliSeconds);
    bool all = true;
    milliseconds = TestSupport::MillisecondsOf([&] { all = Thread::WaitForAll(threads, 2, &timeout); });
    EXPECT_FALSE(all);
    EXPECT_GE(milliseconds, 490);
    threads[0]->WaitFor(nullptr);
    if (milliseconds < 800) break;
  }
  EXPECT_LT(milliseconds, 800);
}

TEST(ThreadMoments, ADeathWaitsTwoSecondsForItsUsersAndThenAsserts) {
  SharedThread thread = Thread::Create("");
  thread->AddRef();
  double milliseconds = 0;
  const std::string told =
      ToldBy([&] { milliseconds = TestSupport::MillisecondsOf([&thread] { thread.reset(); }); });
  EXPECT_GE(milliseconds, 1990);
  EXPECT_EQ(1, CountOf("Failed Assertion(ok)", told)) << told;
}

TEST(ThreadMoments, ADeathEndsWithTheLastUser) {
  SharedThread thread = Thread::Create("");
  Thread* const raw = thread.get();
  raw->AddRef();
  std::thread user([raw] {
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    raw->Release();
  });
  EXPECT_EQ("", ToldBy([&thread] { thread.reset(); }));
  user.join();
}
