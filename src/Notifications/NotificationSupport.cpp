#include <Infrastructure/OxaCore/Notifications.h>

#include <Infrastructure/OxaCore/Error.h>

#include <algorithm>
#include <exception>
#include <memory>

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

// A listener failed with `message`; `error` is what it threw, if that was an Error. It is being handled still, and a
// cancellation waits until it isn't: those who are told in turn stand behind clauses that catch everything.
void TellFailure(const char* message, Error* error) {
  const Platform::HoldCancellation hold;
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

template <class Action>
void TellFailuresOf(const Action& action) {
  try {
    action();
  } catch (Error& error) {
    TellFailure(error.what(), &error);
  } catch (std::exception& exception) {
    TellFailure(exception.what(), nullptr);
  } catch (...) {
    Platform::LetCancellationPass();
    TellFailure(sUNKNOWN_ERROR, nullptr);
  }
}

}  // namespace

// The private copy of the list that a broadcast walks. It is read without the lock where that is possible, and
// needs no allocation up to a usual number of listeners.
class NotificationSupport::Recipients {
 public:
  explicit Recipients(NotificationSupport& support) {
    if (!CopyPublished(support)) CopyLocked(support);
  }
  Recipients(const Recipients&) = delete;
  Recipients& operator=(const Recipients&) = delete;

  std::size_t Count() const { return m_uCount; }
  NotificationListener* const* First() const { return m_pFirst; }
  NotificationListener* const* Last() const { return m_pFirst + m_uCount - 1; }

 private:
  // False if the list is too long, or is being changed: no matter what was read then.
  bool CopyPublished(const NotificationSupport& support) {
    const std::uint32_t version = support.m_uVersion.load(std::memory_order_acquire);
    const auto count = static_cast<std::size_t>(support.m_iListeners.load(std::memory_order_acquire));
    if (version % 2 != 0 || count > uPUBLISHED) return false;
    for (std::size_t i = 0; i != count; ++i)
      m_few[i] = support.m_published[i].load(std::memory_order_acquire);
    m_uCount = count;
    m_pFirst = m_few;
    return support.m_uVersion.load(std::memory_order_relaxed) == version;
  }

  [[gnu::noinline]] void CopyLocked(NotificationSupport& support) {
    const Lock lock(support.m_mutex);
    m_uCount = support.m_listeners.size();
    m_many.reset(new NotificationListener*[m_uCount]);
    std::copy(support.m_listeners.begin(), support.m_listeners.end(), m_many.get());
    m_pFirst = m_many.get();
  }

  std::size_t m_uCount;
  NotificationListener* const* m_pFirst;
  NotificationListener* m_few[uPUBLISHED];  // only the first m_uCount are written and read
  std::unique_ptr<NotificationListener*[]> m_many;
};

void Notification::NotifyAll(NotificationListener* const* first, std::ptrdiff_t step, std::size_t count,
                             std::size_t& told) {
  while (told != count) {
    NotificationListener& listener = *first[step * static_cast<std::ptrdiff_t>(told)];
    ++told;
    Notify(listener);
  }
}

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
  try {
    listener.AddNotificationSource(*this);
  } catch (...) {
    Erase(listener);
    throw;
  }
  Publish();  // only now may a broadcast without the lock meet it
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
  const Platform::HoldCancellation hold;  // all links are cut, or none
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
  Publish();
  failure.Rethrow();
}

// The copy of a list of one is read at once.
void NotificationSupport::Deliver(Notification& notification) {
  if (NotificationListener* const only = m_pOnly.load(std::memory_order_acquire)) {
    TellFailuresOf([&] { notification.Notify(*only); });
  } else {
    DeliverToAll(notification);
  }
}

void NotificationSupport::DeliverToAll(Notification& notification) {
  const Recipients recipients(*this);
  if (recipients.Count() == 0) return;
  const bool forward = m_eOrder == eFIRST_ADDED_FIRST;
  FirstFailure failure;
  for (std::size_t told = 0; told != recipients.Count();) {
    try {
      TellFailuresOf([&] {
        notification.NotifyAll(forward ? recipients.First() : recipients.Last(), forward ? 1 : -1,
                               recipients.Count(), told);
      });
    } catch (...) {
      Platform::LetCancellationPass();
      failure.Keep();
    }
  }
  failure.Rethrow();
}

void NotificationSupport::NotifyListener(Notification& notification, NotificationListener* listener) {
  if (listener != nullptr) TellFailuresOf([&] { notification.Notify(*listener); });
}

bool NotificationSupport::Knows(const NotificationListener& listener) const {
  return std::find(m_listeners.begin(), m_listeners.end(), &listener) != m_listeners.end();
}

void NotificationSupport::Erase(NotificationListener& listener) noexcept {
  m_listeners.remove(&listener);
  Publish();
}

// Under the lock. Whoever reads an entry that is written here also reads the odd version, or a later one.
void NotificationSupport::Publish() noexcept {
  const std::uint32_t version = m_uVersion.load(std::memory_order_relaxed);
  m_uVersion.store(version + 1, std::memory_order_relaxed);
  std::size_t entry = 0;
  for (auto at = m_listeners.begin(); at != m_listeners.end() && entry != uPUBLISHED; ++at) {
    m_published[entry++].store(*at, std::memory_order_release);
  }
  m_pOnly.store(m_listeners.size() == 1 ? m_listeners.front() : nullptr, std::memory_order_release);
  m_iListeners.store(static_cast<int>(m_listeners.size()), std::memory_order_release);
  m_uVersion.store(version + 2, std::memory_order_release);
}

ListenerErrorOnNotification::ListenerErrorOnNotification(const std::string& message)
    : Warning(AlertMessage(sMESSAGE_TEMPLATE, message)) {}

ListenerErrorOnNotification::~ListenerErrorOnNotification() = default;

}  // namespace Oxa::Core
