// The productions that no document contains, and the window on a stream.
#include "XML/XMLGrammar.h"

#include <gtest/gtest.h>

#include <boost/spirit/include/classic_multi_pass.hpp>
#include <cstddef>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "XML/XMLStreamIterator.h"

namespace Oxa::Core {
namespace {

using boost::spirit::classic::multi_pass_policies::illegal_backtracking;
namespace Rules = XMLProductions;

// Writes down all events.
class Echo {
 public:
  void StartDoc() { Note("StartDoc"); }
  void SetVersion(const char* first, const char* last) { Note("SetVersion", first, last); }
  void SetEncoding(const char* first, const char* last) { Note("SetEncoding", first, last); }
  void SetStandalone(const char* first, const char* last) { Note("SetStandalone", first, last); }
  void StartTag(const char* first, const char* last) { Note("StartTag", first, last); }
  void AttributeName(const char* first, const char* last) { Note("AttributeName", first, last); }
  void AttributeValueText(const char* first, const char* last) { Note("AttributeValueText", first, last); }
  void AttributeValueRef(const char* first, const char* last) { Note("AttributeValueRef", first, last); }
  void AttributeValue() { Note("AttributeValue"); }
  void Attribute() { Note("Attribute"); }
  void StartTagContent() { Note("StartTagContent"); }
  void EndEmptyTag() { Note("EndEmptyTag"); }
  void EndTag(const char* first, const char* last) { Note("EndTag", first, last); }
  void Text(const char* first, const char* last) { Note("Text", first, last); }
  void ContentReference(const char* first, const char* last) { Note("ContentReference", first, last); }
  void Comment(const char* first, const char* last) { Note("Comment", first, last); }
  void CData(const char* first, const char* last) { Note("CData", first, last); }
  void EndDoc() { Note("EndDoc"); }

  std::string m_sEvents;

