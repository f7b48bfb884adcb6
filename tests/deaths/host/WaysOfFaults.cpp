// What the machine itself refuses: memory, instructions, whole numbers.
#include <stdlib.h>
#include <sys/mman.h>
#include <unistd.h>

#include <climits>
#include <cstdint>
#include <iterator>

#include "Ways.h"

namespace {

volatile int s_iSink = 0;
volatile int s_iNought = 0;
volatile int s_iMinusOne = -1;
volatile int s_iLeast = INT_MIN;
const int s_iConstant = 4;
void (*volatile s_pNowhere)() = nullptr;
void (*volatile s_pFunction)() = nullptr;
char s_data[64] = {'\x90', '\x90', '\xc3'};

volatile int* At(std::uintptr_t address) { return reinterpret_cast<volatile int*>(address); }

}  // namespace

DEATHS_SITE void DieByNullWrite() { *Deaths::g_pNull = 1; }

DEATHS_SITE void DieByNullRead() { s_iSink = *Deaths::g_pNull; }

DEATHS_SITE void DieByNullCall() {
  s_pNowhere();
  s_iSink = 1;
}

DEATHS_SITE void DieByWildPointer() { *At(0x123456789000U) = 1; }

DEATHS_SITE void DieByNonCanonicalAddress() { s_iSink = *At(0x4141414141414141U); }

DEATHS_SITE void DieByWritingAConstant() { *const_cast<volatile int*>(&s_iConstant) = 1; }

DEATHS_SITE void DieByIntDivide() { s_iSink = 1 / s_iNought; }

DEATHS_SITE void DieByIntOverflow() { s_iSink = s_iLeast / s_iMinusOne; }

DEATHS_SITE void DieByIllegalInstruction() { asm volatile("ud2"); }

DEATHS_SITE void DieByPrivilegedInstruction() { asm volatile("hlt"); }

// The processor is told to check alignment; it goes on checking whoever deals with the fault.
DEATHS_SITE void DieByMisalignment() {
  alignas(8) volatile char bytes[16] = {};
  constexpr unsigned long long ullALIGNMENT_CHECK = 0x40000;
  __builtin_ia32_writeeflags_u64(__builtin_ia32_readeflags_u64() | ullALIGNMENT_CHECK);
  s_iSink = *reinterpret_cast<volatile int*>(reinterpret_cast<std::uintptr_t>(bytes) + 1);
}

// A file that became shorter under its mapping.
DEATHS_SITE void DieByBusError() {
  char name[] = "busXXXXXX";
  const int handle = ::mkstemp(name);
  ::unlink(name);
  const int set = ::ftruncate(handle, 4096);
  void* const memory = ::mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED, handle, 0);
  s_iSink = set + ::ftruncate(handle, 0);
  *static_cast<volatile char*>(memory) = 1;
}

DEATHS_SITE void DieByJumpIntoData() {
  s_pFunction = reinterpret_cast<void (*)()>(s_data);
  s_pFunction();
  s_iSink = 1;
}

namespace Deaths {

namespace {

constexpr NamedWay sWAYS[] = {
    {"null-write", &DieByNullWrite},
    {"null-read", &DieByNullRead},
    {"null-call", &DieByNullCall},
    {"wild-pointer", &DieByWildPointer},
    {"non-canonical", &DieByNonCanonicalAddress},
    {"constant-write", &DieByWritingAConstant},
    {"int-divide", &DieByIntDivide},
    {"int-overflow", &DieByIntOverflow},
    {"illegal-instruction", &DieByIllegalInstruction},
    {"privileged-instruction", &DieByPrivilegedInstruction},
    {"misalignment", &DieByMisalignment},
    {"bus-error", &DieByBusError},
    {"data-jump", &DieByJumpIntoData},
};

}  // namespace

Ways WaysOfFaults() { return {sWAYS, std::size(sWAYS)}; }

}  // namespace Deaths
