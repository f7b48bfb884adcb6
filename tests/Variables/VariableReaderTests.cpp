// The variables of frames whose debug data is made up.
#include <gtest/gtest.h>

#include <map>

#include "MadeUpEntries.h"
#include "Platform/Linux/VariableScopes.h"
#include "Platform/Linux/Variables.h"

namespace {

using namespace OxaTest;
using namespace Oxa::Core::Platform;

constexpr int iRDI = 5;
constexpr std::uint64_t uPLACE = 0x1000;  // of the call, in the caller: its last byte

// A function that was called by another one, which lies in a block of that.
class FrameVariables : public testing::Test {
 protected:
  FrameVariables() : m_dw(MadeUpFunctions()) {
    m_frame.m_function = m_function.Die();
    m_frame.m_pScopes = &m_frame.m_function;
    m_frame.m_iScopes = 1;
    m_callers[0] = m_block.Die();
    m_callers[1] = m_outer.Die();
    m_caller.m_pScopes = m_callers;
    m_caller.m_iScopes = 2;
    m_caller.m_place = uPLACE;
  }
  ~FrameVariables() override { ForgetVariables(); }

  Entry& AddVariable(const std::string& name, int tag = DW_TAG_variable) {
    return m_unit.AddTo(m_function, tag, name).WithType(m_int);
  }

  // A call of `called` that returns to behind `place`, with 42 in the first register of parameters.
  Entry& AddCall(Entry& parent, const Entry* called, std::uint64_t place = uPLACE) {
    Entry& site = m_unit.AddTo(parent, DW_TAG_call_site).With(DW_AT_call_return_pc, Number(place + 1));
    if (called != nullptr) site.With(DW_AT_call_origin, called);
    m_unit.AddTo(site, DW_TAG_call_site_parameter)
        .With(DW_AT_location, Operations{Op(DW_OP_reg0 + 1)})
        .With(DW_AT_call_value, Operations{Op(DW_OP_constu, 41)});
    m_unit.AddTo(site, DW_TAG_call_site_parameter)
        .With(DW_AT_location, Operations{Op(DW_OP_reg0 + iRDI)})
        .With(DW_AT_call_value, Operations{Op(DW_OP_constu, 42)});
    return site;
  }

  // What a register had when the function was entered.
  std::string OnEntry(int number) {
    m_frame.m_pCaller = &m_caller;
    m_passed = Operations{Op(DW_OP_reg0 + static_cast<unsigned>(number))};
    if (m_pPassed == nullptr) m_pPassed = &AddVariable("passed", DW_TAG_formal_parameter);
    m_pPassed->With(DW_AT_location, Operations{Op(DW_OP_entry_value, To(m_passed)), Op(DW_OP_stack_value)});
    return Read()["passed"];
  }

  // "none", "at" and the address, or "=" and the bytes.
  static std::string Shown(const ValueFacts& value) {
    if (value.m_ePlace == eVALUE_NOWHERE) return "none";
    if (value.m_ePlace == eVALUE_IN_MEMORY) return "at " + std::to_string(value.m_uAddress);
    std::string text = "=";
    for (std::size_t at = 0; at < value.m_uBytes; ++at)
      text += value.m_pKnown[at] != 0 ? " " + std::to_string(value.m_pBytes[at]) : " ?";
    return text;
  }

  std::map<std::string, std::string> Read(const Dw& dw) {
    std::map<std::string, std::string> variables;
    VariableSink sink;
    sink.m_pReceiver = &variables;
    sink.m_take = [](void* receiver, const VariableFacts& facts) {
      (*static_cast<std::map<std::string, std::string>*>(receiver))[facts.m_pName] = Shown(facts.m_value);
    };
    ReadVariables(dw, m_frame, sink);
    return variables;
  }

  std::map<std::string, std::string> Read() {
    ForgetVariables();
    return Read(m_dw);
  }

  using Variables = std::map<std::string, std::string>;

