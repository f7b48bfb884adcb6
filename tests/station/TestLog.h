// Receives what is logged, instead of the file.
#ifndef STATION_TESTS_TESTLOG_H
#define STATION_TESTS_TESTLOG_H

#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/Log.h>
#include <Infrastructure/OxaCore/LogManager.h>

#include <string>
#include <vector>

namespace StationTests {

/// Listens from its construction to its destruction.
class TestLog : public Oxa::Core::IOxaLogHandler {
 public:
  TestLog() { Oxa::Core::LogManager::Instance()->RegisterHandler(this); }
  ~TestLog() override { Oxa::Core::LogManager::Instance()->UnregisterHandler(this); }

  void OnLoggersChanged() override {}
  void HandleLogEntry(const Oxa::Core::OxaLogEntry& entry) override {
    const Oxa::Core::Lock lock(m_mutex);
    m_entries.push_back(entry);
  }

  /// The messages of one logger and severity that were logged before this call, in their order.
  std::vector<std::string> Messages(const std::string& path, Oxa::Core::OxaLogSeverityEnum severity) {
    AwaitWaiting();
    const Oxa::Core::Lock lock(m_mutex);
    std::vector<std::string> messages;
    for (const Oxa::Core::OxaLogEntry& entry : m_entries) {
      if (entry.m_sLoggerPath == path && entry.m_eSeverity == severity) messages.push_back(entry.m_sMessage);
    }
    return messages;
  }

 private:
  // Switching buffering off sends what waits.
  static void AwaitWaiting() {
    Oxa::Core::LogManager::Instance()->SetBufferingMode(false);
    Oxa::Core::LogManager::Instance()->SetBufferingMode(true);
  }

  Oxa::Core::Mutex m_mutex;  // guards the entries
  std::vector<Oxa::Core::OxaLogEntry> m_entries;
};

}  // namespace StationTests

#endif
