// The stack machine of location expressions: each operation, and that damaged expressions end.
#include <dwarf.h>
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "LocationText.h"
#include "Platform/Linux/VariableMachine.h"

namespace {

using namespace Oxa::Core::Platform;

Dwarf_Op Op(unsigned atom, std::uint64_t number = 0, std::uint64_t number2 = 0, std::uint64_t offset = 0) {
  return {static_cast<std::uint8_t>(atom), number, number2, offset};
}

Dwarf_Op Push(std::uint64_t number) { return Op(DW_OP_constu, number); }

// A frame whose first eight registers hold 100 and so on, of which the last isn't known.
class Machine : public testing::Test {
 protected:
  Machine() : m_scene{m_dw, m_frame, m_memory} {
    for (int number = 0; number < 8; ++number) {
      m_frame.m_registers.m_registers[number] = 100 + static_cast<std::uint64_t>(number);
      m_frame.m_bKnown[number] = number < 7;
    }
    m_frame.m_cfa = 5000;
    m_frame.m_bCfaKnown = true;
    m_frame.m_bias = 0x10000;
  }

  Location Find(const std::vector<Dwarf_Op>& operations, std::uint64_t size = 8) {
    ExpressionMachine machine(m_scene, m_attribute);
    m_scene.m_iSteps = 0;
    return machine.Run(operations.data(), operations.size()) ? machine.Result(size) : Location();
  }

  std::string Shown(const std::vector<Dwarf_Op>& operations, std::uint64_t size = 8) {
    return TextOf(Find(operations, size));
  }

  std::string OfTwo(unsigned atom, std::int64_t left, std::int64_t right) {
    return Shown({Push(static_cast<std::uint64_t>(left)), Push(static_cast<std::uint64_t>(right)), Op(atom)});
  }

  std::string OfOne(unsigned atom, std::int64_t number) {
    return Shown({Push(static_cast<std::uint64_t>(number)), Op(atom)});
  }

