// A pointer that owns its object and can live in standard containers that hold it by value.
//
// Thread safety: none of its own. Failures: none; nothing here throws.
//
//   std::vector<container_ptr<Probe>> probes;
//   probes.push_back(container_ptr<Probe>(new Probe(3)));
//   probes.back()->Start();
//   probes.erase(probes.begin());  // destroys that Probe
#ifndef INFRASTRUCTURE_OXACORE_CONTAINERAID_H
#define INFRASTRUCTURE_OXACORE_CONTAINERAID_H

namespace Oxa::Core {

/// Owns one object alone, made by `new`, or nothing. COPYING MOVES: whoever is copied from is left null. Containers
/// copy from constant references too (push_back of a named object, a copy of a pair or of a whole container), so
/// that a constant container_ptr can be left null as well. Don't pass one by value, or copy a container of them,
/// unless its objects are to move.
template <class T>
class container_ptr {
 public:
  /// Takes `object` over; null owns nothing.
  explicit container_ptr(T* object = nullptr) noexcept : m_pObject(object) {}

  container_ptr(const container_ptr& source) noexcept : m_pObject(source.Take()) {}
  container_ptr(container_ptr&& source) noexcept : m_pObject(source.Take()) {}

  /// Destroys what this one held, and then holds what `source` did. Assigning to itself changes nothing; what this
  /// one held may own the source.
  // NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
  container_ptr& operator=(const container_ptr& source) noexcept {
    Hold(source.Take());
    return *this;
  }
  container_ptr& operator=(container_ptr&& source) noexcept {
    Hold(source.Take());
    return *this;
  }

  /// Destroys the object, if there is one.
  ~container_ptr() { Destroy(); }

  /// Null if it owns nothing. The object stays owned.
  T* get() const noexcept { return m_pObject; }

  /// Not for one that owns nothing.
  T* operator->() const noexcept { return m_pObject; }

  /// Not for one that owns nothing.
  T& operator*() const noexcept { return *m_pObject; }

 private:
  T* Take() const noexcept {
    T* const object = m_pObject;
    m_pObject = nullptr;
    return object;
  }

  void Destroy() noexcept {
    // NOLINTNEXTLINE(bugprone-sizeof-expression)
    static_assert(sizeof(T) > 0, "what isn't declared in full can't be destroyed");
    delete Take();
  }

  void Hold(T* object) noexcept {
    Destroy();
    m_pObject = object;
  }

  mutable T* m_pObject;  // mutable: a copy takes it out of its source
};

}  // namespace Oxa::Core

#endif
