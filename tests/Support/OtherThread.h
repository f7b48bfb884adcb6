// What another thread sees of a lock.
#ifndef OXACORE_TESTS_SUPPORT_OTHERTHREAD_H
#define OXACORE_TESTS_SUPPORT_OTHERTHREAD_H

#include <thread>

namespace TestSupport {

/// Whether a thread of its own gets `lock` without a wait; it is given back then.
template <class Lockable>
bool OtherThreadCanLock(Lockable& lock) {
  bool locked = false;
  std::thread([&] {
    locked = lock.TryLock();
    if (locked) lock.Unlock();
  }).join();
  return locked;
}

}  // namespace TestSupport

#endif
