// A host that faults, or is sent signals, one scenario per run.
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/MicrosoftSEHAdapter.h>
#include <Infrastructure/OxaCore/OxaCore.h>

#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <thread>

#include "FaultSites.h"
#include "Platform/Linux/FaultContext.h"

namespace {

using namespace Oxa::Core;
using namespace MSWindows;

void Say(const char* text) {
  if (::write(STDOUT_FILENO, text, std::strlen(text)) < 0) ::_exit(3);
}

template <class Site>
bool Caught(const Site& site) {
  try {
    site();
  } catch (SEHError&) {
    return true;
  }
  return false;
}

void OnSignal(int signal, siginfo_t*, void*) {
  Say(signal == SIGSEGV ? "host's SIGSEGV\n" : "host's other\n");
  ::_exit(7);
}

void Handle(int signal, void (*handler)(int, siginfo_t*, void*)) {
  struct sigaction action = {};
  action.sa_sigaction = handler;
  action.sa_flags = SA_SIGINFO;
  ::sigaction(signal, &action, nullptr);
}

bool IsDefault(int signal) {
  struct sigaction action = {};
  ::sigaction(signal, nullptr, &action);
  return (action.sa_flags & SA_SIGINFO) == 0 && action.sa_handler == SIG_DFL;
}

// Counts how deep it is in, and faults on each level.
class FaultyEar : public AlertListener {
 public:
  FaultyEar() { AlertManager::Instance()->AddAlertListener(*this); }
  void ErrorRaised(Error&) override {
    volatile int depth = 0;
    FaultSites::Recurse(&depth);
  }
};

void ReturnNowhere() {
  void* volatile* const frame = static_cast<void* volatile*>(__builtin_frame_address(0));
  frame[1] = reinterpret_cast<void*>(0x10);
}

// Stops all that comes up from its clean-up, which the compiler's tables tell.
__attribute__((noinline)) void WriteAndGoOn() noexcept {
  const std::string after("the clean-up has something to do, and is longer than a short text");
  FaultWrite(nullptr);
  Say(after.c_str());
}

// Handlers stay while there are uses: one by the load, and one by each initialisation, which no shutdown ends.
void CountUses() {
  InitializeOxaCore();
  InitializeOxaCore();
  ShutdownOxaCore();
  for (int uses = 3; uses > 0; --uses) {
    Say(Caught([] { FaultWrite(nullptr); }) ? "caught\n" : "not caught\n");
    SEHAdapter::Instance().Shutdown();
  }
  Say(InstallSEHErrorTranslator() == nullptr ? "no translator\n" : "still a translator\n");
  Say(IsDefault(SIGSEGV) ? "no handler\n" : "still a handler\n");
}

const std::map<std::string, std::function<void()>> s_scenarios = {
    {"uncaught", [] { FaultWrite(nullptr); }},
    {"uncaught-on-host-thread", [] { std::thread([] { FaultWrite(nullptr); }).join(); }},
    {"uncaught-on-translated-thread",
     [] {
       std::thread([] {
         InstallSEHErrorTranslator();
         FaultWrite(nullptr);
       }).join();
     }},
    {"overflow-uncaught",
     [] {
       volatile int depth = 0;
       FaultSites::Recurse(&depth);
     }},
    {"noncontinuable",
     [] {
       _EXCEPTION_RECORD record = {};
       CONTEXT context = {};
       record.m_uCode = 0xC0000025;
       record.m_signal.si_signo = SIGSEGV;
       _EXCEPTION_POINTERS pointers = {&record, &context};
       SEH_To_OXA_Translator(0xC0000025, &pointers);
       Say("came back\n");
     }},
    {"return-nowhere", [] { ReturnNowhere(); }},
    {"stack-pointer-gone", [] { FaultWithoutStack(); }},
    {"noexcept", [] { Say(Caught(&WriteAndGoOn) ? "caught\n" : "not caught\n"); }},
    {"alternate-stack-overflows",
     [] {
       static FaultyEar ear;
       volatile int depth = 0;
       FaultSites::Recurse(&depth);
     }},
    {"twice-initialised",
     [] {
       SEHAdapter::Instance().Initialize();
       SEHAdapter::Instance().Initialize();
       SEHAdapter::Instance().Shutdown();
       Say(Caught([] { FaultWrite(nullptr); }) ? "caught\n" : "not caught\n");
     }},
    {"adapter-released",
     [] {
       SEHAdapter::Instance().Shutdown();
       FaultWrite(nullptr);
     }},
    {"adapter-released-once-too-often",
     [] {
       SEHAdapter::Instance().Shutdown();
       SEHAdapter::Instance().Shutdown();
       SEHAdapter::Instance().Initialize();
       SEHAdapter::Instance().Initialize();
       Say(Caught([] { FaultWrite(nullptr); }) ? "caught\n" : "not caught\n");
     }},
    {"uses", &CountUses},
    {"sent", [] { ::kill(::getpid(), SIGSEGV); }},
    {"raised", [] { ::raise(SIGFPE); }},
    {"sent-to-a-thread", [] { std::thread([] { ::raise(SIGILL); }).join(); }},
    {"later-handler",
     [] {
       Handle(SIGSEGV, &OnSignal);
       FaultWrite(nullptr);
     }},
};

}  // namespace

int main(int argc, char** argv) {
  const auto scenario = s_scenarios.find(argc > 1 ? argv[1] : "");
  if (scenario == s_scenarios.end()) return 2;
  scenario->second();
  ShutdownOxaCore();
  return 0;
}
