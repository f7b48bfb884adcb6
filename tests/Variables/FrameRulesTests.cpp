// Rules of frame data: each kind, read from functions whose frame data is written by hand, and applied to a stack that
// stands still.
#include "Platform/Linux/StackWalkRules.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "SymbolizedProcessTest.h"

// The canonical frame address is rsp + 8 at the start, and the return address lies right below it. An escape is an
// expression, byte by byte.
asm(R"(
  .macro frame_rules name
  .pushsection .text
  .globl FrameRules\name
  .hidden FrameRules\name
  .type FrameRules\name, @function
FrameRules\name:
  .cfi_startproc
  .endm
  .macro end_frame_rules
  nop
  .cfi_endproc
  .popsection
  .endm

  frame_rules Plain
  end_frame_rules

  frame_rules Offsets
  .cfi_def_cfa_offset 32
  .cfi_offset %rbx, -24
  .cfi_offset %r12, -16
  .cfi_val_offset %rbp, -16
  end_frame_rules

  frame_rules Registers
  .cfi_register %r13, %r14
  .cfi_register %r15, %r8
  .cfi_undefined %r12
  end_frame_rules

  frame_rules Expressions  # rbx lies at CFA + 8, the value of r12 is that
  .cfi_escape 0x10, 3, 2, 0x23, 8
  .cfi_escape 0x16, 12, 2, 0x23, 8
  end_frame_rules

  frame_rules FrameByRegister
  .cfi_def_cfa %rbp, 16
  end_frame_rules

  frame_rules FrameByExpression  # rsp + 8 + 8
  .cfi_escape 0x0f, 4, 0x77, 8, 0x38, 0x22
  end_frame_rules

  frame_rules StackOfItsOwn
  .cfi_val_offset %rsp, -8
  end_frame_rules

  frame_rules Outermost
  .cfi_undefined %rip
  end_frame_rules

  frame_rules OutermostOtherwise
  .cfi_same_value %rip
  end_frame_rules

  frame_rules Signal
  .cfi_signal_frame
  end_frame_rules
)");

extern "C" {
void FrameRulesPlain();
void FrameRulesOffsets();
void FrameRulesRegisters();
void FrameRulesExpressions();
void FrameRulesFrameByRegister();
void FrameRulesFrameByExpression();
void FrameRulesStackOfItsOwn();
void FrameRulesOutermost();
void FrameRulesOutermostOtherwise();
void FrameRulesSignal();
}

namespace Oxa::Core::Platform {
namespace {

constexpr int iRAX = 0;
constexpr int iRBX = 3;
constexpr int iRBP = CONTEXT::iFRAME;
constexpr int iRSP = CONTEXT::iSTACK;
constexpr int iR8 = 8;
constexpr int iR12 = 12;
constexpr int iR13 = 13;
constexpr int iR14 = 14;
constexpr int iR15 = 15;
constexpr int iRIP = CONTEXT::iPLACE;
constexpr std::uint64_t uREGISTER = 1000;  // register n has 1000 + n, but for the two that point to the stack
constexpr std::uint64_t uSTACK = 2000;     // word n of the stack is 2000 + n

class FrameRules : public SymbolizedProcessTest {
 protected:
  void SetUp() override {
    SymbolizedProcessTest::SetUp();
    for (int number = 0; number < CONTEXT::iREGISTERS; ++number)
      m_from.Set(number, uREGISTER + static_cast<unsigned>(number));
    for (std::uint64_t& word : m_stack) word = uSTACK + static_cast<unsigned>(&word - m_stack);
    m_from.Set(iRSP, Address(4));
  }

  const StackWalkRules& RulesOf(void (*function)()) {
    const AddressFacts& facts = GetProcess().GetFacts(reinterpret_cast<std::uintptr_t>(function));
    EXPECT_TRUE(facts.m_bHasRules);
    return facts.m_rules;
  }

  bool Apply(void (*function)()) { return RulesOf(function).Apply(m_from, m_memory, m_caller, m_uCfa); }

  std::uint64_t Address(int word) const { return reinterpret_cast<std::uintptr_t>(&m_stack[word]); }

  void ExpectKnown(int number, std::uint64_t value) const {
    EXPECT_TRUE(m_caller.m_bKnown[number]) << number;
    EXPECT_EQ(value, m_caller.m_context.m_registers[number]) << number;
  }
  void ExpectUnknown(int number) const { EXPECT_FALSE(m_caller.m_bKnown[number]) << number; }
  void ExpectUnchanged(int number) const { ExpectKnown(number, uREGISTER + static_cast<unsigned>(number)); }

