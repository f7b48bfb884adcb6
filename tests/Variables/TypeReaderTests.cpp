// Types out of debug data: what the compilers here don't write, and what is damaged.
#include <gtest/gtest.h>

#include "MadeUpEntries.h"
#include "Platform/Linux/TypeReader.h"

namespace {

using namespace OxaTest;
using namespace Oxa::Core::Platform;

const std::string sSTRING = "basic_string<char, std::char_traits<char>, std::allocator<char>>";

class Types : public testing::Test {
 protected:
  Types() : m_dw(MadeUpFunctions()), m_types(m_dw) {}

  // Of a variable that has it; a type without anything if it can't be told.
  const TypeFacts& Of(const Entry& type) {
    static const TypeFacts s_none;
    Dwarf_Die holder = m_unit.Add(DW_TAG_variable, "variable").WithType(type).Die();
    const TypeFacts* const found = m_types.TypeOf(holder);
    if (found != nullptr && found->m_complete != nullptr) {
      TypeFacts& unread = const_cast<TypeFacts&>(*found);
      unread.m_complete(unread);
    }
    return found != nullptr ? *found : s_none;
  }

  Entry& AddClass(const std::string& name = "Class") {
    return m_unit.Add(DW_TAG_structure_type, name).With(DW_AT_byte_size, Number(16));
  }

  // A bit field at byte 4, of an int.
  Entry& AddBits(Entry& type, std::uint64_t size) {
    return m_unit.AddTo(type, DW_TAG_member, "bits")
        .WithType(m_int)
        .With(DW_AT_data_member_location, Number(4))
        .With(DW_AT_bit_size, Number(size));
  }

