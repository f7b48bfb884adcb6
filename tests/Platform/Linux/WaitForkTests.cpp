// In a forked child nothing is handed to threads that stayed behind in the parent, and nobody waits for them.
#include <Infrastructure/OxaCore/Semaphore.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <string>
#include <thread>

#include "Platform/Threads.h"
#include "Support/ThreadSanitizer.h"
#include "Support/ThreadState.h"

namespace {

using namespace Oxa::Core::Platform;

constexpr int iAS_EXPECTED = 7;

/// A thread that is in a wait, or about to be, until it is told to end.
class Waiting {
 public:
  template <class Wait>
  explicit Waiting(const Wait& wait)
      : m_thread([this, wait] {
          m_id = CurrentThreadId();
          wait();
        }) {
    while (m_id == 0) std::this_thread::yield();
    AwaitSleep();
  }
  ~Waiting() { m_thread.join(); }

 private:
  void AwaitSleep() const {
    while (!TestSupport::ThreadSleeps(m_id)) std::this_thread::yield();
  }

  std::atomic<unsigned long> m_id{0};
  std::thread m_thread;
};

/// Whether `check` holds in a child, within its ten seconds.
template <class Check>
void ExpectInChild(const Check& check) {
  const pid_t child = ::fork();
  if (child == 0) {
    ::alarm(10);
    ::_exit(check() ? iAS_EXPECTED : 1);
  }
  int status = 0;
  ASSERT_EQ(child, ::waitpid(child, &status, 0));
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(iAS_EXPECTED, WEXITSTATUS(status));
}

TEST(WaitFork, APostIsForThoseThatAreInTheChild) {
  OXA_SKIP_UNDER_THREAD_SANITIZER("it starts no threads in children of several threads");
  int code = 0;
  CountingSemaphore* const semaphore = CountingSemaphore::Create(0, code);
  {
    const Waiting one([=] { semaphore->Wait(Deadline::Never()); });
    const Waiting other([=] { semaphore->Wait(Deadline::Never()); });
    ExpectInChild([=] { return semaphore->Post(1) == 0 && semaphore->Value() == 1 && semaphore->TryTake(); });
    ExpectInChild([=] {
      bool taken = false;
      std::thread waiter([&] { taken = semaphore->Wait(Deadline::Never()).m_eEnd == EWaitEnd::eSIGNALLED; });
      const bool posted = semaphore->Post(1) == 0;
      waiter.join();
      return posted && taken && semaphore->Value() == 0;
    });
    semaphore->Post(2);
  }
  CountingSemaphore::Destroy(semaphore);
}

TEST(WaitFork, AnEventIsForThoseThatAreInTheChild) {
  OXA_SKIP_UNDER_THREAD_SANITIZER("it starts no threads in children of several threads");
  Event* const event = Event::Create();
  {
    const Waiting waiting([=] { event->Wait(Deadline::Never()); });
    ExpectInChild([=] {
      event->Set();
      return event->Wait(Deadline::InMilliseconds(0)).m_eEnd == EWaitEnd::eSIGNALLED;
    });
    event->Set();
  }
  Event::Destroy(event);
}

TEST(WaitFork, AGateInTheChildEndsWithoutTheParentsThreads) {
  OXA_SKIP_UNDER_THREAD_SANITIZER("it starts no threads in children of several threads");
  auto* const gate = new Oxa::Core::MultiWait;
  {
    const Waiting one([=] { gate->wait(nullptr); });
    const Waiting other([=] { gate->wait(nullptr); });
    ExpectInChild([=] {
      delete gate;
      return true;
    });
    ExpectInChild([=] {
      std::atomic<bool> through{false};
      {
        const Waiting own([&] { through = gate->wait(nullptr); });
        delete gate;
      }
      return through.load();
    });
    gate->releaseWaiters();
  }
  delete gate;
}

}  // namespace
