// Locks that a thread holds which is never heard of again.
#include <Infrastructure/OxaCore/Error.h>

#include <dlfcn.h>
#include <execinfo.h>
#include <link.h>
#include <pthread.h>
#include <signal.h>
#include <stdio.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <thread>

#include "Options.h"
#include "Troubles.h"

using namespace Oxa::Core;

namespace Deaths {

namespace {

std::atomic<bool> s_bHeld{false};
std::atomic<bool> s_bLetGo{false};
std::atomic<int> s_iRound{0};  // that the probe is to allocate in
std::atomic<int> s_iDone{0};   // that it came through

[[noreturn]] void StayForEver() {
  for (;;) ::pause();
}

// Returns when the lock is held.
void Hold(void (*take)()) {
  std::thread([take] {
    take();
    s_bHeld = true;
    StayForEver();
  }).detach();
  while (!s_bHeld) std::this_thread::sleep_for(std::chrono::microseconds(50));
}

void HoldTheOutput() {
  Hold([] {
    ::flockfile(stderr);
    ::flockfile(stdout);
  });
}

void HoldTheLoader() {
  Hold([] {
    ::dl_iterate_phdr(
        [](dl_phdr_info*, size_t, void*) -> int {
          s_bHeld = true;
          StayForEver();
        },
        nullptr);
  });
}

bool IsWalking() {
  void* places[64];
  const int count = ::backtrace(places, 64);
  for (int index = 0; index < count; ++index) {
    Dl_info info;
    if (::dladdr(places[index], &info) != 0 && info.dli_sname != nullptr &&
        std::strstr(info.dli_sname, "DebugHelp") != nullptr && std::strstr(info.dli_sname, "CreateCallStack"))
      return true;
  }
  return false;
}

void StopHereWhileWalking(int) {
  if (!IsWalking()) return;
  s_bHeld = true;
  StayForEver();
}

void RaiseForEver() {
  for (;;) {
    try {
      OXA_RAISE_ERROR("Deaths.Other", LogicError("again and again"));
    } catch (const Error&) {
      continue;
    }
  }
}

// A thread that walks its stack again and again is stopped by a signal in the middle of it.
void HoldTheWalk() {
  void* warm[1];
  ::backtrace(warm, 1);
  ::signal(SIGUSR2, &StopHereWhileWalking);
  std::thread walker(&RaiseForEver);
  while (!s_bHeld) {
    ::pthread_kill(walker.native_handle(), SIGUSR2);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  walker.detach();
}

void StopHereForATime(int) {
  s_bHeld = true;
  while (!s_bLetGo) ::usleep(100);
  s_bHeld = false;
}

constexpr std::size_t uLARGE = 4000;  // more than a thread keeps for itself

void AllocateForEver() {
  for (;;) {
    void* volatile memory = std::malloc(uLARGE);
    std::free(memory);
  }
}

void ProbeForEver() {
  for (int round = 1;; ++round) {
    while (s_iRound < round) std::this_thread::sleep_for(std::chrono::microseconds(50));
    void* volatile memory = std::malloc(uLARGE);
    std::free(memory);
    s_iDone = round;
  }
}

// Whether the probe doesn't come through: the thread that was stopped has the lock.
bool IsHeapHeld(int round) {
  s_iRound = round;
  for (int times = 0; times < 100 && s_iDone < round; ++times) ::usleep(1000);
  return s_iDone < round;
}

// All threads share one arena, or the lock would concern nobody else; that has to be said before there is any thread.
void ShareOneArena() {
  const char* const sARENAS = "MALLOC_ARENA_MAX";
  if (std::getenv(sARENAS) != nullptr) return;
  ::setenv(sARENAS, "1", 1);
  ::execv(Arguments()[0], Arguments());
  ::_exit(98);
}

// Both threads are made before the lock may be
// held, and stay joinable: either takes the allocator.
void HoldTheHeap() {
  ShareOneArena();
  ::signal(SIGUSR2, &StopHereForATime);
  static std::thread* const busy = new std::thread(&AllocateForEver);
  static std::thread* const probe = new std::thread(&ProbeForEver);
  (void)probe;
  for (int round = 1;; ++round) {
    s_bLetGo = false;
    ::pthread_kill(busy->native_handle(), SIGUSR2);
    while (!s_bHeld) std::this_thread::sleep_for(std::chrono::microseconds(50));
    if (IsHeapHeld(round)) return;
    s_bLetGo = true;
    while (s_bHeld) std::this_thread::sleep_for(std::chrono::microseconds(50));
  }
}

constexpr NamedTrouble sTROUBLES[] = {
    {"output-held", &HoldTheOutput},
    {"loader-held", &HoldTheLoader},
    {"walk-held", &HoldTheWalk},
    {"heap-held", &HoldTheHeap},
};

}  // namespace

Troubles TroublesOfLocks() { return {sTROUBLES, std::size(sTROUBLES)}; }

}  // namespace Deaths
