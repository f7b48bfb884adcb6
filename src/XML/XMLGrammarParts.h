// What the grammar is built from beside Spirit's own operators: scans by table, literals, and steps that look at
// what a run keeps.
#ifndef OXACORE_XML_XMLGRAMMARPARTS_H
#define OXACORE_XML_XMLGRAMMARPARTS_H

#include <bitset>
#include <boost/spirit/include/classic_core.hpp>
#include <cstddef>

#include "XML/XMLCharacters.h"
#include "XML/XMLStreamIterator.h"

namespace Oxa::Core::XMLGrammarParts {

namespace spirit = boost::spirit::classic;

constexpr std::size_t uMAX_GROUPS = 1000;

/// What a run keeps beside its place in the input. The recursive productions are loops that count here, so that
/// no document can exhaust the stack of the thread that parses it.
struct State {
  std::size_t elements = 0;            ///< open elements
  std::size_t groups = 0;              ///< open groups of a content model, uMAX_GROUPS at most
  std::bitset<uMAX_GROUPS> separated;  ///< by group: whether its kind of separator is known
  std::bitset<uMAX_GROUPS> choices;    ///< ... and whether it is "|"
  std::size_t included = 0;            ///< open INCLUDE sections
  std::size_t ignored = 0;             ///< open IGNORE sections
};

// How both kinds of iterators are stepped over a run of characters, remembered, and turned into text.
template <class Accepts>
std::size_t Skip(const char*& first, const char* last, const Accepts& accepts) {
  const char* const begin = first;
  while (first != last && accepts(*first)) ++first;
  return static_cast<std::size_t>(first - begin);
}
template <class Accepts>
std::size_t Skip(XMLStreamIterator& first, const XMLStreamIterator&, const Accepts& accepts) {
  return first.Skip(accepts);
}
inline void SetCheckpoint(const char*) {}
inline void SetCheckpoint(const XMLStreamIterator& at) { at.Checkpoint(); }
inline const char* BeginOf(const char* first) { return first; }
inline const char* BeginOf(const XMLStreamIterator& first) { return first.Begin(); }
inline const char* EndOf(const char*, const char* last) { return last; }
inline const char* EndOf(const XMLStreamIterator& first, const XMLStreamIterator& last) {
  return first.End(last);
}

/// Carries the parser whose operations the actions call, and the state of the run, through the scanner.
template <class Parser>
class ActionPolicy {
 public:
  ActionPolicy(Parser& parser, State& state) : m_pParser(&parser), m_pState(&state) {}

  template <class Action, class Attribute, class Iterator>
  void do_action(const Action& action, Attribute&, const Iterator& first, const Iterator& last) const {
    action(*m_pParser, BeginOf(first), EndOf(first, last));
  }
  State& GetState() const { return *m_pState; }

 private:
  Parser* m_pParser;
  State* m_pState;
};

using Match = spirit::match<spirit::nil_t>;

/// Base of all parsers here: they have no attribute.
template <class Derived>
struct Part : spirit::parser<Derived> {
  template <class Scanner>
  struct result {
    using type = Match;
  };
};

/// One character of some sets.
template <XMLCharacters::Set uSets>
struct One : Part<One<uSets>> {
  template <class Scanner>
  Match parse(const Scanner& scan) const {
    if (scan.at_end() || !XMLCharacters::IsIn(uSets, *scan)) return Match();
    ++scan;
    return Match(1);
  }
};

/// As many characters of some sets as there are.
template <XMLCharacters::Set uSets>
struct Any : Part<Any<uSets>> {
  template <class Scanner>
  Match parse(const Scanner& scan) const {
    return Match(Skip(scan.first, scan.last, [](char c) { return XMLCharacters::IsIn(uSets, c); }));
  }
};

/// The same, but at least one.
template <XMLCharacters::Set uSets>
struct Some : Part<Some<uSets>> {
  template <class Scanner>
  Match parse(const Scanner& scan) const {
    const Match all = Any<uSets>().parse(scan);
    return all.length() > 0 ? all : Match();
  }
};

/// A text as it stands.
template <std::size_t uSize>
class Literal : public Part<Literal<uSize>> {
 public:
  constexpr explicit Literal(const char (&text)[uSize]) : m_pText(text) {}

  template <class Scanner>
  Match parse(const Scanner& scan) const {
    for (std::size_t i = 0; i + 1 < uSize; ++i, ++scan)
      if (scan.at_end() || *scan != m_pText[i]) return Match();
    return Match(uSize - 1);
  }

 private:
  const char* m_pText;
};

template <std::size_t uSize>
constexpr Literal<uSize> Lit(const char (&text)[uSize]) {
  return Literal<uSize>(text);
}

/// Takes no input: a question about the state, or a change of it that can be refused.
template <bool (*work)(State&)>
struct Step : Part<Step<work>> {
  template <class Scanner>
  Match parse(const Scanner& scan) const {
    return work(scan.GetState()) ? Match(0) : Match();
  }
};

/// Takes no input: what lies before is never looked at again. May stand only where a failure behind it fails the
/// whole document, or goes back no further than to the next checkpoint: in a loop whose iterations begin with
/// it, outside of all alternatives and options.
struct Checkpoint : Part<Checkpoint> {
  template <class Scanner>
  Match parse(const Scanner& scan) const {
    SetCheckpoint(scan.first);
    return Match(0);
  }
};

}  // namespace Oxa::Core::XMLGrammarParts

/// A production: a parser of its own type, so that the whole grammar has neither tables to build nor objects to
/// share. The comment behind each gives its number.
#define OXA_XML_PRODUCTION(name, ...)                                 \
  struct name##Production : XMLGrammarParts::Part<name##Production> { \
    template <class Scanner>                                          \
    XMLGrammarParts::Match parse(const Scanner& scan) const {         \
      return (__VA_ARGS__).parse(scan);                               \
    }                                                                 \
  };                                                                  \
  constexpr name##Production name {}

#endif
