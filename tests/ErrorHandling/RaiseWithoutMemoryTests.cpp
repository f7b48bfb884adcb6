// Every single allocation on the road of a raise is failed once.
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/CommonErrors.h>

#include <gtest/gtest.h>

#include <new>

#include "ErrorHandling/TestAlerts.h"
#include "Support/AlertCounter.h"
#include "Support/Allocations.h"

namespace {

using namespace AlertTests;
using TestSupport::AlertCounter;
using TestSupport::FailAllocation;

void RaiseThroughTwoLevels() {
  try {
    try {
      OXA_RAISE_ERROR("Test.Memory", InvalidParameter("p_iLong", "a value that is long enough for the heap"));
    }
    OXA_FORWARD_ERRORS
  }
  OXA_FORWARD_ERRORS
}

// Runs `act` with one allocation after the other failing, until one run needs fewer. Gives the number of runs.
template <class Act>
unsigned long FailEachAllocation(Act act) {
  testing::internal::CaptureStderr();
  unsigned long number = 0;
  for (bool happened = true; happened;) {
    const FailAllocation failing(++number);
    act();
    happened = failing.Happened();
  }
  testing::internal::GetCapturedStderr();
  return number;
}

TEST(RaiseWithoutMemory, OnlyErrorsOrBadAllocLeaveAndNothingIsLost) {
  AlertCounter counter;
  int others = 0;
  const unsigned long runs = FailEachAllocation([&others] {
    try {
      RaiseThroughTwoLevels();
      ++others;
    } catch (Error&) {
    } catch (std::bad_alloc&) {
    } catch (...) {
      ++others;
    }
  });
  EXPECT_GT(runs, 20U);
  EXPECT_EQ(0, others);
  EXPECT_EQ(counter.m_lRaised, counter.m_lHandled);
  EXPECT_LE(counter.m_lRaised, static_cast<int>(runs) * 2);
  counter.m_lRaised = counter.m_lHandled = counter.m_lWarnings = 0;
  EXPECT_THROW(RaiseThroughTwoLevels(), InvalidParameter);
  EXPECT_EQ(1, counter.m_lRaised);
  EXPECT_EQ(1, counter.m_lHandled);
  EXPECT_EQ(0, counter.m_lWarnings);
}

TEST(RaiseWithoutMemory, FirstRaiseOfAThreadAndOfAClassIsNoDifferent) {
  struct Tag {};
  AlertCounter counter;
  int others = 0;
  FailEachAllocation([&others] {
    try {
      OXA_RAISE_ERROR("Test.Memory", TagError<Tag>("a message that is long enough for the heap"));
      ++others;
    } catch (Error&) {
    } catch (std::bad_alloc&) {
    } catch (...) {
      ++others;
    }
  });
  EXPECT_EQ(0, others);
  EXPECT_EQ(counter.m_lRaised, counter.m_lHandled);
}

TEST(RaiseWithoutMemory, SettledErrorsStaySettledOrLeaveAsAnError) {
  class Accepting : public ErrorHandler {
   public:
    bool Handle(Error&) override { return true; }
  };
  struct Tag {};
  const boost::shared_ptr<ErrorHandler> handler(new Accepting);
  AlertManager::Instance()->AddErrorHandler(typeid(TagError<Tag>).name(), handler);
  AlertCounter counter;
  int returned = 0;
  int others = 0;
  FailEachAllocation([&returned, &others] {
    try {
      OXA_RAISE_ERROR_IN_PLACE("Test.Memory", TagError<Tag>("a message that is long enough for the heap"));
      ++returned;
    } catch (Error&) {
    } catch (std::bad_alloc&) {
    } catch (...) {
      ++others;
    }
  });
  EXPECT_GT(returned, 0);
  EXPECT_EQ(0, others);
  EXPECT_EQ(counter.m_lRaised, counter.m_lHandled);
  AlertManager::Instance()->RemoveErrorHandler(typeid(TagError<Tag>).name(), handler);
}

TEST(RaiseWithoutMemory, WarningsLeaveNothingButBadAlloc) {
  struct Tag {};
  int others = 0;
  AlertCounter counter;
  FailEachAllocation([&others] {
    try {
      OXA_RAISE_WARNING("Test.Memory", TagWarning<Tag>("a message that is long enough for the heap"));
    } catch (std::bad_alloc&) {
    } catch (...) {
      ++others;
    }
  });
  EXPECT_EQ(0, others);
  counter.m_lWarnings = 0;
  OXA_RAISE_WARNING("Test.Memory", TagWarning<Tag>());
  EXPECT_EQ(1, counter.m_lWarnings);
}

}  // namespace
