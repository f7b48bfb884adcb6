// How much room a stack has, and what is its end, for stacks that are laid out by a test.
#include "Platform/Linux/FaultMemory.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>

#include "Support/SystemCallFilter.h"

namespace {

using namespace Oxa::Core::Platform;

constexpr std::uintptr_t uNEAR = 64 * 1024;
constexpr std::uintptr_t uLARGE = 1024 * 1024;

// Addresses that belong to nobody, of which some pages can be used.
class Layout {
 public:
  Layout()
      : m_pMemory(::mmap(nullptr, uSIZE, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)) {}
  Layout(const Layout&) = delete;
  Layout& operator=(const Layout&) = delete;
  ~Layout() { ::munmap(m_pMemory, uSIZE); }

  std::uintptr_t At(std::size_t page) const {
    return reinterpret_cast<std::uintptr_t>(m_pMemory) + page * uPAGE;
  }
  StackRange Use(std::size_t first, std::size_t end) const {
    ::mprotect(reinterpret_cast<void*>(At(first)), (end - first) * uPAGE, PROT_READ | PROT_WRITE);
    return {At(first), At(end)};
  }

 private:
  static constexpr std::size_t uSIZE = 2000 * uPAGE;
  void* m_pMemory;
};

// The number of the first statement that doesn't hold; 0 if all do.
int CheckRoom() {
  const Layout layout;
  layout.Use(100, 110);
  layout.Use(200, 300);
  if (ProbeRoomBelow(layout.At(105) + 8) != 5 * uPAGE) return 1;
  if (ProbeRoomBelow(layout.At(101) - 8) != 0) return 2;
  if (ProbeRoomBelow(layout.At(101)) != uPAGE) return 3;
  if (ProbeRoomBelow(layout.At(110)) != 0) return 4;  // behind the end, with memory below
  if (ProbeRoomBelow(layout.At(231)) != 31 * uPAGE) return 5;
  if (ProbeRoomBelow(layout.At(299)) != 32 * uPAGE) return 6;  // as much as anybody wants to know
  if (ProbeRoomBelow(16) != 0 || ProbeRoomBelow(uPAGE) != 0) return 7;
  return 0;
}

TEST(FaultMemory, RoomIsCountedInPagesThatCanBeUsed) { EXPECT_EQ(0, CheckRoom()); }

TEST(FaultMemory, AlsoWhereASandboxForbidsTheReadingOfProcesses) {
  const pid_t child = ::fork();
  if (child == 0)
    ::_exit(TestSupport::AnswerSystemCall(SYS_process_vm_readv, SECCOMP_RET_ERRNO | EPERM) ? CheckRoom()
                                                                                           : 99);
  int status = 0;
  ASSERT_EQ(child, ::waitpid(child, &status, 0));
  ASSERT_TRUE(WIFEXITED(status));
  if (WEXITSTATUS(status) == 99) GTEST_SKIP() << "no such sandbox can be had here";
  EXPECT_EQ(0, WEXITSTATUS(status));
}

TEST(FaultMemory, AStackIsMeantFromALargeFrameBelowToItsEnd) {
  const Layout layout;
  const StackRange stack = layout.Use(400, 410);
  EXPECT_TRUE(BelongsTo(stack.m_uLow, stack));
  EXPECT_TRUE(BelongsTo(stack.m_uHigh - 1, stack));
  EXPECT_FALSE(BelongsTo(stack.m_uHigh, stack));
  EXPECT_TRUE(BelongsTo(stack.m_uLow - 1, stack));
  EXPECT_TRUE(BelongsTo(stack.m_uLow - uLARGE, stack));
  EXPECT_FALSE(BelongsTo(stack.m_uLow - uLARGE - 1, stack));
  const StackRange other = layout.Use(300, 301);
  EXPECT_TRUE(BelongsTo(other.m_uHigh, stack));
  EXPECT_FALSE(BelongsTo(other.m_uHigh - 1, stack)) << "that is the other's";
  EXPECT_FALSE(BelongsTo(other.m_uLow - 1, stack)) << "the other lies between";
  EXPECT_TRUE(BelongsTo(layout.At(1500) - 1, {layout.At(1500), layout.At(1510)})) << "none can be read";
}

TEST(FaultMemory, AStackIsAtItsEndWhereItIsTouchedNearItsPointer) {
  const Layout layout;
  const StackRange stack = layout.Use(400, 410);
  const std::uintptr_t pointer = stack.m_uLow + 64;
  EXPECT_TRUE(IsStackOverflow(pointer - 8, pointer, stack));
  EXPECT_TRUE(IsStackOverflow(pointer - uNEAR, pointer, stack));
  EXPECT_FALSE(IsStackOverflow(pointer - uNEAR - 1, pointer, stack));
  const std::uintptr_t high = stack.m_uHigh - 64;
  EXPECT_TRUE(IsStackOverflow(stack.m_uHigh - 1, high, stack));
  EXPECT_FALSE(IsStackOverflow(stack.m_uHigh, high, stack)) << "that is its other end";
}

TEST(FaultMemory, AStackIsAtItsEndWhereALargeFrameHasLeftIt) {
  const Layout layout;
  const StackRange stack = layout.Use(400, 410);
  const std::uintptr_t pointer = stack.m_uLow - uLARGE / 2;
  EXPECT_TRUE(IsStackOverflow(pointer - uNEAR, pointer, stack));
  EXPECT_TRUE(IsStackOverflow(stack.m_uLow - 1, pointer, stack));
  EXPECT_FALSE(IsStackOverflow(pointer - uNEAR - 1, pointer, stack)) << "far below";
  EXPECT_FALSE(IsStackOverflow(stack.m_uLow, pointer, stack)) << "in the stack itself";
}

// Its end is where nothing lies below.
TEST(FaultMemory, AStackThatNobodyKnowsIsAtItsEndWhereThereIsNoRoomBelow) {
  const Layout layout;
  layout.Use(400, 410);
  constexpr StackRange unknown = {0, 0};
  const std::uintptr_t pointer = layout.At(400) + 64;
  EXPECT_TRUE(IsStackOverflow(pointer - 128, pointer, unknown));
  EXPECT_FALSE(IsStackOverflow(pointer - 128 - uNEAR, pointer, unknown));
  EXPECT_FALSE(IsStackOverflow(pointer - 128, pointer + uPAGE, unknown)) << "a page is left";
  EXPECT_FALSE(IsStackOverflow(layout.At(1500) - 8, layout.At(1500), unknown)) << "that is no stack";
}

TEST(FaultMemory, AStackCanBeUsedFromThePageBehindTheTouchAndFromItsOwnBeginning) {
  const Layout layout;
  const StackRange stack = layout.Use(400, 410);
  EXPECT_EQ(stack.m_uLow, UsableFrom(layout.At(397) + 8, stack.m_uLow + 64, stack));
  EXPECT_EQ(layout.At(403), UsableFrom(layout.At(402), layout.At(402) + 64, stack));
  EXPECT_EQ(layout.At(403), UsableFrom(layout.At(403) - 1, layout.At(402) + 64, stack));
  EXPECT_EQ(layout.At(398), UsableFrom(layout.At(397) + 8, layout.At(1500), stack)) << "another stack";
}

}  // namespace
