// Writes an XML document onto any std::ostream through manipulators.
//
// A caller asks the writer for a manipulator and inserts it into a stream; nothing happens before that. The
// writer keeps the logical state (open tags, and the start tag that has not been written yet, so that
// attributes can still reach it); the layout is the formatter's.
//
// Escaping: only what goes through Text and the content of Tag is escaped. Names, attribute values, comments,
// CDATA sections, markup and entity texts reach the stream as they are. Escape names and values that need it
// beforehand, with XMLFormatter::Escape. In comments and CDATA sections nothing can be escaped: "--" or "-->"
// in a comment, "]]>" in a CDATA section, or markup that isn't well-formed are not detected, and the document
// that comes of them is broken.
// Misuse is answered in silence: an end tag or an attribute without an open tag does nothing, an attribute
// for a tag that has been written already is lost, and nothing checks that the document is well formed.
// Failures: none of its own, but exhausted memory raises what the containers raise (std::bad_alloc). The state
// of the stream written to is the caller's affair: once that has failed, nothing reaches it, and the writer goes
// on as if it had. Only what its exception mask asks for is thrown, by the stream itself. Streams that texts are
// taken from are never the cause of an exception; XMLFormatter.h tells what becomes of their state.
// Ordinary output may stand between manipulators (`out << writer.Text("t") << 7`), but the pretty printer
// doesn't see it: its line and column don't count it, and what follows may be laid out differently. A width
// that is set on the stream is not applied to markup, and is used up by the insertion.
// Thread safety: none. Each thread or document uses a writer of its own.
// Lifetime: a manipulator holds a pointer to its writer and must not outlive it. Works at any time, also
// while the process's static objects die.
//
//   XMLWriter writer(XMLFormatter::CreateCompact());
//   out << writer.StartDocA() << writer.StartTag("Probe") << writer.Attribute("id", "7")
//       << writer.Tag("Name", "left & right") << writer.EndDoc();
#ifndef INFRASTRUCTURE_OXACORE_XMLWRITER_H
#define INFRASTRUCTURE_OXACORE_XMLWRITER_H

#include <Infrastructure/OxaCore/Export.h>

#include <boost/shared_ptr.hpp>
#include <iosfwd>
#include <list>
#include <string>
#include <utility>
#include <vector>

namespace Oxa::Core {

class XMLFormatter;

/// The value of one attribute: a list of parts, whose texts are written one after the other.
template <class String>
class XMLAttributeValue : public std::list<String> {
 public:
  XMLAttributeValue() = default;
  /// One part. Implicit, so that a text can stand wherever a value is wanted.
  XMLAttributeValue(const String& text) : std::list<String>(1, text) {}
  /// The same.
  XMLAttributeValue(const typename String::value_type* text) : XMLAttributeValue(String(text)) {}

  /// The parts joined, in order, with nothing between them.
  String GetText() const {
    String text;
    for (const String& part : *this) text += part;
    return text;
  }
};

/// A name with its value.
template <class String>
struct XMLAttribute {
  String name;                      ///< as it is written
  XMLAttributeValue<String> value;  ///< as it is given; it is escaped when it is written
};

/// The attributes of one tag, in the order of insertion, which is the order of output.
template <class String>
class XMLAttributeMap : public std::vector<XMLAttribute<String>> {
 public:
  /// The value under `name`; a new empty one at the end if there is none. Setting an attribute twice thus
  /// replaces its value and keeps its first place.
  XMLAttributeValue<String>& operator[](const String& name) {
    for (XMLAttribute<String>& attribute : *this)
      if (attribute.name == name) return attribute.value;
    this->push_back(XMLAttribute<String>{name, XMLAttributeValue<String>()});
    return this->back().value;
  }
};

/// A tag that has been started and not ended.
struct XMLOpenTag {
  bool startWritten = false;                ///< whether the start tag has reached the stream
  std::string name;                         ///< the element's
  XMLAttributeMap<std::string> attributes;  ///< in the order in which they were given
};

/// Makes the manipulators and keeps the open tags.
class OXACORE_API XMLWriter {
 public:
  /// The type of all texts.
  using String = std::string;

  /// What is inserted into a stream. A copyable value with copies of its arguments; inserting it again does its
  /// work again. But one that was made with a stream holds a reference to it: the first insertion reads that to
  /// its end, and a second finds nothing more in it.
  class OXACORE_API Manipulator {
   public:
    /// The work of one kind of manipulator, with copies of the arguments that it needs. It lives inside the
    /// manipulator, so that making one costs no allocation of its own.
    class OXACORE_API Applicator {
     public:
      virtual ~Applicator();
      /// Does the work on `out` for `manipulator`, which knows the writer.
      virtual void Apply(std::ostream& out, const Manipulator& manipulator) const = 0;
      /// Builds a copy in raw storage that is large enough, and gives it.
      virtual Applicator* CopyTo(void* storage) const = 0;
    };

    /// Copies what `other` holds; std::bad_alloc without memory for that. An assignment that fails leaves this
    /// empty: to insert it does nothing then.
    Manipulator(const Manipulator& other);
    Manipulator& operator=(const Manipulator& other);
    virtual ~Manipulator();

    /// Does the work on `out` and sets its width to 0; the same as inserting this into `out`.
    virtual void Apply(std::ostream& out) const;

    /// The writer that made this.
    XMLWriter& GetWriter() const { return *m_pWriter; }

   private:
    friend class XMLWriter;
    template <class Work, class... Arguments>
    Manipulator(XMLWriter* writer, const Work*, Arguments&&... arguments);

    void Destroy() noexcept;

