// What the tests of the log manager share: a handler and a service that any thread may call.
#ifndef OXACORE_TESTS_LOG_LOGTAPE_H
#define OXACORE_TESTS_LOG_LOGTAPE_H

#include <Infrastructure/OxaCore/LogManager.h>

#include <functional>
#include <list>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "Support/Eventually.h"

namespace LogTests {

using Oxa::Core::IOxaLogger;
using Oxa::Core::IOxaLogHandler;
using Oxa::Core::Logger;
using Oxa::Core::LogManager;
using Oxa::Core::OxaLogEntry;
using TestSupport::Eventually;

/// A list that any thread may use.
template <class T>
class Tape {
 public:
  void Add(const T& item) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_items.push_back(item);
  }
  std::vector<T> Items() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_items;
  }
  std::size_t Count() const { return Items().size(); }
  bool Reaches(std::size_t count) const {
    return Eventually([&] { return Count() >= count; });
  }

 private:
  mutable std::mutex m_mutex;
  std::vector<T> m_items;
};

inline std::vector<std::string> Messages(const std::vector<OxaLogEntry>& entries) {
  std::vector<std::string> messages;
  messages.reserve(entries.size());
  for (const OxaLogEntry& entry : entries) messages.push_back(entry.m_sMessage);
  return messages;
}

inline boost::shared_ptr<Logger> GetLogger(const std::string& path) {
  return LogManager::Instance()->GetLogger(path);
}

/// Registered with the log manager for its life. Runs what the test wants before it keeps the entry.
class TapeHandler : public IOxaLogHandler {
 public:
  explicit TapeHandler(std::function<void(const OxaLogEntry&)> onEntry = {}) : m_onEntry(std::move(onEntry)) {
    LogManager::Instance()->RegisterHandler(this);
  }
  TapeHandler(const TapeHandler&) = delete;
  TapeHandler& operator=(const TapeHandler&) = delete;
  ~TapeHandler() override {
    if (LogManager::Instance() != nullptr) LogManager::Instance()->UnregisterHandler(this);
  }

  void OnLoggersChanged() override {}
  void HandleLogEntry(const OxaLogEntry& entry) override {
    if (m_onEntry) m_onEntry(entry);
    m_tape.Add(entry);
  }

  /// The entries of one logger, once there are `count`; all others are of no interest.
  std::vector<OxaLogEntry> Await(const std::string& path, std::size_t count) const {
    Eventually([&] { return Of(path).size() >= count; });
    return Of(path);
  }
  std::vector<OxaLogEntry> Of(const std::string& path) const {
    std::vector<OxaLogEntry> found;
    for (const OxaLogEntry& entry : m_tape.Items()) {
      if (entry.m_sLoggerPath == path) found.push_back(entry);
    }
    return found;
  }

  Tape<OxaLogEntry> m_tape;

 private:
  const std::function<void(const OxaLogEntry&)> m_onEntry;
};

/// A log service that keeps what it is told. The functions that the test sets run first, and may throw.
class TapeService : public Oxa::Core::IOxaLogService {
 public:
  ~TapeService() override {
    if (LogManager::Instance() != nullptr) LogManager::Instance()->UninstallLogService(*this);
  }

  void WriteLogEntry(const OxaLogEntry& entry) override {
    if (m_onWrite) m_onWrite(entry);
    m_tape.Add(entry);
  }
  void RegisterHandler(IOxaLogHandler* handler) override {
    Note("register handler");
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_handlers.insert(handler);
  }
  void UnregisterHandler(IOxaLogHandler* handler) override {
    Note("unregister handler");
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_handlers.erase(handler);
  }
  void RegisterLogger(IOxaLogger* logger) override { Note("register " + logger->GetPath()); }
  void UnregisterLogger(IOxaLogger* logger) override { Note("unregister " + logger->GetPath()); }
  void EnumLoggers(const std::string& rootPath, std::list<std::string>& names) override {
    Note("enum " + rootPath);
    names.emplace_back("Child");
  }
  void SetSeverityFilters(const std::string& path, unsigned int filters) override {
    Note("set " + path + " " + std::to_string(filters));
  }
  unsigned int GetSeverityFilters(const std::string& path) override {
    Note("get " + path);
    return 12;
  }
  int GetNumHandlers() override {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_iClaimedHandlers >= 0 ? m_iClaimedHandlers : static_cast<int>(m_handlers.size());
  }
  bool Exists(const std::string& path) override {
    Note("exists " + path);
    return path == "Known";
  }

  /// How often it was told that.
  int CountOf(const std::string& call) const {
    int count = 0;
    for (const std::string& made : m_calls.Items()) count += made == call ? 1 : 0;
    return count;
  }

  Tape<OxaLogEntry> m_tape;
  Tape<std::string> m_calls;
  std::function<void(const OxaLogEntry&)> m_onWrite;
  std::function<void(const std::string&)> m_onCall;
  int m_iClaimedHandlers = -1;  ///< what GetNumHandlers gives; -1: the truth

 private:
  void Note(const std::string& call) {
    m_calls.Add(call);
    if (m_onCall) m_onCall(call);
  }

  std::mutex m_mutex;
  std::set<IOxaLogHandler*> m_handlers;
};

/// No buffering for the length of a scope: what is written has arrived when the call returns. Begins with nothing
/// retained, whatever ran in this process before.
class Unbuffered {
 public:
  Unbuffered() {
    LogManager::Instance()->SetBufferingMode(false);
    const TapeHandler taker;
  }
  Unbuffered(const Unbuffered&) = delete;
  Unbuffered& operator=(const Unbuffered&) = delete;
  ~Unbuffered() {
    if (LogManager::Instance() != nullptr) LogManager::Instance()->SetBufferingMode(true);
  }
};

}  // namespace LogTests

#endif
