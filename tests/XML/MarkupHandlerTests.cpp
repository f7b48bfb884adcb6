// The handler that lays markup out anew, event by event.
#include "XML/MarkupHandler.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "XML/PrettyPrintFormatter.h"

using namespace Oxa::Core;

namespace {

struct OpenHandler : PrettyPrintFormatter::XMLHandler {
  using XMLHandler::encoding;
  using XMLHandler::tagNames;
  using XMLHandler::version;
  using XMLHandler::XMLHandler;
};

// A handler on a formatter and a stream of its own.
struct Reflow {
  std::ostringstream out;
  PrettyPrintFormatter formatter;
  OpenHandler handler{formatter, out};

  Reflow() { handler.StartDoc(); }

  std::string Text() const { return out.str(); }

  void Open(const std::string& name) {
    handler.StartTag(name);
    handler.StartTagContent();
  }

  void Attribute(const std::string& name, const std::string& value) {
    handler.AttributeName(name);
    handler.AttributeValueText(value);
    handler.AttributeValue();
    handler.Attribute();
  }
};

const std::string sLONG(70, 'x');

}  // namespace

TEST(MarkupHandler, WritesAStartTagOnceSomethingStandsInIt) {
  Reflow reflow;
  reflow.Open("a");
  EXPECT_EQ("", reflow.Text());
  reflow.handler.Text("t");
  EXPECT_EQ("", reflow.Text());
  reflow.handler.EndTag("a");
  EXPECT_EQ("<a>t</a>\n", reflow.Text());
}

TEST(MarkupHandler, JoinsThePiecesOfATextAndTrimsTheWhole) {
  Reflow reflow;
  reflow.Open("a");
  for (const char* piece : {" \n", " one", " ", "two\t", "\r\n"}) reflow.handler.Text(piece);
  reflow.handler.EndTag("a");
  EXPECT_EQ("<a>one two</a>\n", reflow.Text());
}

TEST(MarkupHandler, WhatWaitsIsWrittenAtTheEndOfTheDocument) {
  Reflow reflow;
  reflow.Open("a");
  reflow.handler.Text(" one ");
  reflow.handler.EndDoc();
  EXPECT_EQ("<a>one", reflow.Text());
}

TEST(MarkupHandler, DropsWhiteSpaceBetweenElements) {
  Reflow reflow;
  reflow.Open("a");
  reflow.handler.Text("\n  ");
  reflow.handler.StartTag("b");
  reflow.handler.EndEmptyTag();
  reflow.handler.Text(" \t\r\n");
  reflow.handler.EndTag("a");
  EXPECT_EQ("<a>\n  <b/>\n</a>\n", reflow.Text());
}

TEST(MarkupHandler, LaysATextOfSeveralLinesOutLineByLine) {
  Reflow reflow;
  reflow.Open("a");
  reflow.handler.Text("\n  one\n\n     two ");
  reflow.handler.EndTag("a");
  EXPECT_EQ("<a>\n  one\n  \n  two\n</a>\n", reflow.Text());
}

TEST(MarkupHandler, AnElementWithoutContentKeepsItsForm) {
  Reflow reflow;
  reflow.Open("a");
  reflow.Open("b");
  reflow.handler.EndTag("b");
  reflow.handler.StartTag("c");
  reflow.Attribute("x", "1");
  reflow.handler.EndEmptyTag();
  reflow.handler.EndTag("a");
  EXPECT_EQ("<a>\n  <b></b>\n  <c x=\"1\" />\n</a>\n", reflow.Text());
}

TEST(MarkupHandler, KeepsTheNamesOfOpenTags) {
  Reflow reflow;
  reflow.Open("a");
  reflow.handler.StartTag("b");
  EXPECT_EQ((std::vector<std::string>{"a", "b"}), reflow.handler.tagNames);
  reflow.handler.EndEmptyTag();
  EXPECT_EQ((std::vector<std::string>{"a"}), reflow.handler.tagNames);
  reflow.handler.EndTag("a");
  EXPECT_TRUE(reflow.handler.tagNames.empty());
}

// --- References

TEST(MarkupHandler, PredefinedReferencesJoinTheText) {
  Reflow reflow;
  reflow.Open("a");
  reflow.handler.Text("1 ");
  for (const char* reference : {"&lt;", "&gt;", "&amp;", "&apos;", "&quot;"})
    reflow.handler.ContentReference(reference);
  reflow.handler.Text(" 2");
  EXPECT_EQ("", reflow.Text());
  reflow.handler.EndTag("a");
  EXPECT_EQ("<a>1 &lt;&gt;&amp;&apos;&quot; 2</a>\n", reflow.Text());
}

