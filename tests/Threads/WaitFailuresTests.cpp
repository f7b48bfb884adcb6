#include "Threads/WaitFailures.h"

#include <Infrastructure/OxaCore/Condition.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <ostream>
#include <string>

#include "ErrorHandling/Hooks.h"
#include "Threads/ConditionTexts.h"
#include "Threads/SemaphoreTexts.h"

using namespace Oxa::Core;
using Platform::EWaitEnd;

namespace {

struct Row {
  const char* m_pName;
  const WaitTexts& m_texts;
  const char* m_pLogName;
  const char* m_pAbandoned;
  const char* m_pTimedOut;  // empty: nothing is raised
  bool m_bWarns;
  const char* m_pOther;
};

void PrintTo(const Row& row, std::ostream* out) { *out << row.m_pName; }

// NOLINTNEXTLINE(cppcoreguidelines-interfaces-global-init): of the texts only the places are taken
const Row rows[] = {
    {"Condition::Lock", g_conditionLockTexts, "Oxa.Core.Condition", "Attempt to acquire lock abandoned",
     "Attempt to acquire lock timed out", false, "Attemt to acquire lock ended by unkown error"},
    {"Condition::TryLock", g_conditionTryLockTexts, "Oxa.Core.Condition", "Attempt to acquire lock abandoned",
     "", false, "Attemt to acquire lock ended by unkown error"},
    {"Condition::Wait", g_conditionWaitTexts, "Oxa.Core.Condition", "Infinite wait on signal abandoned!",
     "Infinite wait timed out!", true, "Infinite wait on signal ended by unkown error"},
    {"Condition::TimedWait", g_conditionTimedWaitTexts, "Oxa.Core.Condition",
     "Timed wait on signal abandoned!", "", true, "Timed wait on signal ended by unkown error"},
    {"Semaphore::Wait", g_semaphoreWaitTexts, "Oxa.Core.Semaphore", "Infinite wait abandoned!",
     "Infinite wait timed out!", false, "Infinite wait ended by unkown error"},
    {"Semaphore::TimedWait", g_semaphoreTimedWaitTexts, "Oxa.Core.Semaphore", "Wait abandoned!", "", false,
     "Wait ended by unkown error"},
};

std::string s_sWarning;

class WaitFailures : public testing::TestWithParam<Row> {
 protected:
  void SetUp() override {
    s_sWarning.clear();
    m_mayWarn = TheHooks().mayWarn;
    m_warningRaised = TheHooks().warningRaised;
    TheHooks().mayWarn = [](const std::string&) { return true; };
    TheHooks().warningRaised = [](Warning& warning) {
      s_sWarning = warning.GetData(AlertInfo::sLOG_NAME) + ": " + warning.GetData(AlertInfo::sMESSAGE);
    };
  }
  void TearDown() override {
    TheHooks().mayWarn = m_mayWarn;
    TheHooks().warningRaised = m_warningRaised;
  }

  // What comes of a wait that ended in this way: the message of the error, or "true" or "false".
  std::string Outcome(EWaitEnd end, int code = 0) {
    try {
      return Succeeded({end, code}, GetParam().m_texts, OXA_CODE_SITE) ? "true" : "false";
    } catch (const OSError& error) {
      EXPECT_EQ(GetParam().m_pLogName, error.GetData(AlertInfo::sLOG_NAME));
      return error.GetData(AlertInfo::sMESSAGE);
    }
  }

 private:
  bool (*m_mayWarn)(const std::string&) = nullptr;
  void (*m_warningRaised)(Warning&) = nullptr;
};

}  // namespace

TEST_P(WaitFailures, Signalled) { EXPECT_EQ("true", Outcome(EWaitEnd::eSIGNALLED)); }

TEST_P(WaitFailures, Abandoned) { EXPECT_EQ(GetParam().m_pAbandoned, Outcome(EWaitEnd::eABANDONED)); }

TEST_P(WaitFailures, TimedOut) {
  const std::string raised = GetParam().m_pTimedOut;
  EXPECT_EQ(raised.empty() ? "false" : raised, Outcome(EWaitEnd::eTIMEOUT));
}

TEST_P(WaitFailures, Interrupted) {
  const std::string outcome = Outcome(EWaitEnd::eIO_COMPLETION);
  if (GetParam().m_bWarns) {
    EXPECT_EQ("false", outcome);
    EXPECT_EQ("Oxa.Core.Condition: A wait on a Condition object was ended by a unser mode APC", s_sWarning);
  } else {
    EXPECT_EQ(GetParam().m_pOther, outcome);
    EXPECT_EQ("", s_sWarning);
  }
}

TEST_P(WaitFailures, FailedTellsTheSystemsText) {
  EXPECT_EQ(std::strerror(ENOMEM), Outcome(EWaitEnd::eFAILED, ENOMEM));
  EXPECT_EQ("Failed to retrieve error message for code 1000000.", Outcome(EWaitEnd::eFAILED, 1000000));
}

TEST_P(WaitFailures, OtherEnds) { EXPECT_EQ(GetParam().m_pOther, Outcome(EWaitEnd::eOTHER)); }

INSTANTIATE_TEST_SUITE_P(AllOperations, WaitFailures, testing::ValuesIn(rows), [](const auto& row) {
  std::string name = row.param.m_pName;
  return name.replace(name.find("::"), 2, "_");
});
