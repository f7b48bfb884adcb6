// Alerts and listeners that the tests of the alert manager share.
#ifndef OXACORE_TESTS_ERRORHANDLING_TESTALERTS_H
#define OXACORE_TESTS_ERRORHANDLING_TESTALERTS_H

#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/CommonErrors.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

namespace AlertTests {

using namespace Oxa::Core;

/// A family of errors and of warnings for each `Tag`, so that the records of tests don't mix.
template <class Tag>
class TagError : public ErrorClass<TagError<Tag>, LogicError> {
 public:
  explicit TagError(const std::string& message = "tag error")
      : ErrorClass<TagError<Tag>, LogicError>(message) {}
};

template <class Tag>
class TagWarning : public Warning {
 public:
  explicit TagWarning(const std::string& message = "tag warning") : Warning(message) {}
};

/// Keeps what it hears, as "raised MESSAGE", "handled MESSAGE", "warning MESSAGE".
class Recorder : public AlertListener {
 public:
  Recorder() { AlertManager::Instance()->AddAlertListener(*this); }
  ~Recorder() override { AlertManager::Instance()->RemoveAlertListener(*this); }

  void ErrorRaised(Error& error) override { Note("raised ", error); }
  void ErrorHandled(Error& error) override { Note("handled ", error); }
  void WarningRaised(Warning& warning) override { Note("warning ", warning); }

  std::vector<std::string> m_heard;
  std::function<void(const std::string&)> m_onAlert;

 private:
  void Note(const char* what, AlertInfo& alert) {
    m_heard.push_back(what + alert.GetData(AlertInfo::sMESSAGE));
    if (m_onAlert) m_onAlert(m_heard.back());
  }
};

/// The record of the class with that undecorated name, or a default one.
inline WarningRecord FindWarning(const std::string& className) {
  std::set<WarningRecord, SSortWarnings> records;
  AlertManager::Instance()->GetRaisedWarningRecords(records);
  for (const WarningRecord& record : records) {
    if (record.GetClass() == className) return record;
  }
  return WarningRecord();
}

inline ErrorRecord FindError(const std::string& className) {
  std::set<ErrorRecord, SSortErrors> records;
  AlertManager::Instance()->GetRaisedErrorRecords(records);
  for (const ErrorRecord& record : records) {
    if (record.GetClass() == className) return record;
  }
  return ErrorRecord();
}

}  // namespace AlertTests

/// A warning at global scope, so that its name reads "class BasicWarning".
class BasicWarning : public Oxa::Core::Warning {
 public:
  BasicWarning() : Warning("basic") {}
};

#endif