TEST(MarkupHandler, OtherReferencesFlushTheTextAndAreDropped) {
  for (const char* reference : {"&foo;", "&#65;", "&#x41;", "&LT;"}) {
    Reflow reflow;
    reflow.Open("a");
    reflow.handler.Text("one ");
    reflow.handler.ContentReference(reference);
    EXPECT_EQ("<a>one", reflow.Text()) << reference;
    reflow.handler.Text(" two");
    reflow.handler.EndTag("a");
    EXPECT_EQ("<a>onetwo</a>\n", reflow.Text()) << reference;
  }
}

// --- Attributes

TEST(MarkupHandler, AttributesKeepTheirReferencesAsTheyStand) {
  Reflow reflow;
  reflow.handler.StartTag("a");
  reflow.handler.AttributeName("x");
  reflow.handler.AttributeValueText("1 ");
  for (const char* reference : {"&lt;", "&foo;", "&#65;", "&amp;", "&apos;", "&quot;", "&gt;"})
    reflow.handler.AttributeValueRef(reference);
  reflow.handler.AttributeValueText(" 2 > '");
  reflow.handler.AttributeValue();
  reflow.handler.Attribute();
  reflow.handler.EndEmptyTag();
  EXPECT_EQ("<a x=\"1 &lt;&foo;&#65;&amp;&apos;&quot;&gt; 2 > '\" />\n", reflow.Text());
}

TEST(MarkupHandler, QuotesInAnAttributeAreEscaped) {
  Reflow reflow;
  reflow.handler.StartTag("a");
  reflow.Attribute("x", "say \"no\"");
  reflow.handler.EndEmptyTag();
  EXPECT_EQ("<a x=\"say &quot;no&quot;\" />\n", reflow.Text());
}

TEST(MarkupHandler, AnAttributeThatIsThereTwiceKeepsItsFirstPlaceAndItsLastValue) {
  Reflow reflow;
  reflow.handler.StartTag("a");
  reflow.Attribute("x", "1");
  reflow.Attribute("y", "2");
  reflow.Attribute("x", "3");
  reflow.handler.EndEmptyTag();
  EXPECT_EQ("<a x=\"3\" y=\"2\" />\n", reflow.Text());
}

TEST(MarkupHandler, AnEmptyValueIsEmpty) {
  Reflow reflow;
  reflow.handler.StartTag("a");
  reflow.Attribute("x", "1");
  reflow.handler.AttributeName("y");
  reflow.handler.AttributeValue();
  reflow.handler.Attribute();
  reflow.handler.EndEmptyTag();
  EXPECT_EQ("<a x=\"1\" y=\"\" />\n", reflow.Text());
}

// --- Comments and CDATA sections

TEST(MarkupHandler, TrimsCommentsAndPreservesTheirInside) {
  Reflow reflow;
  reflow.Open("a");
  reflow.handler.Text("t");
  reflow.handler.Comment(" \n one\n  two\t ");
  reflow.handler.Comment("  ");
  reflow.handler.EndTag("a");
  EXPECT_EQ("<a>t\n  <!-- one\n  two -->\n\n  <!--  -->\n</a>\n", reflow.Text());
}

TEST(MarkupHandler, LeavesCDataSectionsAsTheyAre) {
  Reflow reflow;
  reflow.Open("a");
  reflow.handler.CData("  <&> \n ");
  reflow.handler.CData("");
  reflow.handler.CData(" " + sLONG);
  reflow.handler.EndTag("a");
  EXPECT_EQ("<a>\n  <![CDATA[  <&> \n ]]>\n\n  <![CDATA[]]>\n\n\n<![CDATA[ " + sLONG + "]]>\n\n</a>\n",
            reflow.Text());
}

TEST(MarkupHandler, ACDataSectionParts) {
  Reflow reflow;
  reflow.Open("a");
  reflow.handler.Text("one ");
  reflow.handler.CData("x");
  reflow.handler.Text(" two");
  reflow.handler.EndTag("a");
  EXPECT_EQ("<a>one\n  <![CDATA[x]]>\n  two\n</a>\n", reflow.Text());
}

// --- The declaration

