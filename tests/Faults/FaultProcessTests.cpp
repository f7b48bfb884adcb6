// Faults that end a process, and what the signals of faults mean to a host. Each in a process of its own.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <string>

#include "Support/DyingChild.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using TestSupport::ChildResult;
using TestSupport::TemporaryFolder;

constexpr int iMINUS_ONE = 255;
constexpr int iHANDLED = 7;

ChildResult Die(const char* scenario) {
  return TestSupport::RunDying(TemporaryFolder(), {FAULT_HOST, scenario});
}

ChildResult Load(const char* scenario) {
  TestSupport::ExpectDeaths();
  return TestSupport::RunChild({FAULT_LOADING_HOST, scenario, FAULT_PLUGIN});
}

// Its records lie beside the program.
ChildResult LoadIn(const TemporaryFolder& folder, const char* scenario) {
  TestSupport::ExpectDeaths();
  std::filesystem::copy_file(FAULT_LOADING_HOST, folder.File("host"));
  return TestSupport::RunChild({folder.File("host"), scenario, FAULT_PLUGIN});
}

void ExpectFatal(const char* scenario) {
  const ChildResult result = Die(scenario);
  EXPECT_EQ(iMINUS_ONE, result.m_iStatus) << result.m_sError;
}

TEST(FaultProcess, AFaultThatNobodyCatchesEndsItByTheReport) {
  const ChildResult result = Die("uncaught");
  EXPECT_EQ(iMINUS_ONE, result.m_iStatus);
  EXPECT_THAT(result.m_sError, HasSubstr("<Message>Illegal write to virtual address 0 from 0x"));
  EXPECT_THAT(result.m_sError, HasSubstr("<LogName>OS.Windows</LogName>"));
}

TEST(FaultProcess, AlsoOnAThreadWithTheTranslator) {
  const ChildResult result = Die("uncaught-on-translated-thread");
  EXPECT_EQ(iMINUS_ONE, result.m_iStatus);
  EXPECT_THAT(result.m_sError, HasSubstr("<Message>Illegal write to virtual address 0 from 0x"));
}

TEST(FaultProcess, AThreadWithoutTheTranslatorGoesDirectlyToTheFilter) {
  const ChildResult result = Die("uncaught-on-host-thread");
  EXPECT_EQ(iMINUS_ONE, result.m_iStatus);
  EXPECT_THAT(result.m_sError, Not(HasSubstr("Illegal write")));
}

TEST(FaultProcess, AnOverflowThatNobodyCatches) {
  const ChildResult result = Die("overflow-uncaught");
  EXPECT_EQ(iMINUS_ONE, result.m_iStatus);
  EXPECT_THAT(result.m_sError, HasSubstr("<Message>Stack overflow detected at 0x"));
}

TEST(FaultProcess, AfterAFaultThatNothingFollowsTheFilterIsCalled) {
  const ChildResult result = Die("noncontinuable");
  EXPECT_EQ(iMINUS_ONE, result.m_iStatus);
  EXPECT_EQ("", result.m_sOutput);
}

TEST(FaultProcess, ATrashedReturnAddressEndsIt) { ExpectFatal("return-nowhere"); }
TEST(FaultProcess, AStackPointerThatIsNoAddressEndsIt) { ExpectFatal("stack-pointer-gone"); }
TEST(FaultProcess, AStackThatEndsWhileItsEndIsToldEndsIt) { ExpectFatal("alternate-stack-overflows"); }

TEST(FaultProcess, AFunctionThatLetsNothingOutEndsItByTheReport) {
  const TemporaryFolder folder;
  const ChildResult result = TestSupport::RunDying(folder, {FAULT_HOST, "noexcept"});
  EXPECT_EQ(iMINUS_ONE, result.m_iStatus) << result.m_sError;
  EXPECT_EQ("", result.m_sOutput);
  ASSERT_NE("", TestSupport::RecordsIn(folder));
  const std::string report = TestSupport::ReadFile(TestSupport::RecordsIn(folder) + "ErrorInfo.xml");
  EXPECT_THAT(report, HasSubstr("<Circumstance>Fatal unhandled error</Circumstance>"));
  EXPECT_THAT(report, HasSubstr("<Message>Illegal write to virtual address 0 from 0x"));
}

TEST(FaultProcess, TheLoadAndEachInitialisationAreUsesOfTheAdapterThatNoShutdownEnds) {
  EXPECT_EQ(
      "Error handling started up via initial throw...\ncaught\ncaught\ncaught\nno translator\nno handler\n",
      Die("uses").m_sOutput);
}

