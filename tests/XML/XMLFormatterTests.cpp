// The compact formatter, escaping, and the filter that escapes a stream.
#include <Infrastructure/OxaCore/XMLFormatter.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <boost/iostreams/copy.hpp>
#include <boost/iostreams/filtering_stream.hpp>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "XML/XMLTestSupport.h"

using namespace XMLTest;
using Filter = Oxa::Core::XMLTranscodeFilter<std::string>;

namespace {

// A source that gives a text in small pieces, and now and then nothing.
class TricklingSource {
 public:
  using char_type = char;
  using category = boost::iostreams::source_tag;

  TricklingSource(const std::string& text, std::streamsize piece) : m_sText(text), m_iPiece(piece) {}

  std::streamsize read(char* out, std::streamsize size) {
    if (m_uAt == m_sText.size()) return -1;
    const auto count = m_sText.copy(out, static_cast<std::size_t>(std::min(size, m_iPiece)), m_uAt);
    m_uAt += count;
    return static_cast<std::streamsize>(count);
  }

 private:
  std::string m_sText;
  std::streamsize m_iPiece;
  std::size_t m_uAt = 0;
};

// What the filter makes of `text`, read `size` characters at a time.
std::string Filtered(const std::string& text, std::streamsize size, std::streamsize piece) {
  TricklingSource source(text, piece);
  Filter filter;
  std::string result;
  std::vector<char> chunk(static_cast<std::size_t>(size));
  while (true) {
    const std::streamsize got = filter.read(source, chunk.data(), size);
    if (got < 0) return result;
    result.append(chunk.data(), static_cast<std::size_t>(got));
  }
}

// A source that gives, at each call, what the next of its answers says: a text or a code.
class AnsweringSource {
 public:
  using char_type = char;
  using category = boost::iostreams::source_tag;

  struct Answer {
    std::string text;
    std::streamsize code;  // without a text
  };

  explicit AnsweringSource(const std::vector<Answer>& answers) : m_answers(answers) {}

  std::streamsize read(char* out, std::streamsize size) {
    if (m_uNext == m_answers.size()) return -1;
    const Answer& answer = m_answers[m_uNext++];
    if (answer.text.empty()) return answer.code;
    return static_cast<std::streamsize>(answer.text.copy(out, static_cast<std::size_t>(size)));
  }

 private:
  std::vector<Answer> m_answers;
  std::size_t m_uNext = 0;
};

std::string EscapedByCharacter(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c == '<')
      result += "&lt;";
    else if (c == '>')
      result += "&gt;";
    else if (c == '&')
      result += "&amp;";
    else if (c == '\'')
      result += "&apos;";
    else if (c == '"')
      result += "&quot;";
    else
      result += c;
  }
  return result;
}

}  // namespace

// --- Escaping

TEST(XMLEscape, ReplacesExactlyFiveCharacters) {
  EXPECT_EQ("&lt;", XMLFormatter::Escape("<"));
  EXPECT_EQ("&gt;", XMLFormatter::Escape(">"));
  EXPECT_EQ("&amp;", XMLFormatter::Escape("&"));
  EXPECT_EQ("&apos;", XMLFormatter::Escape("'"));
  EXPECT_EQ("&quot;", XMLFormatter::Escape("\""));
}

TEST(XMLEscape, EveryByteAtEveryPlace) {
  for (int c = 0; c < 256; ++c) {
    for (std::size_t place = 0; place < 20; ++place) {
      std::string text(20, 'x');
      text[place] = static_cast<char>(c);
      ASSERT_EQ(EscapedByCharacter(text), XMLFormatter::Escape(text)) << c << " at " << place;
    }
  }
}

TEST(XMLEscape, RandomTexts) {
  std::mt19937 random(1);
  for (int round = 0; round < 2000; ++round) {
    std::string text(random() % 100, ' ');
    for (char& c : text) c = "<>&'\"abcdefghijklmnopqrstu\0\n\xff"[random() % 29];
    ASSERT_EQ(EscapedByCharacter(text), XMLFormatter::Escape(text));
  }
}

TEST(XMLEscape, TextWithoutTheFiveIsReturnedAsItStands) {
  for (const std::string text : {"", "plain", "\x01\t\n\xb5\xff"})
    EXPECT_EQ(text, XMLFormatter::Escape(text));
}

// --- The compact formatter

TEST(CompactFormatter, Declaration) {
  std::ostringstream out;
  XMLFormatter::CreateCompact()->FormatStartDoc(out, "1.0", "UTF-8", false);
  EXPECT_EQ("<?xml version=\"1.0\" encoding=\"UTF-8\"?>", out.str());
  out.str("");
  XMLFormatter::CreateCompact()->FormatStartDoc(out, "1.1", "X", true);
  EXPECT_EQ("<?xml version=\"1.1\" encoding=\"X\" standalone=\"yes\"?>", out.str());
}

TEST(CompactFormatter, Tags) {
  std::ostringstream out;
  const auto formatter = XMLFormatter::CreateCompact();
  formatter->FormatStartTag(out, "a", Map(), false);
  formatter->FormatStartTag(out, "b", TwoAttributes(), false);
  formatter->FormatStartTag(out, "c", Map(), true);
  formatter->FormatStartTag(out, "d", TwoAttributes(), true);
  formatter->FormatEndTag(out, "a");
  EXPECT_EQ("<a><b name1=\"value1\" name2=\"value2\"><c/><d name1=\"value1\" name2=\"value2\"/></a>",
            out.str());
}

