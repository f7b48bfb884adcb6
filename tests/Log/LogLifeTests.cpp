// Start and end of the log manager, each in a process of its own.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <string>
#include <vector>

#include "Support/ChildProcess.h"
#include "Support/Eventually.h"
#include "Support/Sanitized.h"
#include "Support/TemporaryFolder.h"

namespace {

using TestSupport::bSANITIZED;
using TestSupport::ChildResult;
using TestSupport::MillisecondsOf;
using TestSupport::RunChild;

#if defined(OXACORE_SOAK)
constexpr int iCYCLES = 1000;
constexpr int iENDS = 100;
#else
constexpr int iCYCLES = bSANITIZED ? 10 : 50;
constexpr int iENDS = 5;
#endif

// A folder of its own for the log of each run.
class Folder : public TestSupport::TemporaryFolder {
 public:
  std::string Entries() const {
    std::string all;
    for (const std::string& name : Names()) all += Read(name);
    return all;
  }
};

ChildResult RunHost(const std::string& scenario, const Folder& folder, const std::string& options = "") {
  return RunChild({LOG_LIFE_HOST, scenario, folder.File("")}, {options.empty() ? "A=B" : options});
}

ChildResult RunHost(const std::string& scenario) { return RunHost(scenario, Folder()); }

// Where threads or objects are left to the end on purpose, they are no leaks.
ChildResult RunLeaking(const std::string& scenario) {
  return RunHost(scenario, Folder(), "ASAN_OPTIONS=detect_leaks=0");
}

int Count(const std::string& text, const std::string& part) {
  int count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

TEST(LogLife, MessagesDuringTheUnloadingGoToStandardOutput) {
  const ChildResult result = RunHost("late");
  EXPECT_EQ(0, result.m_iStatus) << result.m_sError;
  EXPECT_EQ(
      "manager: 1\n"
      "logger: 0\n"
      "Log message during OxaCore.dll shutdown:\n"
      "Logger: Late.Writer\n"
      "Severity: 3\n"
      "Message: late 5\n"
      "A formatting error occurred while writing a log message from logger <Writer> during OxaCore.dll "
      "shutdown\n"
      "The formatting string is:\n"
      "\tbad %\n"
      "A formatting error occurred while writing a log message from logger <Writer> during OxaCore.dll "
      "shutdown\n"
      "The formatting string is:\n"
      "\t!!!NULL!!!\n",
      result.m_sOutput);
}

TEST(LogLife, MessagesDuringTheShutdownAreOrdinaryOnes) {
  const ChildResult result = RunHost("late-shut-down");
  EXPECT_EQ(0, result.m_iStatus) << result.m_sError;
  EXPECT_EQ("manager: 1\nlogger: 1\n", result.m_sOutput);
}

TEST(LogLife, MessagesReachTheDefaultLog) {
  const Folder folder;
  const ChildResult result = RunHost("exit-with-handlers", folder);
  EXPECT_EQ(0, result.m_iStatus) << result.m_sError;
  EXPECT_EQ("received\n", result.m_sOutput);
}

TEST(LogLife, AfterTheShutdownMessagesGoNowhere) {
  const Folder folder;
  const ChildResult result = RunHost("after-shut-down", folder);
  EXPECT_EQ(0, result.m_iStatus) << result.m_sError;
  EXPECT_EQ("manager: 0\nalert manager: 1\nraise threw\n", result.m_sOutput);
  EXPECT_EQ(0, Count(folder.Entries(), "to nobody"));
}

TEST(LogLife, ShutdownDropsWhatWaitsAndIsQuick) {
  const ChildResult result = RunLeaking("full");
  EXPECT_EQ(0, result.m_iStatus) << result.m_sError;
  EXPECT_EQ("taken whole: 0\nin time: 1\n", result.m_sOutput);
}

// The thread sleeps on the queue and must be woken to see that it is to stop.
TEST(LogLife, ShutdownDoesNotWaitOutItsSecond) { EXPECT_EQ("in time: 1\n", RunHost("at-once").m_sOutput); }

TEST(LogLife, ShutdownUnregistersTheLoggers) {
  EXPECT_EQ("told: 1 1\n", RunLeaking("tells-service").m_sOutput);
}

TEST(LogLife, ShutdownStopsUnregisteringAtTheFirstFailure) {
  EXPECT_EQ("told: 1\n", RunLeaking("failing-service").m_sOutput);
}

TEST(LogLife, ExitTellsNoServiceAnyMore) { EXPECT_EQ("", RunLeaking("exit-tells-nobody").m_sOutput); }

TEST(LogLife, ManagerIsShutDownOnce) {
  const ChildResult result = RunHost("shut-down-twice");
  EXPECT_EQ(0, result.m_iStatus) << result.m_sError;
  EXPECT_EQ("buffering: 0\n", result.m_sOutput);
}

TEST(LogLife, ForkedChildrenWaitForNoThread) {
  if (bSANITIZED) GTEST_SKIP() << "a sanitizer's own locks don't survive a fork among threads";
  const ChildResult result = RunHost("fork");
  EXPECT_EQ(0, result.m_iStatus) << result.m_sError;
  EXPECT_EQ(6, Count(result.m_sOutput, "child ended with 5 in time: 1\n")) << result.m_sOutput;
}

TEST(LogLife, ShutdownAmongWritersAndRaises) {
  for (int i = 0; i < iENDS; ++i) {
    const ChildResult result = RunHost("shut-down-among-writers");
    EXPECT_EQ(0, result.m_iStatus) << result.m_sError.substr(0, 4000);
    EXPECT_EQ("over\n", result.m_sOutput);
  }
}

TEST(LogLife, ExitAmongWritersAndRaises) {
  for (int i = 0; i < iENDS; ++i) {
    const ChildResult result = RunLeaking("exit-among-writers");
    EXPECT_EQ(0, result.m_iStatus) << result.m_sError.substr(0, 4000);
  }
}

TEST(LogLife, HandlerMayEndTheProcess) {
  ChildResult result;
  EXPECT_LT(MillisecondsOf([&result] { result = RunLeaking("exit-from-handler"); }), 8000);
  EXPECT_EQ(6, result.m_iStatus) << result.m_sError;
}

TEST(LogLife, HandlerThatHangsDoesNotKeepTheProcessFromItsEnd) {
  ChildResult result;
  EXPECT_LT(MillisecondsOf([&result] { result = RunLeaking("exit-while-handler-hangs"); }), 40000);
  EXPECT_EQ(7, result.m_iStatus) << result.m_sError;
}

TEST(LogLife, ShutdownForgetsTheLoggersOnce) {
  EXPECT_EQ("the same: 0\ntold: 1\n", RunLeaking("forgets-loggers").m_sOutput);
}

TEST(LogLife, ShutdownFromWithinTheShutdownDoesNothing) {
  const ChildResult result = RunLeaking("service-shuts-down");
  EXPECT_EQ(0, result.m_iStatus) << result.m_sError;
  EXPECT_EQ("told: 1 1\n", result.m_sOutput);
}

TEST(LogLife, ThreadThatAHandlerEndedIsWaitedForByNobody) {
  const ChildResult result = RunLeaking("handler-ends-thread");
  EXPECT_EQ(0, result.m_iStatus) << result.m_sError;
  EXPECT_EQ("off in time: 1\nreceived: message 2\nreceived: message 3\ndown in time: 1\n", result.m_sOutput);
}

TEST(LogLife, SwitchLosesNothingWhileAHandlerEndsTheThread) {
  const ChildResult result = RunLeaking("off-while-handler-ends-thread");
  EXPECT_EQ(0, result.m_iStatus) << result.m_sError;
  EXPECT_EQ("received: message 2\n", result.m_sOutput);
}

TEST(LogLife, HandlerMayEndTheProcessWithoutBufferingToo) {
  const ChildResult result = RunLeaking("exit-from-direct-handler");
  EXPECT_EQ(6, result.m_iStatus) << result.m_sError;
}

TEST(LogLife, FatalErrorIsPrecededByAllThatWasWritten) {
  const ChildResult result = RunLeaking("die");
  EXPECT_EQ(255, result.m_iStatus) << result.m_sError;
  std::string expected;
  for (int i = 0; i < 900; ++i) expected += "message " + std::to_string(i) + "\n";
  EXPECT_EQ(expected + "uncaught, buffering: 0\n", result.m_sOutput);
}

TEST(LogLife, LateShutdownTellsTheService) {
  const ChildResult result = RunLeaking("late-end");
  EXPECT_EQ(0, result.m_iStatus) << result.m_sError;
  EXPECT_EQ("told: unregister Life.A\n", result.m_sOutput);
}

TEST(LogLife, ShutdownAfterAFatalErrorTellsNoService) {
  const ChildResult result = RunLeaking("late-end-dying");
  EXPECT_EQ(255, result.m_iStatus) << result.m_sError;
  EXPECT_EQ("", result.m_sOutput);
}

class LogCycles : public testing::TestWithParam<const char*> {};

TEST_P(LogCycles, ComeToTheirEnd) {
  const Folder folder;
  for (int i = 0; i < iCYCLES; ++i) {
    const ChildResult result = RunHost(GetParam(), folder);
    ASSERT_EQ(0, result.m_iStatus) << i << ": " << result.m_sError;
  }
}

INSTANTIATE_TEST_SUITE_P(StartLogEnd, LogCycles,
                         testing::Values("log", "log-shut-down", "log-raise-shut-down"),
                         [](const auto& scenario) {
                           std::string name = scenario.param;
                           name.erase(std::remove(name.begin(), name.end(), '-'), name.end());
                           return name;
                         });

// Ten milliseconds are for the thread to come up, and five may go on everything else; the least of several runs shows
// what that is.
TEST(LogLife, LoadingCostsLittleMoreThanTheWaitForTheThread) {
  constexpr double dMOST = bSANITIZED ? 200 : 15;
  double least = 1e9;
  for (int i = 0; i < 50 && least >= dMOST; ++i) {
    const ChildResult result = RunChild({LOG_LOAD_HOST, OXACORE_LIBRARY});
    ASSERT_EQ(0, result.m_iStatus) << result.m_sError;
    least = std::min(least, std::atof(result.m_sOutput.c_str()));
  }
  EXPECT_GE(least, 10);
  EXPECT_LT(least, dMOST);
}

}  // namespace
