#include "Log/LogEntryText.h"

#include <Infrastructure/OxaCore/XMLWriter.h>

#include <cstddef>
#include <cstring>
#include <sstream>
#include <string_view>

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
constexpr std::size_t uMARKS = 7;    // on the line of an element: two blanks, and "<>" and "</>"
constexpr std::size_t uFRAME = 512;  // more than all that stands around the three texts

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

// Writes into memory that was made large enough beforehand. Literals are copied by a few instructions each.
class Pen {
 public:
  explicit Pen(char* at) : m_pAt(at) {}

  template <std::size_t SIZE>
  Pen& operator<<(const char (&literal)[SIZE]) {
    return Put(literal, SIZE - 1);
  }
  Pen& operator<<(const std::string& text) { return Put(text.data(), text.size()); }
  Pen& operator<<(std::string_view text) { return Put(text.data(), text.size()); }

  char* At() const { return m_pAt; }

 private:
  Pen& Put(const char* text, std::size_t size) {
    std::memcpy(m_pAt, text, size);
    m_pAt += size;
    return *this;
  }

  char* m_pAt;
};

template <std::size_t SIZE>
void PutElement(Pen& pen, const char (&name)[SIZE], const std::string& escaped) {
  if (escaped.empty())
    pen << "  <" << name << "/>\n";
  else if (escaped.size() + 2 * (SIZE - 1) + uMARKS < uLINE_WIDTH)
    pen << "  <" << name << ">" << escaped << "</" << name << ">\n";
  else
    pen << "  <" << name << ">\n    " << escaped << "\n  </" << name << ">\n";
}

void PutStartTag(Pen& pen, OxaLogSeverityEnum severity) {
  if (const char* const word = SeverityWord(severity))
    pen << "<LogEntry Severity=\"" << std::string_view(word) << "\" >\n";
  else
    pen << "<LogEntry>\n";
}

void PutByHand(const OxaLogEntry& entry, std::string& text) {
  std::string buffers[2];
  const std::string time = entry.m_time.ToString();
  const std::string& path = EscapeInto(entry.m_sLoggerPath, buffers[0]);
  const std::string& message = EscapeInto(entry.m_sMessage, buffers[1]);
  text.resize(time.size() + path.size() + message.size() + uFRAME);
  Pen pen(text.data());
  PutStartTag(pen, entry.m_eSeverity);
  PutElement(pen, "TimeStamp", time);
  PutElement(pen, "LogName", path);
  PutElement(pen, "Message", message);
  pen << "</LogEntry>\n\n" << sLOG_ENTRY_SEPARATOR;
  text.resize(static_cast<std::size_t>(pen.At() - text.data()));
}

}  // namespace

const char* SeverityWord(OxaLogSeverityEnum severity) noexcept {
  return severity < eLOG_ALARM || severity > eLOG_VERBOSE ? nullptr : sWORDS[severity - eLOG_ALARM];
}

void LogEntryText(const OxaLogEntry& entry, std::string& text) {
  if (IsSimple(entry))
    PutByHand(entry, text);
  else
    text.assign(WrittenElement(entry)).append("\n").append(sLOG_ENTRY_SEPARATOR);
}

std::string LogEntryText(const OxaLogEntry& entry) {
  std::string text;
  LogEntryText(entry, text);
  return text;
}

}  // namespace Oxa::Core