TEST(CompactFormatter, ContentOfEveryKind) {
  std::istringstream text("<t>"), markup("<m/>"), data("<d>");
  std::ostringstream out;
  const auto formatter = XMLFormatter::CreateCompact();
  formatter->FormatTextStream(out, text);
  formatter->FormatText(out, "1 & 2");
  formatter->FormatProcessingInstruction(out, "go", "now", true);
  formatter->FormatMarkupStream(out, markup);
  formatter->FormatMarkup(out, "<n/>");
  formatter->FormatComment(out, " c\n", false);
  formatter->FormatCDATAStream(out, data, false);
  formatter->FormatCDATA(out, "<e>", false);
  formatter->FormatEntityReference(out, "&f;");
  EXPECT_EQ("&lt;t&gt;1 &amp; 2<?go now?><m/><n/><!-- c\n--><![CDATA[<d>]]><![CDATA[<e>]]>&f;", out.str());
}

TEST(CompactFormatter, PreserveMeansNothing) {
  std::ostringstream with, without;
  for (const bool preserve : {false, true}) {
    std::istringstream data(" a \n b");
    std::ostringstream& out = preserve ? with : without;
    const auto formatter = XMLFormatter::CreateCompact();
    formatter->FormatProcessingInstruction(out, "go", " a \n b", preserve);
    formatter->FormatComment(out, " a \n b", preserve);
    formatter->FormatCDATAStream(out, data, preserve);
    formatter->FormatCDATA(out, " a \n b", preserve);
  }
  EXPECT_EQ("<?go  a \n b?><!-- a \n b--><![CDATA[ a \n b]]><![CDATA[ a \n b]]>", with.str());
  EXPECT_EQ(with.str(), without.str());
}

TEST(CompactFormatter, StyleSheetAndTag) {
  std::ostringstream out;
  const auto formatter = XMLFormatter::CreateCompact();
  formatter->FormatStyleSheet(out, "s.xsl", "text/xsl");
  formatter->FormatTag(out, "a", TwoAttributes(), "");
  formatter->FormatTag(out, "b", Map(), "t<");
  EXPECT_EQ(
      "<?xml-stylesheet type=\"text/xsl\"\nhref=\"s.xsl\"?>"
      "<a name1=\"value1\" name2=\"value2\"/><b>t&lt;</b>",
      out.str());
}

// --- The filter

TEST(XMLTranscodeFilter, EscapesWhateverTheSizesOfThePieces) {
  const std::string text = "<<a>>&'\"b&&&&c";
  for (std::streamsize size = 1; size < 40; ++size)
    for (std::streamsize piece = 1; piece < 20; ++piece)
      ASSERT_EQ(EscapedByCharacter(text), Filtered(text, size, piece)) << size << " " << piece;
}

TEST(XMLTranscodeFilter, EmptySourceGivesTheEndAtOnce) { EXPECT_EQ("", Filtered("", 10, 1)); }

TEST(XMLTranscodeFilter, WorksInAChain) {
  std::string text;
  for (int i = 0; i < 5000; ++i) text += "some <text> & more '" + std::to_string(i) + "\" ";
  std::istringstream source(text);
  boost::iostreams::filtering_istream escaped;
  escaped.push(Filter());
  escaped.push(source);
  std::ostringstream out;
  boost::iostreams::copy(escaped, out);
  EXPECT_EQ(EscapedByCharacter(text), out.str());
}

TEST(XMLTranscodeFilter, ClosingForgetsWhatWaits) {
  TricklingSource source("<x", 10);
  Filter filter;
  char first = 0;
  ASSERT_EQ(1, filter.read(source, &first, 1));
  filter.close(source);
  char rest[10];
  ASSERT_EQ(1, filter.read(source, rest, 10));
  EXPECT_EQ('x', rest[0]);
}

TEST(XMLTranscodeFilter, SourceThatWouldBlockIsNoEnd) {
  const std::streamsize wouldBlock = boost::iostreams::WOULD_BLOCK;
  for (const std::streamsize nothing : {wouldBlock, std::streamsize{0}}) {
    AnsweringSource source({{"", nothing}, {"a<", 0}, {"", nothing}, {"b", 0}});
    Filter filter;
    char out[20];
    EXPECT_EQ(nothing, filter.read(source, out, 20));
    ASSERT_EQ(5, filter.read(source, out, 20));
    EXPECT_EQ("a&lt;", std::string(out, 5));
    ASSERT_EQ(1, filter.read(source, out, 20));
    EXPECT_EQ('b', out[0]);
    EXPECT_EQ(-1, filter.read(source, out, 20));
  }
}

// What waits is given before the source is asked again.
TEST(XMLTranscodeFilter, WhatWaitsIsGivenWhileTheSourceWouldBlock) {
  AnsweringSource source({{"<", 0}, {"", boost::iostreams::WOULD_BLOCK}, {"x", 0}});
  Filter filter;
  char out[20];
  ASSERT_EQ(2, filter.read(source, out, 2));
  EXPECT_EQ("&l", std::string(out, 2));
  ASSERT_EQ(2, filter.read(source, out, 20));
  EXPECT_EQ("t;", std::string(out, 2));
  ASSERT_EQ(1, filter.read(source, out, 20));
  EXPECT_EQ('x', out[0]);
}

TEST(XMLTranscodeFilter, WideText) {
  Oxa::Core::XMLTranscodeFilter<std::wstring> filter;
  std::wistringstream source(L"a<b");
  wchar_t out[10];
  const std::streamsize got = filter.read(*source.rdbuf(), out, 10);
  EXPECT_EQ(L"a&lt;b", std::wstring(out, static_cast<std::size_t>(got)));
}
