#include <Infrastructure/OxaCore/JournalLogHandler.h>

#include <Infrastructure/OxaCore/System.h>
#include <Infrastructure/OxaCore/SystemTools.h>

#include <utility>

#include "Log/JournalRecord.h"

#include "Platform/Journal.h"

namespace Oxa::Core {

namespace {

const char* const sLOG_NAME = "Oxa.Core.JournalLogHandler";
const char* const sUNREACHABLE = "The system's journal can't be reached: %1%";
const char* const sMISSING = " log entries didn't reach the journal";

std::string IdentifierOr(const std::string& identifier) {
  std::string name = identifier;
  const auto system = System::Instance();
  if (name.empty() && system != nullptr) system->GetProcessName(name);
  return name;
}

}  // namespace

JournalUnreachable::JournalUnreachable(const std::string& systemText)
    : Warning(AlertMessage(sUNREACHABLE, systemText)) {}
JournalUnreachable::~JournalUnreachable() = default;

JournalLogHandler::JournalLogHandler(const std::string& identifier)
    : m_sIdentifier(IdentifierOr(identifier)), m_bReachable(true), m_ulLost(0), m_ulUntold(0) {}

JournalLogHandler::~JournalLogHandler() = default;

void JournalLogHandler::OnLoggersChanged() {}

void JournalLogHandler::HandleLogEntry(const OxaLogEntry& entry) {
  bool hasBegun = false;
  unsigned long missing = 0;
  const int code = Send(JournalRecord(entry, m_sIdentifier), hasBegun, missing);
  if (missing > 0) TellOfMissing(missing);
  if (hasBegun)
    OXA_RAISE_WARNING(
        sLOG_NAME, JournalUnreachable(MSWindows::GetWindowsErrorMessage(static_cast<unsigned long>(code))));
}

// `hasBegun` is whether this is the first record that is lost, `missing` what the journal has yet to be told of.
int JournalLogHandler::Send(const std::string& record, bool& hasBegun, unsigned long& missing) {
  const Lock lock(m_mutex);
  const int code = Platform::SendToJournal(record.data(), record.size(), m_bReachable);
  hasBegun = code != 0 && m_bReachable;
  m_bReachable = code == 0;
  if (code == 0) {
    missing = std::exchange(m_ulUntold, 0);
  } else {
    ++m_ulLost;
    ++m_ulUntold;
  }
  return code;
}

void JournalLogHandler::TellOfMissing(unsigned long count) {
  const std::string record = JournalRemark(std::to_string(count) + sMISSING, m_sIdentifier);
  const Lock lock(m_mutex);
  if (Platform::SendToJournal(record.data(), record.size(), false) != 0) m_ulUntold += count;
}

bool JournalLogHandler::IsReachable() const {
  const Lock lock(m_mutex);
  return m_bReachable;
}

unsigned long JournalLogHandler::GetLostEntries() const {
  const Lock lock(m_mutex);
  return m_ulLost;
}

}  // namespace Oxa::Core
