// Loggers by path, and what the manager asks the service in force.
#include <Infrastructure/OxaCore/LogManager.h>

#include <gtest/gtest.h>

#include <list>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "LogTape.h"

namespace {

using namespace Oxa::Core;
using LogTests::GetLogger;
using LogTests::TapeService;

LogManager& Manager() { return *LogManager::Instance(); }

// A service in force for the length of a test.
class WithService : public testing::Test {
 protected:
  WithService() { Manager().InstallLogService(m_service); }
  ~WithService() override {
    m_service.m_onCall = {};  // what it refers to is gone
    Manager().UninstallLogService(m_service);
  }

  TapeService m_service;
};

using LogManagerLoggers = WithService;

TEST_F(LogManagerLoggers, AreTheSameObjectForTheSamePath) {
  const auto first = GetLogger("Loggers.Same");
  EXPECT_EQ("Loggers.Same", first->GetPath());
  EXPECT_EQ(first, GetLogger("Loggers.Same"));
  EXPECT_NE(first, GetLogger("Loggers.Other"));
  EXPECT_EQ(1, m_service.CountOf("register Loggers.Same"));
}

TEST_F(LogManagerLoggers, ArePutOnTheDefaultFilterOnlyWhileTheServiceSaysNothing) {
  EXPECT_EQ(46U, GetLogger("Loggers.Filter")->GetSeverityFilters());
}

TEST_F(LogManagerLoggers, OfARefusedPathAreNotMade) {
  int refusals = 0;
  m_service.m_onCall = [&refusals](const std::string& call) {
    if (call == "register Loggers..Bad" && ++refusals == 1)
      OXA_RAISE_ERROR("Test.Service", InvalidLogPath("Loggers..Bad"));
  };
  try {
    GetLogger("Loggers..Bad");
    FAIL() << "no error";
  } catch (InvalidLogPath& error) {
    EXPECT_STREQ("Invalid log path: Loggers..Bad", error.what());
  }
  EXPECT_TRUE(GetLogger("Loggers..Bad"));
  EXPECT_EQ(2, refusals);
}

TEST_F(LogManagerLoggers, AreKeptWhateverElseTheServiceThrows) {
  m_service.m_onCall = [](const std::string& call) {
    if (call == "register Loggers.Odd") throw std::runtime_error("odd");
    if (call == "register Loggers.Error") OXA_RAISE_ERROR("Test.Service", LogicError("no"));
    if (call == "register Loggers.Number") throw 5;
  };
  for (const char* path : {"Loggers.Odd", "Loggers.Error", "Loggers.Number"}) {
    const auto logger = GetLogger(path);
    ASSERT_TRUE(logger);
    EXPECT_EQ(logger, GetLogger(path));
    EXPECT_EQ(1, m_service.CountOf(std::string("register ") + path));
  }
}

TEST_F(LogManagerLoggers, ThatTheServiceAsksForMeanwhileAreNotRegistered) {
  m_service.m_onCall = [](const std::string& call) {
    if (call == "register Loggers.Outer") GetLogger("Loggers.Inner")->WriteLog(eLOG_ERROR, "inside");
  };
  const auto outer = GetLogger("Loggers.Outer");
  EXPECT_TRUE(outer);
  EXPECT_EQ(0, m_service.CountOf("register Loggers.Inner"));
  EXPECT_TRUE(GetLogger("Loggers.Inner"));
  EXPECT_EQ(0, m_service.CountOf("register Loggers.Inner"));
}

TEST_F(LogManagerLoggers, ThatTheServiceAsksForWhileItIsRegisteredAreTheSame) {
  boost::shared_ptr<Logger> inner;
  m_service.m_onCall = [&inner](const std::string& call) {
    if (call == "register Loggers.Itself") inner = GetLogger("Loggers.Itself");
  };
  EXPECT_EQ(GetLogger("Loggers.Itself"), inner);
}

TEST_F(LogManagerLoggers, AreMadeOnceForManyThreads) {
  constexpr int iTHREADS = 8;
  constexpr int iPATHS = 200;
  std::vector<std::vector<boost::shared_ptr<Logger>>> found(iTHREADS);
  std::vector<std::thread> threads;
  for (auto& loggers : found) {
    threads.emplace_back([&loggers] {
      for (int i = 0; i < iPATHS; ++i) loggers.push_back(GetLogger("Race.P" + std::to_string(i)));
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (int i = 1; i < iTHREADS; ++i) EXPECT_EQ(found[0], found[static_cast<std::size_t>(i)]);
  for (int i = 0; i < iPATHS; ++i) EXPECT_EQ(1, m_service.CountOf("register Race.P" + std::to_string(i)));
}

TEST_F(LogManagerLoggers, AreForgottenAndMadeAnew) {
  const auto logger = GetLogger("Loggers.Gone");
  Manager().UnregisterLogger("Loggers.Gone");
  EXPECT_EQ(1, m_service.CountOf("unregister Loggers.Gone"));
  EXPECT_NE(logger, GetLogger("Loggers.Gone"));
  logger->WriteLog(eLOG_ERROR, "whoever holds it may go on");
}

TEST_F(LogManagerLoggers, ThatNobodyKnowsAreNotForgotten) {
  Manager().UnregisterLogger("Loggers.NeverMade");
  EXPECT_EQ(0, m_service.CountOf("unregister Loggers.NeverMade"));
}

TEST_F(LogManagerLoggers, StayWhenTheServiceRefusesToForgetThem) {
  const auto logger = GetLogger("Loggers.Stays");
  bool refuse = true;
  m_service.m_onCall = [&refuse](const std::string& call) {
    if (refuse && call == "unregister Loggers.Stays")
      OXA_RAISE_ERROR("Test.Service", InvalidLogPath("Loggers.Stays"));
  };
  EXPECT_THROW(Manager().UnregisterLogger("Loggers.Stays"), InvalidLogPath);
  EXPECT_EQ(logger, GetLogger("Loggers.Stays"));
  refuse = false;
  Manager().UnregisterLogger("Loggers.Stays");
  EXPECT_NE(logger, GetLogger("Loggers.Stays"));
}

TEST_F(LogManagerLoggers, AreForgottenWhateverElseTheServiceThrows) {
  const auto logger = GetLogger("Loggers.Failing");
  m_service.m_onCall = [](const std::string& call) {
    if (call == "unregister Loggers.Failing") throw std::runtime_error("no");
  };
  Manager().UnregisterLogger("Loggers.Failing");
  EXPECT_NE(logger, GetLogger("Loggers.Failing"));
}

// The default service holds no pointer to a logger that died while another service was in force.
TEST(LogManagerLoggersOfBothServices, AreForgottenByTheDefaultServiceToo) {
  TapeService service;
  auto logger = GetLogger("Both.Gone");
  Manager().InstallLogService(service);
  Manager().UnregisterLogger("Both.Gone");
  logger.reset();
  Manager().UninstallLogService(service);
  Manager().InstallLogService(service);  // hands over what the default service knows
  EXPECT_EQ(1, service.CountOf("register Both.Gone"));
}

using LogManagerPaths = WithService;

TEST_F(LogManagerPaths, AreAskedOfTheServiceInForce) {
  Manager().SetSeverityFilters("Paths.A", 4);
  EXPECT_EQ(1, m_service.CountOf("set Paths.A 4"));
  EXPECT_EQ(12U, Manager().GetSeverityFilters("Paths.A"));
  EXPECT_EQ(1, m_service.CountOf("get Paths.A"));
  EXPECT_TRUE(Manager().Exists("Known"));
  EXPECT_FALSE(Manager().Exists("Unknown"));
}

TEST_F(LogManagerPaths, AreListedAnew) {
  std::list<std::string> names = {"old"};
  Manager().EnumLoggers("Paths", names);
  EXPECT_EQ(std::list<std::string>{"Child"}, names);
  EXPECT_EQ(1, m_service.CountOf("enum Paths"));
}

TEST_F(LogManagerPaths, ThatAreRefusedAreTheCallersBusiness) {
  m_service.m_onCall = [](const std::string&) { OXA_RAISE_ERROR("Test.Service", InvalidLogPath("A..B")); };
  EXPECT_THROW(Manager().SetSeverityFilters("A..B", 2), InvalidLogPath);
  EXPECT_THROW(Manager().GetSeverityFilters("A..B"), InvalidLogPath);
}

TEST_F(LogManagerPaths, FiltersSwallowAllOtherFailures) {
  m_service.m_onCall = [](const std::string&) { throw std::runtime_error("no"); };
  Manager().SetSeverityFilters("Paths.B", 2);
  EXPECT_EQ(46U, Manager().GetSeverityFilters("Paths.B"));
}

TEST_F(LogManagerPaths, ListsAndQuestionsLetFailuresThrough) {
  m_service.m_onCall = [](const std::string&) { throw std::runtime_error("no"); };
  std::list<std::string> names = {"old"};
  EXPECT_THROW(Manager().EnumLoggers("Paths", names), std::runtime_error);
  EXPECT_TRUE(names.empty());
  EXPECT_THROW(Manager().Exists("Paths"), std::runtime_error);
}

TEST(LogManagerPathsOfTheDefaultService, NarrowTheFiltersOfLaterLoggers) {
  EXPECT_EQ(46U, Manager().GetSeverityFilters("Default.Narrow"));
  Manager().SetSeverityFilters("Default.Narrow", 2);
  const auto logger = GetLogger("Default.Narrow.Below");
  EXPECT_EQ(2U, logger->GetSeverityFilters());
  Manager().SetSeverityFilters("Default.Narrow", 46);
  EXPECT_EQ(2U, logger->GetSeverityFilters());
  std::list<std::string> names;
  Manager().EnumLoggers("Default.Narrow", names);
  EXPECT_EQ(std::list<std::string>{"Below"}, names);
  EXPECT_TRUE(Manager().Exists("Default.Narrow.Below"));
  EXPECT_THROW(GetLogger("Default..Bad"), InvalidLogPath);
  EXPECT_THROW(Manager().SetSeverityFilters("Default..Bad", 2), InvalidLogPath);
}

}  // namespace
