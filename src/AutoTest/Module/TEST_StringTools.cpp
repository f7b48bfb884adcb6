#include "AutoTest/Module/TEST_StringTools.h"

#include <Infrastructure/OxaCore/StringTools.h>

#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

namespace {

using namespace StringTools;

using Texts = std::vector<std::string>;

std::string Escaped(std::string text) {
  Escape(text, ',');
  return text;
}

std::string UnEscaped(std::string text) {
  UnEscape(text, ',');
  return text;
}

// The bytes are the same in every locale.
TUnicodeStr Wide(const std::string& text) { return TUnicodeStr(text.begin(), text.end()); }

void CheckLines(const std::string& text, unsigned width, const std::string& expected) {
  OXA_TEST_ASSERT(LineBreaks(text, width) == expected);
  OXA_TEST_ASSERT(LineBreaks(Wide(text), width) == Wide(expected));
}

std::string ListText(const Texts& items) {
  std::string text = "what was there";
  Array2Str(items, ',', text);
  return text;
}

Texts ListOf(const std::string& text) {
  Texts items(1, "what was there");
  Str2Array(text, ',', items);
  return items;
}

void CheckByte(const std::string& text, int radix) {
  OXA_TEST_EQUALS(165, ToByte(text, radix));
  OXA_TEST_EQUALS(165, ToByte(Wide(text), radix));
}

void CheckLimitsOf32Bits() {
  for (const char* const text : {"0xffffffff", "037777777777", "4294967295", "4294967296"}) {
    OXA_TEST_ASSERT_MSG(ToUnsignedInt(text) == 4294967295U, text);
  }
  OXA_TEST_ASSERT(ToInt("-2147483648") == -2147483647 - 1);
  OXA_TEST_EQUALS(2147483647, ToInt("2147483648"));
}

void CheckFlags() {
  for (const char* const text : {"1", "T", "t", "TRUE", "True", "true"})
    OXA_TEST_ASSERT_MSG(ToBool(text), text);
  for (const char* const text : {"0", "false", "", "yes", "tRUE"}) OXA_TEST_ASSERT_MSG(!ToBool(text), text);
}

}  // namespace

TEST_StringTools::TEST_StringTools() : TestSuite("StringTools Tests") {
  AddTestMethods(*this, {{"TestTrimWS", &TEST_StringTools::TrimWS},
                         {"TestUpCase", &TEST_StringTools::UpCase},
                         {"TestDownCase", &TEST_StringTools::DownCase},
                         {"TestLineBreaks", &TEST_StringTools::LineBreaks},
                         {"TestEscape", &TEST_StringTools::Escape},
                         {"TestUnEscape", &TEST_StringTools::UnEscape},
                         {"TestArray2Str", &TEST_StringTools::Array2Str},
                         {"TestStr2Array", &TEST_StringTools::Str2Array},
                         {"TestConversion", &TEST_StringTools::Conversion},
                         {"TestSplitJoin", &TEST_StringTools::SplitJoin}});
}

void TEST_StringTools::TrimWS(std::string&) {
  OXA_TEST_ASSERT(StringTools::TrimWS("").empty());
  OXA_TEST_ASSERT(StringTools::TrimWS(" \r").empty());
  OXA_TEST_ASSERT(StringTools::TrimWS(" a ") == "a");
  OXA_TEST_ASSERT(StringTools::TrimWS(" syx\r95b") == "syx\r95b");
  OXA_TEST_ASSERT(TrimStart("\t a ") == "a ");
  OXA_TEST_ASSERT(TrimEnd(" a \n") == " a");
  OXA_TEST_ASSERT(StringTools::TrimWS(L" a\tb ") == L"a\tb");
}

// No "i" among what changes: there are languages with other ideas of its case.
void TEST_StringTools::UpCase(std::string&) {
  OXA_TEST_ASSERT(StringTools::UpCase("  *gI$n,9  g9G\t45rRrR  ") == "  *GI$N,9  G9G\t45RRRR  ");
  OXA_TEST_ASSERT(StringTools::UpCase("").empty());
  OXA_TEST_ASSERT(StringTools::UpCase(L"aZ[`{") == L"AZ[`{");
}

