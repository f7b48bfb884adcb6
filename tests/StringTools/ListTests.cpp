#include <Infrastructure/OxaCore/StringTools.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

using namespace Oxa::Core;
using testing::ElementsAre;
using testing::IsEmpty;
using Texts = std::vector<std::string>;

Texts Pieces(const std::string& text, const std::string& delimiter) {
  Texts out = {"left", "over", "from", "before"};
  const int count = StringTools::Split(text, delimiter, out);
  EXPECT_EQ(count, static_cast<int>(out.size()));
  return out;
}

TEST(Split, AtAWholeDelimiter) {
  EXPECT_THAT(Pieces("a/b", "/"), ElementsAre("a", "b"));
  EXPECT_THAT(Pieces("1->2- >3->4", "->"), ElementsAre("1", "2- >3", "4"));
  EXPECT_THAT(Pieces("a-b>c", "->"), ElementsAre("a-b>c"));
}

TEST(Split, KeepsEmptyPieces) {
  EXPECT_THAT(Pieces("/a//b/", "/"), ElementsAre("", "a", "", "b", ""));
  EXPECT_THAT(Pieces("/", "/"), ElementsAre("", ""));
  EXPECT_THAT(Pieces("", "/"), ElementsAre(""));
  EXPECT_THAT(Pieces("aaa", "aa"), ElementsAre("", "a"));
}

TEST(Split, WithoutADelimiterAllIsOnePiece) {
  EXPECT_THAT(Pieces("abc", "/"), ElementsAre("abc"));
  EXPECT_THAT(Pieces("abc", ""), ElementsAre("abc"));
}

TEST(Split, ReplacesWhatWasThere) {
  Texts out(10, "a text that is long enough to live on the heap");
  EXPECT_EQ(2, StringTools::Split("a,another text that is long enough to live on the heap", ",", out));
  EXPECT_THAT(out, ElementsAre("a", "another text that is long enough to live on the heap"));
}

TEST(Split, Wide) {
  std::vector<TUnicodeStr> out(5, L"x");
  EXPECT_EQ(3, StringTools::Split(TUnicodeStr(L"a::b::"), TUnicodeStr(L"::"), out));
  EXPECT_THAT(out, ElementsAre(L"a", L"b", L""));
}

TEST(Split, WideAtOneCharacterAndAtNone) {
  std::vector<TUnicodeStr> out(5, L"x");
  EXPECT_EQ(3, StringTools::Split(TUnicodeStr(L"a/\x20AC/"), TUnicodeStr(L"/"), out));
  EXPECT_THAT(out, ElementsAre(L"a", L"\x20AC", L""));
  EXPECT_EQ(1, StringTools::Split(TUnicodeStr(L"a/b"), TUnicodeStr(L","), out));
  EXPECT_THAT(out, ElementsAre(L"a/b"));
  EXPECT_EQ(1, StringTools::Split(TUnicodeStr(L"a/b"), TUnicodeStr(L"->"), out));
  EXPECT_THAT(out, ElementsAre(L"a/b"));
  EXPECT_EQ(1, StringTools::Split(TUnicodeStr(L"a/b"), TUnicodeStr(), out));
  EXPECT_THAT(out, ElementsAre(L"a/b"));
  EXPECT_EQ(1, StringTools::Split(TUnicodeStr(), TUnicodeStr(L"/"), out));
  EXPECT_THAT(out, ElementsAre(L""));
}

TEST(Split, ZeroIsACharacterLikeAnyOther) {
  using namespace std::string_literals;
  EXPECT_THAT(Pieces("a\0b\0"s, "\0"s), ElementsAre("a", "b", ""));
  EXPECT_THAT(Pieces("a\0b/c"s, "/"), ElementsAre("a\0b"s, "c"));
  EXPECT_THAT(Pieces("a-\0b->c"s, "-\0"s), ElementsAre("a", "b->c"));
}

// Pieces "0", "1", ... and every third one empty.
template <class Text>
std::vector<Text> ManyPieces(std::size_t count) {
  std::vector<Text> pieces(count);
  for (std::size_t i = 0; i < count; ++i) {
    if (i % 3 == 2) continue;
    for (const char c : std::to_string(i)) pieces[i] += static_cast<typename Text::value_type>(c);
  }
  return pieces;
}

template <class Text>
void ExpectManyPieces(const Text& delimiter) {
  for (const std::size_t count : {15, 16, 17, 32, 33, 1000}) {
    const std::vector<Text> pieces = ManyPieces<Text>(count);
    const Text text = StringTools::Join(pieces, delimiter);
    for (const std::size_t before :
         {std::size_t{0}, std::size_t{1}, count - 1, count, count + 1, count + 40}) {
      std::vector<Text> out(before, Text(50, typename Text::value_type('x')));
      ASSERT_EQ(static_cast<int>(count), StringTools::Split(text, delimiter, out)) << before;
      ASSERT_EQ(pieces, out) << count << " pieces into " << before;
    }
  }
}

