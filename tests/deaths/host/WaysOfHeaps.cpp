// A heap that is broken or used up: the C library's own bookkeeping is written over, so that it is the allocator
// that faults, with its locks held, or that finds it out and aborts.
#include <sys/resource.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <new>

#include "Ways.h"

namespace {

using Words = volatile std::uintptr_t*;

constexpr std::uintptr_t uWILD = 0x123456789000U;
constexpr std::size_t uSMALL = 40;
constexpr std::size_t uLARGE = 4000;  // beyond what threads keep for themselves

void* volatile s_pKept = nullptr;

Words Allocate(std::size_t size) { return static_cast<Words>(std::malloc(size)); }

// The compiler isn't to know that what follows uses freed memory: that is the point of it.
Words Free(Words memory) {
  std::uintptr_t address = reinterpret_cast<std::uintptr_t>(memory);
  asm volatile("" : "+r"(address));
  std::free(const_cast<std::uintptr_t*>(memory));
  return reinterpret_cast<Words>(address);
}

// Leaves the process a little more than it has.
void LimitMemory() {
  std::size_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  constexpr std::size_t uLITTLE = 16U << 20U;
  const rlim_t limit = pages * 4096 + uLITTLE;
  const rlimit limits = {limit, limit};
  ::setrlimit(RLIMIT_AS, &limits);
}

}  // namespace

// The list of free blocks that a thread keeps for itself; its links are mixed with the address of the block.
DEATHS_SITE void DieInMalloc() {
  Words first = Allocate(uSMALL);
  Words second = Allocate(uSMALL);
  Free(first);
  Words block = Free(second);
  block[0] = uWILD ^ (reinterpret_cast<std::uintptr_t>(block) >> 12U);
  for (int times = 0; times < 4; ++times) s_pKept = std::malloc(uSMALL);
}

// The list that all threads share, under its lock.
DEATHS_SITE void DieInMallocWithTheLock() {
  Words block = Allocate(uLARGE);
  s_pKept = std::malloc(uLARGE);  // keeps the block from joining the rest
  Words freed = Free(block);
  freed[1] = uWILD;
  s_pKept = std::malloc(uLARGE * 2);
}

DEATHS_SITE void DieByFreeingAWildPointer() {
  void* volatile wild = reinterpret_cast<void*>(uWILD);
  std::free(wild);
  s_pKept = nullptr;
}

DEATHS_SITE void DieByFreeingTheStack() {
  int local[8] = {};
  void* volatile stack = local + 2;
  std::free(stack);
  s_pKept = nullptr;
}

DEATHS_SITE void DieByFreeingTwice() {
  Words block = Allocate(uSMALL);
  Free(Free(block));
  s_pKept = nullptr;
}

DEATHS_SITE void DieOutOfMemory() {
  LimitMemory();
  for (std::size_t size = 1U << 20U; size > 8; size /= 4)
    while (void* const memory = ::operator new(size, std::nothrow)) s_pKept = memory;
  s_pKept = ::operator new(uLARGE);
}

namespace Deaths {

namespace {

constexpr NamedWay sWAYS[] = {
    {"malloc", &DieInMalloc},
    {"malloc-locked", &DieInMallocWithTheLock},
    {"free-wild", &DieByFreeingAWildPointer},
    {"free-stack", &DieByFreeingTheStack},
    {"free-twice", &DieByFreeingTwice},
    {"out-of-memory", &DieOutOfMemory},
};

}  // namespace

Ways WaysOfHeaps() { return {sWAYS, std::size(sWAYS)}; }

}  // namespace Deaths
