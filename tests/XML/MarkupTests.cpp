// Markup on its way through the pretty printer: it comes out laid out as if it had been written part by part.
#include <gtest/gtest.h>

#include <ostream>
#include <sstream>
#include <streambuf>
#include <string>

#include "XML/XMLTestSupport.h"

using namespace XMLTest;

namespace {

const char* const sDECLARATION = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

// Laid out by a printer of its own.
std::string Reflowed(const std::string& markup) {
  Pretty doc;
  doc.out << doc.writer.Markup(markup);
  return doc.Text();
}

std::string StreamReflowed(const std::string& markup) {
  std::istringstream in(markup);
  std::ostringstream out;
  XMLFormatter::CreatePrettyPrint()->FormatMarkupStream(out, in);
  return out.str();
}

// Takes `size` characters and then fails.
class NarrowBuffer : public std::streambuf {
 public:
  explicit NarrowBuffer(std::size_t size) : m_uLeft(size) {}

 protected:
  int_type overflow(int_type c) override {
    if (m_uLeft == 0) return traits_type::eof();
    --m_uLeft;
    return c;
  }

 private:
  std::size_t m_uLeft;
};

}  // namespace

TEST(Markup, AFormattedDocumentReproducesItself) {
  EXPECT_EQ(sPRETTY_EXAMPLE, Reflowed(sPRETTY_EXAMPLE));
  EXPECT_EQ(sPRETTY_EXAMPLE, StreamReflowed(sPRETTY_EXAMPLE));
}

TEST(Markup, AFormattedDocumentReproducesItself50TimesInARow) {
  std::string text = sPRETTY_EXAMPLE;
  for (int round = 0; round < 50; ++round) {
    text = Reflowed(text);
    ASSERT_EQ(sPRETTY_EXAMPLE, text) << round;
  }
}

TEST(Markup, AFormattedDocumentReproducesItself50TimesOnOneWriter) {
  Pretty doc;
  for (int round = 0; round < 50; ++round) {
    doc.out.str("");
    doc.out << doc.writer.Markup(sPRETTY_EXAMPLE);
    ASSERT_EQ(sPRETTY_EXAMPLE, doc.Text()) << round;
  }
}

TEST(Markup, ACompactDocumentGetsTheLayout) { EXPECT_EQ(sPRETTY_EXAMPLE, Reflowed(sCOMPACT_EXAMPLE)); }

TEST(Markup, TheCompactFormatterCopiesItThrough) {
  Compact doc;
  doc.out << doc.writer.StartTag("a") << doc.writer.Markup("<m>  x & </m") << doc.writer.EndTag();
  EXPECT_EQ("<a><m>  x & </m</a>", doc.Text());
}

TEST(Markup, StandsInTheMiddleOfADocument) {
  Pretty doc;
  doc.out << doc.writer.StartDocA() << doc.writer.StartTag("a") << doc.writer.Markup("<m>  x</m>")
          << doc.writer.Markup("<n><o/></n>") << doc.writer.Tag("p", "q") << doc.writer.EndTag();
  EXPECT_EQ(std::string(sDECLARATION) +
                "<a>\n"
                "  <m>x</m>\n"
                "  <n>\n"
                "    <o/>\n"
                "  </n>\n"
                "  <p>q</p>\n"
                "</a>\n",
            doc.Text());
}

TEST(Markup, WritesTheDeclarationThatItHas) {
  EXPECT_EQ("<a/>\n", Reflowed("<a/>"));
  EXPECT_EQ(std::string(sDECLARATION) + "<a/>\n", Reflowed("<?xml version='1.0' encoding='UTF-8'?><a/>"));
  EXPECT_EQ(std::string(sDECLARATION) + "<a/>\n", Reflowed("<?xml version=\"1.0\" ?>\n<a/>"));
  EXPECT_EQ("<?xml version=\"1.0\" encoding=\"x\" standalone=\"yes\"?>\n<!-- c -->\n<a/>\n",
            Reflowed("<?xml version='1.0' encoding='x' standalone='yes'?><!--c--><a/>"));
  EXPECT_EQ("<?xml version=\"1.0\" encoding=\"x\"?>\n<a/>\n",
            Reflowed("<?xml version='1.0' encoding='x' standalone='no'?><a/>"));
}

TEST(Markup, DropsInstructionsAndTheDocumentType) {
  EXPECT_EQ("<!-- c -->\n<a>xy</a>\n",
            Reflowed("<?p q?><!DOCTYPE a [<!ELEMENT a ANY><!-- d --><!ENTITY e 'f'>]><!--c--><a>x<?p?>y</a>"
                     "<?p q?>"));
}

TEST(Markup, CommentsInFrontOfAndBehindTheRootStay) {
  EXPECT_EQ("<!-- b -->\n<a/>\n<!-- c -->\n", Reflowed("<!--b--><a/> <!-- c -->\n"));
}

