#include "ErrorHandling/AlertManagerHooks.h"

#include "ErrorHandling/RawChannel.h"

namespace Oxa::Core {

namespace {

template <class Event, class Alert>
void Tell(void (AlertManager::*broadcast)(Notification&), Alert& alert) {
  AlertManager* const manager = AlertManager::Instance();
  if (manager == nullptr) return;
  Event event(alert);
  (manager->*broadcast)(event);
}

}  // namespace

void AlertHooks::Connect(Hooks& hooks) noexcept {
  hooks.errorRaised = &TellErrorRaised;
  hooks.errorHandled = &TellErrorHandled;
  hooks.settleInPlace = &SettleInPlace;
  hooks.mayWarn = &MayWarn;
  hooks.warningRaised = &TellWarningRaised;
  hooks.writeAlert = &WriteAlertElement;
  hooks.writeAlertDocument = &WriteAlertDocument;
}

void AlertHooks::TellErrorRaised(Error& error) { Tell<ErrorRaised>(&AlertManager::Broadcast, error); }

void AlertHooks::TellErrorHandled(Error& error) { Tell<ErrorHandled>(&AlertManager::Broadcast, error); }

void AlertHooks::TellWarningRaised(Warning& warning) {
  Tell<WarningRaised>(&AlertManager::Broadcast, warning);
}

bool AlertHooks::SettleInPlace(Error& error) {
  AlertManager* const manager = AlertManager::Instance();
  return manager != nullptr && manager->UseErrorHandler(error);
}

bool AlertHooks::MayWarn(const std::string& className) {
  AlertManager* const manager = AlertManager::Instance();
  return manager == nullptr || manager->ShouldDoWarningBroadcast(className);
}

}  // namespace Oxa::Core
