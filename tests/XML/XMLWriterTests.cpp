#include <Infrastructure/OxaCore/XMLWriter.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "XML/XMLTestSupport.h"

using namespace XMLTest;

// --- The worked example

TEST(XMLWriter, CompactExample) {
  Compact doc;
  WriteExample(doc.writer, doc.out);
  EXPECT_EQ(sCOMPACT_EXAMPLE, doc.Text());
}

TEST(XMLWriter, PrettyExample) {
  Pretty doc;
  WriteExample(doc.writer, doc.out);
  EXPECT_EQ(sPRETTY_EXAMPLE, doc.Text());
}

TEST(XMLWriter, NoFormatterMeansPrettyPrint) {
  std::ostringstream out;
  XMLWriter writer;
  WriteExample(writer, out);
  EXPECT_EQ(sPRETTY_EXAMPLE, out.str());
}

TEST(XMLWriter, AttributesInsertedOneByOneGiveTheSame) {
  Compact map;
  map.out << map.writer.StartTag("TagWithAttributes", TwoAttributes()) << map.writer.EndTag();
  Compact single;
  single.out << single.writer.StartTag("TagWithAttributes") << single.writer.Attribute("name1", "value1")
             << single.writer.Attribute("name2", "value2") << single.writer.EndTag();
  EXPECT_EQ("<TagWithAttributes name1=\"value1\" name2=\"value2\"></TagWithAttributes>", map.Text());
  EXPECT_EQ(map.Text(), single.Text());
}

TEST(XMLWriter, ExampleWithAttributesInsertedOneByOneIsTheSame) {
  Compact compact;
  WriteExample(compact.writer, compact.out, Attributes::eONE_BY_ONE);
  EXPECT_EQ(sCOMPACT_EXAMPLE, compact.Text());
  Pretty pretty;
  WriteExample(pretty.writer, pretty.out, Attributes::eONE_BY_ONE);
  EXPECT_EQ(sPRETTY_EXAMPLE, pretty.Text());
}

// --- Attribute values and maps

TEST(XMLAttributeMap, KeepsTheOrderOfInsertion) {
  Map map;
  map["z"] = "1";
  map["a"] = "2";
  map["m"] = "3";
  ASSERT_EQ(3u, map.size());
  EXPECT_EQ("z", map.begin()->name);
  EXPECT_EQ("m", map.back().name);
}

TEST(XMLWriter, PutTagIsAnInsertedTag) {
  Pretty put;
  Pretty inserted;
  put.out << put.writer.StartTag("Outer");
  inserted.out << inserted.writer.StartTag("Outer");
  for (const std::string content : {"", "1 < 2", "two\nlines"}) {
    put.out.width(20);
    put.writer.PutTag(put.out, "Plain", content);
    EXPECT_EQ(0, put.out.width());
    put.writer.PutTag(put.out, "Attributes", TwoAttributes(), content);
    inserted.out << inserted.writer.Tag("Plain", content)
                 << inserted.writer.Tag("Attributes", TwoAttributes(), content);
  }
  put.out << put.writer.EndTag();
  inserted.out << inserted.writer.EndTag();
  EXPECT_EQ(inserted.Text(), put.Text());
}

TEST(XMLAttributeMap, SettingTwiceReplacesTheValueAndKeepsThePlace) {
  Compact doc;
  Map map;
  map["first"] = "1";
  map["second"] = "2";
  map["first"] = "3";
  doc.out << doc.writer.Tag("x", map);
  EXPECT_EQ("<x first=\"3\" second=\"2\"/>", doc.Text());
}

TEST(XMLAttributeMap, IndexingAppendsAnEmptyValue) {
  Map map;
  EXPECT_TRUE(map["new"].empty());
  ASSERT_EQ(1u, map.size());
  EXPECT_EQ("new", map.front().name);
}

