#include "Log/LogEntryText.h"

#include <Infrastructure/OxaCore/XMLWriter.h>

#include <cstddef>
#include <sstream>

#include "XML/Escape.h"

namespace Oxa::Core {

namespace {

const char* const sENTRY = "LogEntry";
const char* const sSEVERITY = "Severity";
const char* const sTIME = "TimeStamp";
const char* const sLOG_NAME = "LogName";
const char* const sMESSAGE = "Message";
const char* const sXML_FORM = "xml";

constexpr std::size_t uLINE_WIDTH = 80;
constexpr std::size_t uMARKS = 7;  // on the line of an element: two blanks, and "<>" and "</>"
constexpr std::size_t uUSUAL_FRAME = 512;

const char* const sWORDS[] = {"Alarm", "Error", "Warning", "Debug", "Informational", "Verbose"};

// --- By the writer, whatever the entry holds

void PutMessage(XMLWriter& writer, std::ostream& out, const OxaLogEntry& entry) {
  if (entry.m_sForm == sXML_FORM)
    out << writer.Markup(entry.m_sMessage);
  else
    out << writer.Tag(sMESSAGE, entry.m_sMessage);
}

std::string WrittenElement(const OxaLogEntry& entry) {
  std::ostringstream out;
  XMLWriter writer;
  out << writer.StartTag(sENTRY);
  if (const char* word = SeverityWord(entry.m_eSeverity)) out << writer.Attribute(sSEVERITY, word);
  out << writer.Tag(sTIME, entry.m_time.ToString()) << writer.Tag(sLOG_NAME, entry.m_sLoggerPath);
  PutMessage(writer, out, entry);
  out << writer.EndAllTags();
  return out.str();
}

// --- The same by hand, for what nearly every entry is: three texts of one line each. A writer would take longer
// --- than the system takes to write the entry to disk.

bool IsOneLine(const std::string& text) { return text.find('\n') == std::string::npos; }

bool IsSimple(const OxaLogEntry& entry) {
  return entry.m_sForm != sXML_FORM && IsOneLine(entry.m_sMessage) && IsOneLine(entry.m_sLoggerPath);
}

void PutTag(std::string& text, std::string_view opening, std::string_view name, std::string_view closing) {
  text.append(opening).append(name).append(closing);
}

void PutElement(std::string& text, std::string_view name, const std::string& content) {
  if (content.empty()) return PutTag(text, "  <", name, "/>\n");
  std::string buffer;
  const std::string& escaped = EscapeInto(content, buffer);
  const bool fits = escaped.size() + 2 * name.size() + uMARKS < uLINE_WIDTH;
  PutTag(text, "  <", name, fits ? ">" : ">\n    ");
  text.append(escaped);
  PutTag(text, fits ? "</" : "\n  </", name, ">\n");
}

void PutElementOfEntry(std::string& text, const OxaLogEntry& entry) {
  const char* const word = SeverityWord(entry.m_eSeverity);
  PutTag(text, "<LogEntry", word == nullptr ? "" : " Severity=\"", word == nullptr ? "" : word);
  text.append(word == nullptr ? ">\n" : "\" >\n");
  PutElement(text, sTIME, entry.m_time.ToString());
  PutElement(text, sLOG_NAME, entry.m_sLoggerPath);
  PutElement(text, sMESSAGE, entry.m_sMessage);
  text.append("</LogEntry>\n");
}

}  // namespace

const char* SeverityWord(OxaLogSeverityEnum severity) noexcept {
  return severity < eLOG_ALARM || severity > eLOG_VERBOSE ? nullptr : sWORDS[severity - eLOG_ALARM];
}

void LogEntryText(const OxaLogEntry& entry, std::string& text) {
  text.clear();
  text.reserve(entry.m_sMessage.size() + entry.m_sLoggerPath.size() + uUSUAL_FRAME);
  if (IsSimple(entry))
    PutElementOfEntry(text, entry);
  else
    text.append(WrittenElement(entry));
  text.append("\n").append(sLOG_ENTRY_SEPARATOR);
}

std::string LogEntryText(const OxaLogEntry& entry) {
  std::string text;
  LogEntryText(entry, text);
  return text;
}

}  // namespace Oxa::Core
