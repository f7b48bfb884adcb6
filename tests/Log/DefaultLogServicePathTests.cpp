// The default log service's tree of paths: what comes into being, what is refused, and whom it tells.
#include <Infrastructure/OxaCore/CommonErrors.h>

#include <Infrastructure/OxaCore/AlertManager.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <future>
#include <stdexcept>
#include <string>
#include <thread>

#include "Core/LibraryState.h"
#include "Log/DefaultLogService.h"
#include "Log/LogFakes.h"

namespace {

using namespace Oxa::Core;
using LogFakes::FakeLogger;
using LogFakes::Handler;

const char* const sSERVICE = "Oxa.Core.DefaultLogService";

class DefaultLogServicePaths : public testing::Test {
 protected:
  std::list<std::string> NamesOf(const std::string& rootPath) {
    std::list<std::string> names = {"old"};
    m_service.EnumLoggers(rootPath, names);
    names.sort();
    return names;
  }

  // Whether somebody else gets at the tree, so that no lock was left behind.
  void ExpectNothingIsLocked() {
    std::thread([this] { m_service.SetSeverityFilters("Free", 2); }).join();
    EXPECT_EQ(2u, m_service.GetSeverityFilters("Free"));
  }

  // The same for those who can't wait for it themselves, since they would stand in the way.
  bool IsTreeFree() {
    m_others.push_back(std::async(std::launch::async, [this] { m_service.SetSeverityFilters("Other", 2); }));
    return m_others.back().wait_for(std::chrono::seconds(10)) == std::future_status::ready;
  }

  DefaultLogService m_service;

