// What the grammar is built from beside Spirit's own operators: scans by table, literals, and steps that look at
// what a run keeps.
#ifndef OXACORE_XML_XMLGRAMMARPARTS_H
#define OXACORE_XML_XMLGRAMMARPARTS_H

#include <bitset>
#include <boost/spirit/include/classic_core.hpp>
#include <cstddef>
#include <type_traits>

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

  // An attempt to match what a stream's window holds at the moment.
  bool ranOut = false;  ///< it has come to the end of the window: what it finds from now on doesn't count
  std::size_t delivered = 0;  ///< how many actions it has called before
  std::size_t repeated = 0;   ///< how many the second try, step by step, has yet to leave out
};

// How iterators are remembered and turned into text.
inline void SetCheckpoint(const char*) {}
inline void SetCheckpoint(const XMLStreamIterator& at) { at.Checkpoint(); }
inline const char* BeginOf(const char* first) { return first; }
inline const char* BeginOf(const XMLStreamIterator& first) { return first.Begin(); }
inline const char* EndOf(const char*, const char* last) { return last; }
inline const char* EndOf(const XMLStreamIterator& first, const XMLStreamIterator& last) {
  return first.End(last);
}

// Steps over a run of characters; gives their number.
template <class Iterator, class Accepts>
std::size_t Skip(Iterator& first, const Iterator& last, const Accepts& accepts) {
  const Iterator begin = first;
  while (first != last && accepts(*first)) ++first;
  return static_cast<std::size_t>(first - begin);
}
template <class Accepts>
std::size_t Skip(XMLStreamIterator& first, const XMLStreamIterator&, const Accepts& accepts) {
  return first.Skip(accepts);
}

/// What a run works on.
template <class Parser>
struct Run {
  Parser& parser;  ///< whose operations the actions call
  State state;
};

/// Carries the run through the scanner, and calls the actions that the form of input wants.
template <class Parser, class Form>
class ActionPolicy {
 public:
  using ParserType = Parser;
  using FormType = Form;

  explicit ActionPolicy(Run<Parser>* run) : m_pRun(run) {}

  template <class Action, class Attribute, class Iterator>
  void do_action(const Action& action, Attribute&, const Iterator& first, const Iterator& last) const {
    if (Form::WantsAction(m_pRun->state)) action(m_pRun->parser, BeginOf(first), EndOf(first, last));
  }
  Run<Parser>& GetRun() const { return *m_pRun; }
  State& GetState() const { return m_pRun->state; }

 private:
  Run<Parser>* m_pRun;
};

/// A whole text.
struct TextForm : spirit::iteration_policy {
  static bool WantsAction(State&) { return true; }
};

/// What a stream's window holds at the moment, as a text that may go on.
struct AttemptForm : spirit::iteration_policy {
  template <class Scanner>
  bool at_end(const Scanner& scan) const {
    if (scan.first != scan.last) return false;
    scan.GetState().ranOut = true;
    return true;
  }
  static bool WantsAction(State& state) {
    if (state.ranOut) return false;
    ++state.delivered;
    return true;
  }
};

/// A stream, step by step.
struct StreamForm : spirit::iteration_policy {
  template <class Scanner>
  bool at_end(const Scanner& scan) const {
    return scan.first.IsEnd();
  }
  static bool WantsAction(State& state) {
    if (state.repeated == 0) return true;
    --state.repeated;
    return false;
  }
};

/// The scanner of a form.
template <class Form, class Parser, class Iterator>
auto MakeScanner(Run<Parser>& run, Iterator& first, const Iterator& last) {
  using Actions = ActionPolicy<Parser, Form>;
  using Policies = spirit::scanner_policies<Form, spirit::match_policy, Actions>;
  return spirit::scanner<Iterator, Policies>(first, last,
                                             Policies(Form(), spirit::match_policy(), Actions(&run)));
}

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
    const std::size_t size =
        Skip(scan.first, scan.last, [](char c) { return XMLCharacters::IsIn(uSets, c); });
    if (scan.first == scan.last) static_cast<void>(scan.at_end());  // an attempt has to know
    return Match(size);
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

/// One certain character. Spirit's own builds a scanner for each.
class Character : public Part<Character> {
 public:
  constexpr explicit Character(char c) : m_c(c) {}

  template <class Scanner>
  Match parse(const Scanner& scan) const {
    if (scan.at_end() || *scan != m_c) return Match();
    ++scan;
    return Match(1);
  }

 private:
  char m_c;
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

constexpr Character Lit(char c) { return Character(c); }

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

/// Matches `Subject` over and over as long as `goesOn` says so; each round begins with a checkpoint. In a stream
/// what the window holds is matched first, at the speed of a text. Only the round that reaches beyond is done again
/// step by step, without the actions that have taken place. A round changes the state only with its last character.
template <bool (*goesOn)(State&), class Subject>
struct Rounds : Part<Rounds<goesOn, Subject>> {
  template <class Scanner>
  Match parse(const Scanner& scan) const {
    State& state = scan.GetState();
    while (goesOn(state)) {
      if constexpr (std::is_same_v<typename Scanner::FormType, StreamForm>) {
        if (!ParseWindow(scan)) return Match();
        if (!state.ranOut) break;
      }
      SetCheckpoint(scan.first);
      if (!Subject().parse(scan)) return Match();
    }
    return Match(0);
  }

 private:
  // The rounds that the window holds as a whole. False if one of them doesn't match.
  template <class Scanner>
  static bool ParseWindow(const Scanner& scan) {
    State& state = scan.GetState();
    const char* const begin = scan.first.Begin();
    const char* at = begin;
    const char* const end = begin + scan.first.GetSize();
    const auto window = MakeScanner<AttemptForm>(scan.GetRun(), at, end);
    bool matches = true;
    state.ranOut = false;
    while (matches && goesOn(state)) {
      const char* const round = at;
      state.delivered = 0;
      matches = static_cast<bool>(Subject().parse(window));
      if (!state.ranOut) continue;
      at = round;
      state.repeated = state.delivered;
      matches = true;
      break;
    }
    scan.first += static_cast<std::size_t>(at - begin);
    return matches;
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
