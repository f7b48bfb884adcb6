#include <Infrastructure/OxaCore/AlertManager.h>

#include <Infrastructure/OxaCore/System.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "ErrorHandling/TestAlerts.h"

namespace {

using namespace AlertTests;
using testing::ElementsAre;

class Masked : public Recorder {
 public:
  explicit Masked(std::uint32_t mask) { m_severityMask = mask; }
};

template <class Error>
void RaiseAndCatch(const char* message) {
  try {
    OXA_RAISE_ERROR("Test", Error(message));
  } catch (Oxa::Core::Error&) {
  }
}

void RaiseBelow(int levels) {
  if (levels == 0) {
    OXA_RAISE_ERROR("Test.Deep", LogicError("from below"));
    return;
  }
  try {
    RaiseBelow(levels - 1);
  }
  OXA_FORWARD_ERRORS
}

TEST(AlertManager, InstanceIsOneFromLoadOn) {
  ASSERT_NE(nullptr, AlertManager::Instance());
  EXPECT_EQ(AlertManager::Instance(), AlertManager::Instance());
}

TEST(AlertManager, ErrorIsToldOnceRaisedAndOnceHandled) {
  Recorder recorder;
  RaiseAndCatch<LogicError>("one");
  EXPECT_THAT(recorder.m_heard, ElementsAre("raised one", "handled one"));
}

TEST(AlertManager, ErrorForwardedThroughFiveLevelsIsToldOnce) {
  Recorder recorder;
  try {
    RaiseBelow(5);
    FAIL();
  } catch (Error& error) {
    EXPECT_EQ(6U, error.GetUnwindStack()->size());
  }
  EXPECT_THAT(recorder.m_heard, ElementsAre("raised from below", "handled from below"));
}

TEST(AlertManager, WarningIsToldAndTheCallerGoesOn) {
  Recorder recorder;
  OXA_RAISE_WARNING("Test", BasicWarning());
  EXPECT_THAT(recorder.m_heard, ElementsAre("warning basic"));
}

TEST(AlertManager, RemovedListenerHearsNothing) {
  Recorder recorder;
  AlertManager::Instance()->RemoveAlertListener(recorder);
  RaiseAndCatch<LogicError>("unheard");
  EXPECT_THAT(recorder.m_heard, ElementsAre());
}

TEST(AlertManager, ListenersHearOnlyWhatTheyAreInterestedIn) {
  Masked warnings(1);
  Masked errors(6);
  RaiseAndCatch<LogicError>("e");
  OXA_RAISE_WARNING("Test", BasicWarning());
  EXPECT_THAT(warnings.m_heard, ElementsAre("warning basic"));
  EXPECT_THAT(errors.m_heard, ElementsAre("raised e", "handled e"));
}

TEST(AlertManager, LastAddedListenerHearsFirstAndTheRecordsComeLast) {
  struct Tag {};
  std::vector<int> order;
  std::vector<unsigned long> counts;
  Recorder first;
  Recorder second;
  first.m_onAlert = [&](const std::string&) {
    order.push_back(1);
    counts.push_back(FindWarning(WarningRecord(TagWarning<Tag>()).GetClass()).GetRaisedCount());
  };
  second.m_onAlert = [&](const std::string&) { order.push_back(2); };
  OXA_RAISE_WARNING("Test", TagWarning<Tag>());
  OXA_RAISE_WARNING("Test", TagWarning<Tag>());
  EXPECT_THAT(order, ElementsAre(2, 1, 2, 1));
  EXPECT_THAT(counts, ElementsAre(0U, 1U)) << "the manager counts after everybody has heard";
}

TEST(AlertManager, ListenerThatThrowsDoesNotStopTheRaise) {
  const std::function<void()> failures[] = {[] { throw LogicError("listener"); },
                                            [] { throw std::runtime_error("listener"); }, [] { throw 1; }};
  for (const auto& fail : failures) {
    Recorder quiet;
    Recorder failing;
    failing.m_onAlert = [&fail](const std::string& what) {
      if (what.find("warning") != 0) fail();
    };
    EXPECT_THROW(OXA_RAISE_ERROR("Test", NullPointer("p")), NullPointer);
    ASSERT_EQ(4U, quiet.m_heard.size());
    EXPECT_EQ(0U, quiet.m_heard[0].find("warning Listener threw error during notification: "));
    EXPECT_EQ("raised NULL pointer variable named p", quiet.m_heard[1]);
    EXPECT_EQ(0U, quiet.m_heard[2].find("warning Listener threw error during notification: "));
    EXPECT_EQ("handled NULL pointer variable named p", quiet.m_heard[3]);
  }
}

// Each error that the listener raises is told to the listener: the raise itself ends this, ten deep.
TEST(AlertManager, ListenerThatRaisesAtEveryErrorIsHalted) {
  Recorder failing;
  int raises = 0;
  failing.m_onAlert = [&raises](const std::string& what) {
    if (what.find("raised") != 0) return;
    ++raises;
    OXA_RAISE_ERROR("Test", LogicError("again"));
  };
  testing::internal::CaptureStderr();
  EXPECT_THROW(OXA_RAISE_ERROR("Test", NullPointer("p")), NullPointer);
  const std::string error = testing::internal::GetCapturedStderr();
  EXPECT_GE(raises, g_iMAX_ERROR_RECURSION_DEPTH - 1);
  EXPECT_NE(std::string::npos,
            error.find("Detected potential infinite error recursion, halting recursion and throwing original "
                       "error"));
}

TEST(AlertManager, UncaughtFatalErrorsAreToldToEveryAlertListener) {
  class Deaf : public AlertListener {
   public:
    Deaf() {
      m_severityMask = 0;
      m_dataFilter["Message"].insert("another");
    }
    void UncaughtFatalError(Error& error, const std::string& path) override {
      m_sHeard = error.what() + path;
    }
    std::string m_sHeard;
  };
  Deaf deaf;
  NotificationListener foreign;
  LogicError error("dead");
  UncaughtFatalErrorNotification notification(error, "/folder");
  notification.Notify(foreign);
  notification.Notify(deaf);
  EXPECT_EQ("dead/folder", deaf.m_sHeard);
}

TEST(AlertManager, AlertsArePassedOverByForeignListeners) {
  NotificationListener foreign;
  LogicError error("error");
  BasicWarning warning;
  ErrorRaised(error).Notify(foreign);
  ErrorHandled(error).Notify(foreign);
  WarningRaised(warning).Notify(foreign);
  EXPECT_STREQ("error", error.what());
}

TEST(AlertManager, WarningOfAFailedBroadcastHasItsText) {
  const ErrorDuringAlertNotification warning("reason");
  EXPECT_EQ("Error occurred during an alert notification:\nreason", warning.GetData(AlertInfo::sMESSAGE));
  EXPECT_EQ(AlertInfo::eWARNING, warning.GetSeverity());
}

TEST(AlertManager, FatalReportsGoToTheProgramsFolderAtFirst) {
  std::string folder;
  System::Instance()->GetProcessPath(folder);
  EXPECT_FALSE(folder.empty());
  EXPECT_EQ(folder, AlertManager::Instance()->GetFatalErrorBasePath());
}

TEST(AlertManager, DumpPolicyIsReferencedMemoryAtFirst) {
  AlertManager* const manager = AlertManager::Instance();
  EXPECT_EQ(eDUMP_REFERENCED_MEMORY, manager->GetDumpPolicy());
  manager->SetDumpPolicy(eDUMP_FULL_MEMORY);
  EXPECT_EQ(eDUMP_FULL_MEMORY, manager->GetDumpPolicy());
  manager->SetDumpPolicy(eDUMP_REFERENCED_MEMORY);
}

TEST(AlertManager, DumpPoliciesHaveTheirValues) {
  EXPECT_EQ(0, eDUMP_NORMAL);
  EXPECT_EQ(1, eDUMP_REFERENCED_MEMORY);
  EXPECT_EQ(2, eDUMP_PRIVATE_MEMORY);
  EXPECT_EQ(3, eDUMP_FULL_MEMORY);
  EXPECT_EQ(4U, sizeof(EDumpPolicy));
}

TEST(AlertManager, OneFatalReportAtFirst) {
  EXPECT_EQ(1, AlertManager::GetMaxFatalErrorReports());
  AlertManager::SetMaxFatalErrorReports(3);
  EXPECT_EQ(3, AlertManager::GetMaxFatalErrorReports());
  AlertManager::SetMaxFatalErrorReports(1);
}

TEST(CurrentErrors, KeepsTheLastErrorOfEachThread) {
  CurrentErrors errors;
  Error found(AlertInfo::eERROR);
  EXPECT_FALSE(errors.Find(1, found));
  errors.Store(1, LogicError("first"));
  errors.Store(2, LogicError("other thread"));
  errors.Store(1, LogicError("second"));
  ASSERT_TRUE(errors.Find(1, found));
  EXPECT_STREQ("second", found.what());
  ASSERT_TRUE(errors.Find(2, found));
  EXPECT_STREQ("other thread", found.what());
}

TEST(CurrentErrors, AnyEntryStandsInForAThreadWithoutOne) {
  CurrentErrors errors;
  errors.Store(1, LogicError("of thread 1"));
  Error found(AlertInfo::eERROR);
  ASSERT_TRUE(errors.Find(99, found));
  EXPECT_STREQ("of thread 1", found.what());
}

TEST(CurrentErrors, StoredCopyTakesNoMark) {
  CurrentErrors errors;
  Recorder recorder;
  try {
    OXA_RAISE_ERROR("Test", LogicError("stored"));
  } catch (Error& error) {
    errors.Store(1, error);
    errors.Store(1, LogicError("overwrites"));
    EXPECT_THAT(recorder.m_heard, ElementsAre("raised stored")) << "still in flight";
  }
  EXPECT_THAT(recorder.m_heard, ElementsAre("raised stored", "handled stored"));
}

}  // namespace
