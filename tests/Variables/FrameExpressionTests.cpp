// Expressions of frame data: each operation, and that damaged expressions fail.
#include "Platform/Linux/StackWalkRules.h"

#include <cstdint>
#include <vector>

#include <dwarf.h>
#include <gtest/gtest.h>

namespace Oxa::Core::Platform {
namespace {

constexpr std::uint64_t uCFA = 0x7000;
constexpr std::uint64_t uMINUS_ONE = ~std::uint64_t{0};

Dwarf_Op Op(std::uint8_t atom, std::uint64_t number = 0, std::uint64_t number2 = 0) {
  return {atom, number, number2, 0};
}

class FrameExpression : public testing::Test {
 protected:
  FrameExpression() { m_from.Set(3, 1000); }

  bool Run(const std::vector<Dwarf_Op>& operations) {
    return Evaluate(operations.data(), operations.size(), m_from, uCFA, m_memory, m_uResult, m_bValue);
  }

  std::uint64_t Result(const std::vector<Dwarf_Op>& operations) {
    EXPECT_TRUE(Run(operations));
    return m_uResult;
  }

  std::uint64_t OfTwo(std::uint8_t atom, std::uint64_t left, std::uint64_t right) {
    return Result({Op(DW_OP_const8u, left), Op(DW_OP_const8u, right), Op(atom)});
  }

