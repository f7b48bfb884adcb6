// A set of documents for every production that a document can contain: valid ones, everything that is left when
// the smallest is cut short, and wrong ones. The verdicts are read off the grammar.
#include <gtest/gtest.h>

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "XML/XMLParserTestSupport.h"

namespace XMLParserTests {
namespace {

using Texts = std::vector<std::string>;

struct Production {
  const char* name;    // with its number
  const char* before;  // what stands around it to make a document
  const char* after;
  Texts valid;                            // the smallest first
  std::vector<std::size_t> validWhenCut;  // lengths of the smallest that are valid, too
  Texts wrong;
};

constexpr char sDTD[] = "<!DOCTYPE a [";
constexpr char sEND_DTD[] = "]><a/>";
constexpr char sELEMENT[] = "<!DOCTYPE a [<!ELEMENT a ";
constexpr char sATTRIBUTE[] = "<!DOCTYPE a [<!ATTLIST a b ";
constexpr char sEND_ATTRIBUTE[] = " #IMPLIED>]><a/>";
constexpr char sEND_DECLARATION[] = ">]><a/>";

std::vector<Production> OfTheDocument() {
  return {
      {"1 document",
       "",
       "",
       {"<a/>", "<?xml version='1.0'?><a/>", "\n<a></a>\n", "<!--c--><a/><?p?>"},
       {},
       {"<a/>x", "<a/><b/>", "x<a/>", "<a/>&lt;", "<a/><![CDATA[]]>", " <?xml version='1.0'?><a/>",
        "<a/><?xml version='1.0'?>", "<a/><!DOCTYPE a>", "\xef\xbb\xbf<a/>"}},
      {"2 Char",
       "<a>",
       "</a>",
       {"x", "\t", "\n", "\r", " ", "\x7f", "\x80", "\x9f", "\xff"},
       {0},
       {"\x01", "\x08", "\x0b", "\x0c", "\x0e", "\x1f"}},
      {"3 S", "<a", "b='c'/>", {" ", "\t", "\r", "\n", "\t\r\n "}, {}, {"\x0b", "\x0c", "\xa0", "\x85"}},
      {"4 NameChar",
       "<a",
       "/>",
       {"b", "1", ".", "-", "_", ":", "\xb7", "\xc0", "\xff"},
       {0},
       {"\xd7", "\xf7", "\xb6", "!", "\x7f", "@", "/", "\xb2", "+"}},
      {"5 Name", "<", "/>", {"a", "_", ":", "\xc0", "ab-.1", ":::"}, {}, {"1", "-", ".", "\xb7", "\xd7", ""}},
      {"7 Nmtoken",
       "<!DOCTYPE a [<!ATTLIST a b (",
       ") #IMPLIED>]><a/>",
       {"1", "-a", ".", ":", "\xb7", "a"},
       {},
       {"!", "a b", "\xd7", "'a'", "a,"}},
      {"22 prolog",
       "",
       "<a/>",
       {"<!DOCTYPE a>", "", " ", "<?xml version='1.0'?>", "<!--c--><!DOCTYPE a> <?p?>",
        "<?xml version='1.0'?>\n<!--c--><!DOCTYPE a>\n<!--c--><?p?>\n"},
       {0},
       {"<!DOCTYPE a><!DOCTYPE a>", "<!DOCTYPE a><?xml version='1.0'?>", "x", "<!---><!DOCTYPE a>"}},
      {"23 XMLDecl",
       "",
       "<a/>",
       {"<?xml version='1.0'?>", "<?xml version='1.0' encoding='x'?>",
        "<?xml version='1.0' standalone='no'?>", "<?xml version='1.0' encoding='x' standalone='no'?>",
        "<?xml version='1.0' \t?>"},
       {0},
       {"<?xml?>", "<?xml ?>", "<?xml version='1.0'>", "<?xml version='1.0' standalone='yes' encoding='x'?>",
        "<?XML version='1.0'?>", "<?xml encoding='x'?>", "<?xml version='1.0' x='y'?>",
        "<?xml version='1.0'encoding='x'?>"}},
      {"24 VersionInfo",
       "<?xml",
       "?><a/>",
       {" version='1.0'", " version=\"1.0\"", "\n version\t= '1.0'"},
       {},
       {" version='1.0\"", "version='1.0'", " versio='1.0'", " version=1.0", " version=''",
        " version '1.0'"}},
      {"25 Eq", "<a b", "'c'/>", {"=", " = ", "\t=\n"}, {}, {":", "==", "= =", "\xa0="}},
      {"26 VersionNum",
       "<?xml version='",
       "'?><a/>",
       {"1.0", "1", "a", "Z_.:-9"},
       {1, 2},
       {"1 0", "1/0", "\xc0", "1+"}},
      {"27 Misc before", "", "<a/>", {" ", "<!---->", "<?p?>"}, {0}, {"x", "&#32;", "<b/>", "<![CDATA[]]>"}},
      {"27 Misc behind",
       "<a/>",
       "",
       {" ", "<!---->", "<?p?>", "<!----><?p?>\n"},
       {0},
       {"x", "&#32;", "<b/>", "<![CDATA[]]>", "\x0b"}},
      {"32 SDDecl",
       "<?xml version='1.0'",
       "?><a/>",
       {" standalone='yes'", " standalone=\"no\"", "\tstandalone = 'no'", " standalone=\"yes\""},
       {0, 1},
       {" standalone='maybe'", " standalone='YES'", " standalone=''", "standalone='yes'",
        " standalone='yes\"", " standalone='n'"}},
      {"80 EncodingDecl",
       "<?xml version='1.0'",
       "?><a/>",
       {" encoding='a'", " encoding=\"UTF-8\"", "\nencoding = 'a'"},
       {0, 1},
       {" encoding=''", " encoding='a\"", "encoding='a'", " Encoding='a'", " encoding=a"}},
      {"81 EncName",
       "<?xml version='1.0' encoding='",
       "'?><a/>",
       {"a", "UTF-8", "ISO_8859.1-x"},
       {},
       {"1", "-a", "a b", "a:", "\xc0", "_"}},
      {"84 Letter", "<", "/>", {"a", "Z", "\xc0"}, {}, {"0", "\xb7", "\xaa"}},
      {"85 BaseChar",
       "<",
       "/>",
       {"A", "Z", "a", "z", "\xc0", "\xd6", "\xd8", "\xf6", "\xf8", "\xff"},
       {},
       {"\xd7", "\xf7", "\xbf", "@", "[", "`", "{", "\xaa", "\xb5", "\xba"}},
      {"86 Ideographic", "<a", "/>", {"\xc3", "\xe4"}, {0}, {"\xe4\xb8\x80", "\xe3\x80\x87"}},
      {"87 CombiningChar", "<a", "/>", {"\xcc"}, {0}, {"\xcc\x80", "\x80"}},
      {"88 Digit", "<a", "/>", {"0", "9"}, {0}, {"\xb2", "\xb9", "/"}},
      {"89 Extender", "<a", "/>", {"\xb7"}, {0}, {"\xb6", "\xb8"}},
  };
}

std::vector<Production> OfElements() {
  return {
      {"10 AttValue",
       "<a b=",
       "/>",
       {"''", "\"\"", "'x'", "\"'\"", "'\"'", "'&lt;'", "'&#10;x&#x1f;'", "'>]]>'"},
       {},
       {"'<'", "'&'", "'\"", "'&lt'", "x", "'\x02'", "'\"\"", "'''"}},
      {"14 CharData",
       "<a>",
       "</a>",
       {"x", "]", "]]", "]>", "]] >", "]]]", "a>b", "\"'%"},
       {0},
       {"<", "&", "]]>", "]]]>", "\x0e", "x]]>"}},
      {"15 Comment",
       "<a>",
       "</a>",
       {"<!---->", "<!-- - -->", "<!--<&]]>-->", "<!-->-->", "<!--->-->", "<!--- -->", "<!-- -x-->"},
       {0},
       {"<!-- -- -->", "<!--a--->", "<!-x-->", "<!--a->", "<!--\x01-->", "<! --a-->", "<!--a-- >"}},
      {"16 PI",
       "<a>",
       "</a>",
       {"<?p?>", "<?p ?>", "<?p x?>", "<?p ? > ?>", "<?p ?\?>", "<?p <&?>"},
       {0},
       {"<?p?x?>", "<?\?>", "<? p?>", "<?p x>", "<?p/?>", "<?p \x01?>"}},
      {"17 PITarget",
       "<a><?",
       "?></a>",
       {"p", "xm", "xmlx", "x-xml", "XMLs", "xml-stylesheet", "xml:x"},
       {},
       {"xml", "XML", "xMl", "Xml", "xML", "1", "", "xml version='1.0'"}},
      {"18 CDSect",
       "<a>",
       "</a>",
       {"<![CDATA[]]>", "<![CDATA[x]]>", "<![CDATA[]]]]>", "<![CDATA[]>]]>"},
       {0},
       {"<![CDATA[]]", "<![cdata[]]>", "<![CDATA []]>", "<![CDATA[]]>]]>", "<![CDATA[] ]>"}},
      {"19 CDStart", "<a>", "]]></a>", {"<![CDATA["}, {}, {"<![CDATA(", "<[CDATA[", "<! [CDATA["}},
      {"20 CData",
       "<a><![CDATA[",
       "]]></a>",
       {"x", "<", "&", "]", "]]", "]>", "<![CDATA[", "--"},
       {0},
       {"]]>", "\x01", "]]]>"}},
      {"21 CDEnd", "<a><![CDATA[", "</a>", {"]]>"}, {}, {"]]", "]>]", "]] >", ")]>"}},
      {"39 element",
       "",
       "",
       {"<a/>", "<a></a>", "<a><b/></a>", "<a></b>", "<a><b></a></b>"},
       {},
       {"<a>", "</a>", "<a></a></a>", "<a/></a>", "<a><b></a>", "<a></a><a/>"}},
      {"40 STag",
       "",
       "</a>",
       {"<a>", "<a >", "<a b='c'>", "<a b='c' >", "<a b='c'\nd='e'>"},
       {},
       {"<a b>", "< a>", "<a b='c'd='e'>", "<a,>", "<1>", "<a b=>"}},
      {"41 Attribute",
       "<a ",
       "/>",
       {"b=''", "b = \"\"", "_='&#1;'", "b:c='d'"},
       {0},
       {"b", "='c'", "b=c", "1='c'", "b='c", "b,='c'"}},
      {"42 ETag",
       "<a>",
       "",
       {"</a>", "</a >", "</b>", "</a\n>"},
       {},
       {"</ a>", "</a b=''>", "<a>", "</>", "</1>", "< /a>", "</a/>"}},
      {"43 content",
       "<a>",
       "</a>",
       {"<b/>", "", "x", "<b></b>", "x<b/>&lt;<![CDATA[]]><?p?><!---->y", "&a;&b;", "<b/><c/>"},
       {0},
       {"<b>", "</b>", "&", "<!DOCTYPE a>", "<!ELEMENT a ANY>", "<b/", "<>"}},
      {"44 EmptyElemTag",
       "",
       "",
       {"<a/>", "<a />", "<a b='c'/>", "<a b='c' />"},
       {},
       {"<a/ >", "<a//>", "</a/>", "<a\\>", "<a b='c'/ >"}},
      {"66 CharRef",
       "<a>",
       "</a>",
       {"&#9;", "&#1;", "&#10;", "&#x1;", "&#xaF;", "&#x10FFFF;", "&#999999999;"},
       {0},
       {"&#;", "&#x;", "&#xg;", "&#a;", "&#X1;", "&# 1;", "&#1 ;", "&#-1;"}},
      {"67 Reference", "<a>", "</a>", {"&a;", "&#9;", "&#x9;"}, {0}, {"&", "&;", "& a;", "&a:"}},
      {"68 EntityRef", "<a>", "</a>", {"&a;", "&lt;", "&_-.;"}, {0}, {"&a", "&1;", "&a b;", "&;", "&a ;"}},
  };
}

std::vector<Production> OfDeclarations() {
  return {
      {"9 EntityValue",
       "<!DOCTYPE a [<!ENTITY e ",
       sEND_DECLARATION,
       {"''", "\"\"", "'x'", "\"'\"", "'\"'", "'%p;'", "'&e;'", "'&#9;'", "'<'", "\"%p;&#x1F;\""},
       {},
       {"'%'", "'&'", "'\"", "\"%p\"", "'\x01'", "'% p;'", "'&#;'"}},
      {"11 SystemLiteral",
       "<!DOCTYPE a SYSTEM ",
       "><a/>",
       {"''", "\"\"", "'\"'", "\"'\"", "'<&%\xff'"},
       {},
       {"'\"", "x", "'\x01'", "'''"}},
      {"12 PubidLiteral",
       "<!DOCTYPE a PUBLIC ",
       " ''><a/>",
       {"''", "\"\"", "\"'\"", "'a-Z0 (+,./:=?;!*#@$_%)'"},
       {},
       {"'\"'", "'&'", "'<'", "'\t'", "'''", "\"\"\"", "x"}},
      {"13 PubidChar",
       "<!DOCTYPE a PUBLIC \"",
       "\" ''><a/>",
       {" ", "\r", "\n", "'", "a", "z", "A", "Z", "0", "9", "(", ")", "+", ",",
        ".", "/",  ":",  "=", "?", ";", "!", "*", "#", "@", "$", "_", "%", "-"},
       {0},
       {"\t", "\"", "&", "<", ">", "[", "]", "^", "`", "{", "|", "}", "~", "\\", "\x80", "\xc0"}},
      {"28 doctypedecl",
       "",
       "<a/>",
       {"<!DOCTYPE a>", "<!DOCTYPE a []>", "<!DOCTYPE a SYSTEM 's'>", "<!DOCTYPE a SYSTEM 's' [ ] >",
        "<!DOCTYPE a PUBLIC 'p' 's' >", "<!DOCTYPE a[]>", "<!DOCTYPE b>"},
       {0},
       {"<!DOCTYPE>", "<!DOCTYPE a", "<!doctype a>", "<!DOCTYPEa>", "<!DOCTYPE a [>", "<!DOCTYPE a ]>",
        "<!DOCTYPE a PUBLIC 'p'>", "<!DOCTYPE a [] x>", "<!DOCTYPE a[]>]", "<!DOCTYPE a [><!---->]>"}},
      {"28a DeclSep", sDTD, sEND_DTD, {" ", "%p;", "\n%p;\t"}, {0}, {"%p", "% p;", "&p;", ";"}},
      {"28b intSubset",
       sDTD,
       sEND_DTD,
       {"%p;", "", "<!ELEMENT a ANY>%p;<!---->"},
       {0},
       {"x", "<![INCLUDE[]]>", "<![IGNORE[]]>", "]", "<"}},
      {"29 markupdecl",
       sDTD,
       sEND_DTD,
       {"<?p?>", "<!ELEMENT a ANY>", "<!ATTLIST a>", "<!ENTITY e ''>", "<!NOTATION n SYSTEM ''>", "<!---->"},
       {0},
       {"<!FOO a>", "<a/>", "<![CDATA[]]>", "<!DOCTYPE a>", "<?xml version='1.0'?>"}},
      {"45 elementdecl",
       sDTD,
       sEND_DTD,
       {"<!ELEMENT a ANY>", "<!ELEMENT a ANY >", "<!ELEMENT a EMPTY>", "<!ELEMENT\na\tANY>"},
       {0},
       {"<!ELEMENT a>", "<!ELEMENT a any>", "<!ELEMENTa ANY>", "<!ELEMENT 1 ANY>", "<!ELEMENT a ANY b>",
        "<!element a ANY>", "<!ELEMENT a(b)>", "<!ELEMENT ANY>"}},
      {"46 contentspec",
       sELEMENT,
       sEND_DECLARATION,
       {"ANY", "EMPTY", "(#PCDATA)", "(b)"},
       {},
       {"any", "ALL", "b", "()", "ANYEMPTY", "(ANY"}},
      {"47 children",
       sELEMENT,
       sEND_DECLARATION,
       {"(b)", "(b)?", "(b)*", "(b)+", "(b|c)*", "((b))", "((b)?)+", "( ( b ) )"},
       {},
       {"(b)??", "(b", "b)", "(b)-", "(b) ?", "(b))", "((b)", "b*", ")b(", "(b)(c)"}},
      {"48 cp",
       "<!DOCTYPE a [<!ELEMENT a (",
       ")>]><a/>",
       {"b", "b?", "b*", "b+", "(b)", "(b,c)?", "(b|c)", "((b)+,c?)*"},
       {},
       {"b?*", "b b", "?", "1", "(b", "(b,c|d)", "b ?", "b)"}},
      {"49 choice",
       sELEMENT,
       sEND_DECLARATION,
       {"(b|c)", "( b | c )", "(b|(c|d)|e)", "((a|b)|c)", "((a,b)|(c|d)|e)", "(b|b)"},
       {},
       {"(b|)", "(|b)", "(b||c)", "(b|c,d)", "(b;c)", "(a|(b,c|d))", "((a|b),c|d)", "((a,b)|(c|d),e)"}},
      {"50 seq",
       sELEMENT,
       sEND_DECLARATION,
       {"(b,c)", "(b)", "( b , c )", "(b,(c,d),e)", "((b|c),(d|e))", "((b|c),(d,e),(f|g))"},
       {},
       {"(b,)", "(,b)", "(b;c)", "(b,,c)", "(b,c|d)", "((a,b),c|d)", "(b c)"}},
      {"51 Mixed",
       sELEMENT,
       sEND_DECLARATION,
       {"(#PCDATA)", "( #PCDATA )", "(#PCDATA)*", "(#PCDATA|b)*", "( #PCDATA | b | c )*"},
       {},
       {"(#PCDATA|b)", "(#PCDATA|b) *", "(b|#PCDATA)*", "(#PCDATA,b)*", "(#PCDATA)+", "(#pcdata)",
        "(# PCDATA)", "(#PCDATA|(b))*", "(#PCDATA|)*", "#PCDATA", "((#PCDATA))"}},
      {"52 AttlistDecl",
       sDTD,
       sEND_DTD,
       {"<!ATTLIST a>", "<!ATTLIST a >", "<!ATTLIST a b CDATA #IMPLIED>",
        "<!ATTLIST a b ID #IMPLIED c IDREF 'x' >"},
       {0},
       {"<!ATTLIST>", "<!ATTLISTa>", "<!ATTLIST a b>", "<!Attlist a>", "<!ATTLIST 1>"}},
      {"53 AttDef",
       "<!DOCTYPE a [<!ATTLIST a",
       sEND_DECLARATION,
       {" b CDATA ''", "\nb\tID\r#REQUIRED"},
       {0, 1},
       {"b CDATA ''", " b 'x'", " b CDATA", " b CDATA#IMPLIED", " b CDATA''", " 1 CDATA ''"}},
      {"54 AttType",
       sATTRIBUTE,
       sEND_ATTRIBUTE,
       {"ID", "CDATA", "(x)", "NOTATION (n)"},
       {},
       {"cdata", "FOO", "()", "I D", "PCDATA"}},
      {"55 StringType", sATTRIBUTE, sEND_ATTRIBUTE, {"CDATA"}, {}, {"CDATa", "CData", "CDATAS"}},
      {"56 TokenizedType",
       sATTRIBUTE,
       sEND_ATTRIBUTE,
       {"ID", "IDREF", "IDREFS", "ENTITY", "ENTITIES"},
       {},
       {"IDS", "IDREFSS", "ENTITYS", "id", "ENTITIE"}},
      {"56 TokenizedType, tokens", sATTRIBUTE, sEND_ATTRIBUTE, {"NMTOKENS"}, {7}, {"NMTOKENs", "NMTOKEN S"}},
      {"57 EnumeratedType",
       sATTRIBUTE,
       sEND_ATTRIBUTE,
       {"(x)", "NOTATION (n)"},
       {},
       {"x", "NOTATION n", "[x]"}},
      {"58 NotationType",
       sATTRIBUTE,
       sEND_ATTRIBUTE,
       {"NOTATION (n)", "NOTATION\t( n | m )"},
       {},
       {"NOTATION(n)", "NOTATION ()", "NOTATION (n|)", "NOTATION (1)", "NOTATION (n,m)", "Notation (n)"}},
      {"59 Enumeration",
       sATTRIBUTE,
       sEND_ATTRIBUTE,
       {"(1)", "(a|b)", "( a | b )", "(-|.)"},
       {},
       {"(a,b)", "(a|)", "(a b)", "(!)", "(|a)", "((a))"}},
      {"60 DefaultDecl",
       "<!DOCTYPE a [<!ATTLIST a b CDATA ",
       sEND_DECLARATION,
       {"''", "#REQUIRED", "#IMPLIED", "#FIXED ''", "#FIXED\n\"x&lt;\""},
       {},
       {"#FIXED", "#FIXED''", "#DEFAULT", "#required", "'<'", "x", "# REQUIRED", "#REQUIRED ''"}},
      {"69 PEReference", sDTD, sEND_DTD, {"%p;", "%_1;"}, {0}, {"%;", "%p", "%1;", "% p;", "%p ;", "&p;"}},
      {"70 EntityDecl",
       sDTD,
       sEND_DTD,
       {"<!ENTITY e ''>", "<!ENTITY % e ''>"},
       {0},
       {"<!ENTITY>", "<!ENTITY e>", "<!ENTITY &e ''>", "<!Entity e ''>"}},
      {"71 GEDecl",
       sDTD,
       sEND_DTD,
       {"<!ENTITY e ''>", "<!ENTITY e '' >", "<!ENTITY\te\nSYSTEM '' NDATA n\r>"},
       {0},
       {"<!ENTITYe ''>", "<!ENTITY e'' >", "<!ENTITY 1 ''>", "<!ENTITY e '' ''>"}},
      {"72 PEDecl",
       sDTD,
       sEND_DTD,
       {"<!ENTITY % e ''>", "<!ENTITY\t%\ne SYSTEM ''\t>"},
       {0},
       {"<!ENTITY %e ''>", "<!ENTITY% e ''>", "<!ENTITY % e SYSTEM '' NDATA n>", "<!ENTITY % % ''>"}},
      {"73 EntityDef",
       "<!DOCTYPE a [<!ENTITY e ",
       sEND_DECLARATION,
       {"''", "SYSTEM ''", "SYSTEM '' NDATA n", "PUBLIC '' ''", "PUBLIC '' '' NDATA n"},
       {},
       {"x", "SYSTEM", "'' NDATA n", "PUBLIC ''"}},
      {"74 PEDef",
       "<!DOCTYPE a [<!ENTITY % e ",
       sEND_DECLARATION,
       {"''", "SYSTEM ''", "PUBLIC '' ''"},
       {},
       {"SYSTEM '' NDATA n", "x", "'' ''"}},
      {"75 ExternalID",
       "<!DOCTYPE a ",
       "><a/>",
       {"SYSTEM ''", "PUBLIC '' ''", "SYSTEM\n\"x\""},
       {0},
       {"SYSTEM''", "PUBLIC ''", "system ''", "PUBLIC '' x", "PUBLIC''''", "PUBLIC ''''", "SYSTEM '' ''"}},
      {"76 NDataDecl",
       "<!DOCTYPE a [<!ENTITY e SYSTEM ''",
       sEND_DECLARATION,
       {" NDATA n", "\nNDATA\tn"},
       {0, 1},
       {"NDATA n", " NDATA", " ndata n", " NDATAn", " NDATA 1", " NDATA 'n'"}},
      {"82 NotationDecl",
       sDTD,
       sEND_DTD,
       {"<!NOTATION n SYSTEM ''>", "<!NOTATION n PUBLIC ''>", "<!NOTATION n PUBLIC '' ''>",
        "<!NOTATION n PUBLIC '' >"},
       {0},
       {"<!NOTATION n>", "<!NOTATION n ''>", "<!NOTATION SYSTEM ''>", "<!notation n SYSTEM ''>",
        "<!NOTATION n SYSTEM>", "<!NOTATIONn SYSTEM ''>"}},
      {"83 PublicID",
       "<!DOCTYPE a [<!NOTATION n ",
       sEND_DECLARATION,
       {"PUBLIC ''", "PUBLIC\t\"p\""},
       {},
       {"PUBLIC", "PUBLIC''", "Public ''", "PUBLIC '\"'", "PUBLIC '&'"}},
  };
}

void Check(const Production& production) {
  SCOPED_TRACE(production.name);
  const auto full = [&production](const std::string& text) {
    return ParseAllWays(production.before + text + production.after).full;
  };
  for (const std::string& text : production.valid) EXPECT_TRUE(full(text)) << text;
  for (const std::string& text : production.wrong) EXPECT_FALSE(full(text)) << text;
  const std::set<std::size_t> validWhenCut(production.validWhenCut.begin(), production.validWhenCut.end());
  const std::string& smallest = production.valid.front();
  for (std::size_t size = 0; size < smallest.size(); ++size)
    EXPECT_EQ(full(smallest.substr(0, size)), validWhenCut.count(size) > 0) << smallest << ", " << size;
}

// Documents of which nothing may be missing, where the production isn't behind the root.
void CheckTruncatedDocuments(const Production& production) {
  SCOPED_TRACE(production.name);
  for (const std::string& text : production.valid) {
    const std::string document = production.before + text + production.after;
    const std::size_t root = document.find_last_of('>');
    for (std::size_t size = 0; size <= root; ++size)
      EXPECT_FALSE(ParseAllWays(document.substr(0, size)).full) << document << ", " << size;
  }
}

void CheckAll(const std::vector<Production>& productions) {
  for (const Production& production : productions) {
    Check(production);
    const std::string before = production.before;
    if (before != "<a/>" && std::string(production.name) != "1 document") CheckTruncatedDocuments(production);
  }
}

TEST(XMLParserDocuments, OfTheDocumentItself) { CheckAll(OfTheDocument()); }
TEST(XMLParserDocuments, OfElements) { CheckAll(OfElements()); }
TEST(XMLParserDocuments, OfDeclarations) { CheckAll(OfDeclarations()); }

// Which bytes begin a name, and which go on with one, by the tables of characters below 256.
TEST(XMLParserDocuments, EveryByteInAName) {
  const auto isLetter = [](int c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= 0xc0 && c != 0xd7 && c != 0xf7);
  };
  for (int c = 0; c < 256; ++c) {
    SCOPED_TRACE(c);
    const std::string text(1, static_cast<char>(c));
    const bool begins = isLetter(c) || c == '_' || c == ':';
    EXPECT_EQ(ParseText("<" + text + "/>").full, begins);
    const bool goesOn = begins || (c >= '0' && c <= '9') || c == '.' || c == '-' || c == 0xb7;
    EXPECT_EQ(ParseText("<a></a" + text + "b>").full, goesOn);
  }
}

// Which bytes are characters at all: in text, in a comment, in an instruction and in a section.
TEST(XMLParserDocuments, EveryByteAsACharacter) {
  for (int c = 0; c < 256; ++c) {
    SCOPED_TRACE(c);
    const std::string text(1, static_cast<char>(c));
    const bool isChar = c >= 0x20 || c == '\t' || c == '\n' || c == '\r';
    EXPECT_EQ(ParseText("<a>" + text + "</a>").full, isChar && c != '<' && c != '&');
    EXPECT_EQ(ParseText("<a b='" + text + "'/>").full, isChar && c != '<' && c != '&' && c != '\'');
    EXPECT_EQ(ParseText("<a><!--" + text + " --></a>").full, isChar);
    EXPECT_EQ(ParseText("<a><?p " + text + "?></a>").full, isChar);
    EXPECT_EQ(ParseText("<a><![CDATA[" + text + "]]></a>").full, isChar);
    EXPECT_EQ(ParseText("<!DOCTYPE a SYSTEM '" + text + "'><a/>").full, isChar && c != '\'');
  }
}

}  // namespace
}  // namespace XMLParserTests
