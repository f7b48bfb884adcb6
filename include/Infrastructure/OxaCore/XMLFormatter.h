// The layout of XML documents, and the escaping of texts.
//
// A writer decides what comes next, a formatter where it goes on the line. There are two, made by the
// factories of XMLFormatter: the compact one adds no white space at all; the pretty printer indents by two
// blanks and keeps lines near 80 columns.
//
// Failures: exhausted memory raises what the containers raise (std::bad_alloc); nothing else comes from here.
// The state of the stream written to is its owner's affair: one that has failed takes nothing, and what its
// exception mask asks for it throws itself.
// A stream that texts are taken from is never the cause of an exception, whatever its mask says. One that isn't
// good (failbit, badbit or eofbit) gives nothing and keeps its state. One that was read has eofbit afterwards.
// One whose buffer throws counts as ended there and has badbit afterwards; what it gave before is written, and
// so is what closes the section.
// Thread safety: the compact formatter has no state, and any number of threads may use one at once. The
// pretty printer follows line and column: one document, and so one thread, at a time.
//
//   XMLWriter writer(XMLFormatter::CreatePrettyPrint());
//   std::cout << writer.Tag("Name", "left & right");
#ifndef INFRASTRUCTURE_OXACORE_XMLFORMATTER_H
#define INFRASTRUCTURE_OXACORE_XMLFORMATTER_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/XMLWriter.h>

#include <array>
#include <boost/iostreams/categories.hpp>
#include <boost/iostreams/read.hpp>
#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <iosfwd>
#include <string>

namespace Oxa::Core {

/// Lays out the parts of an XML document.
class OXACORE_API XMLFormatter {
 public:
  // The types of its texts.
  using String = std::string;
  using Attributes = XMLAttributeMap<String>;

  /// A formatter that adds no white space of its own.
  static boost::shared_ptr<XMLFormatter> CreateCompact();

  /// A formatter that indents by two blanks and keeps lines near 80 columns.
  /// Raw markup is parsed and laid out anew, as if it had been written part by part; what was laid out by this
  /// formatter comes out as it is. It has to be a document, with or without its declaration, or one element. Of
  /// markup that isn't well-formed, as much is written as was recognised, and the tags that are open then stay
  /// open; nothing reports the rest. White space around texts and comments, processing instructions, the
  /// document type, and all references in content but the five predefined ones are dropped. The parse takes the
  /// process-wide lock of XMLParser.h.
  /// The layout adds white space to the content, and changes some of what is there: texts with line feeds and
  /// text streams (each line loses the white space around it and gets its indentation), texts that don't fit
  /// on the line of their start tag (a line end and blanks in front and behind), CDATA sections of more than
  /// 68 characters with their indentation, and CDATA streams. `preserve` keeps the inside of comments,
  /// processing instructions and CDATA sections as it is, but for the line ends that a long comment or
  /// processing instruction gets in front and behind. What has to come back to the byte goes into a preserved
  /// CDATA section or through the compact formatter.
  /// Line and column count only what this formatter writes: ordinary output onto the stream in between goes
  /// unnoticed.
  static boost::shared_ptr<XMLFormatter> CreatePrettyPrint();

  /// Replaces "<", ">", "&", "'" and the double quote by their predefined entities; everything else, also
  /// control characters and bytes above 127, stays as it is.
  static String Escape(const String& text);

  XMLFormatter(const XMLFormatter& other) = default;
  XMLFormatter& operator=(const XMLFormatter& other) = default;
  virtual ~XMLFormatter();

