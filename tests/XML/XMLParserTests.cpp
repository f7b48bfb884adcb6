// What the parser tells its handler, and in what order.
#include <Infrastructure/OxaCore/XMLParser.h>
#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <stdexcept>
#include <string>

#include "XML/XMLParserTestSupport.h"

namespace XMLParserTests {
namespace {

using Oxa::Core::XMLStringPolicy;

TEST(XMLParser, EmptyTextIsNoDocument) {
  const Outcome outcome = ParseAllWays("");
  EXPECT_FALSE(outcome.full);
  EXPECT_EQ(outcome.events, "StartDoc\n");
}

TEST(XMLParser, EmptyElementNeedsNoDeclaration) {
  const Outcome outcome = ParseAllWays("<a/>");
  EXPECT_TRUE(outcome.full);
  EXPECT_EQ(outcome.events, "StartDoc\nStartTag a\nEndEmptyTag\nEndDoc\n");
}

TEST(XMLParser, DocumentTypeDeclarationGivesNoEvent) {
  const Outcome outcome = ParseAllWays(
      "<!DOCTYPE a SYSTEM 'a.dtd' [<!-- no --><!ELEMENT a (#PCDATA|b)*>\n<!ATTLIST a b CDATA 'v&lt;w' c ID "
      "#IMPLIED>"
      "<!ENTITY e \"x&#65;%p;\"><!NOTATION n PUBLIC 'p'>%p;<?pi no?>]><a/>");
  EXPECT_TRUE(outcome.full);
  EXPECT_EQ(outcome.events, "StartDoc\nStartTag a\nEndEmptyTag\nEndDoc\n");
}

TEST(XMLParser, TextBehindTheRootIsNoMatchButTheRootHasBeenDelivered) {
  const Outcome outcome = ParseAllWays("<a>t</a>x");
  EXPECT_FALSE(outcome.full);
  EXPECT_EQ(outcome.events, "StartDoc\nStartTag a\nStartTagContent\nText t\nEndTag a\nEndDoc\n");
}

TEST(XMLParser, CommentsAndInstructionsAndWhiteSpaceMayStandBehindTheRoot) {
  const Outcome outcome = ParseAllWays("<a/>\n<!-- c --> <?p x?>\t");
  EXPECT_TRUE(outcome.full);
  EXPECT_EQ(outcome.events, "StartDoc\nStartTag a\nEndEmptyTag\nComment  c \nEndDoc\n");
}

TEST(XMLParser, BothQuotesGiveTheSameValue) {
  const std::string events =
      "StartDoc\nStartTag a\nAttributeName b\nAttributeValueText v w\nAttributeValue\nAttribute\n"
      "EndEmptyTag\nEndDoc\n";
  EXPECT_EQ(ParseAllWays("<a b='v w'/>").events, events);
  EXPECT_EQ(ParseAllWays("<a b=\"v w\"/>").events, events);
}

TEST(XMLParser, WhicheverQuotesTheEventsAreTheSame) {
  const std::string events =
      "StartDoc\nSetVersion 1.1\nSetEncoding x\nSetStandalone yes\nStartTag a\n"
      "AttributeName b\nAttributeValueText v\nAttributeValueRef &lt;\nAttributeValueText w\n"
      "AttributeValueRef &#65;\nAttributeValue\nAttribute\nEndEmptyTag\nEndDoc\n";
  std::string document = "<?xml version='1.1' encoding='x' standalone='yes'?><a b='v&lt;w&#65;'/>";
  EXPECT_EQ(ParseAllWays(document).events, events);
  for (char& c : document)
    if (c == '\'') c = '"';
  EXPECT_EQ(ParseAllWays(document).events, events);
}

TEST(XMLParser, StandaloneIsYesOrNo) {
  for (const char* quote : {"'", "\""}) {
    const std::string before = std::string("<?xml version='1.0' standalone=") + quote;
    const std::string after = std::string(quote) + "?><a/>";
    XMLParser<Recorder> parser;
    EXPECT_TRUE(parser.Parse(before + "yes" + after));
    EXPECT_NE(parser.m_sEvents.find("SetStandalone yes\n"), std::string::npos);
    EXPECT_TRUE(parser.Parse(before + "no" + after));
    EXPECT_NE(parser.m_sEvents.find("SetStandalone no\n"), std::string::npos);
    for (const char* other : {"", "Yes", "NO", "true", "yes ", "yesno"})
      EXPECT_FALSE(ParseAllWays(before + other + after).full) << other;
  }
}

// Every event, in the order of the document.
TEST(XMLParser, EventsComeInTheOrderOfTheDocument) {
  const Outcome outcome = ParseAllWays(
      "<?xml version=\"1.0\" encoding='UTF-8' standalone='yes' ?>\n"
      "<!-- before --><?target content?><!DOCTYPE root [<!ELEMENT root ANY>]><!--between-->\n"
      "<root one='1' two=\"a&amp;b&#65;\" three=''>text &lt; more&#10;<empty/><e x='y' />"
      "<![CDATA[<&]] >]]>]]<?pi?><!---->\r\n<inner>in</inner ></root\t>\n<!--behind-->");
  EXPECT_TRUE(outcome.full);
  EXPECT_EQ(
      outcome.events,
      "StartDoc\nSetVersion 1.0\nSetEncoding UTF-8\nSetStandalone yes\nComment  before \nComment between\n"
      "StartTag root\n"
      "AttributeName one\nAttributeValueText 1\nAttributeValue\nAttribute\n"
      "AttributeName two\nAttributeValueText a\nAttributeValueRef &amp;\nAttributeValueText b\n"
      "AttributeValueRef &#65;\nAttributeValue\nAttribute\n"
      "AttributeName three\nAttributeValue\nAttribute\nStartTagContent\n"
      "Text text \nContentReference &lt;\nText  more\nContentReference &#10;\n"
      "StartTag empty\nEndEmptyTag\n"
      "StartTag e\nAttributeName x\nAttributeValueText y\nAttributeValue\nAttribute\nEndEmptyTag\n"
      "CData <&]] >\nText ]]\nComment \nText \r\n\n"
      "StartTag inner\nStartTagContent\nText in\nEndTag inner\nEndTag root\nComment behind\nEndDoc\n");
}

TEST(XMLParser, NamesOfEndTagsAreNotCompared) {
  const Outcome outcome = ParseAllWays("<a><b></a></b>");
  EXPECT_TRUE(outcome.full);
  EXPECT_EQ(
      outcome.events,
      "StartDoc\nStartTag a\nStartTagContent\nStartTag b\nStartTagContent\nEndTag a\nEndTag b\nEndDoc\n");
}

TEST(XMLParser, AttributesMayComeTwice) { EXPECT_TRUE(ParseAllWays("<a b='1' b='2'/>").full); }

// Whatever fails behind it, a tag's actions take place once.
TEST(XMLParser, ActionsTakePlaceOnceWhereTheTagFails) {
  const Outcome outcome = ParseAllWays("<a><b c='d' e='f' <");
  EXPECT_FALSE(outcome.full);
  EXPECT_EQ(outcome.events,
            "StartDoc\nStartTag a\nStartTagContent\nStartTag b\n"
            "AttributeName c\nAttributeValueText d\nAttributeValue\nAttribute\n"
            "AttributeName e\nAttributeValueText f\nAttributeValue\nAttribute\n");
}

TEST(XMLParser, CharacterDataEndsBeforeTheEndOfASection) {
  const Outcome outcome = ParseAllWays("<a>x]]>y</a>");
  EXPECT_FALSE(outcome.full);
  EXPECT_EQ(outcome.events, "StartDoc\nStartTag a\nStartTagContent\nText x\n");
}

TEST(XMLParser, UnfinishedCommentsAndSectionsGiveNoEvent) {
  const std::string begun = "StartDoc\nStartTag a\nStartTagContent\n";
  EXPECT_EQ(ParseAllWays("<a><!-- c -- d --></a>").events, begun);
  EXPECT_EQ(ParseAllWays("<a><!-- c --").events, begun);
  EXPECT_EQ(ParseAllWays("<a><![CDATA[ c ]]").events, begun);
}

// An encoding is recorded and has no effect: bytes are handed on as they are.
TEST(XMLParser, BytesAreHandedOnUndecoded) {
  const Outcome outcome =
      ParseAllWays("<?xml version='1.0' encoding='ISO-8859-1'?><\xe4 \xf6='\xfc'>\x80\x9f\xa0\xff</\xe4>");
  EXPECT_TRUE(outcome.full);
  EXPECT_EQ(outcome.events,
            "StartDoc\nSetVersion 1.0\nSetEncoding ISO-8859-1\nStartTag \xe4\nAttributeName \xf6\n"
            "AttributeValueText \xfc\nAttributeValue\nAttribute\nStartTagContent\nText \x80\x9f\xa0\xff\n"
            "EndTag \xe4\nEndDoc\n");
}

TEST(XMLParser, AZeroByteIsNoCharacter) {
  using std::string_literals::operator""s;
  EXPECT_FALSE(ParseAllWays("<a>\0</a>"s).full);
  EXPECT_FALSE(ParseAllWays("<a b='\0'/>"s).full);
  EXPECT_FALSE(ParseAllWays("<a/>\0"s).full);
  EXPECT_FALSE(ParseAllWays("<a><!--\0--></a>"s).full);
}

TEST(XMLParser, DeclarationIsKeptUntilTheNextOne) {
  class Look : public Recorder {
   public:
    std::string All() const { return version + '|' + encoding + '|' + (standalone ? "yes" : "no"); }
    std::size_t Open() const { return tagNames.size(); }
    std::size_t Room() const { return tagNames.capacity(); }
  };
  XMLParser<Look> look;
  EXPECT_EQ(look.All(), "||no");
  EXPECT_TRUE(look.Parse("<?xml version='1.1' encoding='a' standalone='yes'?><a/>"));
  EXPECT_EQ(look.All(), "1.1|a|yes");
  EXPECT_TRUE(look.Parse("<a/>"));
  EXPECT_EQ(look.All(), "1.1|a|yes");
  EXPECT_FALSE(look.Parse("<?xml version='1.0' standalone='no'?><a><b>"));
  EXPECT_EQ(look.All(), "1.0|a|no");
  EXPECT_EQ(look.Open(), 2U);
  EXPECT_FALSE(look.Parse(""));
  EXPECT_EQ(look.Open(), 0U);
  EXPECT_GE(look.Room(), 32U);
}

// The open elements as the handler sees them.
TEST(XMLParser, NamesOfOpenElementsAreAStack) {
  class Depths : public XMLParseHandler<> {
   public:
    void Text(const String&) {
      for (const String& name : tagNames) m_sPath += '/' + name;
      m_sPath += ' ';
    }
    std::string m_sPath;
  };
  XMLParser<Depths> parser;
  EXPECT_TRUE(parser.Parse("<a>1<b>2<c/>3</x>4<d>5</d></a>"));
  EXPECT_EQ(parser.m_sPath, "/a /a/b /a/b /a /a/d ");
}

class References : public XMLParseHandler<> {
 public:
  References() { entities["&lt;"] = "<"; }
  using XMLParseHandler<>::expandCharRefs;

