#include <Infrastructure/OxaCore/StringTools.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <random>
#include <sstream>
#include <string>

namespace {

using namespace Oxa::Core;
using StringTools::LineBreaks;

TEST(LineBreaks, WordPairs) {
  EXPECT_EQ("This line\nis broken\ndown into\ntwo word\npairs",
            LineBreaks("This line is broken down into two word pairs", 11));
}

TEST(LineBreaks, BreaksAtTheLastSpaceThatFits) {
  EXPECT_EQ("This line breaks\n--><-- there, not!", LineBreaks("This line breaks --><-- there, not!", 20));
}

TEST(LineBreaks, WidthsBelowAWordBreakBehindEveryWord) {
  for (unsigned int width : {0u, 1u, 2u}) {
    EXPECT_EQ("This\nline\nis\nbroken\ninto\nwords", LineBreaks("This line\nis\tbroken into\rwords", width))
        << width;
  }
}

TEST(LineBreaks, WhatFitsStays) {
  EXPECT_EQ("This line doesn't need breaks", LineBreaks("This line doesn't need breaks", 45));
  EXPECT_EQ("a\nb", LineBreaks("a\nb", 3));
  EXPECT_EQ("a b", LineBreaks("a b", UINT_MAX));
}

TEST(LineBreaks, EmptyAndWhite) {
  EXPECT_EQ("", LineBreaks("", 60));
  EXPECT_EQ("", LineBreaks("   \t\n  ", 2));
  EXPECT_EQ("", LineBreaks("   \t\n  ", 60));
}

TEST(LineBreaks, TrimsEachLineButNotItsInside) {
  EXPECT_EQ("a  b\nc", LineBreaks("a  b   c", 5));
  EXPECT_EQ("a b", LineBreaks("  a b  ", 60));
}

TEST(LineBreaks, ABreakInTheTextIsTheOneBreak) {
  EXPECT_EQ("one two\nthree", LineBreaks("one two\nthree", 8));
}

TEST(LineBreaks, SpaceAtTheWidthItselfFits) { EXPECT_EQ("abc\ndef", LineBreaks("abc def", 3)); }

TEST(LineBreaks, LeadingSpaceCanBecomeAnEmptyLine) { EXPECT_EQ("\nabcdef", LineBreaks("  abcdef", 2)); }

TEST(LineBreaks, OneLeadingSpaceBeforeALongWordGoes) {
  EXPECT_EQ("abcdef", LineBreaks(" abcdef", 3));
  EXPECT_EQ(L"abcdef", LineBreaks(TUnicodeStr(L" abcdef"), 3));
}

TEST(LineBreaks, TrailingSpaceGetsNoBreak) { EXPECT_EQ("abc", LineBreaks("abc   ", 3)); }

TEST(LineBreaks, OwnBreakCharacter) { EXPECT_EQ("ab|cd", LineBreaks("ab cd", 2, '|')); }

TEST(LineBreaks, Wide) {
  EXPECT_EQ(L"ab\ncd", LineBreaks(TUnicodeStr(L"ab cd"), 2));
  EXPECT_EQ(L"ab|cd", LineBreaks(TUnicodeStr(L"ab cd"), 2, L'|'));
}

// No word is lost or cut, and a line is too long only if it is one word.
TEST(LineBreaks, KeepsAllWordsAndTheWidth) {
  std::mt19937 random(1);
  for (int round = 0; round < 2000; ++round) {
    std::string text;
    for (int i = 0; i < 60; ++i) text += "ab \t\ncd"[random() % 7];
    const auto width = static_cast<unsigned int>(random() % 20);
    const std::string broken = LineBreaks(text, width, '|');
    std::string unbroken = broken;
    std::replace(unbroken.begin(), unbroken.end(), '|', ' ');
    std::istringstream before(text), after(unbroken), lines(broken);
    for (std::string a, b; before >> a;) {
      ASSERT_TRUE(after >> b);
      ASSERT_EQ(a, b);
    }
    std::string rest;
    ASSERT_FALSE(after >> rest);
    for (std::string line; std::getline(lines, line, '|');) {
      if (line.size() > std::max(width, 1u)) {
        ASSERT_EQ(std::string::npos, line.find_first_of(" \t\n")) << broken;
      }
    }
  }
}

}  // namespace
