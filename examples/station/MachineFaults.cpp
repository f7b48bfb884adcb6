// The sanitizers leave this file alone (see CMakeLists.txt): what is wrong in it is meant to be. What is volatile
// would be left out otherwise, or turned into something else, by a compiler that sees through it.
#include "MachineFaults.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <limits>

namespace Station {

namespace {

constexpr std::size_t uPAGE = 4096;

// What the answers go to, so that they count as used.
volatile int s_iReading = 0;

int Descend(unsigned long depth, const volatile unsigned long& deepest) {
  volatile char frame[1024];
  frame[0] = static_cast<char>(depth);
  if (depth == deepest) return 0;
  return Descend(depth + 1, deepest) + frame[0];
}

}  // namespace

// NOLINTBEGIN(clang-analyzer-core.*)
void WriteThroughNull() {
  volatile int* volatile channel = nullptr;
  const volatile int reading = 4711;
  *channel = reading;
}

void ReadThroughNull() {
  const volatile int* volatile channel = nullptr;
  s_iReading = *channel;
}

void CallNull() {
  using Driver = int (*)(int);
  volatile Driver driver = nullptr;
  s_iReading = driver(4711);
}

void DivideByZero() {
  const volatile int sum = 4711;
  const volatile int samples = 0;
  s_iReading = sum / samples;
}
// NOLINTEND(clang-analyzer-core.*)

void OverflowStack() {
  const volatile unsigned long deepest = std::numeric_limits<unsigned long>::max();
  s_iReading = Descend(0, deepest);
}

void ReadBeyondMappedFile() {
  std::FILE* const file = std::tmpfile();
  if (file == nullptr) return;
  void* const memory = ::mmap(nullptr, uPAGE, PROT_READ, MAP_SHARED, ::fileno(file), 0);
  if (memory == MAP_FAILED) return;
  const volatile int* volatile calibration = static_cast<const int*>(memory);
  s_iReading = *calibration;  // the file is empty
}

#if defined(__x86_64__)

void RunNoInstruction() { asm volatile("ud2"); }

void RunPrivateInstruction() { asm volatile("hlt"); }

void RunOverflowInstruction() { asm volatile("int $4"); }

void ReadMisaligned() {
  alignas(int) const volatile char bytes[2 * sizeof(int)] = {};
  const volatile int* volatile odd =
      reinterpret_cast<const volatile int*>(reinterpret_cast<std::uintptr_t>(bytes) + 1);
  // The flag that has accesses checked. What lies below the stack pointer may be in use.
  asm volatile("lea -128(%%rsp), %%rsp; pushfq; orl $0x40000, (%%rsp); popfq; lea 128(%%rsp), %%rsp" ::
                   : "memory", "cc");
  s_iReading = *odd;
}

#endif

}  // namespace Station
