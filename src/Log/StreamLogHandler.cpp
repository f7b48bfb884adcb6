#include <Infrastructure/OxaCore/StreamLogHandler.h>

#include <ostream>

#include "Log/AlertEntry.h"
#include "Log/LogEntryText.h"
#include "Log/LogForms.h"

#include "Platform/Clock.h"
#include "Platform/Files.h"
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

// What bytes follow one in UTF-8: how many, and where the first of them lies.
struct Followers {
  std::size_t m_uCount;
  unsigned char m_uLeast;
  unsigned char m_uMost;
};

Followers FollowersOf(unsigned char byte) {
  if (byte < 0xC2 || byte > 0xF4) return {0, 0, 0};
  if (byte < 0xE0) return {1, 0x80, 0xBF};
  const auto least = static_cast<unsigned char>(byte == 0xE0 ? 0xA0 : byte == 0xF0 ? 0x90 : 0x80);
  const auto most = static_cast<unsigned char>(byte == 0xED ? 0x9F : byte == 0xF4 ? 0x8F : 0xBF);
  return {byte < 0xF0 ? 2U : 3U, least, most};
}

// How many bytes the character there takes; 1 for those that are none in UTF-8.
std::size_t SizeOfCharacter(const std::string& text, std::size_t at) {
  Followers expected = FollowersOf(static_cast<unsigned char>(text[at]));
  if (expected.m_uCount >= text.size() - at) return 1;
  for (std::size_t i = 1; i <= expected.m_uCount; ++i) {
    const auto byte = static_cast<unsigned char>(text[at + i]);
    if (byte < expected.m_uLeast || byte > expected.m_uMost) return 1;
    expected = {expected.m_uCount, 0x80, 0xBF};
  }
  return expected.m_uCount + 1;
}

bool IsControl(unsigned char byte) {
  return (byte < 0x20 && byte != '\n' && byte != '\t') || (byte >= 0x7F && byte < 0xA0);
}

// The controls above 127 are there twice: as a byte for a terminal of bytes, and as a character of two.
bool IsControl(const std::string& text, std::size_t at, std::size_t size) {
  if (size == 1) return IsControl(static_cast<unsigned char>(text[at]));
  return text[at] == '\xC2' && IsControl(static_cast<unsigned char>(text[at + 1]));
}

void AppendEscaped(std::string& harmless, char character) {
  static const char* const pDIGITS = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(character);
  harmless.append("\\x").append(1, pDIGITS[byte >> 4U]).append(1, pDIGITS[byte & 15U]);
}

// What a terminal is given in place of what it would obey.
std::string Harmless(const std::string& text) {
  std::string harmless;
  std::size_t size = 0;
  for (std::size_t at = 0; at < text.size(); at += size) {
    size = SizeOfCharacter(text, at);
    if (!IsControl(text, at, size)) {
      harmless.append(text, at, size);
      continue;
    }
    for (std::size_t i = 0; i < size; ++i) AppendEscaped(harmless, text[at + i]);
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
  // Time::ToString would raise for a moment that has no date, and the log drops a handler that lets an error out.
  const std::string line = Platform::LocalTimeText(entry.m_time.GetRawTimerTicks()) + ' ' +
                           (word != nullptr ? word : sUNKNOWN) + ' ' + entry.m_sLoggerPath + ": " +
                           MessageOf(entry);
  return m_bTerminal ? Harmless(line) : line;
}

void StreamLogHandler::HandleLogEntry(const OxaLogEntry& entry) {
  std::string line = LineOf(entry);
  const std::string colour = m_bColours ? ColourOf(entry.m_eSeverity) : "";
  if (!colour.empty()) line = colour + line + sEND_OF_COLOUR;
  line += '\n';
  const Lock lock(m_mutex);
  const Platform::FileLimitGuard guard;  // a file that can't grow is a stream that fails, and ends no process
  m_out.write(line.data(), static_cast<std::streamsize>(line.size()));
  m_out.flush();
}

}  // namespace Oxa::Core
