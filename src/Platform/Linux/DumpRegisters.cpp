#include "Platform/Linux/DumpThreads.h"

#if defined(__x86_64__)

#include <elf.h>
#include <linux/ptrace.h>
#include <string.h>
#include <sys/uio.h>
#include <sys/user.h>

#include "Platform/Linux/RawCall.h"
#include "Platform/Linux/SafeMemory.h"

namespace Oxa::Core::Platform {

namespace {

// For each general register of the format its number in debug data: rax rcx rdx rbx rsp rbp rsi rdi r8 ... r15.
constexpr int iNUMBERS[16] = {0, 2, 1, 3, 7, 6, 4, 5, 8, 9, 10, 11, 12, 13, 14, 15};

// What the kernel keeps of segments in one word: cs, gs, fs, ss.
void FillSegments(std::uint64_t word, Minidump::Registers& registers) noexcept {
  registers.m_segments[0] = static_cast<std::uint16_t>(word);
  registers.m_segments[4] = static_cast<std::uint16_t>(word >> 16U);
  registers.m_segments[3] = static_cast<std::uint16_t>(word >> 32U);
  registers.m_segments[5] = static_cast<std::uint16_t>(word >> 48U);
  registers.m_uFlags |= Minidump::eREGISTERS_SEGMENTS;
}

void TakeFloating(const void* from, Minidump::Registers& registers) noexcept {
  constexpr std::size_t uMXCSR = 24;
  if (!ReadSafely(reinterpret_cast<std::uint64_t>(from), registers.m_floating, sizeof registers.m_floating))
    return;
  memcpy(&registers.m_uMxcsr, registers.m_floating + uMXCSR, sizeof registers.m_uMxcsr);
  registers.m_uFlags |= Minidump::eREGISTERS_FLOATING;
}

void FromContext(const CONTEXT& context, Minidump::Registers& registers) noexcept {
  registers.m_uFlags = Minidump::eREGISTERS_CONTROL | Minidump::eREGISTERS_INTEGER;
  for (int i = 0; i < 16; ++i) registers.m_general[i] = context.m_registers[iNUMBERS[i]];
  registers.m_uPlace = context.m_registers[CONTEXT::iPLACE];
  if (context.m_pFull == nullptr) return;
  const mcontext_t& machine = context.m_pFull->uc_mcontext;
  registers.m_uFlagsRegister = static_cast<std::uint32_t>(machine.gregs[REG_EFL]);
  FillSegments(static_cast<std::uint64_t>(machine.gregs[REG_CSGSFS]), registers);
  if (machine.fpregs != nullptr) TakeFloating(machine.fpregs, registers);
}

void FromUser(const user_regs_struct& user, Minidump::Registers& registers) noexcept {
  registers.m_uFlags =
      Minidump::eREGISTERS_CONTROL | Minidump::eREGISTERS_INTEGER | Minidump::eREGISTERS_SEGMENTS;
  const unsigned long long general[16] = {user.rax, user.rcx, user.rdx, user.rbx, user.rsp, user.rbp,
                                          user.rsi, user.rdi, user.r8,  user.r9,  user.r10, user.r11,
                                          user.r12, user.r13, user.r14, user.r15};
  const unsigned long long segments[6] = {user.cs, user.ds, user.es, user.fs, user.gs, user.ss};
  for (int i = 0; i < 16; ++i) registers.m_general[i] = general[i];
  for (int i = 0; i < 6; ++i) registers.m_segments[i] = static_cast<std::uint16_t>(segments[i]);
  registers.m_uPlace = user.rip;
  registers.m_uFlagsRegister = static_cast<std::uint32_t>(user.eflags);
}

bool FromStopped(DumpThread& thread, Minidump::Registers& registers) noexcept {
  user_regs_struct user = {};
  iovec general{&user, sizeof user};
  if (RawCall(SYS_ptrace, PTRACE_GETREGSET, thread.m_iId, NT_PRSTATUS, RawArgument(&general)) != 0)
    return false;
  FromUser(user, registers);
  thread.m_uStorage = user.fs_base;
  user_fpregs_struct floating = {};
  iovec units{&floating, sizeof floating};
  if (RawCall(SYS_ptrace, PTRACE_GETREGSET, thread.m_iId, NT_PRFPREG, RawArgument(&units)) == 0)
    TakeFloating(&floating, registers);
  return true;
}

}  // namespace

void DumpThreads::ReadRegisters(DumpThread& thread, Minidump::Registers& registers) noexcept {
  memset(&registers, 0, sizeof registers);
  registers.m_uFlags = Minidump::eREGISTERS_CONTROL;
  if (thread.m_eState == DumpThread::eCALLER) {
    FromContext(*m_pCaller, registers);
  } else if (thread.m_eState != DumpThread::eSTOPPED || !FromStopped(thread, registers)) {
    registers.m_uPlace = thread.m_uPlace;
    registers.m_general[4] = thread.m_uStack;
  }
  thread.m_uPlace = registers.m_uPlace;
  thread.m_uStack = registers.m_general[4];
}

}  // namespace Oxa::Core::Platform

#endif
