// Handlers, loggers and services that remember what was done to them, for the tests of the log services.
#ifndef OXACORE_TESTS_LOG_LOGFAKES_H
#define OXACORE_TESTS_LOG_LOGFAKES_H

#include <Infrastructure/OxaCore/Log.h>

#include <functional>
#include <list>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace LogFakes {

inline Oxa::Core::OxaLogEntry MakeEntry(const std::string& message) {
  Oxa::Core::OxaLogEntry entry;
  entry.m_eSeverity = Oxa::Core::eLOG_WARNING;
  entry.m_sMessage = message;
  entry.m_sLoggerPath = "Test.Path";
  entry.m_sForm = "plain";
  return entry;
}

/// Keeps the messages; runs what the test wants behind that. For one thread.
class Handler : public Oxa::Core::IOxaLogHandler {
 public:
  void OnLoggersChanged() override {
    ++m_iChanges;
    if (m_onChange) m_onChange();
  }
  void HandleLogEntry(const Oxa::Core::OxaLogEntry& entry) override {
    m_entries.push_back(entry);
    if (m_onEntry) m_onEntry();
  }

  std::vector<std::string> Messages() const {
    std::vector<std::string> messages;
    for (const Oxa::Core::OxaLogEntry& entry : m_entries) messages.push_back(entry.m_sMessage);
    return messages;
  }

  int m_iChanges = 0;
  std::vector<Oxa::Core::OxaLogEntry> m_entries;
  std::function<void()> m_onChange;
  std::function<void()> m_onEntry;
};

class FakeLogger : public Oxa::Core::IOxaLogger {
 public:
  explicit FakeLogger(const std::string& path) : m_sPath(path) {}

  std::string GetPath() const override {
    if (m_onGetPath) m_onGetPath();
    return m_sPath;
  }
  std::string GetName() const override { return m_sPath.substr(m_sPath.rfind('.') + 1); }
  unsigned int GetSeverityFilters() const override { return m_uFilters; }
  void SetSeverityFilters(unsigned int filters) override {
    ++m_iSet;
    m_uFilters = filters;
    if (m_onSet) m_onSet();
  }

  std::string m_sPath;
  unsigned int m_uFilters = 1000;
  int m_iSet = 0;
  std::function<void()> m_onGetPath;
  std::function<void()> m_onSet;
};

/// Knows the paths of m_known, keeps what it is told in order, and throws where the test wants it.
class FakeService : public Oxa::Core::IOxaLogService {
 public:
  void WriteLogEntry(const Oxa::Core::OxaLogEntry& entry) override {
    if (m_onWrite) m_onWrite(entry);
    m_messages.push_back(entry.m_sMessage);
  }
  void RegisterHandler(Oxa::Core::IOxaLogHandler* handler) override {
    if (m_onRegisterHandler) m_onRegisterHandler();
    m_handlers.insert(handler);
  }
  void UnregisterHandler(Oxa::Core::IOxaLogHandler* handler) override { m_handlers.erase(handler); }
  void RegisterLogger(Oxa::Core::IOxaLogger* logger) override {
    if (m_onRegisterLogger) m_onRegisterLogger(logger);
    m_loggers.insert(logger);
  }
  void UnregisterLogger(Oxa::Core::IOxaLogger* logger) override { m_loggers.erase(logger); }
  void EnumLoggers(const std::string&, std::list<std::string>& names) override { names.clear(); }
  void SetSeverityFilters(const std::string& path, unsigned int filters) override { m_words[path] = filters; }
  unsigned int GetSeverityFilters(const std::string& path) override { return m_words[path]; }
  int GetNumHandlers() override { return static_cast<int>(m_handlers.size()); }
  bool Exists(const std::string& path) override { return m_known.count(path) != 0; }

  std::vector<std::string> m_messages;
  std::set<Oxa::Core::IOxaLogHandler*> m_handlers;
  std::set<Oxa::Core::IOxaLogger*> m_loggers;
  std::map<std::string, unsigned int> m_words;
  std::set<std::string> m_known;
  std::function<void(const Oxa::Core::OxaLogEntry&)> m_onWrite;
  std::function<void()> m_onRegisterHandler;
  std::function<void(Oxa::Core::IOxaLogger*)> m_onRegisterLogger;
};

}  // namespace LogFakes

#endif
