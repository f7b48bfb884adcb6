// Threads that are made, started, stopped, restarted and dropped from everywhere at once.
#include <gtest/gtest.h>

#include <boost/weak_ptr.hpp>
#include <thread>

#include "Threads/ThreadTestSupport.h"

using namespace ThreadTests;

namespace {

#if defined(OXACORE_SOAK)
constexpr int iROUNDS = 20000;
#else
constexpr int iROUNDS = 500;
#endif
constexpr int iOWNERS = 4;

template <class Work>
void FromManyThreads(Work work) {
  std::vector<std::thread> owners;
  for (int owner = 0; owner != iOWNERS; ++owner) owners.emplace_back([work, owner] { work(owner); });
  for (std::thread& owner : owners) owner.join();
}

}  // namespace

TEST(ThreadStress, StartStopAndRestart) {
  std::atomic<int> begun{0};
  FromManyThreads([&begun](int) {
    const SharedThread thread = Thread::Create("");
    const SharedTask task = Do([&begun](TaskDirective& directive) {
      ++begun;
      directive.WaitForStopRequest();
      return 0;
    });
    for (int i = 0; i != iROUNDS; ++i) {
      ASSERT_TRUE(thread->Start(task, Elapse(30)));
      ASSERT_TRUE(thread->Stop(Elapse(30)));
      ASSERT_TRUE(thread->HasCompleted());
    }
  });
  EXPECT_EQ(iOWNERS * iROUNDS, begun);
}

TEST(ThreadStress, RestartAtTheVeryMomentOfTheEnd) {
  FromManyThreads([](int) {
    std::atomic<int> runs{0};
    SharedThread thread = Thread::Create("");
    const boost::weak_ptr<Thread> weak(thread);
    const SharedTask task = Do([&runs](TaskDirective&) { return ++runs; });
    for (int i = 0; i != iROUNDS; ++i) {
      ASSERT_TRUE(thread->Start(task));
      while (runs != i + 1 || thread->IsRunning()) std::this_thread::yield();
      ASSERT_TRUE(Eventually([&] { return thread->HasCompleted(); }));
    }
    thread.reset();
    EXPECT_TRUE(Eventually([&weak] { return weak.expired(); }));
  });
}

TEST(ThreadStress, DropWhatRuns) {
  std::atomic<int> runs{0};
  std::vector<boost::weak_ptr<Thread>> dropped;
  for (int i = 0; i != 50; ++i) {
    SharedThread thread = Thread::Create("");
    dropped.emplace_back(thread);
    ASSERT_TRUE(thread->Start(Do([&runs](TaskDirective& directive) {
      directive.TimedWaitForStopRequest(Elapse(1, Elapse::MilliSeconds));
      return ++runs;
    })));
  }
  for (const boost::weak_ptr<Thread>& weak : dropped)
    EXPECT_TRUE(Eventually([&weak] { return weak.expired(); }));
  EXPECT_EQ(50, runs);
}

TEST(ThreadStress, OneThreadAskedByMany) {
  const SharedThread thread = Thread::Create("");
  std::atomic<bool> end{false};
  Hearing hearing;
  thread->AddListener(hearing);
  std::thread asking([&] {
    FromManyThreads([&](int owner) {
      while (!end) {
        thread->IsAlive();
        thread->GetState();
        thread->GetLastError();
        thread->GetTask();
        thread->SetPriority(owner % 2 == 0 ? Thread::ePRIORITY_NORMAL : Thread::ePRIORITY_BELOW_NORMAL);
        thread->TimedWaitForState(Thread::eTHREAD_COMPLETED, Elapse(1, Elapse::MilliSeconds));
        thread->Stop();
      }
    });
  });
  for (int i = 0; i != iROUNDS / 5; ++i) {
    ASSERT_TRUE(thread->Start(i % 2 == 0 ? UntilStopped() : Do([](TaskDirective&) -> int { throw 1; })));
    ASSERT_TRUE(Eventually([&] { return hearing.Heard().size() == static_cast<std::size_t>(i + 1); }));
    ASSERT_TRUE(Eventually([&] { return !thread->IsRunning(); }));
  }
  end = true;
  asking.join();
  thread->RemoveListener(hearing);
}
