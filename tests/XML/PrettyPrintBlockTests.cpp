// The layout of the pretty printer, to the byte: comments, processing instructions and CDATA sections.
#include <Infrastructure/OxaCore/XMLFormatter.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "XML/XMLTestSupport.h"

using namespace XMLTest;

namespace {

std::string Comment(const std::string& text, bool preserve) {
  std::ostringstream out;
  XMLFormatter::CreatePrettyPrint()->FormatComment(out, text, preserve);
  return out.str();
}

std::string CData(const std::string& text, bool preserve) {
  std::ostringstream out;
  XMLFormatter::CreatePrettyPrint()->FormatCDATA(out, text, preserve);
  return out.str();
}

std::string CDataStream(const std::string& text, bool preserve) {
  std::istringstream in(text);
  std::ostringstream out;
  XMLFormatter::CreatePrettyPrint()->FormatCDATAStream(out, in, preserve);
  return out.str();
}

}  // namespace

// --- Comments

TEST(PrettyPrintBlock, ShortComment) {
  EXPECT_EQ("<!-- c -->\n", Comment("c", false));
  EXPECT_EQ("<!-- c -->\n", Comment("c", true));
}

TEST(PrettyPrintBlock, EmptyComment) { EXPECT_EQ("<!--  -->\n", Comment("", false)); }

TEST(PrettyPrintBlock, CommentOfEightyColumnsFits) {
  EXPECT_EQ("<!-- " + Times(71, 'c') + " -->\n", Comment(Times(71, 'c'), false));
}

TEST(PrettyPrintBlock, CommentBeyondEightyColumnsHasLinesOfItsOwn) {
  const std::string expected = "<!-- \n  " + Times(72, 'c') + "\n -->\n";
  EXPECT_EQ(expected, Comment(Times(72, 'c'), false));
  EXPECT_EQ(expected, Comment(Times(72, 'c'), true));
}

TEST(PrettyPrintBlock, CommentInLines) {
  EXPECT_EQ("<!-- \n  one\n  \n  two\n -->\n", Comment(" one\t\n\n  two", false));
}

TEST(PrettyPrintBlock, PreservedCommentKeepsItsLines) {
  EXPECT_EQ("<!--  one\t\n\n  two -->\n", Comment(" one\t\n\n  two", true));
}

TEST(PrettyPrintBlock, LongPreservedCommentKeepsItsLinesOnLinesOfItsOwn) {
  const std::string text = Times(60, 'v') + "\n  " + Times(20, 'v');
  EXPECT_EQ("<!-- \n  " + text + "\n -->\n", Comment(text, true));
}

TEST(PrettyPrintBlock, CommentInALevel) {
  Pretty doc;
  doc.out << doc.writer.StartTag("r") << doc.writer.StartTag("s") << doc.writer.Comment("a\nb")
          << doc.writer.Comment(Times(68, 'c')) << doc.writer.Comment(Times(67, 'd'))
          << doc.writer.EndAllTags();
  EXPECT_EQ(
      "<r>\n"
      "  <s>\n"
      "    <!-- \n"
      "      a\n"
      "      b\n"
      "     -->\n"
      "\n"
      "    <!-- \n"
      "      " +
          Times(68, 'c') +
          "\n"
          "     -->\n"
          "\n"
          "    <!-- " +
          Times(67, 'd') +
          " -->\n"
          "  </s>\n"
          "</r>\n",
      doc.Text());
}

TEST(PrettyPrintBlock, CommentsAtTheMarginFollowEachOther) {
  Pretty doc;
  doc.out << doc.writer.Comment("a") << doc.writer.Comment("b");
  EXPECT_EQ("<!-- a -->\n<!-- b -->\n", doc.Text());
}

// --- Processing instructions

TEST(PrettyPrintBlock, StyleSheet) {
  Pretty doc;
  doc.out << doc.writer.StartDocA() << doc.writer.StyleSheet("alerts.xsl", "text/xsl")
          << doc.writer.Tag("a", "");
  EXPECT_EQ(
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<?xml-stylesheet \n"
      "  type=\"text/xsl\"\n"
      "  href=\"alerts.xsl\"\n"
      "?>\n"
      "<a/>\n",
      doc.Text());
}

TEST(PrettyPrintBlock, ProcessingInstruction) {
  std::ostringstream out;
  const auto formatter = XMLFormatter::CreatePrettyPrint();
  formatter->FormatProcessingInstruction(out, "go", "now", false);
  formatter->FormatProcessingInstruction(out, "go", "", true);
  formatter->FormatProcessingInstruction(out, "go", Times(73, 'x'), false);
  formatter->FormatProcessingInstruction(out, "go", Times(74, 'x'), false);
  formatter->FormatProcessingInstruction(out, "go", "a\nb", true);
  EXPECT_EQ("<?go now?>\n<?go ?>\n<?go " + Times(73, 'x') + "?>\n<?go \n  " + Times(74, 'x') +
                "\n?>\n<?go a\nb?>\n",
            out.str());
}

// --- CDATA sections