 private:
  void Note(const char* event, const char* first = nullptr, const char* last = nullptr) {
    m_sEvents.append(event).append(" ").append(first, static_cast<std::size_t>(last - first)) += '\n';
  }
};

template <class Rule>
bool Matches(const Rule& rule, const std::string& text) {
  Echo echo;
  return XMLGrammar<Echo>(echo).Matches(rule, text.data(), text.data() + text.size());
}

// The smallest of `valid` comes first; of its truncations those of the lengths given match, too.
template <class Rule>
void Check(const Rule& rule, const std::vector<std::string>& valid, const std::vector<std::size_t>& whenCut,
           const std::vector<std::string>& wrong) {
  for (const std::string& text : valid) EXPECT_TRUE(Matches(rule, text)) << text;
  for (const std::string& text : wrong) EXPECT_FALSE(Matches(rule, text)) << text;
  std::vector<std::size_t> found;
  for (std::size_t size = 0; size < valid.front().size(); ++size)
    if (Matches(rule, valid.front().substr(0, size))) found.push_back(size);
  EXPECT_EQ(found, whenCut) << valid.front();
}

TEST(XMLGrammar, NamesAndTokensInARow) {  // [6], [8]
  Check(Rules::Names, {"a b", "a", "a b c"}, {1}, {"a  b", "a\tb", " a", "a ", "a 1", "a,b"});
  Check(Rules::Nmtokens, {"1 2", "1", "a - ."}, {1}, {"1  2", "1\n2", " 1", "1 ", "1 !", "1,2"});
}

TEST(XMLGrammar, Languages) {  // [33] to [38]
  Check(Rules::LanguageID, {"en", "EN-us", "i-navajo", "x-a-b-c"}, {},
        {"e", "eng", "en_us", "en-", "en-1", "i-"});
  Check(Rules::Langcode, {"en", "i-a", "X-bc"}, {}, {"e1", "a-b", "eng", "i_a"});
  Check(Rules::ISO639Code, {"en", "EN", "zZ"}, {}, {"e", "e1", "eng", "\xe4n"});
  Check(Rules::IanaCode, {"i-a", "I-navajo"}, {}, {"x-a", "i-1", "i.a"});
  Check(Rules::UserCode, {"x-a", "X-Own"}, {}, {"i-a", "x-1", "x.a"});
  Check(Rules::Subcode, {"u", "us"}, {}, {"", "1", "u1", "u-s"});
}

TEST(XMLGrammar, CharacterSets) {  // [2], [4], [13], [84] to [89]
  EXPECT_TRUE(Matches(Rules::Char, "\xff"));
  EXPECT_FALSE(Matches(Rules::Char, "\x0b"));
  EXPECT_FALSE(Matches(Rules::Char, "ab"));
  EXPECT_TRUE(Matches(Rules::NameChar, "\xb7"));
  EXPECT_FALSE(Matches(Rules::NameChar, ","));
  EXPECT_TRUE(Matches(Rules::PubidChar, "%"));
  EXPECT_FALSE(Matches(Rules::PubidChar, "\""));
  EXPECT_TRUE(Matches(Rules::Letter, "\xd6"));
  EXPECT_FALSE(Matches(Rules::Letter, "_"));
  EXPECT_TRUE(Matches(Rules::BaseChar, "z"));
  EXPECT_FALSE(Matches(Rules::BaseChar, "\xd7"));
  EXPECT_TRUE(Matches(Rules::Digit, "9"));
  EXPECT_FALSE(Matches(Rules::Digit, "a"));
  EXPECT_TRUE(Matches(Rules::Extender, "\xb7"));
  EXPECT_FALSE(Matches(Rules::Extender, "\xb6"));
  for (int c = 0; c < 256; ++c) {
    EXPECT_FALSE(Matches(Rules::Ideographic, std::string(1, static_cast<char>(c)))) << c;
    EXPECT_FALSE(Matches(Rules::CombiningChar, std::string(1, static_cast<char>(c)))) << c;
  }
}

TEST(XMLGrammar, ExternalSubset) {  // [30], [31], [79]
  const std::string text = "<?xml encoding='x'?>";
  Check(Rules::extSubset, {"%p;", "", text, text + "<!ELEMENT a ANY>", "<!---->\n<?p?>"}, {0},
        {"%p", "x", " " + text, text + text, "]]>"});
  Check(Rules::extSubsetDecl, {"<![INCLUDE[]]>", "", " ", "%p;<![IGNORE[]]><!ATTLIST a>"}, {0},
        {"<![INCLUDE[]]", "]]>", "<!INCLUDE[]]>", text});
  Check(Rules::extPE, {"%p;", "", text + "%p;"}, {0}, {"%;", "<a/>"});
}

TEST(XMLGrammar, ConditionalSections) {  // [61] to [65]
  Check(Rules::extSubsetDecl,
        {"<![IGNORE[]]>", "<![ IGNORE\n[ <a>&%]] ]>< <! [ ]]>", "<![IGNORE[<![x[]]>]]>",
         "<![IGNORE[a<![b<![c]]>d]]>e<![f]]>]]>"},
        {0},
        {"<![IGNORE[]]>]]>", "<![IGNORE[<![]]>", "<![IGNORE[\x01]]>", "<![ignore[]]>", "<![IGNORE]]>",
         "<! [IGNORE[]]>", "<![IGNORE []]"});
  Check(Rules::ignoreSect, {"<![IGNORE[]]>", "<![IGNORE[<![]]>]]>"}, {},
        {"<![INCLUDE[]]>", "<![IGNORE[<![]]>"});
  Check(Rules::Ignore, {"x", "", "]]", "<!", "<! [", "]] >"}, {0}, {"]]>", "<![", "\x02"});
  Check(Rules::extSubsetDecl,
        {"<![INCLUDE[<!---->]]>", "<![ INCLUDE [<![INCLUDE[%p;]]><![IGNORE[x]]> ]]>",
         "<![INCLUDE[]]><![INCLUDE[]]>"},
        {0},
        {"<![INCLUDE[<![INCLUDE[]]>", "<![INCLUDE[x]]>", "<![INCLUDE[]]>]]>", "<![Include[]]>",
         "<![INCLUDE]]>"});
}

TEST(XMLGrammar, ExternalEntities) {  // [77], [78], and [43] without an element around it
  Check(Rules::TextDecl, {"<?xml encoding='x'?>", "<?xml version='1.0' encoding=\"x\" ?>"}, {},
        {"<?xml?>", "<?xml version='1.0'?>", "<?xml encoding='x' standalone='no'?>", "<?xml encoding='x'>"});
  Check(Rules::extParsedEnt,
        {"x", "", "<?xml encoding='x'?>", "<a/>x<b>y<c/></b>&d;", "<?xml encoding='x'?><a/>"}, {0},
        {"<a>", "</a>", "]]>", "&", "<?xml encoding='x'?><?xml encoding='x'?>", "<!DOCTYPE a>"});
  Check(Rules::content, {"<a/>", "", "x<!----><?p?><![CDATA[]]>&a;<b></b>"}, {0},
        {"<a", "</a>", "<a></a></a>", "&a"});
  Echo echo;
  const std::string text = "<?xml version='1.0' encoding='x'?>";
  EXPECT_TRUE(XMLGrammar<Echo>(echo).Matches(Rules::extParsedEnt, text.data(), text.data() + text.size()));
  EXPECT_EQ(echo.m_sEvents, "SetVersion 1.0\nSetEncoding x\n");
}

// Deep sections are counted, not entered.
TEST(XMLGrammar, ConditionalSectionsNestAtAnyDepth) {
  std::string included;
  std::string ignored = "<![IGNORE[";
  for (int i = 0; i < 100000; ++i) included += "<![INCLUDE[";
  for (int i = 0; i < 100000; ++i) ignored += "<![";
  EXPECT_FALSE(Matches(Rules::extSubsetDecl, included));
  for (int i = 0; i < 100000; ++i) included += "]]>";
  for (int i = 0; i < 100001; ++i) ignored += "]]>";
  EXPECT_TRUE(Matches(Rules::extSubsetDecl, included));
  EXPECT_TRUE(Matches(Rules::extSubsetDecl, ignored));
}

// A place in a text that counts how often characters are looked at.
class Counting {
 public:
  using iterator_category = std::forward_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = char;

