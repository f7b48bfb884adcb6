#include "Log/LogEntryText.h"

#include <Infrastructure/OxaCore/XMLWriter.h>

#include <boost/make_shared.hpp>
#include <cstddef>
#include <cstring>
#include <sstream>
#include <string_view>

#include "Log/LogFormatter.h"
#include "Log/LogForms.h"
#include "XML/Escape.h"

namespace Oxa::Core {

namespace {

const char* const sENTRY = "LogEntry";
const char* const sSEVERITY = "Severity";
const char* const sTIME = "TimeStamp";
const char* const sLOG_NAME = "LogName";
const char* const sMESSAGE = "Message";

constexpr std::size_t uLINE_WIDTH = 80;
constexpr std::size_t uMARKS = 7;    // on the line of an element: two blanks, and "<>" and "</>"
constexpr std::size_t uFRAME = 512;  // more than all that stands around the three texts

const char* const sWORDS[] = {"Alarm", "Error", "Warning", "Debug", "Informational", "Verbose"};

// --- By the writer, whatever the entry holds

void PutMessage(XMLWriter& writer, std::ostream& out, const OxaLogEntry& entry) {
  if (entry.m_sForm == sXML_LOG_FORM)
    out << writer.Markup(entry.m_sMessage);
  else
    out << writer.Tag(sMESSAGE, entry.m_sMessage);
}

std::string WrittenElement(const OxaLogEntry& entry) {
  std::ostringstream out;
  XMLWriter writer(boost::make_shared<LogFormatter>());
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
  return entry.m_sForm != sXML_LOG_FORM && IsOneLine(entry.m_sMessage) && IsOneLine(entry.m_sLoggerPath);
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

// The texts as they stand in the entry.
class EscapedTexts {
 public:
  explicit EscapedTexts(const OxaLogEntry& entry)
      : m_sTime(entry.m_time.ToString()),
        m_path(EscapeInto(entry.m_sLoggerPath, m_buffers[0])),
        m_message(EscapeInto(entry.m_sMessage, m_buffers[1])) {}
  EscapedTexts(const EscapedTexts&) = delete;
  EscapedTexts& operator=(const EscapedTexts&) = delete;

  /// More than the whole entry takes.
  std::size_t Room() const { return m_sTime.size() + m_path.size() + m_message.size() + uFRAME; }

  /// Gives the end of what it wrote.
  char* Put(OxaLogSeverityEnum severity, char* at) const {
    Pen pen(at);
    PutStartTag(pen, severity);
    PutElement(pen, "TimeStamp", m_sTime);
    PutElement(pen, "LogName", m_path);
    PutElement(pen, "Message", m_message);
    pen << "</LogEntry>\n\n" << sLOG_ENTRY_SEPARATOR;
    return pen.At();
  }

 private:
  std::string m_buffers[2];  // first: the two references may be to these
  const std::string m_sTime;
  const std::string& m_path;
  const std::string& m_message;
};

std::string TextByWriter(const OxaLogEntry& entry) {
  return WrittenElement(entry).append("\n").append(sLOG_ENTRY_SEPARATOR);
}

}  // namespace

const char* SeverityWord(OxaLogSeverityEnum severity) noexcept {
  return severity < eLOG_ALARM || severity > eLOG_VERBOSE ? nullptr : sWORDS[severity - eLOG_ALARM];
}

BriefLogEntryText::BriefLogEntryText(const OxaLogEntry& entry) {
  if (!IsSimple(entry)) {
    m_text = m_long = TextByWriter(entry);
    return;
  }
  const EscapedTexts texts(entry);
  char* room = m_room;
  if (texts.Room() > sizeof m_room) {
    m_long.resize(texts.Room());
    room = m_long.data();
  }
  m_text = std::string_view(room, static_cast<std::size_t>(texts.Put(entry.m_eSeverity, room) - room));
}

std::string LogEntryText(const OxaLogEntry& entry) { return std::string(BriefLogEntryText(entry).Get()); }

}  // namespace Oxa::Core
