// What becomes of failures that leave a broadcast, seen by putting failing hooks in place of the library's own.
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/CommonErrors.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <stdexcept>

#include "Core/LibraryGlobals.h"
#include "ErrorHandling/Hooks.h"
#include "ErrorHandling/RawChannel.h"
#include "Support/RestoreHooks.h"

namespace {

using namespace Oxa::Core;
using testing::ElementsAre;
using testing::HasSubstr;

struct Seen {
  std::vector<std::string> m_classes;   // asked whether they may be told
  std::vector<std::string> m_messages;  // told
  std::vector<std::string> m_logNames;
};

Seen g_seen;
std::function<bool(const std::string&)> g_mayWarn;

bool MayWarn(const std::string& className) {
  g_seen.m_classes.push_back(className);
  return g_mayWarn(className);
}

void KeepWarning(Warning& warning) {
  g_seen.m_messages.push_back(warning.GetData(AlertInfo::sMESSAGE));
  g_seen.m_logNames.push_back(warning.GetData(AlertInfo::sLOG_NAME));
}

// An alert listener that fails at every raised error, and hooks that let the telling of it fail.
class AlertBroadcast : public testing::Test {
 protected:
  class Failing : public AlertListener {
   public:
    void ErrorRaised(Error&) override { throw LogicError("listener failed"); }
  };

  AlertBroadcast() : m_hooks(TheHooks()) {
    g_seen = Seen();
    TheHooks().mayWarn = &MayWarn;
    TheHooks().warningRaised = &KeepWarning;
    AlertManager::Instance()->AddAlertListener(m_failing);
  }
  ~AlertBroadcast() override { TestSupport::RestoreHooks(m_hooks); }

  // What standard error shows of one raise.
  static std::string Raise() {
    testing::internal::CaptureStderr();
    EXPECT_THROW(OXA_RAISE_ERROR("Test", NullPointer("p")), NullPointer);
    return testing::internal::GetCapturedStderr();
  }

  static bool IsAboutListener(const std::string& className) {
    return className == typeid(ListenerErrorOnNotification).name();
  }

