// The road of a fault: from the signal to the translator, or to the last chance.
#include "Platform/Faults.h"

#if defined(__x86_64__)

#include <errno.h>

#include <atomic>
#include <cstring>

#include "Platform/Linux/FaultDecode.h"
#include "Platform/Linux/FaultJumps.h"
#include "Platform/Linux/FaultMemory.h"
#include "Platform/Linux/FaultOwnStack.h"
#include "Platform/Linux/FaultSignals.h"
#include "Platform/Linux/FaultStacks.h"
#include "Platform/Linux/FaultState.h"
#include "Platform/Linux/FaultUnwind.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#endif

namespace Oxa::Core::Platform {

__thread ThreadFaults t_faults;

namespace {

constexpr std::size_t uRED_ZONE = 128;        // below the stack pointer, in use all the same
constexpr std::size_t uROOMY = 128 * 1024;    // enough for a raise with a call stack and listeners
constexpr std::size_t uBARE = 40 * 1024;      // enough for a raise
constexpr std::size_t uHEADROOM = 16 * 1024;  // enough for a catch clause
constexpr std::size_t uNEW_STACK = 1024 * 1024;
constexpr std::uintptr_t uALIGNMENT = 64;
constexpr greg_t iDIRECTION_FLAG = 0x400;
constexpr greg_t iALIGNMENT_CHECK = 0x40000;
constexpr unsigned uX87_TOP = 0x3800;

std::atomic<LastChance> s_lastChance{nullptr};

struct LastCall {
  LastChance m_pFilter;
  _EXCEPTION_POINTERS* m_pPointers;
};

void CallLastChance(void* argument) {
  const LastCall& call = *static_cast<const LastCall*>(argument);
  call.m_pFilter(call.m_pPointers);
}

// Not expected to return.
void UseLastChance(FaultState& state) noexcept {
  LastCall call = {s_lastChance.load(), &state.m_pointers};
  if (call.m_pFilter != nullptr) CallOnNewStack(uNEW_STACK, &CallLastChance, &call);
}

// Whoever faults while a fault is raised, and does so again and again, will not come to an end by raises.
constexpr int iMOST_RAISES = 16;

class OneMoreRaise {
 public:
  OneMoreRaise() noexcept { ++t_faults.m_iRaises; }
  OneMoreRaise(const OneMoreRaise&) = delete;
  OneMoreRaise& operator=(const OneMoreRaise&) = delete;
  ~OneMoreRaise() { --t_faults.m_iRaises; }

