// A thread that is to be killed while it gets a provider, or gives it back: what all threads need, like the heap, must
// not be left in the middle of its work.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>

#include "Platform/NativeThread.h"
#include "Platform/Secrets.h"
#include "Support/Allocations.h"
#include "Support/Eventually.h"
#include "Threads/ThreadTestSupport.h"

namespace {

using namespace Oxa::Core::Platform;
using TestSupport::Eventually;
using EKillEnd = NativeThread::EKillEnd;

std::atomic<bool> s_bIn{false};
std::atomic<bool> s_bGoOn{false};

void Stay() {
  s_bIn = true;
  Eventually([] { return s_bGoOn.load(); });
}

unsigned int StayAtTheHeap(void* work) {
  TestSupport::ThreadAllocations().m_pOnUse = &Stay;
  (*static_cast<std::function<void()>*>(work))();
  TestSupport::ThreadAllocations().m_pOnUse = nullptr;
  return 0;
}

/// What becomes within that time of a kill that comes where `work` first uses the heap.
EKillEnd KillAtTheHeap(std::function<void()> work, int milliseconds) {
  s_bIn = false;
  s_bGoOn = false;
  const auto thread = NativeThread::Create();
  unsigned long id = 0;
  EXPECT_EQ(0, NativeThread::Start(thread, 1 << 20, &StayAtTheHeap, &work, id));
  EXPECT_TRUE(Eventually([] { return s_bIn.load(); }));
  const EKillEnd end = thread->Kill(0, Deadline::InMilliseconds(milliseconds)).m_eEnd;
  s_bGoOn = true;
  unsigned int code = 0;
  EXPECT_TRUE(Eventually([&] { return thread->HasEnded(code); }));
  return end;
}

TEST(KilledAcquirer, GetsAndGivesBackItsProviderFirst) {
  OXA_SKIP_WHERE_NOBODY_CAN_BE_KILLED();
  EXPECT_EQ(EKillEnd::eKILLED, KillAtTheHeap([] { Stay(); }, 10000));
  HCRYPTPROV provider = 0;
  EXPECT_EQ(EKillEnd::eFAILED,
            KillAtTheHeap([&] { AcquireProvider(nullptr, g_pDEFAULT_PROVIDER, 1, false, provider); }, 500));
  ASSERT_NE(HCRYPTPROV{0}, provider);
  EXPECT_EQ(EKillEnd::eFAILED, KillAtTheHeap([&] { ReleaseProvider(provider); }, 500));
}

}  // namespace
