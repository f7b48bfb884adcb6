// Recognises an XML document in a text or a stream, and calls a handler as it goes.
//
// A handler is a class derived from XMLParseHandler; XMLParser<Handler> derives from it and parses. The handler
// redefines the operations that it cares for. They are found by name while compiling, so none needs to be
// virtual but CData and GetLock, which are; one that leaves part of the work to XMLParseHandler calls it there.
// The grammar is that of XML 1.0, fourth edition, for form alone: a document type declaration is checked and
// passed over in silence, entities aren't expanded, and the name of an end tag isn't compared with that of its
// start tag. No encoding is decoded: each byte counts as the character of that code, 0 to 255, and texts are
// handed on byte by byte as they stand, without any change of line ends. Processing instructions are passed
// over in silence. The work is linear in the size of the input. The depth of elements has no limit; groups in
// the declaration of an element's content may be nested 1000 deep.
// Failures: a text that doesn't match gives false, without saying where or why; what was recognised before has
// been handed on and can't be taken back. What the handler throws passes through, and so does std::bad_alloc.
// Thread safety: a parser object belongs to one thread at a time. All parses of the process are serial: one
// process-wide mutex is held while one runs, but for handlers whose GetLock gives another lock. It is reentrant,
// so a handler may parse something else with another parser; but it must not wait for a thread that parses, and
// nobody may parse while holding a lock that a handler takes.
//
//   class Names : public XMLParseHandler<> {
//    public:
//     void StartTag(const std::string& name) {
//       XMLParseHandler<>::StartTag(name);
//       std::cout << name << ", depth " << tagNames.size() << '\n';
//     }
//   };
//   XMLParser<Names> parser;
//   if (!parser.Parse("<a><b/></a>")) std::cout << "That's no document.\n";
#ifndef INFRASTRUCTURE_OXACORE_XMLPARSER_H
#define INFRASTRUCTURE_OXACORE_XMLPARSER_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Lock.h>

#include <cstdlib>
#include <iosfwd>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <vector>

namespace Oxa::Core {

/// How a text type is built from the characters of the input and compared. Its characters are char; what else is
/// asked of it is a hash, size, data, [], == and assignment of characters, as std::string has them.
template <class StringType>
struct XMLStringPolicy {
  /// The text type.
  using String = StringType;
  static_assert(std::is_same_v<typename String::value_type, char>, "the input is a sequence of char");

  /// Makes `text` the characters from `first` to `last`.
  static void Assign(String& text, const char* first, const char* last) {
    text.assign(first, static_cast<typename String::size_type>(last - first));
  }
  /// Whether `text` is the null-terminated `other`.
  static bool Equal(const String& text, const char* other) { return text == other; }
};

/// Where the grammar reports what it finds, in the order of the document. The link between XMLParser and the
/// library; hosts derive handlers instead. The characters lie between `first` and `last` for the call only.
class OXACORE_API XMLParseSink {
 public:
  XMLParseSink(const XMLParseSink&) = delete;
  XMLParseSink& operator=(const XMLParseSink&) = delete;
  virtual ~XMLParseSink();

  // The operations of XMLParseHandler, each with the characters that were matched.
  virtual void StartDoc() = 0;
  virtual void SetVersion(const char* first, const char* last) = 0;
  virtual void SetEncoding(const char* first, const char* last) = 0;
  virtual void SetStandalone(const char* first, const char* last) = 0;
  virtual void StartTag(const char* first, const char* last) = 0;
  virtual void AttributeName(const char* first, const char* last) = 0;
  virtual void AttributeValueText(const char* first, const char* last) = 0;
  virtual void AttributeValueRef(const char* first, const char* last) = 0;
  virtual void AttributeValue() = 0;
  virtual void Attribute() = 0;
  virtual void StartTagContent() = 0;
  virtual void EndEmptyTag() = 0;
  virtual void EndTag(const char* first, const char* last) = 0;
  virtual void Text(const char* first, const char* last) = 0;
  virtual void ContentReference(const char* first, const char* last) = 0;
  virtual void Comment(const char* first, const char* last) = 0;
  virtual void CData(const char* first, const char* last) = 0;
  virtual void EndDoc() = 0;

