#include "Platform/Uncaught.h"

#include <signal.h>
#include <unwind.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>

#include "Platform/Faults.h"
#include "Platform/Linux/FaultContext.h"
#include "Platform/Linux/FaultState.h"

// Where exceptions come from; no header of the runtime declares them.
extern "C" {
void __cxa_throw(void*, void*, void (*)(void*));  // NOLINT(bugprone-reserved-identifier)
void __cxa_rethrow();                             // NOLINT(bugprone-reserved-identifier)
void __gxx_personality_v0();                      // NOLINT(bugprone-reserved-identifier)
}

namespace Oxa::Core::Platform {

namespace {

constexpr int iMOST_ABOVE_THE_RUNTIME = 10;  // frames of ours
constexpr int iMOST_BETWEEN = 2;  // frames between two carriers: what throws a class's own exception
constexpr std::uintptr_t uNEAR = 256 * 1024;

template <class Function>
bool BeginsAt(Function* function, const void* start) noexcept {
  return reinterpret_cast<const void*>(function) == start;
}

bool IsOfTheRuntime(const void* start) noexcept {
  return BeginsAt(&std::terminate, start) || BeginsAt(&__cxa_throw, start) ||
         BeginsAt(&__cxa_rethrow, start) || BeginsAt(&std::rethrow_exception, start) ||
         BeginsAt(&__gxx_personality_v0, start) || BeginsAt(&_Unwind_RaiseException, start) ||
         BeginsAt(&_Unwind_Resume, start) || BeginsAt(&_Unwind_Resume_or_Rethrow, start);
}

// Looks for the first frame behind all that carries exceptions.
struct Search {
  const void* const* m_pCarriers;
  std::size_t m_uCarriers;
  CONTEXT m_found;
  bool m_bFound = false;
  bool m_bMetCarrier = false;
  int m_iOthers = 0;  // frames since the last carrier

  bool IsCarrier(const void* start) const noexcept {
    for (std::size_t i = 0; i < m_uCarriers; ++i) {
      if (m_pCarriers[i] == start) return true;
    }
    return IsOfTheRuntime(start);
  }
};

#if defined(__x86_64__)
void Take(CONTEXT& context, _Unwind_Context* frame, std::uintptr_t place) noexcept {
  constexpr int PRESERVED[] = {3, 6, 12, 13, 14, 15};
  context = CONTEXT{};
  for (const int number : PRESERVED) context.m_registers[number] = _Unwind_GetGR(frame, number);
  context.m_registers[CONTEXT::iSTACK] = _Unwind_GetCFA(frame);
  context.m_registers[CONTEXT::iPLACE] = place;
}
#else
void Take(CONTEXT& context, _Unwind_Context*, std::uintptr_t) noexcept { context = CONTEXT{}; }
#endif

_Unwind_Reason_Code Visit(_Unwind_Context* frame, void* argument) noexcept {
  Search& search = *static_cast<Search*>(argument);
  int isFault = 0;
  const std::uintptr_t place = _Unwind_GetIPInfo(frame, &isFault);
  if (place == 0) return _URC_END_OF_STACK;
  if (search.IsCarrier(_Unwind_FindEnclosingFunction(reinterpret_cast<void*>(place)))) {
    search.m_bMetCarrier = true;
    search.m_bFound = false;
    search.m_iOthers = 0;
    return _URC_NO_REASON;
  }
  if (search.m_bMetCarrier && !search.m_bFound) {
    // Behind a call that doesn't return another function may begin: the place is in the call.
    Take(search.m_found, frame, isFault != 0 ? place : place - 1);
    search.m_bFound = true;
  }
  const int most = search.m_bMetCarrier ? iMOST_BETWEEN : iMOST_ABOVE_THE_RUNTIME;
  return ++search.m_iOthers > most ? _URC_END_OF_STACK : _URC_NO_REASON;
}

void Walk(void* search) { _Unwind_Backtrace(&Visit, search); }

}  // namespace

void WithUncaughtPlace(const void* const* carriers, std::size_t count,
                       void (*action)(_EXCEPTION_POINTERS& pointers, void* argument),
                       void* argument) noexcept {
  Search search = {carriers, count, {}};
  CONTEXT context;
  CaptureContext(context);
  if (CallGuarded(&Walk, &search) && search.m_bFound) context = search.m_found;
  _EXCEPTION_RECORD record = {};
  record.m_signal.si_signo = SIGABRT;
#if defined(__x86_64__)
  record.m_uPlace = context.m_registers[CONTEXT::iPLACE];
#endif
  _EXCEPTION_POINTERS pointers = {&record, &context};
  action(pointers, argument);
}

#if defined(__x86_64__)
// The record and the registers are parts of one state, which refers to itself; the registers are there twice.
bool StillStands(const _EXCEPTION_POINTERS& pointers) noexcept {
  const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  const auto record = reinterpret_cast<std::uintptr_t>(pointers.ExceptionRecord);
  if (record < here || record - here > uNEAR) return false;
  const auto& state = *reinterpret_cast<const FaultState*>(record - offsetof(FaultState, m_record));
  if (pointers.ContextRecord != &state.m_context || state.m_context.m_pFull != &state.m_full) return false;
  CONTEXT again;
  FillContext(again, state.m_full);
  return std::memcmp(again.m_registers, state.m_context.m_registers, sizeof again.m_registers) == 0;
}
#else
bool StillStands(const _EXCEPTION_POINTERS&) noexcept { return false; }
#endif

int SignalOf(const _EXCEPTION_POINTERS& pointers) noexcept {
  const int signal = pointers.ExceptionRecord != nullptr ? pointers.ExceptionRecord->m_signal.si_signo : 0;
  return signal != 0 ? signal : SIGABRT;
}

}  // namespace Oxa::Core::Platform
