// Writers, handlers, services and raises on eight threads at once, and what comes of lacking memory.
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/Warning.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "LogTape.h"

namespace {

using namespace Oxa::Core;
using LogTests::Eventually;
using LogTests::GetLogger;
using LogTests::TapeHandler;
using LogTests::TapeService;

#if defined(OXACORE_SOAK)
constexpr std::chrono::seconds s_length(60);
#else
constexpr std::chrono::seconds s_length(3);
#endif

LogManager& Manager() { return *LogManager::Instance(); }

// Runs each action over and over on a thread of its own, until the time is over.
void RunAll(const std::vector<std::function<void(int)>>& actions) {
  std::atomic<bool> stop{false};
  std::vector<std::thread> threads;
  for (const auto& action : actions) {
    threads.emplace_back([&stop, &action] {
      for (int turn = 0; !stop; ++turn) action(turn);
    });
  }
  std::this_thread::sleep_for(s_length);
  stop = true;
  for (std::thread& thread : threads) thread.join();
}

// Passes everything on, in silence; a tape would grow without end.
class Counter : public IOxaLogHandler {
 public:
  Counter() { Manager().RegisterHandler(this); }
  ~Counter() override { Manager().UnregisterHandler(this); }
  void OnLoggersChanged() override {}
  void HandleLogEntry(const OxaLogEntry&) override { ++m_iEntries; }
  std::atomic<int> m_iEntries{0};
};

void WriteALittle(int turn) {
  const auto logger = GetLogger("Stress.W" + std::to_string(turn % 7));
  for (int i = 0; i < 20; ++i) logger->WriteLog(eLOG_ERROR, "%d %s", turn, "text");
  std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

void ComeAndGoAsHandler(int turn) {
  const Counter counter;
  if (turn % 3 == 0) WriteALittle(turn);
}

void ComeAndGoAsService(int turn) {
  TapeService service;
  if (turn % 2 == 0) service.m_iClaimedHandlers = 1;
  if (turn % 5 == 0) {
    service.m_onWrite = [](const OxaLogEntry&) { throw 5; };
  }
  Manager().InstallLogService(service);
  WriteALittle(turn);
}

void MakeAndForgetLoggers(int turn) {
  const std::string path = "Stress.L" + std::to_string(turn % 5);
  GetLogger(path)->WriteLog(eLOG_ERROR, "text");
  Manager().SetSeverityFilters(path, uDEFAULT_LOG_FILTERS);
  Manager().UnregisterLogger(path);
  std::list<std::string> names;
  Manager().EnumLoggers("Stress", names);
}

void RaiseAndWarn(int turn) {
  try {
    OXA_RAISE_ERROR("Stress.Raise", LogicError(std::to_string(turn)));
  } catch (LogicError&) {
  }
  OXA_RAISE_WARNING("Stress.Warn" + std::to_string(turn % 3), ErrorSlicedOnThrow("w"));
  std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

void SwitchBuffering(int turn) { Manager().SetBufferingMode(turn % 2 == 0); }

// Said again until it is heard: what is written while the queue is still at its limit is rightly lost.
bool IsAlive(const TapeHandler& handler) {
  return Eventually([&handler] {
    GetLogger("Stress.End")->WriteLog(eLOG_ERROR, "alive");
    return !handler.Of("Stress.End").empty();
  });
}

TEST(LogStress, HandlersServicesLoggersAndWritersComeAndGo) {
  RunAll({WriteALittle, WriteALittle, ComeAndGoAsHandler, ComeAndGoAsHandler, ComeAndGoAsService,
          ComeAndGoAsService, MakeAndForgetLoggers, RaiseAndWarn});
  TapeHandler handler;
  EXPECT_TRUE(IsAlive(handler));
}

TEST(LogStress, BufferingIsSwitchedMeanwhile) {
  RunAll({WriteALittle, WriteALittle, ComeAndGoAsHandler, ComeAndGoAsService, MakeAndForgetLoggers,
          RaiseAndWarn, SwitchBuffering, SwitchBuffering});
  Manager().SetBufferingMode(true);
  TapeHandler handler;
  EXPECT_TRUE(IsAlive(handler));
}

// A handler asks for loggers while services change and other threads make loggers: none waits for the other.
TEST(LogStress, HandlersAskForLoggersWhileServicesChange) {
  TapeHandler asking([](const OxaLogEntry& entry) {
    if (entry.m_sMessage == "ask") GetLogger("Stress.Asked" + std::to_string(entry.m_sLoggerPath.size()));
  });
  RunAll({[](int turn) {
            GetLogger("Stress.Ask" + std::string(static_cast<std::size_t>(turn % 9), 'x'))
                ->WriteLog(eLOG_ERROR, "ask");
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
          },
          ComeAndGoAsService, MakeAndForgetLoggers, MakeAndForgetLoggers});
  EXPECT_TRUE(IsAlive(asking));
}

TEST(LogStress, NothingIsLostBelowTheLimit) {
  TapeHandler handler;
  constexpr int iTHREADS = 8;
  constexpr int iMESSAGES = 300;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < iTHREADS; ++thread) {
    threads.emplace_back([thread] {
      const auto logger = GetLogger("Stress.All" + std::to_string(thread));
      for (int i = 0; i < iMESSAGES; ++i) logger->WriteLog(eLOG_ERROR, "%d", i);
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (int thread = 0; thread < iTHREADS; ++thread) {
    const auto entries = handler.Await("Stress.All" + std::to_string(thread), iMESSAGES);
    ASSERT_EQ(static_cast<std::size_t>(iMESSAGES), entries.size());
    for (int i = 0; i < iMESSAGES; ++i)
      ASSERT_EQ(std::to_string(i), entries[static_cast<std::size_t>(i)].m_sMessage);
  }
}

}  // namespace
