#include "AutoTest/Module/TEST_XML.h"

#include <Infrastructure/OxaCore/XMLFormatter.h>
#include <Infrastructure/OxaCore/XMLParser.h>
#include <Infrastructure/OxaCore/XMLWriter.h>

#include <sstream>

#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

namespace {

using Attributes = XMLAttributeMap<std::string>;

constexpr char sDECLARATION[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
constexpr char sCDATA[] = "<CDATA Test>Entity usage: &amp;</CDATA Test>";

// The same document, in a row and laid out.
constexpr char sCOMPACT[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?><Test><!--A comment--><AnEmptyTag/>"
    "<EmptyTagWithAttribute name=\"value\"/><TagWithAttributes name1=\"value1\" name2=\"value2\">1 &lt; 2"
    "<![CDATA[<CDATA Test>Entity usage: &amp;</CDATA Test>]]></TagWithAttributes>content</Test>";
constexpr char sPRETTY[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<Test>\n"
    "  <!-- A comment -->\n"
    "  <AnEmptyTag/>\n"
    "  <EmptyTagWithAttribute name=\"value\" />\n"
    "  <TagWithAttributes name1=\"value1\" name2=\"value2\" >\n"
    "    1 &lt; 2\n"
    "    <![CDATA[<CDATA Test>Entity usage: &amp;</CDATA Test>]]>\n"
    "  </TagWithAttributes>\n"
    "  content\n"
    "</Test>\n";
constexpr int iROUNDS = 50;

Attributes TwoAttributes() {
  Attributes attributes;
  attributes["name1"] = "value1";
  attributes["name2"] = "value2";
  return attributes;
}

void StartTagWithAttributes(XMLWriter& writer, std::ostream& out, bool oneByOne) {
  if (oneByOne) {
    out << writer.StartTag("TagWithAttributes") << writer.Attribute("name1", "value1")
        << writer.Attribute("name2", "value2");
  } else {
    out << writer.StartTag("TagWithAttributes", TwoAttributes());
  }
}

std::string WriteDocument(const boost::shared_ptr<XMLFormatter>& formatter, bool oneByOne) {
  std::ostringstream out;
  XMLWriter writer(formatter);
  Attributes attribute;
  attribute["name"] = "value";
  out << writer.StartDocA("1.0", "UTF-8", false, true) << writer.StartTag("Test")
      << writer.Comment("A comment", false) << writer.Tag("AnEmptyTag", "")
      << writer.Tag("EmptyTagWithAttribute", attribute);
  StartTagWithAttributes(writer, out, oneByOne);
  out << writer.Text("1 < 2") << writer.CDATASection(sCDATA, false) << writer.EndTag()
      << writer.Text("content") << writer.EndAllTags() << writer.EndDoc();
  return out.str();
}

void CheckCompactPieces() {
  std::ostringstream out;
  XMLWriter writer(XMLFormatter::CreateCompact());
  out << writer.EndTag() << writer.EndAllTags() << writer.Attribute("lost", "lost");
  out << writer.StartTag("a") << writer.StartTag("b") << writer.StartTag("c") << writer.EndAllTags();
  out << writer.Tag("d", "1 & '2'") << writer.EntityReference("amp") << writer.EntityReference("&lt;");
  out << writer.StartTag("e") << writer.EndTag() << writer.EndTag();
  OXA_TEST_ASSERT(out.str() == "<a><b><c></c></b></a><d>1 &amp; &apos;2&apos;</d>&amp;&lt;<e></e>");
}

void CheckPrettyPieces() {
  std::ostringstream out;
  XMLWriter writer(XMLFormatter::CreatePrettyPrint());
  out << writer.StartDocA("1.0", "UTF-8", false, true) << writer.StartTag("a") << writer.Text("text")
      << writer.EndTag() << writer.StartTag("x") << writer.EndTag()
      << writer.CDATASection(std::string(69, 'c'));
  OXA_TEST_ASSERT(out.str() == std::string(sDECLARATION) + "\n<a>text</a>\n<x></x>\n<![CDATA[\n  " +
                                   std::string(69, 'c') + "\n]]>\n");
}

void CheckLongComment() {
  const std::string text(80, 'c');
  std::ostringstream out;
  XMLWriter writer(XMLFormatter::CreatePrettyPrint());
  out << writer.StartDocA("1.0", "UTF-8", false, true) << writer.Comment(text);
  OXA_TEST_ASSERT(out.str() == std::string(sDECLARATION) + "\n<!-- \n  " + text + "\n -->\n");
}

// What was laid out comes out again as it is.
void CheckMarkup() {
  std::string document = sPRETTY;
  for (int round = 0; round < iROUNDS; ++round) {
    std::ostringstream out;
    XMLWriter writer(XMLFormatter::CreatePrettyPrint());
    out << writer.StartDocA("1.0", "UTF-8", false, true)
        << writer.Markup(document.substr(sizeof sDECLARATION));
    OXA_TEST_ASSERT(out.str() == document);
    document = out.str();
  }
}

// Writes down what it hears.
class Listener : public XMLParseHandler<> {
 public:
  Listener() { entities["&lt;"] = "<"; }

  void StartTag(const std::string& name) {
    XMLParseHandler<>::StartTag(name);
    m_heard += "<" + name;
  }
  void AttributeName(const std::string& name) { m_heard += " " + name + "="; }
  void AttributeValueText(const std::string& text) { m_heard += text; }
  void AttributeValueRef(const std::string& text) { m_heard += "{" + text + "}"; }
  void StartTagContent() { m_heard += ">"; }
  void EndEmptyTag() {
    XMLParseHandler<>::EndEmptyTag();
    m_heard += "/>";
  }
  void EndTag(const std::string& name) {
    XMLParseHandler<>::EndTag(name);
    m_heard += "</" + name + ">";
  }
  void Text(const std::string& text) { m_heard += text; }
  void ContentReference(const std::string& text) {
    std::string resolved;
    if (ResolveReference(text, resolved)) m_heard += resolved;
  }
  void Comment(const std::string& text) { m_heard += "(" + text + ")"; }
  void CData(const std::string& text) override { m_heard += "[" + text + "]"; }
  void EndDoc() { m_heard += "."; }

  const std::string& GetHeard() const { return m_heard; }
  bool IsStandalone() const { return standalone; }

 private:
  std::string m_heard;
};

std::string HeardOf(const std::string& document, bool matches) {
  XMLParser<Listener> byText;
  OXA_TEST_ASSERT(byText.Parse(document) == matches);
  std::istringstream stream(document);
  XMLParser<Listener> byStream;
  OXA_TEST_ASSERT(byStream.Parse(stream) == matches);
  OXA_TEST_ASSERT(byText.GetHeard() == byStream.GetHeard());
  return byText.GetHeard();
}

void CheckDocuments() {
  OXA_TEST_ASSERT(HeardOf("<a/>", true) == "<a/>.");
  OXA_TEST_ASSERT(HeardOf("<a>&lt;</a>", true) == "<a><</a>.");
  OXA_TEST_ASSERT(HeardOf("<a b='c'/>", true) == HeardOf("<a b=\"c\"/>", true));
  OXA_TEST_ASSERT(HeardOf("<a b='c&gt;d'/>", true) == "<a b=c{&gt;}d/>.");
  OXA_TEST_ASSERT(HeardOf("<a>b<!--c--><![CDATA[<d>]]></a>", true) == "<a>b(c)[<d>]</a>.");
  OXA_TEST_ASSERT(HeardOf("<!DOCTYPE a [<!ELEMENT a (#PCDATA)><!ENTITY b 'c'>]><a/>", true) == "<a/>.");
  OXA_TEST_ASSERT(HeardOf("<a></b>", true) == "<a></b>.");
  OXA_TEST_ASSERT(HeardOf("<a/>rest", false).rfind("<a/>", 0) == 0);
  HeardOf("", false);
  HeardOf("<a", false);
}

bool IsStandalone(const std::string& value, bool matches) {
  XMLParser<Listener> parser;
  OXA_TEST_ASSERT(parser.Parse("<?xml version=\"1.0\" standalone=\"" + value + "\"?><a/>") == matches);
  return parser.IsStandalone();
}

}  // namespace

TEST_XML::TEST_XML() : TestSuite("XML Tests") {
  AddTestMethods(*this, {{"Test XMLWriter", &TEST_XML::Writer}, {"Test XMLParser", &TEST_XML::Parser}});
}

void TEST_XML::Writer(std::string&) {
  for (const bool oneByOne : {false, true}) {
    OXA_TEST_ASSERT(WriteDocument(XMLFormatter::CreateCompact(), oneByOne) == sCOMPACT);
    OXA_TEST_ASSERT(WriteDocument(XMLFormatter::CreatePrettyPrint(), oneByOne) == sPRETTY);
  }
  CheckCompactPieces();
  CheckPrettyPieces();
  CheckLongComment();
  CheckMarkup();
}

void TEST_XML::Parser(std::string&) {
  CheckDocuments();
  OXA_TEST_ASSERT(IsStandalone("yes", true));
  OXA_TEST_ASSERT(!IsStandalone("no", true));
  IsStandalone("perhaps", false);
  OXA_TEST_ASSERT(HeardOf(sPRETTY, true).find("1 < 2") != std::string::npos);
}

}  // namespace Oxa::Core
