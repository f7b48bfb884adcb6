// From frame to frame of stacks that are made up: where no rules lead on, and where they lead astray.
#include "Platform/Linux/StackWalkSteps.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "SymbolizedProcessTest.h"

// Something to be called from. The return address of its frame lies where its stack begins.
asm(R"(
  .pushsection .text
  .globl StackStepsCode
  .hidden StackStepsCode
  .type StackStepsCode, @function
StackStepsCode:
  .cfi_startproc
  nop
  nop
  nop
  .cfi_endproc
  .popsection
)");

extern "C" void StackStepsCode();

namespace Oxa::Core::Platform {
namespace {

constexpr std::uint64_t uNOWHERE = 24;
constexpr std::uint64_t uWORD = sizeof(std::uint64_t);
constexpr std::size_t uMOST_BETWEEN = 1024 * 1024 / uWORD;  // words of a frame that is only guessed

std::uint64_t Code() { return reinterpret_cast<std::uintptr_t>(&StackStepsCode) + 1; }

class StackSteps : public SymbolizedProcessTest {
 protected:
  StackSteps() : m_stack(uMOST_BETWEEN + 16, uNOWHERE) {}

  void SetUp() override {
    SymbolizedProcessTest::SetUp();
    m_context.m_registers[CONTEXT::iPLACE] = uNOWHERE;
    m_context.m_registers[CONTEXT::iSTACK] = At(2);
    m_context.m_registers[CONTEXT::iFRAME] = At(6);
    m_context.m_registers[3] = 1003;
  }

  std::uint64_t At(std::size_t word) const { return reinterpret_cast<std::uintptr_t>(&m_stack[word]); }

  // What a function leaves behind that keeps frame pointers: that of its caller, and where it returns to.
  void SaveFrame(std::size_t word, std::uint64_t place) {
    m_stack[word] = 77;
    m_stack[word + 1] = place;
  }

  void Walk() {
    StackWalkSteps steps(GetProcess(), m_context);
    NativeFrame frame;
    while (m_frames.size() < 5 && steps.Next(frame)) m_frames.push_back(frame);
  }

  // That the second frame is the one behind the frame pointer at `word`.
  void ExpectFrameBehind(std::size_t word) const {
    ASSERT_LE(2u, m_frames.size());
    EXPECT_EQ(At(word + 2), m_frames[0].m_uCfa);
    EXPECT_EQ(Code(), m_frames[1].m_registers.Place());
    EXPECT_EQ(At(word + 2), m_frames[1].m_registers.Stack());
    EXPECT_EQ(77u, m_frames[1].m_registers.m_context.m_registers[CONTEXT::iFRAME]);
    EXPECT_FALSE(m_frames[1].m_registers.m_bKnown[3]);
  }

  void ExpectOneFrame() const {
    ASSERT_EQ(1u, m_frames.size());
    EXPECT_EQ(0u, m_frames[0].m_uCfa);
  }

  std::vector<std::uint64_t> m_stack;
  CONTEXT m_context{};
  std::vector<NativeFrame> m_frames;
};

TEST_F(StackSteps, ACallToNowhereHasLeftItsReturnAddress) {
  m_stack[2] = Code();
  SaveFrame(6, Code());
  Walk();
  ASSERT_LE(2u, m_frames.size());
  EXPECT_TRUE(m_frames[0].m_bExact);
  EXPECT_FALSE(m_frames[1].m_bExact);
  EXPECT_EQ(At(3), m_frames[0].m_uCfa);
  EXPECT_EQ(Code(), m_frames[1].m_registers.Place());
  EXPECT_EQ(At(3), m_frames[1].m_registers.Stack());
  EXPECT_EQ(1003u, m_frames[1].m_registers.m_context.m_registers[3]);
  EXPECT_TRUE(m_frames[1].m_registers.m_bKnown[3]);
}

TEST_F(StackSteps, WhatElseIsNowhereMayKeepFramePointers) {
  SaveFrame(6, Code());
  Walk();
  ExpectFrameBehind(6);
}

TEST_F(StackSteps, AFramePointerLeadsToCodeOnly) {
  SaveFrame(6, uNOWHERE);
  Walk();
  ExpectOneFrame();
}

TEST_F(StackSteps, AFramePointerIsAligned) {
  const std::uint64_t saved[] = {77, Code()};
  std::memcpy(reinterpret_cast<char*>(&m_stack[6]) + 4, saved, sizeof saved);
  m_context.m_registers[CONTEXT::iFRAME] = At(6) + 4;
  Walk();
  ExpectOneFrame();
}

TEST_F(StackSteps, AFramePointerLeadsUpwards) {
  SaveFrame(0, Code());
  m_context.m_registers[CONTEXT::iFRAME] = At(0);
  Walk();
  ExpectOneFrame();
}

TEST_F(StackSteps, AFramePointerMayStandWhereTheStackDoes) {
  SaveFrame(2, Code());
  m_context.m_registers[CONTEXT::iFRAME] = At(2);
  Walk();
  ExpectFrameBehind(2);
}

TEST_F(StackSteps, AFrameThatIsGuessedHasNoMoreThanAMebibyte) {
  SaveFrame(2 + uMOST_BETWEEN, Code());
  m_context.m_registers[CONTEXT::iFRAME] = At(2 + uMOST_BETWEEN);
  Walk();
  ExpectFrameBehind(2 + uMOST_BETWEEN);
  m_frames.clear();
  SaveFrame(3 + uMOST_BETWEEN, Code());
  m_context.m_registers[CONTEXT::iFRAME] = At(3 + uMOST_BETWEEN);
  Walk();
  ExpectOneFrame();
}

// Only what was interrupted may have been called a moment ago.
TEST_F(StackSteps, AReturnAddressThatLeadsNowhereIsNoCallToThere) {
  m_context.m_registers[CONTEXT::iPLACE] = Code();
  m_context.m_registers[CONTEXT::iFRAME] = 0;
  m_stack[2] = uNOWHERE;
  m_stack[3] = Code();
  Walk();
  ASSERT_EQ(2u, m_frames.size());
  EXPECT_EQ(At(3), m_frames[0].m_uCfa);
  EXPECT_EQ(uNOWHERE, m_frames[1].m_registers.Place());
  EXPECT_EQ(0u, m_frames[1].m_uCfa);
}

TEST_F(StackSteps, AReturnAddressOfNoneEndsTheStack) {
  m_context.m_registers[CONTEXT::iPLACE] = Code();
  m_stack[2] = 0;
  Walk();
  ASSERT_EQ(1u, m_frames.size());
  EXPECT_EQ(At(3), m_frames[0].m_uCfa);
}

}  // namespace
}  // namespace Oxa::Core::Platform
