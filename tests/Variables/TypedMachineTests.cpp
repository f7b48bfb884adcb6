// Operations of location expressions that lead to types, blocks and further expressions.
#include <gtest/gtest.h>

#include "LocationText.h"
#include "MadeUpEntries.h"
#include "Platform/Linux/VariableExpression.h"
#include "Platform/Linux/VariableMachine.h"

namespace {

using namespace OxaTest;
using namespace Oxa::Core::Platform;

// Register 3 holds 0x1234567890abcdef.
class TypedMachine : public testing::Test {
 protected:
  TypedMachine() : m_dw(MadeUpFunctions()), m_scene{m_dw, m_frame, m_memory} {
    m_frame.m_registers.m_registers[3] = 0x1234567890abcdef;
    m_frame.m_bKnown[3] = true;
    m_frame.m_bias = 0x10000;
  }

  Location Find(const Operations& operations, std::uint64_t size) {
    ExpressionMachine machine(m_scene, m_attribute);
    m_scene.m_iSteps = 0;
    return machine.Run(operations.data(), operations.size()) ? machine.Result(size) : Location();
  }

  std::string Shown(const Operations& operations, std::uint64_t size = 8) {
    return TextOf(Find(operations, size));
  }

  // As the number of the whole expression; -1 if it has none.
  std::int64_t NumberOfAll(const Operations& operations) {
    const Attribute held = operations;
    Dwarf_Attribute attribute{};
    Detail::Give(&held, DW_AT_location, &attribute);
    std::uint64_t number = 0;
    return NumberOf(m_scene, attribute, number) ? static_cast<std::int64_t>(number) : -1;
  }

