// Depth and size.
#include <Infrastructure/OxaCore/XMLParser.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "XML/XMLParserTestSupport.h"

namespace XMLParserTests {
namespace {

// How much text there is.
class Counter : public XMLParseHandler<> {
 public:
  void AttributeValueText(const String& text) { m_uText += text.size(); }
  void Text(const String& text) { m_uText += text.size(); }
  void Comment(const String& text) { m_uText += text.size(); }
  void CData(const String& text) override { m_uText += text.size(); }

  std::size_t m_uText = 0;
};

std::string Repeat(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

std::string WithGroups(int depth, const std::string& inner = "b") {
  return "<!DOCTYPE a [<!ELEMENT a " + Repeat("(", depth) + inner + Repeat(")", depth) + ">]><a/>";
}

TEST(XMLParserDepth, GroupsMayBeNestedAThousandDeep) {
  EXPECT_TRUE(ParseAllWays(WithGroups(1)).full);
  EXPECT_TRUE(ParseAllWays(WithGroups(1000)).full);
  EXPECT_FALSE(ParseAllWays(WithGroups(1000, "b|c,d")).full);
  EXPECT_TRUE(ParseAllWays(WithGroups(1000, "b,c,d")).full);
  EXPECT_FALSE(ParseAllWays(WithGroups(1001)).full);
  EXPECT_FALSE(ParseAllWays(WithGroups(100000)).full);
}

TEST(XMLParserDepth, GroupsAreCountedAnewByEachDeclaration) {
  const std::string group = Repeat("(", 600) + "b" + Repeat(")", 600);
  const std::string declaration = "<!ELEMENT a (" + group + "," + group + ")>";
  EXPECT_TRUE(ParseAllWays("<!DOCTYPE a [" + declaration + declaration + "]><a/>").full);
}

TEST(XMLParserDepth, ATokenMayBeLongerThanEveryBuffer) {
  const std::string text(3000000, 'x');
  const std::string documents[] = {"<a>" + text + "</a>", "<a b='" + text + "'/>",
                                   "<a><!--" + text + "--></a>", "<a><![CDATA[" + text + "]]></a>"};
  for (const std::string& document : documents) {
    XMLParser<Counter> parser;
    EXPECT_TRUE(parser.Parse(document));
    EXPECT_EQ(parser.m_uText, text.size());
    Pieces pieces(document, 4000);
    std::istream stream(&pieces);
    EXPECT_TRUE(parser.Parse(stream));
    EXPECT_EQ(parser.m_uText, 2 * text.size());
  }
}

// Every place of a document comes to lie at every place of the buffer's end.
TEST(XMLParserDepth, BuffersMayEndAnywhere) {
  const std::string part = "<b c='d&amp;e' f=\"\">t &lt; u]]<!-- - --><![CDATA[ ]] ]]><?pi x?><g/></b\n>\r\n";
  std::string document = "<?xml version='1.0'?><!DOCTYPE a [<!ELEMENT a (b|c)*><!-- d -->%p;]>";
  document += "<a>" + Repeat(part, 700) + "</a><!-- e --> <?p?>";
  const Outcome expected = ParseText(document);
  EXPECT_TRUE(expected.full);
  for (const std::size_t size : {2U, 3U, 61U, 64U, 4097U, 20000U}) {
    const Outcome pieced = ParsePieces(document, size);
    EXPECT_TRUE(pieced.full);
    EXPECT_TRUE(pieced.events == expected.events) << size;
  }
}

}  // namespace
}  // namespace XMLParserTests
