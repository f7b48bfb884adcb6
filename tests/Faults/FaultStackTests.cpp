// Ends of stacks, whoever made them and however they are met, and the stacks that faults are raised on.
#include <Infrastructure/OxaCore/MicrosoftSEHAdapter.h>

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/mman.h>
#include <ucontext.h>

#include <cstddef>
#include <thread>
#include <vector>

#include "FaultSites.h"

namespace {

using namespace MSWindows;

constexpr std::size_t uPAGE = 4096;

template <class Site>
bool IsOverflow(const Site& site) {
  try {
    site();
  } catch (StackOverflow&) {
    return true;
  } catch (SEHError&) {
  }
  return false;
}

// --- A stack that the program has made, with a guard page at its end

class OwnStack {
 public:
  // As closely below `neighbour` as there is room; anywhere if that is null.
  explicit OwnStack(void* neighbour) {
    constexpr int iKIND = MAP_PRIVATE | MAP_ANONYMOUS;
    for (std::size_t distance = uSIZE; neighbour != nullptr && distance < uFAR; distance += uPAGE) {
      char* const wanted = static_cast<char*>(neighbour) - distance;
      m_pMemory = ::mmap(wanted, uSIZE, PROT_READ | PROT_WRITE, iKIND | MAP_FIXED_NOREPLACE, -1, 0);
      if (m_pMemory == wanted) break;
    }
    if (m_pMemory == MAP_FAILED) m_pMemory = ::mmap(nullptr, uSIZE, PROT_READ | PROT_WRITE, iKIND, -1, 0);
    ::mprotect(m_pMemory, uPAGE, PROT_NONE);
  }
  OwnStack(const OwnStack&) = delete;
  OwnStack& operator=(const OwnStack&) = delete;
  ~OwnStack() { ::munmap(m_pMemory, uSIZE); }

  // Runs `routine` on it to its end.
  void Run(void (*routine)()) {
    ucontext_t here;
    ucontext_t there;
    ::getcontext(&there);
    there.uc_stack.ss_sp = static_cast<char*>(m_pMemory) + uPAGE;
    there.uc_stack.ss_size = uSIZE - uPAGE;
    there.uc_link = &here;
    ::makecontext(&there, routine, 0);
    ::swapcontext(&here, &there);
  }

 private:
  static constexpr std::size_t uSIZE = 128 * 1024;
  static constexpr std::size_t uFAR = 512 * 1024;

  void* m_pMemory = MAP_FAILED;
};

int s_iOverflows = 0;
int s_iFaults = 0;

void ExpectFaultsOn(OwnStack& stack, const char* where) {
  s_iOverflows = 0;
  s_iFaults = 0;
  for (int i = 0; i < 3; ++i) {
    stack.Run([] {
      if (IsOverflow(&FaultOverflow)) ++s_iOverflows;
      try {
        FaultWrite(nullptr);
      } catch (AccessViolation&) {
        ++s_iFaults;
      }
    });
  }
  EXPECT_EQ(3, s_iOverflows) << where;
  EXPECT_EQ(3, s_iFaults) << where;
}

stack_t Current() {
  stack_t stack = {};
  ::sigaltstack(nullptr, &stack);
  return stack;
}

void* EndOfThisStack() {
  pthread_attr_t attributes;
  ::pthread_getattr_np(::pthread_self(), &attributes);
  void* low = nullptr;
  std::size_t size = 0;
  ::pthread_attr_getstack(&attributes, &low, &size);
  ::pthread_attr_destroy(&attributes);
  return low;
}

// Whatever lies above it: its end is told from the ends of the thread's others.
TEST(FaultStack, OfTheProgramsOwnMakingOverflowsToo) {
  std::thread([] {
    InstallSEHErrorTranslator();
    OwnStack anywhere(nullptr);
    ExpectFaultsOn(anywhere, "anywhere");
    OwnStack belowAlternate(Current().ss_sp);
    ExpectFaultsOn(belowAlternate, "below the alternate stack");
    OwnStack belowThreads(EndOfThisStack());
    ExpectFaultsOn(belowThreads, "below the stack of the thread");
  }).join();
}

// --- Large frames

// How a compiler makes room: it touches each page on the way, or whatever comes first.
#define OXA_PROBED OXA_FAULT_SITE __attribute__((optimize("stack-clash-protection")))
#define OXA_UNPROBED OXA_FAULT_SITE __attribute__((optimize("no-stack-clash-protection")))

template <std::size_t SIZE>
OXA_PROBED int RecurseProbed(volatile int* depth) {
  volatile char room[SIZE];
  room[*depth % SIZE] = 1;
  if (++*depth < 0) return 0;
  return RecurseProbed<SIZE>(depth) + room[*depth % SIZE];
}

template <std::size_t SIZE>
OXA_UNPROBED int RecurseUnprobed(volatile int* depth) {
  volatile char room[SIZE];
  room[*depth % SIZE] = 1;
  if (++*depth < 0) return 0;
  return RecurseUnprobed<SIZE>(depth) + room[*depth % SIZE];
}

// With the end of the stack two megabytes wide, so that nobody else's memory lies behind it.
template <class Routine>
void OnGuardedThread(Routine routine) {
  pthread_attr_t attributes;
  ::pthread_attr_init(&attributes);
  ::pthread_attr_setstacksize(&attributes, 4 << 20);
  ::pthread_attr_setguardsize(&attributes, 2 << 20);
  pthread_t thread;
  const auto run = [](void* argument) -> void* {
    InstallSEHErrorTranslator();
    (*static_cast<Routine*>(argument))();
    return nullptr;
  };
  ASSERT_EQ(0, ::pthread_create(&thread, &attributes, run, &routine));
  ::pthread_join(thread, nullptr);
  ::pthread_attr_destroy(&attributes);
}

int OverflowsOf(int (*recurse)(volatile int*)) {
  int caught = 0;
  OnGuardedThread([&caught, recurse] {
    for (int i = 0; i < 2; ++i) {
      volatile int depth = 0;
      if (IsOverflow([recurse, &depth] { recurse(&depth); })) ++caught;
    }
  });
  return caught;
}

TEST(FaultStack, OverflowsByAFrameOfSeveralPages) {
  EXPECT_EQ(2, OverflowsOf(&RecurseProbed<3 * uPAGE>));
  EXPECT_EQ(2, OverflowsOf(&RecurseUnprobed<3 * uPAGE>));
}

TEST(FaultStack, OverflowsByAVeryLargeFrame) {
  EXPECT_EQ(2, OverflowsOf(&RecurseProbed<512 * 1024>));
  EXPECT_EQ(2, OverflowsOf(&RecurseUnprobed<512 * 1024>));
}

// --- Alternate stacks

constexpr std::size_t uOURS = 256 * 1024;

struct HostStack {
  explicit HostStack(std::size_t size) : m_memory(size) {}
  void Use() {
    stack_t stack = {};
    stack.ss_sp = m_memory.data();
    stack.ss_size = m_memory.size();
    ASSERT_EQ(0, ::sigaltstack(&stack, nullptr));
  }
  bool IsInUse() const { return Current().ss_sp == m_memory.data() && Current().ss_flags == 0; }

