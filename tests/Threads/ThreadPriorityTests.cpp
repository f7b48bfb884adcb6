// What the system is asked for each priority, whatever it then allows this process.
#include <errno.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/resource.h>

#include <string>

#include "Threads/ThreadTestSupport.h"

using namespace ThreadTests;

namespace {

// The last requests; the starter of a thread makes them.
std::string s_policy;
std::string s_nice;

std::string NameOf(int policy) {
  return policy == SCHED_OTHER ? "other" : policy == SCHED_IDLE ? "idle" : policy == SCHED_RR ? "rr" : "?";
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int sched_setscheduler(pid_t, int policy,
                                                                         const sched_param* param) noexcept {
  s_policy = NameOf(policy) + " " + std::to_string(param->sched_priority);
  return 0;
}

extern "C" __attribute__((visibility("default"))) int setpriority(__priority_which_t, id_t,
                                                                  int prio) noexcept {
  s_nice = std::to_string(prio);
  errno = EACCES;
  return -1;
}

namespace {

class Priorities : public testing::Test {
 protected:
  Priorities() { Forget(); }

  static void Forget() {
    s_policy.clear();
    s_nice.clear();
  }

  std::string AskedFor(int priority) {
    Forget();
    m_thread->SetPriority(static_cast<Thread::EPriority>(priority));
    EXPECT_EQ(priority, m_thread->GetPriority());
    return s_nice.empty() ? s_policy : s_policy + ", nice " + s_nice;
  }

  const Running m_thread{UntilStopped()};
};

struct Row {
  int m_iPriority;
  const char* m_pAsked;
};

constexpr Row rows[] = {{-1000, "idle 0"},
                        {-1, "idle 0"},
                        {0, "idle 0"},
                        {1, "other 0, nice 10"},
                        {2, "other 0, nice 10"},
                        {3, "other 0, nice 10"},
                        {4, "other 0, nice 5"},
                        {5, "other 0, nice 0"},
                        {6, "other 0, nice -5"},
                        {7, "other 0, nice -10"},
                        {8, "other 0, nice -10"},
                        {9, "other 0, nice -10"},
                        {10, "rr 1"},
                        {11, "rr 1"},
                        {1000, "rr 1"}};

}  // namespace

TEST_F(Priorities, EachIsAskedForAsTheTableSays) {
  for (const Row& row : rows) EXPECT_EQ(row.m_pAsked, AskedFor(row.m_iPriority)) << row.m_iPriority;
}

TEST_F(Priorities, NamesAreNumbers) {
  EXPECT_EQ(0, Thread::ePRIORITY_IDLE);
  EXPECT_EQ(3, Thread::ePRIORITY_LOWEST);
  EXPECT_EQ(4, Thread::ePRIORITY_BELOW_NORMAL);
  EXPECT_EQ(5, Thread::ePRIORITY_NORMAL);
  EXPECT_EQ(6, Thread::ePRIORITY_ABOVE_NORMAL);
  EXPECT_EQ(7, Thread::ePRIORITY_HIGHEST);
  EXPECT_EQ(10, Thread::ePRIORITY_TIME_CRITICAL);
}

TEST_F(Priorities, StartAsksOnlyForWhatIsNotNormal) {
  const SharedThread thread = Thread::Create("");
  ASSERT_TRUE(thread->Start(UntilStopped(), Elapse(30)));
  EXPECT_EQ("", s_policy + s_nice);
  ASSERT_TRUE(thread->Stop(Elapse(30)));
  thread->SetPriority(Thread::ePRIORITY_HIGHEST);
  EXPECT_EQ("", s_policy + s_nice);  // it doesn't run
  ASSERT_TRUE(thread->Start(UntilStopped(), Elapse(30)));
  EXPECT_EQ("-10", s_nice);
  EXPECT_TRUE(thread->Stop(Elapse(30)));
}