  Dw m_dw;
  FrameView m_frame;
  MemoryReader m_memory;
  Dwarf_Attribute m_attribute{};
  ExpressionScene m_scene;
};

TEST_F(Machine, Literals) {
  EXPECT_EQ("0", Shown({Op(DW_OP_lit0)}));
  EXPECT_EQ("31", Shown({Op(DW_OP_lit31)}));
  EXPECT_EQ("7", Shown({Op(DW_OP_const1u, 7)}));
  EXPECT_EQ("-7", Shown({Op(DW_OP_consts, ~std::uint64_t(6))}));
  EXPECT_EQ("65543", Shown({Op(DW_OP_addr, 7)}));
}

TEST_F(Machine, RegistersAndTheFrame) {
  EXPECT_EQ("110", Shown({Op(DW_OP_breg3, 7)}));
  EXPECT_EQ("110", Shown({Op(DW_OP_bregx, 3, 7)}));
  EXPECT_EQ("none", Shown({Op(DW_OP_breg7)}));
  EXPECT_EQ("none", Shown({Op(DW_OP_bregx, 1000)}));
  EXPECT_EQ("5000", Shown({Op(DW_OP_call_frame_cfa)}));
  EXPECT_EQ("= 102 0", Shown({Op(DW_OP_reg2)}, 2));
  EXPECT_EQ("= 102 0", Shown({Op(DW_OP_regx, 2)}, 2));
  EXPECT_EQ("none", Shown({Op(DW_OP_reg7)}, 2));
  EXPECT_EQ("= 102 0 0 0 0 0 0 0 ?", Shown({Op(DW_OP_reg2)}, 9));
  m_frame.m_bCfaKnown = false;
  EXPECT_EQ("none", Shown({Op(DW_OP_call_frame_cfa)}));
  EXPECT_EQ("none", Shown({Op(DW_OP_fbreg, 8)}));
}

TEST_F(Machine, WideRegistersOnlyWhereAFaultToldThem) {
  EXPECT_EQ("none", Shown({Op(DW_OP_reg17)}));
  ucontext_t full{};
  _libc_fpstate floating{};
  m_frame.m_registers.m_pFull = &full;
  EXPECT_EQ("none", Shown({Op(DW_OP_reg17)}));
  full.uc_mcontext.fpregs = &floating;
  const double value = 1.5;
  std::memcpy(&floating._xmm[0], &value, sizeof value);
  EXPECT_EQ("= 0 0 0 0 0 0 248 63", Shown({Op(DW_OP_reg17)}));
  EXPECT_EQ("= 0 0 0 0 0 0 0 0", Shown({Op(DW_OP_regx, 32)}));
  EXPECT_EQ("none", Shown({Op(DW_OP_regx, 33)}));
}

TEST_F(Machine, Arithmetic) {
  EXPECT_EQ("12", OfTwo(DW_OP_plus, 7, 5));
  EXPECT_EQ("2", OfTwo(DW_OP_minus, 7, 5));
  EXPECT_EQ("35", OfTwo(DW_OP_mul, 7, 5));
  EXPECT_EQ("-3", OfTwo(DW_OP_div, -15, 5));
  EXPECT_EQ("2", OfTwo(DW_OP_mod, 17, 5));
  EXPECT_EQ("5", OfTwo(DW_OP_and, 7, 13));
  EXPECT_EQ("15", OfTwo(DW_OP_or, 7, 13));
  EXPECT_EQ("10", OfTwo(DW_OP_xor, 7, 13));
  EXPECT_EQ("-7", OfOne(DW_OP_neg, 7));
  EXPECT_EQ("-8", OfOne(DW_OP_not, 7));
  EXPECT_EQ("7", OfOne(DW_OP_abs, -7));
  EXPECT_EQ("12", Shown({Push(7), Op(DW_OP_plus_uconst, 5)}));
}

TEST_F(Machine, Shifts) {
  EXPECT_EQ("28", OfTwo(DW_OP_shl, 7, 2));
  EXPECT_EQ("0", OfTwo(DW_OP_shl, 7, 64));
  EXPECT_EQ("1", OfTwo(DW_OP_shr, -1, 63));
  EXPECT_EQ("0", OfTwo(DW_OP_shr, -1, 64));
  EXPECT_EQ("-2", OfTwo(DW_OP_shra, -8, 2));
  EXPECT_EQ("-1", OfTwo(DW_OP_shra, -8, 1000));
}

TEST_F(Machine, Comparisons) {
  EXPECT_EQ("1", OfTwo(DW_OP_eq, 3, 3));
  EXPECT_EQ("0", OfTwo(DW_OP_ne, 3, 3));
  EXPECT_EQ("1", OfTwo(DW_OP_lt, -1, 3));
  EXPECT_EQ("0", OfTwo(DW_OP_gt, -1, 3));
  EXPECT_EQ("1", OfTwo(DW_OP_le, 3, 3));
  EXPECT_EQ("1", OfTwo(DW_OP_ge, 3, 3));
}

TEST_F(Machine, WhatHasNoResult) {
  EXPECT_EQ("none", OfTwo(DW_OP_div, 1, 0));
  EXPECT_EQ("none", OfTwo(DW_OP_mod, 1, 0));
  EXPECT_EQ("-9223372036854775808", OfTwo(DW_OP_div, std::int64_t(1ULL << 63), -1));
  EXPECT_EQ("none", Shown({Op(DW_OP_plus)}));
  EXPECT_EQ("none", Shown({Push(1), Op(DW_OP_plus)}));
  EXPECT_EQ("none", Shown({Op(DW_OP_drop)}));
  EXPECT_EQ("none", Shown({Op(DW_OP_stack_value)}));
  EXPECT_EQ("none", Shown({}));
  EXPECT_EQ("none", Shown({Push(1), Op(DW_OP_drop)}));
  EXPECT_EQ("none", Shown({Push(1), Op(0xff)}));
  EXPECT_EQ("none", Shown({Op(DW_OP_implicit_pointer, 1)}));
  EXPECT_EQ("none", Shown({Op(DW_OP_call4, 1)}));
}

TEST_F(Machine, Stack) {
  EXPECT_EQ("14", Shown({Push(7), Op(DW_OP_dup), Op(DW_OP_plus)}));
  EXPECT_EQ("7", Shown({Push(7), Push(8), Op(DW_OP_over)}));
  EXPECT_EQ("6", Shown({Push(6), Push(7), Push(8), Op(DW_OP_pick, 2)}));
  EXPECT_EQ("none", Shown({Push(6), Op(DW_OP_pick, 1)}));
  EXPECT_EQ("none", Shown({Push(6), Op(DW_OP_pick, ~std::uint64_t(0))}));
  EXPECT_EQ("1", Shown({Push(7), Push(8), Op(DW_OP_swap), Op(DW_OP_minus)}));
  EXPECT_EQ("none", Shown({Push(7), Op(DW_OP_swap)}));
  EXPECT_EQ("2", Shown({Push(1), Push(2), Push(3), Op(DW_OP_rot)}));
  EXPECT_EQ("1", Shown({Push(1), Push(2), Push(3), Op(DW_OP_rot), Op(DW_OP_drop)}));
  EXPECT_EQ("none", Shown({Push(1), Push(2), Op(DW_OP_rot)}));
}

TEST_F(Machine, Memory) {
  const std::int64_t value = -2;
  const std::uint64_t address = reinterpret_cast<std::uintptr_t>(&value);
  EXPECT_EQ("-2", Shown({Push(address), Op(DW_OP_deref)}));
  EXPECT_EQ("65534", Shown({Push(address), Op(DW_OP_deref_size, 2)}));
  EXPECT_EQ("none", Shown({Push(address), Op(DW_OP_deref_size, 0)}));
  EXPECT_EQ("none", Shown({Push(address), Op(DW_OP_deref_size, 9)}));
  EXPECT_EQ("none", Shown({Push(8), Op(DW_OP_deref)}));
}

TEST_F(Machine, ValuesAndPieces) {
  EXPECT_EQ("= 7 1", Shown({Push(263), Op(DW_OP_stack_value)}, 2));
  const std::uint16_t value = 0x0403;
  const std::uint64_t address = reinterpret_cast<std::uintptr_t>(&value);
  EXPECT_EQ("= 102 0 ? ? 3 4 9",
            Shown({Op(DW_OP_reg2), Op(DW_OP_piece, 2), Op(DW_OP_piece, 2), Push(address), Op(DW_OP_piece, 2),
                   Push(9), Op(DW_OP_stack_value), Op(DW_OP_piece, 1)}));
  EXPECT_EQ("none", Shown({Op(DW_OP_piece, 4)}));
  EXPECT_EQ("none", Shown({Push(8), Op(DW_OP_piece, 4)}));
  EXPECT_EQ("none", Shown({Op(DW_OP_reg2), Op(DW_OP_piece, 1U << 20)}));
  EXPECT_EQ("none", Shown({Op(DW_OP_reg2), Op(DW_OP_piece, 40000), Op(DW_OP_reg2), Op(DW_OP_piece, 40000)}));
  EXPECT_EQ("none", Shown({Op(DW_OP_reg2)}, 1U << 20));
  EXPECT_EQ("none", Shown({Op(DW_OP_reg2), Op(DW_OP_bit_piece, 4)}));
}

TEST_F(Machine, Jumps) {
  // 1 is pushed where the condition holds, else 2.
  const auto chosen = [&](std::uint64_t condition) {
    return Shown({Op(DW_OP_constu, condition, 0, 0), Op(DW_OP_bra, 4, 0, 2), Op(DW_OP_lit2, 0, 0, 5),
                  Op(DW_OP_skip, 1, 0, 6), Op(DW_OP_lit1, 0, 0, 9), Op(DW_OP_nop, 0, 0, 10)});
  };
  EXPECT_EQ("1", chosen(1));
  EXPECT_EQ("2", chosen(0));
  EXPECT_EQ("none", Shown({Op(DW_OP_lit1, 0, 0, 0), Op(DW_OP_skip, 0xfff0, 0, 1)}));
  EXPECT_EQ("none", Shown({Op(DW_OP_bra, 0, 0, 0)}));
}

TEST_F(Machine, EndsWhateverTheExpression) {
  EXPECT_EQ("none", Shown({Op(DW_OP_skip, 0xfffd, 0, 0)}));  // to itself
  EXPECT_EQ("none", Shown({Op(DW_OP_lit1, 0, 0, 0), Op(DW_OP_skip, 0xfffc, 0, 1)}));
  EXPECT_EQ("none", Shown(std::vector<Dwarf_Op>(40, Op(DW_OP_lit1))));
  EXPECT_EQ("1", Shown(std::vector<Dwarf_Op>(30, Op(DW_OP_lit1))));
  std::vector<Dwarf_Op> longest(4096, Op(DW_OP_nop));  // of which two are done
  longest.front() = Op(DW_OP_skip, 4, 0, 0);
  longest.back() = Op(DW_OP_lit1, 0, 0, 7);
  EXPECT_EQ("1", Shown(longest));
  longest.insert(longest.begin() + 1, Op(DW_OP_nop));
  EXPECT_EQ("none", Shown(longest));
}

TEST_F(Machine, NestsOnlySoFar) {
  m_scene.m_iDepth = 100;
  EXPECT_EQ("none", Shown({Op(DW_OP_lit1)}));
  EXPECT_EQ(100, m_scene.m_iDepth);
}

TEST_F(Machine, WithoutTheFunctionsOfTheLibrary) {
  for (const unsigned atom : {DW_OP_entry_value, DW_OP_GNU_entry_value, DW_OP_implicit_value, DW_OP_addrx,
                              DW_OP_constx, DW_OP_const_type, DW_OP_regval_type, DW_OP_deref_type,
                              DW_OP_convert, DW_OP_reinterpret, DW_OP_form_tls_address, DW_OP_fbreg})
    EXPECT_EQ("none", Shown({Push(1), Op(atom, 1)})) << atom;
}

TEST_F(Machine, ConversionToAnAddressNeedsNoType) {
  EXPECT_EQ("7", Shown({Push(7), Op(DW_OP_convert, 0)}));
  EXPECT_EQ("7", Shown({Push(7), Op(DW_OP_GNU_reinterpret, 0)}));
}

TEST(MachineWord, IsContinuedAsItsTypeHasIt) {
  EXPECT_EQ(~std::uint64_t(0), MakeWord(0xff, {eWORD_SIGNED, 1}).m_uBits);
  EXPECT_EQ(0xffU, MakeWord(0xfff, {eWORD_UNSIGNED, 1}).m_uBits);
  EXPECT_EQ(0x12345U, MakeWord(0x12345, {}).m_uBits);
}

TEST(MachineWord, WithoutASignIsComparedAndDividedSo) {
  const WordType type{eWORD_UNSIGNED, 8};
  const Word most = MakeWord(~std::uint64_t(0), type);
  const Word two = MakeWord(2, type);
  Word result;
  ASSERT_TRUE(Calculate(DW_OP_lt, two, most, result));
  EXPECT_EQ(1U, result.m_uBits);
  ASSERT_TRUE(Calculate(DW_OP_div, most, two, result));
  EXPECT_EQ(0x7fffffffffffffffU, result.m_uBits);
  ASSERT_TRUE(Calculate(DW_OP_abs, most, result));
  EXPECT_EQ(most.m_uBits, result.m_uBits);
}

TEST(MachineWord, RemaindersHaveTheSignOfTheirType) {
  Word result;
  const WordType type{eWORD_SIGNED, 4};
  ASSERT_TRUE(
      Calculate(DW_OP_mod, MakeWord(static_cast<std::uint64_t>(-7), type), MakeWord(4, type), result));
  EXPECT_EQ(-3, static_cast<std::int64_t>(result.m_uBits));
  ASSERT_TRUE(Calculate(DW_OP_mod, MakeWord(7, type), MakeWord(~std::uint64_t(0), type), result));
  EXPECT_EQ(0U, result.m_uBits);
}

TEST(MachineWord, RemaindersOfAddressesAreWithoutASign) {
  Word result;
  ASSERT_TRUE(Calculate(DW_OP_mod, MakeWord(static_cast<std::uint64_t>(-7), {}), MakeWord(4, {}), result));
  EXPECT_EQ(1U, result.m_uBits);
}

TEST(MachineWord, IsShiftedWithinItsType) {
  const WordType type{eWORD_SIGNED, 4};
  const auto shifted = [&](unsigned atom, std::int64_t number, std::uint64_t by) {
    Word result;
    EXPECT_TRUE(
        Calculate(atom, MakeWord(static_cast<std::uint64_t>(number), type), MakeWord(by, {}), result));
    return static_cast<std::int64_t>(result.m_uBits);
  };
  EXPECT_EQ(0xfffffff, shifted(DW_OP_shr, -1, 4));
  EXPECT_EQ(1, shifted(DW_OP_shr, -1, 31));
  EXPECT_EQ(0, shifted(DW_OP_shr, -1, 32));
  EXPECT_EQ(-0x80000000LL, shifted(DW_OP_shl, 1, 31));
  EXPECT_EQ(0, shifted(DW_OP_shl, 1, 32));
  EXPECT_EQ(-1, shifted(DW_OP_shra, -8, 32));
}

TEST(MachineWord, ThatIsNotCountedWithHasNoResult) {
  const Word number = MakeWord(1, {eWORD_OPAQUE, 8});
  Word result;
  EXPECT_FALSE(Calculate(DW_OP_plus, MakeWord(1, {}), number, result));
  EXPECT_FALSE(Calculate(DW_OP_plus, number, MakeWord(1, {}), result));
  EXPECT_FALSE(Calculate(DW_OP_plus, number, number, result));
  EXPECT_FALSE(Calculate(DW_OP_neg, number, result));
}

}  // namespace