TEST(XMLAttributeValue, IsTheConcatenationOfItsParts) {
  Value value("one");
  value.push_back("");
  value.push_back(" two");
  value.push_back("three");
  EXPECT_EQ("one twothree", value.GetText());
  Compact doc;
  Map map;
  map["v"] = value;
  map["none"];
  doc.out << doc.writer.Tag("x", map);
  EXPECT_EQ("<x v=\"one twothree\" none=\"\"/>", doc.Text());
}

TEST(XMLAttributeValue, OfOneTextHasOnePart) {
  EXPECT_EQ(1u, Value("text").size());
  EXPECT_EQ(1u, Value(std::string("text")).size());
  EXPECT_EQ(0u, Value().size());
}

TEST(XMLWriter, EmptyMapIsEmpty) { EXPECT_TRUE(XMLWriter::sEMPTY_MAP.empty()); }

// --- Deferred start tags

TEST(XMLWriter, NothingHappensBeforeTheInsertion) {
  Compact doc;
  const XMLWriter::Manipulator tag = doc.writer.StartTag("a");
  const XMLWriter::Manipulator text = doc.writer.Text("t");
  EXPECT_EQ("", doc.Text());
  doc.out << text << tag << text;
  EXPECT_EQ("t<a>t", doc.Text());
}

TEST(XMLWriter, StartTagIsWrittenWithTheNextInsertionThatNeedsIt) {
  Compact doc;
  doc.out << doc.writer.StartTag("a");
  EXPECT_EQ("", doc.Text());
  doc.out << doc.writer.Attribute("k", "v");
  EXPECT_EQ("", doc.Text());
  doc.out << doc.writer.StartTag("b");
  EXPECT_EQ("<a k=\"v\">", doc.Text());
  doc.out << doc.writer.EndTag();
  EXPECT_EQ("<a k=\"v\"><b></b>", doc.Text());
}

// Each kind of content that has to bring the pending start tag out.
TEST(XMLWriter, EveryContentWritesThePendingStartTag) {
  std::istringstream text("s&t"), data("d&t");
  Compact doc;
  XMLWriter& writer = doc.writer;
  doc.out << writer.StartTag("a") << writer.Text("t") << writer.EndTag();
  doc.out << writer.StartTag("b") << writer.Text(text) << writer.EndTag();
  doc.out << writer.StartTag("c") << writer.EntityReference("lt") << writer.EndTag();
  doc.out << writer.StartTag("d") << writer.Markup("<m/>") << writer.EndTag();
  doc.out << writer.StartTag("e") << writer.Comment("c") << writer.EndTag();
  doc.out << writer.StartTag("f") << writer.CDATASection("d") << writer.EndTag();
  doc.out << writer.StartTag("g") << writer.CDATASection(data) << writer.EndTag();
  doc.out << writer.StartTag("h") << writer.Tag("i", "") << writer.EndTag();
  EXPECT_EQ(
      "<a>t</a><b>s&amp;t</b><c>&lt;</c><d><m/></d><e><!--c--></e><f><![CDATA[d]]></f><g><![CDATA[d&t]]></g>"
      "<h><i/></h>",
      doc.Text());
}

TEST(XMLWriter, StyleSheetAndStartOfDocumentLeaveThePendingStartTagWaiting) {
  Compact doc;
  doc.out << doc.writer.StartTag("a") << doc.writer.StyleSheet("s.xsl", "text/xsl")
          << doc.writer.StartDocA("1.0", "UTF-8", false, false) << doc.writer.Attribute("k", "v")
          << doc.writer.EndTag();
  EXPECT_EQ(
      "<?xml-stylesheet type=\"text/xsl\"\nhref=\"s.xsl\"?><?xml version=\"1.0\" encoding=\"UTF-8\"?>"
      "<a k=\"v\"></a>",
      doc.Text());
}

TEST(XMLWriter, StartTagThenEndTagIsNoEmptyElementTag) {
  Compact doc;
  doc.out << doc.writer.StartTag("a") << doc.writer.EndTag();
  EXPECT_EQ("<a></a>", doc.Text());
}

