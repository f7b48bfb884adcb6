#include "Platform/Linux/FaultDecode.h"

#if defined(__x86_64__)

#include "Platform/Linux/FaultMemory.h"

namespace Oxa::Core::Platform {

namespace {

// Numbers of the processor's exceptions.
constexpr greg_t iTRAP_OVERFLOW = 4;
constexpr greg_t iTRAP_BOUNDS = 5;
constexpr greg_t iTRAP_PROTECTION = 13;
constexpr greg_t iTRAP_PAGE = 14;
constexpr greg_t iTRAP_X87 = 16;

constexpr greg_t iPAGE_WRITE = 2;  // bit of a page fault's error code
constexpr unsigned uX87_STACK_FAULT = 0x40;
constexpr unsigned uDENORMAL = 0x02;
constexpr unsigned uMXCSR_MASKS = 7;  // position of the masks in the register

constexpr std::size_t uLONGEST_INSTRUCTION = 15;
constexpr unsigned uNO_CODE = 0;  // a fault that has no number: an unknown error

bool IsPrivileged(std::uintptr_t place) noexcept {
  unsigned char bytes[uLONGEST_INSTRUCTION];
  return IsPrivilegedInstruction(bytes, ReadMemory(place, bytes, sizeof(bytes)));
}

unsigned CodeOfSegmentation(const siginfo_t& signal, const ucontext_t& context,
                            const StackRange& own) noexcept {
  const greg_t* const registers = context.uc_mcontext.gregs;
  const auto place = static_cast<std::uintptr_t>(registers[REG_RIP]);
  switch (registers[REG_TRAPNO]) {
    case iTRAP_OVERFLOW:
      return eINT_OVERFLOW;
    case iTRAP_BOUNDS:
      return eARRAY_BOUNDS_EXCEEDED;
    case iTRAP_PROTECTION:
      return IsPrivileged(place) ? ePRIV_INSTRUCTION : eACCESS_VIOLATION;
    case iTRAP_PAGE:
      return IsStackOverflow(reinterpret_cast<std::uintptr_t>(signal.si_addr),
                             static_cast<std::uintptr_t>(registers[REG_RSP]), own)
                 ? eSTACK_OVERFLOW
                 : eACCESS_VIOLATION;
    default:
      return eACCESS_VIOLATION;
  }
}

unsigned CodeOfBus(const siginfo_t& signal) noexcept {
  switch (signal.si_code) {
    case BUS_ADRALN:
      return eDATATYPE_MISALIGNMENT;
    case BUS_ADRERR:
    case BUS_OBJERR:
    case BUS_MCEERR_AR:
      return eIN_PAGE_ERROR;
    default:
      return eACCESS_VIOLATION;  // a stack pointer that is no address
  }
}

// The kernel gives one code for denormal operands and results that are too small.
unsigned CodeOfUnderflow(const ucontext_t& context) noexcept {
  const auto* const state = context.uc_mcontext.fpregs;
  if (state == nullptr) return eFLT_UNDERFLOW;
  const bool x87 = context.uc_mcontext.gregs[REG_TRAPNO] == iTRAP_X87;
  const unsigned flags =
      x87 ? state->swd & ~static_cast<unsigned>(state->cwd) : state->mxcsr & ~(state->mxcsr >> uMXCSR_MASKS);
  return (flags & uDENORMAL) != 0 ? eFLT_DENORMAL_OPERAND : eFLT_UNDERFLOW;
}

unsigned CodeOfInvalid(const ucontext_t& context) noexcept {
  const auto* const state = context.uc_mcontext.fpregs;
  const bool x87 = context.uc_mcontext.gregs[REG_TRAPNO] == iTRAP_X87;
  return x87 && state != nullptr && (state->swd & uX87_STACK_FAULT) != 0 ? eFLT_STACK_CHECK
                                                                         : eFLT_INVALID_OPERATION;
}

unsigned CodeOfArithmetic(const siginfo_t& signal, const ucontext_t& context) noexcept {
  switch (signal.si_code) {
    case FPE_INTDIV:
      return eINT_DIVIDE_BY_ZERO;
    case FPE_INTOVF:
      return eINT_OVERFLOW;
    case FPE_FLTDIV:
      return eFLT_DIVIDE_BY_ZERO;
    case FPE_FLTOVF:
      return eFLT_OVERFLOW;
    case FPE_FLTUND:
      return CodeOfUnderflow(context);
    case FPE_FLTRES:
      return eFLT_INEXACT_RESULT;
    case FPE_FLTINV:
      return CodeOfInvalid(context);
    case FPE_FLTSUB:
      return eARRAY_BOUNDS_EXCEEDED;
    default:
      return uNO_CODE;
  }
}

unsigned CodeOf(const siginfo_t& signal, const ucontext_t& context, const StackRange& own) noexcept {
  switch (signal.si_signo) {
    case SIGSEGV:
      return CodeOfSegmentation(signal, context, own);
    case SIGBUS:
      return CodeOfBus(signal);
    case SIGFPE:
      return CodeOfArithmetic(signal, context);
    default:
      return signal.si_code == ILL_PRVOPC || signal.si_code == ILL_PRVREG ? ePRIV_INSTRUCTION
                                                                          : eILLEGAL_INSTRUCTION;
  }
}

}  // namespace

bool IsFault(const siginfo_t& signal) noexcept {
  if (signal.si_code <= 0) return false;
  return signal.si_signo != SIGBUS || signal.si_code != BUS_MCEERR_AO;
}

void DecodeFault(_EXCEPTION_RECORD& record, const siginfo_t& signal, const ucontext_t& context,
                 const StackRange& own) noexcept {
  const greg_t* const registers = context.uc_mcontext.gregs;
  const bool memory = signal.si_signo == SIGSEGV || signal.si_signo == SIGBUS;
  record.m_signal = signal;
  record.m_uCode = CodeOf(signal, context, own);
  record.m_uPlace = static_cast<std::uint64_t>(registers[REG_RIP]);
  record.m_bWrite = memory && registers[REG_TRAPNO] == iTRAP_PAGE && (registers[REG_ERR] & iPAGE_WRITE) != 0;
  record.m_uTouched = memory ? reinterpret_cast<std::uintptr_t>(signal.si_addr) : 0;
}

}  // namespace Oxa::Core::Platform

#endif
