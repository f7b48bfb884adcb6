// What a host sets for the end of its process, and the texts that it may hear then.
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/FatalErrorWarnings.h>
#include <Infrastructure/OxaCore/System.h>

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <vector>

#include "Support/Together.h"

namespace {

using namespace Oxa::Core;

AlertManager& Manager() { return *AlertManager::Instance(); }

// Collects "log name: message".
class WarningTape : public AlertListener {
 public:
  WarningTape() { Manager().AddAlertListener(*this); }
  void WarningRaised(Warning& warning) override {
    m_warnings.push_back(warning.GetData(AlertInfo::sLOG_NAME) + ": " + warning.GetData(AlertInfo::sMESSAGE));
  }
  std::vector<std::string> m_warnings;
};

TEST(FatalSettings, BasePathBeginsAsTheProgramsFolder) {
  std::string path;
  System::Instance()->GetProcessPath(path);
  EXPECT_EQ(path, Manager().GetFatalErrorBasePath());
}

TEST(FatalSettings, BasePathEndsInASeparator) {
  EXPECT_TRUE(Manager().SetFatalErrorBasePath("C:\\temp\\test\\"));
  EXPECT_EQ("C:\\temp\\test\\", Manager().GetFatalErrorBasePath());
  EXPECT_TRUE(Manager().SetFatalErrorBasePath("C:\\temp\\test"));
  EXPECT_EQ("C:\\temp\\test/", Manager().GetFatalErrorBasePath());
  EXPECT_TRUE(Manager().SetFatalErrorBasePath("/var/records"));
  EXPECT_EQ("/var/records/", Manager().GetFatalErrorBasePath());
  EXPECT_TRUE(Manager().SetFatalErrorBasePath("/var/records/"));
  EXPECT_EQ("/var/records/", Manager().GetFatalErrorBasePath());
}

// Whoever reads it finds one that was set, whole.
TEST(FatalSettings, BasePathIsSetAndReadByManyThreads) {
  const std::string paths[] = {"/" + std::string(40, 'a') + '/', "/" + std::string(200, 'b') + '/'};
  ASSERT_TRUE(Manager().SetFatalErrorBasePath(paths[0]));
  std::atomic<int> wrong{0};
  TestSupport::Together(4, [&](int thread) {
    for (int round = 0; round < 2000; ++round) {
      if (thread < 2) Manager().SetFatalErrorBasePath(paths[(round + thread) % 2]);
      const std::string path = Manager().GetFatalErrorBasePath();
      if (path != paths[0] && path != paths[1]) ++wrong;
    }
  });
  EXPECT_EQ(0, wrong);
}

TEST(FatalSettings, InvalidBasePathIsRefused) {
  const std::string validPath = "C:\\temp\\test\\";
  ASSERT_TRUE(Manager().SetFatalErrorBasePath(validPath));
  WarningTape tape;
  EXPECT_FALSE(Manager().SetFatalErrorBasePath("C:|||junk|||temp\\test"));
  EXPECT_FALSE(Manager().SetFatalErrorBasePath(""));
  EXPECT_TRUE(validPath == AlertManager::Instance()->GetFatalErrorBasePath());
  ASSERT_EQ(2U, tape.m_warnings.size());
  EXPECT_EQ(
      "Oxa.Core.AlertManager.SetFatalErrorBasePath: Attempted to set an invalid fatal error base path of:\n"
      "C:|||junk|||temp\\test",
      tape.m_warnings[0]);
}

TEST(FatalSettings, OneReportAndNoSignalUnlessTheHostWantsThem) {
  EXPECT_EQ(1, AlertManager::GetMaxFatalErrorReports());
  EXPECT_FALSE(AlertManager::GetEndBySignal());
  AlertManager::SetEndBySignal(true);
  EXPECT_TRUE(AlertManager::GetEndBySignal());
  AlertManager::SetEndBySignal(false);
  EXPECT_FALSE(AlertManager::GetEndBySignal());
}

template <class Alert>
std::string TextOf(const Alert& alert) {
  EXPECT_EQ("Warning", alert.GetData(AlertInfo::sSEVERITY));
  return alert.GetData(AlertInfo::sMESSAGE);
}

TEST(FatalSettings, TextsOfWarnings) {
  EXPECT_EQ("Attempted to set an invalid fatal error base path of:\np", TextOf(InvalidFatalErrorPath("p")));
  EXPECT_EQ("Failed to create fatal error directory named:\np", TextOf(CreateFatalErrorPathFailed("p")));
  EXPECT_EQ("Storing fatal error information in fallback path of\np", TextOf(FallbackFatalErrorPath("p")));
  EXPECT_EQ("Failed to open file to generate the XML error report named:\np",
            TextOf(OpenXMLErrorReportFailed("p")));
  EXPECT_EQ(
      "Potential infinite error recursion was halted in OxaUnhandledExceptionFilter after it was reentered 3 "
      "times",
      TextOf(HaltingUncaughtErrorRecursion(3)));
  EXPECT_EQ("Storing minidump in fallback path of\np", TextOf(MSWindows::FallbackMinidumpPath("p")));
}

}  // namespace
