// A host that dies: its arguments say how, and with which settings. What it hears on the way goes to its standard
// output, line by line.
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/MicrosoftSEHAdapter.h>
#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/Singleton.h>
#include <Infrastructure/OxaCore/System.h>

#include <fenv.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "Support/FaultSite.h"

// The linker's own words for where a part of the program begins and ends.
extern "C" const char __start_failing[];  // NOLINT(bugprone-reserved-identifier)
extern "C" const char __stop_failing[];   // NOLINT(bugprone-reserved-identifier)

namespace {

using namespace Oxa::Core;

[[noreturn]] void Hang() {
  for (;;) ::pause();
}

// What fails stands in a part of the program of its own, so that its addresses can be told.
#define OXA_FAILING __attribute__((noinline, section("failing")))

OXA_FAILING OXA_FAULT_SITE void Fault() {
  volatile int* volatile nowhere = nullptr;
  *nowhere = 1;
}

void Say(const std::string& line) {
  std::string text = line + '\n';
  for (char& c : text) {
    if (c == '\n' && &c != &text.back()) c = '|';
  }
  [[maybe_unused]] const auto written = ::write(STDOUT_FILENO, text.data(), text.size());
}

// Deaf to errors, so that it also shows that fatal ones pass no filter.
class Witness : public AlertListener {
 public:
  Witness() {
    m_severityMask = 1;
    AlertManager::Instance()->AddAlertListener(*this);
  }
  void WarningRaised(Warning& warning) override {
    Say("warning: " + warning.GetData(AlertInfo::sLOG_NAME) + ": " + warning.GetData(AlertInfo::sMESSAGE));
    if (m_atWarning) m_atWarning();
  }
  void UncaughtFatalError(Error& error, const std::string& path) override {
    Say(std::string("uncaught: ") + error.what() + ", path " + path);
    if (m_atEnd) m_atEnd();
  }
  std::function<void()> m_atWarning;
  std::function<void()> m_atEnd;
};

Witness& TheWitness() {
  static Witness* const witness = new Witness;  // alive to the very end
  return *witness;
}

// --- Ways to die

OXA_FAILING void RaiseUncaught() { OXA_RAISE_ERROR("Test.Fatal", LogicError("nobody <catches> this")); }

OXA_FAILING void ThrowNumber() { throw 42; }

OXA_FAILING void Forward() {
  try {
    std::string().at(1);
  }
  OXA_FORWARD_ERRORS
}

// On a thread that has no translator.
void FaultUntranslated() {
  std::thread([] { Fault(); }).detach();
  Hang();
}

template <void (*DIE)()>
void* OnThread(void*) {
  DIE();
  return nullptr;
}

template <void (*DIE)()>
void OnSmallStack() {
  pthread_attr_t attributes;
  ::pthread_attr_init(&attributes);
  ::pthread_attr_setstacksize(&attributes, 64 * 1024);
  pthread_t thread;
  if (::pthread_create(&thread, &attributes, &OnThread<DIE>, nullptr) != 0) std::exit(97);
  Hang();
}

template <void (*DIE)()>
void EightAtOnce() {
  std::atomic<int> waiting{0};
  for (int i = 0; i < 8; ++i) {
    std::thread([&waiting] {
      ++waiting;
      while (waiting < 8) std::this_thread::yield();
      DIE();
    }).detach();
  }
  Hang();
}

void InStaticDestructor() {
  static struct Last {
    ~Last() { Fault(); }
  } last;
}

// Nobody destroys it but the library.
class FaultyWhenDestroyed : public ISingletonRegistryEntry {
 public:
  FaultyWhenDestroyed() { SingletonRegistry::Register(this); }
  void Destroy() override { Fault(); }
};

void WhileUnloading() { new FaultyWhenDestroyed; }

void AfterShutdown() {
  ShutdownOxaCore();
  RaiseUncaught();
}

// While what the fault left still stands.
class FilterCaller : public AlertListener {
 public:
  FilterCaller() { AlertManager::Instance()->AddAlertListener(*this); }
  void ErrorRaised(Error& error) override {
    if (auto* const fault = dynamic_cast<MSWindows::SEHError*>(&error))
      OxaUnhandledExceptionFilter(&fault->GetExceptionPointers());
  }
};

void ByFilter() {
  static FilterCaller* const caller = new FilterCaller;
  static_cast<void>(caller);
  Fault();
}

void ByFilterWithoutFacts() { OxaUnhandledExceptionFilter(nullptr); }

const std::map<std::string, void (*)()> WAYS = {
    {"error", &RaiseUncaught},
    {"number", &ThrowNumber},
    {"forwarded", &Forward},
    {"terminate", [] { std::terminate(); }},
    {"fault", &Fault},
    {"untranslated", &FaultUntranslated},
    {"small-error", &OnSmallStack<&RaiseUncaught>},
    {"small-fault", &OnSmallStack<&Fault>},
    {"eight-errors", &EightAtOnce<&RaiseUncaught>},
    {"eight-faults", &EightAtOnce<&Fault>},
    {"static", &InStaticDestructor},
    {"unloading", &WhileUnloading},
    {"after-shutdown", &AfterShutdown},
    {"filter", &ByFilter},
    {"filter-without-facts", &ByFilterWithoutFacts},
};

// --- Settings

// Hangs over the first entry that it is handed, on the log's own thread.
class HangingHandler : public IOxaLogHandler {
 public:
  void OnLoggersChanged() override {}
  void HandleLogEntry(const OxaLogEntry&) override { Hang(); }
};

void HangLog() {
  LogManager::Instance()->RegisterHandler(new HangingHandler);
  LogManager::Instance()->GetLogger("Test.Fatal")->WriteLog(eLOG_ALARM, "the last entry");
}

// The exit writes out what stands in the buffers of files, and waits for this lock.
void HoldOutput() {
  static std::atomic<bool> s_bHeld{false};
  std::thread([] {
    ::flockfile(stdout);
    s_bHeld = true;
    Hang();
  }).detach();
  while (!s_bHeld) std::this_thread::yield();
}

void SayBuffering() {
  Say(LogManager::Instance()->GetBufferingMode() ? "the log buffers" : "the log doesn't buffer");
}

void SayThird() {
  volatile double three = 3;
  three = 1 / three;
  Say(three > 0.3 ? "a third" : "nothing");
}

void LimitFiles(const std::string& size) {
  const rlimit limit = {std::stoul(size), std::stoul(size)};
  ::setrlimit(RLIMIT_FSIZE, &limit);
}

void AddInfo(const std::string& entry) {
  const auto colon = entry.find(':');
  AlertManager::Instance()->AddFatalErrorInfo(entry.substr(0, colon), entry.substr(colon + 1));
}

void SetBasePath(const std::string& path) {
  const bool set = AlertManager::Instance()->SetFatalErrorBasePath(path);
  if (!set) Say("refused");
}

void Again(int& times, void (*die)()) {
  if (times-- > 0) die();
}

// A child that dies while its parent does.
void ForkAndDie(void (*die)()) {
  const pid_t child = ::fork();
  if (child == 0) die();
  int status = 0;
  if (::waitpid(child, &status, 0) != child) return;
  Say("the child's end: " + std::to_string(WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status)));
}

