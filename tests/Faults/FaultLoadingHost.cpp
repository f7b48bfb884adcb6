// Loads the library at run time, with handlers of its own for the signals of faults.
#include <dlfcn.h>
#include <setjmp.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include "Support/FaultSite.h"
#include "Support/GuardPages.h"

namespace {

using TestSupport::GuardPages;

constexpr int iHANDLED = 7;

[[noreturn]] void Fail(const char* what) {
  std::fprintf(stderr, "%s\n", what);
  std::_Exit(2);
}

void Expect(bool condition, const char* what) {
  if (!condition) Fail(what);
}

void OnSignal(int, siginfo_t*, void*) { ::_exit(iHANDLED); }

void TakeSignal(int signal) {
  struct sigaction action = {};
  action.sa_sigaction = &OnSignal;
  action.sa_flags = SA_SIGINFO;
  ::sigaction(signal, &action, nullptr);
}

struct sigaction ActionOf(int signal) {
  struct sigaction action = {};
  ::sigaction(signal, nullptr, &action);
  return action;
}

bool IsOurs(int signal) { return ActionOf(signal).sa_sigaction == &OnSignal; }
bool IsDefault(int signal) { return ActionOf(signal).sa_handler == SIG_DFL; }

class Library {
 public:
  explicit Library(const char* plugin) : m_pHandle(::dlopen(plugin, RTLD_NOW | RTLD_LOCAL)) {
    Expect(m_pHandle != nullptr, "load");
    Expect(reinterpret_cast<bool (*)()>(::dlsym(m_pHandle, "CatchOne"))(), "no fault was caught");
  }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
  ~Library() { ::dlclose(m_pHandle); }

  void* (*Find(const char* name) const)() {
    void* const found = ::dlsym(m_pHandle, name);
    Expect(found != nullptr, name);
    return reinterpret_cast<void* (*)()>(found);
  }

 private:
  void* m_pHandle;
};

OXA_FAULT_SITE void Fault() {
  int* volatile nowhere = nullptr;
  *const_cast<volatile int*>(nowhere) = 1;
}

void ExpectNothingLeft(const stack_t& before) {
  for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL}) Expect(IsDefault(signal), "a handler is left");
  for (int signal = SIGRTMIN; signal <= SIGRTMAX; ++signal)
    Expect(IsDefault(signal), "a handler of kills is left");
  stack_t stack;
  ::sigaltstack(nullptr, &stack);
  Expect(stack.ss_sp == before.ss_sp && (stack.ss_flags & SS_DISABLE) == (before.ss_flags & SS_DISABLE),
         "an alternate stack is left");
}

// The earlier handler has the faults of threads that the library doesn't know, while the library has its own.
void HandlerBefore(const char* plugin) {
  TakeSignal(SIGSEGV);
  const Library library(plugin);
  std::thread(&Fault).join();
}

void HandlerBeforeIsSent(const char* plugin) {
  TakeSignal(SIGSEGV);
  const Library library(plugin);
  ::kill(::getpid(), SIGSEGV);
}

volatile sig_atomic_t s_iHandled = 0;
volatile sig_atomic_t s_iBlocked = 0;  // as the handler had it: 1 for the signal itself, 2 for another one
sigjmp_buf s_back;

bool IsBlocked(int signal) {
  sigset_t mask;
  ::pthread_sigmask(SIG_BLOCK, nullptr, &mask);
  return ::sigismember(&mask, signal) == 1;
}

// Of the old kind: it is told nothing but the number.
void OnPlainSignal(int signal) {
  s_iHandled = signal;
  s_iBlocked = (IsBlocked(signal) ? 1 : 0) + (IsBlocked(SIGUSR1) ? 2 : 0);
  ::siglongjmp(s_back, 1);
}

void TakePlainly(int flags) {
  struct sigaction action = {};
  action.sa_handler = &OnPlainSignal;
  action.sa_flags = flags;
  ::sigaddset(&action.sa_mask, SIGUSR1);
  ::sigaction(SIGSEGV, &action, nullptr);
}

void FaultAndComeBack() {
  if (sigsetjmp(s_back, 1) == 0) Fault();
}

void PlainHandlerBefore(const char* plugin) {
  TakePlainly(0);
  const Library library(plugin);
  std::thread(&FaultAndComeBack).join();
  Expect(s_iHandled == SIGSEGV, "the handler wasn't called");
  Expect(s_iBlocked == 3, "the handler ran with another mask than it asked for");
}

void NestingHandlerBefore(const char* plugin) {
  TakePlainly(SA_NODEFER);
  const Library library(plugin);
  std::thread(&FaultAndComeBack).join();
  Expect(s_iHandled == SIGSEGV && s_iBlocked == 2, "the handler ran with another mask than it asked for");
}

// It means to be called once, and to leave what comes then to the system.
void ResetHandlerBefore(const char* plugin) {
  struct sigaction action = {};
  action.sa_sigaction = [](int, siginfo_t*, void*) {
    constexpr char sCALLED[] = "called\n";
    if (::write(STDOUT_FILENO, sCALLED, sizeof sCALLED - 1) < 0 || ++s_iHandled > 1) ::_exit(iHANDLED);
  };
  action.sa_flags = SA_SIGINFO | static_cast<int>(SA_RESETHAND);
  ::sigaction(SIGSEGV, &action, nullptr);
  const Library library(plugin);
  std::thread(&Fault).join();
}

