// The values of basic types and pointers, and the texts for what can't be read.
#include <Infrastructure/OxaCore/SystemTools.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "MadeUpFacts.h"

namespace {

using namespace OxaTest;

// Two pages, of which only the first can be read.
class Edge {
 public:
  Edge() : m_uPage(static_cast<std::size_t>(::sysconf(_SC_PAGESIZE))) {
    m_pPages = static_cast<char*>(
        ::mmap(nullptr, 2 * m_uPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    ::mprotect(m_pPages + m_uPage, m_uPage, PROT_NONE);
  }
  ~Edge() { ::munmap(m_pPages, 2 * m_uPage); }
  Edge(const Edge&) = delete;
  Edge& operator=(const Edge&) = delete;

  char* Before(std::size_t bytes) const { return m_pPages + m_uPage - bytes; }
  std::uint64_t Behind() const { return reinterpret_cast<std::uintptr_t>(m_pPages + m_uPage); }

 private:
  std::size_t m_uPage;
  char* m_pPages;
};

TEST(SymbolValue, Bool) {
  EXPECT_EQ("true", ValueOf(Basic(10, 1), true));
  EXPECT_EQ("false", ValueOf(Basic(10, 1), false));
  EXPECT_EQ("true", ValueOf(Basic(10, 1), static_cast<unsigned char>(2)));
}

TEST(SymbolValue, IntegersInDecimalByTheirSize) {
  EXPECT_EQ("-300", ValueOf(Basic(6, 2, true), std::int16_t(-300)));
  EXPECT_EQ("-100000", ValueOf(Basic(6, 4, true), std::int32_t(-100000)));
  EXPECT_EQ("-5000000000", ValueOf(Basic(6, 8, true), std::int64_t(-5000000000)));
  EXPECT_EQ("65236", ValueOf(Basic(7, 2), std::uint16_t(65236)));
  EXPECT_EQ("4294867296", ValueOf(Basic(7, 4), std::uint32_t(4294867296)));
  EXPECT_EQ("18446744073709551615", ValueOf(Basic(7, 8), ~std::uint64_t(0)));
  EXPECT_EQ("-7", ValueOf(Basic(13, 4, true), std::int32_t(-7)));
  EXPECT_EQ("-7", ValueOf(Basic(13, 8, true), std::int64_t(-7)));
  EXPECT_EQ("7", ValueOf(Basic(14, 8), std::uint64_t(7)));
}

TEST(SymbolValue, IntegersOfSixteenBytes) {
  const std::uint64_t number[] = {0, 0xffffffff00000000};
  EXPECT_EQ("-79228162514264337593543950336", ValueOf(Basic(6, 16, true), number));
  EXPECT_EQ("340282366841710300949110269838224261120", ValueOf(Basic(7, 16), number));
}

TEST(SymbolValue, Characters) {
  EXPECT_EQ("65 'A'", ValueOf(Basic(2, 1, true), 'A'));
  EXPECT_EQ("-61", ValueOf(Basic(2, 1, true), '\xc3'));
  EXPECT_EQ("10", ValueOf(Basic(2, 1, true), '\n'));
  EXPECT_EQ("87 'W'", ValueOf(Basic(3, 4, true), L'W'));
  EXPECT_EQ("228", ValueOf(Basic(3, 2), char16_t(0xe4)));
}

TEST(SymbolValue, FloatsBySize) {
  EXPECT_EQ("0.1", ValueOf(Basic(8, 4), 0.1F));
  EXPECT_EQ("0.1", ValueOf(Basic(8, 8), 0.1));
  EXPECT_EQ("-2.5e-300", ValueOf(Basic(8, 8), -2.5e-300));
  EXPECT_EQ("2.5", ValueOf(Basic(8, sizeof(long double)), 2.5L));
}

TEST(SymbolValue, TypesWithoutANaturalFormGetALabel) {
  const std::uint64_t raw = 0x1234abcd;
  EXPECT_EQ("BCD: 1234abcd", ValueOf(Basic(9, 8), raw));
  EXPECT_EQ("CURRENCY: 1234abcd", ValueOf(Basic(25, 8), raw));
  EXPECT_EQ("DATE: 1234abcd", ValueOf(Basic(26, 8), raw));
  EXPECT_EQ("COMPLEX: 1234abcd", ValueOf(Basic(28, 8), raw));
  EXPECT_EQ("BIT: cd", ValueOf(Basic(29, 1), raw));
  EXPECT_EQ("BIT: 0", ValueOf(Basic(29, 1), std::uint64_t(0)));
  const std::uint64_t both[] = {1, 2};
  EXPECT_EQ("COMPLEX: 20000000000000001", ValueOf(Basic(28, 16), both));
  const std::uint64_t four[] = {1, 2, 3, 4};
  EXPECT_EQ("COMPLEX: 4000000000000000300000000000000020000000000000001", ValueOf(Basic(28, 32), four));
}

TEST(SymbolValue, NumbersThatAreTooLongAreNotShownByHalf) {
  const std::uint64_t five[] = {1, 2, 3, 4, 5};
  EXPECT_EQ("{Failed to Determine Address}", ValueOf(Basic(6, 40, true), five));
  EXPECT_EQ("0x5000000000000000400000000000000030000000000000002", ValueOf(Basic(7, 32), five[1]));
}

TEST(SymbolValue, WhatHasNoFormAtAllIsHexadecimal) {
  const std::uint64_t raw = 0x1234abcd;
  EXPECT_EQ("0x1234abcd", ValueOf(Basic(0, 8), raw));
  EXPECT_EQ("0x1234abcd", ValueOf(Basic(27, 8), raw));
  EXPECT_EQ("0x1234abcd", ValueOf(Basic(255, 8), raw));
}

TEST(SymbolValue, ResultsAreHexadecimalWithTheSystemsText) {
  const std::uint32_t result = EACCES;
  EXPECT_EQ("d (" + MSWindows::GetWindowsErrorMessage(EACCES) + ")", ValueOf(Basic(31, 4, true), result));
  const std::uint32_t none = 0x80004005;
  EXPECT_EQ("80004005 (" + MSWindows::GetWindowsErrorMessage(0x80004005) + ")",
            ValueOf(Basic(31, 4, true), none));
}

TEST(SymbolValue, Pointers) {
  const TypeFacts integer = Basic(6, 4);
  EXPECT_EQ("0xabc", ValueOf(Over(eTYPE_POINTER, integer), std::uint64_t(0xabc)));
  EXPECT_EQ("0x0", ValueOf(Over(eTYPE_POINTER, integer), std::uint64_t(0)));
  EXPECT_EQ("0xffffffffffffffff", ValueOf(Over(eTYPE_POINTER, integer), ~std::uint64_t(0)));
}

class Texts : public testing::Test {
 protected:
  static std::string Shown(const void* text, int basic, std::uint64_t width) {
    const TypeFacts character = Basic(basic, width, true);
    const TypeFacts pointer = Over(eTYPE_POINTER, character);
    const std::string value = ValueOf(pointer, text);
    char address[32];
    std::snprintf(address, sizeof address, "0x%llx ",
                  static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(text)));
    EXPECT_EQ(address, value.substr(0, std::strlen(address)));
    return value.substr(std::min(value.size(), std::strlen(address)));
  }
  static std::string Shown(const char* text) { return Shown(text, 2, 1); }
  static std::string Shown(const wchar_t* text) { return Shown(text, 3, sizeof(wchar_t)); }
};

TEST_F(Texts, StandInDoubleQuotesBehindTheAddress) {
  EXPECT_EQ("\"hello\"", Shown("hello"));
  EXPECT_EQ("\"\"", Shown(""));
  EXPECT_EQ("\"hello\"", Shown(L"hello"));
  EXPECT_EQ("\"hello\"", Shown(u"hello", 3, 2));
}

TEST_F(Texts, AreCutAt256Characters) {
  const std::string whole(256, 'x');
  EXPECT_EQ("\"" + whole + "\"", Shown(whole.c_str()));
  EXPECT_EQ("\"" + whole + "\"...", Shown((whole + "y").c_str()));
  const std::wstring wide(300, L'x');
  EXPECT_EQ("\"" + whole + "\"...", Shown(wide.c_str()));
}

TEST_F(Texts, ThatCanNotBeRead) {
  EXPECT_EQ("\"????\"", Shown(static_cast<const char*>(nullptr)));
  EXPECT_EQ("\"????\"", Shown(reinterpret_cast<const char*>(8)));
  EXPECT_EQ("\"????\"", Shown(reinterpret_cast<const wchar_t*>(8)));
}

TEST_F(Texts, AtTheEdgeOfAPageShowWhatHalvingReaches) {
  const Edge edge;
  std::memset(edge.Before(100), 'x', 100);
  EXPECT_EQ("\"" + std::string(64, 'x') + "\"", Shown(edge.Before(100)));
  EXPECT_EQ("\"" + std::string(1, 'x') + "\"", Shown(edge.Before(1)));
  std::memset(edge.Before(200), 'y', 100);
  EXPECT_EQ("\"" + std::string(100, 'y') + std::string(28, 'x') + "\"", Shown(edge.Before(200)));
  EXPECT_EQ("\"????\"", Shown(reinterpret_cast<const char*>(edge.Behind())));
  std::memcpy(edge.Before(4), "abc", 4);
  EXPECT_EQ("\"abc\"", Shown(edge.Before(4)));
}

TEST_F(Texts, CanStandInXml) {
  EXPECT_EQ("\"a\\n\\r\\t\\x01\\x7f\"", Shown("a\n\r\t\x01\x7f"));
  EXPECT_EQ("\"\xc3\xa4 \\xc3 \\xff\"", Shown("\xc3\xa4 \xc3 \xff"));
  EXPECT_EQ("\"\\xed\\xa0\\x80 \\xc0\\x80 \\xef\\xbf\\xbf\"", Shown("\xed\xa0\x80 \xc0\x80 \xef\xbf\xbf"));
  EXPECT_EQ("\"\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80\\x01\"", Shown(L"\u00e4\u20ac\U0001f600\x01"));
  EXPECT_EQ("\"\xf0\x9f\x98\x80\\xd83d\"", Shown(u"\U0001f600\xd83d", 3, 2));
  const std::uint32_t none[] = {0x110000, 0xffffffff, 0};
  EXPECT_EQ("\"\\x110000\\xffffffff\"", Shown(none, 3, 4));
}

TEST_F(Texts, ABstrIsAPointerToWideCharacters) {
  const wchar_t* const text = L"wide";
  const std::string value = ValueOf(Basic(30, 8), text);
  EXPECT_EQ("\"wide\"", value.substr(value.find(' ') + 1));
  EXPECT_EQ("0x", value.substr(0, 2));
}

TEST(SymbolTrouble, UnreadableMemory) {
  const Edge edge;
  const TypeFacts integer = Basic(6, 4, true);
  EXPECT_EQ("{Uninitialized}", ValueAt(integer, edge.Behind()));
  EXPECT_EQ("{Uninitialized}", ValueAt(integer, edge.Behind() - 2));
  EXPECT_EQ("{Uninitialized}", ValueAt(Basic(10, 1), 8));
  EXPECT_EQ("{Uninitialized Pointer}", ValueAt(Over(eTYPE_POINTER, integer), edge.Behind()));
  EXPECT_EQ("{Uninitialized Pointer}", ValueAt(Over(eTYPE_POINTER, integer), edge.Behind() - 4));
  EXPECT_EQ("{Uninitialized Object}", ValueAt(Class("Sensor", 8), edge.Behind()));
  EXPECT_EQ("{Uninitialized Object}", ValueAt(ArrayOf(integer, 3), edge.Behind()));
  TypeFacts mode = Basic(0, 4);
  mode.m_eTag = eTYPE_ENUM;
  EXPECT_EQ("{Uninitialized}", ValueAt(mode, edge.Behind()));
}

TEST(SymbolTrouble, NoAddress) {
  const TypeFacts integer = Basic(6, 4, true);
  for (const TypeFacts& type : {integer, Over(eTYPE_POINTER, integer), Over(eTYPE_REFERENCE, integer),
                                ArrayOf(integer, 3), Class("Sensor", 8), Basic(30, 8)})
    EXPECT_EQ("{Failed to Determine Address}", ValueWithoutPlace(type)) << TypeOf(type);
}

TEST(SymbolTrouble, PiecesThatAreNotKnown) {
  const TypeFacts half = Basic(6, 2, true);
  TypeFacts both = Class("Both", 4);
  AddMember(both, "m_a", half, 0);
  AddMember(both, "m_b", half, 2);
  Variable variable(both);
  EXPECT_EQ("{short m_a = 5, short m_b = {Failed to Determine Address}}",
            ValueOf(variable.In({5, 0, 9, 0}, {1, 1, 0, 0})));
  Variable whole(half);
  EXPECT_EQ("{Failed to Determine Address}", ValueOf(whole.In({5, 0}, {1, 0})));
  Variable tooShort(both);
  EXPECT_EQ("{short m_a = 5, short m_b = {Failed to Determine Address}}",
            ValueOf(tooShort.In({5, 0}, {1, 1})));
}

TEST(SymbolValue, References) {
  const TypeFacts integer = Basic(6, 4, true);
  const TypeFacts reference = Over(eTYPE_REFERENCE, integer);
  const std::int32_t number = -9;
  EXPECT_EQ("-9", ValueOf(reference, &number));
  EXPECT_EQ("{Uninitialized}", ValueOf(reference, std::uint64_t(8)));
  EXPECT_EQ("{Uninitialized Pointer}", ValueAt(reference, 8));
  TypeFacts declared = Class("Declared", 0);
  declared.m_bComplete = false;
  EXPECT_EQ("0x10", ValueOf(Over(eTYPE_REFERENCE, declared), std::uint64_t(16)));
}

TEST(SymbolValue, Enumerations) {
  TypeFacts mode = Basic(0, 2);
  mode.m_eTag = eTYPE_ENUM;
  mode.m_bSigned = true;
  mode.m_enumerators = {{"eIDLE", 0}, {"eBROKEN", -1}};
  EXPECT_EQ("eIDLE", ValueOf(mode, std::int16_t(0)));
  EXPECT_EQ("eBROKEN", ValueOf(mode, std::int16_t(-1)));
  EXPECT_EQ("7", ValueOf(mode, std::int16_t(7)));
  mode.m_bSigned = false;
  EXPECT_EQ("65535", ValueOf(mode, std::int16_t(-1)));
}

}  // namespace