TEST(Split, IntoManyPieces) {
  ExpectManyPieces<std::string>("/");
  ExpectManyPieces<std::string>("->");
  ExpectManyPieces<TUnicodeStr>(L"/");
  ExpectManyPieces<TUnicodeStr>(L"->");
}

TEST(Join, PutsTheDelimiterBetween) {
  EXPECT_EQ("1 => 2- >3 => 4", StringTools::Join({"1", "2- >3", "4"}, " => "));
  EXPECT_EQ("one", StringTools::Join({"one"}, ", "));
  EXPECT_EQ("", StringTools::Join(Texts(), ", "));
  EXPECT_EQ(",", StringTools::Join({"", ""}, ","));
  EXPECT_EQ("ab", StringTools::Join({"a", "b"}, ""));
  EXPECT_EQ(L"a, b", StringTools::Join(std::vector<TUnicodeStr>{L"a", L"b"}, TUnicodeStr(L", ")));
  EXPECT_EQ(L"", StringTools::Join(std::vector<TUnicodeStr>(), TUnicodeStr(L", ")));
}

std::string Escaped(std::string text, char separator) {
  StringTools::Escape(text, separator);
  return text;
}

std::string Unescaped(std::string text, char separator) {
  StringTools::UnEscape(text, separator);
  return text;
}

TEST(Escape, SeparatorsAndBackslashes) {
  EXPECT_EQ("a\\,b\\\\c", Escaped("a,b\\c", ','));
  EXPECT_EQ("a,b", Escaped("a,b", ';'));
  EXPECT_EQ("", Escaped("", ','));
  EXPECT_EQ("\\\\", Escaped("\\", '\\'));
}

TEST(UnEscape, StepsOverTheCharacterBehind) {
  EXPECT_EQ("a,b\\c", Unescaped("a\\,b\\\\c", ','));
  EXPECT_EQ("a,b", Unescaped("a\\,b", ';')) << "the separator isn't looked at";
  EXPECT_EQ("nt", Unescaped("\\n\\t", ','));
  EXPECT_EQ("a", Unescaped("a\\", ',')) << "a lone backslash at the end goes";
  EXPECT_EQ("\\", Unescaped("\\\\", ','));
  EXPECT_EQ("", Unescaped("", ','));
}

std::string Array(const Texts& items, char separator = ',') {
  std::string out = "left over";
  StringTools::Array2Str(items, separator, out);
  return out;
}

Texts List(const std::string& text, char separator = ',') {
  Texts out = {"left over"};
  StringTools::Str2Array(text, separator, out);
  return out;
}

TEST(Array2Str, JoinsEscapedItems) {
  EXPECT_EQ("", Array({}));
  EXPECT_EQ("", Array({""}));
  EXPECT_EQ(",", Array({"", ""}));
  EXPECT_EQ("a,b\\,c,\\\\", Array({"a", "b,c", "\\"}));
  EXPECT_EQ("a;b,c", Array({"a", "b,c"}, ';'));
}

TEST(Array2Str, MayWriteIntoOneOfTheItems) {
  for (const std::size_t target : {0, 1, 2}) {
    Texts items = {"a", "b,c", "a text that is long enough to live on the heap"};
    StringTools::Array2Str(items, ',', items[target]);
    EXPECT_EQ("a,b\\,c,a text that is long enough to live on the heap", items[target]);
  }
}

TEST(Str2Array, CountsBackslashesBeforeASeparator) {
  EXPECT_THAT(List(""), IsEmpty());
  EXPECT_THAT(List("a"), ElementsAre("a"));
  EXPECT_THAT(List("a,b"), ElementsAre("a", "b"));
  EXPECT_THAT(List("a\\,b"), ElementsAre("a,b"));
  EXPECT_THAT(List("a\\\\,b"), ElementsAre("a\\", "b"));
  EXPECT_THAT(List("a\\\\\\,b"), ElementsAre("a\\,b"));
  EXPECT_THAT(List("a,"), ElementsAre("a", ""));
  EXPECT_THAT(List(","), ElementsAre("", ""));
  EXPECT_THAT(List(",,a"), ElementsAre("", "", "a"));
  EXPECT_THAT(List("a,b;c", ';'), ElementsAre("a,b", "c"));
}

TEST(Str2Array, ReadsBackWhatArray2StrWrote) {
  std::mt19937 random(2);
  for (int round = 0; round < 5000; ++round) {
    Texts items(1 + random() % 5);
    for (std::string& item : items) {
      for (auto i = random() % 8; i > 0; --i) item += "a,\\;"[random() % 4];
    }
    if (items == Texts{""}) continue;  // the one list that can't be told from the empty one
    ASSERT_EQ(items, List(Array(items))) << Array(items);
  }
}

}  // namespace
