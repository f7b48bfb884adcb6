// Observers: a NotificationSupport publishes, NotificationListeners hear, a Notification is one event.
//
// The mechanism knows no event types. A new event is a Notification that carries its data and, in Notify,
// casts the listener at run time to the interface that it is meant for; a listener of another type is passed
// over. One support can thus serve several kinds of listener.
//
// The links run both ways: a support knows its listeners, a listener its sources, and either may die first.
// Delivery is synchronous, on the broadcasting thread, over a private copy of the list and without a lock: a
// listener may add, remove and broadcast on the same support, and may block. Hence a listener can still be
// called after its removal by another thread or during the same broadcast has returned, and a support doesn't
// keep its listeners alive: whoever destroys a listener sees to it that no broadcast is under way.
//
// Thread safety: any thread may add, remove and broadcast.
// Locks that a caller can meet, in this order: the one of all dying listeners and supports, the support's,
// the listener's. AddNotificationSource, RemoveNotificationSource and NotificationSourceIsRemoved run with
// the latter two held. Failures: what a listener throws can't stop a broadcast; it is told as a
// ListenerErrorOnNotification.
//
//   class DoorOpened : public Notification {
//    public:
//     void Notify(NotificationListener& listener) override {
//       if (auto* const guard = dynamic_cast<DoorGuard*>(&listener)) guard->DoorOpened();
//     }
//   };
//   ...
//   m_support.Broadcast(notification);
#ifndef INFRASTRUCTURE_OXACORE_NOTIFICATIONS_H
#define INFRASTRUCTURE_OXACORE_NOTIFICATIONS_H

#include <Infrastructure/OxaCore/ClassLine.h>
#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/Warning.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <list>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <unordered_set>

namespace Oxa::Core {

class NotificationSupport;

/// What a support asks of a listener.
class OXACORE_API IOxaNotificationListener {
 public:
  IOxaNotificationListener() = default;
  IOxaNotificationListener(const IOxaNotificationListener&) = delete;
  IOxaNotificationListener& operator=(const IOxaNotificationListener&) = delete;

  /// The listener is in the list of `source` from now on.
  virtual void AddNotificationSource(NotificationSupport& source) = 0;

  /// `source` no longer knows the listener: it was removed, or `source` is dying.
  virtual void RemoveNotificationSource(NotificationSupport& source) = 0;

  virtual ~IOxaNotificationListener();
};

/// Base of everything that wants to hear. Its death removes it from every support that it hears.
/// A subclass that must stop hearing before its own members die removes itself in its own destructor; so does
/// one that another thread may remove, or whose source may die, in the same moment.
class OXACORE_API NotificationListener : public IOxaNotificationListener {
 public:
  NotificationListener();

  // For supports. A client calls AddListener and RemoveListener on the support.
  void AddNotificationSource(NotificationSupport& source) override;
  void RemoveNotificationSource(NotificationSupport& source) override;

  /// A subclass no longer hears NotificationSourceIsRemoved for what this removes.
  ~NotificationListener() override;

 protected:
  /// The link to `source` is gone, because the listener was removed or because `source` is being destroyed.
  /// Called with the locks of both held; must not remove this listener from `source` again. What it throws
  /// reaches the one who removed the listener; while a support dies it is dropped.
  virtual void NotificationSourceIsRemoved(const NotificationSupport& source);

 private:
  using Sources = std::unordered_set<NotificationSupport*>;

  Sources TakeSources();

  Sources m_sources;  // not owned
  Mutex m_mutex;      // guards m_sources
};

/// One event: knows which listener type it is for and what to call on it. Subclasses carry its data, usually
/// as references to what outlives the broadcast.
class OXACORE_API Notification {
 public:
  virtual ~Notification() = default;  // inline: every broadcast pays for it

  /// Tells `listener` if it is of the type that this event is for; does nothing otherwise.
  virtual void Notify(NotificationListener& listener) = 0;

 protected:
  Notification() = default;
  Notification(const Notification&) = default;
  Notification& operator=(const Notification&) = default;

 private:
  friend class NotificationSupport;

  /// Calls Notify for `count` listeners, one in each place from `first` on in steps of `step`, but for the first `told`
  /// of them, and counts in `told`. What one throws passes; it counts as told, and the next call goes on behind it.
  /// Its place out of line makes the type information one across libraries.
  virtual void NotifyAll(NotificationListener* const* first, std::ptrdiff_t step, std::size_t count,
                         std::size_t& told);
};

/// An event for listeners of one type, `Listener`: casts each and calls Tell; others are passed over. Of listeners of
/// the same class that follow one another in a broadcast only the first is cast, so that many of them cost little.
/// Keeps nothing of a broadcast: as far as Tell allows it, several threads may broadcast one event at once.
///
///   class DoorOpened : public NotificationTo<DoorGuard> {
///     void Tell(DoorGuard& guard) override { guard.DoorOpened(); }
///   };
template <class Listener>
class NotificationTo : public Notification {
 public:
  /// Calls Tell if `listener` is a `Listener`.
  void Notify(NotificationListener& listener) final {
    if (Listener* const mine = Find(listener)) Tell(*mine);
  }

