// The layout of the pretty printer, to the byte: tags, attributes and texts.
#include <Infrastructure/OxaCore/XMLFormatter.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "XML/XMLTestSupport.h"

using namespace XMLTest;

namespace {

// <a>, a text of `size` characters, </a>.
std::string ElementWithText(std::size_t size) {
  Pretty doc;
  doc.out << doc.writer.StartTag("a") << doc.writer.Text(Times(size, 'x')) << doc.writer.EndTag();
  return doc.Text();
}

// An element whose one attribute makes the start tag, without ">", `width` columns wide.
std::string TagOfWidth(std::size_t width) {
  Pretty doc;
  Map map;
  map["n"] = Times(width - 8, 'v');  // <t, blank, n=", quote and blank
  doc.out << doc.writer.Tag("t", map);
  return doc.Text();
}

// Counts the flushes of what is written to it.
class CountingBuffer : public std::stringbuf {
 public:
  int flushes = 0;

 protected:
  int sync() override {
    ++flushes;
    return 0;
  }
};

}  // namespace

// --- Where texts and end tags go

TEST(PrettyPrint, OneColumnFewerLeavesTheTextOnTheStartTagsLine) {
  Pretty wide, narrow;
  for (Pretty* doc : {&wide, &narrow}) {
    doc->out << doc->writer.StartTag("Test") << doc->writer.StartTag("TagWithAttributes", TwoAttributes())
             << doc->writer.Text(doc == &wide ? "1 < 2" : "1 <2") << doc->writer.EndAllTags();
  }
  EXPECT_EQ(
      "<Test>\n"
      "  <TagWithAttributes name1=\"value1\" name2=\"value2\" >\n"
      "    1 &lt; 2\n"
      "  </TagWithAttributes>\n"
      "</Test>\n",
      wide.Text());
  EXPECT_EQ(
      "<Test>\n"
      "  <TagWithAttributes name1=\"value1\" name2=\"value2\" >1 &lt;2</TagWithAttributes>\n"
      "</Test>\n",
      narrow.Text());
}

TEST(PrettyPrint, ShortElementStaysOnOneLine) {
  Pretty doc;
  doc.out << doc.writer.StartTag("a") << doc.writer.Text("text") << doc.writer.EndTag();
  EXPECT_EQ("<a>text</a>\n", doc.Text());
}

TEST(PrettyPrint, StartTagThenEndTagStaysOnOneLine) {
  Pretty doc;
  doc.out << doc.writer.StartTag("x") << doc.writer.EndTag();
  EXPECT_EQ("<x></x>\n", doc.Text());
}

TEST(PrettyPrint, TagWithContentStaysOnOneLine) {
  Pretty doc;
  doc.out << doc.writer.StartTag("r") << doc.writer.Tag("a", "1 > 0")
          << doc.writer.Tag("b", TwoAttributes(), "t") << doc.writer.EndTag();
  EXPECT_EQ(
      "<r>\n"
      "  <a>1 &gt; 0</a>\n"
      "  <b name1=\"value1\" name2=\"value2\" >t</b>\n"
      "</r>\n",
      doc.Text());
}

TEST(PrettyPrint, TextFitsBelowEightyColumnsWithItsEndTag) {
  EXPECT_EQ("<a>" + Times(72, 'x') + "</a>\n", ElementWithText(72));
  EXPECT_EQ("<a>\n  " + Times(73, 'x') + "\n</a>\n", ElementWithText(73));
}

TEST(PrettyPrint, EscapedLengthCounts) {
  Pretty doc;
  doc.out << doc.writer.Tag("a", Times(68, 'x') + "&") << doc.writer.Tag("a", Times(67, 'x') + "&");
  EXPECT_EQ("<a>\n  " + Times(68, 'x') + "&amp;\n</a>\n<a>" + Times(67, 'x') + "&amp;</a>\n", doc.Text());
}

TEST(PrettyPrint, LineIsEndedBehindATextThatReachesColumnEighty) {
  EXPECT_EQ("<a>\n  " + Times(77, 'x') + "\n</a>\n", ElementWithText(77));
  Pretty open, closed;
  open.out << open.writer.Text(Times(79, 'x')) << open.writer.Text("y");
  EXPECT_EQ(Times(79, 'x') + "y\n", open.Text());
  closed.out << closed.writer.Text(Times(80, 'x')) << closed.writer.Text("y");
  EXPECT_EQ(Times(80, 'x') + "\ny", closed.Text());
}

