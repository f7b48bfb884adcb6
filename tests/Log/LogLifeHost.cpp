// A host that logs, and ends in one way or another: one scenario per run.
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/Assert.h>
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/Singleton.h>
#include <Infrastructure/OxaCore/System.h>

#include <pthread.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "LogTape.h"

// Bad formats are wanted here, and the compiler is not to see them.
#pragma GCC diagnostic ignored "-Wformat-nonliteral"

namespace {

using namespace Oxa::Core;
using LogTests::Eventually;
using LogTests::GetLogger;
using LogTests::TapeHandler;
using LogTests::TapeService;

void Write(const char* path, int number) { GetLogger(path)->WriteLog(eLOG_ERROR, "message %d", number); }

const char* Hidden(const char* format) {
  const char* volatile hidden = format;
  return hidden;
}

// Is destroyed by the library's shut-down, be that in the midst of its unloading.
class LateWriter : public ISingletonRegistryEntry {
 public:
  LateWriter() : m_logger(GetLogger("Late.Writer")) { SingletonRegistry::Register(this); }

  void Destroy() override {
    LogManager* const manager = LogManager::Instance();
    std::printf("manager: %d\n", manager != nullptr);
    std::printf("logger: %d\n", manager->GetLogger("Late.Writer") != nullptr);
    std::fflush(stdout);
    m_logger->WriteLog(eLOG_WARNING, "late %d", 5);
    m_logger->WriteLog(eLOG_DEBUG, "not heard");
    m_logger->WriteLog(eLOG_ALARM, Hidden("bad %"), 0);
    m_logger->WriteLog(eLOG_ALARM, Hidden(nullptr), 0);
    delete this;
  }

