// Keeps what is told of alerts, as long as it lives. Alerts of one thread at a time.
#ifndef STATION_TESTS_WITNESS_H
#define STATION_TESTS_WITNESS_H

#include <Infrastructure/OxaCore/AlertListener.h>
#include <Infrastructure/OxaCore/AlertManager.h>

#include <string>
#include <vector>

namespace StationTests {

class Witness : public Oxa::Core::AlertListener {
 public:
  Witness() { Oxa::Core::AlertManager::Instance()->AddAlertListener(*this); }
  ~Witness() override { Oxa::Core::AlertManager::Instance()->RemoveAlertListener(*this); }
  void ErrorRaised(Oxa::Core::Error& error) override {
    m_raised.emplace_back(error.what());
    m_logNames.push_back(error.GetData(Oxa::Core::AlertInfo::sLOG_NAME));
  }
  void ErrorHandled(Oxa::Core::Error& error) override { m_handled.emplace_back(error.what()); }
  void WarningRaised(Oxa::Core::Warning& warning) override {
    m_warnings.push_back(warning.GetData(Oxa::Core::AlertInfo::sMESSAGE));
    m_logNames.push_back(warning.GetData(Oxa::Core::AlertInfo::sLOG_NAME));
  }

  std::vector<std::string> m_raised;
  std::vector<std::string> m_handled;
  std::vector<std::string> m_warnings;
  std::vector<std::string> m_logNames;  // of errors and warnings, as they were raised
};

}  // namespace StationTests

#endif
