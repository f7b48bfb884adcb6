// Handlers, and services that come, go and fail.
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/Thread.h>

#include <gtest/gtest.h>

#include <atomic>
#include <list>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "LogTape.h"

namespace {

using namespace Oxa::Core;
using LogTests::Eventually;
using LogTests::GetLogger;
using LogTests::Messages;
using LogTests::TapeHandler;
using LogTests::TapeService;
using LogTests::Unbuffered;

using Texts = std::vector<std::string>;

LogManager& Manager() { return *LogManager::Instance(); }

void Write(const char* text) { GetLogger("Service.Test")->WriteLog(eLOG_ERROR, "%s", text); }

Texts Of(const TapeHandler& handler) { return Messages(handler.Of("Service.Test")); }

Texts Of(const TapeService& service) {
  Texts texts;
  for (const OxaLogEntry& entry : service.m_tape.Items()) {
    if (entry.m_sLoggerPath == "Service.Test") texts.push_back(entry.m_sMessage);
  }
  return texts;
}

TEST(LogHandlers, NullIsRefused) {
  try {
    Manager().RegisterHandler(nullptr);
    FAIL() << "no error";
  } catch (NullPointer& error) {
    EXPECT_STREQ("NULL pointer variable named pHandler", error.what());
    EXPECT_EQ("Oxa.Core.LogManager", error.GetData(AlertInfo::sLOG_NAME));
  }
}

TEST(LogHandlers, AreKnownToBothServices) {
  const Unbuffered unbuffered;
  TapeService service;
  Manager().InstallLogService(service);
  TapeHandler handler;
  EXPECT_EQ(1, service.CountOf("register handler"));
  Write("to the service");
  Manager().UninstallLogService(service);
  Write("to the handler");
  EXPECT_EQ(Texts{"to the service"}, Of(service));
  EXPECT_EQ(Texts{"to the handler"}, Of(handler));
}

TEST(LogHandlers, AreForgottenByBothServices) {
  const Unbuffered unbuffered;
  TapeService service;
  TapeHandler handler;
  Manager().InstallLogService(service);
  Manager().UnregisterHandler(&handler);
  EXPECT_EQ(1, service.CountOf("unregister handler"));
  Manager().UninstallLogService(service);
  Write("to nobody");
  EXPECT_TRUE(Of(handler).empty());
}

TEST(LogHandlers, ThatComeLateGetWhatNobodyTook) {
  const Unbuffered unbuffered;
  Write("early");
  TapeHandler handler;
  EXPECT_EQ(Texts{"early"}, Of(handler));
  Write("late");
  EXPECT_EQ((Texts{"early", "late"}), Of(handler));
}

TEST(LogHandlers, GetTheLastThousand) {
  const Unbuffered unbuffered;
  for (int i = 0; i < 1001; ++i) Write(std::to_string(i).c_str());
  TapeHandler handler;
  const Texts texts = Of(handler);
  ASSERT_EQ(1000U, texts.size());
  EXPECT_EQ("1", texts.front());
  EXPECT_EQ("1000", texts.back());
}

TEST(LogHandlers, ThatThrowAreDropped) {
  const Unbuffered unbuffered;
  TapeHandler failing([](const OxaLogEntry&) { throw std::runtime_error("no"); });
  TapeHandler handler;
  Write("first");
  Write("second");
  EXPECT_TRUE(Of(failing).empty());
  EXPECT_EQ((Texts{"first", "second"}), Of(handler));
}

TEST(LogHandlers, MayUnregisterThemselvesWriteAndAskForLoggers) {
  TapeHandler* self = nullptr;
  TapeHandler handler([&self](const OxaLogEntry& entry) {
    if (entry.m_sMessage == "leave") Manager().UnregisterHandler(self);
    if (entry.m_sMessage == "first") {
      GetLogger("Service.Asked.Here");
      OXA_RAISE_WARNING("Service.Warned", ErrorSlicedOnThrow("inside"));
      Write("second");
    }
  });
  self = &handler;
  Write("first");
  EXPECT_TRUE(Eventually([&] { return Of(handler).size() == 2; }));
  Write("leave");
  EXPECT_TRUE(Eventually([&] { return Of(handler).size() == 3; }));
  const Unbuffered unbuffered;
  Write("not heard");
  EXPECT_EQ((Texts{"first", "second", "leave"}), Of(handler));
}

// Whoever tells handlers of a new path holds nothing that the making of loggers on other threads needs: a handler
// that asks for loggers would otherwise wait in a circle with them.
class MeanwhileMaker : public IOxaLogHandler, public AlertListener {
 public:
  MeanwhileMaker() {
    Manager().RegisterHandler(this);
    AlertManager::Instance()->AddAlertListener(*this);
  }
  ~MeanwhileMaker() override {
    AlertManager::Instance()->RemoveAlertListener(*this);
    Manager().UnregisterHandler(this);
  }
  void OnLoggersChanged() override { MakeOnAnotherThread(); }
  void HandleLogEntry(const OxaLogEntry&) override {}
  void ErrorRaised(Error&) override { MakeOnAnotherThread(); }

