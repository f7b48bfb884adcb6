// Runs of the module's own suite, in hosts of several kinds.
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/OxaCore.h>

#include <gtest/gtest.h>
#include <stdlib.h>

#include <boost/make_shared.hpp>
#include <cfenv>
#include <clocale>
#include <cstdlib>
#include <locale>
#include <set>
#include <stdexcept>

#include "AutoTest/ModuleSuite.h"
#include "Support/TemporaryFolder.h"
#include "Support/Together.h"

namespace {

using namespace Oxa::Core;
using namespace ModuleSuiteTests;
using TestSupport::TemporaryFolder;

const char* const sTEMPORARY = "TMPDIR";
const char* const sZONE = "TZ";

// The system's folder for temporary files, as long as this lives.
class TemporaryFilesIn {
 public:
  explicit TemporaryFilesIn(const std::string& folder) { ::setenv(sTEMPORARY, folder.c_str(), 1); }
  TemporaryFilesIn(const TemporaryFilesIn&) = delete;
  TemporaryFilesIn& operator=(const TemporaryFilesIn&) = delete;
  ~TemporaryFilesIn() { ::unsetenv(sTEMPORARY); }
};

TEST(ModuleSuiteRun, PassesAndLeavesNothingBehind) {
  const TemporaryFolder folder;
  const TemporaryFolder working;
  const TemporaryFilesIn temporary(folder.Path());
  const TestSupport::CurrentFolder current(working.Path());
  const std::string base = AlertManager::Instance()->GetFatalErrorBasePath();
  const Suite suite = GetModuleTestSuite();
  ExpectAllPass(*suite);
  EXPECT_EQ(std::set<std::string>(), folder.Names());
  EXPECT_EQ(std::set<std::string>(), working.Names());
  EXPECT_EQ(base, AlertManager::Instance()->GetFatalErrorBasePath());
}

TEST(ModuleSuiteRun, PassesOnTwoThreadsAtOnceAndOverAndOver) {
  const Suite shared = GetModuleTestSuite();
  TestSupport::Together(2, [&](int thread) { ExpectAllPass(thread == 0 ? *shared : *GetModuleTestSuite()); });
  ExpectAllPass(*shared);
}

TEST(ModuleSuiteRun, PassesAfterTheShutdown) {
  Shutdown();
  ExpectAllPass(*GetModuleTestSuite());
}

// Throws at every alert.
class WildListener : public AlertListener {
 public:
  WildListener() { AlertManager::Instance()->AddAlertListener(*this); }
  ~WildListener() override { AlertManager::Instance()->RemoveAlertListener(*this); }

  void ErrorRaised(Error&) override { throw std::runtime_error("wild"); }
  void ErrorHandled(Error&) override { throw std::runtime_error("wild"); }
  void WarningRaised(Warning&) override { throw std::runtime_error("wild"); }
};

// Settles everything that is raised in place.
class GreedyHandler : public ErrorHandler {
 public:
  bool Handle(Error&) override { return true; }
};

void RunInACatchClause(TestSuite& suite) {
  try {
    OXA_RAISE_ERROR("Acme.Host", LogicError("the host's own"));
  } catch (const Error&) {
    ExpectAllPass(suite);
  }
}

TEST(ModuleSuiteRun, PassesInAHostWithListenersHandlersAndLimitsOfItsOwn) {
  const WildListener listener;
  const auto handler = boost::make_shared<GreedyHandler>();
  AlertManager* const manager = AlertManager::Instance();
  manager->AddErrorHandler(typeid(Error).name(), handler);
  manager->SetMaxWarnings(typeid(ListenerErrorOnNotification).name(), 0, true);
  RunInACatchClause(*GetModuleTestSuite());
  manager->SetMaxWarnings(typeid(ListenerErrorOnNotification).name(), AlertRecord::GetInfiniteWarnings(),
                          true);
  manager->RemoveErrorHandler(typeid(Error).name(), handler);
}

// Keeps the messages of the failures that are raised, and the name under which the last one was.
class FailureListener : public AlertListener {
 public:
  FailureListener() { AlertManager::Instance()->AddAlertListener(*this); }
  ~FailureListener() override { AlertManager::Instance()->RemoveAlertListener(*this); }

