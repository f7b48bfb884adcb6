// Errors and warnings on their way into the log.
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/Assert.h>
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/Warning.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LogTape.h"

namespace {

using namespace Oxa::Core;
using LogTests::GetLogger;
using LogTests::TapeHandler;
using testing::HasSubstr;
using testing::StartsWith;

class Meltdown : public ErrorClass<Meltdown, Error> {
 public:
  Meltdown() : ErrorClass(eCRITICAL) { SetData(sMESSAGE, "100% hot: %s %n"); }
};

void RaiseAndCatch(const char* path) {
  try {
    OXA_RAISE_ERROR(path, LogicError("100% wrong: %s %n"));
  } catch (LogicError&) {
    return;
  }
}

TEST(LogAlerts, ErrorsAreLoggedAsTheyAreRaisedAndHandled) {
  TapeHandler handler;
  RaiseAndCatch("Alerts.Error");
  const auto entries = handler.Await("Alerts.Error", 2);
  ASSERT_EQ(2U, entries.size());
  EXPECT_EQ(eLOG_ERROR, entries[0].m_eSeverity);
  EXPECT_EQ("xml", entries[0].m_sForm);
  EXPECT_THAT(entries[0].m_sMessage, StartsWith("<Error>"));
  EXPECT_THAT(entries[0].m_sMessage, HasSubstr("<Circumstance>Error Raised</Circumstance>"));
  EXPECT_THAT(entries[0].m_sMessage, HasSubstr("<Message>100% wrong: %s %n</Message>"));
  EXPECT_EQ(eLOG_ERROR, entries[1].m_eSeverity);
  EXPECT_EQ("plain", entries[1].m_sForm);
  EXPECT_EQ("Error Handled: 100% wrong: %s %n", entries[1].m_sMessage);
}

TEST(LogAlerts, CriticalErrorsAreAlarms) {
  TapeHandler handler;
  try {
    OXA_RAISE_ERROR("Alerts.Critical", Meltdown());
  } catch (Meltdown&) {
  }
  const auto entries = handler.Await("Alerts.Critical", 2);
  ASSERT_EQ(2U, entries.size());
  EXPECT_EQ(eLOG_ALARM, entries[0].m_eSeverity);
  EXPECT_EQ(eLOG_ALARM, entries[1].m_eSeverity);
  EXPECT_EQ("Error Handled: 100% hot: %s %n", entries[1].m_sMessage);
}

TEST(LogAlerts, ErrorsIgnoreEveryFilter) {
  TapeHandler handler;
  GetLogger("Alerts.Deaf")->SetSeverityFilters(0);
  LogManager::Instance()->SetSeverityFilters("Alerts.Deaf", 0);
  RaiseAndCatch("Alerts.Deaf");
  EXPECT_EQ(2U, handler.Await("Alerts.Deaf", 2).size());
}

TEST(LogAlerts, ErrorsMakeNoLogger) {
  TapeHandler handler;
  RaiseAndCatch("Alerts.NoLogger");
  handler.Await("Alerts.NoLogger", 2);
  EXPECT_FALSE(LogManager::Instance()->Exists("Alerts.NoLogger"));
}

TEST(LogAlerts, LongErrorsAreLoggedWhole) {
  TapeHandler handler;
  const std::string text(50000, 'x');
  try {
    OXA_RAISE_ERROR("Alerts.Long", LogicError(text));
  } catch (LogicError&) {
  }
  const auto entries = handler.Await("Alerts.Long", 2);
  ASSERT_EQ(2U, entries.size());
  EXPECT_THAT(entries[0].m_sMessage, HasSubstr(text));
  EXPECT_EQ("Error Handled: " + text, entries[1].m_sMessage);
}

TEST(LogAlerts, UncaughtErrorsAreLoggedAsXML) {
  TapeHandler handler;
  LogicError error("nobody caught it");
  error.SetData(AlertInfo::sLOG_NAME, "Alerts.Uncaught");
  LogManager::Instance()->UncaughtFatalError(error, "/some/folder");
  const auto entries = handler.Await("Alerts.Uncaught", 1);
  ASSERT_EQ(1U, entries.size());
  EXPECT_EQ(eLOG_ERROR, entries[0].m_eSeverity);
  EXPECT_EQ("xml", entries[0].m_sForm);
  EXPECT_THAT(entries[0].m_sMessage, HasSubstr("<Circumstance>Uncaught Fatal Error</Circumstance>"));
}

TEST(LogAlerts, WarningsAreLoggedThroughTheirLogger) {
  TapeHandler handler;
  OXA_RAISE_WARNING("Alerts.Warning", ErrorSlicedOnThrow("100% late: %s"));
  const auto entries = handler.Await("Alerts.Warning", 1);
  ASSERT_EQ(1U, entries.size());
  EXPECT_EQ(eLOG_WARNING, entries[0].m_eSeverity);
  EXPECT_EQ("xml", entries[0].m_sForm);
  EXPECT_THAT(entries[0].m_sMessage, StartsWith("<Warning>"));
  EXPECT_THAT(entries[0].m_sMessage, HasSubstr("100% late: %s"));
  EXPECT_THAT(entries[0].m_sMessage, testing::Not(HasSubstr("<Circumstance>")));
  EXPECT_TRUE(LogManager::Instance()->Exists("Alerts.Warning"));
}

TEST(LogAlerts, WarningsHeedTheFilterOfTheirLogger) {
  TapeHandler handler;
  GetLogger("Alerts.Silent")->SetSeverityFilters(uDEFAULT_LOG_FILTERS & ~(1U << eLOG_WARNING));
  OXA_RAISE_WARNING("Alerts.Silent", ErrorSlicedOnThrow("not heard"));
  GetLogger("Alerts.Silent")->WriteLog(eLOG_ERROR, "end");
  const auto entries = handler.Await("Alerts.Silent", 1);
  ASSERT_EQ(1U, entries.size());
  EXPECT_EQ("end", entries[0].m_sMessage);
}

TEST(LogAlerts, WarningsUnderARefusedPathReturnAllTheSame) {
  TapeHandler handler;
  OXA_RAISE_WARNING("Alerts..Refused", ErrorSlicedOnThrow("lost"));
  GetLogger("Alerts.Refused")->WriteLog(eLOG_ERROR, "end");
  handler.Await("Alerts.Refused", 1);
  EXPECT_TRUE(handler.Of("Alerts..Refused").empty());
}

TEST(LogAlerts, FailedAssertsOfHostsAreErrors) {
  TapeHandler handler;
  EXPECT_FALSE(LogAssertFailed("2 + 2 == 5", CodeContext("file.cpp", 12, "build", "F", "void F()")));
  const auto entries = handler.Await("", 1);
  ASSERT_EQ(1U, entries.size());
  EXPECT_EQ(eLOG_ERROR, entries[0].m_eSeverity);
  EXPECT_EQ("xml", entries[0].m_sForm);
  EXPECT_THAT(entries[0].m_sMessage, HasSubstr("<Message>2 + 2 == 5</Message>"));
}

TEST(LogAlerts, ReachTheLogWithoutBufferingBeforeTheRaiseThrows) {
  const LogTests::Unbuffered unbuffered;
  TapeHandler handler;
  try {
    OXA_RAISE_ERROR("Alerts.Direct", LogicError("direct"));
  } catch (LogicError&) {
    EXPECT_EQ(1U, handler.Of("Alerts.Direct").size());
  }
  EXPECT_EQ(2U, handler.Of("Alerts.Direct").size());
}

// Whoever raises in a handler is dropped, and that is in the log like any other error.
TEST(LogAlerts, OfAHandlerAreLoggedAndTheHandlerIsDropped) {
  TapeHandler failing([](const OxaLogEntry& entry) {
    if (entry.m_sLoggerPath == "Alerts.Trigger") OXA_RAISE_ERROR("Alerts.FromHandler", LogicError("no"));
  });
  TapeHandler handler;
  GetLogger("Alerts.Trigger")->WriteLog(eLOG_ERROR, "go");
  EXPECT_EQ(2U, handler.Await("Alerts.FromHandler", 2).size());
  EXPECT_TRUE(failing.Of("Alerts.FromHandler").empty());
}

}  // namespace