 private:
  boost::shared_ptr<Logger> m_logger;
};

void LogAndShutDown() {
  Write("Life", 1);
  ShutdownOxaCore();
}

void LogAndRaiseAndShutDown() {
  InitializeOxaCore();
  for (int i = 0; i < 10; ++i) Write("Life", i);
  try {
    OXA_RAISE_ERROR("Life", LogicError("raised"));
  } catch (LogicError&) {
  }
  ShutdownOxaCore();
}

void WriteAfterShutdown() {
  const auto logger = GetLogger("Life.After");
  ShutdownOxaCore();
  std::printf("manager: %d\n", LogManager::Instance() != nullptr);
  std::printf("alert manager: %d\n", AlertManager::Instance() != nullptr);
  logger->WriteLog(eLOG_ERROR, "to nobody");
  logger->WriteLog(eLOG_ERROR, Hidden("bad %"), 0);
  try {
    OXA_RAISE_ERROR("Life", LogicError("raised"));
  } catch (LogicError&) {
    std::puts("raise threw");
  }
  LogAssertFailed("after", CodeContext("file", 1, "build", "function", "signature"));
}

// What still waits is gone, and nobody waits for the disk.
void ShutDownWithAFullQueue() {
  auto* const handler = new TapeHandler([](const OxaLogEntry&) { OxaSleep(5, Elapse::MilliSeconds, false); });
  for (int i = 0; i < 900; ++i) Write("Life.Full", i);
  const double duration = TestSupport::MillisecondsOf([] { ShutdownOxaCore(); });
  const std::size_t taken = handler->Of("Life.Full").size();
  std::printf("taken whole: %d\nin time: %d\n", taken == 900, duration < 3000);
}

// A quiet shut-down has nobody wait for a second.
void ShutDownAtOnce() {
  Write("Life", 1);
  std::printf("in time: %d\n", TestSupport::MillisecondsOf([] { ShutdownOxaCore(); }) < 500);
}

TapeService& AnEternalService() {
  static auto* const service = new TapeService;
  LogManager::Instance()->InstallLogService(*service);
  return *service;
}

void ShutDownTellsTheService() {
  const TapeService& service = AnEternalService();
  Write("Life.A", 1);
  Write("Life.B", 1);
  ShutdownOxaCore();
  std::printf("told: %d %d\n", service.CountOf("unregister Life.A"), service.CountOf("unregister Life.B"));
}

void ShutDownEndsTheTellingAtTheFirstFailure() {
  TapeService& service = AnEternalService();
  Write("Life.A", 1);
  Write("Life.B", 1);
  const std::size_t before = service.m_calls.Count();
  service.m_onCall = [](const std::string&) { throw 5; };
  ShutdownOxaCore();
  std::printf("told: %d\n", static_cast<int>(service.m_calls.Count() - before));
}

void ExitTellsNoService() {
  TapeService& service = AnEternalService();
  Write("Life.A", 1);
  service.m_onCall = [](const std::string& call) { std::printf("told: %s\n", call.c_str()); };
}

void ShutDownTwice() {
  LogManager::Instance()->Shutdown();
  Write("Life", 1);
  LogManager::Instance()->SetBufferingMode(false);
  Write("Life", 2);
  LogManager::Instance()->SetBufferingMode(true);
  LogManager::Instance()->Shutdown();
  std::printf("buffering: %d\n", LogManager::Instance()->GetBufferingMode());
  ShutdownOxaCore();
  ShutdownOxaCore();
}

// A service may bring the end about itself, and is not asked for ever.
void ServiceShutsDownAgain() {
  TapeService& service = AnEternalService();
  Write("Life.A", 1);
  Write("Life.B", 1);
  service.m_onCall = [](const std::string&) { LogManager::Instance()->Shutdown(); };
  ShutdownOxaCore();
  std::printf("told: %d %d\n", service.CountOf("unregister Life.A"), service.CountOf("unregister Life.B"));
}

// The manager forgets its loggers, once: those that are made afterwards are left alone.
void ShutDownForgetsLoggersOnce() {
  const TapeService& service = AnEternalService();
  const auto logger = GetLogger("Life.Forgotten");
  LogManager::Instance()->Shutdown();
  std::printf("the same: %d\n", GetLogger("Life.Forgotten") == logger);
  LogManager::Instance()->Shutdown();
  std::printf("told: %d\n", service.CountOf("unregister Life.Forgotten"));
}

// Takes its time to go, for whoever unwinds the thread.
struct SlowEnd {
  ~SlowEnd() { std::this_thread::sleep_for(std::chrono::milliseconds(250)); }
};

// What waits behind an entry whose handler is just ending the thread is not lost by the switch.
void SwitchedOffWhileAHandlerEndsTheThread() {
  static std::atomic<bool> ending{false};
  auto* const handler = new TapeHandler([](const OxaLogEntry& entry) {
    if (entry.m_sMessage != "message 1") return;
    const SlowEnd slow;
    ending = true;
    ::pthread_exit(nullptr);
  });
  Write("Life.Ending", 1);
  Eventually([] { return ending.load(); });
  Write("Life.Ending", 2);
  LogManager::Instance()->SetBufferingMode(false);
  for (const OxaLogEntry& entry : handler->Of("Life.Ending"))
    std::printf("received: %s\n", entry.m_sMessage.c_str());
}

// Nothing of the library's is left waiting for a thread that a handler has ended.
void HandlerEndsTheThread() {
  static std::atomic<long> ending{0};
  auto* const handler = new TapeHandler([](const OxaLogEntry& entry) {
    if (entry.m_sMessage == "message 1") {
      ending = ::syscall(SYS_gettid);
      ::pthread_exit(nullptr);
    }
  });
  Write("Life.Ending", 1);
  const auto isGone = [] { return ::syscall(SYS_tgkill, ::getpid(), ending.load(), 0) != 0; };
  Eventually([&isGone] { return ending.load() != 0 && isGone(); });
  Write("Life.Ending", 2);
  const auto off = [] { LogManager::Instance()->SetBufferingMode(false); };
  std::printf("off in time: %d\n", TestSupport::MillisecondsOf(off) < 3000);
  for (const OxaLogEntry& entry : handler->Of("Life.Ending"))
    std::printf("received: %s\n", entry.m_sMessage.c_str());
  LogManager::Instance()->SetBufferingMode(true);
  Write("Life.Ending", 3);
  std::printf("received: %s\n", handler->Await("Life.Ending", 2).back().m_sMessage.c_str());
  std::printf("down in time: %d\n", TestSupport::MillisecondsOf([] { ShutdownOxaCore(); }) < 3000);
}

void ExitFromADirectHandler() {
  LogManager::Instance()->SetBufferingMode(false);
  new TapeHandler([](const OxaLogEntry& entry) {
    if (entry.m_sLoggerPath == "Life.End") std::exit(6);
  });
  Write("Life.End", 1);
}

// Shows what arrives as it arrives, which takes far longer than to write it.
TapeService& AShowingEternalService() {
  TapeService& service = AnEternalService();
  LogManager::Instance()->OnLogHandlerChange();
  service.m_onWrite = [](const OxaLogEntry& entry) {
    const bool isUncaught = entry.m_sMessage.find("<Circumstance>Uncaught Fatal Error<") != std::string::npos;
    if (entry.m_sForm == "plain") std::puts(entry.m_sMessage.c_str());
    if (isUncaught) std::printf("uncaught, buffering: %d\n", LogManager::Instance()->GetBufferingMode());
    std::fflush(stdout);
  };
  return service;
}

void DieWithAFullQueue() {
  AShowingEternalService();
  for (int i = 0; i < 900; ++i) Write("Life.Dying", i);
  throw LogicError("nobody catches this");
}

// Shuts the library down as the host's static objects die, before the library unloads.
struct LateShutdown {
  bool m_bWanted = false;
  ~LateShutdown() {
    if (m_bWanted) ShutdownOxaCore();
  }
};
LateShutdown s_lateShutdown;

void PrepareLateShutdown() {
  TapeService& service = AnEternalService();
  Write("Life.A", 1);
  service.m_onCall = [](const std::string& call) { std::printf("told: %s\n", call.c_str()); };
  s_lateShutdown.m_bWanted = true;
}

void DieBeforeTheShutdown() {
  PrepareLateShutdown();
  std::terminate();
}

int AwaitStatus(pid_t child) {
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

// A child has no thread to wait for, whatever it does at its end.
void ForkedChildrenEndAtOnce() {
  std::fflush(nullptr);
  const std::vector<void (*)()> ends = {[] {},
                                        [] { Write("Life.Child", 1); },
                                        [] { ShutdownOxaCore(); },
                                        [] {
                                          Write("Life.Child", 1);
                                          ShutdownOxaCore();
                                        },
                                        [] { LogManager::Instance()->Shutdown(); },
                                        [] { LogManager::Instance()->SetBufferingMode(false); }};
  for (const auto end : ends) {
    int status = 0;
    const double duration = TestSupport::MillisecondsOf([&] {
      const pid_t child = ::fork();
      if (child == 0) {
        end();
        std::exit(5);
      }
      status = AwaitStatus(child);
    });
    std::printf("child ended with %d in time: %d\n", status, duration < 900);
    std::fflush(stdout);
  }
  Write("Life.Parent", 1);
  ShutdownOxaCore();
}

void WriteAndRaiseUntil(const std::atomic<bool>& stop, const boost::shared_ptr<Logger>& logger) {
  while (!stop) {
    logger->WriteLog(eLOG_ERROR, "%s", "among others");
    try {
      OXA_RAISE_ERROR("Life.Raise", LogicError("raised"));
    } catch (LogicError&) {
    }
    OXA_RAISE_WARNING("Life.Warn", ErrorSlicedOnThrow("w"));
  }
}

void ShutDownAmongWriters() {
  std::atomic<bool> stop{false};
  const auto logger = GetLogger("Life.Writers");
  std::vector<std::thread> writers;
  for (int i = 0; i < 8; ++i) writers.emplace_back([&] { WriteAndRaiseUntil(stop, logger); });
  OxaSleep(50, Elapse::MilliSeconds, false);
  ShutdownOxaCore();
  OxaSleep(50, Elapse::MilliSeconds, false);
  stop = true;
  for (std::thread& writer : writers) writer.join();
  std::puts("over");
}

void ExitAmongWriters() {
  auto* const stop = new std::atomic<bool>(false);
  auto* const logger = new boost::shared_ptr<Logger>(GetLogger("Life.Writers"));
  for (int i = 0; i < 4; ++i) std::thread([=] { WriteAndRaiseUntil(*stop, *logger); }).detach();
  OxaSleep(50, Elapse::MilliSeconds, false);
  std::exit(0);  // not a return: the threads use what stands here
}

void ExitFromHandler() {
  new TapeHandler([](const OxaLogEntry& entry) {
    if (entry.m_sLoggerPath == "Life.End") std::exit(6);
  });
  Write("Life.End", 1);
  for (;;) ::pause();
}

void ExitWhileAHandlerHangs() {
  auto* const hanging = new std::atomic<bool>(false);
  new TapeHandler([hanging](const OxaLogEntry&) {
    *hanging = true;
    for (;;) OxaSleep(10, Elapse::MilliSeconds, false);
  });
  Write("Life.Hanging", 1);
  Eventually([hanging] { return hanging->load(); });
  std::exit(7);
}

// Handlers live to the end here, and the manager goes before them.
void ExitWithHandlers() {
  static TapeHandler handler;
  Write("Life.Handler", 1);
  handler.Await("Life.Handler", 1);
  std::puts("received");
}

}  // namespace

int main(int argc, char** argv) {
  const std::map<std::string, std::function<void()>> scenarios = {
      {"late", [] { new LateWriter; }},
      {"late-shut-down",
       [] {
         new LateWriter;
         ShutdownOxaCore();
       }},
      {"log", [] { Write("Life", 1); }},
      {"log-shut-down", LogAndShutDown},
      {"log-raise-shut-down", LogAndRaiseAndShutDown},
      {"after-shut-down", WriteAfterShutdown},
      {"full", ShutDownWithAFullQueue},
      {"at-once", ShutDownAtOnce},
      {"tells-service", ShutDownTellsTheService},
      {"failing-service", ShutDownEndsTheTellingAtTheFirstFailure},
      {"exit-tells-nobody", ExitTellsNoService},
      {"forgets-loggers", ShutDownForgetsLoggersOnce},
      {"service-shuts-down", ServiceShutsDownAgain},
      {"handler-ends-thread", HandlerEndsTheThread},
      {"off-while-handler-ends-thread", SwitchedOffWhileAHandlerEndsTheThread},
      {"exit-from-direct-handler", ExitFromADirectHandler},
      {"die", DieWithAFullQueue},
      {"late-end", PrepareLateShutdown},
      {"late-end-dying", DieBeforeTheShutdown},
      {"shut-down-twice", ShutDownTwice},
      {"fork", ForkedChildrenEndAtOnce},
      {"shut-down-among-writers", ShutDownAmongWriters},
      {"exit-among-writers", ExitAmongWriters},
      {"exit-from-handler", ExitFromHandler},
      {"exit-while-handler-hangs", ExitWhileAHandlerHangs},
      {"exit-with-handlers", ExitWithHandlers},
  };
  const auto scenario = scenarios.find(argc > 1 ? argv[1] : "");
  if (scenario == scenarios.end()) return 2;
  if (argc > 2) {
    System::Instance()->SetProcessPath(argv[2]);
    AlertManager::Instance()->SetFatalErrorBasePath(argv[2]);
  }
  scenario->second();
  return 0;
}
