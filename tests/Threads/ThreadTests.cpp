#include <gtest/gtest.h>

#include <boost/weak_ptr.hpp>

#include "Threads/ThreadTestSupport.h"

using namespace ThreadTests;

TEST(Thread, ATaskThatWaitsForAStopIsStartedStoppedAndStartedAgain) {
  const SharedThread thread = Thread::Create("");
  const SharedTask task = UntilStopped();
  EXPECT_TRUE(thread->Start(task));
  EXPECT_TRUE(thread->TimedWaitForState(Thread::eTHREAD_RUNNING, Elapse(2)));
  EXPECT_FALSE(thread->IsState(Thread::eTHREAD_ERROR));
  EXPECT_TRUE(thread->Stop(Elapse(5)));
  EXPECT_TRUE(thread->Start(task, Elapse(5)));
  EXPECT_TRUE(thread->IsState(Thread::eTHREAD_RUNNING));
  EXPECT_TRUE(thread->Stop(Elapse(5)));
}

TEST(Thread, AKilledThreadHasFailed) {
  const SharedThread thread = Thread::Create("Victim");
  ASSERT_TRUE(thread->Start(Do([](TaskDirective&) {
                              while (true) {
                              }
                              return 0;
                            }),
                            Elapse(5)));
  EXPECT_TRUE(thread->Kill(Elapse(5, Elapse::Seconds)));
  EXPECT_FALSE(thread->IsRunning());
  EXPECT_TRUE(thread->IsState(Thread::eTHREAD_ERROR));
  EXPECT_STREQ("Thread named Victim killed by call to Thread::Kill()", thread->GetLastError()->what());
}

TEST(Thread, LivesAsLongAsItRunsAndNoLonger) {
  SharedThread thread = Thread::Create("");
  const boost::weak_ptr<Thread> weak(thread);
  std::atomic<bool> end{false};
  thread->Start(Do([&end](TaskDirective&) { return Eventually([&end] { return end.load(); }) ? 0 : 1; }),
                Elapse(5));
  thread.reset();
  EXPECT_FALSE(weak.expired());
  end = true;
  EXPECT_TRUE(Eventually([&weak] { return weak.expired(); }));
}
