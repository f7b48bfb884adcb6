// What becomes of the streams that texts are taken from: their ends, their failures and their state.
#include <gtest/gtest.h>

#include <algorithm>
#include <istream>
#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

#include "XML/XMLTestSupport.h"

using namespace XMLTest;

namespace {

struct SourceGone {};

// Gives a text, in pieces of `piece` characters, and then ends or throws.
class PieceBuffer : public std::streambuf {
 public:
  PieceBuffer(const std::string& text, std::size_t piece, bool throws)
      : m_sText(text), m_uPiece(piece), m_bThrows(throws) {}

 protected:
  int_type underflow() override {
    if (gptr() != egptr()) return traits_type::to_int_type(*gptr());
    if (m_uAt == m_sText.size() && m_bThrows) throw SourceGone();
    if (m_uAt == m_sText.size()) return traits_type::eof();
    char* const begin = &m_sText[m_uAt];
    m_uAt += std::min(m_uPiece, m_sText.size() - m_uAt);
    setg(begin, begin, m_sText.data() + m_uAt);
    return traits_type::to_int_type(*begin);
  }

 private:
  std::string m_sText;
  std::size_t m_uPiece;
  bool m_bThrows;
  std::size_t m_uAt = 0;
};

enum class Kind { eTEXT, eMARKUP, eCDATA, ePRESERVED };

void Read(XMLFormatter& formatter, std::ostream& out, Kind kind, std::istream& in) {
  switch (kind) {
    case Kind::eTEXT:
      return formatter.FormatTextStream(out, in);
    case Kind::eMARKUP:
      return formatter.FormatMarkupStream(out, in);
    case Kind::eCDATA:
      return formatter.FormatCDATAStream(out, in, false);
    case Kind::ePRESERVED:
      return formatter.FormatCDATAStream(out, in, true);
  }
}

struct Case {
  Kind kind;
  bool pretty;
  const char* text;
  const char* ofText;
  const char* ofNothing;  // each with <x/> behind
};

constexpr char sTEXT[] = "a<\nb";

const Case s_cases[] = {
    {Kind::eTEXT, false, sTEXT, "a&lt;\nb<x/>", "<x/>"},
    {Kind::eMARKUP, false, sTEXT, "a<\nb<x/>", "<x/>"},
    {Kind::eCDATA, false, sTEXT, "<![CDATA[a<\nb]]><x/>", "<![CDATA[]]><x/>"},
    {Kind::ePRESERVED, false, sTEXT, "<![CDATA[a<\nb]]><x/>", "<![CDATA[]]><x/>"},
    {Kind::eTEXT, true, sTEXT, "\na&lt;\nb\n<x/>\n", "\n<x/>\n"},
    {Kind::eMARKUP, true, sTEXT, "<x/>\n", "<x/>\n"},  // none
    {Kind::eMARKUP, true, "<a>b</a >", "<a>b</a>\n<x/>\n", "<x/>\n"},
    {Kind::eMARKUP, true, "<a><b/>", "<a>\n  <b/>\n  <x/>\n", "<x/>\n"},  // broken
    {Kind::eCDATA, true, sTEXT, "\n\n<![CDATA[\n  a<b\n]]>\n\n<x/>\n", "\n\n<![CDATA[\n]]>\n\n<x/>\n"},
    {Kind::ePRESERVED, true, sTEXT, "\n\n<![CDATA[a<\nb]]>\n\n<x/>\n", "\n\n<![CDATA[]]>\n\n<x/>\n"},
};

// What is written of `in`, with an empty tag behind it, which shows whether the column is right.
std::string Written(const Case& tried, std::istream& in) {
  std::ostringstream out;
  const auto formatter = tried.pretty ? XMLFormatter::CreatePrettyPrint() : XMLFormatter::CreateCompact();
  EXPECT_NO_THROW(Read(*formatter, out, tried.kind, in));
  formatter->FormatStartTag(out, "x", Map(), true);
  return out.str();
}

constexpr auto eALL_STATES = std::ios::badbit | std::ios::failbit | std::ios::eofbit;

}  // namespace

