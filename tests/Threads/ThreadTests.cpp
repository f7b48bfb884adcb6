#include <Infrastructure/OxaCore/CommonErrors.h>
#include <gtest/gtest.h>

#include <boost/weak_ptr.hpp>
#include <stdexcept>
#include <thread>
#include <type_traits>

#include "Threads/ThreadTestSupport.h"

using namespace ThreadTests;
using Oxa::Core::InvalidParameter;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

namespace {

using Lines = std::vector<std::string>;

bool EndsSoon(Thread& thread) {
  return thread.TimedWaitForState(Thread::eTHREAD_COMPLETED | Thread::eTHREAD_ERROR, Elapse(30));
}

// Waits for the end of the first run of a thread.
void RunToItsEnd(const SharedThread& thread, const SharedTask& task) {
  ASSERT_TRUE(thread->Start(task));
  ASSERT_TRUE(EndsSoon(*thread));
}

// What went to the debugger while `action` ran: failed assertions.
template <class Action>
std::string ToldBy(const Action& action) {
  CaptureStderr();
  action();
  return GetCapturedStderr();
}

int CountOf(const std::string& part, const std::string& text) {
  int count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

}  // namespace

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

TEST(Thread, LivesAsLongAsItRunsAndNoLonger) {
  SharedThread thread = Thread::Create("");
  const boost::weak_ptr<Thread> weak(thread);
  std::atomic<bool> end{false};
  thread->Start(Do([&end](TaskDirective&) { return Eventually([&end] { return end.load(); }) ? 0 : 1; }),
                Elapse(5));
  thread.reset();
  EXPECT_FALSE(weak.expired());
  end = true;
  if (const SharedThread again = weak.lock()) {
    EXPECT_TRUE(again->TimedWaitForState(Thread::eTHREAD_NOT_RUNNING, Elapse(5, Elapse::Seconds)));
  }
  EXPECT_TRUE(Eventually([&weak] { return weak.expired(); }));
}

TEST(Thread, MayBeDroppedRightAfterItsStart) {
  std::atomic<bool> ran{false};
  SharedThread thread = Thread::Create("");
  const boost::weak_ptr<Thread> weak(thread);
  thread->Start(Do([&ran](TaskDirective&) {
    ran = true;
    return 0;
  }));
  thread.reset();
  EXPECT_TRUE(Eventually([&weak] { return weak.expired(); }));
  EXPECT_TRUE(ran);
}

TEST(Thread, TellsListenersThatItCompletedAndNothingElse) {
  Hearing hearing;
  const SharedThread thread = Thread::Create("Completion Thread");
  thread->AddListener(hearing);
  RunToItsEnd(thread, Give(0));
  EXPECT_EQ(Lines{"complete Completion Thread"}, hearing.Heard());
  EXPECT_EQ(nullptr, thread->GetLastError());
}

// It has come to its end when it is told complete, and hasn't when its error is told.
TEST(Thread, IsTheCurrentOneForListenersAsLongAsItRuns) {
  class Asking : public Thread::Listener {
   public:
    void OnThreadComplete(SharedThread thread) override { m_iCurrent = thread->IsCurrentThread(); }
    void OnThreadError(SharedThread thread, Error&) override { m_iCurrent = thread->IsCurrentThread(); }
    std::atomic<int> m_iCurrent{-1};
  };
  Asking completed, failed;
  const SharedThread completing = Thread::Create(""), failing = Thread::Create("");
  completing->AddListener(completed);
  failing->AddListener(failed);
  RunToItsEnd(completing, Give(0));
  RunToItsEnd(failing, Do([](TaskDirective&) -> int { throw 1; }));
  EXPECT_EQ(0, completed.m_iCurrent);
  EXPECT_EQ(1, failed.m_iCurrent);
}

TEST(Thread, TellsListenersOfAnErrorAndNotOfACompletion) {
  Hearing hearing;
  const SharedThread thread = Thread::Create("Error Thread");
  thread->AddListener(hearing);
  RunToItsEnd(thread, Do([](TaskDirective&) {
                OXA_RAISE_ERROR("Acme", InvalidParameter("gain"));
                return 0;
              }));
  EXPECT_EQ(Lines{"error Error Thread: Invalid Parameter: gain = {Not Provided}"}, hearing.Heard());
  EXPECT_EQ(Thread::eTHREAD_ERROR, thread->GetState());
  ASSERT_NE(nullptr, thread->GetLastError());
  EXPECT_STREQ("Invalid Parameter: gain = {Not Provided}", thread->GetLastError()->what());
  EXPECT_EQ("Acme", thread->GetLastError()->GetData(Error::sLOG_NAME));
  EXPECT_EQ(-1, thread->GetResult());
}

TEST(Thread, WhateverIsNoErrorOfOursBecomesAnUnknownOne) {
  const SharedThread thread = Thread::Create("Odd");
  Hearing hearing;
  thread->AddListener(hearing);
  RunToItsEnd(thread, Do([](TaskDirective&) -> int { throw std::runtime_error("odd"); }));
  const std::string text = "Thread Odd terminated due to an unknown error thrown from Task Run()";
  EXPECT_EQ(text, thread->GetLastError()->what());
  EXPECT_EQ("Unknown", thread->GetLastError()->GetData(Error::sCATEGORY));
  EXPECT_EQ(Lines{"error Odd: " + text}, hearing.Heard());
  EXPECT_EQ(-1, thread->GetResult());
  EXPECT_TRUE(Eventually([&] { return thread->Start(Do([](TaskDirective&) -> int { throw 7; })); }));
  EXPECT_TRUE(Eventually([&] { return hearing.Heard().size() == 2; }));
  EXPECT_EQ("error Odd: " + text, hearing.Heard()[1]);
}

TEST(Thread, WithoutATaskItFailsAndTellsSoTwice) {
  Hearing hearing;
  const SharedThread thread = Thread::Create("Idle Hands");
  thread->AddListener(hearing);
  const std::string told = ToldBy([&] {
    EXPECT_TRUE(thread->Start(SharedTask()));
    EXPECT_TRUE(Eventually([&] { return hearing.Heard().size() == 2; }));
    EXPECT_TRUE(Eventually([&] { return thread.use_count() == 1; }));
  });
  const std::string line = "error Idle Hands: Attempted to run thread Idle Hands with a NULL Task pointer";
  EXPECT_EQ((Lines{line, line}), hearing.Heard());
  EXPECT_EQ(1, CountOf("Failed Assertion(p_spTask)", told)) << told;
  EXPECT_EQ(1, CountOf("Failed Assertion(m_eState != state)", told)) << told;
  EXPECT_EQ(Thread::eTHREAD_ERROR, thread->GetState());
  EXPECT_EQ("Oxa.Core.Thread", thread->GetLastError()->GetData(Error::sLOG_NAME));
  EXPECT_EQ(Thread::NullTaskPointer("").GetData(Error::sSEVERITY),
            thread->GetLastError()->GetData(Error::sSEVERITY));
  EXPECT_EQ(nullptr, thread->GetTask());
}

TEST(Thread, GivesTheResultOfItsTask) {
  const SharedThread thread = Thread::Create("");
  EXPECT_EQ(-1, thread->GetResult());
  RunToItsEnd(thread, Give(0));
  EXPECT_EQ(0, thread->GetResult());
  EXPECT_TRUE(thread->HasCompleted());
}

TEST(Thread, HasNoResultWhileItRuns) {
  const SharedThread thread = Thread::Create("");
  RunToItsEnd(thread, Give(7));
  ASSERT_EQ(7, thread->GetResult());
  std::atomic<bool> runs{false};
  thread->Start(Do([&runs](TaskDirective& directive) {
    runs = true;
    directive.WaitForStopRequest();
    return 8;
  }));
  ASSERT_TRUE(Eventually([&runs] { return runs.load(); }));
  EXPECT_EQ(-1, thread->GetResult());
  EXPECT_TRUE(thread->Stop(Elapse(30)));
  EXPECT_EQ(8, thread->GetResult());
}

TEST(Thread, StatesAreBits) {
  EXPECT_EQ(1, Thread::eTHREAD_IDLE);
  EXPECT_EQ(2, Thread::eTHREAD_RUNNING);
  EXPECT_EQ(4, Thread::eTHREAD_COMPLETED);
  EXPECT_EQ(8, Thread::eTHREAD_ERROR);
  EXPECT_EQ(13, Thread::eTHREAD_NOT_RUNNING);
}

TEST(Thread, ANewOneIsIdle) {
  const SharedThread thread = Thread::Create("");
  EXPECT_EQ(Thread::eTHREAD_IDLE, thread->GetState());
  EXPECT_TRUE(thread->IsState(Thread::eTHREAD_NOT_RUNNING));
  EXPECT_FALSE(thread->IsState(Thread::eTHREAD_RUNNING));
  EXPECT_FALSE(thread->IsRunning());
  EXPECT_FALSE(thread->HasBegun());
  EXPECT_FALSE(thread->HasCompleted());
  EXPECT_FALSE(thread->IsAlive());
  EXPECT_FALSE(thread->IsCurrentThread());
  EXPECT_EQ(0u, thread->GetThreadID());
  EXPECT_EQ(nullptr, thread->GetLastError());
  EXPECT_EQ(nullptr, thread->GetTask());
  EXPECT_EQ(Thread::ePRIORITY_NORMAL, thread->GetPriority());
  EXPECT_EQ(65536u, thread->GetStackSize());
  EXPECT_FALSE(thread->MustStop());
  EXPECT_TRUE(thread->KeepRunning());
}

TEST(Thread, KnowsItselfWhileItRuns) {
  const SharedThread thread = Thread::Create("");
  const SharedThread other = Thread::Create("");
  std::atomic<bool> isCurrent{false}, otherIs{true};
  std::atomic<unsigned long> id{0};
  RunToItsEnd(thread, Do([&, raw = thread.get()](TaskDirective& directive) {
                isCurrent = raw->IsCurrentThread() && raw->IsRunning() && raw->HasBegun() && raw->IsAlive() &&
                            &directive == static_cast<TaskDirective*>(raw);
                otherIs = other->IsCurrentThread();
                id = Thread::GetCurrentId();
                return 0;
              }));
  EXPECT_TRUE(isCurrent);
  EXPECT_FALSE(otherIs);
  EXPECT_NE(0u, id);
  EXPECT_EQ(id, thread->GetThreadID());
  EXPECT_NE(id, Thread::GetCurrentId());
}

TEST(Thread, ItsIdIsKnownWhenStartReturns) {
  const SharedThread thread = Thread::Create("");
  std::atomic<unsigned long> id{0};
  for (int i = 0; i != 200; ++i) {
    id = 0;
    ASSERT_TRUE(thread->Start(Do([&id](TaskDirective&) {
      id = Thread::GetCurrentId();
      return 0;
    })));
    const unsigned long told = thread->GetThreadID();
    ASSERT_TRUE(Eventually([&id] { return id != 0; }));
    ASSERT_EQ(id, told);
    ASSERT_TRUE(Eventually([&] { return thread->HasCompleted(); }));
  }
}

TEST(Thread, ATimedStartOfATaskThatIsOverIsFalse) {
  const SharedThread thread = Thread::Create("");
  std::atomic<int> runs{0};
  const SharedTask task = Do([&runs](TaskDirective&) { return ++runs; });
  int missed = 0;
  for (int i = 0; i != 2000 && missed == 0; ++i) {
    missed += !thread->Start(task, Elapse(20, Elapse::MilliSeconds));
    ASSERT_TRUE(Eventually([&] { return runs == i + 1 && thread->HasCompleted(); }));
  }
  EXPECT_GT(missed, 0);  // whether it is seen running is a matter of luck, but not for ever
}

TEST(Thread, WaitForGivesFalseAtTheTimeout) {
  const Running thread(UntilStopped());
  const Elapse timeout(50, Elapse::MilliSeconds);
  bool ended = true;
  EXPECT_GE(TestSupport::MillisecondsOf([&] { ended = thread->WaitFor(&timeout); }), 45);
  EXPECT_FALSE(ended);
}

TEST(Thread, WaitForWithoutALimitWaitsForTheEnd) {
  const SharedThread thread = Thread::Create("");
  thread->Start(Do([](TaskDirective& directive) {
                  directive.TimedWaitForStopRequest(Elapse(50, Elapse::MilliSeconds));
                  return 3;
                }),
                Elapse(30));
  EXPECT_TRUE(thread->WaitFor(nullptr));
  EXPECT_EQ(3, thread->GetResult());
}

TEST(Thread, ANegativeTimeoutIsOneLook) {
  const Running thread(UntilStopped());
  EXPECT_FALSE(thread->TimedWaitForState(Thread::eTHREAD_NOT_RUNNING, Elapse(-5)));
  EXPECT_TRUE(thread->TimedWaitForState(Thread::eTHREAD_RUNNING, Elapse(-5)));
  EXPECT_FALSE(thread->TryWaitForState(Thread::eTHREAD_NOT_RUNNING));
  EXPECT_TRUE(thread->TryWaitForState(Thread::eTHREAD_RUNNING | Thread::eTHREAD_ERROR));
}

TEST(Thread, WaitForAllPassesOverNullAndFailsWithTheFirstThatIsLate) {
  SharedThread threads[] = {Thread::Create(""), SharedThread(), Thread::Create("")};
  ASSERT_TRUE(threads[0]->Start(UntilStopped(), Elapse(30)));
  ASSERT_TRUE(threads[2]->Start(UntilStopped(), Elapse(30)));
  Elapse timeout(30, Elapse::MilliSeconds);
  EXPECT_FALSE(Thread::WaitForAll(threads, 3, &timeout));
  threads[0]->Stop();
  timeout = Elapse(100, Elapse::MilliSeconds);
  EXPECT_FALSE(Thread::WaitForAll(threads, 3, &timeout));
  threads[2]->Stop();
  timeout = Elapse(30);
  EXPECT_TRUE(Thread::WaitForAll(threads, 3, &timeout));
  EXPECT_TRUE(Thread::WaitForAll(threads, 3, nullptr));
}

TEST(Thread, WaitForAllAssertsThatThereIsSomething) {
  SharedThread thread;
  EXPECT_EQ(
      1, CountOf("Failed Assertion(0 != threads)", ToldBy([] { Thread::WaitForAll(nullptr, 1, nullptr); })));
  EXPECT_EQ(1, CountOf("Failed Assertion(count > 0)",
                       ToldBy([&] { EXPECT_TRUE(Thread::WaitForAll(&thread, 0, nullptr)); })));
}

TEST(Thread, CannotWaitForItself) {
  const SharedThread thread = Thread::Create("");
  const std::string told = ToldBy([&] {
    RunToItsEnd(thread, Do([raw = thread.get()](TaskDirective&) {
                  raw->TryWaitForState(Thread::eTHREAD_RUNNING);
                  return 0;
                }));
  });
  EXPECT_EQ(1, CountOf("Failed Assertion(!IsCurrentThread())", told)) << told;
}

TEST(Thread, AZeroStopDoesNotWaitAndSaysTrue) {
  std::atomic<bool> end{false};
  const Running thread(
      Do([&end](TaskDirective&) { return Eventually([&end] { return end.load(); }) ? 0 : 1; }));
  EXPECT_TRUE(thread->Stop());
  EXPECT_TRUE(thread->IsRunning());
  EXPECT_TRUE(thread->MustStop());
  EXPECT_FALSE(thread->Stop(Elapse(20, Elapse::MilliSeconds)));
  end = true;
}

TEST(Thread, AStopOfWhatDoesNotRunIsForgotten) {
  const SharedThread thread = Thread::Create("");
  EXPECT_TRUE(thread->Stop());
  EXPECT_TRUE(thread->Stop(Elapse(5)));
  EXPECT_FALSE(thread->MustStop());
}

TEST(Thread, AStopCanBeTakenBack) {
  std::atomic<bool> end{false};
  const Running thread(
      Do([&end](TaskDirective&) { return Eventually([&end] { return end.load(); }) ? 0 : 1; }));
  thread->Stop();
  EXPECT_TRUE(thread->MustStop());
  EXPECT_FALSE(thread->KeepRunning());
  thread->ResetStopFlag();
  EXPECT_FALSE(thread->MustStop());
  EXPECT_TRUE(thread->KeepRunning());
  end = true;
}

TEST(Thread, ATimedWaitForAStopTellsWhetherItCame) {
  std::atomic<int> missed{0};
  std::atomic<bool> came{false};
  const SharedThread thread = Thread::Create("");
  thread->Start(Do([&](TaskDirective& directive) {
                  missed += !directive.TimedWaitForStopRequest(Elapse(20, Elapse::MilliSeconds));
                  missed += !directive.TimedWaitForStopRequest(Elapse(-1));
                  came = directive.TimedWaitForStopRequest(Elapse(30));
                  return 0;
                }),
                Elapse(30));
  EXPECT_TRUE(Eventually([&] { return missed == 2; }));
  EXPECT_TRUE(thread->Stop(Elapse(30)));
  EXPECT_TRUE(came);
}

TEST(Thread, AStartForgetsStopAndErrorOfTheRunBefore) {
  const SharedThread thread = Thread::Create("");
  RunToItsEnd(thread, Do([raw = thread.get()](TaskDirective&) -> int {
                raw->Stop();
                throw 1;
              }));
  ASSERT_NE(nullptr, thread->GetLastError());
  std::atomic<int> seen{-1};
  ASSERT_TRUE(thread->Start(Do([&seen, raw = thread.get()](TaskDirective& directive) {
    seen = directive.MustStop() || raw->GetLastError() != nullptr;
    return 0;
  })));
  ASSERT_TRUE(Eventually([&seen] { return seen != -1; }));
  EXPECT_EQ(0, seen);
  EXPECT_TRUE(Eventually([&] { return thread->HasCompleted(); }));
  EXPECT_EQ(nullptr, thread->GetLastError());
}

TEST(Thread, AListenerMayStartTheThreadAnewFromItsLastStep) {
  class Restarting : public Thread::Listener {
   public:
    explicit Restarting(SharedTask task) : m_task(std::move(task)) {}
    void OnThreadComplete(SharedThread thread) override {
      if (++m_iHeard < 50) thread->Start(m_task);
    }
    SharedTask m_task;
    std::atomic<int> m_iHeard{0};
  };
  std::atomic<int> runs{0};
  Restarting listener(Do([&runs](TaskDirective&) { return ++runs; }));
  SharedThread thread = Thread::Create("");
  const boost::weak_ptr<Thread> weak(thread);
  thread->AddListener(listener);
  thread->Start(listener.m_task);
  thread.reset();  // the keep-alive of each run must outlast the end of the run before
  EXPECT_TRUE(Eventually([&] { return listener.m_iHeard == 50; }));
  EXPECT_TRUE(Eventually([&weak] { return weak.expired(); }));
  EXPECT_EQ(50, runs);
}

TEST(Thread, ARunningOneIsNotToBeStartedAgain) {
  const SharedThread thread = Thread::Create("");
  std::atomic<int> runs{0};
  const SharedTask task = Do([&runs](TaskDirective& directive) {
    ++runs;
    directive.WaitForStopRequest();
    return 0;
  });
  ASSERT_TRUE(thread->Start(task, Elapse(30)));
  ASSERT_TRUE(Eventually([&runs] { return runs == 1; }));
  const std::string told = ToldBy([&] {
    thread->Start(task);
    EXPECT_TRUE(Eventually([&runs] { return runs == 2; }));
    thread->Stop();
    EXPECT_TRUE(Eventually([&thread] { return thread.use_count() == 1; }));
  });
  EXPECT_LE(1, CountOf("Failed Assertion(IsState(eTHREAD_NOT_RUNNING))", told)) << told;
}

// A task that runs on although it shouldn't isn't destroyed under its thread.
TEST(Thread, TheTaskThatAWrongStartReplacesLivesOn) {
  const SharedThread thread = Thread::Create("");
  SharedTask task = UntilStopped();
  const boost::weak_ptr<Task> replaced(task);
  ASSERT_TRUE(thread->Start(task, Elapse(30)));
  task.reset();
  ToldBy([&] {
    thread->Start(UntilStopped());
    EXPECT_FALSE(replaced.expired());
    EXPECT_TRUE(Eventually([&thread] {
      thread->Stop();
      return thread.use_count() == 1;
    }));
  });
  EXPECT_FALSE(replaced.expired());
}

TEST(Thread, AnErrorThatANewRunReplacesStaysWithItsReader) {
  const SharedThread thread = Thread::Create("");
  RunToItsEnd(thread, Do([](TaskDirective&) -> int { throw 1; }));
  const boost::shared_ptr<Error> error = thread->GetLastError();
  const std::string text = error->what();
  ASSERT_TRUE(thread->Start(Give(0)));
  ASSERT_TRUE(Eventually([&] { return thread->HasCompleted(); }));
  EXPECT_EQ(text, error->what());
}

TEST(Thread, ItsDestructionTakesTheOneLookAtItsUsers) {
  SharedThread thread = Thread::Create("");
  EXPECT_GE(TestSupport::MillisecondsOf([&thread] { thread.reset(); }), 99);
}

TEST(TaskDirective, BareItHasNoWaits) {
  class Bare : public TaskDirective {
    bool MustStop() override { return true; }
  } bare;
  EXPECT_FALSE(bare.KeepRunning());
  const auto refused = [&bare](auto wait) {
    try {
      wait(bare);
    } catch (TaskDirective::UnimplementedInterface& error) {
      EXPECT_EQ("Oxa.Core.TaskDirective", error.GetData(Error::sLOG_NAME));
      EXPECT_EQ(Error::eERROR, error.GetSeverity());
      return std::string(error.what());
    }
    return std::string();
  };
  EXPECT_EQ("TaskDirective::WaitForStopRequest called but wasn't implemented by the TaskDirective subclass",
            refused([](TaskDirective& directive) { directive.WaitForStopRequest(); }));
  EXPECT_EQ(
      "TaskDirective::TimedWaitForStopRequest called but wasn't implemented by the TaskDirective subclass",
      refused([](TaskDirective& directive) { directive.TimedWaitForStopRequest(Elapse(1)); }));
}

TEST(ThreadErrors, TextsCategoriesAndSeverities) {
  Thread::NullTaskPointer noTask("T");
  Thread::OSThreadTermination gone("T");
  Thread::ThreadKilled killed("T");
  EXPECT_STREQ("Attempted to run thread T with a NULL Task pointer", noTask.what());
  EXPECT_STREQ("Thread named T terminated by OS before thread ended", gone.what());
  EXPECT_STREQ("Thread named T killed by call to Thread::Kill()", killed.what());
  EXPECT_EQ("Logic", noTask.GetData(Error::sCATEGORY));
  EXPECT_EQ("OperatingSystem", gone.GetData(Error::sCATEGORY));
  EXPECT_EQ("Logic", killed.GetData(Error::sCATEGORY));
  for (const Error* error :
       {static_cast<Error*>(&noTask), static_cast<Error*>(&gone), static_cast<Error*>(&killed)})
    EXPECT_EQ(Error::eERROR, error->GetSeverity());
}

TEST(ThreadShape, BasesAndCopies) {
  EXPECT_TRUE((std::is_base_of_v<Oxa::Core::RefCountedObject, Thread>));
  EXPECT_TRUE((std::is_base_of_v<TaskDirective, Thread>));
  EXPECT_TRUE((std::is_base_of_v<Oxa::Core::NotificationListener, Thread::Listener>));
  EXPECT_FALSE(std::is_copy_constructible_v<Thread>);
  EXPECT_FALSE(std::is_default_constructible_v<Thread>);
}
