#include <Infrastructure/OxaCore/XMLFormatter.h>

#include <boost/make_shared.hpp>

#include "XML/CompactFormatter.h"
#include "XML/Escape.h"
#include "XML/PrettyPrintFormatter.h"

namespace Oxa::Core {

namespace {

constexpr char sSTYLE_SHEET[] = "xml-stylesheet";

}  // namespace

XMLFormatter::~XMLFormatter() = default;

boost::shared_ptr<XMLFormatter> XMLFormatter::CreateCompact() {
  return boost::make_shared<CompactFormatter>();
}

boost::shared_ptr<XMLFormatter> XMLFormatter::CreatePrettyPrint() {
  return boost::make_shared<PrettyPrintFormatter>();
}

XMLFormatter::String XMLFormatter::Escape(const String& text) {
  String buffer;
  return EscapeInto(text, buffer);
}

void XMLFormatter::FormatStyleSheet(std::ostream& os, const String& aHref, const String& aType) {
  FormatProcessingInstruction(os, sSTYLE_SHEET, "type=\"" + aType + "\"\nhref=\"" + aHref + "\"", false);
}

void XMLFormatter::FormatTag(std::ostream& os, const String& name, const Attributes& attributes,
                             const String& content) {
  FormatStartTag(os, name, attributes, content.empty());
  if (content.empty()) return;
  FormatText(os, content);
  FormatEndTag(os, name);
}

}  // namespace Oxa::Core
