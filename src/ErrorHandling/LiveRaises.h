// The raises that nobody has handled yet, of all threads, in one linked list.
//
// Each live raise is counted for the thread that raised it, also when the error travels to another thread and
// dies there; that is why the list is the process's and not a word per thread. The links lie in the errors, so
// that counting a raise allocates nothing. Raised marks and links are written with the list's lock held: an
// error that has left its thread can still be forgotten by it.
#ifndef OXACORE_ERRORHANDLING_LIVERAISES_H
#define OXACORE_ERRORHANDLING_LIVERAISES_H

#include <Infrastructure/OxaCore/Error.h>

namespace Oxa::Core {

class LiveRaises {
 public:
  /// Counts `error` as the calling thread's newest raise. Gives the thread's count with it.
  static int Add(Error& error) noexcept;

  /// Ends the raise that `error` stands for, if it stands for one, and takes its raised mark.
  static void Remove(Error& error) noexcept;

  /// Hands the raised mark of `from`, and with it the place in the list, to `to`.
  static void MoveMark(const Error& from, Error& to) noexcept;

  static int CountOfThisThread() noexcept;

  /// Forgets all raises of the calling thread. If the first of them, the one that was raised while there was no
  /// other, is still alive, `first` becomes a copy of it without its mark.
  static bool ForgetThisThread(Error& first) noexcept;

  /// Forgets all raises of the calling thread and touches nothing else: for a thread that is being killed, whose
  /// errors lie on its stack.
  static void DropThisThread() noexcept;
};

/// The number of live raises on the calling thread.
struct ThreadSpecificErrorRecursionCount {
  static int Get() noexcept { return LiveRaises::CountOfThisThread(); }
};

}  // namespace Oxa::Core

#endif