TEST(XMLWriter, LateAttributeIsLost) {
  Compact doc;
  doc.out << doc.writer.StartTag("a") << doc.writer.Text("t") << doc.writer.Attribute("late", "v")
          << doc.writer.Text("u") << doc.writer.EndTag();
  EXPECT_EQ("<a>tu</a>", doc.Text());
}

TEST(XMLWriter, AttributeReplacesOneOfTheMap) {
  Compact doc;
  doc.out << doc.writer.StartTag("a", TwoAttributes()) << doc.writer.Attribute("name1", "new")
          << doc.writer.Attribute("name3", "3") << doc.writer.EndTag();
  EXPECT_EQ("<a name1=\"new\" name2=\"value2\" name3=\"3\"></a>", doc.Text());
}

TEST(XMLWriter, MoreAttributesThanUsual) {
  Compact doc;
  std::string expected = "<a";
  doc.out << doc.writer.StartTag("a");
  for (int i = 0; i < 25; ++i) {
    const std::string name = "n" + std::to_string(i);
    doc.out << doc.writer.Attribute(name, name);
    expected += " " + name + "=\"" + name + "\"";
  }
  doc.out << doc.writer.EndTag();
  EXPECT_EQ(expected + "></a>", doc.Text());
}

// What a writer keeps of ended tags to use again doesn't show.
TEST(XMLWriter, TagBehindAnEndedOneHasNoneOfItsAttributes) {
  Compact doc;
  doc.out << doc.writer.StartTag("a") << doc.writer.Attribute("k", "v") << doc.writer.EndTag()
          << doc.writer.StartTag("b") << doc.writer.EndTag() << doc.writer.StartTag("c", TwoAttributes())
          << doc.writer.EndTag() << doc.writer.StartTag("d") << doc.writer.Attribute("l", "w")
          << doc.writer.EndTag();
  EXPECT_EQ("<a k=\"v\"></a><b></b><c name1=\"value1\" name2=\"value2\"></c><d l=\"w\"></d>", doc.Text());
}

TEST(XMLWriter, TagBehindAResetHasNoAttributesOfEarlierOnes) {
  Compact doc;
  doc.out << doc.writer.StartTag("a", TwoAttributes()) << doc.writer.EndTag()
          << doc.writer.StartTag("b", TwoAttributes());
  doc.out.str("");
  doc.writer.Reset(XMLFormatter::CreateCompact());
  doc.out << doc.writer.StartTag("c") << doc.writer.StartTag("d") << doc.writer.EndAllTags();
  EXPECT_EQ("<c><d></d></c>", doc.Text());
}

// --- Tags

TEST(XMLWriter, TagWithAndWithoutContent) {
  Compact doc;
  doc.out << doc.writer.Tag("a", "") << doc.writer.Tag("b", "<&>") << doc.writer.Tag("c", TwoAttributes())
          << doc.writer.Tag("d", TwoAttributes(), "t");
  EXPECT_EQ(
      "<a/><b>&lt;&amp;&gt;</b><c name1=\"value1\" name2=\"value2\"/>"
      "<d name1=\"value1\" name2=\"value2\">t</d>",
      doc.Text());
}

TEST(XMLWriter, TagOpensNothing) {
  Compact doc;
  doc.out << doc.writer.Tag("a", "t") << doc.writer.EndTag() << doc.writer.EndAllTags();
  EXPECT_EQ("<a>t</a>", doc.Text());
}

