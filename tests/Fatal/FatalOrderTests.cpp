// What the manager does with an error that nobody catches, step by step.
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/CommonErrors.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>

#include "Core/LibraryState.h"
#include "ErrorHandling/FatalErrorReport.h"
#include "ErrorHandling/Hooks.h"
#include "Support/RestoreHooks.h"
#include "Support/TemporaryFolder.h"

namespace {

using namespace Oxa::Core;
using testing::EndsWith;
using testing::HasSubstr;
using TestSupport::ReadFile;
using TestSupport::TemporaryFolder;

// Leads to the step that the terminate handler takes.
class Manager : public AlertManager {
 public:
  static void TellFatal(Error& error) {
    void (AlertManager::*const step)(Error&) = &Manager::OnFatalError;
    (AlertManager::Instance()->*step)(error);
  }
};

std::string s_sBase;
std::string s_sTold;

// The folder of reports is settled once in a process, and every test case is a process of its own.
class FatalOrder : public testing::Test {
 protected:
  FatalOrder() : m_hooks(TheHooks()) {
    s_sTold.clear();
    s_sBase = m_base.Path();
    AlertManager::Instance()->SetFatalErrorBasePath(s_sBase);
  }
  ~FatalOrder() override { TestSupport::RestoreHooks(m_hooks); }

  const TemporaryFolder m_base;

 private:
  const Hooks m_hooks;
};

// An error that is raised and caught, and told as fatal in between if that is wanted; it ends as a copy of a copy.
void Survive(bool fatal) {
  try {
    OXA_RAISE_ERROR("Test", LogicError("survived"));
  } catch (Error& error) {
    if (fatal) Manager::TellFatal(error);
    const boost::shared_ptr<Error> clone = error.Clone();
    Error last(AlertInfo::eERROR);
    last = *clone;
  }
}

TEST_F(FatalOrder, EndOfAFatalErrorIsNotToldAsHandled) {
  TheHooks().errorHandled = [](Error& error) { s_sTold += error.what(); };
  Survive(true);
  EXPECT_EQ("", s_sTold);
  Survive(false);
  EXPECT_EQ("survived", s_sTold);
}

TEST_F(FatalOrder, CopyThatLeavesTheMarkBehindIsFatalToo) {
  TheHooks().errorHandled = [](Error& error) { s_sTold += error.what(); };
  try {
    OXA_RAISE_ERROR("Test", LogicError("raised"));
  } catch (Error& error) {
    LogicError fatal("fatal");
    Manager::TellFatal(fatal);
    error.Copy(fatal, false);
    s_sTold += ", ";
    Error last(AlertInfo::eERROR);
    last.Copy(fatal, false);
    EXPECT_THROW(OXA_RAISE_ERROR("Test", last), Error);
  }
  EXPECT_EQ("raised, ", s_sTold);
}

TEST_F(FatalOrder, LogStopsBufferingAheadOfTheFolder) {
  TheHooks().stopBuffering = [] { s_sTold = std::filesystem::is_empty(s_sBase) ? "no folder" : "a folder"; };
  LogicError error("fatal");
  Manager::TellFatal(error);
  EXPECT_EQ("no folder", s_sTold);
  EXPECT_EQ(1U, m_base.Names().size());
}

class Reader : public AlertListener {
 public:
  Reader() { AlertManager::Instance()->AddAlertListener(*this); }
  void UncaughtFatalError(Error&, const std::string& fatalErrorPath) override {
    s_sTold = ReadFile(fatalErrorPath + "ErrorInfo.xml");
    std::fputs("told\n", stderr);
  }
};

TEST_F(FatalOrder, ListenersHearWhenTheReportIsWhole) {
  const Reader reader;
  LogicError error("fatal");
  Manager::TellFatal(error);
  EXPECT_THAT(s_sTold, HasSubstr("<Message>fatal</Message>"));
  EXPECT_THAT(s_sTold, EndsWith("</Error>\n"));
}

// A process that dies in the middle of a test loses all that the test holds, and sanitizers have a status of their own
// for that.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(FatalOrder, StandardErrorHasTheAlertBehindTheListeners) {
  const auto die = [] {
    const Reader reader;
    std::terminate();
  };
  EXPECT_EXIT(die(), testing::ExitedWithCode(255),
              "told\n<.xml(.|\n)*<Circumstance>Fatal unhandled error</Circumstance>");
}

// The thread's last error is no longer looked up then.
TEST_F(FatalOrder, WhileTheLibraryUnloadsAnUnknownErrorStandsIn) {
  EXPECT_THROW(OXA_RAISE_ERROR("Test", LogicError("earlier")), LogicError);
  const auto die = [] {
    SetLibraryUnloading();
    std::terminate();
  };
  EXPECT_EXIT(die(), testing::ExitedWithCode(255), "<Message>No Message</Message>");
}
#endif

TEST_F(FatalOrder, ReportThatCanNotBeOpenedHasItsNumberAllTheSame) {
  std::filesystem::create_directory(m_base.File("ErrorInfo.xml"));
  LogicError error("fatal");
  WriteFatalErrorReport(m_base.File(""), {}, error);
  WriteFatalErrorReport(m_base.File(""), {}, error);
  EXPECT_THAT(m_base.Read("ErrorInfo3.xml"), HasSubstr("<Message>fatal</Message>"));
}

}  // namespace
