#include <Infrastructure/OxaCore/StringTools.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace Oxa::Core;

TEST(Trim, BothEnds) {
  EXPECT_EQ("", StringTools::TrimWS(""));
  EXPECT_EQ("", StringTools::TrimWS(" \r"));
  EXPECT_EQ("a", StringTools::TrimWS(" a "));
  EXPECT_EQ("a", StringTools::TrimWS("a"));
  EXPECT_EQ("syx\r95b", StringTools::TrimWS(" syx\r95b"));
  EXPECT_EQ("x", StringTools::TrimWS(" \t\n\v\f\rx\r\f\v\n\t "));
}

TEST(Trim, OneEnd) {
  EXPECT_EQ("a b ", StringTools::TrimStart(" \ta b "));
  EXPECT_EQ(" a b", StringTools::TrimEnd(" a b\n "));
  EXPECT_EQ("", StringTools::TrimStart(" \n"));
  EXPECT_EQ("", StringTools::TrimEnd(" \n"));
  EXPECT_EQ("", StringTools::TrimStart(""));
  EXPECT_EQ("", StringTools::TrimEnd(""));
}

TEST(Trim, BytesAbove127AndNulsAreNoSpace) {
  EXPECT_EQ("\xB5", StringTools::TrimWS(" \xB5 "));
  EXPECT_EQ("\xB5 a", StringTools::TrimWS("\xB5 a "));
  EXPECT_EQ("a \xB5", StringTools::TrimWS(" a \xB5"));
  const std::string withNul(" \0 ", 3);
  EXPECT_EQ(std::string("\0", 1), StringTools::TrimWS(withNul));
}

TEST(Trim, Wide) {
  EXPECT_EQ(L"a", StringTools::TrimWS(TUnicodeStr(L" \ta\r\n")));
  EXPECT_EQ(L"a ", StringTools::TrimStart(TUnicodeStr(L" a ")));
  EXPECT_EQ(L" a", StringTools::TrimEnd(TUnicodeStr(L" a ")));
  EXPECT_EQ(L"", StringTools::TrimWS(TUnicodeStr(L" \t")));
}

TEST(Trim, LeavesItsArgumentAlone) {
  const std::string text = " a ";
  StringTools::TrimWS(text);
  StringTools::UpCase(text);
  EXPECT_EQ(" a ", text);
}

TEST(Case, UpCase) {
  EXPECT_EQ("  *GI$N,9  G9G\t45RRRR  ", StringTools::UpCase("  *gI$n,9  g9G\t45rRrR  "));
  EXPECT_EQ(L"  *GI$N,9  G9G\t45RRRR  ", StringTools::UpCase(TUnicodeStr(L"  *gI$n,9  g9G\t45rRrR  ")));
  EXPECT_EQ("", StringTools::UpCase(""));
}

TEST(Case, DownCase) {
  EXPECT_EQ("  *gi$n,9  g9g\t45rrrr  ", StringTools::DownCase("  *gI$n,9  g9G\t45rRrR  "));
  EXPECT_EQ(L"  *gi$n,9  g9g\t45rrrr  ", StringTools::DownCase(TUnicodeStr(L"  *gI$n,9  g9G\t45rRrR  ")));
}

TEST(Case, BytesAbove127Stay) {
  EXPECT_EQ(
      "\xB5"
      "A",
      StringTools::UpCase("\xB5"
                          "a"));
  EXPECT_EQ(
      "\xD6"
      "a",
      StringTools::DownCase("\xD6"
                            "A"));
}

}  // namespace