  std::string Character(const std::string& text) {
    std::string out = "untouched";
    return ResolveCharRef(text, out) ? out : "none, " + out;
  }
  std::string Entity(const std::string& text) {
    std::string out = "untouched";
    return LookupEntity(text, out) ? out : "none, " + out;
  }
  void ContentReference(const String& text) {
    String out;
    m_sSeen += ResolveReference(text, out) ? out : "[" + text + "]";
  }
  std::string m_sSeen;
};

// Builds texts in capitals, and compares without regard to them.
struct LoudPolicy : XMLStringPolicy<std::string> {
  static void Assign(String& text, const char* first, const char* last) {
    text.assign(first, last);
    for (char& c : text)
      if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  static bool Equal(const String& text, const char* other) {
    String loud;
    Assign(loud, other, other + std::strlen(other));
    return text == loud;
  }
};

TEST(XMLParser, ThePolicyBuildsAndComparesTheTexts) {
  class Loud : public XMLParseHandler<LoudPolicy> {
   public:
    using Base = XMLParseHandler<LoudPolicy>;
    Loud() { entities["&LT;"] = "<"; }
    void StartTag(const String& name) {
      Base::StartTag(name);
      m_sSeen += version + encoding + (standalone ? " yes " : " no ") + tagNames.back();
    }
    void ContentReference(const String& reference) {
      String out;
      m_sSeen += ResolveReference(reference, out) ? out : reference;
    }
    String m_sSeen;
  };
  XMLParser<Loud> parser;
  EXPECT_TRUE(parser.Parse("<?xml version='1.0a' encoding='x' standalone='yes'?><abc>&lt;&gt;</abc>"));
  EXPECT_EQ(parser.m_sSeen, "1.0AX yes ABC<&GT;");
}

TEST(XMLParser, PredefinedEntityIsFoundInTheTable) {
  XMLParser<References> parser;
  EXPECT_TRUE(parser.Parse("<a>&lt;</a>"));
  EXPECT_EQ(parser.m_sSeen, "<");
}

// They come with their "&", so that they are unknown, whether they are to be expanded or not.
TEST(XMLParser, CharacterReferencesOfADocumentAreUnknown) {
  for (const bool expand : {false, true}) {
    XMLParser<References> parser;
    parser.expandCharRefs = expand;
    EXPECT_TRUE(parser.Parse("<a>&lt;&#65;&#x41;&other;</a>"));
    EXPECT_EQ(parser.m_sSeen, "<[&#65;][&#x41;][&other;]");
  }
}

TEST(XMLParser, EntitiesAreLookedUpByTheWholeReference) {
  References handler;
  EXPECT_EQ(handler.Entity("&lt;"), "<");
  EXPECT_EQ(handler.Entity("lt"), "none, untouched");
  EXPECT_EQ(handler.Entity("&gt;"), "none, untouched");
}

TEST(XMLParser, UnexpandedCharacterReferencesAreCopied) {
  References handler;
  EXPECT_EQ(handler.Character("#65;"), "#65;");
  EXPECT_EQ(handler.Character("#x41;"), "#x41;");
  EXPECT_EQ(handler.Character("#"), "#");
  EXPECT_EQ(handler.Character("&#65;"), "none, untouched");
  EXPECT_EQ(handler.Character(""), "none, untouched");
}

// Digits are taken from index 2 or 3 on, without the last character.
TEST(XMLParser, ExpandedCharacterReferencesAreReadByPlace) {
  References handler;
  handler.expandCharRefs = true;
  EXPECT_EQ(handler.Character("##65;"), "A");
  EXPECT_EQ(handler.Character("##0x41;"), "A");
  EXPECT_EQ(handler.Character("##0101;"), "A");
  EXPECT_EQ(handler.Character("##x41;"), "A");
  EXPECT_EQ(handler.Character("##x141;"), "A");
  EXPECT_EQ(handler.Character("##321;"), "A");
  EXPECT_EQ(handler.Character("#165;"), "A");
  EXPECT_EQ(handler.Character("#x65;"), "A");
  EXPECT_EQ(handler.Character("##xff;"), "\xff");
  EXPECT_EQ(handler.Character("#"), std::string(1, '\0'));
  EXPECT_EQ(handler.Character("#x"), std::string(1, '\0'));
  EXPECT_EQ(handler.Character("##x"), std::string(1, '\0'));
  EXPECT_EQ(handler.Character("##x;"), std::string(1, '\0'));
  EXPECT_EQ(handler.Character("&#65;"), "none, untouched");
}

class Throwing : public Recorder {
 public:
  void Text(const String& text) {
    Recorder::Text(text);
    if (text == "bad") throw std::runtime_error("thrown by the handler");
  }
};

TEST(XMLParser, WhatTheHandlerThrowsPassesThrough) {
  XMLParser<Throwing> parser;
  EXPECT_THROW(parser.Parse("<a><b/>bad<c/></a>"), std::runtime_error);
  EXPECT_EQ(parser.m_sEvents, "StartDoc\nStartTag a\nStartTagContent\nStartTag b\nEndEmptyTag\nText bad\n");
  std::istringstream stream("<a><b/>bad<c/></a>");
  EXPECT_THROW(parser.Parse(stream), std::runtime_error);
  EXPECT_TRUE(parser.Parse("<a>good</a>"));
}

// A parse within a parse, of the same kind of input and of the other.
class Nesting : public Recorder {
 public:
  void Text(const String& text) {
    const Outcome inner = ParseText("<x>" + text + "</x>");
    const Outcome streamed = ParsePieces("<y b='" + text + "'/>", 2);
    EXPECT_TRUE(inner.full);
    EXPECT_TRUE(streamed.full);
    EXPECT_NE(streamed.events.find("AttributeValueText " + text + "\n"), std::string::npos);
    Recorder::Text(text);
  }
};

TEST(XMLParser, AHandlerMayParseWithAnotherParser) {
  const std::string document = "<a><b c='d'>one</b>two<e>three</e><f/>four</a>";
  const Outcome plain = ParseText(document);
  XMLParser<Nesting> parser;
  EXPECT_TRUE(parser.Parse(document));
  EXPECT_EQ(parser.m_sEvents, plain.events);
  Pieces pieces(document, 3);
  std::istream stream(&pieces);
  XMLParser<Nesting> streamed;
  EXPECT_TRUE(streamed.Parse(stream));
  EXPECT_EQ(streamed.m_sEvents, plain.events);
}

TEST(XMLParser, AStreamIsReadFromWhereItStandsToItsEnd) {
  std::istringstream stream("skipped <a/>");
  std::string word;
  stream >> word;
  EXPECT_TRUE(ParseStream(stream).full);
  EXPECT_EQ(stream.rdstate(), std::ios::eofbit);
  EXPECT_FALSE(ParseStream(stream).full);
}

TEST(XMLParser, AStreamThatIsNotGoodGivesNothing) {
  std::istringstream stream("<a/>");
  stream.setstate(std::ios::failbit);
  const Outcome outcome = ParseStream(stream);
  EXPECT_FALSE(outcome.full);
  EXPECT_EQ(outcome.events, "StartDoc\n");
  EXPECT_EQ(stream.rdstate(), std::ios::failbit);
}

class Failing : public Pieces {
 public:
  using Pieces::Pieces;