  /// Runs the grammar over a text; true only if it matches as a whole. Takes no lock.
  bool Recognise(const char* first, const char* last);
  /// The same for what a stream gives from where it stands. Not more of it is kept in memory than the longest
  /// token needs. A stream that isn't good gives nothing; one that was read to its end has eofbit afterwards;
  /// one whose buffer throws counts as ended there and has badbit. Its exception mask is not heeded.
  bool Recognise(std::istream& stream);

 protected:
  XMLParseSink() = default;
};

/// The process-wide mutex that parses are serialised by. Can be taken at any time, also while the process's
/// static objects die.
OXACORE_API Mutex& XMLParseMutex();

/// What handlers share. Each operation is called with the text that was matched; the table of them stands in
/// the order in which a document can bring them about.
template <class PolicyType = XMLStringPolicy<std::string>>
class XMLParseHandler {
 public:
  // How texts are built, and what they are.
  using Policy = PolicyType;
  using String = typename Policy::String;

  XMLParseHandler() = default;
  XMLParseHandler(const XMLParseHandler&) = default;
  XMLParseHandler& operator=(const XMLParseHandler&) = default;
  virtual ~XMLParseHandler() = default;

  /// The lock that is held while a parse runs: one on XMLParseMutex, without a limit for the wait. A handler that
  /// can't wait for the parses of others gives one of its own: parses share nothing but that mutex.
  virtual Lock GetLock() { return Lock(XMLParseMutex(), IMutex::sINFINITE); }

  /// Forgets the open elements of an earlier parse, and makes room for 32. Called as a parse begins.
  void Reset() {
    tagNames.clear();
    tagNames.reserve(32);
  }

  /// The document begins. Comes with every parse, also if nothing of it is going to match.
  void StartDoc() {}
  /// The XML declaration: its version, such as "1.0". Stores it.
  void SetVersion(const String& text) { version = text; }
  /// The XML declaration: its encoding. Stores it; it has no effect on the parse.
  void SetEncoding(const String& text) { encoding = text; }
  /// The XML declaration: whether it says standalone="yes". Stores it.
  void SetStandalone(bool isStandalone) { standalone = isStandalone; }

  /// The name behind a "<". Puts it onto `tagNames`.
  void StartTag(const String& name) { tagNames.push_back(name); }
  /// The name of an attribute of that tag.
  void AttributeName(const String&) {}
  /// Plain text in the attribute's value, never empty.
  void AttributeValueText(const String&) {}
  /// A reference in the attribute's value, with its "&" and ";".
  void AttributeValueRef(const String&) {}
  /// The value's closing quote.
  void AttributeValue() {}
  /// The attribute is complete.
  void Attribute() {}
  /// The ">" of the start tag: content follows.
  void StartTagContent() {}
  /// The "/>" of an empty-element tag. Takes the name off `tagNames`.
  void EndEmptyTag() { PopTagName(); }
  /// The name behind a "</". Takes the innermost name off `tagNames`, whether the two are the same or not.
  void EndTag(const String&) { PopTagName(); }

  /// Character data between markup, never empty.
  void Text(const String&) {}
  /// A reference between markup, with its "&" and ";".
  void ContentReference(const String&) {}
  /// A comment outside of a document type declaration: what stands between "<!--" and "-->".
  void Comment(const String&) {}
  /// A CDATA section: what stands between "<![CDATA[" and "]]>".
  virtual void CData(const String&) {}

  /// The document ends: what comes next, if anything, is no part of one.
  void EndDoc() {}

 protected:
  /// Gives in `out` what the reference `text` stands for, and whether that is known.
  bool ResolveReference(const String& text, String& out) const {
    return ResolveCharRef(text, out) || LookupEntity(text, out);
  }

  /// False unless `text` begins with "#". Copies it then unless `expandCharRefs` is set; otherwise gives the
  /// character, cut to 8 bits, whose number is written from index 3 on, in base 16, if that at index 2 is an
  /// "x", else from index 2 on, in the base that the digits ask for as in C; its last character doesn't count.
  /// References come here with their "&", so those of a document are never taken for character references.
  bool ResolveCharRef(const String& text, String& out) const {
    if (text.empty() || text[0] != '#') return false;
    if (!expandCharRefs) {
      out = text;
      return true;
    }
    const bool hexadecimal = text.size() > 2 && text[2] == 'x';
    const unsigned long code = NumberIn(text, hexadecimal ? 3 : 2, hexadecimal ? 16 : 0);
    const char c = static_cast<char>(static_cast<unsigned char>(code));
    Policy::Assign(out, &c, &c + 1);
    return true;
  }