// The end tag has a comparison of its own, which counts the line of the start tag.
TEST(PrettyPrint, EndTagStaysBelowEightyColumnsOnTheStartTagsLine) {
  for (const std::size_t width : {75u, 76u}) {
    const std::string value = Times(width - 9, 'v');
    Pretty doc;
    doc.out << doc.writer.StartTag("t") << doc.writer.Attribute("n", value) << doc.writer.EndTag();
    const std::string tag = "<t n=\"" + value + "\" >";
    ASSERT_EQ(width, tag.size());
    EXPECT_EQ(tag + (width == 75 ? "" : "\n") + "</t>\n", doc.Text());
  }
}

TEST(PrettyPrint, FirstTextWithoutAnyStartTagStaysOnTheLine) {
  Pretty doc;
  doc.out << doc.writer.Text("a") << doc.writer.Text(Times(70, 'b')) << doc.writer.Text(Times(70, 'c'))
          << doc.writer.Text("d");
  EXPECT_EQ("a" + Times(70, 'b') + Times(70, 'c') + "\nd", doc.Text());
}

TEST(PrettyPrint, TextsOfOneElementShareALine) {
  Pretty doc;
  doc.out << doc.writer.StartTag("r") << doc.writer.Tag("e", "") << doc.writer.Text("one")
          << doc.writer.Text("two") << doc.writer.EndTag();
  EXPECT_EQ("<r>\n  <e/>\n  onetwo\n</r>\n", doc.Text());
}

// The element that was started last counts, though it has ended.
TEST(PrettyPrint, EndedElementStillTellsWhereATextFits) {
  const std::string name = Times(60, 'n');
  Pretty doc;
  doc.out << doc.writer.StartTag("a") << doc.writer.StartTag(name) << doc.writer.EndTag()
          << doc.writer.Text(Times(10, 'x')) << doc.writer.Text(Times(4, 'y'))
          << doc.writer.Text(Times(1, 'z')) << doc.writer.EndTag();
  EXPECT_EQ("<a>\n  <" + name + ">\n  </" + name + ">\n  xxxxxxxxxxyyyy\n  z\n</a>\n", doc.Text());
}

TEST(PrettyPrint, TextWithLineFeedsIsLaidOutLineByLine) {
  Pretty doc;
  doc.out << doc.writer.StartTag("a") << doc.writer.Text("  one \n\ttwo & more\r\n\nend")
          << doc.writer.EndTag();
  EXPECT_EQ("<a>\n  one\n  two &amp; more\n  \n  end\n</a>\n", doc.Text());
}

TEST(PrettyPrint, LineFeedAtTheEndOfATextHasAnEmptyLineBehind) {
  Pretty doc;
  doc.out << doc.writer.StartTag("a") << doc.writer.Text("one\n") << doc.writer.EndTag();
  EXPECT_EQ("<a>\n  one\n  \n</a>\n", doc.Text());
}

TEST(PrettyPrint, TextWithoutLineFeedIsNotTrimmed) {
  Pretty doc;
  doc.out << doc.writer.Tag("a", "  t\t");
  EXPECT_EQ("<a>  t\t</a>\n", doc.Text());
}

TEST(PrettyPrint, EntityReferenceGoesWhereATextWould) {
  Pretty doc;
  doc.out << doc.writer.EntityReference("one") << doc.writer.StartTag("a")
          << doc.writer.EntityReference("two") << doc.writer.Text("t") << doc.writer.EndTag()
          << doc.writer.StartTag("b") << doc.writer.EntityReference(Times(71, 'x')) << doc.writer.EndTag()
          << doc.writer.StartTag("c") << doc.writer.EntityReference(Times(78, 'x')) << doc.writer.EndTag();
  EXPECT_EQ(
      "&one;\n<a>&two;t</a>\n<b>\n  &" + Times(71, 'x') + ";\n</b>\n<c>\n  &" + Times(78, 'x') + ";\n</c>\n",
      doc.Text());
}

TEST(PrettyPrint, TextStreamHasABlankLineInFront) {
  std::istringstream text("  1 < 2 \n\nlast");
  Pretty doc;
  doc.out << doc.writer.StartTag("a") << doc.writer.Text(text) << doc.writer.EndTag();
  EXPECT_EQ("<a>\n\n  1 &lt; 2\n  \n  last\n</a>\n", doc.Text());
}

