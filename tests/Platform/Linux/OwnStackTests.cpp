// Where a thread's own stack lies: what was found without the list of mappings has to be what the list says.
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <fstream>
#include <string>
#include <thread>

#include "Platform/Linux/FaultOwnStack.h"

namespace {

using Oxa::Core::Platform::OwnStack;
using Oxa::Core::Platform::StackRange;

// Where the list of mappings lets the first thread's stack end.
std::uintptr_t EndOfFirstStack() {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    if (line.find("[stack]") == std::string::npos) continue;
    return std::stoull(line.substr(line.find('-') + 1), nullptr, 16);
  }
  return 0;
}

StackRange StackOfLibrary() {
  pthread_attr_t attributes;
  void* low = nullptr;
  std::size_t size = 0;
  EXPECT_EQ(0, pthread_getattr_np(pthread_self(), &attributes));
  pthread_attr_getstack(&attributes, &low, &size);
  pthread_attr_destroy(&attributes);
  const auto address = reinterpret_cast<std::uintptr_t>(low);
  return {address, address + size};
}

// Gives the limit of stacks back.
class StackLimit {
 public:
  StackLimit() { getrlimit(RLIMIT_STACK, &m_before); }
  StackLimit(const StackLimit&) = delete;
  StackLimit& operator=(const StackLimit&) = delete;
  ~StackLimit() { setrlimit(RLIMIT_STACK, &m_before); }
  bool Set(rlim_t bytes) const {
    const rlimit limit = {bytes, m_before.rlim_max};
    return setrlimit(RLIMIT_STACK, &limit) == 0;
  }

 private:
  rlimit m_before{};
};

TEST(OwnStack, OfTheFirstThreadReachesDownToTheLimitAndUpToTheEndOfItsMapping) {
  ASSERT_EQ(getpid(), gettid());
  const StackLimit limit;
  for (const rlim_t bytes : {rlim_t{1} << 20, (rlim_t{3} << 20) + 100, rlim_t{8} << 20}) {
    ASSERT_TRUE(limit.Set(bytes));
    const StackRange stack = OwnStack();
    EXPECT_EQ(EndOfFirstStack(), stack.m_uHigh) << bytes;
    EXPECT_EQ(bytes / 4096 * 4096, stack.m_uHigh - stack.m_uLow) << bytes;
  }
}

TEST(OwnStack, OfTheFirstThreadWithoutAMeaningfulLimitIsWhatTheLibrarySays) {
  const StackLimit limit;
  if (!limit.Set(rlim_t{1} << 30)) GTEST_SKIP() << "the limit can't be raised here";
  EXPECT_EQ(StackOfLibrary().m_uLow, OwnStack().m_uLow);
  EXPECT_EQ(StackOfLibrary().m_uHigh, OwnStack().m_uHigh);
}

TEST(OwnStack, OfAnotherThreadIsWhatTheLibrarySays) {
  std::thread([] {
    EXPECT_EQ(StackOfLibrary().m_uLow, OwnStack().m_uLow);
    EXPECT_EQ(StackOfLibrary().m_uHigh, OwnStack().m_uHigh);
  }).join();
}

TEST(OwnStack, OfAChildThatAnotherThreadForkedOffIsThatThreads) {
  std::thread([] {
    const StackRange before = OwnStack();
    const pid_t child = fork();
    if (child == 0) _exit(OwnStack().m_uLow == before.m_uLow ? 0 : 1);
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(0, status);
  }).join();
}

}  // namespace
