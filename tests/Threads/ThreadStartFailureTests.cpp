// Starts for which the system has no thread, and how threads tell the log of their ends.
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <dlfcn.h>
#include <errno.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <boost/weak_ptr.hpp>

#include "ErrorHandling/Hooks.h"
#include "Support/RestoreHooks.h"
#include "Threads/ThreadTestSupport.h"

using namespace ThreadTests;
using Oxa::Core::TheHooks;

namespace {

std::atomic<bool> s_bRefuse{false};

}  // namespace

extern "C" __attribute__((visibility("default"))) int pthread_create(pthread_t* thread,
                                                                     const pthread_attr_t* attr,
                                                                     void* (*start_routine)(void*),
                                                                     void* arg) {
  static const auto next = reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
  return s_bRefuse ? EAGAIN : next(thread, attr, start_routine, arg);
}

namespace {

class FailingStart : public testing::Test {
 protected:
  FailingStart() { s_bRefuse = true; }
  ~FailingStart() override { s_bRefuse = false; }
};

// What went to the log.
std::mutex s_mutex;
std::vector<std::string> s_lines;

void Keep(const std::string& line) {
  const std::lock_guard<std::mutex> lock(s_mutex);
  s_lines.push_back(line);
}

std::vector<std::string> Logged() {
  const std::lock_guard<std::mutex> lock(s_mutex);
  return s_lines;
}

class ThreadLog : public testing::Test {
 protected:
  ThreadLog() : m_before(TheHooks()) {
    TheHooks().logThreadError = [](const std::string& text) { Keep(text); };
    TheHooks().logErrorRaised = [](Error& error) {
      Keep(error.GetData(Error::sLOG_NAME) + ": " + error.what());
    };
    s_lines.clear();
  }
  ~ThreadLog() override { TestSupport::RestoreHooks(m_before); }

  void RunToItsEnd(const SharedTask& task) {
    m_spThread->Start(task);
    m_spThread->TimedWaitForState(Thread::eTHREAD_COMPLETED | Thread::eTHREAD_ERROR, Elapse(30));
    EXPECT_TRUE(Eventually([this] { return m_spThread.use_count() == 1; }));
  }

  SharedThread m_spThread = Thread::Create("T");

 private:
  const Oxa::Core::Hooks m_before;
};

using Lines = std::vector<std::string>;

}  // namespace

TEST_F(FailingStart, IsAnErrorStateWithoutAnErrorOrANotification) {
  SharedThread thread = Thread::Create("");
  Hearing hearing;
  thread->AddListener(hearing);
  EXPECT_FALSE(thread->Start(Give(0)));
  EXPECT_EQ(Thread::eTHREAD_ERROR, thread->GetState());
  EXPECT_EQ(nullptr, thread->GetLastError());
  EXPECT_EQ(0u, thread->GetThreadID());
  EXPECT_TRUE(hearing.Heard().empty());
  EXPECT_EQ(1, thread.use_count());
  EXPECT_FALSE(thread->IsAlive());
  EXPECT_TRUE(thread->Kill(Elapse(1)));
}

TEST_F(FailingStart, FailsWithATimeoutAsWell) {
  EXPECT_FALSE(Thread::Create("")->Start(Give(0), Elapse(30)));
}

TEST_F(FailingStart, ASecondOneFindsTheStateAsItIs) {
  const SharedThread thread = Thread::Create("");
  EXPECT_FALSE(thread->Start(Give(0)));
  testing::internal::CaptureStderr();
  EXPECT_FALSE(thread->Start(Give(0)));
  EXPECT_NE(std::string::npos,
            testing::internal::GetCapturedStderr().find("Failed Assertion(m_eState != state)"));
}

TEST_F(FailingStart, LeavesTheThreadReadyForABetterTime) {
  const SharedThread thread = Thread::Create("");
  EXPECT_FALSE(thread->Start(Give(0)));
  s_bRefuse = false;
  EXPECT_TRUE(thread->Start(Give(5)));
  EXPECT_TRUE(Eventually([&] { return thread->HasCompleted() && thread.use_count() == 1; }));
  EXPECT_EQ(5, thread->GetResult());
}

TEST_F(ThreadLog, HearsOfTheErrorOfATask) {
  RunToItsEnd(Do([](TaskDirective&) {
    OXA_RAISE_ERROR("Acme", Oxa::Core::InvalidParameter("gain"));
    return 0;
  }));
  EXPECT_EQ(Lines{"Thread T terminated due to error:\nInvalid Parameter: gain = {Not Provided}"}, Logged());
}

TEST_F(ThreadLog, HearsOfWhateverElseLeavesATask) {
  RunToItsEnd(Do([](TaskDirective&) -> int { throw 1; }));
  EXPECT_EQ(Lines{"Oxa.Core.Thread: Thread T terminated due to an unknown error thrown from Task Run()"},
            Logged());
}

TEST_F(ThreadLog, HearsOfAMissingTask) {
  RunToItsEnd(SharedTask());
  EXPECT_EQ(Lines{"Thread T terminated due to error thrown from Run():\n"
                  "Attempted to run thread T with a NULL Task pointer"},
            Logged());
}

TEST_F(ThreadLog, HearsOfWhatGoesWrongBesideTheTask) {
  TheHooks().logThreadError = [](const std::string&) { throw 1; };
  RunToItsEnd(Do([](TaskDirective&) {
    OXA_RAISE_ERROR("Acme", Oxa::Core::InvalidParameter("gain"));
    return 0;
  }));
  const std::string text = "Thread T terminated due to an unknown error thrown from Thread Run()";
  EXPECT_EQ(Lines{"Oxa.Core.Thread: " + text}, Logged());
  EXPECT_EQ(text, m_spThread->GetLastError()->what());
}

TEST_F(ThreadLog, HearsOfAKill) {
  OXA_SKIP_WHERE_NOBODY_CAN_BE_KILLED();
  m_spThread->Start(UntilStopped(), Elapse(30));
  EXPECT_TRUE(m_spThread->Kill(Elapse(5)));
  EXPECT_EQ(Lines{"Oxa.Core.Thread: Thread named T killed by call to Thread::Kill()"}, Logged());
}

TEST_F(ThreadLog, HearsNothingOfANormalEnd) {
  RunToItsEnd(Give(0));
  EXPECT_TRUE(Logged().empty());
}