void TakeOnce(int signal) {
  struct sigaction action = {};
  action.sa_handler = [](int number) { s_iHandled = number; };
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  ::sigaction(signal, &action, nullptr);
}

void ResetHandlerIsSentTwice(const char* plugin) {
  TakeOnce(SIGFPE);
  const Library library(plugin);
  ::raise(SIGFPE);
  Expect(s_iHandled == SIGFPE, "the handler wasn't called");
  ::raise(SIGFPE);
}

void ResetHandlerDoesNotComeBack(const char* plugin) {
  TakeOnce(SIGFPE);
  {
    const Library library(plugin);
    ::raise(SIGFPE);
  }
  Expect(s_iHandled == SIGFPE && IsDefault(SIGFPE), "the handler came back");
  TakeOnce(SIGFPE);
  s_iHandled = 0;
  const Library library(plugin);
  ::raise(SIGFPE);
  Expect(s_iHandled == SIGFPE, "the handler that is in force anew wasn't called");
}

// What it blocked is let through again when it returns.
void MaskComesBack(const char* plugin) {
  struct sigaction action = {};
  action.sa_handler = [](int signal) { s_iHandled = signal; };
  ::sigaddset(&action.sa_mask, SIGUSR1);
  ::sigaction(SIGFPE, &action, nullptr);
  const Library library(plugin);
  ::raise(SIGFPE);
  Expect(s_iHandled == SIGFPE, "the handler wasn't called");
  Expect(!IsBlocked(SIGFPE) && !IsBlocked(SIGUSR1), "a signal stays blocked");
}

// Nobody can ignore a fault.
void FaultIgnoredBefore(const char* plugin) {
  ::signal(SIGSEGV, SIG_IGN);
  const Library library(plugin);
  std::thread(&Fault).join();
}

void IgnoredBefore(const char* plugin) {
  ::signal(SIGFPE, SIG_IGN);
  const Library library(plugin);
  ::raise(SIGFPE);
}

void HandlerComesBack(const char* plugin) {
  TakeSignal(SIGSEGV);
  { const Library library(plugin); }
  Expect(IsOurs(SIGSEGV) && IsDefault(SIGBUS), "the handler didn't come back");
  Fault();
}

void LaterHandlerStays(const char* plugin) {
  {
    const Library library(plugin);
    TakeSignal(SIGBUS);
  }
  Expect(IsOurs(SIGBUS) && IsDefault(SIGSEGV), "the later handler didn't stay");
}

void NothingIsLeft(const char* plugin) {
  stack_t before;
  ::sigaltstack(nullptr, &before);
  for (int i = 0; i < 3; ++i) {
    { const Library library(plugin); }
    ExpectNothingLeft(before);
  }
  const int pages = GuardPages();
  for (int i = 0; i < 10; ++i) const Library library(plugin);
  Expect(GuardPages() <= pages + 2, "stacks are left");
}

// Its end is not to lead into code that is gone.
void ThreadOutlivesTheUnload(const char* plugin) {
  std::atomic<int> step{0};
  std::thread thread;
  {
    const Library library(plugin);
    thread = std::thread([&] {
      Expect(library.Find("_ZN9MSWindows25InstallSEHErrorTranslatorEv")() == nullptr,
             "the thread had a translator before");
      step = 1;
      while (step == 1) std::this_thread::yield();
    });
    while (step == 0) std::this_thread::yield();
  }
  step = 2;
  thread.join();
}

// With a use of the adapter too many, which only the unload overrules.
void UsedOnceTooOften(const char* plugin) {
  stack_t before;
  ::sigaltstack(nullptr, &before);
  void* const handle = ::dlopen(plugin, RTLD_NOW | RTLD_LOCAL);
  Expect(handle != nullptr, "load");
  for (int i = 0; i < 2; ++i) reinterpret_cast<void (*)()>(::dlsym(handle, "InitializeOxaCore"))();
  ::dlclose(handle);
  ExpectNothingLeft(before);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const std::string scenario = argv[1];
  const char* const plugin = argv[2];
  if (scenario == "handler-before") HandlerBefore(plugin);
  if (scenario == "handler-before-is-sent") HandlerBeforeIsSent(plugin);
  if (scenario == "ignored-before") IgnoredBefore(plugin);
  if (scenario == "plain-handler-before") PlainHandlerBefore(plugin);
  if (scenario == "nesting-handler-before") NestingHandlerBefore(plugin);
  if (scenario == "reset-handler-before") ResetHandlerBefore(plugin);
  if (scenario == "reset-handler-is-sent-twice") ResetHandlerIsSentTwice(plugin);
  if (scenario == "reset-handler-does-not-come-back") ResetHandlerDoesNotComeBack(plugin);
  if (scenario == "mask-comes-back") MaskComesBack(plugin);
  if (scenario == "fault-ignored-before") FaultIgnoredBefore(plugin);
  if (scenario == "handler-comes-back") HandlerComesBack(plugin);
  if (scenario == "later-handler-stays") LaterHandlerStays(plugin);
  if (scenario == "nothing-is-left") NothingIsLeft(plugin);
  if (scenario == "thread-outlives-unload") ThreadOutlivesTheUnload(plugin);
  if (scenario == "used-once-too-often") UsedOnceTooOften(plugin);
  return 0;
}
