// The address of what a guard is to lock.
#ifndef OXACORE_THREADS_LOCKADDRESS_H
#define OXACORE_THREADS_LOCKADDRESS_H

namespace Oxa::Core {

/// The address of `object`, null where the reference came from a null pointer. That is a mistake worth telling,
/// but a compiler that sees a reference takes the address for good and drops the test. So it passes through
/// memory that it may not look through.
template <class Object>
Object* AddressOf(const Object& object) {
  Object* const volatile address = const_cast<Object*>(&object);
  return address;
}

}  // namespace Oxa::Core

#endif
