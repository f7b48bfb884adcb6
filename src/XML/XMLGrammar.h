// The grammar of XML 1.0 for both forms of input. Including this costs time: XMLGrammar.cpp does, and a test.
//
// The productions stand under the names and with the numbers that the Recommendation gives them. What differs in
// form, never in what is matched: start tag and empty-element tag share their beginning, so that each action
// takes place once; elements, groups of content models and conditional sections are loops with a count instead
// of recursion; exclusions ("Char* - ...") are runs of what is harmless and single characters that are looked
// at. Whatever is matched is matched in one pass: nothing is scanned more than a few times.
#ifndef OXACORE_XML_XMLGRAMMAR_H
#define OXACORE_XML_XMLGRAMMAR_H

#include <boost/spirit/include/classic_core.hpp>
#include <boost/spirit/include/classic_dynamic.hpp>

#include "XML/XMLCharacters.h"
#include "XML/XMLGrammarParts.h"

namespace Oxa::Core {

/// The actions: each hands the text that was matched to the operation of its name.
namespace XMLActions {

// `closing` is how many of the last characters only close the text.
#define OXA_XML_TEXT_ACTION(operation, closing)                                  \
  struct operation##Action {                                                     \
    template <class Parser>                                                      \
    void operator()(Parser& parser, const char* first, const char* last) const { \
      parser.operation(first, last - (closing));                                 \
    }                                                                            \
  }
#define OXA_XML_ACTION(operation)                                     \
  struct operation##Action {                                          \
    template <class Parser>                                           \
    void operator()(Parser& parser, const char*, const char*) const { \
      parser.operation();                                             \
    }                                                                 \
  }

OXA_XML_ACTION(StartDoc);
OXA_XML_TEXT_ACTION(SetVersion, 0);
OXA_XML_TEXT_ACTION(SetEncoding, 0);
OXA_XML_TEXT_ACTION(SetStandalone, 0);
OXA_XML_TEXT_ACTION(StartTag, 0);
OXA_XML_TEXT_ACTION(AttributeName, 0);
OXA_XML_TEXT_ACTION(AttributeValueText, 0);
OXA_XML_TEXT_ACTION(AttributeValueRef, 0);
OXA_XML_ACTION(AttributeValue);
OXA_XML_ACTION(Attribute);
OXA_XML_ACTION(StartTagContent);
OXA_XML_ACTION(EndEmptyTag);
OXA_XML_TEXT_ACTION(EndTag, 0);
OXA_XML_TEXT_ACTION(Text, 0);
OXA_XML_TEXT_ACTION(ContentReference, 0);
OXA_XML_TEXT_ACTION(Comment, 3);
OXA_XML_TEXT_ACTION(CData, 3);
OXA_XML_ACTION(EndDoc);

#undef OXA_XML_TEXT_ACTION
#undef OXA_XML_ACTION

}  // namespace XMLActions

