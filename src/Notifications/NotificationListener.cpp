#include <Infrastructure/OxaCore/Notifications.h>

#include "Notifications/TeardownMutex.h"

namespace Oxa::Core {

namespace {

constexpr std::size_t uBUCKETS = 8;

}  // namespace

IOxaNotificationListener::~IOxaNotificationListener() = default;

NotificationListener::NotificationListener() : m_sources(uBUCKETS) {}

NotificationListener::~NotificationListener() {
  const Lock teardown(g_teardownMutex.Get());
  // Taken out first: RemoveListener takes the support's mutex, which comes before this listener's in the
  // order.
  for (NotificationSupport* const source : TakeSources()) source->RemoveListener(*this);
}

NotificationListener::Sources NotificationListener::TakeSources() {
  Sources sources;
  const Lock lock(m_mutex);
  sources.swap(m_sources);
  return sources;
}

void NotificationListener::AddNotificationSource(NotificationSupport& source) {
  const Lock lock(m_mutex);
  m_sources.insert(&source);
}

void NotificationListener::RemoveNotificationSource(NotificationSupport& source) {
  const Lock lock(m_mutex);
  m_sources.erase(&source);
  NotificationSourceIsRemoved(source);
}

void NotificationListener::NotificationSourceIsRemoved(const NotificationSupport&) {}

}  // namespace Oxa::Core
