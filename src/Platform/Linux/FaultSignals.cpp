#include "Platform/Linux/FaultSignals.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cstddef>

namespace Oxa::Core::Platform {

namespace {

constexpr int iSIGNALS[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL};
constexpr std::size_t uSIGNALS = sizeof(iSIGNALS) / sizeof(iSIGNALS[0]);
constexpr int iSTATUS_OF_SIGNAL = 128;

// Written while nobody's handler is ours.
struct sigaction s_earlier[uSIGNALS];
std::atomic<SignalHandler> s_handler{nullptr};

const struct sigaction& Earlier(int signal) noexcept {
  std::size_t index = 0;
  while (index + 1 < uSIGNALS && iSIGNALS[index] != signal) ++index;
  return s_earlier[index];
}

bool IsFunction(const struct sigaction& action) noexcept {
  return (action.sa_flags & SA_SIGINFO) != 0 ||
         (action.sa_handler != SIG_DFL && action.sa_handler != SIG_IGN);
}

bool IsStillOurs(int signal, SignalHandler handler) noexcept {
  struct sigaction current;
  return sigaction(signal, nullptr, &current) == 0 && (current.sa_flags & SA_SIGINFO) != 0 &&
         current.sa_sigaction == handler;
}

// With the mask that it asked for.
void CallEarlier(const struct sigaction& earlier, int signal, siginfo_t* info, void* context) noexcept {
  sigset_t blocked = earlier.sa_mask;
  if ((earlier.sa_flags & SA_NODEFER) == 0) sigaddset(&blocked, signal);
  sigset_t before;
  pthread_sigmask(SIG_BLOCK, &blocked, &before);
  if ((earlier.sa_flags & SA_SIGINFO) != 0) {
    earlier.sa_sigaction(signal, info, context);
  } else {
    earlier.sa_handler(signal);
  }
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

}  // namespace

void TakeFaultSignals(SignalHandler handler) noexcept {
  if (s_handler.load() != nullptr) return;
  s_handler.store(handler);
  struct sigaction action = {};
  action.sa_sigaction = handler;
  action.sa_flags = SA_SIGINFO | SA_NODEFER | SA_ONSTACK;
  sigemptyset(&action.sa_mask);
  for (std::size_t i = 0; i < uSIGNALS; ++i) {
    sigaction(iSIGNALS[i], nullptr, &s_earlier[i]);
    sigaction(iSIGNALS[i], &action, nullptr);
  }
}

void GiveFaultSignalsBack() noexcept {
  const SignalHandler handler = s_handler.exchange(nullptr);
  if (handler == nullptr) return;
  for (std::size_t i = 0; i < uSIGNALS; ++i) {
    if (IsStillOurs(iSIGNALS[i], handler)) sigaction(iSIGNALS[i], &s_earlier[i], nullptr);
  }
}

void UnblockFaultSignals() noexcept {
  sigset_t ours;
  sigemptyset(&ours);
  for (const int signal : iSIGNALS) sigaddset(&ours, signal);
  pthread_sigmask(SIG_UNBLOCK, &ours, nullptr);
}

bool HasEarlierHandler(int signal) noexcept { return IsFunction(Earlier(signal)); }

void PassToEarlierHandler(int signal, siginfo_t* info, void* context) noexcept {
  const struct sigaction& earlier = Earlier(signal);
  if (IsFunction(earlier)) {
    CallEarlier(earlier, signal, info, context);
  } else if (earlier.sa_handler == SIG_DFL) {
    EndByDefaultAction(signal, *info);
  }
}

void RestoreDefaultAction(int signal) noexcept {
  struct sigaction action = {};
  action.sa_handler = SIG_DFL;
  sigaction(signal, &action, nullptr);
}

void EndByDefaultAction(int signal, const siginfo_t& info) noexcept {
  RestoreDefaultAction(signal);
  UnblockFaultSignals();
  syscall(SYS_rt_tgsigqueueinfo, getpid(), gettid(), signal, &info);
  _exit(iSTATUS_OF_SIGNAL + signal);
}

}  // namespace Oxa::Core::Platform
