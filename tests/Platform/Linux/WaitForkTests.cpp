// In a forked child nothing is handed to threads that stayed behind in the parent, and nobody waits for them.
#include <Infrastructure/OxaCore/Semaphore.h>
#include <gtest/gtest.h>

#include <thread>

#include "Platform/Threads.h"
#include "Support/ThreadSanitizer.h"
#include "Support/WaitingThread.h"

namespace {

using namespace Oxa::Core::Platform;
using TestSupport::ExpectInChild;
using TestSupport::Waiting;

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
    ExpectInChild([=] {
      const Waiting waiter([=] { semaphore->Wait(Deadline::Never()); });
      return semaphore->Post(1) == 0;  // and the waiter ends
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
    ExpectInChild([=] {
      const Waiting waiterInChild([=] { event->Wait(Deadline::Never()); });
      event->Set();
      return true;  // once the waiter has ended
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
