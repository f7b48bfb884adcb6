// Names, priorities and the stack-size rule, the last by what the seam is handed.
#include <Infrastructure/OxaCore/System.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <set>

#include "Platform/NativeThread.h"
#include "Threads/ThreadTestSupport.h"

using namespace ThreadTests;
namespace Platform = Oxa::Core::Platform;

namespace {

std::string Numbered(int number) {
  char name[32];
  std::snprintf(name, sizeof name, "OxaThread %04d", number);
  return name;
}

// Every Thread that is destroyed takes 100 ms, so these are kept to the end of the process.
Thread& Undying() {
  static auto& kept = *new std::vector<SharedThread>;
  kept.push_back(Thread::Create(""));
  return *kept.back();
}

template <class Ask>
auto AskOn(const SharedThread& thread, Ask ask) {
  std::atomic<bool> asked{false};
  decltype(ask()) answer{};
  EXPECT_TRUE(thread->Start(Do([&](TaskDirective&) {
    answer = ask();
    asked = true;
    return 0;
  })));
  EXPECT_TRUE(Eventually([&] { return asked && thread->HasCompleted(); }));
  return answer;
}

std::uint32_t AskedStackSize(const SharedThread& thread) {
  return AskOn(thread, [] { return Platform::NativeThread::OwnStackSize(); });
}

class StackSizes : public testing::Test {
 protected:
  ~StackSizes() override {
    Thread::SetStackSizeLimits(65536, 1048576);
    Thread::SetStackSizeTransform(0, 1);
    Thread::SetDefaultStackSize(65536);
  }

  SharedThread m_spThread = Thread::Create("");
};

struct Scheduling {
  int m_iPolicy = -1;
  int m_iNice = 99;
};

Scheduling OwnScheduling() {
  return {sched_getscheduler(0), getpriority(PRIO_PROCESS, static_cast<id_t>(gettid()))};
}

}  // namespace

TEST(ThreadNames, CountFromZeroToTenThousandAndBegin) {
  EXPECT_EQ("OxaThread 0000", Numbered(0));
  std::string name = Undying().GetName();
  int first = 0;
  ASSERT_EQ(1, std::sscanf(name.c_str(), "OxaThread %d", &first)) << name;
  for (int i = 1; i <= 10002; ++i) {
    const int expected = (first + i) % 10001;
    ASSERT_EQ(Numbered(expected), Undying().GetName());
  }
}

TEST(ThreadNames, AGivenOneReplacesTheDefault) {
  const SharedThread thread = Thread::Create("Station");
  EXPECT_EQ("Station", thread->GetName());
  thread->SetName("Probe");
  EXPECT_EQ("Probe", thread->GetName());
  thread->SetName("");
  EXPECT_EQ("", thread->GetName());
}

// Alerts name the threads that have named themselves.
TEST(ThreadNames, AreNotThoseThatAlertsTell) {
  const SharedThread thread = Thread::Create("Told to nobody");
  const auto toldName = [] {
    std::string name = "none";
    Oxa::Core::System::Instance()->GetCurrentThreadName(name);
    return name;
  };
  EXPECT_EQ("", AskOn(thread, toldName));
}

TEST(ThreadNames, TheSystemKnowsThem) {
  const SharedThread thread = Thread::Create("A name of many letters");
  const std::string told = AskOn(thread, [] {
    char name[16] = {};
    pthread_getname_np(pthread_self(), name, sizeof name);
    return std::string(name);
  });
  EXPECT_EQ("A name of many ", told);
}

TEST_F(StackSizes, WhatTheSeamIsHandedLiesWithinTheLimits) {
  EXPECT_EQ(65536u, AskedStackSize(m_spThread));
  m_spThread->SetStackSize(1);
  EXPECT_EQ(1u, m_spThread->GetStackSize());
  EXPECT_EQ(65536u, AskedStackSize(m_spThread));
  m_spThread->SetStackSize(16777216);
  EXPECT_EQ(16777216u, m_spThread->GetStackSize());
  EXPECT_EQ(1048576u, AskedStackSize(m_spThread));
  m_spThread->SetStackSize(100000);
  EXPECT_EQ(100000u, AskedStackSize(m_spThread));
}

