// Sets a variable for the length of a scope.
//
// Thread safety: none of its own; a TempSet on a variable that threads share is as safe as that variable.
// Failures: none but those of copying a T, and in the destructor those end the process.
//
//   if (m_bSending) return;
//   const TempSet<bool> guard(m_bSending, true);
//   Send();  // whatever it calls finds m_bSending set
#ifndef INFRASTRUCTURE_OXACORE_TEMPSET_H
#define INFRASTRUCTURE_OXACORE_TEMPSET_H

#include <Infrastructure/OxaCore/Export.h>

namespace Oxa::Core {

/// Gives a variable another value while it lives, and the former value back at its end, also when an exception
/// passes. Nested ones undo each other in order. `T` is copied twice and assigned twice.
template <class T>
class TempSet {
 public:
  /// Keeps the present value of `aTarget`, which must outlive this object, and stores `aValue` in it.
  TempSet(T& aTarget, const T& aValue) : target(&aTarget), saved(aTarget) { *target = aValue; }
  TempSet(const TempSet&) = delete;
  TempSet& operator=(const TempSet&) = delete;

  /// Writes the kept value back, whatever the variable holds by now.
  virtual ~TempSet() { *target = saved; }

 private:
  T* target;
  T saved;
};

// The one in use: its type information lives in the library, the same for every host.
extern template class OXACORE_API TempSet<bool>;

}  // namespace Oxa::Core

#endif
