// The formatter that adds no white space. It has no state.
#ifndef OXACORE_XML_COMPACTFORMATTER_H
#define OXACORE_XML_COMPACTFORMATTER_H

#include <Infrastructure/OxaCore/XMLFormatter.h>

namespace Oxa::Core {

class CompactFormatter : public XMLFormatter {
 public:
  CompactFormatter();
  ~CompactFormatter() override;

  void FormatStartDoc(std::ostream& os, const String& version, const String& encoding,
                      bool standalone) override;
  void FormatStartTag(std::ostream& os, const String& name, const Attributes& attributes,
                      bool emptyTag) override;
  void FormatTextStream(std::ostream& os, std::istream& text) override;
  void FormatText(std::ostream& os, const String& text) override;
  void FormatEndTag(std::ostream& os, const String& name) override;
  void FormatProcessingInstruction(std::ostream& os, const String& target, const String& content,
                                   bool preserve) override;
  void FormatMarkupStream(std::ostream& os, std::istream& markup) override;
  void FormatMarkup(std::ostream& os, const String& markup) override;
  void FormatComment(std::ostream& os, const String& text, bool preserve) override;
  void FormatCDATAStream(std::ostream& os, std::istream& text, bool preserve) override;
  void FormatCDATA(std::ostream& os, const String& text, bool preserve) override;
  void FormatEntityReference(std::ostream& os, const String& reference) override;
};

}  // namespace Oxa::Core

#endif