    XMLWriter* m_pWriter;
    Applicator* m_pApplicator;  // in the storage below
    alignas(void*) unsigned char m_storage[14 * sizeof(void*)];
  };

  /// The attributes of a tag that has none. Can be read at any time.
  static const XMLAttributeMap<String>& sEMPTY_MAP;

  /// A writer with no open tag. Null stands for XMLFormatter::CreatePrettyPrint().
  explicit XMLWriter(boost::shared_ptr<XMLFormatter> aFormatter = boost::shared_ptr<XMLFormatter>());

  /// Copies share the formatter and have open tags of their own.
  XMLWriter(const XMLWriter& other);
  XMLWriter& operator=(const XMLWriter& other);

  /// Writes nothing: tags that are still open stay so.
  virtual ~XMLWriter();

  /// Takes a formatter (null as above) and forgets the open tags.
  void Reset(boost::shared_ptr<XMLFormatter> aFormatter);

  /// The XML declaration; with `aEndTags`, all open tags are ended first. Resets the formatter's layout.
  Manipulator StartDocA(const String& aVersion = "1.0", const String& aEncoding = "UTF-8",
                        bool aStandalone = false, bool aEndTags = true);
  /// The same as EndAllTags.
  Manipulator EndDoc();

  /// A processing instruction that names a style sheet: its address and its type, as in "text/xsl".
  Manipulator StyleSheet(const String& aHref, const String& aType);

  /// Opens a tag. It is written with the next insertion that needs it there, and takes attributes until then.
  Manipulator StartTag(const String& aName, const XMLAttributeMap<String>& aAttributes = sEMPTY_MAP);
  /// Ends the innermost tag.
  Manipulator EndTag();
  /// Ends all open tags, the innermost first.
  Manipulator EndAllTags();

  /// A whole element: with a start tag, the escaped content and an end tag, or, without content, with one
  /// empty-element tag.
  Manipulator Tag(const String& aName, const String& aContent);
  Manipulator Tag(const String& aName, const XMLAttributeMap<String>& aAttributes,
                  const String& aContent = String());

  /// The same as inserting Tag(...) into `out`, without a manipulator: nothing is copied.
  void PutTag(std::ostream& out, const String& aName, const String& aContent);
  void PutTag(std::ostream& out, const String& aName, const XMLAttributeMap<String>& aAttributes,
              const String& aContent);

  /// Sets an attribute of the innermost tag, as long as that has not been written.
  Manipulator Attribute(const String& aName, const XMLAttributeValue<String>& aValue);

  /// Plain text, which is escaped. The stream is read to its end at the insertion and must live until then.
  /// The pretty printer may put line ends and blanks around it, and lays a text with line feeds, and every
  /// stream, out line by line without the white space around each. Where that matters, use the compact
  /// formatter or a preserved CDATA section.
  Manipulator Text(const String& aText);
  Manipulator Text(std::istream& aStream);

  /// A reference: "amp" and "&amp;" both give "&amp;". Text that begins with "&" is taken as it stands.
  Manipulator EntityReference(const String& aReference);

  /// Text that is XML already. The compact formatter copies it; the pretty printer parses it and lays it out anew,
  /// and of one that isn't well-formed writes what it recognised: see XMLFormatter::CreatePrettyPrint.
  Manipulator Markup(const String& aMarkup);

  /// A comment. With `aPreserve` a formatter leaves the line breaks in it as they are. "--" must not be in it.
  Manipulator Comment(const String& aText, bool aPreserve = false);

  /// A CDATA section. "]]>" must not be in it. With `aPreserve` a formatter leaves the text in it as it is.
  /// Without, the pretty printer changes it: a text that has, with its indentation, more than 68 characters
  /// gets lines of its own, indented, each without the white space around it; and a stream loses all white
  /// space and is broken into lines, as suits encoded data. The compact formatter never changes it.
  /// The stream is read to its end at the insertion and must live until then.
  Manipulator CDATASection(const String& aText, bool aPreserve = false);
  Manipulator CDATASection(std::istream& aStream, bool aPreserve = false);

 protected:
  /// What Tag and Attribute forward to, for derived writers.
  Manipulator TagManipulator(const String& aName, const XMLAttributeMap<String>& aAttributes,
                             const String& aContent);
  Manipulator AttributeManipulator(const String& aName, const XMLAttributeValue<String>& aValue);

 private:
  class ApplyStartDoc;
  class ApplyStyleSheet;
  class ApplyStartTag;
  class ApplyEndTag;
  class ApplyEndAllTags;
  class ApplyTag;
  class ApplyAttribute;
  class ApplyText;
  class ApplyTextStream;
  class ApplyEntityReference;
  class ApplyMarkup;
  class ApplyComment;
  class ApplyCDATA;
  class ApplyCDATAStream;

  template <class Work, class... Arguments>
  Manipulator Make(Arguments&&... arguments);

  XMLFormatter& WriteStartTag(std::ostream& out);
  void PushTag(const String& name, const XMLAttributeMap<String>& attributes);
  void SetAttribute(const String& name, const XMLAttributeValue<String>& value);
  void WriteEndTag(std::ostream& out);
  void WriteAllEndTags(std::ostream& out);

  boost::shared_ptr<XMLFormatter> m_spFormatter;  // never null
  std::list<XMLOpenTag> m_tags;                   // innermost first
  std::list<XMLOpenTag> m_ended;                  // kept for what they have allocated
};

/// Does the manipulator's work on `out` and gives `out`.
OXACORE_API std::ostream& operator<<(std::ostream& out, const XMLWriter::Manipulator& manipulator);

}  // namespace Oxa::Core

#endif