  static bool IsTooMany() noexcept { return t_faults.m_iRaises > iMOST_RAISES; }
};

// On the stack of the raise, below the trampoline. What the translator throws goes on through the trampoline.
void Deliver(FaultState& state) {
  const OneMoreRaise raise;
  const FaultTranslator translator = OneMoreRaise::IsTooMany() ? nullptr : t_faults.m_pTranslator;
  if (translator != nullptr && FindFirstFrame(state)) translator(state.m_record.m_uCode, &state.m_pointers);
  UseLastChance(state);
  EndByDefaultAction(state.m_record.m_signal.si_signo, state.m_record.m_signal);
}

// The kernel's copy ends before the signal mask does, and what it has of the floating-point unit stands elsewhere.
void CopyFull(ucontext_t& to, const ucontext_t& from) noexcept {
  to.uc_flags = from.uc_flags;
  to.uc_link = nullptr;
  to.uc_stack = from.uc_stack;
  to.uc_mcontext = from.uc_mcontext;
  std::memset(&to.uc_sigmask, 0, sizeof(to.uc_sigmask));
  std::memcpy(&to.uc_sigmask, &from.uc_sigmask, sizeof(std::uint64_t));
  if (from.uc_mcontext.fpregs == nullptr) return;
  std::memcpy(&to.__fpregs_mem, from.uc_mcontext.fpregs, sizeof(to.__fpregs_mem));
}

// After the state has been put where it stays.
void Connect(FaultState& state) noexcept {
  if (state.m_full.uc_mcontext.fpregs != nullptr)
    state.m_full.uc_mcontext.fpregs = &state.m_full.__fpregs_mem;
  state.m_context.m_pFull = &state.m_full;
  state.m_pointers = {&state.m_record, &state.m_context};
}

std::uintptr_t StackPointerOf(const FaultState& state) noexcept {
  return state.m_context.m_registers[CONTEXT::iSTACK];
}

void Fill(FaultState& state, const siginfo_t& signal, const ucontext_t& context) noexcept {
  DecodeFault(state.m_record, signal, context, t_faults.m_stack);
  FillContext(state.m_context, context);
  CopyFull(state.m_full, context);
  std::memcpy(state.m_resume, state.m_context.m_registers, sizeof(state.m_resume));
  const _EXCEPTION_RECORD& record = state.m_record;
  state.m_uLowest = record.m_uCode == eSTACK_OVERFLOW
                        ? UsableFrom(record.m_uTouched, StackPointerOf(state), t_faults.m_stack) + uHEADROOM
                        : 0;
  Connect(state);
}

// A call through a pointer that leads nowhere: the caller is to be found, and stands at its call.
void LeaveNowhere(FaultState& state) noexcept {
  if (state.m_record.m_uTouched != state.m_record.m_uPlace || state.m_record.m_uCode != eACCESS_VIOLATION)
    return;
  std::uint64_t back;
  if (ReadMemory(StackPointerOf(state), &back, sizeof(back)) != sizeof(back)) return;
  state.m_resume[CONTEXT::iPLACE] = back - 1;
  state.m_resume[CONTEXT::iSTACK] += sizeof(back);
}

StackRange AlternateOf(const ucontext_t& context) noexcept {
  if ((context.uc_stack.ss_flags & SS_DISABLE) != 0) return {0, 0};
  const auto low = reinterpret_cast<std::uintptr_t>(context.uc_stack.ss_sp);
  return {low, low + context.uc_stack.ss_size};
}

// It ran over its end, so that the system began it anew: whoever ran on it is gone.
bool HasLostAlternate(const FaultState& state, const StackRange& alternate) noexcept {
  const std::uintptr_t stack = StackPointerOf(state);
  return state.m_record.m_uCode == eSTACK_OVERFLOW && alternate.m_uHigh != 0 && !alternate.Holds(stack) &&
         BelongsTo(stack, alternate) && !BelongsTo(stack, t_faults.m_stack);
}

std::size_t RoomBelow(std::uintptr_t stack, const StackRange& alternate) noexcept {
  if (alternate.Holds(stack)) return stack - alternate.m_uLow;
  if (t_faults.m_stack.Holds(stack)) return stack - t_faults.m_stack.m_uLow;
  return ProbeRoomBelow(stack);
}

// Where the raise takes place: on the interrupted stack if there is room, else on the alternate one if that is free.
// `local` lies on the stack that the handler runs on. Gives null where there is no room anywhere.
FaultState* ChoosePlace(FaultState& local, const StackRange& alternate) noexcept {
  const std::uintptr_t stack = StackPointerOf(local);
  const auto here = reinterpret_cast<std::uintptr_t>(&local);
  const bool overflow = local.m_record.m_uCode == eSTACK_OVERFLOW;
  const std::size_t room = overflow ? 0 : RoomBelow(stack, alternate);
  const bool apart = alternate.Holds(here) && !alternate.Holds(stack);
  if (!apart) return room >= uBARE ? &local : nullptr;
  if (room < uROOMY && here - alternate.m_uLow >= uBARE) return &local;
  if (room < uBARE) return nullptr;
  const std::uintptr_t place = (stack - uRED_ZONE - sizeof(FaultState)) / uALIGNMENT * uALIGNMENT;
  FaultState* const there = reinterpret_cast<FaultState*>(place);
  std::memcpy(static_cast<void*>(there), &local, sizeof(local));
  Connect(*there);
  return there;
}

// What a function may count on when it is called. The x87 stack is to be empty; its flags stay.
void CleanRegisters(ucontext_t& context) noexcept {
  context.uc_mcontext.gregs[REG_EFL] &= ~(iDIRECTION_FLAG | iALIGNMENT_CHECK);
  auto* const state = context.uc_mcontext.fpregs;
  if (state == nullptr) return;
  state->ftw = 0;
  state->swd = static_cast<std::uint16_t>(state->swd & ~uX87_TOP);
}

void GoOnAt(ucontext_t& context, void (*place)(), std::uintptr_t stack) noexcept {
  CleanRegisters(context);
  context.uc_mcontext.gregs[REG_RIP] = reinterpret_cast<greg_t>(place);
  context.uc_mcontext.gregs[REG_RSP] = static_cast<greg_t>(stack);
}

void GoOnInTrampoline(ucontext_t& context, FaultState& state) noexcept {
  const auto address = reinterpret_cast<std::uintptr_t>(&state);
  GoOnAt(context, &OxaCoreFaultTrampoline, address / uALIGNMENT * uALIGNMENT);
  context.uc_mcontext.gregs[REG_RBX] = static_cast<greg_t>(address);
  context.uc_mcontext.gregs[REG_RDI] = static_cast<greg_t>(address);
  context.uc_mcontext.gregs[REG_RSI] = reinterpret_cast<greg_t>(&Deliver);
}

void DealWith(const siginfo_t& signal, ucontext_t& context) noexcept {
  FaultState local;
  Fill(local, signal, context);
  const StackRange alternate = AlternateOf(context);
  const bool hopeless = t_faults.m_pTranslator == nullptr || IsUnwinder(local.m_record.m_uPlace) ||
                        HasLostAlternate(local, alternate);
  FaultState* const state = hopeless ? nullptr : ChoosePlace(local, alternate);
  if (state != nullptr) {
    LeaveNowhere(*state);
    GoOnInTrampoline(context, *state);
    return;
  }
  UseLastChance(local);
  RestoreDefaultAction(signal.si_signo);
}

// The kernel leaves the processor's check of alignment on for the handler, and the C library's own code doesn't pass
// it.
void StopCheckingAlignment() noexcept {
  const auto flags = __builtin_ia32_readeflags_u64();
  constexpr auto uCHECK = static_cast<decltype(__builtin_ia32_readeflags_u64())>(iALIGNMENT_CHECK);
  if ((flags & uCHECK) != 0) __builtin_ia32_writeeflags_u64(flags & ~uCHECK);
}

// The address sanitizer would go on to watch what lay between the variables of frames that are gone.
void ForgetFramesPassedOver() noexcept {
#if defined(__SANITIZE_ADDRESS__)
  __asan_handle_no_return();
#endif
}

// It would also go on to watch the variables of handlers that stood here before and never returned to their end.
void ForgetFramesBelow([[maybe_unused]] const stack_t& stack) noexcept {
#if defined(__SANITIZE_ADDRESS__)
  const char* const low = static_cast<const char*>(stack.ss_sp);
  const char* const here = static_cast<const char*>(__builtin_frame_address(0));
  if (low != nullptr && low < here && here < low + stack.ss_size)
    __asan_unpoison_memory_region(low, static_cast<std::size_t>(here - low));
#endif
}

void OnSignal(int signal, siginfo_t* info, void* context) {
  StopCheckingAlignment();
  const int error = errno;
  ucontext_t& registers = *static_cast<ucontext_t*>(context);
  ForgetFramesBelow(registers.uc_stack);
  const FaultGuard* const guard = t_faults.m_pGuard;
  if (!IsFault(*info)) {
    TakeEarlierAction(signal, info, context);
  } else if (guard != nullptr) {
    ForgetFramesPassedOver();
    GoOnAt(registers, &OxaCoreGuardedLanding, guard->m_uStack);
  } else if (t_faults.m_pTranslator != nullptr || !CallEarlierHandler(signal, info, context)) {
    DealWith(*info, registers);
  }
  errno = error;
}

}  // namespace

FaultTranslator SetFaultTranslator(FaultTranslator translator) noexcept {
  const FaultTranslator before = t_faults.m_pTranslator;
  if (translator != nullptr && t_faults.m_stack.m_uHigh == 0) {
    t_faults.m_stack = OwnStack();
    UnblockFaultSignals();
    TakeAlternateStack();
  }
  t_faults.m_pTranslator = translator;
  return before;
}

FaultTranslator CurrentFaultTranslator() noexcept { return t_faults.m_pTranslator; }

LastChance SetLastChance(LastChance filter) noexcept {
  const LastChance before = s_lastChance.exchange(filter);
  if (filter != nullptr) {
    PrepareUnwinding();
    TakeFaultSignals(&OnSignal);
  } else {
    GiveFaultSignalsBack();
  }
  return before;
}

void RemoveFaultHandling() noexcept {
  SetLastChance(nullptr);
  RemoveAlternateStacks();
  t_faults = ThreadFaults{};
}

}  // namespace Oxa::Core::Platform

#endif