void TEST_StringTools::DownCase(std::string&) {
  OXA_TEST_ASSERT(StringTools::DownCase("  *gJ$N,9  g9G\t45rRrR  ") == "  *gj$n,9  g9g\t45rrrr  ");
  OXA_TEST_ASSERT(StringTools::DownCase("").empty());
  OXA_TEST_ASSERT(StringTools::DownCase(L"aZ[`{") == L"az[`{");
}

void TEST_StringTools::LineBreaks(std::string&) {
  CheckLines("This line is broken down into two word pairs", 11,
             "This line\nis broken\ndown into\ntwo word\npairs");
  CheckLines("This line breaks --><-- there, not!", 20, "This line breaks\n--><-- there, not!");
  for (unsigned width = 0; width <= 2; ++width) {
    CheckLines("This line\nis\tbroken into\rwords", width, "This\nline\nis\nbroken\ninto\nwords");
  }
  CheckLines("This line doesn't need breaks", 45, "This line doesn't need breaks");
  CheckLines("", 60, "");
  OXA_TEST_ASSERT(StringTools::LineBreaks("one two", 3, '|') == "one|two");
}

void TEST_StringTools::Escape(std::string&) {
  OXA_TEST_ASSERT(Escaped("").empty());
  OXA_TEST_ASSERT(Escaped("nothing to do") == "nothing to do");
  OXA_TEST_ASSERT(Escaped("a,b\\c") == "a\\,b\\\\c");
  OXA_TEST_ASSERT(Escaped(",,") == "\\,\\,");
}

void TEST_StringTools::UnEscape(std::string&) {
  OXA_TEST_ASSERT(UnEscaped("").empty());
  OXA_TEST_ASSERT(UnEscaped("a\\,b\\\\c") == "a,b\\c");
  OXA_TEST_ASSERT(UnEscaped("\\n\\;") == "n;");  // whatever stands behind the backslash
  OXA_TEST_ASSERT(UnEscaped("\\\\\\\\") == "\\\\");
}

void TEST_StringTools::Array2Str(std::string&) {
  OXA_TEST_ASSERT(ListText({}).empty());
  OXA_TEST_ASSERT(ListText({""}).empty());
  OXA_TEST_ASSERT(ListText({"1", "2,3", "\\"}) == "1,2\\,3,\\\\");
  OXA_TEST_ASSERT(ListText({"", ""}) == ",");
}

void TEST_StringTools::Str2Array(std::string&) {
  OXA_TEST_ASSERT(ListOf("").empty());
  OXA_TEST_ASSERT(ListOf("1,2\\,3,\\\\") == (Texts{"1", "2,3", "\\"}));
  OXA_TEST_ASSERT(ListOf("a\\\\,b") == (Texts{"a\\", "b"}));  // the backslash is escaped, the comma is not
  OXA_TEST_ASSERT(ListOf("1,") == (Texts{"1", ""}));
}

void TEST_StringTools::Conversion(std::string&) {
  for (const char* const text : {"165", "0xA5", "0xa5", "0245"}) CheckByte(text, 0);
  CheckByte("10100101", 2);
  CheckLimitsOf32Bits();
  OXA_TEST_EQUALS(-17, ToLong(" -17 degrees"));
  OXA_TEST_EQUALS(0, ToInt("none"));
  OXA_TEST_EQUALS(-1, ToShort("65535"));
  CheckFlags();
}

void TEST_StringTools::SplitJoin(std::string&) {
  Texts pieces(1, "what was there");
  OXA_TEST_EQUALS(3, Split("1->2- >3->4", "->", pieces));
  OXA_TEST_ASSERT(pieces == (Texts{"1", "2- >3", "4"}));
  OXA_TEST_ASSERT(Join(pieces, " => ") == "1 => 2- >3 => 4");
  OXA_TEST_EQUALS(2, Split("a/b", "/", pieces));
  OXA_TEST_EQUALS(2, Split("a/", "/", pieces));
  OXA_TEST_ASSERT(pieces == (Texts{"a", ""}));
  OXA_TEST_EQUALS(1, Split("whole", "/", pieces));
  OXA_TEST_ASSERT(Join(Texts(), ", ").empty());
}

}  // namespace Oxa::Core