 protected:
  NotificationTo() = default;
  NotificationTo(const NotificationTo&) = default;
  NotificationTo& operator=(const NotificationTo&) = default;

  /// What the event calls of a listener.
  virtual void Tell(Listener& listener) = 0;

 private:
  // As the event's own, but with one virtual call for all listeners. A fault of a listener may leave it without a
  // clean-up, depending on the host's compiler, so that each is counted before it is told.
  void NotifyAll(NotificationListener* const* first, std::ptrdiff_t step, std::size_t count,
                 std::size_t& told) final {
    const void* operations = nullptr;
    std::ptrdiff_t way = iNONE;
    for (std::size_t next = told; next != count;) {
      NotificationListener& listener = *first[step * static_cast<std::ptrdiff_t>(next)];
      told = ++next;
      if (OperationsOf(listener) != operations) {
        operations = OperationsOf(listener);
        way = WayFrom(listener);
      }
      if (way != iNONE) Tell(*reinterpret_cast<Listener*>(reinterpret_cast<char*>(&listener) + way));
    }
  }

  // The table that an object with virtual operations begins with. It tells the class of the whole object, and the
  // place of the listener in it: from there it is the same way to its Listener each time.
  static const void* OperationsOf(const NotificationListener& listener) {
    const void* operations;
    std::memcpy(&operations, static_cast<const void*>(&listener), sizeof operations);
    return operations;
  }

  static constexpr std::ptrdiff_t iNONE = PTRDIFF_MIN;

  static std::ptrdiff_t WayFrom(NotificationListener& listener) {
    Listener* const found = Find(listener);
    return found ? reinterpret_cast<char*>(found) - reinterpret_cast<char*>(&listener) : iNONE;
  }

  // A cast, or what finds the same in the usual case, and sooner.
  static Listener* Find(NotificationListener& listener) {
    if constexpr (std::is_convertible_v<Listener*, NotificationListener*>) {
      if (IsInStraightLine(typeid(listener), typeid(Listener))) {
        auto* const begin = static_cast<Listener*>(dynamic_cast<void*>(&listener));
        if (static_cast<NotificationListener*>(begin) == &listener) return begin;
      }
    }
    return dynamic_cast<Listener*>(&listener);
  }
};

/// The list of listeners of whatever wants to publish.
class OXACORE_API NotificationSupport {
 public:
  /// Who hears first.
  enum ENotificationOrder : int { eFIRST_ADDED_FIRST = 0, eLAST_ADDED_FIRST = 1 };

  /// Without listeners.
  explicit NotificationSupport(ENotificationOrder order);
  NotificationSupport(const NotificationSupport&) = delete;
  NotificationSupport& operator=(const NotificationSupport&) = delete;

  /// Tells every listener that this source is gone. Must not run while another operation on it does.
  virtual ~NotificationSupport();

  /// Appends `listener`, which is not owned. One that is there already is left where it is.
  void AddListener(NotificationListener& listener);

  /// Takes `listener` out; one that isn't there is no fault.
  void RemoveListener(NotificationListener& listener);

  /// Takes all listeners out.
  void RemoveAllListeners();

  /// Tells `notification` to every listener that is in the list now. With nobody in it this is one test,
  /// without a lock and without an allocation. Throws only what is thrown for want of memory: std::bad_alloc.
  void Broadcast(Notification& notification) {
    if (HasListeners()) Deliver(notification);
  }

  /// Both read without the lock: what they tell may be over when they return.
  bool HasListeners() const { return GetNumListeners() != 0; }
  int GetNumListeners() const { return m_iListeners.load(std::memory_order_relaxed); }

 protected:
  /// Calls Notify and raises a ListenerErrorOnNotification for what it throws. Null does nothing.
  void NotifyListener(Notification& notification, NotificationListener* listener);

 private:
  using Listeners = std::list<NotificationListener*>;

  void Deliver(Notification& notification);
  void DeliverToAll(Notification& notification);
  class Recipients;

  bool Knows(const NotificationListener& listener) const;
  void Erase(NotificationListener& listener) noexcept;
  void Publish() noexcept;

  Listeners m_listeners;  // in order of addition; not owned
  Mutex m_mutex;          // guards m_listeners, and writing to what follows m_eOrder
  ENotificationOrder m_eOrder;

  // What those read who don't take the lock: the one listener if there is no other, else null; the size of
  // m_listeners, and its front. The version is odd while the latter two are being written.
  static constexpr std::size_t uPUBLISHED = 16;
  std::atomic<NotificationListener*> m_pOnly{nullptr};
  std::atomic<int> m_iListeners{0};
  std::atomic<std::uint32_t> m_uVersion{0};
  std::atomic<NotificationListener*> m_published[uPUBLISHED] = {};
};

/// "Listener threw error during notification: %1%".
class OXACORE_API ListenerErrorOnNotification : public Warning {
 public:
  explicit ListenerErrorOnNotification(const std::string& message);
  ~ListenerErrorOnNotification() override;
};

}  // namespace Oxa::Core

#endif
