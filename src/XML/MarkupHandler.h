// What lays markup out anew: whatever a parse recognises comes out again through the pretty printer, part by part,
// as if it had been written so.
#ifndef OXACORE_XML_MARKUPHANDLER_H
#define OXACORE_XML_MARKUPHANDLER_H

#include <Infrastructure/OxaCore/XMLParser.h>
#include <Infrastructure/OxaCore/XMLWriter.h>

#include <iosfwd>
#include <list>
#include <string>

#include "XML/PrettyPrintFormatter.h"

namespace Oxa::Core {

/// The handler of one parse after the other, onto one formatter and one stream; both must outlive it.
///
/// White space around texts and in front of and behind the text of comments vanishes, since the layout gives it
/// anew: what has been laid out once comes out as it is. A start tag waits for its attributes, and a text for its
/// end. References to anything but the five predefined entities vanish from content and stay as they are in
/// attributes. Attributes stand between double quotes, which are escaped within; what was escaped in them stays so.
/// The XML declaration comes out only if the parse met one; without an encoding in it, that is UTF-8.
/// Failures: exhausted memory raises std::bad_alloc, and the stream throws what its mask asks for.
/// Thread safety: none.
class PrettyPrintFormatter::XMLHandler : public XMLParseHandler<XMLStringPolicy<std::string>> {
 public:
  XMLHandler(PrettyPrintFormatter& formatter, std::ostream& out);
  ~XMLHandler() override;

  void StartDoc();
  void SetVersion(const String& text);

  void StartTag(const String& name);
  void AttributeName(const String& name);
  void AttributeValueText(const String& text);
  void AttributeValueRef(const String& reference);
  void Attribute();
  void StartTagContent();
  void EndEmptyTag();
  /// Ends the innermost tag under the name that it was started with: `name` isn't compared with that.
  void EndTag(const String& name);

  void Text(const String& text);
  void ContentReference(const String& reference);
  void Comment(const String& text);
  void CData(const String& text) override;
  void EndDoc();

  /// For a parse that has failed: writes what still waits, but for a start tag that wasn't recognised to its end.
  /// The other tags stay open.
  void Abandon();

  /// Ends the tags that are open, the innermost first; for those who have to keep a document whole.
  void EndOpenTags();

 private:
  using Base = XMLParseHandler<XMLStringPolicy<std::string>>;

  void WriteDeclaration();
  void WriteStartTag();
  void WriteEndTag();
  void FlushText();
  void PopTag();

  PrettyPrintFormatter& m_rFormatter;
  std::ostream& m_rStream;
  bool m_bDeclarationWaits = false;  // the parse has met it, and it isn't written yet
  std::list<XMLOpenTag> m_tags;      // innermost first
  std::list<XMLOpenTag> m_ended;     // kept for what they have allocated
  bool m_bInStartTag = false;        // the innermost one isn't complete
  String m_sAttribute;
  String m_sValue;  // as it is to be written
  String m_sText;   // not written yet
};

}  // namespace Oxa::Core

#endif