  FrameRegisters m_from;
  MemoryReader m_memory;
  std::uint64_t m_uResult = 0;
  bool m_bValue = false;
};

TEST_F(FrameExpression, Constants) {
  EXPECT_EQ(Result({Op(DW_OP_lit0)}), 0u);
  EXPECT_EQ(Result({Op(DW_OP_lit31)}), 31u);
  EXPECT_EQ(Result({Op(DW_OP_const1u, 200)}), 200u);
  EXPECT_EQ(Result({Op(DW_OP_consts, uMINUS_ONE)}), uMINUS_ONE);
  EXPECT_EQ(Result({Op(DW_OP_addr, 0x401000)}), 0x401000u);
  EXPECT_EQ(Result({Op(DW_OP_call_frame_cfa)}), uCFA);
}

TEST_F(FrameExpression, RegistersAreThoseOfTheFrameWithAnOffset) {
  EXPECT_EQ(Result({Op(DW_OP_breg0 + 3, 8)}), 1008u);
  EXPECT_EQ(Result({Op(DW_OP_bregx, 3, uMINUS_ONE)}), 999u);
  EXPECT_FALSE(Run({Op(DW_OP_breg0 + 4, 8)}));  // isn't known
  EXPECT_FALSE(Run({Op(DW_OP_bregx, CONTEXT::iREGISTERS, 0)}));
}

TEST_F(FrameExpression, OneValue) {
  EXPECT_EQ(Result({Op(DW_OP_lit5), Op(DW_OP_plus_uconst, 300)}), 305u);
  EXPECT_EQ(Result({Op(DW_OP_lit5), Op(DW_OP_neg)}), std::uint64_t{0} - 5);
  EXPECT_EQ(Result({Op(DW_OP_lit5), Op(DW_OP_not)}), ~std::uint64_t{5});
  EXPECT_EQ(Result({Op(DW_OP_lit5), Op(DW_OP_nop)}), 5u);
}

TEST_F(FrameExpression, TheStack) {
  EXPECT_EQ(Result({Op(DW_OP_lit5), Op(DW_OP_dup), Op(DW_OP_plus)}), 10u);
  EXPECT_EQ(Result({Op(DW_OP_lit5), Op(DW_OP_lit3), Op(DW_OP_over)}), 5u);
  EXPECT_EQ(Result({Op(DW_OP_lit5), Op(DW_OP_lit3), Op(DW_OP_drop)}), 5u);
  EXPECT_EQ(Result({Op(DW_OP_lit5), Op(DW_OP_lit3), Op(DW_OP_swap)}), 5u);
  EXPECT_EQ(Result({Op(DW_OP_lit5), Op(DW_OP_lit3), Op(DW_OP_swap), Op(DW_OP_minus)}), std::uint64_t{0} - 2);
}

TEST_F(FrameExpression, TwoValues) {
  EXPECT_EQ(OfTwo(DW_OP_plus, 12, 10), 22u);
  EXPECT_EQ(OfTwo(DW_OP_minus, 12, 10), 2u);
  EXPECT_EQ(OfTwo(DW_OP_mul, 12, 10), 120u);
  EXPECT_EQ(OfTwo(DW_OP_and, 12, 10), 8u);
  EXPECT_EQ(OfTwo(DW_OP_or, 12, 10), 14u);
  EXPECT_EQ(OfTwo(DW_OP_xor, 12, 10), 6u);
}

TEST_F(FrameExpression, ShiftsBeyondTheWordLeaveNothing) {
  EXPECT_EQ(OfTwo(DW_OP_shl, 3, 4), 48u);
  EXPECT_EQ(OfTwo(DW_OP_shl, 3, 63), std::uint64_t{1} << 63U);
  EXPECT_EQ(OfTwo(DW_OP_shl, 3, 64), 0u);
  EXPECT_EQ(OfTwo(DW_OP_shr, uMINUS_ONE, 63), 1u);
  EXPECT_EQ(OfTwo(DW_OP_shr, uMINUS_ONE, 64), 0u);
}

TEST_F(FrameExpression, ComparisonsHeedTheSign) {
  struct {
    std::uint8_t m_ucAtom;
    std::uint64_t m_uLess, m_uEqual, m_uGreater;
  } const cases[] = {{DW_OP_eq, 0, 1, 0}, {DW_OP_ne, 1, 0, 1}, {DW_OP_ge, 0, 1, 1},
                     {DW_OP_gt, 0, 0, 1}, {DW_OP_le, 1, 1, 0}, {DW_OP_lt, 1, 0, 0}};
  for (const auto& one : cases) {
    EXPECT_EQ(OfTwo(one.m_ucAtom, uMINUS_ONE, 1), one.m_uLess) << int{one.m_ucAtom};
    EXPECT_EQ(OfTwo(one.m_ucAtom, 7, 7), one.m_uEqual) << int{one.m_ucAtom};
    EXPECT_EQ(OfTwo(one.m_ucAtom, 1, uMINUS_ONE), one.m_uGreater) << int{one.m_ucAtom};
  }
}

TEST_F(FrameExpression, MemoryIsReadInTheSizeThatIsAskedFor) {
  static const std::uint64_t word = 0x1122334455667788;
  const Dwarf_Op at = Op(DW_OP_addr, reinterpret_cast<std::uint64_t>(&word));
  EXPECT_EQ(Result({at, Op(DW_OP_deref)}), word);
  EXPECT_EQ(Result({at, Op(DW_OP_deref_size, 2)}), 0x7788u);
  EXPECT_FALSE(Run({at, Op(DW_OP_deref_size, 0)}));
  EXPECT_FALSE(Run({at, Op(DW_OP_deref_size, 9)}));
  EXPECT_FALSE(Run({Op(DW_OP_lit8), Op(DW_OP_deref)}));  // nothing lies there
}

TEST_F(FrameExpression, TheResultIsAPlaceUnlessItIsCalledAValue) {
  EXPECT_TRUE(Run({Op(DW_OP_lit5)}));
  EXPECT_FALSE(m_bValue);
  EXPECT_TRUE(Run({Op(DW_OP_lit5), Op(DW_OP_stack_value)}));
  EXPECT_TRUE(m_bValue);
}

TEST_F(FrameExpression, TooFewAndTooManyValuesAndUnknownOperationsFail) {
  EXPECT_FALSE(Run({}));
  EXPECT_FALSE(Run({Op(DW_OP_nop)}));
  EXPECT_FALSE(Run({Op(DW_OP_drop)}));
  EXPECT_FALSE(Run({Op(DW_OP_dup)}));
  EXPECT_FALSE(Run({Op(DW_OP_lit1), Op(DW_OP_over)}));
  EXPECT_FALSE(Run({Op(DW_OP_lit1), Op(DW_OP_plus)}));
  EXPECT_TRUE(Run(std::vector<Dwarf_Op>(32, Op(DW_OP_lit1))));
  EXPECT_FALSE(Run(std::vector<Dwarf_Op>(33, Op(DW_OP_lit1))));
  EXPECT_FALSE(Run({Op(DW_OP_lit6), Op(DW_OP_lit2), Op(DW_OP_div)}));
}

}  // namespace
}  // namespace Oxa::Core::Platform
