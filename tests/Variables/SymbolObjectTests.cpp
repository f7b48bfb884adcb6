// Objects, arrays and strings.
#include <gtest/gtest.h>

#include <algorithm>
#include <list>

#include "MadeUpFacts.h"

namespace {

using namespace OxaTest;

const TypeFacts s_integer = Basic(6, 4, true);

TEST(SymbolObject, BaseClassesComeFirst) {
  const std::int32_t values[] = {1, 2, 3};
  TypeFacts base = Class("Base", 4);
  AddMember(base, "m_base", s_integer, 0);
  TypeFacts derived = Class("Derived", 12);
  AddBase(derived, base, 0);
  AddMember(derived, "m_one", s_integer, 4);
  AddMember(derived, "m_two", s_integer, 8);
  EXPECT_EQ("{Base {long m_base = 1}, long m_one = 2, long m_two = 3}", ValueOf(derived, values));
}

TEST(SymbolObject, TheTableOfVirtualFunctionsIsSkipped) {
  const std::int32_t values[] = {1, 2, 3};
  TypeFacts type = Class("Sensor", 12);
  AddMember(type, "__vfptr", s_integer, 0);
  AddMember(type, "_vptr.Sensor", s_integer, 4);
  type.m_members.back().m_bTable = true;
  AddMember(type, "m_iValue", s_integer, 8);
  EXPECT_EQ("{long m_iValue = 3}", ValueOf(type, values));
}

TEST(SymbolObject, WithoutMembers) { EXPECT_EQ("{}", ValueOf(Class("Empty", 1), 'x')); }

TEST(SymbolObject, MembersAreFollowedToADepthOfThree) {
  const std::int32_t value = 7;
  TypeFacts four = Class("Four", 4);
  AddMember(four, "m_value", s_integer, 0);
  TypeFacts three = Class("Three", 4);
  AddMember(three, "m_four", four, 0);
  TypeFacts two = Class("Two", 4);
  AddMember(two, "m_three", three, 0);
  TypeFacts one = Class("One", 4);
  AddMember(one, "m_two", two, 0);
  EXPECT_EQ("{long m_value = 7}", ValueOf(four, value));
  EXPECT_EQ("{Three m_three = {Four m_four = {long m_value = 7}}}", ValueOf(two, value));
  EXPECT_EQ("{Two m_two = {Three m_three = {Four m_four = {...}}}}", ValueOf(one, value));
}

TEST(SymbolObject, BaseClassesDoNotCountAsDepth) {
  const std::int32_t value = 7;
  std::list<TypeFacts> classes{Class("Root", 4)};
  AddMember(classes.back(), "m_value", s_integer, 0);
  for (int level = 0; level < 5; ++level) {
    const TypeFacts& base = classes.back();
    classes.push_back(Class("Level", 4));
    AddBase(classes.back(), base, 0);
  }
  EXPECT_EQ("{Level {Level {Level {Level {Root {long m_value = 7}}}}}}", ValueOf(classes.back(), value));
}

TEST(SymbolObject, ThatIsItsOwnBaseEnds) {
  const std::int32_t value = 7;
  TypeFacts type = Class("Circle", 4);
  AddBase(type, type, 0);
  const std::string text = ValueOf(type, value);
  EXPECT_NE(std::string::npos, text.find("Circle {...}")) << text;
  EXPECT_GT(1000U, text.size());
}

TEST(SymbolObject, WithManyMembersIsCut) {
  const std::vector<std::int32_t> values(300, 5);
  TypeFacts type = Class("Wide", 1200);
  for (std::uint64_t at = 0; at < 300; ++at) AddMember(type, "m", s_integer, at * 4);
  Variable variable(type);
  const std::string text = ValueOf(variable.At(values.data()));
  EXPECT_EQ("{long m = 5, ", text.substr(0, 13));
  EXPECT_EQ("long m = 5, ...}", text.substr(text.size() - 16));
  EXPECT_EQ(200, std::count(text.begin(), text.end(), '='));
}

TEST(SymbolObject, LeavesOutMembersAsVariablesAreLeftOut) {
  const std::int32_t values[] = {1, 2, 3, 4};
  const TypeFacts error = Class("Oxa::Core::Error", 4);
  const TypeFacts stream =
      Class("std::basic_stringstream<char,std::char_traits<char>,std::allocator<char> >", 4);
  TypeFacts type = Class("Owner", 16);
  AddMember(type, "m_error", error, 0);
  AddMember(type, "m_stream", stream, 4);
  AddMember(type, "m_unknown", s_integer, 8);
  type.m_members.back().m_pType = nullptr;
  AddMember(type, "m_last", s_integer, 12);
  EXPECT_EQ("{long m_last = 4}", ValueOf(type, values));
}

TEST(SymbolObject, BitFields) {
  const std::uint32_t word = 5U | 17U << 3 | 13U << 8;
  const TypeFacts bare = Basic(7, 4);
  const TypeFacts flag = Basic(10, 1);
  TypeFacts type = Class("Bits", 4);
  const auto add = [&](const char* name, const TypeFacts& of, unsigned offset, unsigned size) {
    AddMember(type, name, of, offset / 8);
    type.m_members.back().m_uBitOffset = offset % 8;
    type.m_members.back().m_uBitSize = size;
  };
  add("m_a", bare, 0, 3);
  add("m_b", bare, 3, 5);
  add("m_c", s_integer, 8, 4);
  add("m_bSet", flag, 0, 1);
  add("m_bNot", flag, 1, 1);
  EXPECT_EQ(
      "{unsigned long m_a = 5, unsigned long m_b = 17, long m_c = -3, bool m_bSet = true, bool m_bNot = "
      "false}",
      ValueOf(type, word));
}

TEST(SymbolObject, BitFieldsThatLieInNineBytes) {
  unsigned char bytes[16] = {0xc0, 1, 2, 3, 4, 5, 6, 7, 0x2b};
  const TypeFacts wide = Basic(14, 8);
  TypeFacts type = Class("Bits", 16);
  AddMember(type, "m_wide", wide, 0);
  type.m_members.back().m_uBitOffset = 6;
  type.m_members.back().m_uBitSize = 60;
  EXPECT_EQ("{unsigned long m_wide = 872598902250670087}", ValueOf(type, bytes));
}

TEST(SymbolObject, BitFieldsOfAWholeWord) {
  const std::uint64_t word = 0xFEDCBA9876543210;
  const TypeFacts wide = Basic(14, 8);
  TypeFacts type = Class("Bits", 8);
  AddMember(type, "m_wide", wide, 0);
  type.m_members.back().m_uBitSize = 64;
  EXPECT_EQ("{unsigned long m_wide = 18364758544493064720}", ValueOf(type, word));
  type.m_members.back().m_uBitSize = 63;
  EXPECT_EQ("{unsigned long m_wide = 9141386507638288912}", ValueOf(type, word));
}

TEST(SymbolObject, VirtualBasesAreFoundInTheObject) {
  struct Object {
    std::uint64_t distance;
    std::int32_t value;
  } const object = {8, 42};
  TypeFacts base = Class("Base", 4);
  AddMember(base, "m_value", s_integer, 0);
  TypeFacts type = Class("Derived", 16);
  AddBase(type, base, 0);
  type.m_members.back().m_locate = [](const void*, MemoryReader& memory, std::uint64_t at,
                                      std::uint64_t& address) {
    std::uint64_t distance = 0;
    const bool good = memory.Read(at, &distance, sizeof distance);
    address = at + distance;
    return good;
  };
  EXPECT_EQ("{Base {long m_value = 42}}", ValueOf(type, object));
  type.m_members.back().m_locate = [](const void*, MemoryReader&, std::uint64_t, std::uint64_t&) {
    return false;
  };
  EXPECT_EQ("{Base {Failed to Determine Address}}", ValueOf(type, object));
}

TEST(SymbolObject, MembersAreLookedUpWhenTheyAreNeeded) {
  const std::int32_t value = 7;
  TypeFacts type = Class("Late", 4);
  type.m_complete = [](TypeFacts& late) {
    late.m_complete = nullptr;
    AddMember(late, "m_value", s_integer, 0);
  };
  EXPECT_EQ("Late *", TypeOf(Over(eTYPE_POINTER, type)));
  EXPECT_TRUE(type.m_members.empty());
  EXPECT_EQ("{long m_value = 7}", ValueOf(type, value));
}

TEST(SymbolObject, KeepsItsChildren) {
  const std::int32_t values[] = {1, 2};
  TypeFacts type = Class("Pair", 8);
  AddMember(type, "m_first", s_integer, 0);
  AddMember(type, "m_second", s_integer, 4);
  type.m_uIndex = 77;
  Variable variable(type, "pair");
  MSWindows::DebugSymbol symbol(nullptr, variable.At(values).Facts());
  ASSERT_TRUE(symbol.Read());
  EXPECT_EQ("pair", symbol.GetName());
  EXPECT_EQ("Pair", symbol.GetTypeName());
  EXPECT_EQ(8U, symbol.GetSize());
  EXPECT_EQ(77U, symbol.GetTypeIndex());
  EXPECT_EQ(eTYPE_CLASS, symbol.GetTag());
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(values), symbol.GetAddress());
  ASSERT_EQ(2U, symbol.GetChildren().size());
  EXPECT_EQ("m_second", symbol.GetChildren()[1]->GetName());
  EXPECT_EQ("2", symbol.GetChildren()[1]->GetValue());
}

