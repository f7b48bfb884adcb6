#include "XML/MarkupHandler.h"

#include <Infrastructure/OxaCore/StringTools.h>

#include "XML/Escape.h"

namespace Oxa::Core {

namespace {

constexpr char sUSUAL_ENCODING[] = "UTF-8";
constexpr char sQUOTE_REFERENCE[] = "&quot;";

// A value may come from between single quotes.
void AppendWithoutQuotes(std::string& value, const std::string& text) {
  for (const char c : text)
    if (c == '"')
      value += sQUOTE_REFERENCE;
    else
      value += c;
}

}  // namespace

PrettyPrintFormatter::XMLHandler::XMLHandler(PrettyPrintFormatter& formatter, std::ostream& out)
    : m_rFormatter(formatter), m_rStream(out) {
  entities = {{"&lt;", "<"}, {"&gt;", ">"}, {"&amp;", "&"}, {"&apos;", "'"}, {"&quot;", "\""}};
}

PrettyPrintFormatter::XMLHandler::~XMLHandler() = default;

// --- The document

void PrettyPrintFormatter::XMLHandler::StartDoc() {
  m_bDeclarationWaits = false;
  m_ended.splice(m_ended.begin(), m_tags);
  m_bInStartTag = false;
  m_sText.clear();
}

// The first of the three that a declaration can have.
void PrettyPrintFormatter::XMLHandler::SetVersion(const String& text) {
  Base::SetVersion(text);
  encoding = sUSUAL_ENCODING;
  standalone = false;
  m_bDeclarationWaits = true;
}

// Not before there is something behind it: a fragment in the middle of a document has none, and must not begin a
// new layout.
void PrettyPrintFormatter::XMLHandler::WriteDeclaration() {
  if (!m_bDeclarationWaits) return;
  m_bDeclarationWaits = false;
  m_rFormatter.FormatStartDoc(m_rStream, version, encoding, standalone);
}

void PrettyPrintFormatter::XMLHandler::EndDoc() { FlushText(); }

// --- Tags

void PrettyPrintFormatter::XMLHandler::WriteStartTag() {
  if (m_tags.empty() || m_tags.front().startWritten) return;
  m_rFormatter.FormatStartTag(m_rStream, m_tags.front().name, m_tags.front().attributes, false);
  m_tags.front().startWritten = true;
}

void PrettyPrintFormatter::XMLHandler::PopTag() {
  PopTagName();
  m_ended.splice(m_ended.begin(), m_tags, m_tags.begin());
}

void PrettyPrintFormatter::XMLHandler::StartTag(const String& name) {
  FlushText();
  WriteDeclaration();
  WriteStartTag();
  if (m_ended.empty()) m_ended.emplace_front();
  XMLOpenTag& tag = m_ended.front();
  tag.startWritten = false;
  tag.name = name;
  tag.attributes.clear();
  Base::StartTag(name);
  m_tags.splice(m_tags.begin(), m_ended, m_ended.begin());
  m_bInStartTag = true;
}

void PrettyPrintFormatter::XMLHandler::StartTagContent() { m_bInStartTag = false; }

void PrettyPrintFormatter::XMLHandler::EndEmptyTag() {
  FlushText();
  m_bInStartTag = false;
  if (!m_tags.front().startWritten)
    m_rFormatter.FormatStartTag(m_rStream, tagNames.back(), m_tags.front().attributes, true);
  PopTag();
}

void PrettyPrintFormatter::XMLHandler::EndTag(const String&) {
  FlushText();
  WriteEndTag();
}

void PrettyPrintFormatter::XMLHandler::WriteEndTag() {
  WriteStartTag();
  m_rFormatter.FormatEndTag(m_rStream, m_tags.front().name);
  PopTag();
}

// --- Attributes

void PrettyPrintFormatter::XMLHandler::AttributeName(const String& name) {
  m_sAttribute = name;
  m_sValue.clear();
}

void PrettyPrintFormatter::XMLHandler::AttributeValueText(const String& text) {
  AppendWithoutQuotes(m_sValue, text);
}

// What stands for a character that can't stand there by itself has to be escaped again.
void PrettyPrintFormatter::XMLHandler::AttributeValueRef(const String& reference) {
  String text;
  String buffer;
  m_sValue += LookupEntity(reference, text) ? EscapeInto(text, buffer) : reference;
}

void PrettyPrintFormatter::XMLHandler::Attribute() {
  m_tags.front().attributes[m_sAttribute] = XMLAttributeValue<String>(m_sValue);
}

// --- Content

void PrettyPrintFormatter::XMLHandler::FlushText() {
  if (m_sText.empty()) return;
  const String text = StringTools::TrimWS(m_sText);
  m_sText.clear();
  if (text.empty()) return;
  WriteStartTag();
  m_rFormatter.FormatText(m_rStream, text);
}

void PrettyPrintFormatter::XMLHandler::Text(const String& text) { m_sText += text; }

void PrettyPrintFormatter::XMLHandler::ContentReference(const String& reference) {
  String text;
  if (LookupEntity(reference, text))
    m_sText += text;
  else
    FlushText();
}

void PrettyPrintFormatter::XMLHandler::Comment(const String& text) {
  FlushText();
  WriteDeclaration();
  WriteStartTag();
  m_rFormatter.FormatComment(m_rStream, StringTools::TrimWS(text), true);
}

void PrettyPrintFormatter::XMLHandler::CData(const String& text) {
  FlushText();
  WriteStartTag();
  m_rFormatter.FormatCDATA(m_rStream, text, true);
}

// --- The end of a parse that failed

void PrettyPrintFormatter::XMLHandler::Abandon() {
  FlushText();
  if (m_bInStartTag)
    PopTag();
  else
    WriteStartTag();
}

void PrettyPrintFormatter::XMLHandler::EndOpenTags() {
  while (!m_tags.empty()) WriteEndTag();
}

}  // namespace Oxa::Core
