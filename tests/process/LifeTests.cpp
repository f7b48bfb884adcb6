#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <string>

#include "Support/ChildProcess.h"
#include "Support/DyingChild.h"
#include "Support/Sanitized.h"
#include "Support/ThreadSanitizer.h"

namespace {

using TestSupport::bSANITIZED;
using TestSupport::ChildResult;
using TestSupport::RunChild;

const char* const sMISSED_SHUTDOWN =
    "Calling Oxa::Core::Shutdown from OxaCore.dll unload.  This may result in false memory leak reporting.  "
    "To "
    "avoid this call Oxa::Core::Shutdown when the application is exiting but not from an ::atexit() handler "
    "(e.g. fromExitInstance)";
const char* const sSTARTED_UP = "Error handling started up via initial throw...\n";

#if defined(OXACORE_SOAK)
const char* const sCYCLES = "1000";
const std::chrono::seconds s_toCycle(600);
#elif defined(__SANITIZE_THREAD__)
const char* const sCYCLES = "12";  // each looks for symbols anew, which takes its time under this sanitizer
const std::chrono::seconds s_toCycle(120);
#else
const char* const sCYCLES = "50";
const std::chrono::seconds s_toCycle(60);
#endif

constexpr int iENDS = bSANITIZED ? 5 : 30;

// Threads that run to the last moment look like leaks.
ChildResult RunLife(const char* scenario) {
  return RunChild({LIFE_HOST, scenario}, {"ASAN_OPTIONS=detect_leaks=0"});
}

int Count(const std::string& text, const std::string& part) {
  int count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

TEST(Life, UnloadWithoutShutdownSaysSoAndShutsDown) {
  const ChildResult result = RunLife("nothing");
  EXPECT_EQ(0, result.m_iStatus);
  EXPECT_EQ(sMISSED_SHUTDOWN, result.m_sError);
  EXPECT_EQ("", result.m_sOutput);
}

TEST(Life, ShutdownWithoutInitializeWorks) {
  const ChildResult result = RunLife("shutdown-only");
  EXPECT_EQ(0, result.m_iStatus);
  EXPECT_EQ("", result.m_sError);
  EXPECT_EQ("", result.m_sOutput);
}

TEST(Life, SecondInitializePrintsNothing) {
  const ChildResult result = RunLife("initialize-twice");
  EXPECT_EQ(0, result.m_iStatus);
  EXPECT_EQ(sSTARTED_UP, result.m_sOutput);
  EXPECT_EQ("", result.m_sError);
}

TEST(Life, StaticObjectsOfALinkedHostRaiseAsAtAnyTime) {
  EXPECT_EQ("static object's raise threw: 1\n", RunLife("static-raise").m_sOutput);
}

TEST(Life, ErrorsAreStillThrownAfterShutdown) {
  EXPECT_EQ("raise threw: 1\n", RunLife("raise-after-shutdown").m_sOutput);
}

TEST(Life, ShutdownDestroysSingletons) {
  EXPECT_EQ("ledger built\nledger destroyed\ninstantiated: 0\n", RunLife("singletons").m_sOutput);
}

TEST(Life, SingletonMadeAfterShutdownDiesWithTheStaticObjects) {
  EXPECT_EQ("ledger built\nledger destroyed\nledger built\nend of main\nledger destroyed\n",
            RunLife("singleton-anew").m_sOutput);
}

TEST(Life, SingletonsBehindABadOneAreSkipped) {
  const ChildResult result = RunLife("bad-singleton");
  EXPECT_EQ(0, result.m_iStatus);
  EXPECT_EQ("ledger built\ninstantiated: 1\nledger destroyed\n", result.m_sOutput);
}

TEST(Life, ProcessMayExitFromAnotherThread) {
  const ChildResult result = RunLife("exit-from-thread");
  EXPECT_EQ(7, result.m_iStatus);
  EXPECT_EQ(sMISSED_SHUTDOWN, result.m_sError);
}

TEST(Life, ProcessMayExitWhileOtherThreadsRaise) {
  for (int i = 0; i < iENDS; ++i) EXPECT_EQ(0, RunLife("exit-while-raising").m_iStatus);
}

TEST(Life, HangingListenerDoesNotKeepTheProcessFromItsEnd) {
  EXPECT_EQ(4, RunLife("exit-while-telling").m_iStatus);
}

TEST(Life, ListenerMayEndTheProcess) { EXPECT_EQ(6, RunLife("exit-from-listener").m_iStatus); }

TEST(Life, ForkedChildLeavesTheShutdownToItsParent) {
  const ChildResult result = RunLife("fork");
  EXPECT_EQ("child ended with 5\n", result.m_sOutput);
  EXPECT_EQ("", result.m_sError);
}

TEST(Life, ForkedChildrenEndWhateverLocksTheParentHeld) {
  if (bSANITIZED) GTEST_SKIP() << "a sanitizer's own locks don't survive a fork among threads";
  EXPECT_EQ("50 children ended\n", RunLife("fork-while-raising").m_sOutput);
}

TEST(Life, ProcessWaitsForTheReportOfADyingThread) {
  const TestSupport::TemporaryFolder folder;
  const ChildResult result = TestSupport::RunDying(folder, {LIFE_HOST, "exit-while-dying"});
  EXPECT_EQ(255, result.m_iStatus) << "not the status of the exit that was begun";
  EXPECT_EQ("uncaught: dying\n", result.m_sOutput);
  EXPECT_EQ(1, Count(result.m_sError, "<Circumstance>Fatal unhandled error</Circumstance>"));
}

TEST(Life, ListenersThatRaiseAtEveryErrorComeToAnEnd) {
  OXA_SKIP_UNDER_THREAD_SANITIZER("one thread, and a minute of deep stacks that are told as XML");
  const ChildResult result = RunLife("two-raising-listeners");
  EXPECT_EQ(0, result.m_iStatus);
  EXPECT_EQ("came back\n", result.m_sOutput);
}

TEST(Life, ListenerThatWarnsAtEveryWarningComesToAnEnd) {
  const ChildResult result = RunLife("warning-listener");
  EXPECT_EQ(0, result.m_iStatus);
  EXPECT_EQ("came back\n", result.m_sOutput);
  EXPECT_EQ(1, Count(result.m_sError, "Error in alert listener during alert notification"));
}

TEST(Life, RaiseAfterTheUnloadRoutineGoesToStandardErrorAndReturns) {
  const ChildResult result = RunChild({LATE_HOST, "late", LIFE_PLUGIN});
  EXPECT_EQ(0, result.m_iStatus);
  EXPECT_EQ("early raise threw: 1\nlate raise threw: 0\n", result.m_sOutput);
  EXPECT_EQ(1, Count(result.m_sError, "<Circumstance>Error Raised During OxaCore Shutdown</Circumstance>"));
  EXPECT_EQ(1, Count(result.m_sError, "<Message>a late &lt;error&gt;</Message>"));
  EXPECT_EQ(2, Count(result.m_sError, "<LogName>Test.Plugin</LogName>"));
  EXPECT_EQ(1, Count(result.m_sError, "<Circumstance>Warning During OxaCore Shutdown</Circumstance>"));
  EXPECT_EQ(1, Count(result.m_sError, "<Message>a late warning</Message>"));
  for (const char* key :
       {"ProcessName", "ProcessID", "ThreadName", "ThreadID", "HostName", "OperatingSystem"})
    EXPECT_EQ(0, Count(result.m_sError, std::string("<") + key + ">")) << key;
  for (const char* key : {"File", "Line", "CompileTime", "FunctionName", "FunctionSignature"})
    EXPECT_EQ(2, Count(result.m_sError, std::string("<") + key + ">")) << key;
}

TEST(Life, AtomsAreMadeToTheVeryEnd) {
  const ChildResult result = RunChild({LATE_HOST, "late-atoms", LIFE_PLUGIN});
  EXPECT_EQ(0, result.m_iStatus) << result.m_sError;
  EXPECT_EQ("early raise threw: 1\nearly atom: word, once\nlater atom: word, once\nlate atom: word, once\n",
            result.m_sOutput);
}

TEST(Life, PluginTakesTheLibraryWithIt) {
  const ChildResult result = RunChild({LATE_HOST, "unload", LIFE_PLUGIN});
  EXPECT_EQ(0, result.m_iStatus);
  EXPECT_EQ("early raise threw: 1\n", result.m_sOutput);
  EXPECT_EQ(1, Count(result.m_sError, sMISSED_SHUTDOWN));
}

TEST(Life, LoadsAndUnloadsOverAndOver) {
  // What a thread's cache of freed memory keeps for it would count as allocated.
  const ChildResult result = RunChild({LATE_HOST, "cycles", LIFE_PLUGIN, sCYCLES, OXACORE_LIBRARY},
                                      {"GLIBC_TUNABLES=glibc.malloc.tcache_count=0"}, s_toCycle);
  EXPECT_EQ(0, result.m_iStatus) << result.m_sError;
  EXPECT_EQ(std::atoi(sCYCLES), Count(result.m_sOutput, sSTARTED_UP));
  EXPECT_EQ(std::atoi(sCYCLES) / 2, Count(result.m_sError, sMISSED_SHUTDOWN));
  long grown = -1;
  const auto at = result.m_sOutput.find("grown by ");
  ASSERT_NE(std::string::npos, at);
  ASSERT_EQ(1, std::sscanf(result.m_sOutput.c_str() + at, "grown by %ld KiB", &grown));
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // they keep freed memory for a while
  EXPECT_LT(grown, 1024);
  long heap = -1;
  const auto heapAt = result.m_sOutput.find("heap grown by ");
  ASSERT_NE(std::string::npos, heapAt);
  ASSERT_EQ(1, std::sscanf(result.m_sOutput.c_str() + heapAt, "heap grown by %ld bytes", &heap));
  EXPECT_LT(heap, 100 * std::atoi(sCYCLES)) << "something of each turn is left";
#endif
}

}  // namespace
