// Writes the elements of a page, so that the same text is good HTML and well-formed XML.
#ifndef STATION_PAGEWRITER_H
#define STATION_PAGEWRITER_H

#include <Infrastructure/OxaCore/XMLWriter.h>

#include <initializer_list>
#include <iosfwd>
#include <string>

namespace Station {

/// A writer for one page. Texts and the values of attributes may be anything in the single-byte code page of
/// ToUtf8: they are converted and escaped, and a control character that XML forbids becomes U+FFFD. Names and
/// markup are written as they are. The stream must outlive this.
class PageWriter {
 public:
  struct Attribute {
    const char* m_pName;
    std::string m_sValue;
  };
  using Attributes = std::initializer_list<Attribute>;

  explicit PageWriter(std::ostream& out);

  /// Starts an element that has an end tag of its own, also if nothing comes into it: HTML takes `<p/>` for a start.
  void Start(const char* name, Attributes attributes = {});
  /// Ends the innermost element that was started.
  void End();
  void Text(const std::string& text);
  /// An element with nothing but text in it.
  void Element(const char* name, Attributes attributes, const std::string& text);
  /// An element of one tag: one that HTML never gives content, or one of SVG.
  void Empty(const char* name, Attributes attributes);
  /// What is markup already.
  void Markup(const std::string& markup);

 private:
  std::ostream& m_rOut;
  Oxa::Core::XMLWriter m_writer;
};

}  // namespace Station

#endif