TEST(FaultProcess, TwoUsesOfTheAdapterAndOneReleaseLeaveItInForce) {
  EXPECT_EQ("caught\n", Die("twice-initialised").m_sOutput);
}

TEST(FaultProcess, ReleasesBelowZeroDoNoHarm) {
  EXPECT_EQ("caught\n", Die("adapter-released-once-too-often").m_sOutput);
}

TEST(FaultProcess, WithoutTheAdapterTheSystemsOwnActionFollows) {
  EXPECT_EQ(-SIGSEGV, Die("adapter-released").m_iStatus);
}

TEST(FaultProcess, ASignalThatSomebodySentIsNoFault) {
  EXPECT_EQ(-SIGSEGV, Die("sent").m_iStatus);
  EXPECT_EQ(-SIGFPE, Die("raised").m_iStatus);
  EXPECT_EQ(-SIGILL, Die("sent-to-a-thread").m_iStatus);
}

TEST(FaultProcess, ALaterHandlerOfTheHostHasTheSignal) {
  const ChildResult result = Die("later-handler");
  EXPECT_EQ(iHANDLED, result.m_iStatus);
  EXPECT_EQ("host's SIGSEGV\n", result.m_sOutput);
}

TEST(FaultProcess, AnEarlierHandlerHasTheFaultsThatAreNotOurs) {
  EXPECT_EQ(iHANDLED, Load("handler-before").m_iStatus);
  EXPECT_EQ(iHANDLED, Load("handler-before-is-sent").m_iStatus);
}

TEST(FaultProcess, AnEarlierHandlerIsCalledAsItAskedFor) {
  for (const char* scenario : {"plain-handler-before", "nesting-handler-before", "mask-comes-back"}) {
    const ChildResult result = Load(scenario);
    EXPECT_EQ(0, result.m_iStatus) << scenario << ": " << result.m_sError;
  }
}

TEST(FaultProcess, AnEarlierHandlerThatIsToBeCalledOnceIs) {
  const TemporaryFolder folder;
  const ChildResult result = LoadIn(folder, "reset-handler-before");
  EXPECT_EQ(iMINUS_ONE, result.m_iStatus) << result.m_sError;
  EXPECT_EQ("called\n", result.m_sOutput);
  EXPECT_NE("", TestSupport::RecordsIn(folder));
}

TEST(FaultProcess, WhatIsSentAfterThatIsLeftToTheSystem) {
  const ChildResult twice = Load("reset-handler-is-sent-twice");
  EXPECT_EQ(-SIGFPE, twice.m_iStatus) << twice.m_sError;
  const ChildResult back = Load("reset-handler-does-not-come-back");
  EXPECT_EQ(0, back.m_iStatus) << back.m_sError;
}

TEST(FaultProcess, AFaultOfAnIgnoredSignalEndsItByTheReport) {
  const TemporaryFolder folder;
  const ChildResult result = LoadIn(folder, "fault-ignored-before");
  EXPECT_EQ(iMINUS_ONE, result.m_iStatus) << result.m_sError;
  EXPECT_NE("", TestSupport::RecordsIn(folder));
}

TEST(FaultProcess, ASignalThatWasIgnoredStaysSo) { EXPECT_EQ(0, Load("ignored-before").m_iStatus); }

TEST(FaultProcess, AnEarlierHandlerComesBackWithTheUnload) {
  const ChildResult result = Load("handler-comes-back");
  EXPECT_EQ(iHANDLED, result.m_iStatus) << result.m_sError;
}

TEST(FaultProcess, ALaterHandlerOutlivesTheUnload) {
  const ChildResult result = Load("later-handler-stays");
  EXPECT_EQ(0, result.m_iStatus) << result.m_sError;
}

TEST(FaultProcess, TheUnloadLeavesNothingBehind) {
  const ChildResult result = Load("nothing-is-left");
  EXPECT_EQ(0, result.m_iStatus) << result.m_sError;
}

TEST(FaultProcess, AThreadThatIsKnownMayOutliveTheUnload) {
  const ChildResult result = Load("thread-outlives-unload");
  EXPECT_EQ(0, result.m_iStatus) << result.m_sError;
}

TEST(FaultProcess, TheUnloadLeavesNothingBehindWhateverTheUseCountSays) {
  const ChildResult result = Load("used-once-too-often");
  EXPECT_EQ(0, result.m_iStatus) << result.m_sError;
}

}  // namespace
