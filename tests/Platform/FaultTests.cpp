#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <thread>

#include "Platform/Faults.h"
#include "Support/FaultDeath.h"
#include "Support/FaultSite.h"
#include "Support/ThreadSanitizer.h"

using namespace Oxa::Core::Platform;
using TestSupport::DieBy;

namespace {

struct Caught {
  FaultFacts m_facts;
};

void Translate(unsigned int, _EXCEPTION_POINTERS* pointers) { throw Caught{FactsOf(*pointers)}; }
long NoLastChance(_EXCEPTION_POINTERS*) { return 0; }

class FaultTests : public testing::Test {
 protected:
  void SetUp() override {
    SetLastChance(&NoLastChance);
    SetFaultTranslator(&Translate);
  }
  void TearDown() override { RemoveFaultHandling(); }
};

OXA_FAULT_SITE void WriteTo(volatile int* place) { *place = 1; }
OXA_FAULT_SITE int Divide(volatile int a, volatile int b) { return a / b; }
OXA_FAULT_SITE int Recurse(volatile int* depth) {
  volatile char room[512];
  for (volatile char& c : room) c = 1;
  *depth = *depth + 1;
  if (*depth < 0) return 0;
  return Recurse(depth) + room[*depth % 512];
}

TEST_F(FaultTests, ABadPointerIsTranslated) {
  int* volatile null = nullptr;
  try {
    WriteTo(null);
    FAIL();
  } catch (const Caught& caught) {
    EXPECT_EQ(eACCESS_VIOLATION, caught.m_facts.m_uCode);
    EXPECT_TRUE(caught.m_facts.m_bWrite);
    EXPECT_EQ(0u, caught.m_facts.m_uTouched);
  }
}

TEST_F(FaultTests, ADivisionByZeroIsTranslated) {
  try {
    Divide(1, 0);
    FAIL();
  } catch (const Caught& caught) {
    EXPECT_EQ(eINT_DIVIDE_BY_ZERO, caught.m_facts.m_uCode);
  }
}

TEST_F(FaultTests, AnOverflowOfTheStackIsCaughtAgainAndAgain) {
  for (int i = 0; i < 3; ++i) {
    volatile int depth = 0;
    try {
      Recurse(&depth);
      FAIL();
    } catch (const Caught& caught) {
      EXPECT_EQ(eSTACK_OVERFLOW, caught.m_facts.m_uCode);
    }
  }
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
// A catch clause without room of its own would lose what it caught.
TEST_F(FaultTests, OverflowsLeakNothing) {
  const auto overflow = [](int times) {
    for (int i = 0; i < times; ++i) {
      volatile int depth = 0;
      EXPECT_THROW(Recurse(&depth), Caught);
    }
  };
  overflow(5);
  const auto before = ::mallinfo2().uordblks;
  overflow(200);
  EXPECT_LT(::mallinfo2().uordblks, before + 2000);
}
#endif

#if defined(__x86_64__)
// NOLINTNEXTLINE(readability-non-const-parameter): it is written to
__attribute__((noinline)) void WriteWithDirectionFlag(int* place) {
  asm volatile("std\n\tmovl $1, (%0)\n\tcld" : : "r"(place) : "cc", "memory");
}

// Functions take it for granted that copies run upwards.
TEST_F(FaultTests, TheRaiseFindsTheDirectionFlagClear) {
  static bool s_bClear;
  SetFaultTranslator([](unsigned int, _EXCEPTION_POINTERS* pointers) {
    const auto flags = __builtin_ia32_readeflags_u64();
    __builtin_ia32_writeeflags_u64(flags & ~0x400ULL);
    s_bClear = (flags & 0x400ULL) == 0;
    throw Caught{FactsOf(*pointers)};
  });
  EXPECT_THROW(WriteWithDirectionFlag(nullptr), Caught);
  EXPECT_TRUE(s_bClear);
}
#endif

TEST_F(FaultTests, ACallThroughNullIsCaughtByItsCaller) {
  void (*volatile nowhere)() = nullptr;
  try {
    nowhere();
    FAIL();
  } catch (const Caught& caught) {
    EXPECT_EQ(eACCESS_VIOLATION, caught.m_facts.m_uCode);
    EXPECT_EQ(0u, caught.m_facts.m_uPlace);
  }
}

TEST_F(FaultTests, AGuardedCallIsCutShort) {
  bool done = false;
  EXPECT_TRUE(CallGuarded([](void* there) { *static_cast<bool*>(there) = true; }, &done));
  EXPECT_TRUE(done);
  EXPECT_FALSE(CallGuarded([](void*) { WriteTo(reinterpret_cast<int*>(8)); }, nullptr));
}

struct Places {
  std::intptr_t m_iDistance;
  int m_iHere;
};

TEST_F(FaultTests, ANewStackIsAnotherAndFaultsAreCaughtOnIt) {
  OXA_SKIP_UNDER_THREAD_SANITIZER("stacks aren't changed there");
  Places places = {0, 0};
  CallOnNewStack(
      1 << 20,
      [](void* argument) {
        Places& told = *static_cast<Places*>(argument);
        int there = 0;
        told.m_iDistance = reinterpret_cast<char*>(&there) - reinterpret_cast<char*>(&told);
        try {
          WriteTo(nullptr);
        } catch (const Caught&) {
          told.m_iHere = 7;
        }
      },
      &places);
  EXPECT_EQ(7, places.m_iHere);
  EXPECT_GT(std::abs(places.m_iDistance), 1 << 20);
}

bool RunsOnThisStack(std::size_t size) {
  struct Seen {
    const char* m_pHere;
    bool m_bNear;
  } seen = {nullptr, false};
  const char here = 0;
  seen.m_pHere = &here;
  CallWithRoom(
      size,
      [](void* argument) {
        Seen& told = *static_cast<Seen*>(argument);
        const char there = 0;
        told.m_bNear = std::abs(told.m_pHere - &there) < 64 * 1024;
      },
      &seen);
  return seen.m_bNear;
}

// A thread without a translator isn't known: its stack may have no room.
TEST_F(FaultTests, ACallWithRoomStaysOnAStackThatIsKnownToHaveIt) {
  OXA_SKIP_UNDER_THREAD_SANITIZER("stacks aren't changed there");
  EXPECT_TRUE(RunsOnThisStack(64 * 1024));
  EXPECT_FALSE(RunsOnThisStack(std::size_t{1} << 30));
  bool stayed = true;
  std::thread([&stayed] { stayed = RunsOnThisStack(1024); }).join();
  EXPECT_FALSE(stayed);
}

TEST_F(FaultTests, TheStackOfAKnownThreadEndsAboveAndNowhereElse) {
  const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  const std::uintptr_t end = EndOfStack();
  EXPECT_GT(end, here);
  std::uintptr_t unknown = 1;
  std::uintptr_t known = 0;
  std::thread([&] {
    unknown = EndOfStack();
    SetFaultTranslator([](unsigned int, _EXCEPTION_POINTERS*) {});
    known = EndOfStack();
    SetFaultTranslator(nullptr);
  }).join();
  EXPECT_EQ(0u, unknown);
  EXPECT_NE(0u, known);
  EXPECT_NE(end, known);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
// Makes the next but one request of this size follow a link that leads nowhere. The allocator keeps its links folded
// with their own address.
void FaultInTheAllocator() {
  void* volatile first = std::malloc(64);
  void* volatile second = std::malloc(64);
  std::free(second);
  std::free(first);
  const auto place = reinterpret_cast<std::uintptr_t>(first);
  *reinterpret_cast<volatile std::uintptr_t*>(place) = 0x1000 ^ (place >> 12);
  for (int i = 0; i < 3; ++i) {
    void* volatile block = std::malloc(64);
    static_cast<void>(block);
  }
}

// The same with one that its own functions deal with, further in.
void FaultDeepInTheAllocator() {
  constexpr std::size_t uLARGE = 2000;  // too large for the quick lists
  void* volatile first = std::malloc(uLARGE);
  void* volatile between = std::malloc(uLARGE);
  const auto place = reinterpret_cast<std::uintptr_t>(first);
  std::free(first);
  reinterpret_cast<volatile std::uintptr_t*>(place)[1] = 0x1000;
  void* volatile block = std::malloc(uLARGE);
  static_cast<void>(block);
  static_cast<void>(between);
}

TEST_F(FaultTests, AlsoOneDeepInTheAllocator) {
  EXPECT_EXIT(DieBy(&FaultDeepInTheAllocator), testing::ExitedWithCode(9), "");
}

// Nothing can be raised where nothing can be allocated.
TEST_F(FaultTests, AFaultInTheAllocatorGoesToTheLastChance) {
  EXPECT_EXIT(DieBy(&FaultInTheAllocator), testing::ExitedWithCode(9), "");
}
#endif

TEST_F(FaultTests, AFaultOnAThreadWithoutATranslatorGoesToTheLastChance) {
  EXPECT_EXIT(DieBy([] {
                SetFaultTranslator(nullptr);
                WriteTo(nullptr);
              }),
              testing::ExitedWithCode(9), "");
}

// A function that keeps a frame pointer, as unoptimised ones do, is found all the same, and its callers catch.
template <class Site>
void DieByOrCatch(const Site& site) {
  try {
    DieBy(site);
  } catch (const Caught& caught) {
    ::_exit(caught.m_facts.m_uCode == eACCESS_VIOLATION ? 9 : 10);
  }
}

// A stack pointer that leads nowhere is no end of a stack.
TEST_F(FaultTests, AWildStackPointerIsABadPointer) {
  EXPECT_EXIT(DieByOrCatch([] {
                asm volatile("movl $16, %%esp\n\tpushq %%rax" ::: "memory");
              }),
              testing::ExitedWithCode(9), "");
  EXPECT_EXIT(DieByOrCatch([] {
                asm volatile("movq $0x7000000, %%rsp\n\tpushq %%rax" ::: "memory");
              }),
              testing::ExitedWithCode(9), "");
}

// Whoever faults in each of his raises would never come to an end by them.
TEST_F(FaultTests, SixteenFaultsAreTranslatedOneWithinTheOther) {
  static int s_iTranslated;
  s_iTranslated = 0;
  EXPECT_EXIT(
      {
        SetLastChance([](_EXCEPTION_POINTERS*) -> long { ::_exit(100 + s_iTranslated); });
        SetFaultTranslator([](unsigned int, _EXCEPTION_POINTERS*) {
          ++s_iTranslated;
          WriteTo(nullptr);
        });
        WriteTo(nullptr);
      },
      testing::ExitedWithCode(116), "");
}

// The translator comes back where its raise does.
TEST_F(FaultTests, ATranslatorThatReturnsIsFollowedByTheLastChance) {
  EXPECT_EXIT(DieBy([] {
                SetFaultTranslator([](unsigned int, _EXCEPTION_POINTERS*) {});
                WriteTo(nullptr);
              }),
              testing::ExitedWithCode(9), "");
}

TEST_F(FaultTests, GuardedCallsNest) {
  static bool inner;
  inner = true;
  EXPECT_FALSE(CallGuarded(
      [](void*) {
        inner = CallGuarded([](void*) { WriteTo(nullptr); }, nullptr);
        WriteTo(nullptr);
      },
      nullptr));
  EXPECT_FALSE(inner);
  EXPECT_THROW(WriteTo(nullptr), Caught);
}

TEST_F(FaultTests, AnOverflowCutsAGuardedCallShort) {
  for (int i = 0; i < 3; ++i) {
    EXPECT_FALSE(CallGuarded(
        [](void*) {
          volatile int depth = 0;
          Recurse(&depth);
        },
        nullptr));
  }
}

TEST_F(FaultTests, AnOverflowOfANewStackIsCaughtOnIt) {
  int caught = 0;
  for (int i = 0; i < 2; ++i) {
    CallOnNewStack(
        256 * 1024,
        [](void* count) {
          volatile int depth = 0;
          try {
            Recurse(&depth);
          } catch (const Caught& found) {
            if (found.m_facts.m_uCode == eSTACK_OVERFLOW) ++*static_cast<int*>(count);
          }
        },
        &caught);
  }
  EXPECT_EQ(2, caught);
}

TEST_F(FaultTests, TheErrorModeIsAStoredWord) {
  const unsigned before = SetErrorMode(0x8007);
  EXPECT_EQ(0x8007u, SetErrorMode(before));
}

TEST_F(FaultTests, TheTranslatorIsTheThreadsOwn) {
  EXPECT_EQ(&Translate, CurrentFaultTranslator());
  FaultTranslator seen = &Translate;
  std::thread thread([&seen] { seen = CurrentFaultTranslator(); });
  thread.join();
  EXPECT_EQ(nullptr, seen);
  EXPECT_EQ(&Translate, SetFaultTranslator(nullptr));
  EXPECT_EQ(nullptr, SetFaultTranslator(&Translate));
}

}  // namespace