TEST_F(StackSizes, AreMultipliedAndShifted) {
  Thread::SetStackSizeTransform(4096, 3);
  m_spThread->SetStackSize(70000);
  EXPECT_EQ(3u * 70000u + 4096u, AskedStackSize(m_spThread));
}

TEST_F(StackSizes, AreCountedIn32Bits) {
  Thread::SetStackSizeTransform(0xFFFFFFFF, 65536);  // 65536 * 65536 is 0 there, and the offset is -1
  Thread::SetStackSizeLimits(65537, 65537);
  EXPECT_EQ(65535u, AskedStackSize(m_spThread));
}

TEST_F(StackSizes, LimitsThatCrossFailAnAssertionAndCount) {
  testing::internal::CaptureStderr();
  Thread::SetStackSizeLimits(2, 1);
  EXPECT_NE(std::string::npos,
            testing::internal::GetCapturedStderr().find("Failed Assertion(minSize <= maxSize)"));
  EXPECT_EQ(1u, AskedStackSize(m_spThread));
}

TEST_F(StackSizes, TheDefaultIsForThreadsMadeLater) {
  Thread::SetDefaultStackSize(131072);
  EXPECT_EQ(65536u, m_spThread->GetStackSize());
  const SharedThread later = Thread::Create("");
  EXPECT_EQ(131072u, later->GetStackSize());
  EXPECT_EQ(131072u, AskedStackSize(later));
}

TEST_F(StackSizes, TheSystemGivesAMegabyteAtLeast) {
  const std::size_t size = AskOn(m_spThread, [] {
    pthread_attr_t attributes;
    std::size_t given = 0;
    pthread_getattr_np(pthread_self(), &attributes);
    pthread_attr_getstacksize(&attributes, &given);
    pthread_attr_destroy(&attributes);
    return given;
  });
  EXPECT_GE(size, 1048576u);
}

// An unprivileged process may only go down, and one that may go up does.
TEST(ThreadPriorities, TheTable) {
  const SharedThread thread = Thread::Create("");
  const int lowest = OwnScheduling().m_iNice;  // a process that was told to be nice can't go back
  const struct {
    int m_iPriority;
    int m_iNice;  // of the platform's -2 to 2
  } rows[] = {{5, 0}, {4, 5}, {3, 10}, {2, 10}, {1, 10}};
  for (const auto& row : rows) {
    thread->SetPriority(static_cast<Thread::EPriority>(row.m_iPriority));
    EXPECT_EQ(row.m_iPriority, thread->GetPriority());
    // The first steps of a thread may come before its priority.
    const int nice = std::max(lowest, row.m_iNice);
    EXPECT_TRUE(AskOn(thread, [nice] {
      return Eventually([nice] { return OwnScheduling().m_iNice == nice; });
    })) << row.m_iPriority;
  }
  for (const int idle : {0, -1, -100}) {
    thread->SetPriority(static_cast<Thread::EPriority>(idle));
    EXPECT_EQ(idle, thread->GetPriority());
    EXPECT_TRUE(AskOn(thread, [] {
      return Eventually([] { return OwnScheduling().m_iPolicy == SCHED_IDLE; });
    })) << idle;
  }
}

TEST(ThreadPriorities, WhatTheSystemRefusesIsRemembered) {
  const SharedThread thread = Thread::Create("");
  for (const int priority : {6, 7, 8, 9, 10, 11, 1000}) {
    thread->SetPriority(static_cast<Thread::EPriority>(priority));
    EXPECT_EQ(priority, thread->GetPriority());
    const Scheduling scheduling = AskOn(thread, [] { return OwnScheduling(); });
    EXPECT_LE(scheduling.m_iNice, 0);
    EXPECT_TRUE(scheduling.m_iPolicy == SCHED_OTHER || scheduling.m_iPolicy == SCHED_RR);
  }
}

TEST(ThreadPriorities, OfARunningThreadCountAtOnce) {
  std::atomic<bool> lowered{false};
  const SharedThread thread = Thread::Create("");
  ASSERT_TRUE(thread->Start(Do([&lowered](TaskDirective&) {
                              lowered = Eventually([] { return OwnScheduling().m_iNice == 5; });
                              return 0;
                            }),
                            Elapse(30)));
  thread->SetPriority(Thread::ePRIORITY_BELOW_NORMAL);
  EXPECT_TRUE(thread->WaitFor(nullptr));
  EXPECT_TRUE(lowered);
}
