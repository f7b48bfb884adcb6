#include "XML/CompactFormatter.h"

#include <istream>
#include <ostream>

#include "XML/Escape.h"
#include "XML/FormatterParts.h"
#include "XML/TextOutput.h"

namespace Oxa::Core {

namespace {

// A stream as the filter wants its source.
struct FilterSource {
  using char_type = char;
  using category = boost::iostreams::source_tag;

  std::streamsize read(char* chunk, std::streamsize size) {
    const std::streamsize got = input.Read(chunk, size);
    return got > 0 ? got : -1;
  }

  TextInput& input;
};

}  // namespace

CompactFormatter::CompactFormatter() = default;
CompactFormatter::~CompactFormatter() = default;

void CompactFormatter::FormatStartDoc(std::ostream& os, const String& version, const String& encoding,
                                      bool standalone) {
  TextOutput out(os);
  PutDeclaration(out, version, encoding, standalone);
  out.Flush();
}

void CompactFormatter::FormatStartTag(std::ostream& os, const String& name, const Attributes& attributes,
                                      bool emptyTag) {
  TextOutput out(os);
  out << '<' << name;
  for (const XMLAttribute<String>& attribute : attributes) {
    out << ' ' << attribute.name << "=\"";
    PutValue(out, attribute.value);
    out << '"';
  }
  if (emptyTag) out << '/';
  out << '>';
  out.Flush();
}

void CompactFormatter::FormatTextStream(std::ostream& os, std::istream& text) {
  TextOutput out(os);
  TextInput input(text);
  FilterSource source{input};
  XMLTranscodeFilter<String> filter;
  PutChunks(out, [&](char* chunk, std::streamsize size) { return filter.read(source, chunk, size); });
  out.Flush();
}

void CompactFormatter::FormatText(std::ostream& os, const String& text) {
  TextOutput out(os);
  PutEscaped(out, text);
  out.Flush();
}

void CompactFormatter::FormatEndTag(std::ostream& os, const String& name) {
  TextOutput out(os);
  PutEndTag(out, name);
  out.Flush();
}

void CompactFormatter::FormatProcessingInstruction(std::ostream& os, const String& target,
                                                   const String& content, bool) {
  TextOutput out(os);
  out << "<?" << target << ' ' << content << "?>";
  out.Flush();
}

void CompactFormatter::FormatMarkupStream(std::ostream& os, std::istream& markup) {
  TextOutput out(os);
  PutStream(out, markup);
  out.Flush();
}

void CompactFormatter::FormatMarkup(std::ostream& os, const String& markup) {
  TextOutput out(os);
  out << markup;
  out.Flush();
}

void CompactFormatter::FormatComment(std::ostream& os, const String& text, bool) {
  TextOutput out(os);
  out << "<!--" << text << "-->";
  out.Flush();
}

void CompactFormatter::FormatCDATAStream(std::ostream& os, std::istream& text, bool) {
  TextOutput out(os);
  out << "<![CDATA[";
  PutStream(out, text);
  out << "]]>";
  out.Flush();
}

void CompactFormatter::FormatCDATA(std::ostream& os, const String& text, bool) {
  TextOutput out(os);
  out << "<![CDATA[" << text << "]]>";
  out.Flush();
}

void CompactFormatter::FormatEntityReference(std::ostream& os, const String& reference) {
  FormatMarkup(os, reference);
}

}  // namespace Oxa::Core
