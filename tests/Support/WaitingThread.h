// Threads that are seen to wait, and children that are forked off meanwhile.
#ifndef OXACORE_TESTS_SUPPORT_WAITINGTHREAD_H
#define OXACORE_TESTS_SUPPORT_WAITINGTHREAD_H

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "Support/Eventually.h"
#include "Support/ThreadState.h"

namespace TestSupport {

/// Comes back when the thread sleeps.
inline void AwaitSleepOf(unsigned long id) {
  EXPECT_TRUE(Eventually([id] { return ThreadSleeps(id); }));
}

/// A thread that is in a wait, or about to be, until it is told to end.
class Waiting {
 public:
  template <class Wait>
  explicit Waiting(const Wait& wait)
      : m_thread([this, wait] {
          m_id = static_cast<unsigned long>(::gettid());
          wait();
        }) {
    while (m_id == 0) std::this_thread::yield();
    AwaitSleepOf(m_id);
  }
  ~Waiting() { m_thread.join(); }

  unsigned long Id() const { return m_id; }

 private:
  std::atomic<unsigned long> m_id{0};
  std::thread m_thread;
};

/// Whether `check` holds in a child, within its ten seconds.
template <class Check>
void ExpectInChild(const Check& check) {
  constexpr int asExpected = 7;
  const pid_t child = ::fork();
  if (child == 0) {
    ::alarm(10);
    ::_exit(check() ? asExpected : 1);
  }
  int status = 0;
  ASSERT_EQ(child, ::waitpid(child, &status, 0));
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(asExpected, WEXITSTATUS(status));
}

}  // namespace TestSupport

#endif