TEST(Markup, ReferencesInContent) {
  EXPECT_EQ("<a>1 &lt; 2 &amp; 3</a>\n", Reflowed("<a>1 &lt; 2 &amp; 3</a>"));
  EXPECT_EQ("<a>it&apos;s</a>\n", Reflowed("<a>it's</a>"));
  EXPECT_EQ("<a>onetwo</a>\n", Reflowed("<a>one &foo; two</a>"));
  EXPECT_EQ("<a>onetwo</a>\n", Reflowed("<a>one&#65;&#x42;two</a>"));
}

TEST(Markup, ReferencesInAttributes) {
  const std::string content = "x=\"1 &lt; &foo; &#65;&#x42; &amp;lt; it's it&apos;s &quot;\" y=\"\"";
  EXPECT_EQ("<a " + content + " />\n", Reflowed("<a " + content + "/>"));
  EXPECT_EQ("<a " + content + " />\n", Reflowed("<a " + content + " />"));
  EXPECT_EQ("<a x=\"say &quot;no&quot;\" />\n", Reflowed("<a x='say \"no\"'/>"));
}

TEST(Markup, NamesOfEndTagsAreThoseOfTheirStartTags) {
  EXPECT_EQ("<a>\n  <b></b>\n</a>\n", Reflowed("<a><b></c></d>"));
}

TEST(Markup, LongCommentsAndSectionsReproduceThemselves) {
  const std::string comment = "<!-- \n  " + Times(80, 'c') + "\n -->\n";
  EXPECT_EQ(comment + "<a/>\n", Reflowed("<!--" + Times(80, 'c') + "--><a/>"));
  EXPECT_EQ(comment + "<a/>\n", Reflowed(comment + "<a/>\n"));
  const std::string section = "<a>\n\n<![CDATA[  " + Times(68, 'd') + " ]]>\n\n</a>\n";
  EXPECT_EQ(section, Reflowed("<a><![CDATA[  " + Times(68, 'd') + " ]]></a>"));
  EXPECT_EQ(section, Reflowed(section));
}

TEST(Markup, BytesAbove127StayAsTheyAre) {
  EXPECT_EQ("<a b=\"\xC2\xB5\xFF\" >5 \xB5m \xC3\xA4</a>\n",
            Reflowed("<a b='\xC2\xB5\xFF'>5 \xB5m \xC3\xA4</a>"));
}

// --- Markup that isn't well-formed

TEST(Markup, OfBrokenMarkupTheRecognisedPartIsWritten) {
  const char* const cases[][2] = {
      {"", ""},
      {"no markup", ""},
      {"<", ""},
      {"<a", ""},
      {"<a b='1'", ""},
      {"<a>", "<a>"},
      {"<a>text", "<a>text"},
      {"<a>text<", "<a>text"},
      {"<a>text</", "<a>text"},
      {"<a>text</a", "<a>text</a>\n"},
      {"<a><b/>", "<a>\n  <b/>\n"},
      {"<a><b><c x='1' y=></c></b></a>", "<a>\n  <b>"},
      {"<a>x &; y</a>", "<a>x"},
      {"<a><!-- c -- d --></a>", "<a>"},
      {"<a/>junk", "<a/>\n"},
      {"<a/><b/>", "<a/>\n"},
      {"<!-- c -->", "<!-- c -->\n"},
      {"<?xml version='1.0'?>", ""},
  };
  for (const auto& tried : cases) {
    EXPECT_EQ(tried[1], Reflowed(tried[0])) << tried[0];
    EXPECT_EQ(tried[1], StreamReflowed(tried[0])) << tried[0];
  }
}

TEST(Markup, WhatBrokenMarkupLeavesOpenStaysOpen) {
  Pretty doc;
  doc.out << doc.writer.StartTag("a") << doc.writer.Markup("<b>t") << doc.writer.EndTag();
  EXPECT_EQ("<a>\n  <b>t</a>\n", doc.Text());
}

// --- The streams

TEST(Markup, ASecondReadingOfTheSameStreamFindsNothing) {
  for (const char* markup : {"<a/>", "<a/>junk <b/>", "junk"}) {
    std::istringstream in(markup);
    std::ostringstream out;
    const auto formatter = XMLFormatter::CreatePrettyPrint();
    formatter->FormatMarkupStream(out, in);
    EXPECT_EQ(std::ios::eofbit, in.rdstate()) << markup;
    in.clear();
    EXPECT_EQ(std::char_traits<char>::eof(), in.get()) << markup;
  }
}

TEST(Markup, AStreamThatThrowsOnRequestDoesSoAndTheNextParseWorks) {
  NarrowBuffer buffer(3);
  std::ostream out(&buffer);
  out.exceptions(std::ios::badbit);
  XMLWriter writer;
  EXPECT_THROW(out << writer.Markup("<a>text</a>"), std::ios::failure);
  EXPECT_EQ("<a/>\n", Reflowed("<a/>"));
}

TEST(Markup, AStreamThatFailsTakesNothingMore) {
  NarrowBuffer buffer(3);
  std::ostream out(&buffer);
  XMLWriter writer;
  out << writer.Markup("<a>text</a>") << writer.Markup("<b/>");
  EXPECT_TRUE(out.bad());
}