  void ErrorRaised(Error& error) override {
    if (dynamic_cast<SelfTest::Failure*>(&error) == nullptr) return;
    m_messages.push_back(error.what());
    m_sLogName = error.GetData(AlertInfo::sLOG_NAME);
  }

  Texts m_messages;
  std::string m_sLogName;
};

// As people write numbers in many countries.
class CommasAndPoints : public std::numpunct<char> {
 protected:
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(ModuleSuiteRun, PassesInAHostWithALocaleOfItsOwn) {
  const std::locale before = std::locale::global(std::locale(std::locale(), new CommasAndPoints));
  ExpectAllPass(*GetModuleTestSuite());
  std::locale::global(before);
}

// Numbers with commas, and letters whose cases are others.
TEST(ModuleSuiteRun, PassesInOtherLanguages) {
  const TemporaryFolder folder;
  for (const char* const language : {"de_DE", "tr_TR"}) {
    const std::string make = std::string("localedef -f UTF-8 -i ") + language + ' ' + folder.File(language);
    if (std::system(make.c_str()) != 0) GTEST_SKIP() << "no localedef, or nothing to make a locale of";
  }
  ::setenv("LOCPATH", folder.Path().c_str(), 1);
  for (const char* const language : {"de_DE", "tr_TR"}) {
    ASSERT_NE(nullptr, std::setlocale(LC_ALL, language)) << language;
    ExpectAllPass(*GetModuleTestSuite());
  }
  std::setlocale(LC_ALL, "C");
  ::unsetenv("LOCPATH");
}

// Null for none. Nobody may read the environment while it changes: the log's thread is ended first.
void SetZone(const char* zone) {
  LogManager& log = *LogManager::Instance();
  log.SetBufferingMode(false);
  if (zone != nullptr)
    ::setenv(sZONE, zone, 1);
  else
    ::unsetenv(sZONE);
  log.SetBufferingMode(true);
}

// Dates are read by the zone of the load, and told by the one in force.
TEST(ModuleSuiteRun, PassesInAHostThatHasGoneToAnotherTimeZone) {
  const char* const before = std::getenv(sZONE);
  const std::string kept = before != nullptr ? before : "";
  for (const char* const zone : {"<+14>-14", "<-1130>11:30", "CET-1CEST,M3.5.0,M10.5.0/3"}) {
    SetZone(zone);
    ExpectAllPass(*GetModuleTestSuite());
  }
  SetZone(before != nullptr ? kept.c_str() : nullptr);
}

TEST(ModuleSuiteRun, PassesHoweverTheHostRounds) {
  for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
    ASSERT_EQ(0, std::fesetround(mode));
    ExpectAllPass(*GetModuleTestSuite());
    EXPECT_EQ(mode, std::fegetround());
  }
  std::fesetround(FE_TONEAREST);
}

TEST(ModuleSuiteRun, PassesInAFolderThatIsGone) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.File("gone"));
  const TestSupport::CurrentFolder current(folder.File("gone"));
  std::filesystem::remove(folder.File("gone"));
  ExpectAllPass(*GetModuleTestSuite());
}

// Without a folder for temporary files, those tests fail that need one, and no others.
TEST(ModuleSuiteRun, TellsWhatFails) {
  const TemporaryFilesIn temporary("/nowhere/at/all");
  const FailureListener listener;
  const Suite root = GetModuleTestSuite();
  ASSERT_TRUE(LeaveOnly(*root, "PathName Tests"));
  std::vector<Result> results;
  EXPECT_EQ(Result::eFAILED, root->RunTest(results));
  const std::string text = "no folder can be made in that for temporary files";
  EXPECT_EQ((Texts{"FileExists: " + text, "IsDir: " + text, "File Delete: " + text,
                   "Directory Create/Delete: " + text}),
            Failures(results));
  EXPECT_EQ(Texts(4, text), listener.m_messages);
  EXPECT_EQ("Oxa.Core.Test.Failure", listener.m_sLogName);
}

}  // namespace
