// The names of types, and what is left out.
#include <gtest/gtest.h>

#include "MadeUpFacts.h"

namespace {

using namespace OxaTest;

TEST(SymbolName, BasicTypesByTheirNumbers) {
  EXPECT_EQ("[NO TYPE]", TypeOf(Basic(0, 8)));
  EXPECT_EQ("void", TypeOf(Basic(1, 0)));
  EXPECT_EQ("char", TypeOf(Basic(2, 1)));
  EXPECT_EQ("UNICODE_CHAR", TypeOf(Basic(3, 4)));
  EXPECT_EQ("float", TypeOf(Basic(8, 4)));
  EXPECT_EQ("BCD", TypeOf(Basic(9, 8)));
  EXPECT_EQ("bool", TypeOf(Basic(10, 1)));
  EXPECT_EQ("long", TypeOf(Basic(13, 8)));
  EXPECT_EQ("unsigned long", TypeOf(Basic(14, 8)));
  EXPECT_EQ("CURRENCY", TypeOf(Basic(25, 8)));
  EXPECT_EQ("DATE", TypeOf(Basic(26, 8)));
  EXPECT_EQ("VARIANT", TypeOf(Basic(27, 16)));
  EXPECT_EQ("COMPLEX", TypeOf(Basic(28, 8)));
  EXPECT_EQ("BIT", TypeOf(Basic(29, 1)));
  EXPECT_EQ("BSTR", TypeOf(Basic(30, 8)));
  EXPECT_EQ("HRESULT", TypeOf(Basic(31, 4)));
}

TEST(SymbolName, IntegersBySize) {
  EXPECT_EQ("short", TypeOf(Basic(6, 2)));
  EXPECT_EQ("long", TypeOf(Basic(6, 4)));
  EXPECT_EQ("_int64", TypeOf(Basic(6, 8)));
  EXPECT_EQ("unsigned short", TypeOf(Basic(7, 2)));
  EXPECT_EQ("unsigned long", TypeOf(Basic(7, 4)));
  EXPECT_EQ("unsigned _int64", TypeOf(Basic(7, 8)));
}

TEST(SymbolName, IntegersOfSizesThatOnlySomeCompilersHave) {
  EXPECT_EQ("char", TypeOf(Basic(6, 1)));
  EXPECT_EQ("unsigned char", TypeOf(Basic(7, 1)));
  EXPECT_EQ("_int128", TypeOf(Basic(6, 16)));
  EXPECT_EQ("unsigned _int128", TypeOf(Basic(7, 16)));
  EXPECT_EQ("[UNKNOWN BasicType]", TypeOf(Basic(6, 3)));
}

TEST(SymbolName, OtherNumbersAreUnknown) {
  for (const int basic : {4, 5, 11, 12, 15, 24, 32, 33, 255})
    EXPECT_EQ("[UNKNOWN BasicType]", TypeOf(Basic(basic, 4))) << basic;
}

TEST(SymbolName, PointersAndReferences) {
  const TypeFacts integer = Basic(6, 4);
  const TypeFacts pointer = Over(eTYPE_POINTER, integer);
  EXPECT_EQ("long *", TypeOf(pointer));
  EXPECT_EQ("long **", TypeOf(Over(eTYPE_POINTER, pointer)));
  EXPECT_EQ("long &", TypeOf(Over(eTYPE_REFERENCE, integer)));
  EXPECT_EQ("long *&", TypeOf(Over(eTYPE_REFERENCE, pointer)));
  EXPECT_EQ("long &&", TypeOf(Over(eTYPE_RVALUE_REFERENCE, integer)));
  EXPECT_EQ("void *", TypeOf(Over(eTYPE_POINTER, Basic(1, 0))));
}

TEST(SymbolName, PointersToCharacters) {
  EXPECT_EQ("char *", TypeOf(Over(eTYPE_POINTER, Basic(2, 1))));
  EXPECT_EQ("wchar_t *", TypeOf(Over(eTYPE_POINTER, Basic(3, 4))));
}

TEST(SymbolName, Arrays) {
  const TypeFacts element = Basic(6, 2);
  const TypeFacts inner = ArrayOf(element, 3);
  EXPECT_EQ("short [3]", TypeOf(inner));
  EXPECT_EQ("short [2][3]", TypeOf(ArrayOf(inner, 2)));
  TypeFacts unknown = ArrayOf(element, 0);
  unknown.m_iCount = -1;
  EXPECT_EQ("short []", TypeOf(unknown));
}

TEST(SymbolName, FunctionsAreNamedOnlyBehindPointers) {
  const TypeFacts result = Basic(6, 4);
  const TypeFacts text = Basic(2, 1);
  const TypeFacts pointer = Over(eTYPE_POINTER, text);
  TypeFacts function = Over(eTYPE_FUNCTION, result);
  AddMember(function, "", result, 0);
  AddMember(function, "", pointer, 0);
  EXPECT_EQ("long (*)(long,char *)", TypeOf(Over(eTYPE_POINTER, function)));
  EXPECT_EQ("(left out)", TypeOf(function));
}

TEST(SymbolName, MemberPointers) {
  const TypeFacts integer = Basic(6, 4);
  TypeFacts pointer = Over(eTYPE_MEMBER_POINTER, integer);
  pointer.m_sName = "Station::Sensor";
  EXPECT_EQ("long Station::Sensor::*", TypeOf(pointer));
}

TEST(SymbolName, ClassesAndEnumerations) {
  EXPECT_EQ("Station::Sensor", TypeOf(Class("Station::Sensor", 8)));
  EXPECT_EQ("<unnamed>", TypeOf(Class("", 8)));
  TypeFacts mode = Basic(0, 4);
  mode.m_eTag = eTYPE_ENUM;
  mode.m_sName = "Station::EMode";
  EXPECT_EQ("Station::EMode", TypeOf(mode));
}

TEST(SymbolName, SymbolsWhoseTypeIsNotKnownAreLeftOut) {
  VariableFacts facts;
  facts.m_pName = "variable";
  MSWindows::DebugSymbol symbol(nullptr, facts);
  EXPECT_FALSE(symbol.Read());
  TypeFacts nowhere;
  nowhere.m_eTag = eTYPE_POINTER;
  EXPECT_EQ("(left out)", TypeOf(nowhere));
  TypeFacts circle;
  circle.m_eTag = eTYPE_POINTER;
  circle.m_pOf = &circle;
  EXPECT_EQ("(left out)", TypeOf(circle));
}

TEST(SymbolName, ClassesThatOnlyTheirNameIsKnownOfAreLeftOut) {
  TypeFacts declared = Class("Declared", 0);
  declared.m_bComplete = false;
  EXPECT_EQ("(left out)", TypeOf(declared));
  EXPECT_EQ("Declared *", TypeOf(Over(eTYPE_POINTER, declared)));
}

TEST(SymbolName, TheErrorSystemsOwnArgumentsAreLeftOut) {
  const TypeFacts context = Class("Oxa::Core::CodeContext", 8);
  const TypeFacts error = Class("Oxa::Core::Error", 8);
  EXPECT_EQ("(left out)", TypeOf(context));
  EXPECT_EQ("(left out)", TypeOf(error));
  EXPECT_EQ("(left out)", TypeOf(Over(eTYPE_POINTER, error)));
  EXPECT_EQ("(left out)", TypeOf(Over(eTYPE_REFERENCE, error)));
  EXPECT_EQ("(left out)", TypeOf(Over(eTYPE_REFERENCE, context)));
  EXPECT_EQ("Oxa::Core::CodeContext *", TypeOf(Over(eTYPE_POINTER, context)));
  EXPECT_EQ("Oxa::Core::LogicError", TypeOf(Class("Oxa::Core::LogicError", 8)));
  EXPECT_EQ("Error", TypeOf(Class("Error", 8)));
}

TEST(SymbolName, ThisIsCheckedAgainstTheSameNames) {
  const std::uint64_t nothing = 0;
  const TypeFacts context = Class("Oxa::Core::CodeContext", 8);
  const TypeFacts other = Class("Oxa::Core::Lock", 8);
  const TypeFacts toContext = Over(eTYPE_POINTER, context);
  const TypeFacts toOther = Over(eTYPE_POINTER, other);
  Variable context_(toContext, "this");
  Variable other_(toOther, "this");
  EXPECT_EQ("(left out)", ValueOf(context_.At(&nothing)));
  EXPECT_EQ("0x0", ValueOf(other_.At(&nothing)));
}

TEST(SymbolName, TheSixStringStreamsAreLeftOut) {
  for (const char* const stream : {"stringstream", "istringstream", "ostringstream"})
    for (const std::string character : {"char", "wchar_t"}) {
      const std::string arguments =
          "<" + character + ",std::char_traits<" + character + ">,std::allocator<" + character + "> >";
      const TypeFacts type = Class(std::string("std::basic_") + stream + arguments, 8);
      EXPECT_EQ("(left out)", TypeOf(type)) << type.m_sName;
      EXPECT_EQ("(left out)", TypeOf(Over(eTYPE_REFERENCE, type))) << type.m_sName;
    }
  EXPECT_EQ("std::basic_ostream<char,std::char_traits<char> >",
            TypeOf(Class("std::basic_ostream<char,std::char_traits<char> >", 8)));
}

}  // namespace