TEST(PrettyPrintBlock, ShortCData) {
  EXPECT_EQ("<![CDATA[]]>\n", CData("", false));
  EXPECT_EQ("<![CDATA[a\nb]]>\n", CData("a\nb", false));
  EXPECT_EQ("<![CDATA[a\nb]]>\n", CData("a\nb", true));
  EXPECT_EQ("<![CDATA[" + Times(68, 'd') + "]]>\n", CData(Times(68, 'd'), false));
  EXPECT_EQ("<![CDATA[" + Times(68, 'd') + "]]>\n", CData(Times(68, 'd'), true));
}

TEST(PrettyPrintBlock, CDataBeyondSixtyEightCharactersIsABlock) {
  EXPECT_EQ("<![CDATA[\n  " + Times(69, 'd') + "\n]]>\n", CData(Times(69, 'd'), false));
}

TEST(PrettyPrintBlock, LongCDataInLines) {
  EXPECT_EQ("<![CDATA[\n  " + Times(40, 'd') + "\n  " + Times(40, 'e') + "\n]]>\n",
            CData(Times(40, 'd') + " \n " + Times(40, 'e'), false));
}

TEST(PrettyPrintBlock, PreservedLongCDataIsNotIndented) {
  EXPECT_EQ("\n\n<![CDATA[" + Times(69, 'd') + "]]>\n\n", CData(Times(69, 'd'), true));
  EXPECT_EQ("\n\n<![CDATA[ " + Times(69, 'd') + "\n e]]>\n\n", CData(" " + Times(69, 'd') + "\n e", true));
}

TEST(PrettyPrintBlock, CDataInALevel) {
  Pretty doc;
  doc.out << doc.writer.StartTag("r") << doc.writer.CDATASection(Times(66, 'a'))
          << doc.writer.CDATASection(Times(67, 'b')) << doc.writer.CDATASection(Times(67, 'c'), true)
          << doc.writer.EndTag();
  EXPECT_EQ(
      "<r>\n"
      "  <![CDATA[" +
          Times(66, 'a') +
          "]]>\n"
          "\n"
          "  <![CDATA[\n"
          "    " +
          Times(67, 'b') +
          "\n"
          "  ]]>\n"
          "\n"
          "\n"
          "<![CDATA[" +
          Times(67, 'c') +
          "]]>\n"
          "\n"
          "</r>\n",
      doc.Text());
}

TEST(PrettyPrintBlock, CDataStreamIsPackedIntoLines) {
  EXPECT_EQ("\n\n<![CDATA[\n  " + Times(76, 'A') + "\n  " + Times(76, 'A') + "\n  BC\n]]>\n\n",
            CDataStream(Times(100, 'A') + " \t\r\n" + Times(52, 'A') + "\nB C\n", false));
}

TEST(PrettyPrintBlock, CDataStreamOfWholeLinesHasNoEmptyLast) {
  EXPECT_EQ("\n\n<![CDATA[\n  " + Times(76, 'A') + "\n]]>\n\n", CDataStream(Times(76, 'A'), false));
  EXPECT_EQ("\n\n<![CDATA[\n]]>\n\n", CDataStream(" \n ", false));
}

TEST(PrettyPrintBlock, CDataStreamIndentsByOneStepWhateverTheLevel) {
  std::istringstream data("AB");
  Pretty doc;
  doc.out << doc.writer.StartTag("r") << doc.writer.StartTag("s") << doc.writer.CDATASection(data)
          << doc.writer.EndAllTags();
  EXPECT_EQ("<r>\n  <s>\n\n<![CDATA[\n  AB\n]]>\n\n  </s>\n</r>\n", doc.Text());
}

TEST(PrettyPrintBlock, PreservedCDataStreamStaysAsItIs) {
  EXPECT_EQ("\n\n<![CDATA[ one \n\ttwo]]>\n\n", CDataStream(" one \n\ttwo", true));
  EXPECT_EQ("\n\n<![CDATA[one\n\n]]>\n\n", CDataStream("one\n\n", true));
  EXPECT_EQ("\n\n<![CDATA[]]>\n\n", CDataStream("", true));
}

TEST(PrettyPrintBlock, CDataStreamLosesEveryKindOfWhiteSpace) {
  EXPECT_EQ("\n\n<![CDATA[\n  ABCDEFG\n]]>\n\n", CDataStream("A B\tC\nD\vE\fF\rG", false));
}

// The end tag would otherwise be taken for one on its start tag's line.
TEST(PrettyPrintBlock, LinesOfCDataAreCounted) {
  for (const bool fromStream : {false, true}) {
    for (const bool preserve : {false, true}) {
      std::istringstream data("x");
      Pretty doc;
      doc.out << doc.writer.StartTag("r") << doc.writer.StartTag("s")
              << (fromStream ? doc.writer.CDATASection(data, preserve)
                             : doc.writer.CDATASection(Times(69, 'v'), true))
              << doc.writer.EndAllTags();
      const std::string content = !fromStream ? Times(69, 'v') : preserve ? "x" : "\n  x\n";
      EXPECT_EQ("<r>\n  <s>\n\n<![CDATA[" + content + "]]>\n\n  </s>\n</r>\n", doc.Text());
    }
  }
}