 private:
  Hooks m_hooks;
  Failing m_failing;
};

TEST_F(AlertBroadcast, WarningThatThrowsAnErrorIsToldAsAnErrorDuringNotification) {
  g_mayWarn = [](const std::string& className) {
    if (IsAboutListener(className)) throw LogicError("warning failed");
    return true;
  };
  EXPECT_EQ("", Raise());
  EXPECT_THAT(g_seen.m_messages, ElementsAre("Error occurred during an alert notification:\nwarning failed"));
  EXPECT_THAT(g_seen.m_logNames, ElementsAre("OxaCore.AlertManager.AlertBroadcast"));
}

TEST_F(AlertBroadcast, WarningThatThrowsSomethingElseIsToldAsUnknown) {
  g_mayWarn = [](const std::string& className) {
    if (IsAboutListener(className)) throw 42;
    return true;
  };
  EXPECT_EQ("", Raise());
  EXPECT_THAT(g_seen.m_messages, ElementsAre("Error occurred during an alert notification:\n"
                                             "Unknown error in alert listener during alert notification"));
}

TEST_F(AlertBroadcast, SecondWarningThatThrowsAnErrorGoesToStandardError) {
  g_mayWarn = [](const std::string&) -> bool { throw LogicError("all warnings fail"); };
  const std::string error = Raise();
  EXPECT_THAT(g_seen.m_classes, ElementsAre(typeid(ListenerErrorOnNotification).name(),
                                            typeid(ErrorDuringAlertNotification).name()));
  EXPECT_EQ(0U, error.find("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"));
  EXPECT_THAT(error, HasSubstr("Error in alert listener during alert notification"));
  EXPECT_THAT(error, HasSubstr("all warnings fail"));
  EXPECT_THAT(error, HasSubstr("</Error>"));
}

TEST_F(AlertBroadcast, SecondWarningThatThrowsSomethingElseGoesToStandardErrorAsALine) {
  g_mayWarn = [](const std::string&) -> bool { throw 42; };
  EXPECT_EQ("Unkown error in alert listener during alert notification\n", Raise());
}

TEST_F(AlertBroadcast, StandardExceptionOfTheSecondWarningIsSomethingElse) {
  g_mayWarn = [](const std::string&) -> bool { throw std::runtime_error("x"); };
  EXPECT_EQ("Unkown error in alert listener during alert notification\n", Raise());
}

TEST(AlertManagerGlobals, LastErrorOfTheThreadIsKeptUnderItsName) {
  try {
    OXA_RAISE_ERROR("Test", LogicError("kept"));
  } catch (Error&) {
  }
  const CurrentErrors* const errors = FindLibraryGlobal<CurrentErrors>("CurrentErrors");
  ASSERT_NE(nullptr, errors);
  Error found(AlertInfo::eERROR);
  ASSERT_TRUE(errors->Find(0, found));
  EXPECT_STREQ("kept", found.what());
}

TEST(AlertManagerGlobals, ManagerIsAGlobal) {
  ASSERT_NE(nullptr, AlertManager::Instance());
  EXPECT_EQ(AlertManager::Instance(), FindLibraryGlobal<AlertManager>("AlertManager"));
  EXPECT_EQ(nullptr, FindLibraryGlobal<CurrentErrors>("AlertManager"));
}

TEST(AlertManagerGlobals, WithoutTheManagerAlertsAreToldToNobodyAndThrownAllTheSame) {
  const std::terminate_handler ours = std::get_terminate();
  LibraryGlobals()->Remove<AlertManager>("AlertManager");
  EXPECT_EQ(nullptr, AlertManager::Instance());
  EXPECT_NE(ours, std::get_terminate()) << "the previous terminate handler is back";
  EXPECT_THROW(OXA_RAISE_ERROR("Test", NullPointer("p")), NullPointer);
  EXPECT_THROW(OXA_RAISE_ERROR_IN_PLACE("Test", NullPointer("p")), NullPointer);
  OXA_RAISE_WARNING("Test", ListenerErrorOnNotification("told to nobody"));
  LibraryGlobals()->Add<AlertManager>("AlertManager");
  EXPECT_EQ(AlertManager::Instance(), FindLibraryGlobal<AlertManager>("AlertManager"));
  EXPECT_EQ(ours, std::get_terminate());
}

TEST(RawChannel, ElementHasNoProlog) {
  testing::internal::CaptureStderr();
  LogicError error("a < b");
  WriteAlertElement(error, "On trial");
  const std::string text = testing::internal::GetCapturedStderr();
  EXPECT_EQ(std::string::npos, text.find("<?xml"));
  EXPECT_THAT(text, HasSubstr("<Error>"));
  EXPECT_THAT(text, HasSubstr("On trial"));
  EXPECT_THAT(text, HasSubstr("a &lt; b"));
  EXPECT_EQ("</Error>\n", text.substr(text.size() - 9)) << "what follows begins on a line of its own";
}

TEST(RawChannel, StreamThatThrowsIsNoFault) {
  struct Full : std::streambuf {};
  Full full;
  std::streambuf* const before = std::cerr.rdbuf(&full);
  std::cerr.exceptions(std::ios_base::badbit | std::ios_base::failbit);
  EXPECT_THROW(std::cerr << "a stream that takes nothing", std::ios_base::failure);
  std::cerr.clear();
  LogicError error("lost");
  EXPECT_NO_THROW(WriteAlertDocument(error, "On trial"));
  std::cerr.clear();
  EXPECT_NO_THROW(WriteRawLine("lost too"));
  std::cerr.exceptions(std::ios_base::goodbit);
  std::cerr.rdbuf(before);
}

}  // namespace