// A derived writer makes manipulators of its own of what Tag and Attribute are made of.
TEST(XMLWriter, DerivedWriterMakesTagsAndAttributes) {
  class Derived : public XMLWriter {
   public:
    Derived() : XMLWriter(XMLFormatter::CreateCompact()) {}
    Manipulator Pair(const std::string& content) { return TagManipulator("pair", TwoAttributes(), content); }
    Manipulator Number(int number) { return AttributeManipulator("number", std::to_string(number)); }
  };
  Derived writer;
  std::ostringstream out;
  out << writer.StartTag("a") << writer.Number(7) << writer.Pair("<") << writer.Pair("") << writer.EndTag();
  EXPECT_EQ(
      "<a number=\"7\"><pair name1=\"value1\" name2=\"value2\">&lt;</pair>"
      "<pair name1=\"value1\" name2=\"value2\"/></a>",
      out.str());
}

TEST(XMLWriter, EndAllTagsEndsTheInnermostFirst) {
  Compact doc;
  doc.out << doc.writer.StartTag("a") << doc.writer.StartTag("b") << doc.writer.StartTag("c")
          << doc.writer.Text("t") << doc.writer.EndAllTags();
  EXPECT_EQ("<a><b><c>t</c></b></a>", doc.Text());
}

TEST(XMLWriter, EndDocEndsAllTags) {
  Compact doc;
  doc.out << doc.writer.StartTag("a") << doc.writer.StartTag("b") << doc.writer.EndDoc();
  EXPECT_EQ("<a><b></b></a>", doc.Text());
}

TEST(XMLWriter, EndTagBehindTheLastDoesNothing) {
  Compact doc;
  doc.out << doc.writer.StartTag("a") << doc.writer.EndTag() << doc.writer.EndTag() << doc.writer.EndAllTags()
          << doc.writer.EndDoc();
  EXPECT_EQ("<a></a>", doc.Text());
}

TEST(XMLWriter, AttributeWithoutAnOpenTagDoesNothing) {
  Compact doc;
  doc.out << doc.writer.Attribute("k", "v") << doc.writer.StartTag("a") << doc.writer.EndTag()
          << doc.writer.Attribute("k", "v");
  EXPECT_EQ("<a></a>", doc.Text());
}

TEST(XMLWriter, ContentWithoutAnOpenTagIsWrittenAsAsked) {
  Compact doc;
  doc.out << doc.writer.Text("t") << doc.writer.Comment("c") << doc.writer.Tag("a", "")
          << doc.writer.Tag("b", "") << doc.writer.CDATASection("d") << doc.writer.EntityReference("e")
          << doc.writer.Markup("m");
  EXPECT_EQ("t<!--c--><a/><b/><![CDATA[d]]>&e;m", doc.Text());
}

// --- Start of the document

TEST(XMLWriter, StartDocEndsOpenTagsIfAsked) {
  Compact doc;
  doc.out << doc.writer.StartTag("a") << doc.writer.StartTag("b")
          << doc.writer.StartDocA("1.1", "ASCII", true, true);
  EXPECT_EQ("<a><b></b></a><?xml version=\"1.1\" encoding=\"ASCII\" standalone=\"yes\"?>", doc.Text());
}

TEST(XMLWriter, StartDocLeavesOpenTagsIfAsked) {
  Compact doc;
  doc.out << doc.writer.StartTag("a") << doc.writer.Text("t")
          << doc.writer.StartDocA("1.0", "UTF-8", false, false) << doc.writer.EndAllTags();
  EXPECT_EQ("<a>t<?xml version=\"1.0\" encoding=\"UTF-8\"?></a>", doc.Text());
}

TEST(XMLWriter, StartDocDefaults) {
  Compact doc;
  doc.out << doc.writer.StartDocA();
  EXPECT_EQ("<?xml version=\"1.0\" encoding=\"UTF-8\"?>", doc.Text());
}

TEST(XMLWriter, DocumentMayStartTwice) {
  Compact doc;
  doc.out << doc.writer.StartDocA() << doc.writer.StartTag("a") << doc.writer.StartDocA()
          << doc.writer.Tag("b", "");
  EXPECT_EQ("<?xml version=\"1.0\" encoding=\"UTF-8\"?><a></a><?xml version=\"1.0\" encoding=\"UTF-8\"?><b/>",
            doc.Text());
}

