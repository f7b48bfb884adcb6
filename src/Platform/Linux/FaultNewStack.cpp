// Calls that fault without harm, and calls on stacks with room.
#include "Platform/Faults.h"

#if defined(__x86_64__)

#include <errno.h>
#include <signal.h>
#include <sys/mman.h>

#include "Platform/Linux/FaultJumps.h"
#include "Platform/Linux/FaultMemory.h"
#include "Platform/Linux/FaultState.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/common_interface_defs.h>
#endif

namespace Oxa::Core::Platform {

namespace {

constexpr std::size_t uALTERNATE = 256 * 1024;

// Where the limit of the main stack is high or none, its range holds whatever is mapped far below it, and gaps between:
// also stacks that a program makes for itself.
constexpr std::size_t uWITHOUT_GAPS = 128 * 1024 * 1024;

std::size_t WholePages(std::size_t size) noexcept { return (size + uPAGE - 1) / uPAGE * uPAGE; }

// Upwards: a guard page, an alternate stack, a guard page, a stack. The thread's own alternate stack may be what the
// call comes from, and would be overwritten by the next signal.
class NewStack {
 public:
  explicit NewStack(std::size_t size) noexcept : m_uSize(uALTERNATE + 2 * uPAGE + WholePages(size)) {
    void* const memory = mmap(nullptr, m_uSize, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_STACK, -1, 0);
    if (memory == MAP_FAILED) return;
    m_pMemory = static_cast<char*>(memory);
    mprotect(m_pMemory, uPAGE, PROT_NONE);
    mprotect(m_pMemory + uPAGE + uALTERNATE, uPAGE, PROT_NONE);
  }
  NewStack(const NewStack&) = delete;
  NewStack& operator=(const NewStack&) = delete;
  ~NewStack() {
    if (m_pMemory != nullptr) munmap(m_pMemory, m_uSize);
  }

  bool IsThere() const noexcept { return m_pMemory != nullptr; }

  StackRange Range() const noexcept {
    const auto memory = reinterpret_cast<std::uintptr_t>(m_pMemory);
    return {memory + uALTERNATE + 2 * uPAGE, memory + m_uSize};
  }

  stack_t Alternate() const noexcept {
    stack_t stack = {};
    stack.ss_sp = m_pMemory + uPAGE;
    stack.ss_size = uALTERNATE;
    return stack;
  }

 private:
  char* m_pMemory = nullptr;
  std::size_t m_uSize;
};

// The address sanitizer wants to know what the thread runs on.
#if defined(__SANITIZE_ADDRESS__)
class Switch {
 public:
  explicit Switch(const StackRange& to) noexcept {
    __sanitizer_start_switch_fiber(&m_pFake, reinterpret_cast<const void*>(to.m_uLow),
                                   to.m_uHigh - to.m_uLow);
  }
  void Arrive() noexcept { __sanitizer_finish_switch_fiber(nullptr, &m_pBottom, &m_uSize); }
  void Leave() const noexcept { __sanitizer_start_switch_fiber(nullptr, m_pBottom, m_uSize); }
  void Return() noexcept { __sanitizer_finish_switch_fiber(m_pFake, nullptr, nullptr); }

 private:
  void* m_pFake = nullptr;
  const void* m_pBottom = nullptr;  // of the stack that is left
  std::size_t m_uSize = 0;
};
#else
struct Switch {
  explicit Switch(const StackRange&) noexcept {}
  void Arrive() noexcept {}
  void Leave() const noexcept {}
  void Return() noexcept {}
};
#endif

struct Call {
  void (*m_pAction)(void*);
  void* m_pArgument;
  const NewStack* m_pStack;
  Switch* m_pSwitch;
};

void OnNewStack(void* argument) {
  const Call& call = *static_cast<const Call*>(argument);
  call.m_pSwitch->Arrive();
  const stack_t alternate = call.m_pStack->Alternate();
  stack_t before;
  const bool changed = sigaltstack(&alternate, &before) == 0;
  call.m_pAction(call.m_pArgument);
  before.ss_flags &= SS_DISABLE;
  if (changed) sigaltstack(&before, nullptr);
  call.m_pSwitch->Leave();
}

}  // namespace

bool CallGuarded(void (*action)(void*), void* argument) noexcept {
  const ThreadFaults before = t_faults;
  FaultGuard guard = {0, before.m_pGuard};
  t_faults.m_pGuard = &guard;
  const bool whole = OxaCoreCallGuarded(action, argument, &guard) != 0;
  t_faults.m_pGuard = before.m_pGuard;
  t_faults.m_stack = before.m_stack;
  t_faults.m_iRaises = before.m_iRaises;
  return whole;
}

void CallWithRoom(std::size_t size, void (*action)(void*), void* argument) noexcept {
  const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  const StackRange& stack = t_faults.m_stack;
  if (stack.Holds(here) && here - stack.m_uLow >= size) {
    action(argument);
  } else {
    CallOnNewStack(size, action, argument);
  }
}

std::uintptr_t EndOfStack() noexcept {
  const StackRange& stack = t_faults.m_stack;
  const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  return stack.Holds(here) && stack.m_uHigh - here <= uWITHOUT_GAPS ? stack.m_uHigh : 0;
}

void CallOnNewStack(std::size_t size, void (*action)(void*), void* argument) noexcept {
#if defined(__SANITIZE_THREAD__)
  return action(argument);  // the thread sanitizer keeps a stack of its own beside each that it knows of
#endif
  const NewStack stack(size);
  if (!stack.IsThere()) {
    action(argument);
    return;
  }
  const StackRange before = t_faults.m_stack;
  t_faults.m_stack = stack.Range();
  Switch change(t_faults.m_stack);
  Call call = {action, argument, &stack, &change};
  OxaCoreCallOnStack(stack.Range().m_uHigh, &OnNewStack, &call);
  change.Return();
  t_faults.m_stack = before;
}

}  // namespace Oxa::Core::Platform

#endif
