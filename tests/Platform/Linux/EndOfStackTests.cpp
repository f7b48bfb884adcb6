// Where the stack ends that a thread runs on, if its limit is none and it may run on others.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <ucontext.h>

#include <cstdint>

#include "Platform/Faults.h"
#include "Support/ThreadSanitizer.h"

namespace {

using namespace Oxa::Core::Platform;

constexpr std::size_t uSTACK = 256 * 1024;
constexpr std::uintptr_t uFAR = std::uintptr_t{1} << 30;

ucontext_t s_back;
std::uintptr_t s_uEnd = 1;

void AskForTheEnd() { s_uEnd = EndOfStack(); }

// As it is for AskForTheEnd on `stack`.
std::uintptr_t EndOn(void* stack) {
  ucontext_t there;
  getcontext(&there);
  there.uc_stack.ss_sp = stack;
  there.uc_stack.ss_size = uSTACK;
  there.uc_link = &s_back;
  makecontext(&there, &AskForTheEnd, 0);
  swapcontext(&s_back, &there);
  return s_uEnd;
}

class Unlimited {
 public:
  Unlimited() {
    getrlimit(RLIMIT_STACK, &m_before);
    const rlimit none = {RLIM_INFINITY, m_before.rlim_max};
    m_bDone = m_before.rlim_max == RLIM_INFINITY && setrlimit(RLIMIT_STACK, &none) == 0;
  }
  Unlimited(const Unlimited&) = delete;
  Unlimited& operator=(const Unlimited&) = delete;
  ~Unlimited() { setrlimit(RLIMIT_STACK, &m_before); }

  explicit operator bool() const { return m_bDone; }

 private:
  rlimit m_before;
  bool m_bDone;
};

// The range of the main stack then reaches down to what was mapped before, and holds the stack that comes later.
TEST(EndOfStackTests, AStackOfTheProgramInTheRangeOfAnUnlimitedOneIsNotThatOne) {
  OXA_SKIP_UNDER_THREAD_SANITIZER("stacks aren't changed there");
  const Unlimited unlimited;
  if (!unlimited) GTEST_SKIP() << "the limit of the stack can't be lifted";
  RemoveFaultHandling();
  SetFaultTranslator([](unsigned int, _EXCEPTION_POINTERS*) {});
  const std::uintptr_t end = EndOfStack();
  ASSERT_NE(0u, end);
  void* const stack = mmap(reinterpret_cast<void*>(end - uFAR), uSTACK, PROT_READ | PROT_WRITE,
                           MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(MAP_FAILED, stack);
  EXPECT_EQ(0u, EndOn(stack));
  EXPECT_EQ(end, EndOfStack());
  munmap(stack, uSTACK);
  RemoveFaultHandling();
}

}  // namespace
