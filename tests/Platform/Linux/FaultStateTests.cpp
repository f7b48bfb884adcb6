// What a fault leaves as it was: the memory and registers of whom it hit, the stacks, the allocator. And what of it is
// told to nobody but the last chance.
#if defined(__x86_64__)

#include <gtest/gtest.h>
#include <malloc.h>
#include <signal.h>
#include <sys/mman.h>
#include <ucontext.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <thread>
#include <vector>

#include "Platform/Faults.h"
#include "Platform/Linux/FaultContext.h"
#include "Platform/Linux/SafeMemory.h"
#include "Support/FaultDeath.h"
#include "Support/FaultSite.h"
#include "Support/GuardPages.h"
#include "Support/ThreadSanitizer.h"

using namespace Oxa::Core::Platform;
using TestSupport::DieBy;
using TestSupport::GuardPages;

extern "C" {
/// Puts marks where a function without calls keeps its variables, and in a register of the vector unit; then faults.
void FaultWithMarks(void* nowhere);

/// Pushes with a stack pointer of 16.
void FaultOffItsStack();

/// Changes all registers that calls leave alone, and faults. Its table says that nothing gets out of it.
void FaultInAFrameThatIsPassedOver(void* nowhere);
}

asm(".text\n"
    ".type FaultWithMarks, @function\n"
    "FaultWithMarks:\n"
    ".cfi_startproc\n"
    "movq $0x1122, -8(%rsp)\n"
    "movq $0x3344, -128(%rsp)\n"
    "movl $0x5566, %eax\n"
    "movq %rax, %xmm5\n"
    "movl $1, (%rdi)\n"
    "ret\n"
    ".cfi_endproc\n"
    ".size FaultWithMarks, .-FaultWithMarks\n");

asm(".text\n"
    ".type FaultOffItsStack, @function\n"
    "FaultOffItsStack:\n"
    ".cfi_startproc\n"
    "movl $16, %esp\n"
    "pushq %rax\n"
    "ud2\n"
    ".cfi_endproc\n"
    ".size FaultOffItsStack, .-FaultOffItsStack\n");

#define OXA_PUSH(name, place) \
  "pushq %" name "\n.cfi_adjust_cfa_offset 8\n.cfi_offset " name ", " place "\nmovq $-1, %" name "\n"

asm(".section .rodata\n"
    "FaultTableWithoutEntries: .byte 0xff, 0xff, 0x01, 0\n"
    ".text\n"
    ".type FaultInAFrameThatIsPassedOver, @function\n"
    "FaultInAFrameThatIsPassedOver:\n"
    ".cfi_startproc\n"
    ".cfi_personality 0x9b, DW.ref.__gxx_personality_v0\n"
    ".cfi_lsda 0x1b, FaultTableWithoutEntries\n" OXA_PUSH("rbx", "-16") OXA_PUSH("rbp", "-24")
        OXA_PUSH("r12", "-32") OXA_PUSH("r13", "-40") OXA_PUSH("r14", "-48") OXA_PUSH("r15", "-56")
    "movl $1, (%rdi)\n"
    "ud2\n"
    ".cfi_endproc\n"
    ".size FaultInAFrameThatIsPassedOver, .-FaultInAFrameThatIsPassedOver\n");