  Counting() = default;
  explicit Counting(const char* at) : m_pAt(at) {}
  char operator*() const {
    ++s_uLooks;
    return *m_pAt;
  }
  Counting& operator++() {
    ++m_pAt;
    return *this;
  }
  bool operator==(const Counting& other) const { return m_pAt == other.m_pAt; }
  bool operator!=(const Counting& other) const { return m_pAt != other.m_pAt; }
  std::ptrdiff_t operator-(const Counting& other) const { return m_pAt - other.m_pAt; }
  friend const char* BeginOf(const Counting& first) { return first.m_pAt; }
  friend const char* EndOf(const Counting&, const Counting& last) { return last.m_pAt; }
  friend void SetCheckpoint(const Counting&) {}

  static std::size_t s_uLooks;

 private:
  const char* m_pAt = nullptr;
};
std::size_t Counting::s_uLooks = 0;

struct Part {
  const char* begin;
  const char* repeated;
  const char* end;
  bool isDocument;
};

std::size_t LooksAt(const Part& part, int count) {
  std::string text = part.begin;
  for (int i = 0; i < count; ++i) text += part.repeated;
  text += part.end;
  Echo echo;
  Counting::s_uLooks = 0;
  EXPECT_EQ(XMLGrammar<Echo>(echo).Matches(Rules::document, Counting(text.data()),
                                           Counting(text.data() + text.size())),
            part.isDocument)
      << part.begin << part.repeated << part.end;
  return Counting::s_uLooks;
}

// Twice the text, twice the work, wherever the parser has to try and go back.
TEST(XMLGrammar, EffortIsInProportionToTheText) {
  const Part parts[] = {
      {"<a>", "<b>", "", false},
      {"<a>", "<b/>", "</a>", true},
      {"<a>", "<b>x</b>&lt;", "</a>", true},
      {"<a", " b='c'", "/>", true},
      {"<a", " b='c'", " <", false},
      {"<a", " ", "/>", true},
      {"<a b='", "x&lt;", "'/>", true},
      {"<a b='", "x&lt;", "/>", false},
      {"<a>", "]", "</a>", true},
      {"<a>", "] ]", "]]></a>", false},
      {"<a>", "x", "", false},
      {"<a>&", "x", " </a>", false},
      {"<a><!--", "- ", "--></a>", true},
      {"<a><!--", "x", "", false},
      {"<a><![CDATA[", "]", "]]></a>", true},
      {"<a><?p ", "?", "?></a>", true},
      {"<a><?p ", "?", "", false},
      {"<", "a", "", false},
      {"", "<!-- -->\n", "<a/>", true},
      {"<a/>", "<?p?> ", "x", false},
      {"<!DOCTYPE a [", "%p; ", "]><a/>", true},
      {"<!DOCTYPE a [", "<!ELEMENT a (b,(c|d)*)>", "x", false},
      {"<!DOCTYPE a [<!ELEMENT a (b", " , b", ")>]><a/>", true},
      {"<!DOCTYPE a [<!ELEMENT a (b", "|(b , c)", ")>]><a/>", true},
      {"<!DOCTYPE a [<!ELEMENT a (#PCDATA", "|b", ")*>]><a/>", true},
      {"<!DOCTYPE a [<!ELEMENT a (#PCDATA", "|b", ")>]><a/>", false},
      {"<!DOCTYPE a [<!ELEMENT a (b", " ", ")>]><a/>", true},
      {"<!DOCTYPE a [<!ATTLIST a", " b CDATA #IMPLIED", ">]><a/>", true},
      {"<!DOCTYPE a [<!ATTLIST a b NOTATION (n", "|n", ") ''>]><a/>", true},
      {"<!DOCTYPE a [<!ATTLIST a b (n", "|n", ")>]><a/>", false},
      {"<!DOCTYPE a [<!ENTITY e '", "%p;&x;y", "'>]><a/>", true},
      {"<!DOCTYPE a [<!ENTITY e '", "%p;&x;y", ">]><a/>", false},
      {"<!DOCTYPE a [<!ENTITY e SYSTEM '", "x", "' NDATA >]><a/>", false},
      {"<!DOCTYPE a [<!NOTATION n PUBLIC '", "x", "'>]><a/>", true},
      {"<!DOCTYPE a PUBLIC '", "x", "'><a/>", false},
  };
  for (const Part& part : parts) {
    const std::size_t once = LooksAt(part, 800);
    EXPECT_GT(once, 800U);
    const std::size_t twice = LooksAt(part, 1600);
    EXPECT_LE(twice, 2 * once + 1000) << part.begin << part.repeated << part.end;
  }
}

// In a window of one character, which forgets whatever it may: the parser never goes back behind a checkpoint,
// wherever a document goes wrong, and tells the same as with a text.
void ExpectTheSameInASmallWindow(const std::string& text) {
  Echo echo;
  const bool full = XMLGrammar<Echo>(echo).Matches(Rules::document, text.data(), text.data() + text.size());
  for (const std::size_t room : {1U, 11U}) {
    std::istringstream stream(text);
    XMLStreamWindow window(stream, room);
    Echo streamed;
    bool streamedFull = false;
    EXPECT_NO_THROW(streamedFull = XMLGrammar<Echo>(streamed).Matches(Rules::document, window)) << text;
    EXPECT_EQ(streamedFull, full) << text;
    EXPECT_EQ(streamed.m_sEvents, echo.m_sEvents) << text;
  }
}

TEST(XMLGrammar, WhatIsForgottenIsNeverNeededAgain) {
  const std::string document =
      "<?xml version='1.0' encoding=\"x\" standalone='no' ?>\n<!--c--><?pi x?>\n"
      "<!DOCTYPE a PUBLIC 'p' 's' [<!ELEMENT a (b|(c,d)+)*>%p;<!ATTLIST a b CDATA #FIXED 'v&lt;' c (d|e) "
      "#IMPLIED>"
      "<!ENTITY % e 'x&y;'><!ENTITY f SYSTEM 's' NDATA n><!NOTATION n PUBLIC 'p'><!--c--><?p?> ] >\n<!--d-->"
      "<a b='c&d;e' f = \"\">t]]&#10;<b/><![CDATA[ ] ]]]><!-- - --><?p ?\?>\n<c>u</c ><d "
      "e='f'\n/></a>\n<!--g--> ";
  ExpectTheSameInASmallWindow(document);
  for (std::size_t i = 0; i < document.size(); ++i) {
    ExpectTheSameInASmallWindow(document.substr(0, i));
    for (const char wrong : {'<', '>', '\'', ' ', 'x', '\x01'}) {
      std::string changed = document;
      changed[i] = wrong;
      ExpectTheSameInASmallWindow(changed);
    }
  }
}

// However long the document, what has been dealt with is forgotten: nobody has to keep it whole in memory.
TEST(XMLGrammar, OfAStreamNoMoreIsKeptThanAConstructNeeds) {
  const Part parts[] = {
      {"<a>", "<b c='d'>text &lt;</b><!-- e --><f/>", "</a>", true},
      {"<a>", "<b><![CDATA[ ]] ]]>", "", false},
      {"<?xml version='1.0'?>", "<!-- a -->\n<?p?>", "<a/>", true},
      {"<!DOCTYPE a [", "<!ELEMENT b (c|(d,e))>%p; <!-- f -->", "]><a/>", true},
      {"<!DOCTYPE a>", "<!-- a -->\n<?p?>", "<a/>", true},
      {"<a/>", "<!-- a -->\n<?p?>", "", true},
  };
  for (const Part& part : parts) {
    std::string text = part.begin;
    for (int i = 0; i < 2000; ++i) text += part.repeated;
    std::istringstream stream(text + part.end);
    XMLStreamWindow window(stream, 64);
    Echo echo;
    EXPECT_EQ(XMLGrammar<Echo>(echo).Matches(Rules::document, window), part.isDocument) << part.repeated;
    EXPECT_LE(window.GetRoom(), 256U) << part.begin << part.repeated << part.end;
  }
}

TEST(XMLStreamWindow, GivesTheStreamAndItsEnd) {
  std::istringstream stream("abc");
  XMLStreamWindow window(stream, 2);
  XMLStreamIterator at(window);
  const XMLStreamIterator begin = at;
  const XMLStreamIterator end;
  std::string text;
  for (; at != end; ++at) text += *at;
  EXPECT_EQ(text, "abc");
  EXPECT_EQ(std::string(begin.Begin(), begin.End(at)), "abc");
  EXPECT_TRUE(at.IsEnd());
  EXPECT_EQ(end, end);
  EXPECT_NE(begin, at);
  XMLStreamIterator again = begin;
  EXPECT_EQ(*again++, 'a');
  EXPECT_EQ(*again, 'b');
}

TEST(XMLStreamWindow, GoingBackBehindACheckpointIsIllegal) {
  std::istringstream stream("abcdefgh");
  XMLStreamWindow window(stream, 2);
  const XMLStreamIterator begin(window);
  XMLStreamIterator at = begin;
  at += 1;
  EXPECT_FALSE(begin.IsEnd());
  EXPECT_FALSE(at.IsEnd());
  ++at;
  at.Checkpoint();
  EXPECT_FALSE(at.IsEnd());
  EXPECT_EQ(*at, 'c');
  EXPECT_THROW(static_cast<void>(begin.IsEnd()), illegal_backtracking);
  EXPECT_THROW(static_cast<void>(begin == XMLStreamIterator()), illegal_backtracking);
  EXPECT_EQ(window.GetRoom(), 2U);
}

TEST(XMLStreamWindow, GrowsOnlyWithWhatHasToBeKept) {
  const std::string text(100000, 'x');
  std::istringstream stream(text);
  XMLStreamWindow window(stream, 64);
  XMLStreamIterator at(window);
  for (int i = 0; i < 90000; ++i, ++at) {
    at.Checkpoint();
    ASSERT_FALSE(at.IsEnd());
  }
  EXPECT_EQ(window.GetRoom(), 64U);
  const XMLStreamIterator kept = at;
  EXPECT_EQ(at.Skip([](char c) { return c == 'x'; }), 10000U);
  EXPECT_TRUE(at.IsEnd());
  EXPECT_EQ(kept.End(at) - kept.Begin(), 10000);
  EXPECT_GE(window.GetRoom(), 10000U);
  EXPECT_LE(window.GetRoom(), 40000U);
}

}  // namespace
}  // namespace Oxa::Core
