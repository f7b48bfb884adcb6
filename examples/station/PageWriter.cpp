#include "PageWriter.h"

#include <Infrastructure/OxaCore/XMLFormatter.h>

#include <ostream>

#include "Utf8.h"

namespace Station {

using Oxa::Core::XMLAttributeMap;
using Oxa::Core::XMLFormatter;

namespace {

const char* const sREPLACEMENT = "\xEF\xBF\xBD";

bool IsForbidden(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte == 0x7F || (byte < 0x20 && c != '\t' && c != '\n' && c != '\r');
}

std::string Utf8ForXML(const std::string& text) {
  std::string allowed;
  for (const char c : ToUtf8(text)) {
    if (IsForbidden(c)) {
      allowed += sREPLACEMENT;
    } else {
      allowed += c;
    }
  }
  return allowed;
}

XMLAttributeMap<std::string> EscapedForXML(PageWriter::Attributes attributes) {
  XMLAttributeMap<std::string> escaped;
  for (const PageWriter::Attribute& attribute : attributes)
    escaped[attribute.m_pName] = XMLFormatter::Escape(Utf8ForXML(attribute.m_sValue));
  return escaped;
}

}  // namespace

PageWriter::PageWriter(std::ostream& out) : m_rOut(out), m_writer(XMLFormatter::CreateCompact()) {}

void PageWriter::Start(const char* name, Attributes attributes) {
  m_rOut << m_writer.StartTag(name, EscapedForXML(attributes));
}

void PageWriter::End() { m_rOut << m_writer.EndTag(); }

void PageWriter::Text(const std::string& text) { m_rOut << m_writer.Text(Utf8ForXML(text)); }

void PageWriter::Element(const char* name, Attributes attributes, const std::string& text) {
  Start(name, attributes);
  Text(text);
  End();
}

void PageWriter::Empty(const char* name, Attributes attributes) {
  m_rOut << m_writer.Tag(name, EscapedForXML(attributes));
}

void PageWriter::Markup(const std::string& markup) { m_rOut << m_writer.Markup(markup); }

}  // namespace Station