TEST(PrettyPrint, TextStreamAtTheStartOfALine) {
  std::istringstream text("t\n"), none("");
  Pretty doc;
  doc.out << doc.writer.Text(text) << doc.writer.Text(none);
  EXPECT_EQ("\nt\n\n", doc.Text());
}

// White space is what the C library calls so: also vertical tabs and form feeds.
TEST(PrettyPrint, LinesLoseEveryKindOfWhiteSpaceAroundThem) {
  const std::string space = " \t\r\v\f";
  std::istringstream stream(space + "s t" + space);
  Pretty doc;
  doc.out << doc.writer.Text(space + "one" + space + "\n" + space + "t w o" + space)
          << doc.writer.Text(stream);
  EXPECT_EQ("one\nt w o\n\ns t\n", doc.Text());
}

TEST(PrettyPrint, TextInLinesAtTheStartOfALineHasNoBlankLineInFront) {
  Pretty doc;
  doc.out << doc.writer.StartTag("a") << doc.writer.Tag("e", "") << doc.writer.Text("one\ntwo")
          << doc.writer.EndTag();
  EXPECT_EQ("<a>\n  <e/>\n  one\n  two\n</a>\n", doc.Text());
}

TEST(PrettyPrint, LineIsEndedBehindAReferenceThatReachesColumnEighty) {
  Pretty doc;
  doc.out << doc.writer.EntityReference(Times(78, 'v')) << doc.writer.EntityReference("y");
  EXPECT_EQ("&" + Times(78, 'v') + ";\n&y;", doc.Text());
}

// The name of an empty element doesn't count when a text is placed.
TEST(PrettyPrint, EmptyElementIsNotRemembered) {
  Pretty doc;
  doc.out << doc.writer.StartTag("a") << doc.writer.Tag(Times(60, 'v'), "") << doc.writer.Text(Times(10, 'x'))
          << doc.writer.Text(Times(10, 'y')) << doc.writer.EndTag();
  EXPECT_EQ("<a>\n  <" + Times(60, 'v') + "/>\n  " + Times(10, 'x') + Times(10, 'y') + "\n</a>\n",
            doc.Text());
}

// --- Levels

TEST(PrettyPrint, EveryLevelIndentsByTwoBlanks) {
  Pretty doc;
  for (int level = 0; level < 12; ++level) doc.out << doc.writer.StartTag("e");
  doc.out << doc.writer.Text("t") << doc.writer.EndAllTags();
  std::string expected;
  for (std::size_t level = 0; level < 11; ++level) expected += Times(2 * level, ' ') + "<e>\n";
  expected += Times(22, ' ') + "<e>t</e>\n";
  for (std::size_t level = 11; level-- > 0;) expected += Times(2 * level, ' ') + "</e>\n";
  EXPECT_EQ(expected, doc.Text());
}

TEST(PrettyPrint, SurplusEndTagsOfTheFormatterStayAtTheMargin) {
  std::ostringstream out;
  const auto formatter = XMLFormatter::CreatePrettyPrint();
  formatter->FormatEndTag(out, "a");
  formatter->FormatText(out, "t");
  formatter->FormatEndTag(out, "b");
  formatter->FormatStartTag(out, "c", Map(), false);
  formatter->FormatEndTag(out, "c");
  formatter->FormatEndTag(out, "d");
  EXPECT_EQ("</a>\nt</b>\n<c></c>\n</d>\n", out.str());
}

TEST(PrettyPrint, StartOfADocumentStartsTheLayoutAnew) {
  Pretty doc;
  doc.out << doc.writer.StartTag("a") << doc.writer.StartTag("b") << doc.writer.Text("t")
          << doc.writer.StartDocA("1.0", "UTF-8", true, false);
  EXPECT_EQ("<a>\n  <b>t<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n", doc.Text());
  doc.out.str("");
  // No level is left, and no start tag is remembered: the end tags follow each other at the margin.
  doc.out << doc.writer.Text("u") << doc.writer.EndTag() << doc.writer.EndTag();
  EXPECT_EQ("u</b>\n</a>\n", doc.Text());
}

TEST(PrettyPrint, StartOfADocumentForgetsTheLastStartTag) {
  Pretty doc;
  doc.out << doc.writer.StartTag("a") << doc.writer.Text("t")
          << doc.writer.StartDocA("1.0", "UTF-8", false, false);
  doc.out.str("");
  doc.out << doc.writer.Text(Times(70, 'v')) << doc.writer.Text(Times(9, 'v'));
  EXPECT_EQ(Times(79, 'v'), doc.Text());
}