  MadeUpUnit m_unit;
  const Entry& m_int = m_unit.AddBasic("int", DW_ATE_signed, 4);
  const Dw m_dw;
  TypeReader m_types;
};

std::string Shown(const MemberFacts& member) {
  return std::to_string(member.m_uOffset) + "." + std::to_string(member.m_uBitOffset) + ":" +
         std::to_string(member.m_uBitSize);
}

TEST_F(Types, BitsAreCountedFromTheLowestOfTheClass) {
  Entry& type = AddClass();
  AddBits(type, 3).With(DW_AT_data_bit_offset, Number(13));
  EXPECT_EQ("5.5:3", Shown(Of(type).m_members.at(0)));
}

TEST_F(Types, BitsOfTheOlderFormAreCountedFromTheHighestOfTheirUnit) {
  Entry& type = AddClass();
  AddBits(type, 3).With(DW_AT_bit_offset, Number(0));
  AddBits(type, 3).With(DW_AT_bit_offset, Number(29));
  AddBits(type, 3).With(DW_AT_bit_offset, Number(10));
  AddBits(type, 3).With(DW_AT_bit_offset, Number(1)).With(DW_AT_byte_size, Number(1));
  const std::vector<MemberFacts>& members = Of(type).m_members;
  ASSERT_EQ(4u, members.size());
  EXPECT_EQ("7.5:3", Shown(members[0]));
  EXPECT_EQ("4.0:3", Shown(members[1]));
  EXPECT_EQ("6.3:3", Shown(members[2]));
  EXPECT_EQ("4.4:3", Shown(members[3])) << "the unit's own size comes before the type's";
}

TEST_F(Types, BitsThatDoNotFitStayWhereTheirUnitIs) {
  Entry& type = AddClass();
  AddBits(type, 3).With(DW_AT_bit_offset, Number(33));
  AddBits(type, 3).With(DW_AT_bit_offset, Number(30));
  AddBits(type, 3).With(DW_AT_bit_offset, Number(0)).With(DW_AT_byte_size, Number(17));
  for (const MemberFacts& member : Of(type).m_members) EXPECT_EQ("4.0:3", Shown(member));
  EXPECT_EQ(3u, Of(type).m_members.size());
}

TEST_F(Types, MoreBitsThanANumberHasAreNoField) {
  Entry& type = AddClass();
  AddBits(type, 65).With(DW_AT_data_bit_offset, Number(13));
  EXPECT_EQ("4.0:0", Shown(Of(type).m_members.at(0)));
}

TEST_F(Types, WhatBelongsToTheClassIsNoMember) {
  Entry& type = AddClass();
  m_unit.AddTo(type, DW_TAG_member, "s_one").WithType(m_int).With(DW_AT_external, true);
  m_unit.AddTo(type, DW_TAG_member, "s_two").WithType(m_int).With(DW_AT_declaration, true);
  m_unit.AddTo(type, DW_TAG_member, "m_three").WithType(m_int);
  ASSERT_EQ(1u, Of(type).m_members.size());
  EXPECT_EQ("m_three", Of(type).m_members[0].m_sName);
}

TEST_F(Types, ArraysHaveTheirCountInEitherForm) {
  const auto count = [&](unsigned attribute, std::uint64_t number) {
    Entry& array = m_unit.Add(DW_TAG_array_type).WithType(m_int);
    m_unit.AddTo(array, DW_TAG_subrange_type).With(attribute, Number(number));
    return std::pair(Of(array).m_iCount, Of(array).m_uSize);
  };
  EXPECT_EQ(std::pair(std::int64_t{3}, std::uint64_t{12}), count(DW_AT_count, 3));
  EXPECT_EQ(std::pair(std::int64_t{3}, std::uint64_t{12}), count(DW_AT_upper_bound, 2));
  EXPECT_EQ(std::pair(std::int64_t{0}, std::uint64_t{0}), count(DW_AT_upper_bound, 0xffffffff));
  EXPECT_EQ(std::pair(std::int64_t{0}, std::uint64_t{0}), count(DW_AT_upper_bound, ~std::uint64_t{0}));
  EXPECT_EQ(std::pair(std::int64_t{-1}, std::uint64_t{0}), count(DW_AT_name, 0)) << "of unknown length";
}

TEST_F(Types, AResultIsOneUnderFurtherNamesToo) {
  const Entry& result = m_unit.Add(DW_TAG_typedef, "HRESULT").WithType(m_int);
  const Entry& outer = m_unit.Add(DW_TAG_typedef, "Outcome").WithType(result);
  const Entry& inner = m_unit.Add(DW_TAG_typedef, "Number").WithType(m_int);
  const Entry& over = m_unit.Add(DW_TAG_typedef, "HRESULT").WithType(inner);
  EXPECT_EQ(eBASIC_HRESULT, Of(result).m_eBasic);
  EXPECT_EQ(eBASIC_HRESULT, Of(outer).m_eBasic);
  EXPECT_EQ(eBASIC_HRESULT, Of(over).m_eBasic);
  EXPECT_EQ(eBASIC_INT, Of(inner).m_eBasic);
}

TEST_F(Types, AResultHasFourBytesAtLeast) {
  const Entry& small = m_unit.AddBasic("short", DW_ATE_signed, 2);
  EXPECT_EQ(eBASIC_INT, Of(m_unit.Add(DW_TAG_typedef, "HRESULT").WithType(small)).m_eBasic);
}

TEST_F(Types, NamesThatLeadToThemselvesLeadToNone) {
  Entry& name = m_unit.Add(DW_TAG_typedef, "Circle");
  name.WithType(name);
  Dwarf_Die holder = m_unit.Add(DW_TAG_variable).WithType(name).Die();
  EXPECT_EQ(nullptr, m_types.TypeOf(holder));
}

TEST_F(Types, PointersToMembersAreTwiceAsLongForFunctions) {
  const Entry& owner = AddClass("Owner");
  const Entry& function = m_unit.Add(DW_TAG_subroutine_type);
  const auto pointer = [&](const Entry& to) -> Entry& {
    return m_unit.Add(DW_TAG_ptr_to_member_type).WithType(to).With(DW_AT_containing_type, &owner);
  };
  EXPECT_EQ(8u, Of(pointer(m_int)).m_uSize);
  EXPECT_EQ(16u, Of(pointer(function)).m_uSize);
  EXPECT_EQ("Owner", Of(pointer(function)).m_sName);
  EXPECT_EQ(0u, Of(m_unit.Add(DW_TAG_ptr_to_member_type).WithType(m_int)).m_uSize) << "of nobody";
}

TEST_F(Types, AClassMayStandElsewhereByItsSignature) {
  Entry& whole = AddClass("Whole");
  m_unit.AddTo(whole, DW_TAG_member, "m_iOne").WithType(m_int);
  const Entry& stub =
      m_unit.Add(DW_TAG_structure_type).With(DW_AT_declaration, true).With(DW_AT_signature, &whole);
  const TypeFacts& type = Of(stub);
  EXPECT_EQ("Whole", type.m_sName);
  EXPECT_EQ(16u, type.m_uSize);
  EXPECT_TRUE(type.m_bComplete);
  EXPECT_EQ(1u, type.m_members.size());
}

TEST_F(Types, StringsAreToldByTheirNameAndSize) {
  Entry& space = m_unit.Add(DW_TAG_namespace, "std");
  const Entry& newer = m_unit.AddTo(space, DW_TAG_class_type, sSTRING).With(DW_AT_byte_size, Number(32));
  const Entry& older = m_unit.AddTo(space, DW_TAG_class_type, sSTRING).With(DW_AT_byte_size, Number(8));
  const Entry& named = m_unit.AddTo(space, DW_TAG_class_type, sSTRING).With(DW_AT_declaration, true);
  EXPECT_EQ(eSTRING_WITH_LENGTH, Of(newer).m_eString);
  EXPECT_EQ(eSTRING_COUNTED, Of(older).m_eString);
  EXPECT_EQ(8u, Of(older).m_uSize);
  EXPECT_EQ(eSTRING_WITH_LENGTH, Of(named).m_eString);
  EXPECT_EQ(32u, Of(named).m_uSize) << "no more than the name is known";
}

TEST_F(Types, OfFunctionsBearTheNamesOfWhatTheyLieIn) {
  Entry& space = m_unit.Add(DW_TAG_namespace, "space");
  Entry& function = m_unit.AddTo(space, DW_TAG_subprogram, "Function");
  Entry& block = m_unit.AddTo(function, DW_TAG_lexical_block, "block");
  Entry& outer = m_unit.AddTo(block, DW_TAG_structure_type, "Outer");
  EXPECT_EQ("space::Function::Outer", Of(outer).m_sName);
  EXPECT_EQ("space::Function::Outer::Inner", Of(m_unit.AddTo(outer, DW_TAG_structure_type, "Inner")).m_sName);
}

TEST_F(Types, WhatIsDefinedElsewhereIsNamedWhereItIsDeclared) {
  Entry& space = m_unit.Add(DW_TAG_namespace, "space");
  const Entry& declared =
      m_unit.AddTo(space, DW_TAG_structure_type, "Declared").With(DW_AT_declaration, true);
  EXPECT_EQ("space::Declared", Of(AddClass("").With(DW_AT_specification, &declared)).m_sName);
}

}  // namespace
