#include "ErrorHandling/AlertTraffic.h"

#include <Infrastructure/OxaCore/AlertManager.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "Support/LeakDetector.h"
#include "Threads/ThreadTestSupport.h"

namespace {

using namespace Oxa::Core;
using namespace ThreadTests;

// Keeps the first thread that raises until it is killed.
class Hanging : public AlertListener {
 public:
  Hanging() { AlertManager::Instance()->AddAlertListener(*this); }
  ~Hanging() override { AlertManager::Instance()->RemoveAlertListener(*this); }
  void ErrorRaised(Error&) override {
    if (m_bTold.exchange(true)) return;
    while (true) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }

  std::atomic<bool> m_bTold{false};
};

bool NobodyIsAwaited() { return TestSupport::MillisecondsOf(&AwaitAlertsInFlight) < 500; }

// A thread that raises and is kept by the listener.
SharedThread StartTelling(const Hanging& listener) {
  SharedThread thread = Thread::Create("Raising");
  EXPECT_TRUE(thread->Start(Do([](TaskDirective&) -> int {
    TestSupport::ForgiveLeaks();  // who is killed leaves its error behind
    OXA_RAISE_ERROR("Test", LogicError("hangs"));
    return 0;
  })));
  EXPECT_TRUE(Eventually([&] { return listener.m_bTold.load(); }));
  return thread;
}

}  // namespace

TEST(AlertTraffic, ForgetsAThreadThatIsKilledWhileItTells) {
  OXA_SKIP_WHERE_NOBODY_CAN_BE_KILLED();
  Hanging listener;
  const SharedThread thread = StartTelling(listener);
  EXPECT_FALSE(NobodyIsAwaited());
  ASSERT_TRUE(thread->Kill(Elapse(30)));
  EXPECT_TRUE(Eventually(&NobodyIsAwaited));
}

TEST(AlertTraffic, ForgetsNobodyElseWhenAThreadIsKilledThatTellsNothing) {
  OXA_SKIP_WHERE_NOBODY_CAN_BE_KILLED();
  const SharedThread silent = Thread::Create("Silent");
  ASSERT_TRUE(silent->Start(UntilStopped(), Elapse(30)));
  ASSERT_TRUE(silent->Kill(Elapse(30)));
  Hanging listener;
  const SharedThread thread = StartTelling(listener);
  EXPECT_FALSE(NobodyIsAwaited());
  ASSERT_TRUE(thread->Kill(Elapse(30)));
}
