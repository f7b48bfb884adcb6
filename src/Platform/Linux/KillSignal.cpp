#include "Platform/Linux/KillSignal.h"

#include <signal.h>

#include <atomic>

#include "Platform/Linux/KillState.h"
#include "Platform/Threads.h"

namespace Oxa::Core::Platform {

namespace {

std::atomic<int> s_iSignal{0};
ShortLock s_lock;  // one thread chooses

void OnKillSignal(int) { t_kill.OnKill(); }

bool IsHandledBy(int signal, void (*handler)(int)) noexcept {
  struct sigaction action;
  return sigaction(signal, nullptr, &action) == 0 && (action.sa_flags & SA_SIGINFO) == 0 &&
         action.sa_handler == handler;
}

void Handle(int signal, void (*handler)(int)) noexcept {
  struct sigaction action = {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART | SA_ONSTACK;
  sigfillset(&action.sa_mask);
  sigaction(signal, &action, nullptr);
}

// From the top: programs count theirs from the bottom.
int TakeFreeSignal() noexcept {
  for (int signal = SIGRTMAX - 1; signal >= SIGRTMIN; --signal) {
    if (!IsHandledBy(signal, SIG_DFL)) continue;
    Handle(signal, &OnKillSignal);
    return signal;
  }
  return 0;
}

// The handler goes away with the library.
[[gnu::destructor]] void GiveSignalBack() {
  const int signal = s_iSignal.load();
  if (signal != 0 && IsHandledBy(signal, &OnKillSignal)) Handle(signal, SIG_DFL);
}

}  // namespace

int KillSignal() noexcept {
  const int known = s_iSignal.load(std::memory_order_acquire);
  return known != 0 ? known : CheckedKillSignal();
}

int CheckedKillSignal() noexcept {
  const ShortGuard guard(s_lock);
  int signal = s_iSignal.load(std::memory_order_relaxed);
  if (signal == 0 || !IsHandledBy(signal, &OnKillSignal)) signal = TakeFreeSignal();
  s_iSignal.store(signal, std::memory_order_release);
  return signal;
}

}  // namespace Oxa::Core::Platform
