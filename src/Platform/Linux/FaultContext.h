// What a fault leaves behind here: the kernel's words on it, and the registers in the numbering of debug data.
#ifndef OXACORE_PLATFORM_LINUX_FAULTCONTEXT_H
#define OXACORE_PLATFORM_LINUX_FAULTCONTEXT_H

#include <Infrastructure/OxaCore/PlatformTypes.h>

#include <signal.h>
#include <ucontext.h>

#include <cstdint>

/// The registers that call frames and variables are found by. Trivial: it lies on signal stacks and in static storage.
struct _CONTEXT {  // NOLINT(bugprone-reserved-identifier): the name is the platform's
  static constexpr int iREGISTERS = 17;
  static constexpr int iFRAME = 6;   ///< rbp
  static constexpr int iSTACK = 7;   ///< rsp
  static constexpr int iPLACE = 16;  ///< rip

  /// By their numbers in debug data of x86-64: rax rdx rcx rbx rsi rdi rbp rsp r8 ... r15, and the place.
  std::uint64_t m_registers[iREGISTERS];
  /// Everything, as the kernel gave it; null where the registers were taken by a call.
  const ucontext_t* m_pFull;
};

struct _EXCEPTION_RECORD {   // NOLINT(bugprone-reserved-identifier): the name is the platform's
  std::uint32_t m_uCode;     ///< the number of the fault, see Faults.h
  std::uint64_t m_uPlace;    ///< the instruction
  bool m_bWrite;             ///< of a memory fault: it tried to write
  std::uint64_t m_uTouched;  ///< of a memory fault: the address
  siginfo_t m_signal;  ///< si_signo is SIGABRT, and the rest 0, where an exception found no catch clause
};

namespace Oxa::Core::Platform {

/// Takes the registers out of what a signal handler is given, and points to that: `from` has to stand as long as
/// `context` is used with it. On processors other than x86-64 all registers are 0. Async-signal-safe.
void FillContext(CONTEXT& context, const ucontext_t& from) noexcept;

/// The registers as they are in the calling function behind this call, without the kernel's words (m_pFull is null). On
/// processors other than x86-64 all of them are 0. Async-signal-safe.
void CaptureContext(CONTEXT& context) noexcept;

}  // namespace Oxa::Core::Platform

#endif
