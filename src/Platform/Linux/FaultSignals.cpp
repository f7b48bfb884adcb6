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
std::atomic<bool> s_bSpent[uSIGNALS];  // a handler that was to be called once has been
std::atomic<SignalHandler> s_handler{nullptr};

std::size_t IndexOf(int signal) noexcept {
  std::size_t index = 0;
  while (index + 1 < uSIGNALS && iSIGNALS[index] != signal) ++index;
  return index;
}

// What would be in force now if the library hadn't come.
struct sigaction Earlier(std::size_t index) noexcept {
  struct sigaction action = s_earlier[index];
  if (s_bSpent[index].load()) {
    action.sa_handler = SIG_DFL;
    action.sa_flags = 0;
  }
  return action;
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

// Whether the handler may be called. One that asked for that is taken by the first who comes.
bool Take(std::size_t index) noexcept {
  const struct sigaction& action = s_earlier[index];
  if (!IsFunction(action)) return false;
  const auto flags = static_cast<unsigned>(action.sa_flags);
  return (flags & static_cast<unsigned>(SA_RESETHAND)) == 0 || !s_bSpent[index].exchange(true);
}

// With the mask that it asked for.
void Call(const struct sigaction& earlier, int signal, siginfo_t* info, void* context) noexcept {
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
    s_bSpent[i].store(false);
    sigaction(iSIGNALS[i], nullptr, &s_earlier[i]);
    sigaction(iSIGNALS[i], &action, nullptr);
  }
}

void GiveFaultSignalsBack() noexcept {
  const SignalHandler handler = s_handler.exchange(nullptr);
  if (handler == nullptr) return;
  for (std::size_t i = 0; i < uSIGNALS; ++i) {
    const struct sigaction earlier = Earlier(i);
    if (IsStillOurs(iSIGNALS[i], handler)) sigaction(iSIGNALS[i], &earlier, nullptr);
  }
}

void UnblockFaultSignals() noexcept {
  sigset_t ours;
  sigemptyset(&ours);
  for (const int signal : iSIGNALS) sigaddset(&ours, signal);
  pthread_sigmask(SIG_UNBLOCK, &ours, nullptr);
}

bool CallEarlierHandler(int signal, siginfo_t* info, void* context) noexcept {
  const std::size_t index = IndexOf(signal);
  const bool taken = Take(index);
  if (taken) Call(s_earlier[index], signal, info, context);
  return taken;
}

void TakeEarlierAction(int signal, siginfo_t* info, void* context) noexcept {
  if (CallEarlierHandler(signal, info, context)) return;
  if (Earlier(IndexOf(signal)).sa_handler == SIG_DFL) EndByDefaultAction(signal, *info);
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
