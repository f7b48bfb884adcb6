// The steps of start-up and unloading, each case in a child of its own.
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/Singleton.h>
#include <Infrastructure/OxaCore/System.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>

#include "Core/LibraryGlobals.h"
#include "Core/LibraryState.h"
#include "Core/Life.h"
#include "ErrorHandling/ContextTexts.h"
#include "ErrorHandling/Hooks.h"
#include "ErrorHandling/PlaceTables.h"

namespace {

using namespace Oxa::Core;

std::string s_steps;

void Expect(const std::string& steps) {
  if (s_steps != steps) std::cerr << "steps were: " << s_steps << std::endl;
  std::_Exit(s_steps == steps ? 0 : 1);
}

class Listener : public AlertListener {
 public:
  void ErrorRaised(Error&) override { s_steps += "raised "; }
  void ErrorHandled(Error&) override { s_steps += "handled "; }
};

// Tells what is alive when the alert manager's own source dies.
class Witness : public AlertListener {
 protected:
  void NotificationSourceIsRemoved(const NotificationSupport&) override {
    if (FindLibraryGlobal<AlertManager>("AlertManager") == nullptr) s_steps += "no manager, ";
    if (FindLibraryGlobal<CurrentErrors>("CurrentErrors") != nullptr) s_steps += "current errors, ";
    if (System::Instance() != nullptr) s_steps += "system";
  }
};

// Stands in the registry until the unloading destroys it.
class Entry : public ISingletonRegistryEntry {
 public:
  void Destroy() override {
    s_steps += IsLibraryUnloading() ? "destroyed while unloading" : "destroyed";
    try {
      OXA_RAISE_ERROR("Test", LogicError("raised by a dying singleton"));
      s_steps += ", raise returned";
    } catch (LogicError&) {
      s_steps += ", raise threw";
    }
  }
};

// A child that was forked off leaves the shut-down to its parent; this one is to be the parent itself.
void OwnTheLibrary() { BeginLife(); }

constexpr CodePlace g_PLACE{"a.cpp", 1, "now", "void f()"};

CodeContext AnyContext() {
  AlertData table;
  table[CodeContext::sLINE] = "1";
  return CodeContext(table, AlertData());
}

void CountAdapterUse() {
  TheHooks().useFaultAdapter = [] { s_steps += "use "; };
  TheHooks().releaseFaultAdapter = [] { s_steps += "release "; };
}

TEST(LifeDeathTest, InitializeWalksTheStackOnceAndUsesTheAdapterEachTime) {
  EXPECT_EXIT(
      {
        Listener listener;
        AlertManager::Instance()->AddAlertListener(listener);
        CountAdapterUse();
        TheHooks().walkStack = [](int) {
          s_steps += "walk ";
          return boost::shared_ptr<std::vector<CodeContext>>();
        };
        Initialize();
        Initialize();
        Expect("walk use use ");
      },
      testing::ExitedWithCode(0), "");
}

TEST(LifeDeathTest, OnlyUnloadingReleasesTheAdapter) {
  EXPECT_EXIT(
      {
        OwnTheLibrary();
        CountAdapterUse();
        Shutdown();
        Shutdown();
        if (!s_steps.empty()) std::_Exit(1);
        UnloadRoutine();
        Expect("release ");
      },
      testing::ExitedWithCode(0), "");
}

TEST(LifeDeathTest, AlertManagerHearsAndTellsAfterShutdown) {
  EXPECT_EXIT(
      {
        Shutdown();
        if (AlertManager::Instance() == nullptr) std::_Exit(2);
        Listener listener;
        AlertManager::Instance()->AddAlertListener(listener);
        try {
          OXA_RAISE_ERROR("Test", LogicError("after shut-down"));
        } catch (LogicError&) {
        }
        Expect("raised handled ");
      },
      testing::ExitedWithCode(0), "");
}

TEST(LifeDeathTest, GlobalsDieInReverseOrder) {
  EXPECT_EXIT(
      {
        OwnTheLibrary();
        Witness* const witness = new Witness;
        AlertManager::Instance()->AddAlertListener(*witness);
        Shutdown();
        UnloadRoutine();
        if (AlertManager::Instance() != nullptr || System::Instance() != nullptr) std::_Exit(2);
        Expect("no manager, current errors, system");
      },
      testing::ExitedWithCode(0), "");
}

TEST(LifeDeathTest, UnloadingSetsItsFlagBeforeItPerformsAMissedShutdown) {
  EXPECT_EXIT(
      {
        OwnTheLibrary();
        SingletonRegistry::Register(new Entry);
        UnloadRoutine();
        Expect("destroyed while unloading, raise returned");
      },
      testing::ExitedWithCode(0), "raised by a dying singleton");
}

TEST(LifeDeathTest, UnloadingLeavesATerminateHandlerOfTheHostInForce) {
  EXPECT_EXIT(
      {
        OwnTheLibrary();
        std::set_terminate(&std::abort);
        UnloadRoutine();
        s_steps = std::get_terminate() == &std::abort ? "the host's" : "another";
        Expect("the host's");
      },
      testing::ExitedWithCode(0), "");
}

TEST(LifeDeathTest, UnloadingGivesUpWhatIsKeptFromAlertToAlertAndKeepsNothingMore) {
  EXPECT_EXIT(
      {
        OwnTheLibrary();
        const CodeContext context = AnyContext();
        KeepContextText(context, "<Context/>\n");
        const PlaceTable table = TableOf(g_PLACE);
        if (!FindContextText(context) || TableOf(g_PLACE) != table) std::_Exit(2);
        UnloadRoutine();
        s_steps += FindContextText(context) ? "text" : "no text";
        s_steps += ", owners of the table: " + std::to_string(table.use_count());
        KeepContextText(context, "<Context/>\n");
        s_steps += FindContextText(context) ? ", text" : ", no text";
        const PlaceTable later = TableOf(g_PLACE);
        s_steps += TableOf(g_PLACE) == later ? ", one table" : ", tables of their own";
        Expect("no text, owners of the table: 1, no text, tables of their own");
      },
      testing::ExitedWithCode(0), "");
}

TEST(LifeDeathTest, OnlyTheProcessThatLoadedTheLibraryEndsTheLog) {
  EXPECT_EXIT(
      {
        Shutdown();
        std::_Exit(LogManager::Instance() != nullptr ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
  EXPECT_EXIT(
      {
        OwnTheLibrary();
        Shutdown();
        std::_Exit(LogManager::Instance() == nullptr ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

TEST(LifeDeathTest, SecondShutdownDoesNothing) {
  EXPECT_EXIT(
      {
        Shutdown();
        SingletonRegistry::Register(new Entry);
        Shutdown();
        Expect("");
      },
      testing::ExitedWithCode(0), "");
}

TEST(Life, SaysWhetherItIsADebugBuild) {
#if defined(NDEBUG)
  EXPECT_FALSE(IsOxaCoreDebug());
#endif
#if defined(OXACORE_DEBUG)
  EXPECT_TRUE(IsOxaCoreDebug());
#endif
}

}  // namespace