void SayPlaces() {
  char text[80];
  std::snprintf(text, sizeof(text), "%d %#lx %#lx", ::getpid(),
                reinterpret_cast<unsigned long>(__start_failing),
                reinterpret_cast<unsigned long>(__stop_failing));
  Say(text);
}

// Dies anew, so many times, while the last death is being told.
void DieAgain(const std::string& times) {
  static int s_iTimes;
  s_iTimes = std::stoi(times);
  TheWitness().m_atEnd = [] { Again(s_iTimes, &std::terminate); };
}

const std::map<std::string, std::function<void(const std::string&)>> SETTINGS = {
    {"base", &SetBasePath},
    {"process", [](const std::string& path) { System::Instance()->SetProcessPath(path); }},
    {"cwd",
     [](const std::string& path) {
       if (::chdir(path.c_str()) != 0) std::exit(96);
     }},
    {"info", &AddInfo},
    {"reports", [](const std::string& max) { AlertManager::SetMaxFatalErrorReports(std::stoi(max)); }},
    {"policy",
     [](const std::string& policy) {
       AlertManager::Instance()->SetDumpPolicy(static_cast<EDumpPolicy>(std::stoi(policy)));
     }},
    {"signal", [](const std::string&) { AlertManager::SetEndBySignal(true); }},
    {"files", &LimitFiles},
    {"again", &DieAgain},
    {"say-buffering",
     [](const std::string&) {
       SayBuffering();
       TheWitness().m_atEnd = &SayBuffering;
     }},
    {"fork-at-end",
     [](const std::string& way) {
       TheWitness().m_atEnd = [=] { ForkAndDie(way == "terminate" ? &std::terminate : &Fault); };
     }},
    {"say-places", [](const std::string&) { SayPlaces(); }},
    {"hang-at-end", [](const std::string&) { TheWitness().m_atEnd = &Hang; }},
    {"hang-at-warning", [](const std::string&) { TheWitness().m_atWarning = &Hang; }},
    {"fault-at-warning", [](const std::string&) { TheWitness().m_atWarning = &Fault; }},
    {"fault-at-end", [](const std::string&) { TheWitness().m_atEnd = &Fault; }},
    {"exit-at-end",
     [](const std::string& status) {
       static int s_iStatus;
       s_iStatus = std::stoi(status);
       TheWitness().m_atEnd = [] { std::exit(s_iStatus); };
     }},
    {"trap",
     [](const std::string&) {
       ::feenableexcept(FE_INEXACT);
       TheWitness().m_atEnd = &SayThird;
     }},
    {"die-at-warning",
     [](const std::string& number) {
       static int s_iLeft;
       s_iLeft = std::stoi(number);
       TheWitness().m_atWarning = [] {
         if (--s_iLeft == 0) ::_exit(3);
       };
     }},
    {"hold-output", [](const std::string&) { HoldOutput(); }},
    {"hang-log", [](const std::string&) { HangLog(); }},
};

}  // namespace

int main(int argc, char** argv) {
  const auto way = WAYS.find(argc > 1 ? argv[1] : "");
  if (way == WAYS.end()) return 99;
  TheWitness();
  for (int i = 2; i < argc; ++i) {
    const std::string argument = argv[i];
    const auto equals = argument.find('=');
    SETTINGS.at(argument.substr(0, equals))(equals == std::string::npos ? "" : argument.substr(equals + 1));
  }
  way->second();
  return 0;
}
