// Units and functions by their addresses, and the names of functions, in debug data that is made up.
#include <gtest/gtest.h>

#include "MadeUpEntries.h"
#include "Platform/Linux/SymbolizedName.h"
#include "Platform/Linux/SymbolizedUnits.h"

namespace {

using namespace OxaTest;
using namespace Oxa::Core::Platform;

class FunctionEntries : public testing::Test {
 protected:
  FunctionEntries() : m_dw(MadeUpFunctions()), m_units(m_dw) {}

  Entry& AddFunction(Entry& parent, const std::string& name, std::uint64_t begin, std::uint64_t end) {
    return m_unit.AddTo(parent, DW_TAG_subprogram, name)
        .With(DW_AT_low_pc, Number(begin))
        .With(DW_AT_high_pc, Number(end));
  }

  // The name of the function that has the address; empty if none has.
  std::string NameAt(std::uint64_t address) {
    Dwarf_Die function{};
    return m_units.FindFunction(m_unit.Unit().Die(), address, function) ? QualifiedName(m_dw, function) : "";
  }

  MadeUpUnit m_unit;
  Entry& m_space = m_unit.Add(DW_TAG_namespace, "space");
  Entry& m_inner = m_unit.AddTo(m_space, DW_TAG_namespace);
  const Dw m_dw;
  SymbolizedUnits m_units;
};

TEST_F(FunctionEntries, HaveTheAddressesUpToTheirEnd) {
  AddFunction(m_unit.Unit(), "Second", 200, 300);
  AddFunction(m_unit.Unit(), "First", 100, 200);
  EXPECT_EQ("", NameAt(99));
  EXPECT_EQ("First", NameAt(100));
  EXPECT_EQ("First", NameAt(199));
  EXPECT_EQ("Second", NameAt(200));
  EXPECT_EQ("Second", NameAt(299));
  EXPECT_EQ("", NameAt(300));
}

TEST_F(FunctionEntries, ThatTheLinkerThrewAwayHaveNone) {
  AddFunction(m_unit.Unit(), "Gone", 0, 300);
  AddFunction(m_unit.Unit(), "Empty", 200, 200);
  EXPECT_EQ("", NameAt(100));
  EXPECT_EQ("", NameAt(200));
}

TEST_F(FunctionEntries, AreFoundInNamespacesToo) {
  AddFunction(m_inner, "Inner", 300, 400);  // in the order of the debug data
  AddFunction(m_space, "InSpace", 200, 300);
  AddFunction(m_unit.Unit(), "Outer", 100, 200);
  EXPECT_EQ("Outer", NameAt(100));
  EXPECT_EQ("space::InSpace", NameAt(200));
  EXPECT_EQ("space::(anonymous namespace)::Inner", NameAt(300));
  EXPECT_EQ("", NameAt(400));
}

TEST_F(FunctionEntries, ThatStandNowhereHaveTheirOwnNameAlone) {
  Entry& lost = AddFunction(m_space, "Lost", 100, 200);
  EXPECT_EQ("space::Lost", QualifiedName(m_dw, lost.Die()));
  m_space.m_children.pop_back();
  EXPECT_EQ("Lost", QualifiedName(m_dw, lost.Die()));
}

}  // namespace