TEST(XMLSource, IsReadToItsEndWhateverItsPieces) {
  for (const Case& tried : s_cases) {
    for (std::size_t piece = 1; piece < 6; ++piece) {
      PieceBuffer buffer(tried.text, piece, false);
      std::istream in(&buffer);
      EXPECT_EQ(tried.ofText, Written(tried, in)) << piece;
      EXPECT_EQ(std::ios::eofbit, in.rdstate());
    }
  }
}

TEST(XMLSource, WhatItGaveBeforeItThrewIsWrittenAndClosed) {
  for (const Case& tried : s_cases) {
    for (std::size_t piece = 1; piece < 6; ++piece) {
      PieceBuffer buffer(tried.text, piece, true);
      std::istream in(&buffer);
      EXPECT_EQ(tried.ofText, Written(tried, in)) << piece;
      EXPECT_EQ(std::ios::badbit, in.rdstate());
    }
  }
}

TEST(XMLSource, OneThatThrowsAtOnceGivesNothing) {
  for (const Case& tried : s_cases) {
    PieceBuffer buffer("", 1, true);
    std::istream in(&buffer);
    EXPECT_EQ(tried.ofNothing, Written(tried, in));
    EXPECT_EQ(std::ios::badbit, in.rdstate());
  }
}

TEST(XMLSource, ExceptionMaskIsNotHeeded) {
  for (const Case& tried : s_cases) {
    for (const bool throws : {false, true}) {
      PieceBuffer buffer(tried.text, 2, throws);
      std::istream in(&buffer);
      in.exceptions(eALL_STATES);
      EXPECT_EQ(tried.ofText, Written(tried, in));
      EXPECT_EQ(throws ? std::ios::badbit : std::ios::eofbit, in.rdstate());
      EXPECT_EQ(eALL_STATES, in.exceptions());
    }
  }
}

TEST(XMLSource, OneThatIsNotGoodGivesNothingAndStaysAsItIs) {
  for (const Case& tried : s_cases) {
    for (const auto state : {std::ios::failbit, std::ios::badbit, std::ios::eofbit}) {
      std::istringstream in(tried.text);
      in.setstate(state);
      EXPECT_EQ(tried.ofNothing, Written(tried, in));
      EXPECT_EQ(state, in.rdstate());
      in.clear();
      EXPECT_EQ(tried.text[0], in.peek());
    }
  }
}

TEST(XMLSource, EmptyOneIsAtItsEndAfterwards) {
  for (const Case& tried : s_cases) {
    std::istringstream in("");
    EXPECT_EQ(tried.ofNothing, Written(tried, in));
    EXPECT_EQ(std::ios::eofbit, in.rdstate());
  }
}

TEST(XMLSource, WithoutABufferGivesNothing) {
  for (const Case& tried : s_cases) {
    std::istream in(nullptr);
    EXPECT_EQ(tried.ofNothing, Written(tried, in));
    EXPECT_EQ(std::ios::badbit, in.rdstate());
  }
}

TEST(XMLSource, LongOneThatThrowsIsWrittenWhole) {
  const std::string text = Times(10000, 'x') + "<";
  for (const std::size_t piece : {1u, 4095u, 4096u, 4097u, 20000u}) {
    PieceBuffer forText(text, piece, true), forData(text, piece, true);
    std::istream first(&forText), second(&forData);
    Compact doc;
    doc.out << doc.writer.Text(first) << doc.writer.CDATASection(second);
    EXPECT_EQ(Times(10000, 'x') + "&lt;<![CDATA[" + text + "]]>", doc.Text()) << piece;
  }
}

// The manipulator copies its arguments, but not what a stream holds.
TEST(XMLSource, SecondInsertionFindsNothingMore) {
  std::istringstream in("t");
  Compact doc;
  const XMLWriter::Manipulator data = doc.writer.CDATASection(in);
  doc.out << data << data;
  EXPECT_EQ("<![CDATA[t]]><![CDATA[]]>", doc.Text());
}
