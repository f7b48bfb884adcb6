// Threads that are cancelled in the middle of something.
#ifndef OXACORE_TESTS_SUPPORT_CANCELLED_H
#define OXACORE_TESTS_SUPPORT_CANCELLED_H

#include <pthread.h>

#include <thread>

namespace TestSupport {

/// Runs `action`, which cancels its thread, on one of its own. Whether it goes to its end, and the thread no further.
template <class Action>
bool IsCancelledBehind(const Action& action) {
  bool done = false;
  bool cameBack = false;
  std::thread([&] {
    action();
    done = true;
    pthread_testcancel();
    cameBack = true;
  }).join();
  return done && !cameBack;
}

}  // namespace TestSupport

#endif
