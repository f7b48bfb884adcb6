#include "Platform/Linux/FaultContext.h"

#if defined(__x86_64__)

#include <cstddef>

namespace Oxa::Core::Platform {

namespace {

// Where the kernel keeps the registers, in the order of their numbers in debug data.
constexpr int iPLACES[CONTEXT::iREGISTERS] = {REG_RAX, REG_RDX, REG_RCX, REG_RBX, REG_RSI, REG_RDI,
                                              REG_RBP, REG_RSP, REG_R8,  REG_R9,  REG_R10, REG_R11,
                                              REG_R12, REG_R13, REG_R14, REG_R15, REG_RIP};

}  // namespace

static_assert(offsetof(CONTEXT, m_registers) == 0 && offsetof(CONTEXT, m_pFull) == 17 * 8,
              "CaptureContext counts on it");

void FillContext(CONTEXT& context, const ucontext_t& from) noexcept {
  for (int number = 0; number < CONTEXT::iREGISTERS; ++number)
    context.m_registers[number] = static_cast<std::uint64_t>(from.uc_mcontext.gregs[iPLACES[number]]);
  context.m_pFull = &from;
}

// Without a frame of its own, so that nothing has been moved yet; the place and the stack are those behind the call.
__attribute__((naked, no_sanitize("thread", "address", "undefined"), no_profile_instrument_function)) void
CaptureContext(CONTEXT& /*context*/) noexcept {
  asm volatile(
      "movq %rax, 0(%rdi)\n\t"
      "movq %rdx, 8(%rdi)\n\t"
      "movq %rcx, 16(%rdi)\n\t"
      "movq %rbx, 24(%rdi)\n\t"
      "movq %rsi, 32(%rdi)\n\t"
      "movq %rdi, 40(%rdi)\n\t"
      "movq %rbp, 48(%rdi)\n\t"
      "leaq 8(%rsp), %rax\n\t"
      "movq %rax, 56(%rdi)\n\t"
      "movq %r8, 64(%rdi)\n\t"
      "movq %r9, 72(%rdi)\n\t"
      "movq %r10, 80(%rdi)\n\t"
      "movq %r11, 88(%rdi)\n\t"
      "movq %r12, 96(%rdi)\n\t"
      "movq %r13, 104(%rdi)\n\t"
      "movq %r14, 112(%rdi)\n\t"
      "movq %r15, 120(%rdi)\n\t"
      "movq (%rsp), %rax\n\t"
      "movq %rax, 128(%rdi)\n\t"
      "movq $0, 136(%rdi)\n\t"
      "ret\n\t");
}

}  // namespace Oxa::Core::Platform

#else

namespace Oxa::Core::Platform {

// No register is known by its number on other processors: call stacks and dumps do without.
void FillContext(CONTEXT& context, const ucontext_t& from) noexcept {
  context = CONTEXT{};
  context.m_pFull = &from;
}

void CaptureContext(CONTEXT& context) noexcept { context = CONTEXT{}; }

}  // namespace Oxa::Core::Platform

#endif
