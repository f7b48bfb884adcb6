// Objects of which a process has one, made at first use and destroyed by Oxa::Core::Shutdown.
//
//   class Ledger : public Singleton<Ledger> { ... };
//   Ledger::Instance()->Enter(...);
//
// Thread safety: Instance and Destroy may be called by any thread. Lock order: a singleton's own mutex before
// the registry's. The constructor and the destructor of T run with its singleton's mutex held.
// Failures: what the constructor of T throws passes, and the next Instance tries anew.
#ifndef INFRASTRUCTURE_OXACORE_SINGLETON_H
#define INFRASTRUCTURE_OXACORE_SINGLETON_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Lock.h>

#include <atomic>
#include <list>
#include <memory>

namespace Oxa::Core {

/// What the registry knows of a singleton.
class OXACORE_API ISingletonRegistryEntry {
 public:
  virtual ~ISingletonRegistryEntry();
  /// Destroys the object itself.
  virtual void Destroy() = 0;

 protected:
  ISingletonRegistryEntry() = default;
  ISingletonRegistryEntry(const ISingletonRegistryEntry&) = default;
  ISingletonRegistryEntry& operator=(const ISingletonRegistryEntry&) = default;
};

/// The list of living singletons, in order of creation. It owns none of them, and outlives them all.
class OXACORE_API SingletonRegistry {
 public:
  /// Appends `entry` unless it is there already.
  static void Register(ISingletonRegistryEntry* entry);

  /// Removes `entry`; an unknown one is no fault.
  static void Unregister(const ISingletonRegistryEntry* entry);

  /// Empties the list and destroys its singletons, first registered first, with no lock held. An exception
  /// from one leaves the later ones alive and unregistered.
  static void DestroyAllSingletons();

 private:
  SingletonRegistry() = delete;

  static std::list<ISingletonRegistryEntry*>& m_registry;
  static Mutex& m_mutex;  // guards m_registry
};

/// Base of a T that derives from Singleton<T> and that Singleton<T> can build by default.
template <class T>
class Singleton : public ISingletonRegistryEntry {
 public:
  Singleton(const Singleton&) = delete;
  Singleton& operator=(const Singleton&) = delete;

  /// The object, built by the first call. It stays valid until it is destroyed.
  static T* Instance() {
    const Oxa::Core::Lock lock(m_mutex);
    if (!m_singleton) {
      m_singleton.reset(new T);
      m_bInstantiated.store(true, std::memory_order_relaxed);
    }
    return m_singleton.get();
  }

  /// Whether there is an object now. Takes no lock.
  static bool IsInstantiated() { return m_bInstantiated.load(std::memory_order_relaxed); }

 protected:
  Singleton() { SingletonRegistry::Register(this); }
  ~Singleton() override {
    m_bInstantiated.store(false, std::memory_order_relaxed);
    SingletonRegistry::Unregister(this);
  }

  /// Destroys the object, if there is one. The next Instance makes another.
  void Destroy() override {
    const Oxa::Core::Lock lock(m_mutex);
    m_singleton.reset();
  }

 private:
  static Mutex m_mutex;  // guards m_singleton
  static std::unique_ptr<T> m_singleton;
  static std::atomic<bool> m_bInstantiated;  // follows m_singleton, for those who ask without the lock
};

template <class T>
Mutex Singleton<T>::m_mutex;

template <class T>
std::unique_ptr<T> Singleton<T>::m_singleton;

template <class T>
std::atomic<bool> Singleton<T>::m_bInstantiated{false};

}  // namespace Oxa::Core

#endif
