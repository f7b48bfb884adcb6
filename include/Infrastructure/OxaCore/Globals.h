// The container of the objects that live as long as the library, by name and type.
//
// Thread safety: any thread may add, look up and remove. No lock is held while a global is built or
// destroyed, so that a global may add others from its constructor and look up others from its destructor.
// Failures: what a constructor throws, and std::bad_alloc, pass and leave the container as it was. Nothing raises but
// the container's lock (Lock.h).
//
//   Ledger* const ledger = globals.Add<Ledger>("Ledger");
//   ...
//   if (Ledger* const found = globals.Get<Ledger>("Ledger")) found->Enter(sample);
//   globals.Remove<Ledger>("Ledger");
#ifndef INFRASTRUCTURE_OXACORE_GLOBALS_H
#define INFRASTRUCTURE_OXACORE_GLOBALS_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Lock.h>

#include <boost/shared_ptr.hpp>
#include <list>
#include <string>
#include <typeinfo>
#include <unordered_map>

namespace Oxa::Core {

/// One managed global, whatever its type.
class OXACORE_API GlobalEntryBase {
 public:
  virtual ~GlobalEntryBase();
  GlobalEntryBase(const GlobalEntryBase&) = delete;
  GlobalEntryBase& operator=(const GlobalEntryBase&) = delete;

  /// The key of a global: `name` followed by the decorated name of its type, so that a look-up under the
  /// right name but the wrong type finds nothing.
  static std::string MakeKey(const std::string& name, const std::type_info& type);

  /// As MakeKey gives it.
  const std::string& GetKey() const;

 protected:
  /// `key` comes from MakeKey.
  explicit GlobalEntryBase(const std::string& key);

 private:
  std::string m_sKey;
};

/// Builds a T and owns it.
template <class T>
class Global : public GlobalEntryBase {
 public:
  /// Builds the object, by its default constructor; what that throws passes.
  explicit Global(const std::string& name)
      : GlobalEntryBase(MakeKey(name, typeid(T))), m_pObject(new T), m_spObject(m_pObject) {}

  /// The object, which stays owned.
  T* Get() const { return m_pObject; }

 private:
  T* m_pObject;
  boost::shared_ptr<T> m_spObject;
};

/// Globals in order of creation; they die in reverse order.
class OXACORE_API ManagedGlobals {
 public:
  ManagedGlobals();
  ManagedGlobals(const ManagedGlobals&) = delete;
  ManagedGlobals& operator=(const ManagedGlobals&) = delete;
  /// Destroys what is left.
  virtual ~ManagedGlobals();

  /// Builds a T with its default constructor, keeps it, and gives it. The container owns it.
  template <class T>
  T* Add(const std::string& name) {
    const boost::shared_ptr<Global<T>> global(new Global<T>(name));
    Insert(global);
    return global->Get();
  }

  /// The object, or null if there is none of that name and type. Owned by the container.
  template <class T>
  T* Get(const std::string& name) {
    const Oxa::Core::Lock lock(m_mutex);
    const auto* const global = dynamic_cast<Global<T>*>(Find(GlobalEntryBase::MakeKey(name, typeid(T))));
    return global != nullptr ? global->Get() : nullptr;
  }

  /// Takes the object out and destroys it; one that isn't there is no fault.
  template <class T>
  void Remove(const std::string& name) {
    Take(GlobalEntryBase::MakeKey(name, typeid(T)));
  }

  /// Destroys all, newest first.
  void DestroyAll();

 private:
  using Entry = boost::shared_ptr<GlobalEntryBase>;

  void Insert(const Entry& entry);
  GlobalEntryBase* Find(const std::string& key) const;
  Entry Take(const std::string& key);
  Entry TakeNewest();

  Mutex m_mutex;  // guards both containers
  std::list<Entry> m_entries;
  std::unordered_map<std::string, GlobalEntryBase*> m_entryMap;
};

}  // namespace Oxa::Core

#endif
