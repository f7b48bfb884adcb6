// Fails every single allocation on the road of an alert, one after the other.
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/Warning.h>
#include <Infrastructure/OxaCore/XMLFormatter.h>
#include <Infrastructure/OxaCore/XMLWriter.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <functional>
#include <new>
#include <sstream>

#include "Support/AlertCounter.h"

namespace {

// Of the one thread of these tests; -1 fails nothing. The thread of the log manager has enough.
thread_local long s_lAllocationsLeft = -1;
thread_local bool s_bFailed = false;
std::atomic<long> s_lLive{0};  // of all threads: what one allocates another one may give back

void* Allocate(std::size_t size) {
  if (s_lAllocationsLeft == 0 && !s_bFailed) {
    s_bFailed = true;
    return nullptr;
  }
  if (s_lAllocationsLeft > 0) --s_lAllocationsLeft;
  void* const memory = std::malloc(size == 0 ? 1 : size);
  if (memory != nullptr) ++s_lLive;
  return memory;
}

void Free(void* memory) {
  if (memory == nullptr) return;
  --s_lLive;
  std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) {
  void* const memory = Allocate(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* memory) noexcept { Free(memory); }
void operator delete(void* memory, std::size_t) noexcept { Free(memory); }

namespace {

using namespace Oxa::Core;

class ProbeGone : public ErrorClass<ProbeGone, HardwareError> {
 public:
  explicit ProbeGone(int channel)
      : ErrorClass(AlertMessage("The probe on channel %1% is gone and will not come back", channel)) {}
};

class ProbeNoisy : public Warning {
 public:
  explicit ProbeNoisy(int channel)
      : Warning(AlertMessage("The probe on channel %1% is noisy and may fail soon", channel)) {}
};

void ForwardedRaise() {
  try {
    OXA_RAISE_ERROR("Oxa.Test.OutOfMemory", ProbeGone(3));
  }
  OXA_FORWARD_ERRORS_WITH_INFO(OXA_INFO("StepOfTheMeasurement", "calibration of the channel"))
}

// Whether the road was taken to its end; what leaves it but an Error or std::bad_alloc fails the test.
bool TakeRoad(const std::function<void()>& road) {
  try {
    road();
    return true;
  } catch (const Error&) {
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  } catch (...) {
    ADD_FAILURE() << "something else left the road";
    return false;
  }
}

struct Outcome {
  int m_iRuns = 0;
  int m_iBroken = 0;  // ended by std::bad_alloc
};

// Runs `road` with its first, its second, … allocation failing until there is none left to fail.
Outcome FailEachAllocation(const std::function<void()>& road) {
  constexpr int iENOUGH = 10000;
  Outcome outcome;
  for (; outcome.m_iRuns < iENOUGH; ++outcome.m_iRuns) {
    s_bFailed = false;
    s_lAllocationsLeft = outcome.m_iRuns;
    const bool whole = TakeRoad(road);
    s_lAllocationsLeft = -1;
    if (!whole) ++outcome.m_iBroken;
    if (!s_bFailed) break;
  }
  EXPECT_LT(outcome.m_iRuns, iENOUGH);
  return outcome;
}

class OutOfMemory : public testing::Test {
 protected:
  TestSupport::AlertCounter m_listener;
};

TEST_F(OutOfMemory, RoadOfARaiseSurvivesEveryFailedAllocation) {
  ASSERT_TRUE(TakeRoad(ForwardedRaise));  // pays for what is made once
  testing::internal::CaptureStderr();
  const Outcome outcome = FailEachAllocation(ForwardedRaise);
  EXPECT_GT(outcome.m_iRuns, 20);
  EXPECT_EQ(m_listener.m_lRaised, m_listener.m_lHandled);
  testing::internal::GetCapturedStderr();

  const long raised = m_listener.m_lRaised;
  for (int i = 0; i < 2 * g_iMAX_ERROR_RECURSION_DEPTH; ++i) EXPECT_THROW(ForwardedRaise(), ProbeGone);
  EXPECT_EQ(raised + 2 * g_iMAX_ERROR_RECURSION_DEPTH, m_listener.m_lRaised);
  EXPECT_EQ(m_listener.m_lRaised, m_listener.m_lHandled);
}

TEST_F(OutOfMemory, RoadOfAWarningSurvivesEveryFailedAllocation) {
  const auto warn = [] { OXA_RAISE_WARNING("Oxa.Test.OutOfMemory", ProbeNoisy(3)); };
  warn();
  testing::internal::CaptureStderr();
  const Outcome outcome = FailEachAllocation(warn);
  EXPECT_GT(outcome.m_iRuns, 10);
  testing::internal::GetCapturedStderr();
  const long warnings = m_listener.m_lWarnings;
  warn();
  EXPECT_EQ(warnings + 1, m_listener.m_lWarnings);
}

// What is kept on purpose changes a few times: the thread's last error, and what is learnt of the places on the stack,
// and forgotten when memory is short. But a leak grows each time, and never comes back to where it was.
TEST_F(OutOfMemory, RoadOfARaiseLeaksNothing) {
  ShutdownOxaCore();  // the log keeps entries on purpose
  TakeRoad(ForwardedRaise);
  const auto liveAfterFailure = [](long failAt) {
    s_bFailed = false;
    s_lAllocationsLeft = failAt;
    TakeRoad(ForwardedRaise);
    s_lAllocationsLeft = -1;
    return s_lLive.load();
  };
  testing::internal::CaptureStderr();
  for (long failAt = 0; failAt < 400; ++failAt) {
    std::array<long, 8> live = {};
    bool cameBack = false;
    for (std::size_t round = 0; round < live.size() && !cameBack; ++round) {
      live[round] = liveAfterFailure(failAt);
      cameBack = std::find(live.begin(), live.begin() + round, live[round]) != live.begin() + round;
    }
    EXPECT_TRUE(cameBack) << live[0] << " grew to " << live.back() << " with allocation " << failAt
                          << " failing";
  }
  testing::internal::GetCapturedStderr();
}

// An alert whose table could not be made: the very first allocation of its constructor fails.
AlertInfo AlertWithoutTable() {
  s_bFailed = false;
  s_lAllocationsLeft = 0;
  AlertInfo alert;
  s_lAllocationsLeft = -1;
  return alert;
}

TEST_F(OutOfMemory, AlertWithoutTableAnswersEverything) {
  AlertInfo alert = AlertWithoutTable();
  EXPECT_EQ("", alert.GetData(AlertInfo::sMESSAGE));
  EXPECT_FALSE(alert.DataExists(AlertInfo::sMESSAGE));
  EXPECT_FALSE(alert.SetData("Key", "value"));
  EXPECT_EQ(-1, alert.GetSeverity());
  alert.PushContext(CodeContext("a.cpp", 1, "", "", ""));
  EXPECT_FALSE(alert.GetUnwindStack());
  AlertData all{{"Old", "gone"}};
  EXPECT_FALSE(alert.GetAllData(all));
  EXPECT_EQ((AlertData{{"Message", "No error data due to memory allocation failure"}}), all);
}

TEST_F(OutOfMemory, AlertWithoutTableIsStillWellFormedXml) {
  AlertInfo alert = AlertWithoutTable();
  XMLWriter writer(XMLFormatter::CreateCompact());
  std::ostringstream out;
  alert.ToXML(writer, out, "");
  EXPECT_EQ("<Alert><Message>No error data due to memory allocation failure</Message></Alert>", out.str());
}

}  // namespace
