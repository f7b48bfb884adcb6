#include "Platform/Linux/FaultStacks.h"

#include <errno.h>
#include <pthread.h>
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "Platform/Kill.h"
#include "Platform/Linux/FaultMemory.h"
#include "Platform/Linux/FaultState.h"
#include "Platform/Linux/ThreadIds.h"

namespace Oxa::Core::Platform {

namespace {

constexpr std::size_t uSTACK = 256 * 1024;
constexpr std::size_t uMAPPED = uSTACK + uPAGE;
constexpr std::size_t uKEPT = 16;

// What the lower end of a stack is used for while nobody runs on it, or its thread is about to vanish.
struct Abandoned {
  Abandoned* m_pNext;
  std::uint32_t m_uThread;
};

// No locks: a thread may be killed, and a process forked, in any moment.
std::atomic<void*> s_kept[uKEPT];  // stacks for the next threads
std::atomic<Abandoned*> s_pAbandoned{nullptr};

constexpr unsigned uNO_KEY = ~0U;
std::atomic<unsigned> s_uKey{uNO_KEY};

[[gnu::tls_model("initial-exec")]] __thread void* t_pStack;  // of this thread, ours
[[gnu::tls_model("initial-exec")]] __thread stack_t t_before;

void* NewStack() noexcept {
  void* const memory = mmap(nullptr, uMAPPED, PROT_READ | PROT_WRITE,
                            MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_STACK, -1, 0);
  if (memory == MAP_FAILED) return nullptr;
  mprotect(memory, uPAGE, PROT_NONE);
  return static_cast<char*>(memory) + uPAGE;
}

void Unmap(void* stack) noexcept { munmap(static_cast<char*>(stack) - uPAGE, uMAPPED); }

void Keep(void* stack) noexcept {
  for (std::atomic<void*>& place : s_kept) {
    void* empty = nullptr;
    if (place.compare_exchange_strong(empty, stack)) return;
  }
  Unmap(stack);
}

void PushAbandoned(Abandoned& stack) noexcept {
  stack.m_pNext = s_pAbandoned.load();
  while (!s_pAbandoned.compare_exchange_weak(stack.m_pNext, &stack)) {
  }
}

void CollectAbandoned() noexcept {
  for (Abandoned* stack = s_pAbandoned.exchange(nullptr); stack != nullptr;) {
    Abandoned* const next = stack->m_pNext;
    if (ThreadIsGone(stack->m_uThread)) {
      Keep(stack);
    } else {
      PushAbandoned(*stack);
    }
    stack = next;
  }
}

void* FindStack() noexcept {
  if (s_pAbandoned.load(std::memory_order_relaxed) != nullptr) CollectAbandoned();
  for (std::atomic<void*>& place : s_kept) {
    if (place.load(std::memory_order_relaxed) == nullptr) continue;
    if (void* const stack = place.exchange(nullptr)) return stack;
  }
  return NewStack();
}

bool HasStackOfThatSize(const stack_t& stack) noexcept {
  return (stack.ss_flags & SS_DISABLE) == 0 && stack.ss_size >= uSTACK;
}

// Unless somebody has put another in its place meanwhile, or the thread is running on it.
bool Uninstall(void* stack) noexcept {
  stack_t current;
  if (sigaltstack(nullptr, &current) != 0) return false;
  if (current.ss_sp != stack || (current.ss_flags & SS_DISABLE) != 0) return true;
  t_before.ss_flags &= SS_DISABLE;
  return sigaltstack(&t_before, nullptr) == 0;
}

void GiveBack() noexcept {
  void* const stack = t_pStack;
  if (stack == nullptr) return;
  const HoldKill hold;
  t_pStack = nullptr;
  if (Uninstall(stack)) Keep(stack);
}

void OnThreadEnd(void*) { GiveBack(); }

// Whoever comes first makes it; the others drop theirs.
unsigned Key() noexcept {
  unsigned known = s_uKey.load();
  if (known != uNO_KEY) return known;
  pthread_key_t made;
  if (pthread_key_create(&made, &OnThreadEnd) != 0) return uNO_KEY;
  if (s_uKey.compare_exchange_strong(known, made)) return made;
  pthread_key_delete(made);
  return known;
}

bool Install(void* stack) noexcept {
  stack_t ours = {};
  ours.ss_sp = stack;
  ours.ss_size = uSTACK;
  return sigaltstack(&ours, &t_before) == 0;
}

}  // namespace

void TakeAlternateStack() noexcept {
  stack_t current;
  if (t_pStack != nullptr || sigaltstack(nullptr, &current) != 0 || HasStackOfThatSize(current)) return;
  const HoldKill hold;
  const unsigned key = Key();
  if (key == uNO_KEY) return;
  void* const stack = FindStack();
  if (stack == nullptr) return;
  if (pthread_setspecific(key, stack) != 0 || !Install(stack)) {
    Keep(stack);
    return;
  }
  t_pStack = stack;
}

void RemoveAlternateStacks() noexcept {
  GiveBack();
  const unsigned key = s_uKey.exchange(uNO_KEY);
  if (key != uNO_KEY) pthread_key_delete(key);
  CollectAbandoned();
  for (std::atomic<void*>& place : s_kept) {
    if (void* const stack = place.exchange(nullptr)) Unmap(stack);
  }
}

void AbandonAlternateStack() noexcept {
  void* const stack = t_pStack;
  if (stack == nullptr) return;
  t_pStack = nullptr;
  Abandoned* const place = static_cast<Abandoned*>(stack);
  place->m_uThread = static_cast<std::uint32_t>(gettid());
  PushAbandoned(*place);
}

}  // namespace Oxa::Core::Platform
