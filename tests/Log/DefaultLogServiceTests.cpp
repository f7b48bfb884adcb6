// The default log service: the way of an entry to the handlers, to memory and to the file.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "Core/LibraryState.h"
#include "Log/DefaultLogServiceFixture.h"
#include "Log/FileLimit.h"
#include "Log/LogFakes.h"
#include "Log/LogFolder.h"
#include "Support/Eventually.h"

namespace {

using namespace Oxa::Core;
using LogFakes::FakeService;
using LogFakes::Handler;
using LogTests::DefaultLogServiceTest;
using LogTests::Entry;
using LogTests::Messages;

Messages Numbers(int first, int last) {
  Messages numbers;
  for (int i = first; i <= last; ++i) numbers.push_back(std::to_string(i));
  return numbers;
}

// --- Handlers

TEST_F(DefaultLogServiceTest, NumberOfHandlersIsNeverZero) {
  Handler first, second;
  EXPECT_EQ(1, m_service->GetNumHandlers());
  m_service->RegisterHandler(&first);
  EXPECT_EQ(1, m_service->GetNumHandlers());
  m_service->RegisterHandler(&second);
  m_service->RegisterHandler(&second);
  EXPECT_EQ(2, m_service->GetNumHandlers());
  m_service->UnregisterHandler(&second);
  m_service->UnregisterHandler(&second);
  m_service->UnregisterHandler(&first);
  EXPECT_EQ(1, m_service->GetNumHandlers());
}

TEST_F(DefaultLogServiceTest, NullIsNoHandler) {
  m_service->RegisterHandler(nullptr);
  EXPECT_TRUE(m_service->GetHandlers().empty());
  m_service->UnregisterHandler(nullptr);
  Write("still works");
  EXPECT_EQ(Messages{"still works"}, Flushed());
}

TEST_F(DefaultLogServiceTest, HandlersAreGivenAsACopy) {
  Handler first, second;
  m_service->RegisterHandler(&first);
  m_service->RegisterHandler(&second);
  std::vector<IOxaLogHandler*> handlers = m_service->GetHandlers();
  EXPECT_EQ(2, std::count(handlers.begin(), handlers.end(), &first) +
                   std::count(handlers.begin(), handlers.end(), &second));
  handlers.clear();
  EXPECT_EQ(2, m_service->GetNumHandlers());
}

TEST_F(DefaultLogServiceTest, HandlerGetsTheEntryAsItIsAndTheFileGetsNothing) {
  Handler handler;
  m_service->RegisterHandler(&handler);
  OxaLogEntry entry = Entry("for the handler");
  entry.m_eSeverity = eLOG_VERBOSE;
  entry.m_sForm = "xml";
  m_service->WriteLogEntry(entry);
  ASSERT_EQ(1u, handler.m_entries.size());
  EXPECT_EQ("for the handler", handler.m_entries[0].m_sMessage);
  EXPECT_EQ(eLOG_VERBOSE, handler.m_entries[0].m_eSeverity);
  EXPECT_EQ("xml", handler.m_entries[0].m_sForm);
  EXPECT_EQ("Oxa.Test", handler.m_entries[0].m_sLoggerPath);
  EXPECT_EQ(entry.m_time.ToString(), handler.m_entries[0].m_time.ToString());
  EXPECT_EQ(std::string::npos, m_folder.Entries().find("for the handler"));
  EXPECT_FALSE(m_service->HasRetained());
}

TEST_F(DefaultLogServiceTest, AllHandlersGetTheEntry) {
  Handler first, second;
  m_service->RegisterHandler(&first);
  m_service->RegisterHandler(&second);
  Write("both");
  EXPECT_EQ(Messages{"both"}, first.Messages());
  EXPECT_EQ(Messages{"both"}, second.Messages());
}

TEST_F(DefaultLogServiceTest, HandlerThatThrowsOnceIsDroppedAndTheFollowingEntriesReachTheFile) {
  Handler failing;
  failing.m_onEntry = [] { throw std::runtime_error("once"); };
  m_service->RegisterHandler(&failing);
  Write("first");
  Write("second");
  EXPECT_EQ(Messages{"first"}, failing.Messages());
  EXPECT_TRUE(m_service->GetHandlers().empty());
  EXPECT_NE(std::string::npos, m_folder.Entries().find("<Message>first</Message>"))
      << "nobody took it, so the file did";
  EXPECT_NE(std::string::npos, m_folder.Entries().find("<Message>second</Message>"));
  EXPECT_EQ((Messages{"first", "second"}), Flushed());
}

TEST_F(DefaultLogServiceTest, HandlerThatThrowsKeepsNoOtherFromTheEntry) {
  Handler good[3], failing[3];
  for (Handler& handler : failing) handler.m_onEntry = [] { throw 42; };
  for (int i = 0; i < 3; ++i) {
    m_service->RegisterHandler(&good[i]);
    m_service->RegisterHandler(&failing[i]);
  }
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  Write("first");
  Write("second");
  EXPECT_EQ("", testing::internal::GetCapturedStdout());
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
  for (Handler& handler : good) EXPECT_EQ((Messages{"first", "second"}), handler.Messages());
  for (Handler& handler : failing) EXPECT_EQ((Messages{"first"}), handler.Messages());
  EXPECT_EQ(3, m_service->GetNumHandlers());
  EXPECT_EQ(std::string::npos, m_folder.Entries().find("first"));
  EXPECT_FALSE(m_service->HasRetained());
}

TEST_F(DefaultLogServiceTest, HandlerMayUnregisterItselfWhileItIsCalled) {
  Handler handler;
  handler.m_onEntry = [&] { m_service->UnregisterHandler(&handler); };
  m_service->RegisterHandler(&handler);
  Write("taken");
  Write("not taken");
  EXPECT_EQ(Messages{"taken"}, handler.Messages());
  EXPECT_EQ(Messages{"not taken"}, Flushed());
}

TEST_F(DefaultLogServiceTest, HandlerMayRegisterAnotherWhichGetsWhatFollows) {
  Handler handler, other;
  handler.m_onEntry = [&] { m_service->RegisterHandler(&other); };
  m_service->RegisterHandler(&handler);
  Write("first");
  EXPECT_TRUE(other.m_entries.empty());
  Write("second");
  EXPECT_EQ(Messages{"second"}, other.Messages());
}

TEST_F(DefaultLogServiceTest, HandlerThatComesWhileAllOthersFailGetsTheEntry) {
  Handler failing, other;
  failing.m_onEntry = [&] {
    m_service->RegisterHandler(&other);
    m_service->RegisterHandler(&failing);
    throw std::runtime_error("no");
  };
  m_service->RegisterHandler(&failing);
  Write("entry");
  EXPECT_EQ(Messages{"entry"}, other.Messages());
  EXPECT_FALSE(m_service->HasRetained());
  EXPECT_EQ(1, m_service->GetNumHandlers());
}

TEST_F(DefaultLogServiceTest, HandlerThatIsUnregisteredByAnotherOneIsNotCalledAnyMore) {
  Handler first, second;
  first.m_onEntry = [&] { m_service->UnregisterHandler(&second); };
  second.m_onEntry = [&] { m_service->UnregisterHandler(&first); };
  m_service->RegisterHandler(&first);
  m_service->RegisterHandler(&second);
  Write("for one of them");
  EXPECT_EQ(1u, first.m_entries.size() + second.m_entries.size());
  EXPECT_EQ(1u, m_service->GetHandlers().size());
}

TEST_F(DefaultLogServiceTest, UnregisteringWaitsForTheCallOnAnotherThread) {
  Handler handler;
  std::atomic<bool> inside{false}, leave{false}, left{false};
  handler.m_onEntry = [&] {
    inside = true;
    EXPECT_TRUE(TestSupport::Eventually([&] { return leave.load(); }));
    left = true;
  };
  m_service->RegisterHandler(&handler);
  std::thread writer([&] { Write("slow"); });
  ASSERT_TRUE(TestSupport::Eventually([&] { return inside.load(); }));
  std::atomic<bool> leftBefore{false};
  std::thread remover([&] {
    m_service->UnregisterHandler(&handler);
    leftBefore = left.load();
  });
  ASSERT_TRUE(TestSupport::Eventually([&] { return m_service->GetHandlers().empty(); }));
  leave = true;
  remover.join();
  writer.join();
  EXPECT_TRUE(leftBefore);
}

TEST_F(DefaultLogServiceTest, SlowHandlerKeepsNobodyFromLoggersAndOtherHandlers) {
  Handler slow, other;
  std::atomic<bool> inside{false}, leave{false};
  slow.m_onEntry = [&] {
    inside = true;
    EXPECT_TRUE(TestSupport::Eventually([&] { return leave.load(); }));
  };
  m_service->RegisterHandler(&slow);
  std::thread writer([&] { Write("slow"); });
  ASSERT_TRUE(TestSupport::Eventually([&] { return inside.load(); }));
  m_service->RegisterHandler(&other);
  m_service->SetSeverityFilters("A.B", 2);
  m_service->UnregisterHandler(&other);
  EXPECT_EQ(2, other.m_iChanges);
  leave = true;
  writer.join();
}

// Three threads that would stand in a circle if handlers were called with their list locked: one makes a logger
// and tells the handlers of it, one waits to take a handler out, and the handler asks for a logger.
TEST_F(DefaultLogServiceTest, HandlerMayAskForAPathWhileOneIsMadeAndHandlersGo) {
  Handler handler, leaving;
  std::atomic<bool> inside{false}, leave{false};
  handler.m_onEntry = [&] {
    inside = true;
    EXPECT_TRUE(TestSupport::Eventually([&] { return leave.load(); }));
    m_service->GetSeverityFilters("Asked.For");
  };
  m_service->RegisterHandler(&handler);
  m_service->RegisterHandler(&leaving);
  std::thread writer([&] { Write("entry"); });
  ASSERT_TRUE(TestSupport::Eventually([&] { return inside.load(); }));
  std::thread remover([&] { m_service->UnregisterHandler(&handler); });
  ASSERT_TRUE(TestSupport::Eventually([&] { return m_service->GetHandlers().size() == 1; }));
  std::thread maker([&] { m_service->GetSeverityFilters("Made.Here"); });
  EXPECT_TRUE(TestSupport::Eventually([&] { return m_service->Exists("Made.Here"); }));
  leave = true;
  for (std::thread* thread : {&maker, &writer, &remover}) thread->join();
  EXPECT_TRUE(m_service->Exists("Asked.For"));
}

// The thread that makes a logger holds the locks of loggers, here `loggers`, while the handlers hear of it.
TEST_F(DefaultLogServiceTest, HandlerMayTakeItselfOutOfAChangeWhileItAsksForLoggersElsewhere) {
  Handler handler;
  std::mutex loggers;
  std::atomic<bool> inside{false};
  handler.m_onEntry = [&] {
    inside = true;
    const std::lock_guard<std::mutex> lock(loggers);
  };
  handler.m_onChange = [&] { m_service->UnregisterHandler(&handler); };
  m_service->RegisterHandler(&handler);
  std::unique_lock<std::mutex> making(loggers);
  std::thread writer([&] { Write("entry"); });
  ASSERT_TRUE(TestSupport::Eventually([&] { return inside.load(); }));
  m_service->GetSeverityFilters("Made.Here");
  EXPECT_TRUE(m_service->GetHandlers().empty());
  making.unlock();
  writer.join();
  EXPECT_EQ(1, handler.m_iChanges);
}

TEST_F(DefaultLogServiceTest, UnloadingLibraryTakesNoEntries) {
  EXPECT_EXIT(
      {
        Handler handler;
        m_service->RegisterHandler(&handler);
        SetLibraryUnloading();
        Write("too late");
        m_service->UnregisterHandler(&handler);
        Write("too late");
        const bool none =
            handler.m_entries.empty() && !m_service->HasRetained() && m_folder.Entries().empty();
        std::_Exit(none ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

// --- Retained entries

TEST_F(DefaultLogServiceTest, EntryThatNobodyTakesIsRetained) {
  EXPECT_FALSE(m_service->HasRetained());
  Write("kept");
  EXPECT_TRUE(m_service->HasRetained());
  EXPECT_EQ(Messages{"kept"}, Flushed());
  EXPECT_FALSE(m_service->HasRetained());
  EXPECT_EQ(Messages(), Flushed());
}

TEST_F(DefaultLogServiceTest, ThousandEntriesAreRetained) {
  for (int i = 1; i <= 1000; ++i) Write(std::to_string(i));
  EXPECT_EQ(Numbers(1, 1000), Flushed());
}

TEST_F(DefaultLogServiceTest, TheThousandAndFirstEntryPushesOutTheFirst) {
  for (int i = 1; i <= 1001; ++i) Write(std::to_string(i));
  EXPECT_EQ(Numbers(2, 1001), Flushed());
}

TEST_F(DefaultLogServiceTest, HandlerThatComesLateGetsTheLastThousandOldestFirst) {
  for (int i = 1; i <= 2500; ++i) Write(std::to_string(i));
  Handler handler;
  m_service->RegisterHandler(&handler);
  m_service->FlushRetained(*m_service);
  Write("2501");
  EXPECT_EQ(Numbers(1501, 2501), handler.Messages());
  EXPECT_FALSE(m_service->HasRetained());
}

TEST_F(DefaultLogServiceTest, FlushTakesTheListOutBeforeItWalks) {
  for (int i = 1; i <= 3; ++i) Write(std::to_string(i));
  FakeService service;
  service.m_onWrite = [this](const OxaLogEntry& entry) {
    EXPECT_EQ(entry.m_sMessage != "1", m_service->HasRetained()) << entry.m_sMessage;
    Write("again " + entry.m_sMessage);
    FakeService inner;
    if (entry.m_sMessage == "2") {
      m_service->FlushRetained(inner);
      EXPECT_EQ((Messages{"again 1", "again 2"}), inner.m_messages);
      Write("again 2");
    }
  };
  m_service->FlushRetained(service);
  EXPECT_EQ(Numbers(1, 3), service.m_messages);
  EXPECT_EQ((Messages{"again 2", "again 3"}), Flushed());
}

TEST_F(DefaultLogServiceTest, FlushIntoAServiceThatRetainsComesToAnEnd) {
  for (int i = 1; i <= 1000; ++i) Write(std::to_string(i));
  m_service->FlushRetained(*m_service);
  EXPECT_EQ(Numbers(1, 1000), Flushed());
}

TEST_F(DefaultLogServiceTest, FlushHoldsNoLockWhileItWalks) {
  Write("1");
  FakeService service;
  service.m_onWrite = [this](const OxaLogEntry&) { std::thread([this] { Write("meanwhile"); }).join(); };
  m_service->FlushRetained(service);
  EXPECT_EQ(Messages{"meanwhile"}, Flushed());
}

TEST_F(DefaultLogServiceTest, WhatAThrowingServiceDidNotTakeIsRetainedAgain) {
  for (int i = 1; i <= 5; ++i) Write(std::to_string(i));
  FakeService service;
  service.m_onWrite = [this](const OxaLogEntry& entry) {
    if (entry.m_sMessage != "3") return;
    Write("6");
    throw std::runtime_error("full");
  };
  EXPECT_THROW(m_service->FlushRetained(service), std::runtime_error);
  EXPECT_EQ(Numbers(1, 2), service.m_messages);
  EXPECT_EQ(Numbers(3, 6), Flushed());
}

TEST_F(DefaultLogServiceTest, WhatIsRetainedAgainStaysWithinTheThousand) {
  for (int i = 1; i <= 1000; ++i) Write(std::to_string(i));
  FakeService service;
  service.m_onWrite = [this](const OxaLogEntry&) {
    for (int i = 1001; i <= 1010; ++i) Write(std::to_string(i));
    throw std::runtime_error("full");
  };
  EXPECT_THROW(m_service->FlushRetained(service), std::runtime_error);
  EXPECT_EQ(Numbers(11, 1010), Flushed());
}

// --- The file

TEST_F(DefaultLogServiceTest, EntryThatNobodyTakesIsAppendedToTheFile) {
  const OxaLogEntry first = Entry("first & <foremost>"), second = Entry("second");
  m_service->WriteLogEntry(first);
  m_service->WriteLogEntry(second);
  EXPECT_EQ(LogEntryText(first) + LogEntryText(second), m_folder.Entries());
  EXPECT_TRUE(m_folder.Has("DefaultLog.xml"));
  EXPECT_FALSE(m_folder.Has("DefaultLog.archive"));
}

TEST_F(DefaultLogServiceTest, NoFileBeforeTheFirstEntry) {
  EXPECT_FALSE(m_folder.Has("DefaultLog.xml"));
  EXPECT_FALSE(m_folder.Has("DefaultLog.entries"));
}

TEST_F(DefaultLogServiceTest, RetainedEntriesThatAreFlushedStayInTheFile) {
  Write("once");
  Flushed();
  const std::string entries = m_folder.Entries();
  EXPECT_NE(std::string::npos, entries.find("once"));
  EXPECT_EQ(entries.find("once"), entries.rfind("once"));
}

TEST_F(DefaultLogServiceTest, WhatCannotBeWrittenGoesToStandardErrorAndIsRetained) {
  const std::string folder = m_folder.Path() + "missing/";
  System::Instance()->SetProcessPath(folder);
  const OxaLogEntry entry = Entry("nowhere to go");
  testing::internal::CaptureStderr();
  m_service->WriteLogEntry(entry);
  EXPECT_EQ("WARNING: Failed to create default log file named: \n" + folder + "DefaultLog.xml\n" +
                LogEntryText(entry),
            testing::internal::GetCapturedStderr());
  EXPECT_EQ(Messages{"nowhere to go"}, Flushed());
}

TEST_F(DefaultLogServiceTest, StandardErrorMayBeAFullFile) {
  std::filesystem::create_directory(m_folder.File("DefaultLog.entries"));
  Write("so that there is a document");
  EXPECT_EXIT(
      {
        const LogTests::FileLimit limit(0);
        std::freopen(m_folder.File("full").c_str(), "w", stderr);
        Write("goes nowhere");
        std::_Exit(m_folder.Size("full") == 0 ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(DefaultLogServiceTest, LogResumesWhenTheFolderIsThereAgain) {
  const std::string folder = m_folder.Path() + "later/";
  System::Instance()->SetProcessPath(folder);
  testing::internal::CaptureStderr();
  Write("too early");
  std::filesystem::create_directory(folder);
  Write("in time");
  EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find("<Message>too early</Message>"));
  EXPECT_NE(std::string::npos, m_folder.Read("later/DefaultLog.entries").find("<Message>in time</Message>"));
}

}  // namespace