  std::atomic<int> m_iMade{0};

 private:
  void MakeOnAnotherThread() {
    if (Thread::GetCurrentId() != m_ulOwner) return;
    const int number = ++m_iAsked;
    m_threads.emplace_back([this, number] {
      GetLogger("Meanwhile.Made" + std::to_string(number));
      ++m_iMade;
    });
    EXPECT_TRUE(Eventually([&] { return m_iMade == number; }));
    m_threads.back().join();
  }

  const unsigned long m_ulOwner = Thread::GetCurrentId();
  int m_iAsked = 0;
  std::vector<std::thread> m_threads;
};

TEST(LogHandlers, MayAskForLoggersAsTheyHearOfNewPaths) {
  MeanwhileMaker handler;
  Manager().SetSeverityFilters("Meanwhile.Set", 2);
  EXPECT_EQ(2, handler.m_iMade) << "of the path, and of its word";
  Manager().GetSeverityFilters("Meanwhile.Get");
  EXPECT_EQ(3, handler.m_iMade);
}

TEST(LogHandlers, ListenersMayAskForLoggersAsTheyHearOfRefusedPaths) {
  GetLogger("Refused.Known");
  MeanwhileMaker listener;
  std::list<std::string> names;
  EXPECT_THROW(Manager().Exists("Refused..Bad"), InvalidLogPath);
  EXPECT_THROW(Manager().EnumLoggers("Refused..Bad", names), InvalidLogPath);
  EXPECT_THROW(Manager().SetSeverityFilters("Refused..Bad", 2), InvalidLogPath);
  EXPECT_THROW(Manager().GetSeverityFilters("Refused..Bad"), InvalidLogPath);
  EXPECT_EQ(4, listener.m_iMade);
}

TEST(LogHandlers, HearWhatAServiceThrowsAsItForgetsThem) {
  TapeService service;
  Manager().InstallLogService(service);
  TapeHandler handler;
  service.m_onCall = [](const std::string& call) {
    if (call == "unregister handler") throw std::runtime_error("no");
  };
  EXPECT_THROW(Manager().UnregisterHandler(&handler), std::runtime_error);
  service.m_onCall = nullptr;
  Manager().UninstallLogService(service);
  const Unbuffered unbuffered;
  Write("not heard");
  EXPECT_TRUE(Of(handler).empty());
}

TEST(LogServices, GetEntriesWhileTheyAreInstalled) {
  const Unbuffered unbuffered;
  TapeHandler handler;
  TapeService service;
  Write("before");
  Manager().InstallLogService(service);
  Write("while");
  Manager().UninstallLogService(service);
  Write("after");
  EXPECT_EQ(Texts{"while"}, Of(service));
  EXPECT_EQ((Texts{"before", "after"}), Of(handler));
}

TEST(LogServices, GetWhatIsRetainedWithTheNextEntry) {
  const Unbuffered unbuffered;
  Write("early");
  TapeService service;
  service.m_iClaimedHandlers = 1;
  Manager().InstallLogService(service);
  EXPECT_TRUE(Of(service).empty());
  Write("late");
  EXPECT_EQ((Texts{"early", "late"}), Of(service));
}

TEST(LogServices, WithoutHandlersLeaveEntriesToTheDefaultService) {
  const Unbuffered unbuffered;
  TapeService service;
  Manager().InstallLogService(service);
  Write("nobody there");
  EXPECT_TRUE(Of(service).empty());
  {
    const TapeHandler handler;
    Write("now");
    EXPECT_EQ((Texts{"nobody there", "now"}), Of(service));
  }
  Write("gone again");
  EXPECT_EQ((Texts{"nobody there", "now"}), Of(service));
}

TEST(LogServices, SayThatHandlersHaveCome) {
  const Unbuffered unbuffered;
  TapeService service;
  Manager().InstallLogService(service);
  Write("kept");
  EXPECT_TRUE(Of(service).empty());
  Manager().OnLogHandlerChange();
  EXPECT_EQ(Texts{"kept"}, Of(service));
  Write("next");
  EXPECT_EQ((Texts{"kept", "next"}), Of(service));
}

TEST(LogServices, DoNotReplaceEachOther) {
  const Unbuffered unbuffered;
  TapeHandler handler;
  TapeService first;
  TapeService second;
  Manager().InstallLogService(first);
  Manager().InstallLogService(second);
  Write("to the first");
  Manager().UninstallLogService(second);
  Write("still to the first");
  EXPECT_EQ((Texts{"to the first", "still to the first"}), Of(first));
  EXPECT_TRUE(Of(second).empty());
  EXPECT_EQ(0, second.CountOf("register handler"));
}

TEST(LogServices, TakeOverLoggersAndHandlers) {
  const auto logger = GetLogger("Service.Transferred");
  const TapeHandler handler;
  TapeService service;
  Manager().InstallLogService(service);
  EXPECT_EQ(1, service.CountOf("register Service.Transferred"));
  EXPECT_EQ(1, service.CountOf("register handler"));
  Manager().UninstallLogService(service);
  EXPECT_EQ(1, service.CountOf("unregister Service.Transferred"));
  EXPECT_EQ(1, service.CountOf("unregister handler"));
}

TEST(LogServices, TellHandlersOfTheTransfer) {
  const TapeHandler handler;
  TapeService service;
  Manager().InstallLogService(service);
  const auto entries = handler.Of("Oxa.Core.DefaultLogService");
  ASSERT_EQ(1U, entries.size());
  EXPECT_EQ("Transfering log handler from default to installed log service.", entries[0].m_sMessage);
}

TEST(LogServices, ThatFailToTakeOverAreNotInstalled) {
  const Unbuffered unbuffered;
  TapeHandler handler;
  TapeService service;
  service.m_onCall = [](const std::string& call) {
    if (call == "register handler") throw std::runtime_error("no");
  };
  Manager().InstallLogService(service);
  Write("to the handler");
  EXPECT_TRUE(Of(service).empty());
  EXPECT_EQ(Texts{"to the handler"}, Of(handler));
}

TEST(LogServices, ThatFailToLetGoAreUninstalledAllTheSame) {
  const Unbuffered unbuffered;
  const auto first = GetLogger("Service.First");
  const auto second = GetLogger("Service.Second");
  TapeHandler handler;
  TapeHandler other;
  TapeService service;
  Manager().InstallLogService(service);
  service.m_onCall = [](const std::string&) { throw std::runtime_error("no"); };
  const std::size_t before = service.m_calls.Count();
  Manager().UninstallLogService(service);
  EXPECT_EQ(before + 2, service.m_calls.Count());  // each of the two loops ends at its first failure
  Write("to the handlers");
  EXPECT_EQ(Texts{"to the handlers"}, Of(handler));
  EXPECT_EQ(Texts{"to the handlers"}, Of(other));
}

TEST(LogServices, MayAskForLoggersAndGiveThemUpAsTheyLetThemGo) {
  constexpr int iLOGGERS = 20;
  TapeService service;
  Manager().InstallLogService(service);
  for (int i = 0; i < iLOGGERS; ++i) GetLogger("Leaving.L" + std::to_string(i));
  int calls = 0;
  service.m_onCall = [&calls](const std::string& call) {
    if (call.rfind("unregister Leaving.L", 0) != 0 || ++calls > iLOGGERS) return;
    for (int i = 0; i < 50; ++i) GetLogger("Leaving.New" + std::to_string(calls) + "." + std::to_string(i));
    Manager().UnregisterLogger("Leaving.L" + std::to_string(calls));
  };
  Manager().UninstallLogService(service);
  service.m_onCall = nullptr;
  for (int i = 0; i < iLOGGERS; ++i)
    EXPECT_GE(service.CountOf("unregister Leaving.L" + std::to_string(i)), 1) << i;
}

TEST(LogServices, KeepTheLoggersThatWereMadeForThem) {
  TapeService service;
  Manager().InstallLogService(service);
  const auto logger = GetLogger("Service.MadeForIt");
  EXPECT_EQ(1, service.CountOf("register Service.MadeForIt"));
  Manager().UninstallLogService(service);
  EXPECT_EQ(1, service.CountOf("unregister Service.MadeForIt"));
  EXPECT_FALSE(Manager().Exists("Service.MadeForIt")) << "the default service never had it";
  EXPECT_EQ(logger, GetLogger("Service.MadeForIt"));
}

TEST(LogServices, ThatRefuseAHandlerKeepItFromNobodyElse) {
  const Unbuffered unbuffered;
  TapeService service;
  Manager().InstallLogService(service);
  service.m_onCall = [](const std::string& call) {
    if (call == "register handler") throw std::runtime_error("no");
  };
  TapeHandler handler;
  Manager().UninstallLogService(service);
  Write("to the handler");
  EXPECT_EQ(Texts{"to the handler"}, Of(handler));
}

class FailingServices : public testing::TestWithParam<bool> {
 protected:
  FailingServices() { Manager().SetBufferingMode(GetParam()); }
  ~FailingServices() override { Manager().SetBufferingMode(true); }
};

TEST_P(FailingServices, AreThrownOutAndTheNextEntryReachesTheDefaultService) {
  std::atomic<int> calls{0};
  TapeHandler handler;
  TapeService service;
  service.m_onWrite = [&calls](const OxaLogEntry&) {
    ++calls;
    throw std::runtime_error("no");
  };
  Manager().InstallLogService(service);
  Write("lost");
  Write("next");
  EXPECT_EQ(Texts{"next"}, Messages(handler.Await("Service.Test", 1)));
  EXPECT_EQ(1, calls);
  EXPECT_TRUE(Of(service).empty());
}

TEST_P(FailingServices, MayFailByAnErrorOfTheLibrary) {
  std::atomic<int> calls{0};
  TapeHandler handler;
  TapeService service;
  service.m_onWrite = [&calls](const OxaLogEntry&) {
    if (++calls == 1) OXA_RAISE_ERROR("Test.Service", LogicError("no"));
  };
  Manager().InstallLogService(service);
  Write("lost");
  Write("next");
  EXPECT_EQ(Texts{"next"}, Messages(handler.Await("Service.Test", 1)));
  EXPECT_EQ(1, calls);
}

TEST_P(FailingServices, MayBeInstalledAgain) {
  std::atomic<bool> fail{true};
  TapeHandler handler;
  TapeService service;
  service.m_onWrite = [&fail](const OxaLogEntry&) {
    if (fail.exchange(false)) throw std::runtime_error("no");
  };
  Manager().InstallLogService(service);
  Write("lost");
  Write("next");
  handler.Await("Service.Test", 1);
  Manager().InstallLogService(service);
  Write("again");
  EXPECT_TRUE(Eventually([&] { return Of(service) == Texts{"again"}; }));
}

TEST_P(FailingServices, MayUninstallThemselvesWhileTheyWrite) {
  TapeHandler handler;
  TapeService service;
  service.m_onWrite = [&service](const OxaLogEntry&) { Manager().UninstallLogService(service); };
  Manager().InstallLogService(service);
  Write("first");
  Write("second");
  EXPECT_EQ(Texts{"second"}, Messages(handler.Await("Service.Test", 1)));
  EXPECT_TRUE(Eventually([&] { return Of(service) == Texts{"first"}; }));
}

INSTANTIATE_TEST_SUITE_P(BufferedOrNot, FailingServices, testing::Bool());

TEST(LogServices, ThatLogWhileTheyWriteLoseThatWithoutBuffering) {
  const Unbuffered unbuffered;
  TapeService service;
  service.m_iClaimedHandlers = 1;
  service.m_onWrite = [](const OxaLogEntry&) { Write("from within"); };
  Manager().InstallLogService(service);
  Write("first");
  Write("second");
  EXPECT_EQ((Texts{"first", "second"}), Of(service));
}

TEST(LogServices, ThatLogWhileTheyWriteGetItWithBuffering) {
  std::atomic<int> left{3};
  TapeService service;
  service.m_iClaimedHandlers = 1;
  service.m_onWrite = [&left](const OxaLogEntry&) {
    if (left-- > 0) Write("from within");
  };
  Manager().InstallLogService(service);
  Write("first");
  EXPECT_TRUE(Eventually([&] { return Of(service).size() == 4; }));
}

// The one process-wide flag that stops a service from coming back to itself stops others as well.
TEST(LogServices, EntriesOfOtherThreadsAreDroppedWhileOneIsSentDirectly) {
  const Unbuffered unbuffered;
  TapeService service;
  service.m_iClaimedHandlers = 1;
  service.m_onWrite = [](const OxaLogEntry& entry) {
    if (entry.m_sMessage == "slow") std::thread([] { Write("meanwhile"); }).join();
  };
  Manager().InstallLogService(service);
  Write("slow");
  Write("afterwards");
  EXPECT_EQ((Texts{"slow", "afterwards"}), Of(service));
}

// A failing service can't be thrown out by a thread that sends directly while somebody else reads: it fails again.
TEST(LogServices, ThatFailDirectlyStayWhileOthersHoldTheLock) {
  const Unbuffered unbuffered;
  std::atomic<int> calls{0};
  std::atomic<bool> inside{false};
  std::atomic<bool> leave{false};
  TapeHandler handler;
  TapeService service;
  service.m_onWrite = [&calls](const OxaLogEntry&) {
    ++calls;
    throw std::runtime_error("no");
  };
  Manager().InstallLogService(service);
  service.m_onCall = [&](const std::string& call) {
    if (call != "exists Busy") return;
    inside = true;
    Eventually([&] { return leave.load(); });
  };
  std::thread reader([] { Manager().Exists("Busy"); });
  ASSERT_TRUE(Eventually([&] { return inside.load(); }));
  Write("first");
  Write("second");
  EXPECT_EQ(2, calls);
  leave = true;
  reader.join();
  Write("third");
  Write("fourth");
  EXPECT_EQ(3, calls);
  EXPECT_EQ(Texts{"fourth"}, Of(handler));
}

}  // namespace