// --- References and escaping

TEST(XMLWriter, EntityReferenceIsNormalised) {
  Compact doc;
  doc.out << doc.writer.EntityReference("amp") << doc.writer.EntityReference("&amp;")
          << doc.writer.EntityReference("&half") << doc.writer.EntityReference("#65")
          << doc.writer.EntityReference("");
  EXPECT_EQ("&amp;&amp;&half&#65;&;", doc.Text());
}

TEST(XMLWriter, FiveCharactersOfATextAreEscaped) {
  Compact doc;
  doc.out << doc.writer.Text("<>&'\"");
  EXPECT_EQ("&lt;&gt;&amp;&apos;&quot;", doc.Text());
}

TEST(XMLWriter, EverythingElseOfATextStaysAsItIs) {
  std::string all, expected;
  for (int c = 0; c < 256; ++c) {
    const char character = static_cast<char>(c);
    if (std::string("<>&'\"").find(character) == std::string::npos) all += character;
  }
  ASSERT_EQ(251u, all.size());
  Compact doc;
  doc.out << doc.writer.Text(all) << doc.writer.Tag("a", all);
  EXPECT_EQ(all + "<a>" + all + "</a>", doc.Text());
  EXPECT_EQ(all, XMLFormatter::Escape(all));
}

TEST(XMLWriter, NothingButTextIsEscaped) {
  const std::string raw = "<>&'\"";
  Map map;
  map[raw] = raw;
  Compact doc;
  doc.out << doc.writer.Tag(raw, map) << doc.writer.StartTag(raw) << doc.writer.Attribute(raw, raw)
          << doc.writer.Comment(raw) << doc.writer.CDATASection(raw) << doc.writer.Markup(raw)
          << doc.writer.EndTag() << doc.writer.StyleSheet(raw, raw);
  EXPECT_EQ("<" + raw + " " + raw + "=\"" + raw + "\"/><" + raw + " " + raw + "=\"" + raw + "\"><!--" + raw +
                "--><![CDATA[" + raw + "]]>" + raw + "</" + raw + "><?xml-stylesheet type=\"" + raw +
                "\"\nhref=\"" + raw + "\"?>",
            doc.Text());
}

// --- Life

TEST(XMLWriter, CopiesShareTheFormatterAndHaveOpenTagsOfTheirOwn) {
  Pretty doc;
  doc.out << doc.writer.StartTag("a") << doc.writer.Tag("b", "");
  XMLWriter copy(doc.writer);
  std::ostringstream other;
  other << copy.EndTag();
  doc.out << doc.writer.EndTag();
  // The level that the copy closed is closed in the shared formatter.
  EXPECT_EQ("</a>\n", other.str());
  EXPECT_EQ("<a>\n  <b/>\n</a>\n", doc.Text());
}

TEST(XMLWriter, AssignmentTakesFormatterAndOpenTags) {
  Compact doc;
  doc.out << doc.writer.StartTag("a") << doc.writer.Attribute("k", "v");
  XMLWriter other;
  other = doc.writer;
  std::ostringstream out;
  out << other.EndAllTags();
  EXPECT_EQ("<a k=\"v\"></a>", out.str());
  doc.out << doc.writer.EndAllTags();
  EXPECT_EQ("<a k=\"v\"></a>", doc.Text());
}

TEST(XMLWriter, ResetForgetsOpenTagsAndTakesTheFormatter) {
  Compact doc;
  doc.out << doc.writer.StartTag("a") << doc.writer.Text("t");
  doc.writer.Reset(XMLFormatter::CreatePrettyPrint());
  doc.out << doc.writer.EndAllTags() << doc.writer.Tag("b", "");
  doc.writer.Reset(boost::shared_ptr<XMLFormatter>());
  doc.out << doc.writer.Tag("c", "");
  EXPECT_EQ("<a>t<b/>\n<c/>\n", doc.Text());
}

