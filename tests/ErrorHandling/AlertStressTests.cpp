// Many threads raise, forward and handle errors while listeners come and go.
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/CommonErrors.h>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include "ErrorHandling/TestAlerts.h"

namespace {

using namespace AlertTests;

#if defined(OXACORE_SOAK)
constexpr long lERRORS = 200000;
#elif defined(__SANITIZE_THREAD__)
constexpr long lERRORS = 1000;  // each walks a stack, and all of it is watched
#else
constexpr long lERRORS = 5000;  // each walks a stack, which sanitizers make dear
#endif
constexpr int iTHREADS = 8;

// Counts what it hears, without a lock of its own.
class Counter : public AlertListener {
 public:
  void ErrorRaised(Error&) override { ++m_lRaised; }
  void ErrorHandled(Error&) override { ++m_lHandled; }
  void WarningRaised(Warning&) override { ++m_lWarnings; }

  std::atomic<long> m_lRaised{0};
  std::atomic<long> m_lHandled{0};
  std::atomic<long> m_lWarnings{0};
};

class Accepting : public ErrorHandler {
 public:
  bool Handle(Error&) override {
    ++m_lHandled;
    return true;
  }
  long m_lHandled = 0;  // the handler's own lock guards it
};

struct StressTag {};
using StressError = TagError<StressTag>;
using StressWarning = TagWarning<StressTag>;

struct InPlaceTag {};
using InPlaceError = TagError<InPlaceTag>;

void RaiseBelow(int levels) {
  if (levels == 0) {
    OXA_RAISE_ERROR("Test.Stress", StressError("stress"));
    return;
  }
  try {
    RaiseBelow(levels - 1);
  }
  OXA_FORWARD_ERRORS
}

void RaiseForwardAndHandle(long count) {
  for (long i = 0; i < count; ++i) {
    try {
      RaiseBelow(static_cast<int>(i % 4));
      ADD_FAILURE();
    } catch (StressError& error) {
      EXPECT_EQ(static_cast<std::size_t>(i % 4 + 1), error.GetUnwindStack()->size());
    }
  }
}

// Adds and removes passing listeners until told to end; they outlive all raises.
void Churn(std::vector<std::unique_ptr<Counter>>& passing, const std::atomic<bool>& end) {
  for (std::size_t i = 0; !end; ++i) {
    Counter& counter = *passing[i % passing.size()];
    AlertManager::Instance()->AddAlertListener(counter);
    AlertManager::Instance()->RemoveAlertListener(*passing[(i + 3) % passing.size()]);
    std::this_thread::yield();
  }
}

TEST(AlertStress, EveryRaisedErrorIsHandledOnce) {
  Counter permanent;
  AlertManager::Instance()->AddAlertListener(permanent);
  std::vector<std::unique_ptr<Counter>> passing;
  for (int i = 0; i < 8; ++i) passing.push_back(std::make_unique<Counter>());
  std::atomic<bool> end{false};
  std::thread churn([&] { Churn(passing, end); });
  std::vector<std::thread> threads;
  for (int i = 0; i < iTHREADS; ++i) threads.emplace_back([] { RaiseForwardAndHandle(lERRORS / iTHREADS); });
  for (std::thread& thread : threads) thread.join();
  end = true;
  churn.join();
  EXPECT_EQ(lERRORS, permanent.m_lRaised);
  EXPECT_EQ(lERRORS, permanent.m_lHandled);
  EXPECT_EQ(0, permanent.m_lWarnings);
  EXPECT_EQ(static_cast<unsigned long>(lERRORS),
            FindError(ErrorRecord(StressError()).GetClass()).GetRaisedCount());
}

TEST(AlertStress, WarningsAndInPlaceErrorsAreAllCounted) {
  constexpr long lEACH = 500;
  Counter permanent;
  AlertManager* const manager = AlertManager::Instance();
  manager->AddAlertListener(permanent);
  manager->SetMaxWarnings(typeid(StressWarning).name(), 1000, true);
  const boost::shared_ptr<Accepting> handler(new Accepting);
  manager->AddErrorHandler(typeid(InPlaceError).name(), handler);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([] {
      for (long raise = 0; raise < lEACH; ++raise) {
        OXA_RAISE_WARNING("Test.Stress", StressWarning());
        OXA_RAISE_ERROR_IN_PLACE("Test.Stress", InPlaceError());
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  const WarningRecord record = FindWarning(WarningRecord(StressWarning()).GetClass());
  EXPECT_EQ(1000U, record.GetWarningCount());
  EXPECT_EQ(1000U, record.GetSilencedCount());
  EXPECT_EQ(1000U, record.GetRaisedCount());
  EXPECT_EQ(1000, permanent.m_lWarnings);
  EXPECT_EQ(4 * lEACH, handler->m_lHandled);
  EXPECT_EQ(4 * lEACH, permanent.m_lRaised);
  EXPECT_EQ(4 * lEACH, permanent.m_lHandled);
  manager->RemoveErrorHandler(typeid(InPlaceError).name(), handler);
}

}  // namespace