  /// The XML declaration; the standalone part is there only if `standalone`. Starts a new layout.
  virtual void FormatStartDoc(std::ostream& os, const String& version, const String& encoding,
                              bool standalone) = 0;
  /// A start tag with its attributes in their order, or, with `emptyTag`, an empty-element tag, which opens no
  /// level. Name and values are written as they are.
  virtual void FormatStartTag(std::ostream& os, const String& name, const Attributes& attributes,
                              bool emptyTag) = 0;
  /// Plain text, to be escaped; the stream is read to its end, piece by piece.
  virtual void FormatTextStream(std::ostream& os, std::istream& text) = 0;
  /// Plain text, to be escaped.
  virtual void FormatText(std::ostream& os, const String& text) = 0;
  /// The end tag of that name. Nothing checks that it is the one that is open.
  virtual void FormatEndTag(std::ostream& os, const String& name) = 0;
  /// A processing instruction, its target and its content as they are. With `preserve` line feeds in the
  /// content stay; without, a formatter that lays out may lay it out line by line.
  virtual void FormatProcessingInstruction(std::ostream& os, const String& target, const String& content,
                                           bool preserve) = 0;
  /// Text that is XML already, as it stands or, of a formatter that lays out, laid out anew; the stream is read to
  /// its end, piece by piece.
  virtual void FormatMarkupStream(std::ostream& os, std::istream& markup) = 0;
  /// The same of a text.
  virtual void FormatMarkup(std::ostream& os, const String& markup) = 0;
  /// A comment; `preserve` as for processing instructions. A "--" in it is not detected.
  virtual void FormatComment(std::ostream& os, const String& text, bool preserve) = 0;
  /// A CDATA section of what the stream gives, read to its end, piece by piece. With `preserve` as it stands;
  /// without, a formatter that lays out drops white space and breaks what remains into lines. A "]]>" in it is
  /// not detected.
  virtual void FormatCDATAStream(std::ostream& os, std::istream& text, bool preserve) = 0;
  /// A CDATA section. With `preserve` the text is written as it stands; without, a formatter that lays out may
  /// lay a long one out line by line. A "]]>" in it is not detected.
  virtual void FormatCDATA(std::ostream& os, const String& text, bool preserve) = 0;
  /// A reference in its final form, such as "&amp;".
  virtual void FormatEntityReference(std::ostream& os, const String& reference) = 0;

  /// The processing instruction "xml-stylesheet", by FormatProcessingInstruction.
  void FormatStyleSheet(std::ostream& os, const String& aHref, const String& aType);

  /// A whole element: an empty-element tag if `content` is empty.
  void FormatTag(std::ostream& os, const String& name, const Attributes& attributes, const String& content);

 protected:
  XMLFormatter() = default;
};

/// A Boost.Iostreams input filter that escapes a text as it passes, so that it need not fit into memory.
///
///   boost::iostreams::filtering_istream escaped;
///   escaped.push(XMLTranscodeFilter<std::string>());
///   escaped.push(source);
template <class String>
class XMLTranscodeFilter {
 public:
  /// What Boost.Iostreams asks of a filter: its characters, and what it can do.
  using char_type = typename String::value_type;
  struct category : boost::iostreams::input_filter_tag,
                    boost::iostreams::multichar_tag,
                    boost::iostreams::closable_tag {};

  XMLTranscodeFilter()
      : m_replacements{{Entity("lt"), Entity("gt"), Entity("amp"), Entity("apos"), Entity("quot")}} {}

  /// Puts up to `size` characters of escaped text from `source` into `out`. Gives their number, -1 at the
  /// end.
  template <class Source>
  std::streamsize read(Source& source, char_type* out, std::streamsize size) {
    std::streamsize done = TakePending(out, size);
    while (done < size) {
      const std::streamsize got = boost::iostreams::read(source, out + done, size - done);
      if (got <= 0) return done > 0 ? done : got;
      done += EscapeInPlace(out + done, got);
      done += TakePending(out + done, size - done);
    }
    return done;
  }

  /// Forgets what has been read and not been given.
  template <class Source>
  void close(Source&) {
    m_sPending.clear();
    m_uTaken = 0;
  }

 private:
  static String Entity(const char* name) {
    String text(1, char_type('&'));
    for (; *name != 0; ++name) text += char_type(*name);
    return text += char_type(';');
  }

  // The text that stands for `c`, or null.
  const String* Replacement(char_type c) const {
    switch (c) {
      case char_type('<'):
        return &m_replacements[0];
      case char_type('>'):
        return &m_replacements[1];
      case char_type('&'):
        return &m_replacements[2];
      case char_type('\''):
        return &m_replacements[3];
      case char_type('"'):
        return &m_replacements[4];
      default:
        return nullptr;
    }
  }

  // Gives how many characters can stay where they are; the rest waits, escaped, in m_sPending.
  std::streamsize EscapeInPlace(const char_type* text, std::streamsize size) {
    std::streamsize plain = 0;
    while (plain < size && Replacement(text[plain]) == nullptr) ++plain;
    for (std::streamsize at = plain; at < size; ++at) {
      if (const String* replacement = Replacement(text[at]))
        m_sPending += *replacement;
      else
        m_sPending += text[at];
    }
    return plain;
  }

  std::streamsize TakePending(char_type* out, std::streamsize size) {
    const std::size_t taken = m_sPending.copy(out, static_cast<std::size_t>(size), m_uTaken);
    m_uTaken += taken;
    if (m_uTaken == m_sPending.size()) {
      m_sPending.clear();
      m_uTaken = 0;
    }
    return static_cast<std::streamsize>(taken);
  }

  std::array<String, 5> m_replacements;
  String m_sPending;         // escaped text that found no room yet
  std::size_t m_uTaken = 0;  // how much of it has been given
};

}  // namespace Oxa::Core

#endif