TEST(XMLWriter, DestructorLeavesOpenTagsOpen) {
  std::ostringstream out;
  {
    XMLWriter writer(XMLFormatter::CreateCompact());
    out << writer.StartTag("a") << writer.Text("t") << writer.StartTag("b");
  }
  EXPECT_EQ("<a>t", out.str());
}

TEST(XMLWriter, ManipulatorIsAValueThatWorksAgain) {
  Compact doc;
  XMLWriter::Manipulator tag = doc.writer.Tag("a", TwoAttributes(), "t");
  XMLWriter::Manipulator copy(tag);
  tag = doc.writer.Tag("b", "");
  doc.out << copy << copy << tag;
  copy.Apply(doc.out);
  const std::string a = "<a name1=\"value1\" name2=\"value2\">t</a>";
  EXPECT_EQ(a + a + "<b/>" + a, doc.Text());
}

TEST(XMLWriter, ManipulatorKeepsCopiesOfItsArguments) {
  Compact doc;
  std::string name = "a", text = "t";
  Map map = TwoAttributes();
  const XMLWriter::Manipulator tag = doc.writer.Tag(name, map, text);
  name = text = "changed";
  map.clear();
  doc.out << tag;
  EXPECT_EQ("<a name1=\"value1\" name2=\"value2\">t</a>", doc.Text());
}

// --- The stream

TEST(XMLWriter, OrdinaryOutputMayStandBetween) {
  Compact doc;
  doc.out << doc.writer.StartTag("a") << doc.writer.Text("t") << 7 << doc.writer.EndTag() << '\n';
  EXPECT_EQ("<a>t7</a>\n", doc.Text());
}

TEST(XMLWriter, WidthOfTheStreamIsNotForMarkup) {
  Compact doc;
  doc.out.width(30);
  doc.out.fill('*');
  doc.out << doc.writer.Tag("a", "t");
  EXPECT_EQ("<a>t</a>", doc.Text());
}

TEST(XMLWriter, WidthOfTheStreamIsUsedUp) {
  Compact doc;
  doc.out.width(6);
  doc.out << doc.writer.Tag("a", "") << 7;
  doc.out.width(6);
  doc.out << doc.writer.StartTag("b") << 8;
  doc.out.width(6);
  doc.writer.EndTag().Apply(doc.out);
  doc.out << 9;
  EXPECT_EQ("<a/>78<b></b>9", doc.Text());
}

TEST(XMLWriter, BrokenStreamIsTheCallersAffair) {
  Compact doc;
  doc.out.setstate(std::ios::badbit);
  EXPECT_NO_THROW(doc.out << doc.writer.StartTag("a") << doc.writer.Text("t") << doc.writer.EndAllTags());
  EXPECT_EQ("", doc.Text());
  doc.out.clear();
  doc.out << doc.writer.EndTag() << doc.writer.Tag("b", "");
  EXPECT_EQ("<b/>", doc.Text());
}

TEST(XMLWriter, StreamsWithoutABufferAreEmpty) {
  std::istream none(nullptr);
  Compact doc;
  doc.out << doc.writer.Text(none) << doc.writer.CDATASection(none);
  EXPECT_EQ("<![CDATA[]]>", doc.Text());
}

TEST(XMLWriter, LongTextsPassWhole) {
  const std::string longText = Times(100000, 'x') + "<" + Times(100000, 'y');
  std::istringstream stream(longText);
  Compact doc;
  doc.out << doc.writer.Tag(Times(3000, 'n'), longText) << doc.writer.Text(stream)
          << doc.writer.Comment(longText);
  const std::string escaped = Times(100000, 'x') + "&lt;" + Times(100000, 'y');
  EXPECT_EQ("<" + Times(3000, 'n') + ">" + escaped + "</" + Times(3000, 'n') + ">" + escaped + "<!--" +
                longText + "-->",
            doc.Text());
}
