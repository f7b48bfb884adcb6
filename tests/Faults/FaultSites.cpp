#include "FaultSites.h"

#include <fenv.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <unistd.h>

#define OXA_SITE(name, code)               \
  asm(".text\n"                            \
      ".globl " #name                      \
      "\n"                                 \
      ".type " #name ", @function\n" #name \
      ":\n"                                \
      ".cfi_startproc\n" code              \
      "ret\n"                              \
      ".cfi_endproc\n"                     \
      ".size " #name ", .-" #name "\n")

#define OXA_PLACE(name) ".globl " #name "\n" #name ":\n"

OXA_SITE(FaultWrite, "movl $1, (%rdi)\n");
OXA_SITE(FaultRead, "movl (%rdi), %eax\n");
OXA_SITE(FaultDivideDouble, "divsd %xmm1, %xmm0\n");
OXA_SITE(FaultMultiplyDouble, "mulsd %xmm1, %xmm0\n");
OXA_SITE(FaultAddDouble, "addsd %xmm1, %xmm0\n");
OXA_SITE(FaultIllegal, "ud2\n");
OXA_SITE(FaultHalt, "hlt\n");
OXA_SITE(FaultPort, "inb $0x80, %al\n");
OXA_SITE(FaultWithoutStack, "movl $16, %esp\n pushq %rax\n");
OXA_SITE(FaultDivide, "movl %edi, %eax\n cltd\n" OXA_PLACE(FaultDivideAt) "idivl %esi\n");

OXA_SITE(FaultMisalignedVector, "movaps 1(%rdi), %xmm0\n");
OXA_SITE(FaultGate, "int $0x30\n");
OXA_SITE(FaultOverflow, "subq $1016, %rsp\n .cfi_adjust_cfa_offset 1016\n" OXA_PLACE(
                            FaultOverflowAt) "call FaultOverflow\n addq $1016, %rsp\n .cfi_adjust_cfa_offset "
                                             "-1016\n");

// With the processor's check of alignment switched on for the one instruction.
OXA_SITE(FaultMisaligned,
         "pushfq\n .cfi_adjust_cfa_offset 8\n orl $0x40000, (%rsp)\n popfq\n .cfi_adjust_cfa_offset "
         "-8\n" OXA_PLACE(FaultMisalignedAt) "movl 1(%rdi), %eax\n");

OXA_SITE(FaultIntOverflow, "int $4\n" OXA_PLACE(FaultIntOverflowAt));

// Nine values for eight places. The next instruction of that unit that waits is told.
OXA_SITE(FaultX87Stack, "fld1\n fld1\n fld1\n fld1\n fld1\n fld1\n fld1\n fld1\n fld1\n" OXA_PLACE(
                            FaultX87StackAt) "fwait\n");

namespace FaultSites {

int Recurse(volatile int* depth) {
  volatile char room[200];
  for (volatile char& c : room) c = 1;
  *depth = *depth + 1;
  if (*depth < 0) return 0;
  return Recurse(depth) + room[*depth % 200];
}

const void* PageBehindTheEnd() {
  const std::size_t page = 4096;
  char name[] = "/tmp/oxacoreXXXXXX";
  const int file = ::mkstemp(name);
  ::unlink(name);
  if (file < 0 || ::ftruncate(file, page) != 0) abort();
  const void* const memory = ::mmap(nullptr, page, PROT_READ, MAP_SHARED, file, 0);
  if (::ftruncate(file, 0) != 0) abort();
  ::close(file);
  return memory;
}

namespace {

constexpr unsigned uDENORMAL_MASK = 0x100;

unsigned Control() {
  unsigned control;
  asm volatile("stmxcsr %0" : "=m"(control));
  return control;
}

void SetControl(unsigned control) { asm volatile("ldmxcsr %0" : : "m"(control)); }

}  // namespace

FloatFaults::FloatFaults(int which) {
  ::feclearexcept(FE_ALL_EXCEPT);
  ::feenableexcept(which);
}

FloatFaults::FloatFaults(Denormals) { SetControl(Control() & ~uDENORMAL_MASK & ~0x3Fu); }

FloatFaults FloatFaults::ForDenormals() { return FloatFaults(Denormals()); }

FloatFaults::~FloatFaults() { ::fesetenv(FE_DFL_ENV); }

}  // namespace FaultSites