  std::uint64_t m_stack[16] = {};
  FrameRegisters m_from;
  FrameRegisters m_caller;
  MemoryReader m_memory;
  std::uint64_t m_uCfa = 1;
};

TEST_F(FrameRules, WithoutAnyRegistersStayThatFunctionsKeep) {
  EXPECT_TRUE(Apply(&FrameRulesPlain));
  EXPECT_EQ(Address(5), m_uCfa);
  ExpectKnown(iRIP, uSTACK + 4);
  ExpectKnown(iRSP, Address(5));
  for (const int number : {iRBX, iRBP, iR12, iR13, iR14, iR15}) ExpectUnchanged(number);
  for (const int number : {iRAX, 1, 2, 4, 5, iR8, 9, 10, 11}) ExpectUnknown(number);
}

TEST_F(FrameRules, WhatIsNotKnownStaysSo) {
  m_from.m_bKnown[iRBX] = false;
  m_from.m_bKnown[iR14] = false;
  EXPECT_TRUE(Apply(&FrameRulesPlain));
  ExpectUnknown(iRBX);
  ExpectUnknown(iR14);
  ExpectUnchanged(iR15);
}

TEST_F(FrameRules, OffsetsTellWhereAValueLiesOrWhatItIs) {
  EXPECT_TRUE(Apply(&FrameRulesOffsets));
  EXPECT_EQ(Address(8), m_uCfa);
  ExpectKnown(iRIP, uSTACK + 7);
  ExpectKnown(iRBX, uSTACK + 5);
  ExpectKnown(iR12, uSTACK + 6);
  ExpectKnown(iRBP, Address(6));
}

TEST_F(FrameRules, RegistersLieInOthersOrAreLost) {
  EXPECT_TRUE(Apply(&FrameRulesRegisters));
  ExpectKnown(iR13, uREGISTER + iR14);
  ExpectUnchanged(iR14);
  ExpectKnown(iR15, uREGISTER + iR8);
  ExpectUnknown(iR12);
}

TEST_F(FrameRules, RegistersInOthersThatAreNotKnownAreNeither) {
  m_from.m_bKnown[iR8] = false;
  EXPECT_TRUE(Apply(&FrameRulesRegisters));
  ExpectUnknown(iR15);
  ExpectKnown(iR13, uREGISTER + iR14);
}

TEST_F(FrameRules, ExpressionsTellWhereAValueLiesOrWhatItIs) {
  EXPECT_TRUE(Apply(&FrameRulesExpressions));
  ExpectKnown(iRBX, uSTACK + 6);
  ExpectKnown(iR12, Address(6));
}

TEST_F(FrameRules, TheFrameIsFoundByItsRegister) {
  m_from.Set(iRBP, Address(10));
  EXPECT_TRUE(Apply(&FrameRulesFrameByRegister));
  EXPECT_EQ(Address(12), m_uCfa);
  ExpectKnown(iRIP, uSTACK + 11);
  ExpectKnown(iRSP, Address(12));
}

TEST_F(FrameRules, TheFrameIsFoundByAnExpression) {
  EXPECT_TRUE(Apply(&FrameRulesFrameByExpression));
  EXPECT_EQ(Address(6), m_uCfa);
  ExpectKnown(iRIP, uSTACK + 5);
}

TEST_F(FrameRules, WithoutTheRegisterOfItsFrameThereIsNoCaller) {
  m_from.m_bKnown[iRBP] = false;
  EXPECT_FALSE(Apply(&FrameRulesFrameByRegister));
  EXPECT_EQ(0u, m_uCfa);
  m_from.m_bKnown[iRSP] = false;
  EXPECT_FALSE(Apply(&FrameRulesFrameByExpression));
  EXPECT_EQ(0u, m_uCfa);
}

TEST_F(FrameRules, TheCallersStackMayHaveARuleOfItsOwn) {
  EXPECT_TRUE(Apply(&FrameRulesStackOfItsOwn));
  EXPECT_EQ(Address(5), m_uCfa);
  ExpectKnown(iRSP, Address(4));
}

TEST_F(FrameRules, TheOutermostFrameHasNoCaller) {
  EXPECT_FALSE(Apply(&FrameRulesOutermost));
  EXPECT_EQ(Address(5), m_uCfa);
  ExpectUnknown(iRIP);
  EXPECT_FALSE(Apply(&FrameRulesOutermostOtherwise)) << "it would be its own caller";
}

TEST_F(FrameRules, MemoryThatCannotBeReadGivesNothing) {
  m_from.Set(iRSP, 24);
  EXPECT_FALSE(Apply(&FrameRulesOffsets));
  EXPECT_EQ(56u, m_uCfa);
  ExpectUnknown(iRIP);
  ExpectUnknown(iRBX);
  ExpectKnown(iRBP, 40);
  ExpectKnown(iRSP, 56);
  m_caller = FrameRegisters();
  EXPECT_FALSE(Apply(&FrameRulesExpressions));
  ExpectUnknown(iRBX);
  ExpectKnown(iR12, 40);
}

TEST_F(FrameRules, TellCodeThatTheSystemCalls) {
  EXPECT_TRUE(RulesOf(&FrameRulesSignal).IsSignal());
  EXPECT_FALSE(RulesOf(&FrameRulesPlain).IsSignal());
}

}  // namespace
}  // namespace Oxa::Core::Platform