 protected:
  int_type underflow() override {
    const int_type c = Pieces::underflow();
    if (c == traits_type::eof()) throw std::runtime_error("thrown by the buffer");
    return c;
  }
};

TEST(XMLParser, ABufferThatThrowsIsAtItsEnd) {
  Failing failing("<a>text", 4);
  std::istream stream(&failing);
  stream.exceptions(std::ios::eofbit);
  const Outcome outcome = ParseStream(stream);
  EXPECT_FALSE(outcome.full);
  EXPECT_EQ(outcome.events, "StartDoc\nStartTag a\nStartTagContent\nText text\n");
  EXPECT_TRUE(stream.bad());
}

// What can be recognised is delivered before more is asked for.
TEST(XMLParser, AStreamIsNotReadAheadOfNeed) {
  class Watched : public Pieces {
   public:
    Watched(std::string text, const std::string& events) : Pieces(std::move(text), 1), m_rEvents(events) {}
    std::string m_sAtTheEnd;

   protected:
    int_type underflow() override {
      const int_type c = Pieces::underflow();
      if (c == 'Z') m_sAtTheEnd = m_rEvents;
      return c;
    }

   private:
    const std::string& m_rEvents;
  };
  XMLParser<Recorder> parser;
  Watched watched("<a><b c='d'/>Z</a>", parser.m_sEvents);
  std::istream stream(&watched);
  EXPECT_TRUE(parser.Parse(stream));
  EXPECT_EQ(watched.m_sAtTheEnd,
            "StartDoc\nStartTag a\nStartTagContent\nStartTag b\nAttributeName c\nAttributeValueText d\n"
            "AttributeValue\nAttribute\nEndEmptyTag\n");
}

}  // namespace
}  // namespace XMLParserTests
