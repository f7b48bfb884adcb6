// The default log service hands over to another one.
#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "Log/DefaultLogServiceFixture.h"

namespace {

using namespace Oxa::Core;
using LogFakes::FakeLogger;
using LogFakes::FakeService;
using LogFakes::Handler;
using LogTests::Entry;
using LogTests::Messages;

class DefaultLogServiceTransfer : public LogTests::DefaultLogServiceTest {};

TEST_F(DefaultLogServiceTransfer, TransferHandsOverLoggersWordsAndHandlersAndKeepsThem) {
  FakeLogger logger("A.B");
  Handler handler;
  m_service->RegisterLogger(&logger);
  m_service->SetSeverityFilters("A", 2);
  m_service->RegisterHandler(&handler);
  FakeService service, again;
  service.m_known = {"A.B"};
  service.m_onRegisterHandler = [&] {
    EXPECT_EQ(1u, handler.m_entries.size()) << "it was told before";
    EXPECT_EQ(1u, service.m_loggers.size()) << "the tree comes first";
  };
  m_service->TransferTo(service);
  EXPECT_EQ((std::map<std::string, unsigned int>{{"", 46}, {"A", 2}}), service.m_words);
  EXPECT_EQ(std::set<IOxaLogger*>{&logger}, service.m_loggers);
  EXPECT_EQ(std::set<IOxaLogHandler*>{&handler}, service.m_handlers);
  EXPECT_EQ(std::vector<IOxaLogHandler*>{&handler}, m_service->GetHandlers());
  m_service->TransferTo(again);
  EXPECT_EQ(service.m_loggers, again.m_loggers);
  EXPECT_EQ(service.m_handlers, again.m_handlers);
}

TEST_F(DefaultLogServiceTransfer, TransferTellsEachHandler) {
  Handler handler;
  m_service->RegisterHandler(&handler);
  FakeService service;
  const Time before;
  m_service->TransferTo(service);
  ASSERT_EQ(1u, handler.m_entries.size());
  const OxaLogEntry& entry = handler.m_entries[0];
  EXPECT_EQ("Transfering log handler from default to installed log service.", entry.m_sMessage);
  EXPECT_EQ(5, entry.m_eSeverity);
  EXPECT_EQ("Oxa.Core.DefaultLogService", entry.m_sLoggerPath);
  EXPECT_EQ("plain", entry.m_sForm);
  EXPECT_GE(entry.m_time, before);
  EXPECT_LE(entry.m_time, Time());
}

TEST_F(DefaultLogServiceTransfer, HandlerThatThrowsAtTheTransferStaysBehindAndIsDropped) {
  Handler failing, good;
  failing.m_onEntry = [] { throw std::runtime_error("no"); };
  m_service->RegisterHandler(&failing);
  m_service->RegisterHandler(&good);
  FakeService service;
  m_service->TransferTo(service);
  EXPECT_EQ(std::set<IOxaLogHandler*>{&good}, service.m_handlers);
  EXPECT_EQ(std::vector<IOxaLogHandler*>{&good}, m_service->GetHandlers());
}

TEST_F(DefaultLogServiceTransfer, HandlerThatTakesItselfOutAtTheTransferIsNotHandedOver) {
  Handler handler;
  handler.m_onEntry = [&] { m_service->UnregisterHandler(&handler); };
  m_service->RegisterHandler(&handler);
  FakeService service;
  m_service->TransferTo(service);
  EXPECT_TRUE(service.m_handlers.empty());
}

TEST_F(DefaultLogServiceTransfer, LoggerThatTheServiceRefusesIsForgotten) {
  FakeLogger refused("A"), taken("B");
  m_service->RegisterLogger(&refused);
  m_service->RegisterLogger(&taken);
  FakeService service, again;
  service.m_onRegisterLogger = [&](IOxaLogger* logger) {
    if (logger == &refused) throw std::runtime_error("refused");
  };
  m_service->TransferTo(service);
  m_service->TransferTo(again);
  EXPECT_EQ(std::set<IOxaLogger*>{&taken}, service.m_loggers);
  EXPECT_EQ(std::set<IOxaLogger*>{&taken}, again.m_loggers);
}

TEST_F(DefaultLogServiceTransfer, ServiceThatRefusesAHandlerEndsTheTransfer) {
  Handler handler;
  m_service->RegisterHandler(&handler);
  FakeService service;
  service.m_onRegisterHandler = [] { throw std::runtime_error("refused"); };
  EXPECT_THROW(m_service->TransferTo(service), std::runtime_error);
  EXPECT_EQ(std::vector<IOxaLogHandler*>{&handler}, m_service->GetHandlers());
  Write("still taken");
  EXPECT_EQ("still taken", handler.Messages().back());
}

TEST_F(DefaultLogServiceTransfer, RetainedEntriesStayAtTheTransfer) {
  Write("kept");
  FakeService service;
  m_service->TransferTo(service);
  EXPECT_TRUE(service.m_messages.empty());
  EXPECT_EQ(Messages{"kept"}, Flushed());
}

TEST_F(DefaultLogServiceTransfer, TransferClosesTheFileAndTheNextEntryOpensItAnew) {
  Write("before");
  FakeService service;
  m_service->TransferTo(service);
  std::filesystem::remove(m_folder.File("DefaultLog.entries"));
  const OxaLogEntry entry = Entry("behind");
  m_service->WriteLogEntry(entry);
  EXPECT_EQ(LogEntryText(entry), m_folder.Entries());
}

}  // namespace
