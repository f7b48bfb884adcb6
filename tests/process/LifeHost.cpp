// A host that is linked with the library: one scenario of its life per run.
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/Singleton.h>

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Oxa::Core;

int Raise() {
  try {
    OXA_RAISE_ERROR("Test.Host", LogicError("from the host"));
    return 0;
  } catch (LogicError&) {
    return 1;
  }
}

// Dies before the library unloads, and may raise as at any time.
struct StaticObject {
  bool m_bRaise = false;
  ~StaticObject() {
    if (m_bRaise) std::printf("static object's raise threw: %d\n", Raise());
  }
};
StaticObject s_staticObject;

class Ledger : public Singleton<Ledger> {
 public:
  Ledger() { std::puts("ledger built"); }
  ~Ledger() override { std::puts("ledger destroyed"); }
};

class Thrower : public Singleton<Thrower> {
 protected:
  void Destroy() override { throw std::runtime_error("bad destructor"); }
};

void InitializeTwice() {
  InitializeOxaCore();
  InitializeOxaCore();
  ShutdownOxaCore();
}

void SingletonsDieAtShutdown() {
  Ledger::Instance();
  ShutdownOxaCore();
  std::printf("instantiated: %d\n", Ledger::IsInstantiated());
  ShutdownOxaCore();
}

void SingletonIsMadeAnewAfterShutdown() {
  Ledger::Instance();
  ShutdownOxaCore();
  Ledger::Instance();
  ShutdownOxaCore();
  std::puts("end of main");
}

void BadSingletonHidesTheLaterOnes() {
  Thrower::Instance();
  Ledger::Instance();
  ShutdownOxaCore();
  std::printf("instantiated: %d\n", Ledger::IsInstantiated());
}

void ExitFromAnotherThread() {
  std::thread([] { std::exit(7); }).join();
}

// Both live to the very end.
class HangingListener : public AlertListener {
 public:
  void ErrorRaised(Error&) override {
    m_bHeard = true;
    for (;;) ::pause();
  }
  std::atomic<bool> m_bHeard{false};
};

class EndingListener : public AlertListener {
 public:
  void ErrorRaised(Error&) override { std::exit(6); }
};

void ExitWhileOtherThreadsRaise() {
  std::atomic<int> raises{0};
  for (int i = 0; i < 4; ++i) {
    std::thread([&raises] {
      for (;;) {
        Raise();
        ++raises;
      }
    }).detach();
  }
  while (raises < 100) std::this_thread::yield();
  // Not a return: the counter must stay while the threads use it.
  std::exit(0);
}

void ExitWhileAlertIsBeingTold() {
  HangingListener* const listener = new HangingListener;
  AlertManager::Instance()->AddAlertListener(*listener);
  std::thread([] { Raise(); }).detach();
  while (!listener->m_bHeard) std::this_thread::yield();
  std::exit(4);
}

void ExitFromListener() {
  AlertManager::Instance()->AddAlertListener(*new EndingListener);
  Raise();
}

// Children are forked off while other threads hold what locks they will; each must come to its end.
void ForkWhileOtherThreadsRaise() {
  std::atomic<bool> stop{false};
  std::vector<std::thread> raisers;
  for (int i = 0; i < 3; ++i) {
    raisers.emplace_back([&stop] {
      while (!stop) Raise();
    });
  }
  int ended = 0;
  for (int i = 0; i < 50; ++i) {
    const pid_t child = ::fork();
    if (child == 0) std::exit(5);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 5) ++ended;
  }
  stop = true;
  for (std::thread& raiser : raisers) raiser.join();
  std::printf("%d children ended\n", ended);
  ShutdownOxaCore();
}

class SlowWitness : public AlertListener {
 public:
  void UncaughtFatalError(Error& error, const std::string&) override {
    m_bHeard = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    std::printf("uncaught: %s\n", error.what());
    std::fflush(stdout);
  }
  std::atomic<bool> m_bHeard{false};
};

// The process ends regularly while the end of a thread is still being reported.
void ExitWhileAThreadDies() {
  SlowWitness* const witness = new SlowWitness;
  AlertManager::Instance()->AddAlertListener(*witness);
  std::thread([] { OXA_RAISE_ERROR("Test.Host", LogicError("dying")); }).detach();
  while (!witness->m_bHeard) std::this_thread::yield();
}

class RaisingListener : public AlertListener {
 public:
  void ErrorRaised(Error&) override { OXA_RAISE_ERROR("Test.Host", IOError("the disk is full")); }
  void WarningRaised(Warning&) override {
    OXA_RAISE_WARNING("Test.Host", ErrorSlicedOnThrow("never ending"));
  }
};

void TwoListenersThatRaise() {
  RaisingListener first;
  RaisingListener second;
  AlertManager::Instance()->AddAlertListener(first);
  AlertManager::Instance()->AddAlertListener(second);
  AlertManager::Instance()->SetMaxWarnings(typeid(ErrorSlicedOnThrow).name(), 0, true);
  AlertManager::Instance()->SetMaxWarnings(typeid(ListenerErrorOnNotification).name(), 0, true);
  Raise();
  std::puts("came back");
}

void ListenerThatWarnsAtEveryWarning() {
  RaisingListener listener;
  AlertManager::Instance()->AddAlertListener(listener);
  OXA_RAISE_WARNING("Test.Host", ErrorSlicedOnThrow("first"));
  std::puts("came back");
}

void ForkedChildExits() {
  std::fflush(nullptr);
  const pid_t child = ::fork();
  if (child == 0) std::exit(5);
  int status = 0;
  ::waitpid(child, &status, 0);
  std::printf("child ended with %d\n", WEXITSTATUS(status));
  ShutdownOxaCore();
}

}  // namespace

int main(int argc, char** argv) {
  const std::map<std::string, std::function<void()>> scenarios = {
      {"nothing", [] {}},
      {"shutdown-only", [] { ShutdownOxaCore(); }},
      {"initialize-twice", InitializeTwice},
      {"static-raise",
       [] {
         s_staticObject.m_bRaise = true;
         ShutdownOxaCore();
       }},
      {"raise-after-shutdown",
       [] {
         ShutdownOxaCore();
         std::printf("raise threw: %d\n", Raise());
       }},
      {"singletons", SingletonsDieAtShutdown},
      {"singleton-anew", SingletonIsMadeAnewAfterShutdown},
      {"bad-singleton", BadSingletonHidesTheLaterOnes},
      {"exit-from-thread", ExitFromAnotherThread},
      {"exit-while-raising", ExitWhileOtherThreadsRaise},
      {"exit-while-telling", ExitWhileAlertIsBeingTold},
      {"exit-from-listener", ExitFromListener},
      {"exit-while-dying", ExitWhileAThreadDies},
      {"fork", ForkedChildExits},
      {"fork-while-raising", ForkWhileOtherThreadsRaise},
      {"two-raising-listeners", TwoListenersThatRaise},
      {"warning-listener", ListenerThatWarnsAtEveryWarning},
  };
  const auto scenario = scenarios.find(argc > 1 ? argv[1] : "");
  if (scenario == scenarios.end()) return 2;
  scenario->second();
  return 0;
}
