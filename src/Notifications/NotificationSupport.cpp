#include <Infrastructure/OxaCore/Notifications.h>

#include <Infrastructure/OxaCore/Error.h>

#include <algorithm>
#include <array>
#include <exception>
#include <vector>

#include "ErrorHandling/Hooks.h"
#include "Notifications/FailureGuard.h"
#include "Notifications/TeardownMutex.h"
#include "Platform/Faults.h"

namespace Oxa::Core {

namespace {

const char* const sLOG_NAME = "Oxa.Core.NotificationSupport";
const char* const sMESSAGE_TEMPLATE = "Listener threw error during notification: %1%";
const char* const sUNKNOWN_ERROR = "Unknown Error";
const char* const sFAILED_WHILE_TELLING = "Error in alert listener during alert notification";

// The private copy of a list that a broadcast walks. Up to a usual number of listeners it needs no
// allocation.
class Recipients {
 public:
  Recipients(const std::list<NotificationListener*>& listeners, Mutex& mutex) {
    const Lock lock(mutex);
    m_uCount = listeners.size();
    if (m_uCount > m_few.size()) m_many.resize(m_uCount);
    std::copy(listeners.begin(), listeners.end(), m_uCount > m_few.size() ? m_many.data() : m_few.data());
  }
  std::size_t Count() const { return m_uCount; }
  NotificationListener* operator[](std::size_t index) const {
    return m_uCount > m_few.size() ? m_many[index] : m_few[index];
  }

 private:
  std::size_t m_uCount;
  std::array<NotificationListener*, 32> m_few;  // not initialised: only the first m_uCount are read
  std::vector<NotificationListener*> m_many;
};

// Keeps the first failure of a walk that must reach everybody, and lets it go on afterwards.
class FirstFailure {
 public:
  void Keep() noexcept {
    if (!m_failure) m_failure = std::current_exception();
  }
  void Rethrow() const {
    if (m_failure) std::rethrow_exception(m_failure);
  }

 private:
  std::exception_ptr m_failure;
};

// A listener failed with `message`; `error` is what it threw, if that was an Error.
void TellFailure(const char* message, Error* error) {
  const FailureGuard guard;
  ListenerErrorOnNotification warning(message);
  if (!guard.IsInner()) {
    OXA_RAISE_WARNING(sLOG_NAME, warning);
  } else if (error != nullptr) {
    TheHooks().writeAlertDocument(*error, sFAILED_WHILE_TELLING);
  } else {
    TheHooks().writeAlertDocument(warning, sFAILED_WHILE_TELLING);
  }
}

}  // namespace

Notification::~Notification() = default;

NotificationSupport::NotificationSupport(ENotificationOrder order) : m_eOrder(order) {}

NotificationSupport::~NotificationSupport() {
  const Lock teardown(g_teardownMutex.Get());
  try {
    RemoveAllListeners();
  } catch (...) {
    // All links are gone; a listener that fails at being told so can't be helped here.
  }
}

void NotificationSupport::AddListener(NotificationListener& listener) {
  const Lock lock(m_mutex);
  if (Knows(listener)) return;
  m_listeners.push_back(&listener);
  CountListeners();
  try {
    listener.AddNotificationSource(*this);
  } catch (...) {
    Erase(listener);
    throw;
  }
}

void NotificationSupport::RemoveListener(NotificationListener& listener) {
  const Lock lock(m_mutex);
  if (!Knows(listener)) return;
  try {
    listener.RemoveNotificationSource(*this);
  } catch (...) {
    Erase(listener);
    throw;
  }
  Erase(listener);
}

void NotificationSupport::RemoveAllListeners() {
  FirstFailure failure;
  const Lock lock(m_mutex);
  for (NotificationListener* const listener : m_listeners) {
    try {
      listener->RemoveNotificationSource(*this);
    } catch (...) {
      failure.Keep();
    }
  }
  m_listeners.clear();
  CountListeners();
  failure.Rethrow();
}

void NotificationSupport::Deliver(Notification& notification) {
  const Recipients recipients(m_listeners, m_mutex);
  FirstFailure failure;
  for (std::size_t served = 0; served != recipients.Count(); ++served) {
    const bool forward = m_eOrder == eFIRST_ADDED_FIRST;
    try {
      NotifyListener(notification, recipients[forward ? served : recipients.Count() - 1 - served]);
    } catch (...) {
      Platform::LetCancellationPass();
      failure.Keep();
    }
  }
  failure.Rethrow();
}

void NotificationSupport::NotifyListener(Notification& notification, NotificationListener* listener) {
  if (listener == nullptr) return;
  try {
    notification.Notify(*listener);
  } catch (Error& error) {
    TellFailure(error.what(), &error);
  } catch (std::exception& exception) {
    TellFailure(exception.what(), nullptr);
  } catch (...) {
    Platform::LetCancellationPass();
    TellFailure(sUNKNOWN_ERROR, nullptr);
  }
}

bool NotificationSupport::Knows(const NotificationListener& listener) const {
  return std::find(m_listeners.begin(), m_listeners.end(), &listener) != m_listeners.end();
}

void NotificationSupport::Erase(NotificationListener& listener) noexcept {
  m_listeners.remove(&listener);
  CountListeners();
}

void NotificationSupport::CountListeners() noexcept {
  m_iListeners.store(static_cast<int>(m_listeners.size()), std::memory_order_relaxed);
}

ListenerErrorOnNotification::ListenerErrorOnNotification(const std::string& message)
    : Warning(AlertMessage(sMESSAGE_TEMPLATE, message)) {}

ListenerErrorOnNotification::~ListenerErrorOnNotification() = default;

}  // namespace Oxa::Core