TEST(PrettyPrint, StartOfADocumentIsAtTheStartOfALineAfterwards) {
  Pretty doc;
  doc.out << doc.writer.Text("t") << doc.writer.StartDocA() << doc.writer.Tag("b", "");
  EXPECT_EQ("t<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<b/>\n", doc.Text());
}

// --- Attributes

TEST(PrettyPrint, AttributesThatReachColumnEightyStayOnTheLine) {
  const std::string fits = TagOfWidth(80);
  EXPECT_EQ("<t n=\"" + Times(72, 'v') + "\" />\n", fits);
}

TEST(PrettyPrint, AttributesBeyondColumnEightyGoOneToALine) {
  Map map;
  map["first"] = Times(40, 'v');
  map["second"] = Times(20, 'w');
  map["third"] = "x";
  Pretty doc;
  doc.out << doc.writer.StartTag("r") << doc.writer.Tag("name", map) << doc.writer.EndTag();
  EXPECT_EQ(
      "<r>\n"
      "  <name first=\"" +
          Times(40, 'v') +
          "\" \n"
          "        second=\"" +
          Times(20, 'w') +
          "\" \n"
          "        third=\"x\" />\n"
          "</r>\n",
      doc.Text());
}

TEST(PrettyPrint, AttributesBreakBeyondColumnEighty) {
  for (const std::size_t size : {66u, 67u}) {
    Map map;
    map["a"] = "1";
    map["b"] = Times(size, 'v');
    Pretty doc;
    doc.out << doc.writer.Tag("t", map);
    const std::string between = size == 66 ? "" : "\n   ";
    EXPECT_EQ("<t a=\"1\" " + between + "b=\"" + Times(size, 'v') + "\" />\n", doc.Text());
  }
}

TEST(PrettyPrint, AttributesInsertedOneByOneGiveTheSame) {
  Pretty doc;
  doc.out << doc.writer.StartTag("r") << doc.writer.StartTag("TagWithAttributes")
          << doc.writer.Attribute("name1", "value1") << doc.writer.Attribute("name2", "value2")
          << doc.writer.EndAllTags();
  EXPECT_EQ("<r>\n  <TagWithAttributes name1=\"value1\" name2=\"value2\" ></TagWithAttributes>\n</r>\n",
            doc.Text());
}

TEST(PrettyPrint, OneAttributeTooWideFollowsTheName) {
  EXPECT_EQ("<t n=\"" + Times(73, 'v') + "\" />\n", TagOfWidth(81));
}

TEST(PrettyPrint, EndTagOfAStartTagInLinesStandsAlone) {
  Map map;
  map["a"] = Times(60, 'v');
  map["b"] = Times(60, 'w');
  Pretty doc;
  doc.out << doc.writer.StartTag("t", map) << doc.writer.Text("x") << doc.writer.EndTag();
  EXPECT_EQ("<t a=\"" + Times(60, 'v') +
                "\" \n"
                "   b=\"" +
                Times(60, 'w') +
                "\" >x\n"
                "</t>\n",
            doc.Text());
}

// The column behind attributes in lines is the one of the last line.
TEST(PrettyPrint, TextBehindAttributesInLinesIsMeasuredFromTheLastLine) {
  Map map;
  map["a"] = Times(60, 'v');
  map["b"] = Times(57, 'w');  // the last line has 3 + 62 columns, the tag ends in 66
  Pretty fits, wide;
  fits.out << fits.writer.StartTag("t", map) << fits.writer.Text(Times(9, 'x'));
  wide.out << wide.writer.StartTag("t", map) << wide.writer.Text(Times(10, 'x'));
  const std::string tag = "<t a=\"" + Times(60, 'v') + "\" \n   b=\"" + Times(57, 'w') + "\" >";
  EXPECT_EQ(tag + Times(9, 'x'), fits.Text());
  EXPECT_EQ(tag + "\n  " + Times(10, 'x'), wide.Text());
}

// --- The stream

TEST(PrettyPrint, EveryLineEndFlushes) {
  CountingBuffer buffer;
  std::ostream out(&buffer);
  XMLWriter writer;
  WriteExample(writer, out);
  EXPECT_EQ(sPRETTY_EXAMPLE, buffer.str());
  EXPECT_EQ(11, buffer.flushes);
}
