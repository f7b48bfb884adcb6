// Objects that outlive everything: built while the library loads, in static storage, and never destroyed.
// Static objects of a host may die after the library's own and still call in.
#ifndef OXACORE_CORE_IMMORTAL_H
#define OXACORE_CORE_IMMORTAL_H

#include <new>
#include <string>
#include <utility>

namespace Oxa::Core {

/// A T in place that has no destructor. What T itself keeps on the heap is given up when the library is
/// unmapped, so T should own nothing there by then.
template <class T>
class Immortal {
 public:
  template <class... Arguments>
  explicit Immortal(Arguments&&... arguments) {
    ::new (static_cast<void*>(m_storage)) T(std::forward<Arguments>(arguments)...);
  }
  Immortal(const Immortal&) = delete;
  Immortal& operator=(const Immortal&) = delete;

  T& Get() noexcept { return *std::launder(reinterpret_cast<T*>(m_storage)); }

 private:
  alignas(T) unsigned char m_storage[sizeof(T)];
};

/// A constant text for the static keys of the library; only Library.cpp makes them, while the library loads.
/// They are readable until the library is unmapped.
const std::string& ImmortalText(const char* text);

/// The one empty text that look-ups without a hit refer to.
extern const std::string& g_sNO_TEXT;

}  // namespace Oxa::Core

#endif