  MadeUpUnit m_unit;
  const Entry& m_int = m_unit.AddBasic("int", DW_ATE_signed, 4);
  Entry& m_function = m_unit.Add(DW_TAG_subprogram, "Function");
  Entry& m_outer = m_unit.Add(DW_TAG_subprogram, "Caller");
  Entry& m_block = m_unit.AddTo(m_outer, DW_TAG_lexical_block);
  Entry* m_pPassed = nullptr;
  Attribute m_passed;
  const Dw m_dw;
  Dwarf_Die m_callers[2] = {};
  FrameView m_frame;
  FrameView m_caller;
};

TEST_F(FrameVariables, ConstantsAreNumbersBlocksOrTexts) {
  const Entry& character = m_unit.AddBasic("char", DW_ATE_signed_char, 1);
  Entry& text = m_unit.Add(DW_TAG_array_type).WithType(character);
  m_unit.AddTo(text, DW_TAG_subrange_type).With(DW_AT_count, Number(3));
  const Entry& widest = m_unit.AddBasic("__int128", DW_ATE_signed, 16);
  AddVariable("number").With(DW_AT_const_value, Number(0x0807060504030201));
  AddVariable("wide").WithType(widest).With(DW_AT_const_value, Number(1));
  AddVariable("block").With(DW_AT_const_value, Bytes{9, 8, 7, 6});
  AddVariable("text").WithType(text).With(DW_AT_const_value, std::string("ab"));
  AddVariable("nothing");
  EXPECT_EQ((Variables{{"number", "= 1 2 3 4"},
                       {"wide", "= 1 0 0 0 0 0 0 0"},
                       {"block", "= 9 8 7 6"},
                       {"text", "= 97 98 0"},
                       {"nothing", "none"}}),
            Read());
}

TEST_F(FrameVariables, WhatIsOnlyDeclaredIsNone) {
  AddVariable("elsewhere").With(DW_AT_declaration, true).With(DW_AT_const_value, Number(1));
  AddVariable("here").With(DW_AT_declaration, false).With(DW_AT_const_value, Number(1));
  EXPECT_EQ((Variables{{"here", "= 1 0 0 0"}}), Read());
}

TEST_F(FrameVariables, OfTheOriginHaveAPlaceOnlyWhereAllInstancesShareIt) {
  Entry& origin = m_unit.Add(DW_TAG_subprogram, "Origin");
  const auto add = [&](int tag, const std::string& name) -> Entry& {
    return m_unit.AddTo(origin, tag, name)
        .WithType(m_int)
        .With(DW_AT_location, Operations{Op(DW_OP_addr, 4096)});
  };
  add(DW_TAG_formal_parameter, "parameter");
  add(DW_TAG_variable, "lasting");
  const Entry& both = add(DW_TAG_variable, "both");
  m_function.With(DW_AT_abstract_origin, &origin);
  m_unit.AddTo(m_function, DW_TAG_variable, "both")
      .WithType(m_int)
      .With(DW_AT_abstract_origin, &both)
      .With(DW_AT_location, Operations{Op(DW_OP_addr, 8192)});
  EXPECT_EQ((Variables{{"parameter", "none"}, {"lasting", "at 4096"}, {"both", "at 8192"}}), Read());
}

TEST_F(FrameVariables, EachMayTakeItsSteps) {
  Operations operations(1500, Op(DW_OP_nop));
  operations.push_back(Op(DW_OP_lit1));
  for (const char* const name : {"one", "two", "three"}) AddVariable(name).With(DW_AT_location, operations);
  EXPECT_EQ((Variables{{"one", "at 1"}, {"two", "at 1"}, {"three", "at 1"}}), Read());
}

TEST_F(FrameVariables, WhatOneLibraryReadIsNothingToAnother) {
  Entry& variable = AddVariable("variable").With(DW_AT_const_value, Number(1));
  const Dw other = MadeUpFunctions();
  EXPECT_EQ((Variables{{"variable", "= 1 0 0 0"}}), Read());
  variable.With(DW_AT_const_value, Number(2));
  EXPECT_EQ((Variables{{"variable", "= 1 0 0 0"}}), Read(m_dw));
  EXPECT_EQ((Variables{{"variable", "= 2 0 0 0"}}), Read(other));
}

TEST_F(FrameVariables, OnEntryWerePassedByTheCallThatReturnsHere) {
  AddCall(m_outer, &m_function);
  EXPECT_EQ("= 42 0 0 0", OnEntry(iRDI));
  EXPECT_EQ("= 41 0 0 0", OnEntry(1));
  EXPECT_EQ("none", OnEntry(4)) << "nothing is told of that one";
  m_caller.m_place = uPLACE + 1;
  EXPECT_EQ("none", OnEntry(iRDI)) << "another call";
}

TEST_F(FrameVariables, CallsAreLookedForFromTheInnermostBlockOutwards) {
  AddCall(m_block, &m_function, uPLACE - 1);
  AddCall(m_outer, &m_function);
  EXPECT_EQ("= 42 0 0 0", OnEntry(iRDI));
  m_caller.m_place = uPLACE - 1;
  EXPECT_EQ("= 42 0 0 0", OnEntry(iRDI));
}

TEST_F(FrameVariables, OnEntryAreNotKnownWhereAnotherFunctionWasCalled) {
  AddCall(m_outer, &m_unit.Add(DW_TAG_subprogram, "JumpsHere"));
  EXPECT_EQ("none", OnEntry(iRDI));
}

TEST_F(FrameVariables, TheCalledFunctionIsKnownByItsDeclarationOrItsName) {
  Entry& declared = m_unit.Add(DW_TAG_subprogram, "Function");
  AddCall(m_outer, &declared);
  EXPECT_EQ("none", OnEntry(iRDI));
  declared.With(DW_AT_linkage_name, std::string("_Z8Functionv"));
  EXPECT_EQ("none", OnEntry(iRDI));
  m_function.With(DW_AT_linkage_name, std::string("_Z5Otherv"));
  EXPECT_EQ("none", OnEntry(iRDI));
  m_function.With(DW_AT_linkage_name, std::string("_Z8Functionv"));
  EXPECT_EQ("= 42 0 0 0", OnEntry(iRDI));
  m_function.m_attributes.erase(DW_AT_linkage_name);
  declared.m_attributes.erase(DW_AT_linkage_name);
  m_function.With(DW_AT_specification, &declared);
  EXPECT_EQ("= 42 0 0 0", OnEntry(iRDI));
}

TEST_F(FrameVariables, ACallThroughAPointerIsTakenForOneOfThisFunction) {
  AddCall(m_outer, nullptr);
  EXPECT_EQ("= 42 0 0 0", OnEntry(iRDI));
}

TEST_F(FrameVariables, RegistersThatAreGivenBackAreStillTheCallers) {
  for (const int number : {3, 6, 12, 13, 14, 15}) {
    m_caller.m_registers.m_registers[number] = 7;
    EXPECT_EQ("none", OnEntry(number)) << number;
    m_caller.m_bKnown[number] = true;
    EXPECT_EQ("= 7 0 0 0", OnEntry(number)) << number;
  }
  for (const int number : {0, 1, 2, 4, 5, 7, 8, 9, 10, 11, 16}) {
    m_caller.m_bKnown[number] = true;
    EXPECT_EQ("none", OnEntry(number)) << number;
  }
}

}  // namespace
