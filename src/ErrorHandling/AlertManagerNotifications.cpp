#include <Infrastructure/OxaCore/AlertManager.h>

namespace Oxa::Core {

namespace {

// Passes the alert to an alert listener that is interested in it; other listeners are passed over.
template <class Alert>
void TellIfInterested(NotificationListener& listener, void (AlertListener::*operation)(Alert&),
                      Alert& alert) {
  auto* const alertListener = dynamic_cast<AlertListener*>(&listener);
  if (alertListener != nullptr && alertListener->IsInterestedIn(alert)) (alertListener->*operation)(alert);
}

}  // namespace

ErrorRaised::~ErrorRaised() = default;

void ErrorRaised::Notify(NotificationListener& listener) {
  TellIfInterested(listener, &AlertListener::ErrorRaised, m_error);
}

ErrorHandled::~ErrorHandled() = default;

void ErrorHandled::Notify(NotificationListener& listener) {
  TellIfInterested(listener, &AlertListener::ErrorHandled, m_error);
}

WarningRaised::~WarningRaised() = default;

void WarningRaised::Notify(NotificationListener& listener) {
  TellIfInterested(listener, &AlertListener::WarningRaised, m_warning);
}

UncaughtFatalErrorNotification::~UncaughtFatalErrorNotification() = default;

void UncaughtFatalErrorNotification::Notify(NotificationListener& listener) {
  if (auto* const alertListener = dynamic_cast<AlertListener*>(&listener)) {
    alertListener->UncaughtFatalError(m_error, m_sFatalErrorPath);
  }
}

}  // namespace Oxa::Core
