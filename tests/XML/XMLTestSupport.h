// What the tests of XML writing share: the worked example, and a stream that shows what reached it.
#ifndef OXACORE_TESTS_XML_XMLTESTSUPPORT_H
#define OXACORE_TESTS_XML_XMLTESTSUPPORT_H

#include <Infrastructure/OxaCore/XMLFormatter.h>
#include <Infrastructure/OxaCore/XMLWriter.h>

#include <sstream>
#include <string>

namespace XMLTest {

using Oxa::Core::XMLFormatter;
using Oxa::Core::XMLWriter;
using Map = Oxa::Core::XMLAttributeMap<std::string>;
using Value = Oxa::Core::XMLAttributeValue<std::string>;

/// The attributes name1="value1" and name2="value2".
inline Map TwoAttributes() {
  Map map;
  map["name1"] = "value1";
  map["name2"] = "value2";
  return map;
}

/// How the example's last start tag gets its attributes.
enum class Attributes { eBY_MAP, eONE_BY_ONE };

/// Starts the tag with the attributes of TwoAttributes.
inline void StartTagWithAttributes(XMLWriter& writer, std::ostream& out, Attributes how) {
  if (how == Attributes::eBY_MAP)
    out << writer.StartTag("TagWithAttributes", TwoAttributes());
  else
    out << writer.StartTag("TagWithAttributes") << writer.Attribute("name1", "value1")
        << writer.Attribute("name2", "value2");
}

/// A document with every kind of piece that most documents have.
inline void WriteExample(XMLWriter& writer, std::ostream& out, Attributes how = Attributes::eBY_MAP) {
  Map one;
  one["name"] = "value";
  out << writer.StartDocA("1.0", "UTF-8", false, true) << writer.StartTag("Test")
      << writer.Comment("A comment", false) << writer.Tag("AnEmptyTag", "")
      << writer.Tag("EmptyTagWithAttribute", one);
  StartTagWithAttributes(writer, out, how);
  out << writer.Text("1 < 2") << writer.CDATASection("<CDATA Test>Entity usage: &amp;</CDATA Test>", false)
      << writer.EndTag() << writer.Text("content") << writer.EndAllTags() << writer.EndDoc();
}

constexpr char sCOMPACT_EXAMPLE[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
    "<Test>"
    "<!--A comment-->"
    "<AnEmptyTag/>"
    "<EmptyTagWithAttribute name=\"value\"/>"
    "<TagWithAttributes name1=\"value1\" name2=\"value2\">"
    "1 &lt; 2"
    "<![CDATA[<CDATA Test>Entity usage: &amp;</CDATA Test>]]>"
    "</TagWithAttributes>"
    "content"
    "</Test>";

constexpr char sPRETTY_EXAMPLE[] =
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

/// A compact writer and what it has written.
struct Compact {
  std::ostringstream out;
  XMLWriter writer{XMLFormatter::CreateCompact()};

  std::string Text() const { return out.str(); }
};

/// A pretty-printing writer and what it has written.
struct Pretty {
  std::ostringstream out;
  XMLWriter writer{XMLFormatter::CreatePrettyPrint()};

  std::string Text() const { return out.str(); }
};

/// `count` times `c`.
inline std::string Times(std::size_t count, char c) { return std::string(count, c); }

}  // namespace XMLTest

#endif