  /// Gives in `out` what `entities` has under `text`; false if there is nothing.
  bool LookupEntity(const String& text, String& out) const {
    const auto found = entities.find(text);
    if (found == entities.end()) return false;
    out = found->second;
    return true;
  }

  /// Takes the innermost name off `tagNames`, if there is one.
  void PopTagName() {
    if (!tagNames.empty()) tagNames.pop_back();
  }

  std::unordered_map<String, String> entities;  ///< replacements by reference, with its "&" and ";"
  std::vector<String> tagNames;                 ///< the open elements, the innermost last
  bool expandCharRefs = false;                  ///< whether a reference to a character gives that character
  String version;           ///< this and the next two: of the last declaration that was parsed
  String encoding;          ///< see version
  bool standalone = false;  ///< see version

 private:
  static unsigned long NumberIn(const String& text, typename String::size_type from, int base) {
    std::string digits;
    if (from + 1 < text.size()) digits.assign(text.data() + from, text.size() - from - 1);
    return std::strtoul(digits.c_str(), nullptr, base);
  }
};

/// Parses with a handler, which must be default constructible or is built from the arguments given.
template <class Handler>
class XMLParser : public Handler {
 public:
  /// The handler's text type.
  using String = typename Handler::String;
  using Handler::Handler;

  /// Parses a document. True only if the whole text is one.
  bool Parse(const String& aText) {
    return Run(
        [&aText](XMLParseSink& sink) { return sink.Recognise(aText.data(), aText.data() + aText.size()); });
  }

  /// Parses what the stream gives from where it stands; see XMLParseSink::Recognise for the stream's state.
  bool Parse(std::istream& aStream) {
    return Run([&aStream](XMLParseSink& sink) { return sink.Recognise(aStream); });
  }

 private:
  class Sink;

  template <class Work>
  bool Run(const Work& work) {
    const Lock lock = this->GetLock();
    this->Reset();
    Sink sink(*this);
    return work(sink);
  }
};

/// Builds the texts and hands them to the handler. One per run: a parse within a parse has its own.
template <class Handler>
class XMLParser<Handler>::Sink final : public XMLParseSink {
 public:
  /// `parser` must outlive it.
  explicit Sink(XMLParser& parser) : m_rParser(parser) {}

  void StartDoc() override { m_rParser.StartDoc(); }
  void SetVersion(const char* first, const char* last) override {
    m_rParser.SetVersion(Matched(first, last));
  }
  void SetEncoding(const char* first, const char* last) override {
    m_rParser.SetEncoding(Matched(first, last));
  }
  void SetStandalone(const char* first, const char* last) override {
    m_rParser.SetStandalone(Handler::Policy::Equal(Matched(first, last), "yes"));
  }
  void StartTag(const char* first, const char* last) override { m_rParser.StartTag(Matched(first, last)); }
  void AttributeName(const char* first, const char* last) override {
    m_rParser.AttributeName(Matched(first, last));
  }
  void AttributeValueText(const char* first, const char* last) override {
    m_rParser.AttributeValueText(Matched(first, last));
  }
  void AttributeValueRef(const char* first, const char* last) override {
    m_rParser.AttributeValueRef(Matched(first, last));
  }
  void AttributeValue() override { m_rParser.AttributeValue(); }
  void Attribute() override { m_rParser.Attribute(); }
  void StartTagContent() override { m_rParser.StartTagContent(); }
  void EndEmptyTag() override { m_rParser.EndEmptyTag(); }
  void EndTag(const char* first, const char* last) override { m_rParser.EndTag(Matched(first, last)); }
  void Text(const char* first, const char* last) override { m_rParser.Text(Matched(first, last)); }
  void ContentReference(const char* first, const char* last) override {
    m_rParser.ContentReference(Matched(first, last));
  }
  void Comment(const char* first, const char* last) override { m_rParser.Comment(Matched(first, last)); }
  void CData(const char* first, const char* last) override { m_rParser.CData(Matched(first, last)); }
  void EndDoc() override { m_rParser.EndDoc(); }

 private:
  const String& Matched(const char* first, const char* last) {
    Handler::Policy::Assign(m_sMatched, first, last);
    return m_sMatched;
  }

  XMLParser& m_rParser;
  String m_sMatched;  // keeps what it has allocated
};

}  // namespace Oxa::Core

#endif
