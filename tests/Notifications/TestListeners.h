// Listeners and events that the tests of notifications share.
#ifndef OXACORE_TESTS_NOTIFICATIONS_TESTLISTENERS_H
#define OXACORE_TESTS_NOTIFICATIONS_TESTLISTENERS_H

#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/Notifications.h>

#include <functional>
#include <string>
#include <vector>

namespace NotificationTests {

using namespace Oxa::Core;

/// Counts what it hears, and calls `m_onEvent` first.
class Listener : public NotificationListener {
 public:
  void Heard(int value) {
    if (m_onEvent) m_onEvent();
    ++m_iHeard;
    m_iLastValue = value;
  }

  int m_iHeard = 0;
  int m_iLastValue = 0;
  int m_iSourcesRemoved = 0;
  std::function<void()> m_onEvent;
  std::function<void(const NotificationSupport&)> m_onSourceRemoved;

 protected:
  void NotificationSourceIsRemoved(const NotificationSupport& source) override {
    ++m_iSourcesRemoved;
    if (m_onSourceRemoved) m_onSourceRemoved(source);
  }
};

class Event : public Notification {
 public:
  explicit Event(int value = 1) : m_iValue(value) {}
  void Notify(NotificationListener& listener) override {
    ++m_iCalls;
    if (auto* const mine = dynamic_cast<Listener*>(&listener)) mine->Heard(m_iValue);
  }

  int m_iCalls = 0;

 private:
  int m_iValue;
};

/// Keeps the messages and log names of the warnings that it hears.
class WarningKeeper : public AlertListener {
 public:
  WarningKeeper() { AlertManager::Instance()->AddAlertListener(*this); }
  ~WarningKeeper() override { AlertManager::Instance()->RemoveAlertListener(*this); }

  void WarningRaised(Warning& warning) override {
    m_messages.push_back(warning.GetData(AlertInfo::sMESSAGE));
    m_logNames.push_back(warning.GetData(AlertInfo::sLOG_NAME));
  }

  std::vector<std::string> m_messages;
  std::vector<std::string> m_logNames;
};

}  // namespace NotificationTests

#endif