  std::vector<char> m_memory;
};

// Runs `routine`, and gives what the thread's alternate stack is at its end, behind the library's own clean-up.
template <class Routine>
stack_t StackAtTheEndOf(const Routine& routine) {
  static stack_t s_last;
  pthread_key_t key;  // younger than the library's, and so later at the end of a thread
  EXPECT_EQ(0, ::pthread_key_create(&key, [](void*) { s_last = Current(); }));
  std::thread([&routine, key] {
    ::pthread_setspecific(key, &s_last);
    routine();
  }).join();
  ::pthread_key_delete(key);
  return s_last;
}

TEST(FaultAlternateStack, IsThereFromTheTranslatorToTheEndOfTheThread) {
  const stack_t last = StackAtTheEndOf([] {
    EXPECT_EQ(SS_DISABLE, Current().ss_flags);
    InstallSEHErrorTranslator();
    const stack_t first = Current();
    EXPECT_EQ(0, first.ss_flags);
    EXPECT_EQ(uOURS, first.ss_size);
    InstallSEHErrorTranslator();
    EXPECT_EQ(first.ss_sp, Current().ss_sp) << "one is enough";
  });
  EXPECT_EQ(SS_DISABLE, last.ss_flags);
}

TEST(FaultAlternateStack, OfTheHostIsKeptIfItIsLargeEnough) {
  HostStack own(uOURS);
  const stack_t last = StackAtTheEndOf([&own] {
    own.Use();
    InstallSEHErrorTranslator();
    EXPECT_TRUE(own.IsInUse());
    EXPECT_TRUE(IsOverflow(&FaultOverflow));
    EXPECT_TRUE(own.IsInUse());
  });
  EXPECT_EQ(own.m_memory.data(), last.ss_sp);
}

TEST(FaultAlternateStack, OfTheHostComesBackIfItIsSmaller) {
  HostStack own(uOURS - 1);
  const stack_t last = StackAtTheEndOf([&own] {
    own.Use();
    InstallSEHErrorTranslator();
    EXPECT_FALSE(own.IsInUse());
    EXPECT_EQ(uOURS, Current().ss_size);
  });
  EXPECT_EQ(own.m_memory.data(), last.ss_sp);
  EXPECT_EQ(own.m_memory.size(), last.ss_size);
  EXPECT_EQ(0, last.ss_flags);
}

TEST(FaultAlternateStack, OfTheHostStaysIfItCameLater) {
  HostStack own(uOURS / 2);
  const stack_t last = StackAtTheEndOf([&own] {
    InstallSEHErrorTranslator();
    own.Use();
    EXPECT_THROW(FaultWrite(nullptr), AccessViolation);
    EXPECT_TRUE(IsOverflow(&FaultOverflow));
    InstallSEHErrorTranslator();
    EXPECT_TRUE(own.IsInUse());
  });
  EXPECT_EQ(own.m_memory.data(), last.ss_sp);
}

}  // namespace