  MadeUpUnit m_unit;
  const Entry& m_char = m_unit.AddBasic("signed char", DW_ATE_signed_char, 1);
  const Entry& m_byte = m_unit.AddBasic("unsigned char", DW_ATE_unsigned_char, 1);
  const Entry& m_int = m_unit.AddBasic("int", DW_ATE_signed, 4);
  const Entry& m_float = m_unit.AddBasic("float", DW_ATE_float, 4);
  const Entry& m_double = m_unit.AddBasic("double", DW_ATE_float, 8);
  const Entry& m_widest = m_unit.AddBasic("__int128", DW_ATE_signed, 16);
  const Dw m_dw;
  FrameView m_frame;
  MemoryReader m_memory;
  Dwarf_Attribute m_attribute{};
  ExpressionScene m_scene;
};

TEST_F(TypedMachine, RegistersHaveTheWidthOfTheirType) {
  for (const unsigned atom : {DW_OP_regval_type, DW_OP_GNU_regval_type}) {
    EXPECT_EQ("-17", Shown({Op(atom, 3, To(m_char))})) << atom;
    EXPECT_EQ("239", Shown({Op(atom, 3, To(m_byte))})) << atom;
    EXPECT_EQ("none", Shown({Op(atom, 4, To(m_byte))})) << atom;
    EXPECT_EQ("none", Shown({Op(atom, 3, To(m_widest))})) << atom;
  }
}

TEST_F(TypedMachine, MemoryHasTheWidthOfItsType) {
  static const std::uint32_t number = 0xfffffffe;
  for (const unsigned atom : {DW_OP_deref_type, DW_OP_GNU_deref_type}) {
    const Dwarf_Op at = Op(DW_OP_constu, To(number));
    EXPECT_EQ("-2", Shown({at, Op(atom, 4, To(m_int))})) << atom;
    EXPECT_EQ("none", Shown({at, Op(atom, 2, To(m_int))})) << atom;
  }
}

TEST_F(TypedMachine, ConstantsHaveTheWidthOfTheirType) {
  const Attribute four = Bytes{0xfe, 0xff, 0xff, 0xff};
  const Attribute none = Bytes{};
  for (const unsigned atom : {DW_OP_const_type, DW_OP_GNU_const_type}) {
    EXPECT_EQ("-2", Shown({Op(atom, To(four), To(m_int))})) << atom;
    EXPECT_EQ("none", Shown({Op(atom, To(four), To(m_char))})) << atom;
    EXPECT_EQ("none", Shown({Op(atom, To(none), To(m_char))})) << atom;
  }
}

TEST_F(TypedMachine, SumsStayWithinTheirType) {
  const Attribute most = Bytes{0x7f};
  const Dwarf_Op constant = Op(DW_OP_const_type, To(most), To(m_char));
  EXPECT_EQ("-128", Shown({constant, Op(DW_OP_plus_uconst, 1)}));
  EXPECT_EQ("-2", Shown({constant, Op(DW_OP_dup), Op(DW_OP_plus)}));
}

TEST_F(TypedMachine, WhatIsNotCountedWithIsTakenAnewInItsOwnSizeOnly) {
  const Attribute one = Bytes{0, 0, 0x80, 0x3f};
  const Dwarf_Op constant = Op(DW_OP_const_type, To(one), To(m_float));
  for (const unsigned atom : {DW_OP_reinterpret, DW_OP_GNU_reinterpret}) {
    EXPECT_EQ("1065353216", Shown({constant, Op(atom, To(m_int))})) << atom;
    EXPECT_EQ("none", Shown({constant, Op(atom, To(m_char))})) << atom;
    EXPECT_EQ("none", Shown({constant, Op(atom, To(m_double))})) << atom;
  }
  for (const unsigned atom : {DW_OP_convert, DW_OP_GNU_convert})
    EXPECT_EQ("none", Shown({constant, Op(atom, To(m_int))})) << atom;
}

TEST_F(TypedMachine, NumbersAreConvertedByTheirValue) {
  for (const unsigned atom : {DW_OP_convert, DW_OP_GNU_convert}) {
    EXPECT_EQ("-1", Shown({Op(DW_OP_constu, 255), Op(atom, To(m_char))})) << atom;
    EXPECT_EQ("-1", Shown({Op(DW_OP_constu, 255), Op(atom, To(m_char)), Op(atom, To(m_int))})) << atom;
    EXPECT_EQ("255", Shown({Op(DW_OP_constu, 255), Op(atom, To(m_byte)), Op(atom, To(m_int))})) << atom;
  }
}

TEST_F(TypedMachine, ABlockIsKnownAsFarAsItGoes) {
  const Attribute block = Bytes{7, 8};
  const Dwarf_Op value = Op(DW_OP_implicit_value, To(block));
  EXPECT_EQ("= 7 8", Shown({value}, 2));
  EXPECT_EQ("= 7", Shown({value}, 1));
  EXPECT_EQ("= 7 8 ? ?", Shown({value}, 4));
  EXPECT_EQ("= 7 8 ? 7", Shown({value, Op(DW_OP_piece, 3), value, Op(DW_OP_piece, 1)}, 4));
}

TEST_F(TypedMachine, NumbersOfATableAreMovedOnlyAsAddresses) {
  const Attribute held = Number(0x400);
  for (const unsigned atom : {DW_OP_addrx, DW_OP_GNU_addr_index})
    EXPECT_EQ(std::to_string(0x10400), Shown({Op(atom, To(held))})) << atom;
  for (const unsigned atom : {DW_OP_constx, DW_OP_GNU_const_index})
    EXPECT_EQ(std::to_string(0x400), Shown({Op(atom, To(held))})) << atom;
}

TEST_F(TypedMachine, AValueOnEntryIsThatOfOneRegister) {
  FrameView caller;
  caller.m_registers.m_registers[3] = 77;
  caller.m_bKnown[3] = true;
  m_frame.m_pCaller = &caller;
  const Attribute one = Operations{Op(DW_OP_reg3)};
  const Attribute two = Operations{Op(DW_OP_reg3), Op(DW_OP_nop)};
  const Attribute other = Operations{Op(DW_OP_breg3)};
  for (const unsigned atom : {DW_OP_entry_value, DW_OP_GNU_entry_value}) {
    EXPECT_EQ("77", Shown({Op(atom, To(one))})) << atom;
    EXPECT_EQ("none", Shown({Op(atom, To(two))})) << atom;
    EXPECT_EQ("none", Shown({Op(atom, To(other))})) << atom;
  }
}

TEST_F(TypedMachine, ANumberIsAPlaceOrARegisterAndNothingPutTogether) {
  const Attribute block = Bytes{7, 8};
  EXPECT_EQ(5, NumberOfAll({Op(DW_OP_lit5)}));
  EXPECT_EQ(0x1234567890abcdef, NumberOfAll({Op(DW_OP_reg3)}));
  EXPECT_EQ(-1, NumberOfAll({Op(DW_OP_reg4)}));
  EXPECT_EQ(-1, NumberOfAll({Op(DW_OP_lit5), Op(DW_OP_piece, 4), Op(DW_OP_lit6)}));
  EXPECT_EQ(-1, NumberOfAll({Op(DW_OP_lit5), Op(DW_OP_implicit_value, To(block))}));
  EXPECT_EQ(-1, NumberOfAll({}));
}

}  // namespace
