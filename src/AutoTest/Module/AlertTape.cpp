#include "AutoTest/Module/AlertTape.h"

#include <Infrastructure/OxaCore/AlertManager.h>

#include "Core/Immortal.h"

namespace Oxa::Core {

namespace {

thread_local AlertTape* t_pTape = nullptr;

}  // namespace

/// The one listener for all tapes. It is never destroyed: another thread's raise can call it at any moment, also just
/// after it has left the list.
class AlertEar : public AlertListener {
 public:
  void AddTape() {
    const Lock lock(m_mutex);
    AlertManager* const manager = AlertManager::Instance();
    if (m_iTapes++ == 0 && manager != nullptr) manager->AddAlertListener(*this);
  }

  void RemoveTape() {
    const Lock lock(m_mutex);
    AlertManager* const manager = AlertManager::Instance();
    if (--m_iTapes == 0 && manager != nullptr) manager->RemoveAlertListener(*this);
  }

  void ErrorRaised(Error& error) override { Note("raised ", error); }
  void ErrorHandled(Error& error) override { Note("handled ", error); }
  void WarningRaised(Warning& warning) override { Note("warned ", warning); }

 private:
  static void Note(const char* what, const AlertInfo& alert) {
    if (t_pTape != nullptr) t_pTape->Note(what, alert);
  }

  Mutex m_mutex;  // guards m_iTapes, and the listener's place in the list
  int m_iTapes = 0;
};

namespace {

AlertEar& TheEar() {
  static Immortal<AlertEar> s_ear;
  return s_ear.Get();
}

}  // namespace

AlertTape::AlertTape(const std::string& marker) : m_sMarker(marker) {
  TheEar().AddTape();
  t_pTape = this;
}

AlertTape::~AlertTape() {
  t_pTape = nullptr;
  TheEar().RemoveTape();
}

void AlertTape::Note(const char* what, const AlertInfo& alert) {
  const std::string& message = alert.GetData(AlertInfo::sMESSAGE);
  if (message.find(m_sMarker) != std::string::npos) m_heard.push_back(what + message);
}

}  // namespace Oxa::Core
