// A host that ends by an exception that nobody catches: one scenario per run.
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/OxaCore.h>

#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <map>
#include <string>
#include <thread>

namespace {

using namespace Oxa::Core;

// Deaf to ordinary alerts, so that it also shows that fatal ones pass no filter.
class Witness : public AlertListener {
 public:
  Witness() {
    m_severityMask = 0;
    AlertManager::Instance()->AddAlertListener(*this);
  }
  void ErrorRaised(Error&) override { std::puts("heard a raise"); }
  void UncaughtFatalError(Error& error, const std::string& path) override {
    std::printf("uncaught: %s, path \"%s\"\n", error.what(), path.c_str());
    std::fflush(stdout);
    if (m_then) m_then();
  }
  std::function<void()> m_then;
};

class HandledCounter : public AlertListener {
 public:
  HandledCounter() { AlertManager::Instance()->AddAlertListener(*this); }
  void ErrorHandled(Error& error) override {
    std::printf("handled: %s\n", error.what());
    std::fflush(stdout);
  }
};

Witness& TheWitness() {
  static Witness* const witness = new Witness;  // alive to the very end
  return *witness;
}

void RaiseAndCatch(const char* message) {
  try {
    OXA_RAISE_ERROR("Test.Host", LogicError(message));
  } catch (Error&) {
  }
}

[[noreturn]] void Hang() {
  for (;;) ::pause();
}

void RaiseUncaught() { OXA_RAISE_ERROR("Test.Host", LogicError("nobody <catches> this")); }

void HandledIsNotTold() {
  new HandledCounter;
  RaiseUncaught();
}

void ThrowNumber() { throw 42; }

void ThrowNumberAfterAnError() {
  RaiseAndCatch("caught before");
  throw 42;
}

// The other thread's own last error counts, not the newest of the process.
void ErrorOfTheOwnThread() {
  std::atomic<int> step{0};
  std::thread other([&step] {
    RaiseAndCatch("of the dying thread");
    step = 1;
    while (step != 2) std::this_thread::yield();
    throw 42;
  });
  while (step != 1) std::this_thread::yield();
  RaiseAndCatch("of the main thread");
  step = 2;
  Hang();
}

void ErrorOfAnyThread() {
  RaiseAndCatch("of the main thread");
  std::thread([] { throw 42; }).detach();
  Hang();
}

void UncaughtInAThread() {
  std::thread(&RaiseUncaught).detach();
  Hang();
}

void NoReports() {
  AlertManager::SetMaxFatalErrorReports(0);
  RaiseUncaught();
}

// A second uncaught error comes while the first is being told.
void SecondDuringFirst() {
  TheWitness().m_then = [] { std::terminate(); };
  RaiseUncaught();
}

void TwoReports() {
  AlertManager::SetMaxFatalErrorReports(2);
  TheWitness().m_then = [] {
    TheWitness().m_then = nullptr;
    std::terminate();
  };
  RaiseUncaught();
}

void ListenerThatThrows() {
  TheWitness().m_then = [] { throw LogicError("bad witness"); };
  RaiseUncaught();
}

void ThroughNoexcept() {
  const auto wall = []() noexcept { RaiseUncaught(); };
  wall();
}

void PlainTerminate() { std::terminate(); }

void StaticObjectsDie() {
  static struct Last {
    ~Last() {
      std::puts("static object died");
      RaiseAndCatch("raised while exiting");
      std::puts("the raise returned");
    }
  } last;
  RaiseUncaught();
}

const std::map<std::string, void (*)()> SCENARIOS = {
    {"raise", &RaiseUncaught},
    {"handled", &HandledIsNotTold},
    {"number", &ThrowNumber},
    {"number-after-error", &ThrowNumberAfterAnError},
    {"own-thread", &ErrorOfTheOwnThread},
    {"any-thread", &ErrorOfAnyThread},
    {"thread", &UncaughtInAThread},
    {"no-reports", &NoReports},
    {"second-during-first", &SecondDuringFirst},
    {"two-reports", &TwoReports},
    {"bad-listener", &ListenerThatThrows},
    {"noexcept", &ThroughNoexcept},
    {"terminate", &PlainTerminate},
    {"static-objects", &StaticObjectsDie},
};

}  // namespace

int main(int argc, char** argv) {
  const auto scenario = SCENARIOS.find(argc > 1 ? argv[1] : "");
  if (scenario == SCENARIOS.end()) return 99;
  TheWitness();
  scenario->second();
  return 0;
}
