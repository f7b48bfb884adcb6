// What a thread knows of faults, and what is known of one fault while it is dealt with.
#ifndef OXACORE_PLATFORM_LINUX_FAULTSTATE_H
#define OXACORE_PLATFORM_LINUX_FAULTSTATE_H

#include <cstddef>
#include <cstdint>

#include "Platform/Faults.h"
#include "Platform/Linux/FaultContext.h"

namespace Oxa::Core::Platform {

/// Addresses from the lowest one to behind the highest one; both 0 where nothing is known.
struct StackRange {
  std::uintptr_t m_uLow;
  std::uintptr_t m_uHigh;

  bool Holds(std::uintptr_t address) const noexcept { return address >= m_uLow && address < m_uHigh; }
};

/// Where a guarded call goes on if it faults.
struct FaultGuard {
  std::uint64_t m_uStack;  ///< first: the assembler writes it
  FaultGuard* m_pOuter;
};

/// The calling thread's own words. Trivial, so that the handler of a signal can read them at any moment.
struct ThreadFaults {
  FaultTranslator m_pTranslator;
  FaultGuard* m_pGuard;  ///< the innermost
  StackRange m_stack;    ///< what the thread runs on
  int m_iRaises;         ///< faults that are being raised, one within the other
};

[[gnu::tls_model("initial-exec")]] extern __thread ThreadFaults t_faults;

/// One fault. Lies on the stack on which it is raised.
struct FaultState {
  /// What the unwinder takes for the interrupted frame. First: the unwind description of the trampoline counts on it.
  std::uint64_t m_resume[CONTEXT::iREGISTERS];
  _EXCEPTION_RECORD m_record;
  CONTEXT m_context;
  ucontext_t m_full;
  _EXCEPTION_POINTERS m_pointers;
  std::uintptr_t m_uLowest;  ///< frames with a stack pointer below have no room for a catch clause
};

static_assert(offsetof(FaultState, m_resume) == 0, "the trampoline counts on it");

}  // namespace Oxa::Core::Platform

#endif