TEST(SymbolArray, ShowsSixteenElements) {
  std::int16_t values[20] = {};
  for (int at = 0; at < 20; ++at) values[at] = static_cast<std::int16_t>(at);
  const TypeFacts element = Basic(6, 2, true);
  EXPECT_EQ("{0, 1, 2}", ValueOf(ArrayOf(element, 3), values));
  EXPECT_EQ("{}", ValueOf(ArrayOf(element, 0), values));
  EXPECT_EQ("{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, ...}",
            ValueOf(ArrayOf(element, 20), values));
  EXPECT_EQ("{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}", ValueOf(ArrayOf(element, 16), values));
  const TypeFacts row = ArrayOf(element, 2);
  EXPECT_EQ("{{0, 1}, {2, 3}}", ValueOf(ArrayOf(row, 2), values));
}

TEST(SymbolArray, OfCharactersIsAText) {
  const TypeFacts character = Basic(2, 1, true);
  const TypeFacts wide = Basic(3, 4, true);
  EXPECT_EQ("\"hello\"", ValueOf(ArrayOf(character, 16), "hello\0xxxxxxxxxx"));
  EXPECT_EQ("\"hel\"", ValueOf(ArrayOf(character, 3), "hello"));
  EXPECT_EQ("\"hello\"", ValueOf(ArrayOf(wide, 6), L"hello"));
  const std::string longer(300, 'x');
  const TypeFacts most = ArrayOf(character, 256);
  EXPECT_EQ("\"" + std::string(256, 'x') + "\"",
            ValueAt(most, reinterpret_cast<std::uintptr_t>(longer.data())));
  const TypeFacts many = ArrayOf(character, 300);
  EXPECT_EQ("\"" + std::string(256, 'x') + "\"...",
            ValueAt(many, reinterpret_cast<std::uintptr_t>(longer.data())));
  EXPECT_EQ("{Uninitialized Object}", ValueAt(many, 8));
}

