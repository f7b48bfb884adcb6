#include <Infrastructure/OxaCore/StreamLogHandler.h>

#include <ostream>

#include "Log/AlertEntry.h"
#include "Log/LogEntryText.h"
#include "Log/LogForms.h"

#include "Platform/Terminal.h"

namespace Oxa::Core {

namespace {

const char* const sUNKNOWN = "Unknown";
const char* const sEND_OF_COLOUR = "\x1B[0m";

// Red on white, red, yellow, blue, none, grey.
const char* ColourOf(OxaLogSeverityEnum severity) {
  switch (severity) {
    case eLOG_ALARM:
      return "\x1B[1;41;37m";
    case eLOG_ERROR:
      return "\x1B[31m";
    case eLOG_WARNING:
      return "\x1B[33m";
    case eLOG_DEBUG:
      return "\x1B[34m";
    case eLOG_VERBOSE:
      return "\x1B[90m";
    case eLOG_INFORMATIONAL:
    default:
      return "";
  }
}

bool IsControl(char character) {
  const auto byte = static_cast<unsigned char>(character);
  return (byte < 0x20 && character != '\n' && character != '\t') || byte == 0x7F;
}

// What a terminal is given in place of what it would obey.
std::string Harmless(const std::string& text) {
  static const char* const pDIGITS = "0123456789ABCDEF";
  std::string harmless;
  for (const char character : text) {
    if (!IsControl(character)) {
      harmless += character;
      continue;
    }
    const auto byte = static_cast<unsigned char>(character);
    harmless.append("\\x").append(1, pDIGITS[byte >> 4U]).append(1, pDIGITS[byte & 15U]);
  }
  return harmless;
}

// Of an alert its text; nobody wants to read its markup here.
std::string MessageOf(const OxaLogEntry& entry) {
  if (entry.m_sForm != sXML_LOG_FORM) return entry.m_sMessage;
  const std::string text = ReadAlertEntry(entry.m_sMessage).m_sMessage;
  return text.empty() ? entry.m_sMessage : text;
}

}  // namespace

StreamLogHandler::StreamLogHandler(std::ostream& out)
    : m_out(out),
      m_bTerminal(Platform::IsTerminal(out)),
      m_bColours(m_bTerminal && Platform::WantsColours()) {}

StreamLogHandler::~StreamLogHandler() = default;

void StreamLogHandler::OnLoggersChanged() {}

std::string StreamLogHandler::LineOf(const OxaLogEntry& entry) const {
  const char* const word = SeverityWord(entry.m_eSeverity);
  const std::string line = entry.m_time.ToString() + ' ' + (word != nullptr ? word : sUNKNOWN) + ' ' +
                           entry.m_sLoggerPath + ": " + MessageOf(entry);
  return m_bTerminal ? Harmless(line) : line;
}

void StreamLogHandler::HandleLogEntry(const OxaLogEntry& entry) {
  std::string line = LineOf(entry);
  const std::string colour = m_bColours ? ColourOf(entry.m_eSeverity) : "";
  if (!colour.empty()) line = colour + line + sEND_OF_COLOUR;
  line += '\n';
  const Lock lock(m_mutex);
  m_out.write(line.data(), static_cast<std::streamsize>(line.size()));
  m_out.flush();
}

}  // namespace Oxa::Core