namespace XMLProductions {

using namespace XMLActions;
using namespace XMLGrammarParts;
using namespace XMLCharacters;
using spirit::eps_p;
using spirit::if_p;
using spirit::no_actions_d;
using spirit::while_p;

constexpr Checkpoint checkpoint{};

// Characters.
constexpr One<uCHAR> Char{};                     // [2]
constexpr Some<uS> S{};                          // [3]
constexpr One<uNAME_CHAR> NameChar{};            // [4]
constexpr One<uPUBID_CHAR> PubidChar{};          // [13]
constexpr One<uLETTER> Letter{};                 // [84]
constexpr One<uBASE_CHAR> BaseChar{};            // [85]
constexpr One<uIDEOGRAPHIC> Ideographic{};       // [86]
constexpr One<uCOMBINING_CHAR> CombiningChar{};  // [87]
constexpr One<uDIGIT> Digit{};                   // [88]
constexpr One<uEXTENDER> Extender{};             // [89]

// Names.
OXA_XML_PRODUCTION(Name, One<uNAME_START>() >> Any<uNAME_CHAR>());  // [5]
OXA_XML_PRODUCTION(Names, Name >> *(Lit(' ') >> Name));             // [6]
constexpr Some<uNAME_CHAR> Nmtoken{};                               // [7]
OXA_XML_PRODUCTION(Nmtokens, Nmtoken >> *(Lit(' ') >> Nmtoken));    // [8]

// References.
OXA_XML_PRODUCTION(EntityRef, Lit('&') >> Name >> Lit(';'));  // [68]
OXA_XML_PRODUCTION(CharRef, (Lit("&#x") >> Some<uHEXADECIMAL>() >> Lit(';')) |
                                (Lit("&#") >> Some<uDECIMAL>() >> Lit(';')));  // [66]
OXA_XML_PRODUCTION(Reference, EntityRef | CharRef);                            // [67]
OXA_XML_PRODUCTION(PEReference, Lit('%') >> Name >> Lit(';'));                 // [69]

// Literals.
OXA_XML_PRODUCTION(EntityValue,
                   (Lit('"') >> *(Some<uENTITY_VALUE_IN_QUOT>() | PEReference | Reference) >> Lit('"')) |
                       (Lit('\'') >> *(Some<uENTITY_VALUE_IN_APOS>() | PEReference | Reference) >>
                        Lit('\'')));  // [9]
OXA_XML_PRODUCTION(AttValue, (Lit('"') >> *(Some<uATT_VALUE_IN_QUOT>()[AttributeValueTextAction()] |
                                            Reference[AttributeValueRefAction()]) >>
                              Lit('"')) |
                                 (Lit('\'') >> *(Some<uATT_VALUE_IN_APOS>()[AttributeValueTextAction()] |
                                                 Reference[AttributeValueRefAction()]) >>
                                  Lit('\'')));  // [10]
OXA_XML_PRODUCTION(SystemLiteral, (Lit('"') >> Any<uLITERAL_IN_QUOT>() >> Lit('"')) |
                                      (Lit('\'') >> Any<uLITERAL_IN_APOS>() >> Lit('\'')));  // [11]
OXA_XML_PRODUCTION(PubidLiteral, (Lit('"') >> Any<uPUBID_CHAR>() >> Lit('"')) |
                                     (Lit('\'') >> Any<uPUBID_CHAR_IN_APOS>() >> Lit('\'')));  // [12]

// Character data, comments, processing instructions and CDATA sections.
OXA_XML_PRODUCTION(CharData, +(Some<uTEXT>() | (Lit(']') - Lit("]]>"))));  // [14], if there is some
OXA_XML_PRODUCTION(Comment, Lit("<!--") >> (*(Some<uCOMMENT_TEXT>() | (Lit('-') >> One<uCOMMENT_TEXT>())) >>
                                            Lit("-->"))[CommentAction()]);  // [15]
OXA_XML_PRODUCTION(PITarget,
                   Name - ((Lit('X') | Lit('x')) >> (Lit('M') | Lit('m')) >> (Lit('L') | Lit('l'))));  // [17]
OXA_XML_PRODUCTION(PI, Lit("<?") >> PITarget >> !(S >> *(Some<uPI_TEXT>() | (Lit('?') - Lit("?>")))) >>
                           Lit("?>"));                                        // [16]
OXA_XML_PRODUCTION(CDStart, Lit("<![CDATA["));                                // [19]
OXA_XML_PRODUCTION(CData, *(Some<uCDATA_TEXT>() | (Lit(']') - Lit("]]>"))));  // [20]
OXA_XML_PRODUCTION(CDEnd, Lit("]]>"));                                        // [21]
OXA_XML_PRODUCTION(CDSect, CDStart >> (CData >> CDEnd)[CDataAction()]);       // [18]

// The XML declaration.
OXA_XML_PRODUCTION(Eq, !S >> Lit('=') >> !S);  // [25]
constexpr Some<uVERSION_NUM> VersionNum{};     // [26]
OXA_XML_PRODUCTION(VersionInfo,
                   S >> Lit("version") >> Eq >>
                       ((Lit('\'') >> VersionNum[SetVersionAction()] >> Lit('\'')) |
                        (Lit('"') >> VersionNum[SetVersionAction()] >> Lit('"'))));  // [24]
OXA_XML_PRODUCTION(EncName, One<uASCII_LETTER>() >> Any<uENC_NAME>());               // [81]
OXA_XML_PRODUCTION(EncodingDecl,
                   S >> Lit("encoding") >> Eq >>
                       ((Lit('"') >> EncName[SetEncodingAction()] >> Lit('"')) |
                        (Lit('\'') >> EncName[SetEncodingAction()] >> Lit('\''))));  // [80]
OXA_XML_PRODUCTION(YesOrNo, Lit("yes") | Lit("no"));
OXA_XML_PRODUCTION(SDDecl,
                   S >> Lit("standalone") >> Eq >>
                       ((Lit('\'') >> YesOrNo[SetStandaloneAction()] >> Lit('\'')) |
                        (Lit('"') >> YesOrNo[SetStandaloneAction()] >> Lit('"'))));  // [32]
OXA_XML_PRODUCTION(XMLDecl,
                   Lit("<?xml") >> VersionInfo >> !EncodingDecl >> !SDDecl >> !S >> Lit("?>"));  // [23]

// Languages, as the first edition has them.
constexpr Some<uASCII_LETTER> Subcode{};                                                   // [38]
OXA_XML_PRODUCTION(UserCode, (Lit('x') | Lit('X')) >> Lit('-') >> Some<uASCII_LETTER>());  // [37]
OXA_XML_PRODUCTION(IanaCode, (Lit('i') | Lit('I')) >> Lit('-') >> Some<uASCII_LETTER>());  // [36]
OXA_XML_PRODUCTION(ISO639Code, One<uASCII_LETTER>() >> One<uASCII_LETTER>());              // [35]
OXA_XML_PRODUCTION(Langcode, ISO639Code | IanaCode | UserCode);                            // [34]
OXA_XML_PRODUCTION(LanguageID, Langcode >> *(Lit('-') >> Subcode));                        // [33]

// Entities and notations.
OXA_XML_PRODUCTION(ExternalID, (Lit("SYSTEM") >> S >> SystemLiteral) |
                                   (Lit("PUBLIC") >> S >> PubidLiteral >> S >> SystemLiteral));  // [75]
OXA_XML_PRODUCTION(NDataDecl, S >> Lit("NDATA") >> S >> Name);                                   // [76]
OXA_XML_PRODUCTION(EntityDef, EntityValue | (ExternalID >> !NDataDecl));                         // [73]
OXA_XML_PRODUCTION(PEDef, EntityValue | ExternalID);                                             // [74]
OXA_XML_PRODUCTION(GEDecl, Lit("<!ENTITY") >> S >> Name >> S >> EntityDef >> !S >> Lit('>'));    // [71]
OXA_XML_PRODUCTION(PEDecl,
                   Lit("<!ENTITY") >> S >> Lit('%') >> S >> Name >> S >> PEDef >> !S >> Lit('>'));  // [72]
OXA_XML_PRODUCTION(EntityDecl, GEDecl | PEDecl);                                                    // [70]
OXA_XML_PRODUCTION(PublicID, Lit("PUBLIC") >> S >> PubidLiteral);                                   // [83]
OXA_XML_PRODUCTION(NotationDecl,
                   Lit("<!NOTATION") >> S >> Name >> S >> (ExternalID | PublicID) >> !S >> Lit('>'));  // [82]

// The declaration of an element. Groups are opened and closed around names, so that what is inside which is a
// matter of counting.
inline bool BeginGroups(State& state) {
  state.groups = 0;
  return true;
}
inline bool OpenGroup(State& state) {
  if (state.groups == uMAX_GROUPS) return false;
  state.separated[state.groups++] = false;
  return true;
}
inline bool IsInGroup(State& state) { return state.groups > 0; }
inline bool CloseGroup(State& state) {
  if (state.groups == 0) return false;
  --state.groups;
  return true;
}
// One group has one kind of separator.
inline bool Separate(State& state, bool choice) {
  const std::size_t group = state.groups - 1;
  if (state.separated[group]) return state.choices[group] == choice;
  state.separated[group] = true;
  state.choices[group] = choice;
  return true;
}
inline bool SeparateChoice(State& state) { return Separate(state, true); }
inline bool SeparateSequence(State& state) { return Separate(state, false); }

OXA_XML_PRODUCTION(Occurrence, Lit('?') | Lit('*') | Lit('+'));
OXA_XML_PRODUCTION(groupStart, Lit('(') >> Step<&OpenGroup>() >> !S);
OXA_XML_PRODUCTION(groupEnd, !S >> Lit(')') >> Step<&CloseGroup>() >> !Occurrence);
OXA_XML_PRODUCTION(separator,
                   (Lit('|') >> Step<&SeparateChoice>()) |
                       (Lit(',') >> Step<&SeparateSequence>()));          // of [49], [50]
OXA_XML_PRODUCTION(cp, *groupStart >> Name >> !Occurrence >> *groupEnd);  // [48]
OXA_XML_PRODUCTION(children, Step<&BeginGroups>() >> groupStart >> cp >>
                                 while_p(Step<&IsInGroup>())[!S >> separator >> !S >> cp]);  // [47]
OXA_XML_PRODUCTION(Mixed,
                   (Lit('(') >> !S >> Lit("#PCDATA") >> *(!S >> Lit('|') >> !S >> Name) >> !S >> Lit(")*")) |
                       (Lit('(') >> !S >> Lit("#PCDATA") >> !S >> Lit(')')));   // [51]
OXA_XML_PRODUCTION(contentspec, Lit("EMPTY") | Lit("ANY") | Mixed | children);  // [46]
OXA_XML_PRODUCTION(elementdecl,
                   Lit("<!ELEMENT") >> S >> Name >> S >> contentspec >> !S >> Lit('>'));  // [45]

// The declaration of attributes.
OXA_XML_PRODUCTION(StringType, Lit("CDATA"));  // [55]
OXA_XML_PRODUCTION(TokenizedType, Lit("IDREFS") | Lit("IDREF") | Lit("ID") | Lit("ENTITIES") | Lit("ENTITY") |
                                      Lit("NMTOKENS") | Lit("NMTOKEN"));  // [56]
OXA_XML_PRODUCTION(NotationType, Lit("NOTATION") >> S >> Lit('(') >> !S >> Name >>
                                     *(!S >> Lit('|') >> !S >> Name) >> !S >> Lit(')'));  // [58]
OXA_XML_PRODUCTION(Enumeration,
                   Lit('(') >> !S >> Nmtoken >> *(!S >> Lit('|') >> !S >> Nmtoken) >> !S >>
                       Lit(')'));                                          // [59]
OXA_XML_PRODUCTION(EnumeratedType, NotationType | Enumeration);            // [57]
OXA_XML_PRODUCTION(AttType, StringType | TokenizedType | EnumeratedType);  // [54]
OXA_XML_PRODUCTION(DefaultDecl,
                   Lit("#REQUIRED") | Lit("#IMPLIED") | (!(Lit("#FIXED") >> S) >> AttValue));  // [60]
OXA_XML_PRODUCTION(AttDef, S >> Name >> S >> AttType >> S >> DefaultDecl);                     // [53]
OXA_XML_PRODUCTION(AttlistDecl, Lit("<!ATTLIST") >> S >> Name >> *AttDef >> !S >> Lit('>'));   // [52]

// The document type declaration.
OXA_XML_PRODUCTION(markupdecl, elementdecl | AttlistDecl | EntityDecl | NotationDecl | PI | Comment);  // [29]
OXA_XML_PRODUCTION(DeclSep, PEReference | S);                            // [28a]
OXA_XML_PRODUCTION(intSubset, *(checkpoint >> (markupdecl | DeclSep)));  // [28b]
OXA_XML_PRODUCTION(doctypedecl, Lit("<!DOCTYPE") >> S >> Name >> !(S >> ExternalID) >> !S >>
                                    if_p(Lit('['))[intSubset >> Lit(']') >> !S] >> Lit('>'));  // [28]

// Elements. A tag is the beginning of an element or, with "/>", a whole one.
inline bool EnterElement(State& state) {
  ++state.elements;
  return true;
}
inline bool IsInElement(State& state) { return state.elements > 0; }
inline bool LeaveElement(State& state) {
  --state.elements;
  return true;
}

OXA_XML_PRODUCTION(Attribute, (Name[AttributeNameAction()] >> Eq >>
                               AttValue[AttributeValueAction()])[AttributeAction()]);  // [41]
OXA_XML_PRODUCTION(tag, Lit('<') >> Name[StartTagAction()] >> *(S >> Attribute) >> !S >>
                            ((Lit('>') >> Step<&EnterElement>())[StartTagContentAction()] |
                             Lit("/>")[EndEmptyTagAction()]));  // [40], [44]
OXA_XML_PRODUCTION(ETag,
                   Lit("</") >> Name[EndTagAction()] >> !S >> Lit('>') >> Step<&LeaveElement>());  // [42]
OXA_XML_PRODUCTION(contentBesideTags, Reference[ContentReferenceAction()] | CDSect | Comment | PI);
OXA_XML_PRODUCTION(contentItem, CharData[TextAction()] | ETag | tag | contentBesideTags);
constexpr Rounds<&IsInElement, contentItemProduction> contentRounds{};
OXA_XML_PRODUCTION(element, tag >> contentRounds);  // [39]
// [43], where no element is around it.
OXA_XML_PRODUCTION(content, *(CharData[TextAction()] | element | contentBesideTags));

// The document.
OXA_XML_PRODUCTION(Misc, Comment | PI | S);  // [27]
OXA_XML_PRODUCTION(
    prolog, !XMLDecl >> *(checkpoint >> Misc) >>
                if_p(eps_p(Lit("<!DOCTYPE")))[no_actions_d[doctypedecl] >> *(checkpoint >> Misc)]);  // [22]
OXA_XML_PRODUCTION(document, eps_p[StartDocAction()] >> prolog >> element >> *(checkpoint >> Misc) >>
                                 eps_p[EndDocAction()]);  // [1]

// The external subset and external entities, which no document contains.
inline bool BeginIncluded(State& state) {
  state.included = 0;
  return true;
}
inline bool OpenIncluded(State& state) {
  ++state.included;
  return true;
}
inline bool CloseIncluded(State& state) {
  if (state.included == 0) return false;
  --state.included;
  return true;
}
inline bool AllIncludedClosed(State& state) { return state.included == 0; }
inline bool BeginIgnored(State& state) {
  state.ignored = 1;
  return true;
}
inline bool IsIgnored(State& state) { return state.ignored > 0; }
inline bool OpenIgnored(State& state) {
  ++state.ignored;
  return true;
}
inline bool CloseIgnored(State& state) {
  --state.ignored;
  return true;
}

OXA_XML_PRODUCTION(Ignore,
                   *(Some<uIGNORE_TEXT>() | (Lit('<') - Lit("<![")) | (Lit(']') - Lit("]]>"))));  // [65]
OXA_XML_PRODUCTION(ignoreSect,
                   Lit("<![") >> !S >> Lit("IGNORE") >> !S >> Lit('[') >> Step<&BeginIgnored>() >>
                       while_p(Step<&IsIgnored>())[Ignore >> ((Lit("<![") >> Step<&OpenIgnored>()) |
                                                              (Lit("]]>") >> Step<&CloseIgnored>()))]);
// [63], with [64]
OXA_XML_PRODUCTION(includeStart,
                   Lit("<![") >> !S >> Lit("INCLUDE") >> !S >> Lit('[') >> Step<&OpenIncluded>());
OXA_XML_PRODUCTION(includeEnd, Lit("]]>") >> Step<&CloseIncluded>());  // [62] is what stands between the two
OXA_XML_PRODUCTION(extSubsetDecl, Step<&BeginIncluded>() >>
                                      *(markupdecl | includeStart | includeEnd | ignoreSect | DeclSep) >>
                                      Step<&AllIncludedClosed>());  // [31], with [61]
OXA_XML_PRODUCTION(TextDecl, Lit("<?xml") >> !VersionInfo >> EncodingDecl >> !S >> Lit("?>"));  // [77]
OXA_XML_PRODUCTION(extSubset, !TextDecl >> extSubsetDecl);                                      // [30]
OXA_XML_PRODUCTION(extParsedEnt, !TextDecl >> content);                                         // [78]
OXA_XML_PRODUCTION(extPE, !TextDecl >> extSubsetDecl);                                          // [79]

}  // namespace XMLProductions

/// One run of the grammar, with the parser whose operations its actions call.
template <class Parser>
class XMLGrammar {
 public:
  explicit XMLGrammar(Parser& parser) : m_run{parser, {}} {}

  /// Whether `production` matches the whole text.
  template <class Production, class Iterator>
  bool Matches(const Production& production, const Iterator& first, const Iterator& last) {
    return Work<XMLGrammarParts::TextForm>(production, first, last);
  }

  /// Whether `production` matches all that the stream gives.
  template <class Production>
  bool Matches(const Production& production, XMLStreamWindow& window) {
    return Work<XMLGrammarParts::StreamForm>(production, XMLStreamIterator(window), XMLStreamIterator());
  }

 private:
  template <class Form, class Production, class Iterator>
  bool Work(const Production& production, Iterator first, const Iterator& last) {
    return production.parse(XMLGrammarParts::MakeScanner<Form>(m_run, first, last)) && first == last;
  }

  XMLGrammarParts::Run<Parser> m_run;
};

}  // namespace Oxa::Core

#endif