TEST(SymbolArray, OfUnknownLengthIsAnAddress) {
  TypeFacts unknown = ArrayOf(s_integer, 0);
  unknown.m_iCount = -1;
  EXPECT_EQ("0x10", ValueAt(unknown, 16));
}

class Strings : public testing::Test {
 protected:
  Strings() : m_type(Class("std::basic_string<char,std::char_traits<char>,std::allocator<char> >", 32)) {
    m_type.m_eString = eSTRING_WITH_LENGTH;
  }

  std::string Shown(const void* text, std::uint64_t length) {
    const std::uint64_t object[4] = {reinterpret_cast<std::uintptr_t>(text), length, 0, 0};
    return ValueOf(m_type, object);
  }

  TypeFacts m_type;
};

TEST_F(Strings, ArePrintedAsStrings) {
  EXPECT_EQ("\"hello\"", ValueOf(m_type, std::string("hello")));
  EXPECT_EQ("\"\"", ValueOf(m_type, std::string()));
  EXPECT_EQ("\"a\\x00b\"", ValueOf(m_type, std::string("a\0b", 3)));
  EXPECT_EQ("\"" + std::string(256, 'x') + "\"", ValueOf(m_type, std::string(256, 'x')));
  EXPECT_EQ("\"" + std::string(256, 'x') + "\"...", ValueOf(m_type, std::string(257, 'x')));
}

TEST_F(Strings, OfWideCharacters) {
  m_type.m_uCharacter = sizeof(wchar_t);
  EXPECT_EQ("\"hello\"", ValueOf(m_type, std::wstring(L"hello")));
  m_type.m_uCharacter = 2;
  EXPECT_EQ("\"hello\"", ValueOf(m_type, std::u16string(u"hello")));
}

TEST_F(Strings, OfTheOlderFormHaveTheirLengthInFront) {
  struct {
    std::uint64_t length;
    std::uint64_t capacity;
    std::uint64_t uses;
    char text[8];
  } const held = {5, 7, 0, "hello"};
  m_type.m_eString = eSTRING_COUNTED;
  m_type.m_uSize = 8;
  EXPECT_EQ("\"hello\"", ValueOf(m_type, reinterpret_cast<std::uintptr_t>(held.text)));
  EXPECT_EQ("{Uninitialized Object}", ValueOf(m_type, std::uint64_t(64)));
}

TEST_F(Strings, ThatWereNeverBuilt) {
  EXPECT_EQ("\"????\"", Shown(nullptr, 5));
  EXPECT_EQ("\"????\"", Shown(nullptr, ~std::uint64_t(0)));
  EXPECT_EQ("\"\"", Shown(nullptr, 0));
  EXPECT_EQ("{Uninitialized Object}", ValueAt(m_type, 8));
  EXPECT_EQ("{Failed to Determine Address}", ValueWithoutPlace(m_type));
}

TEST(SymbolFrame, TakesNameValueAndTypeOfEachVariable) {
  const std::int32_t first = 1;
  const std::int32_t second = 2;
  MSWindows::FrameVariables frame;
  Variable one(s_integer, "one");
  Variable two(s_integer, "two");
  const TypeFacts error = Class("Oxa::Core::Error", 4);
  Variable left(error, "error");
  MSWindows::TakeVariable(&frame, one.At(&first).Facts());
  MSWindows::TakeVariable(&frame, left.At(&first).Facts());
  MSWindows::TakeVariable(&frame, two.At(&second).Facts());
  Variable again(s_integer, "one");
  MSWindows::TakeVariable(&frame, again.At(&second).Facts());
  const Oxa::Core::AlertData expected = {{"one", "1"}, {"two", "2"}};
  EXPECT_EQ(expected, frame.m_variables);
  EXPECT_EQ("one: long; two: long", frame.m_sTypes);
}

}  // namespace