TEST(MarkupHandler, WritesTheDeclarationInFrontOfTheFirstPart) {
  Reflow reflow;
  reflow.handler.SetVersion("1.1");
  reflow.handler.SetEncoding("ISO-8859-1");
  reflow.handler.SetStandalone(true);
  EXPECT_EQ("", reflow.Text());
  reflow.handler.Comment("c");
  EXPECT_EQ("<?xml version=\"1.1\" encoding=\"ISO-8859-1\" standalone=\"yes\"?>\n<!-- c -->\n",
            reflow.Text());
  reflow.handler.StartTag("a");
  reflow.handler.EndEmptyTag();
  EXPECT_EQ("<?xml version=\"1.1\" encoding=\"ISO-8859-1\" standalone=\"yes\"?>\n<!-- c -->\n<a/>\n",
            reflow.Text());
}

TEST(MarkupHandler, ADeclarationWithoutAnEncodingMeansUtf8) {
  Reflow reflow;
  reflow.handler.SetVersion("1.0");
  reflow.handler.SetStandalone(false);
  reflow.handler.StartTag("a");
  EXPECT_EQ("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n", reflow.Text());
}

TEST(MarkupHandler, TheDeclarationOfAnEarlierParseIsNotWrittenAgain) {
  Reflow reflow;
  reflow.handler.SetVersion("1.0");
  reflow.handler.SetEncoding("US-ASCII");
  reflow.handler.StartDoc();
  reflow.handler.StartTag("a");
  reflow.handler.EndEmptyTag();
  EXPECT_EQ("<a/>\n", reflow.Text());
  EXPECT_EQ("1.0", reflow.handler.version);
  EXPECT_EQ("US-ASCII", reflow.handler.encoding);
}

TEST(MarkupHandler, ADeclarationTakesNothingFromAnEarlierOne) {
  Reflow reflow;
  reflow.handler.SetVersion("1.1");
  reflow.handler.SetEncoding("US-ASCII");
  reflow.handler.SetStandalone(true);
  reflow.handler.StartDoc();
  reflow.handler.SetVersion("1.0");
  reflow.handler.Comment("c");
  EXPECT_EQ("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- c -->\n", reflow.Text());
}

TEST(MarkupHandler, AFragmentKeepsTheLayoutAroundIt) {
  Reflow reflow;
  reflow.formatter.FormatStartTag(reflow.out, "doc", {}, false);
  reflow.Open("a");
  reflow.handler.StartTag("b");
  reflow.handler.EndEmptyTag();
  reflow.handler.EndTag("a");
  reflow.formatter.FormatEndTag(reflow.out, "doc");
  EXPECT_EQ("<doc>\n  <a>\n    <b/>\n  </a>\n</doc>\n", reflow.Text());
}

// --- What has no match

TEST(MarkupHandler, EndsATagUnderTheNameThatItWasStartedWith) {
  Reflow reflow;
  reflow.Open("a");
  reflow.handler.EndTag("b");
  EXPECT_EQ("<a></a>\n", reflow.Text());
}

TEST(MarkupHandler, AnAbandonedParseWritesWhatWaits) {
  Reflow reflow;
  reflow.Open("a");
  reflow.Open("b");
  reflow.handler.Text(" t ");
  reflow.handler.Abandon();
  EXPECT_EQ("<a>\n  <b>t", reflow.Text());
  reflow.handler.EndOpenTags();
  EXPECT_EQ("<a>\n  <b>t</b>\n</a>\n", reflow.Text());
  reflow.handler.EndOpenTags();
  EXPECT_EQ("<a>\n  <b>t</b>\n</a>\n", reflow.Text());
}

TEST(MarkupHandler, AnAbandonedParseDropsAnUnfinishedStartTag) {
  Reflow reflow;
  reflow.Open("a");
  reflow.handler.StartTag("b");
  reflow.Attribute("x", "1");
  reflow.handler.Abandon();
  EXPECT_EQ("<a>", reflow.Text());
  reflow.handler.EndOpenTags();
  EXPECT_EQ("<a></a>\n", reflow.Text());
}

TEST(MarkupHandler, AParseThatFailsAtOnceFindsNothingOfTheLastOne) {
  Reflow reflow;
  reflow.Open("a");
  reflow.handler.StartTag("b");
  reflow.handler.StartDoc();
  reflow.handler.Abandon();
  reflow.handler.EndOpenTags();
  EXPECT_EQ("<a>", reflow.Text());
}

TEST(MarkupHandler, TheNextParseForgetsWhatTheLastOneLeft) {
  Reflow reflow;
  reflow.Open("a");
  reflow.handler.Text("lost");
  reflow.handler.StartDoc();
  reflow.handler.tagNames.clear();
  reflow.handler.StartTag("b");
  reflow.handler.EndEmptyTag();
  reflow.handler.EndDoc();
  EXPECT_EQ("<b/>\n", reflow.Text());
}
