#include "Log/JournalRecord.h"

#include <Infrastructure/OxaCore/Chrono.h>

#include <chrono>
#include <cstdint>

#include "Log/AlertEntry.h"
#include "Log/LogEntryText.h"
#include "Log/LogForms.h"

namespace Oxa::Core {

namespace {

constexpr char cWARNING = '4';

// The journal's own numbers, by severity.
constexpr char cPRIORITIES[] = {'1', '3', '4', '7', '6', '7'};
constexpr char cINFORMATION = '6';

char PriorityOf(OxaLogSeverityEnum severity) {
  return SeverityWord(severity) != nullptr ? cPRIORITIES[severity - eLOG_ALARM] : cINFORMATION;
}

// A value of several lines is told by its length, in eight bytes, the lowest first.
void Append(std::string& record, const char* name, const std::string& value) {
  record += name;
  if (value.find('\n') == std::string::npos) {
    record += '=';
  } else {
    record += '\n';
    for (unsigned int bit = 0; bit < 64; bit += 8)
      record += static_cast<char>(static_cast<std::uint64_t>(value.size()) >> bit & 0xFFU);
  }
  record += value;
  record += '\n';
}

void AppendUnlessEmpty(std::string& record, const char* name, const std::string& value) {
  if (!value.empty()) Append(record, name, value);
}

void AppendAlert(std::string& record, const std::string& xml) {
  const AlertEntry alert = ReadAlertEntry(xml);
  Append(record, "MESSAGE", alert.m_sMessage.empty() ? xml : alert.m_sMessage);
  AppendUnlessEmpty(record, "CODE_FILE", alert.m_sFile);
  AppendUnlessEmpty(record, "CODE_LINE", alert.m_sLine);
  AppendUnlessEmpty(record, "CODE_FUNC", alert.m_sFunction);
  Append(record, "OXA_XML", xml);
}

std::string Head(char priority, const std::string& identifier) {
  std::string record;
  Append(record, "PRIORITY", std::string(1, priority));
  Append(record, "SYSLOG_IDENTIFIER", identifier);
  return record;
}

std::string MicrosecondsOf(const Time& time) {
  return std::to_string(ToTimePoint<std::chrono::microseconds>(time).time_since_epoch().count());
}

}  // namespace

std::string JournalRecord(const OxaLogEntry& entry, const std::string& identifier) {
  std::string record = Head(PriorityOf(entry.m_eSeverity), identifier);
  Append(record, "OXA_LOGGER", entry.m_sLoggerPath);
  if (const char* const word = SeverityWord(entry.m_eSeverity)) Append(record, "OXA_SEVERITY", word);
  Append(record, "OXA_FORM", entry.m_sForm);
  Append(record, "OXA_TIME_USEC", MicrosecondsOf(entry.m_time));
  if (entry.m_sForm == sXML_LOG_FORM)
    AppendAlert(record, entry.m_sMessage);
  else
    Append(record, "MESSAGE", entry.m_sMessage);
  return record;
}

std::string JournalRemark(const std::string& message, const std::string& identifier) {
  std::string record = Head(cWARNING, identifier);
  Append(record, "MESSAGE", message);
  return record;
}

}  // namespace Oxa::Core