namespace {

struct Caught {
  FaultFacts m_facts;
};

void Translate(unsigned int, _EXCEPTION_POINTERS* pointers) { throw Caught{FactsOf(*pointers)}; }

class FaultState : public testing::Test {
 protected:
  void SetUp() override {
    SetLastChance([](_EXCEPTION_POINTERS*) -> long { return 0; });
    SetFaultTranslator(&Translate);
  }
  void TearDown() override { RemoveFaultHandling(); }
};

[[maybe_unused]] OXA_FAULT_SITE void WriteTo(volatile int* place) { *place = 1; }

TEST_F(FaultState, WhatLiesBelowTheStackPointerAndInTheVectorUnitIsThereForWhoLooks) {
  static std::uint64_t s_seen[3];
  SetFaultTranslator([](unsigned int, _EXCEPTION_POINTERS* pointers) {
    const CONTEXT& context = *pointers->ContextRecord;
    const std::uint64_t stack = context.m_registers[CONTEXT::iSTACK];
    ReadSafely(stack - 8, &s_seen[0], sizeof s_seen[0]);
    ReadSafely(stack - 128, &s_seen[1], sizeof s_seen[1]);
    s_seen[2] = context.m_pFull->uc_mcontext.fpregs->_xmm[5].element[0];
    throw Caught{FactsOf(*pointers)};
  });
  EXPECT_THROW(FaultWithMarks(nullptr), Caught);
  EXPECT_EQ(0x1122u, s_seen[0]);
  EXPECT_EQ(0x3344u, s_seen[1]);
  EXPECT_EQ(0x5566u, s_seen[2]);
}

// More values than there are registers to keep them in.
__attribute__((noinline)) std::uint64_t SumBehindAFault(const volatile std::uint64_t* values) {
  const std::uint64_t a = values[0], b = values[1], c = values[2], d = values[3], e = values[4],
                      f = values[5];
  try {
    FaultInAFrameThatIsPassedOver(nullptr);
  } catch (const Caught&) {
    return a + 10 * b + 100 * c + 1000 * d + 10000 * e + 100000 * f;
  }
  return 0;
}

TEST_F(FaultState, WhoCatchesBehindAFrameThatIsPassedOverHasItsRegisters) {
  const volatile std::uint64_t values[] = {1, 2, 3, 4, 5, 6};
  EXPECT_EQ(654321u, SumBehindAFault(values));
}

// --- Stacks

TEST_F(FaultState, AnAlternateStackEndsAtAPageThatNobodyHas) {
  OXA_SKIP_UNDER_THREAD_SANITIZER("threads have another one there");
  std::thread([] {
    SetFaultTranslator(&Translate);
    stack_t stack = {};
    ASSERT_EQ(0, ::sigaltstack(nullptr, &stack));
    const auto low = reinterpret_cast<std::uintptr_t>(stack.ss_sp);
    char byte = 0;
    EXPECT_TRUE(ReadSafely(low, &byte, 1));
    EXPECT_FALSE(ReadSafely(low - 1, &byte, 1));
  }).join();
}

void HaveManyThreads() {
  constexpr int iTHREADS = 40;  // more than those whose stacks are kept for others
  std::atomic<int> ready{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < iTHREADS; ++i)
    threads.emplace_back([&ready] {
      SetFaultTranslator(&Translate);
      ++ready;
      while (ready < iTHREADS) std::this_thread::yield();
    });
  for (std::thread& thread : threads) thread.join();
}

TEST_F(FaultState, ManyThreadsAtATimeLeaveNoMoreStacksThanAreKept) {
  OXA_SKIP_UNDER_THREAD_SANITIZER("threads have another one there");
  HaveManyThreads();
  const int pages = GuardPages();
  for (int i = 0; i < 3; ++i) HaveManyThreads();
  EXPECT_LE(GuardPages(), pages + 16);
}

TEST_F(FaultState, ANewStackStandsBetweenTwoGuardsAndGoes) {
  OXA_SKIP_UNDER_THREAD_SANITIZER("stacks aren't changed there");
  int pages = GuardPages();
  struct Seen {
    int m_iPages;
    std::uintptr_t m_uEnd;
  } seen = {};
  const std::uintptr_t end = EndOfStack();
  CallOnNewStack(
      1 << 20,
      [](void* argument) {
        *static_cast<Seen*>(argument) = {GuardPages(), EndOfStack()};
      },
      &seen);
  EXPECT_EQ(pages + 2, seen.m_iPages);
  EXPECT_NE(0u, seen.m_uEnd);
  EXPECT_NE(end, seen.m_uEnd);
  EXPECT_EQ(pages, GuardPages());
  EXPECT_EQ(end, EndOfStack());
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(FaultState, AThreadThatIsTakenOffANewStackIsKnownToBeOnItsOwn) {
  const std::uintptr_t end = EndOfStack();
  ASSERT_NE(0u, end);
  EXPECT_FALSE(CallGuarded(
      [](void*) {
        CallOnNewStack(
            1 << 20, [](void*) { WriteTo(nullptr); }, nullptr);
      },
      nullptr));
  EXPECT_EQ(end, EndOfStack());
}

struct NeedsRoom {
  __attribute__((noinline)) ~NeedsRoom() {
    volatile char room[8192];
    for (volatile char& c : room) c = 1;
  }
};

OXA_FAULT_SITE int RecurseWithCleanUps(volatile int* depth) {
  const NeedsRoom cleanUp;
  volatile char room[512];
  for (volatile char& c : room) c = 1;
  *depth = *depth + 1;
  if (*depth < 0) return 0;
  return RecurseWithCleanUps(depth) + room[*depth % 512];
}

// Clean-ups of the frames nearest to the end would meet it once more.
TEST_F(FaultState, AnOverflowIsRaisedWhereCleanUpsHaveRoom) {
  static int s_iTranslated;
  s_iTranslated = 0;
  SetFaultTranslator([](unsigned int code, _EXCEPTION_POINTERS* pointers) {
    ++s_iTranslated;
    Translate(code, pointers);
  });
  for (int i = 1; i <= 3; ++i) {
    volatile int depth = 0;
    EXPECT_THROW(RecurseWithCleanUps(&depth), Caught);
    EXPECT_GT(depth, 100);
    EXPECT_EQ(i, s_iTranslated);
  }
}

// What the handlers of signals run on; null for none.
void UseAlternate(char* memory, std::size_t size) {
  stack_t stack = {};
  stack.ss_sp = memory;
  stack.ss_size = size;
  stack.ss_flags = memory == nullptr ? SS_DISABLE : 0;
  if (::sigaltstack(&stack, nullptr) != 0) ::_exit(2);
}

TEST_F(FaultState, WithoutAnAlternateStackARaiseTakesPlaceWhereTheFaultDid) {
  stack_t before = {};
  ASSERT_EQ(0, ::sigaltstack(nullptr, &before));
  UseAlternate(nullptr, 0);
  EXPECT_THROW(WriteTo(nullptr), Caught);
  EXPECT_EQ(0, ::sigaltstack(&before, nullptr));
}

// --- What goes to the last chance. Each in a process of its own.

void* volatile s_result;
void* const volatile s_noBlock = reinterpret_cast<void*>(64);

// Makes the next who looks through the free blocks follow a link that leads nowhere.
void SpoilAFreeBlock() {
  constexpr std::size_t uLARGE = 2000;  // too large for the quick lists
  void* volatile first = std::malloc(uLARGE);
  s_result = std::malloc(uLARGE);  // keeps it apart from what lies behind
  const auto place = reinterpret_cast<std::uintptr_t>(first);
  std::free(first);
  reinterpret_cast<volatile std::uintptr_t*>(place)[1] = 0x1000;
}

// On one that has no room for a raise. What is thrown there ends the process otherwise.
void FaultOnASmallStack() {
  constexpr std::size_t uPAGE = 4096;
  constexpr std::size_t uSIZE = 8 * uPAGE;
  void* const memory =
      ::mmap(nullptr, uSIZE + uPAGE, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ::mprotect(memory, uPAGE, PROT_NONE);
  ucontext_t here;
  ucontext_t there;
  ::getcontext(&there);
  there.uc_stack.ss_sp = static_cast<char*>(memory) + uPAGE;
  there.uc_stack.ss_size = uSIZE;
  there.uc_link = &here;
  ::makecontext(
      &there, [] { WriteTo(nullptr); }, 0);
  ::swapcontext(&here, &there);
}

#define EXPECT_LAST_CHANCE(...) \
  EXPECT_EXIT(DieBy([] { __VA_ARGS__; }), testing::ExitedWithCode(9), "") << #__VA_ARGS__

TEST_F(FaultState, NothingIsRaisedInAnyFunctionOfTheAllocator) {
  EXPECT_LAST_CHANCE(std::free(s_noBlock));
  EXPECT_LAST_CHANCE(s_result = std::realloc(s_noBlock, 100));
  EXPECT_LAST_CHANCE(::malloc_usable_size(s_noBlock));
  EXPECT_LAST_CHANCE(SpoilAFreeBlock(); s_result = std::malloc(2000));
  EXPECT_LAST_CHANCE(SpoilAFreeBlock(); s_result = std::calloc(1, 2000));
  EXPECT_LAST_CHANCE(SpoilAFreeBlock(); s_result = std::aligned_alloc(256, 2048));
  EXPECT_LAST_CHANCE(SpoilAFreeBlock(); s_result = ::memalign(256, 2000));
  EXPECT_LAST_CHANCE(SpoilAFreeBlock(); void* block = nullptr;
                     if (::posix_memalign(&block, 256, 2000) == 0) s_result = block);
  EXPECT_LAST_CHANCE(SpoilAFreeBlock(); ::malloc_trim(0));
}

TEST_F(FaultState, NothingIsRaisedWhereThereIsNoRoomForIt) {
  static char s_small[16384];
  EXPECT_LAST_CHANCE(UseAlternate(nullptr, 0); FaultOnASmallStack());
  EXPECT_LAST_CHANCE(UseAlternate(s_small, sizeof s_small); FaultOnASmallStack());
}

// More than an alternate stack has.
TEST_F(FaultState, TheLastChanceHasRoom) {
  const auto die = [] {
    SetFaultTranslator(nullptr);
    SetLastChance([](_EXCEPTION_POINTERS*) -> long {
      volatile char room[512 * 1024];
      for (volatile char& c : room) c = 1;
      ::_exit(9);
    });
    WriteTo(nullptr);
  };
  EXPECT_EXIT(die(), testing::ExitedWithCode(9), "");
}

TEST_F(FaultState, WhatIsLeftToTheSystemEndsByTheSignalWhoeverBlocksIt) {
  const auto die = [] {
    SetFaultTranslator([](unsigned int, _EXCEPTION_POINTERS*) {});
    SetLastChance([](_EXCEPTION_POINTERS*) -> long {
      sigset_t blocked;
      ::sigemptyset(&blocked);
      ::sigaddset(&blocked, SIGSEGV);
      return ::pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
    });
    WriteTo(nullptr);
  };
  EXPECT_EXIT(die(), testing::KilledBySignal(SIGSEGV), "");
}
#endif

// The walk up such a stack faults as well.
TEST_F(FaultState, AFaultOnAStackThatLeadsNowhereIsToldAsItWas) {
  const auto die = [] {
    SetLastChance(
        [](_EXCEPTION_POINTERS* pointers) -> long { ::_exit(FactsOf(*pointers).m_uTouched == 8 ? 9 : 10); });
    FaultOffItsStack();
  };
  EXPECT_EXIT(die(), testing::ExitedWithCode(9), "");
}

}  // namespace

#endif