 private:
  std::list<std::future<void>> m_others;
};

using Names = std::list<std::string>;

TEST_F(DefaultLogServicePaths, AskingForTheWordOfAPathMakesIt) {
  EXPECT_FALSE(m_service.Exists("A"));
  EXPECT_EQ(46u, m_service.GetSeverityFilters("A.B"));
  EXPECT_TRUE(m_service.Exists("A"));
  EXPECT_TRUE(m_service.Exists("A.B"));
  EXPECT_FALSE(m_service.Exists("B"));
  EXPECT_FALSE(m_service.Exists("A.B.C"));
}

TEST_F(DefaultLogServicePaths, LookingForAPathMakesNothing) {
  EXPECT_FALSE(m_service.Exists("A.B"));
  EXPECT_EQ(Names(), NamesOf("A"));
  EXPECT_FALSE(m_service.Exists("A"));
}

TEST_F(DefaultLogServicePaths, OneLeadingDotIsNoMatter) {
  m_service.SetSeverityFilters(".A", 2);
  EXPECT_EQ(2u, m_service.GetSeverityFilters("A"));
  EXPECT_EQ(Names({"A"}), NamesOf(""));
  EXPECT_TRUE(m_service.Exists(".A"));
}

TEST_F(DefaultLogServicePaths, EmptyPathIsTheRoot) {
  EXPECT_TRUE(m_service.Exists(""));
  m_service.SetSeverityFilters("", 6);
  EXPECT_EQ(6u, m_service.GetSeverityFilters(""));
  FakeLogger logger("A");
  m_service.RegisterLogger(&logger);
  EXPECT_EQ(6u, logger.m_uFilters);
}

TEST_F(DefaultLogServicePaths, NamesAreThoseOfTheDirectChildren) {
  m_service.GetSeverityFilters("A.B.C");
  m_service.GetSeverityFilters("A.D");
  m_service.GetSeverityFilters("E");
  EXPECT_EQ(Names({"A", "E"}), NamesOf(""));
  EXPECT_EQ(Names({"B", "D"}), NamesOf("A"));
  EXPECT_EQ(Names({"C"}), NamesOf(".A.B"));
  EXPECT_EQ(Names(), NamesOf("A.D"));
  EXPECT_EQ(Names(), NamesOf("F"));
}

// --- Words

TEST_F(DefaultLogServicePaths, NewLoggerGetsTheIntersectionOfItsPath) {
  m_service.SetSeverityFilters("A", 2);
  FakeLogger logger("A.B");
  m_service.RegisterLogger(&logger);
  EXPECT_EQ(2u, logger.m_uFilters);
  EXPECT_EQ(46u, m_service.GetSeverityFilters("A.B")) << "the word of the node itself";
}

TEST_F(DefaultLogServicePaths, BitsClearedHighInTheTreeAreClearedForGood) {
  m_service.GetSeverityFilters("A.B");
  m_service.SetSeverityFilters("A", 2);
  m_service.SetSeverityFilters("A", 46);
  EXPECT_EQ(46u, m_service.GetSeverityFilters("A"));
  EXPECT_EQ(2u, m_service.GetSeverityFilters("A.B"));
}

TEST_F(DefaultLogServicePaths, RegisteredLoggerKeepsItsWordUntilItIsRegisteredAnew) {
  FakeLogger logger("A.B");
  m_service.RegisterLogger(&logger);
  EXPECT_EQ(46u, logger.m_uFilters);
  m_service.SetSeverityFilters("A.B", 2);
  m_service.SetSeverityFilters("A", 4);
  EXPECT_EQ(46u, logger.m_uFilters);
  m_service.RegisterLogger(&logger);
  EXPECT_EQ(0u, logger.m_uFilters) << "A left 4 of the 2";
}

TEST_F(DefaultLogServicePaths, UnregisteringKeepsThePathAndMakesAMissingOne) {
  FakeLogger logger("A.B"), stranger("C.D");
  m_service.RegisterLogger(&logger);
  m_service.UnregisterLogger(&logger);
  m_service.UnregisterLogger(&stranger);
  EXPECT_TRUE(m_service.Exists("A.B"));
  EXPECT_TRUE(m_service.Exists("C.D"));
}

TEST_F(DefaultLogServicePaths, NullIsNoLogger) {
  m_service.RegisterLogger(nullptr);
  m_service.UnregisterLogger(nullptr);
  EXPECT_EQ(Names(), NamesOf(""));
}

// --- What is refused

template <class Action>
void ExpectInvalid(const std::string& path, const AlertData& variables, const Action& action) {
  try {
    action();
    ADD_FAILURE() << "nothing was thrown for " << path;
  } catch (InvalidLogPath& error) {
    EXPECT_STREQ(("Invalid log path: " + path).c_str(), error.what());
    EXPECT_EQ(sSERVICE, error.GetData(AlertInfo::sLOG_NAME));
    ASSERT_EQ(2u, error.GetUnwindStack()->size()) << "the place of the raise, and the operation";
    EXPECT_EQ(variables, error.GetUnwindStack()->back().GetVariables());
  }
}

TEST_F(DefaultLogServicePaths, EmptyComponentIsRefused) {
  FakeLogger logger("A..B");
  std::list<std::string> names;
  ExpectInvalid("A..B", {{"p_sPath", "A..B"}}, [&] { m_service.GetSeverityFilters("A..B"); });
  ExpectInvalid("A..B", {{"p_sPath", "A..B"}}, [&] { m_service.SetSeverityFilters("A..B", 2); });
  ExpectInvalid("A..B", {{"p_sRootPath", "A..B"}}, [&] { m_service.EnumLoggers("A..B", names); });
  ExpectInvalid("A..B", {}, [&] { m_service.RegisterLogger(&logger); });
  ExpectInvalid("A..B", {}, [&] { m_service.UnregisterLogger(&logger); });
  ExpectNothingIsLocked();
}

TEST_F(DefaultLogServicePaths, DotsAloneAndDotsAtTheEndAreRefused) {
  for (const std::string path : {".", "..A", "A.", ".A.", "A.B..", "..."}) {
    ExpectInvalid(path, {{"p_sPath", path}}, [&] { m_service.GetSeverityFilters(path); });
  }
}

TEST_F(DefaultLogServicePaths, WhatStandsBeforeARefusedComponentHasComeIntoBeing) {
  EXPECT_THROW(m_service.GetSeverityFilters("A.B..C"), InvalidLogPath);
  EXPECT_TRUE(m_service.Exists("A.B"));
  EXPECT_EQ(Names(), NamesOf("A.B"));
}

TEST_F(DefaultLogServicePaths, LookingRaisesOnlyIfTheWalkGetsAsFarAsTheEmptyComponent) {
  EXPECT_FALSE(m_service.Exists("A..B"));
  EXPECT_EQ(Names(), NamesOf("A..B"));
  m_service.GetSeverityFilters("A");
  EXPECT_THROW(NamesOf("A..B"), InvalidLogPath);
  try {
    m_service.Exists("A..B");
    FAIL() << "nothing was thrown";
  } catch (InvalidLogPath& error) {
    EXPECT_STREQ("Invalid log path: A..B", error.what());
    EXPECT_EQ(sSERVICE, error.GetData(AlertInfo::sLOG_NAME));
    EXPECT_EQ(1u, error.GetUnwindStack()->size()) << "no place is added on the way";
  }
  EXPECT_THROW(m_service.Exists("."), InvalidLogPath) << "the root is always there";
  ExpectNothingIsLocked();
}

TEST_F(DefaultLogServicePaths, RefusedPathClearsTheNames) {
  m_service.GetSeverityFilters("A");
  std::list<std::string> names = {"old"};
  EXPECT_THROW(m_service.EnumLoggers("A..B", names), InvalidLogPath);
  EXPECT_TRUE(names.empty());
}

TEST_F(DefaultLogServicePaths, RefusedPathIsToldToListenersWithTheTreeUnlocked) {
  struct Listener : AlertListener {
    ~Listener() override { AlertManager::Instance()->RemoveAlertListener(*this); }
    void ErrorRaised(Error&) override { m_onError(); }
    std::function<void()> m_onError;
  } listener;
  int told = 0;
  listener.m_onError = [&] { told += IsTreeFree() ? 1 : 0; };
  AlertManager::Instance()->AddAlertListener(listener);
  FakeLogger logger("Other..B");
  std::list<std::string> names;
  m_service.GetSeverityFilters("Other");
  EXPECT_THROW(m_service.Exists("Other..B"), InvalidLogPath);
  EXPECT_THROW(m_service.EnumLoggers("Other..B", names), InvalidLogPath);
  EXPECT_THROW(m_service.GetSeverityFilters("Other..B"), InvalidLogPath);
  EXPECT_THROW(m_service.SetSeverityFilters("Other..B", 4), InvalidLogPath);
  EXPECT_THROW(m_service.RegisterLogger(&logger), InvalidLogPath);
  EXPECT_THROW(m_service.UnregisterLogger(&logger), InvalidLogPath);
  EXPECT_EQ(6, told);
}

TEST_F(DefaultLogServicePaths, RefusedPathConcernsNobodyWhereNothingIsThrown) {
  EXPECT_EXIT(
      {
        FakeLogger logger("A..B");
        m_service.GetSeverityFilters("A");
        SetLibraryUnloading();
        m_service.SetSeverityFilters("A..B", 2);
        m_service.RegisterLogger(&logger);
        m_service.UnregisterLogger(&logger);
        const bool untouched = m_service.GetSeverityFilters("A") == 46 && logger.m_iSet == 0;
        const bool none = !m_service.Exists("A..B") && NamesOf("A..B").empty();
        std::_Exit(untouched && none && m_service.GetSeverityFilters("A..B") == 46 ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

// --- What a logger throws

TEST_F(DefaultLogServicePaths, StandardExceptionOfALoggerBecomesAnError) {
  FakeLogger logger("A");
  logger.m_onGetPath = [] { throw std::runtime_error("no path today"); };
  for (const auto operation : {&DefaultLogService::RegisterLogger, &DefaultLogService::UnregisterLogger}) {
    try {
      (m_service.*operation)(&logger);
      FAIL() << "nothing was thrown";
    } catch (StdException& error) {
      EXPECT_STREQ("Caught std::exception - no path today", error.what());
      EXPECT_EQ(sSERVICE, error.GetData(AlertInfo::sLOG_NAME));
    }
  }
  ExpectNothingIsLocked();
}

TEST_F(DefaultLogServicePaths, AnythingElseFromALoggerBecomesAnUnknownError) {
  FakeLogger logger("A");
  logger.m_onSet = [] { throw 42; };
  try {
    m_service.RegisterLogger(&logger);
    FAIL() << "nothing was thrown";
  } catch (UnknownError& error) {
    EXPECT_STREQ("No Message", error.what());
    EXPECT_EQ(sSERVICE, error.GetData(AlertInfo::sLOG_NAME));
    EXPECT_EQ(AlertData(), error.GetUnwindStack()->back().GetVariables());
  }
  ExpectNothingIsLocked();
}

// --- Who is told

class DefaultLogServiceChanges : public DefaultLogServicePaths {
 protected:
  DefaultLogServiceChanges() { m_service.RegisterHandler(&m_handler); }

  template <class Action>
  int Changes(const Action& action) {
    m_handler.m_iChanges = 0;
    action();
    return m_handler.m_iChanges;
  }

  Handler m_handler;
};

TEST_F(DefaultLogServiceChanges, EachCallThatMakesNodesTellsOnce) {
  FakeLogger logger("D.E");
  EXPECT_EQ(1, Changes([this] { m_service.GetSeverityFilters("A.B.C"); }));
  EXPECT_EQ(0, Changes([this] { m_service.GetSeverityFilters("A.B.C"); }));
  EXPECT_EQ(1, Changes([&] { m_service.RegisterLogger(&logger); }));
  EXPECT_EQ(0, Changes([&] { m_service.RegisterLogger(&logger); }));
  EXPECT_EQ(0, Changes([&] { m_service.UnregisterLogger(&logger); }));
  EXPECT_EQ(0, Changes([this] { m_service.Exists("X"); }));
  EXPECT_EQ(0, Changes([this] { NamesOf("X"); }));
}

TEST_F(DefaultLogServiceChanges, ChangedWordTellsAndTheSameWordDoesNot) {
  EXPECT_EQ(2, Changes([this] { m_service.SetSeverityFilters("A", 2); })) << "the new node, and the word";
  EXPECT_EQ(1, Changes([this] { m_service.SetSeverityFilters("A", 4); }));
  EXPECT_EQ(0, Changes([this] { m_service.SetSeverityFilters("A", 4); }));
  EXPECT_EQ(1, Changes([this] { m_service.SetSeverityFilters("B", 46); })) << "the new node alone";
}

TEST_F(DefaultLogServiceChanges, ChangedWordIsToldWithTheTreeUnlocked) {
  m_service.GetSeverityFilters("A");
  unsigned int seen = 0;
  m_handler.m_onChange = [&] { std::thread([&] { seen = m_service.GetSeverityFilters("A"); }).join(); };
  m_service.SetSeverityFilters("A", 2);
  EXPECT_EQ(2u, seen);
}

TEST_F(DefaultLogServiceChanges, NewPathIsToldWithTheTreeUnlocked) {
  m_service.GetSeverityFilters("Other");
  m_service.SetSeverityFilters("Other", 2);
  bool free = false;
  m_handler.m_onChange = [&] { free = IsTreeFree(); };
  FakeLogger logger("D.E");
  m_service.RegisterLogger(&logger);
  EXPECT_TRUE(free);
  free = false;
  m_service.GetSeverityFilters("F");
  EXPECT_TRUE(free);
}

TEST_F(DefaultLogServiceChanges, HandlerThatHearsOfANewPathCanSetTheWordOfItsFirstLogger) {
  m_handler.m_onChange = [this] { m_service.SetSeverityFilters("D.E", 2); };
  FakeLogger logger("D.E");
  m_service.RegisterLogger(&logger);
  EXPECT_EQ(2u, logger.m_uFilters);
  EXPECT_EQ(1, logger.m_iSet);
}

TEST_F(DefaultLogServiceChanges, WhatStandsBeforeARefusedComponentIsNotTold) {
  EXPECT_EQ(0, Changes([this] { EXPECT_THROW(m_service.GetSeverityFilters("X.Y..Z"), InvalidLogPath); }));
  EXPECT_EQ(0, Changes([this] { m_service.GetSeverityFilters("X.Y"); }));
}

TEST_F(DefaultLogServiceChanges, HandlerMayUseTheTreeWhileItHearsOfNewNodes) {
  bool inside = false;
  m_handler.m_onChange = [&] {
    if (inside) return;
    inside = true;
    for (int i = 0; i < 100; ++i) m_service.SetSeverityFilters("A.B." + std::to_string(i), 2);
    EXPECT_TRUE(m_service.Exists("A.B"));
  };
  FakeLogger logger("A.B");
  m_service.RegisterLogger(&logger);
  EXPECT_EQ(46u, logger.m_uFilters);
  EXPECT_EQ(2u, m_service.GetSeverityFilters("A.B.99"));
}

TEST_F(DefaultLogServiceChanges, HandlerThatThrowsIsDroppedAndTheOthersAreTold) {
  Handler failing, third;
  failing.m_onChange = [] { throw std::runtime_error("no"); };
  m_service.RegisterHandler(&failing);
  m_service.RegisterHandler(&third);
  EXPECT_EQ(3, m_service.GetNumHandlers());
  m_service.GetSeverityFilters("A");
  EXPECT_EQ(2, m_service.GetNumHandlers());
  m_service.SetSeverityFilters("A", 2);
  EXPECT_EQ(1, failing.m_iChanges);
  EXPECT_EQ(2, m_handler.m_iChanges);
  EXPECT_EQ(2, third.m_iChanges);
}

TEST_F(DefaultLogServiceChanges, HandlerThatUnregistersItselfWhileItHearsOfNewNodes) {
  m_handler.m_onChange = [this] { m_service.UnregisterHandler(&m_handler); };
  m_service.SetSeverityFilters("A", 2);
  EXPECT_EQ(1, m_handler.m_iChanges);
  ExpectNothingIsLocked();
}

}  // namespace
