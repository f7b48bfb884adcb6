// The raises that nobody has handled yet, of all threads, in one linked list.
//
// Each live raise is counted for the thread that raised it, also when the error travels to another thread and
// dies there; that is why the list is the process's and not a word per thread. The links lie in the errors,
// so that counting a raise allocates nothing.
#ifndef OXACORE_ERRORHANDLING_LIVERAISES_H
#define OXACORE_ERRORHANDLING_LIVERAISES_H

#include <Infrastructure/OxaCore/Error.h>

#include <optional>

namespace Oxa::Core {

class LiveRaises {
 public:
  /// Counts `error` as the calling thread's newest raise. Gives the thread's count with it.
  static int Add(Error& error) noexcept;

  /// Ends the raise that `error` stands for, if it stands for one.
  static void Remove(Error& error) noexcept;

  /// Hands the raised mark of `from`, and with it the place in the list, to `to`.
  static void MoveMark(const Error& from, Error& to) noexcept;

  static int CountOfThisThread() noexcept;

  /// Forgets all raises of the calling thread and gives a plain copy of the first, if there was one.
  static std::optional<Error> ForgetThisThread();
};

/// The number of live raises on the calling thread.
struct ThreadSpecificErrorRecursionCount {
  static int Get() noexcept { return LiveRaises::CountOfThisThread(); }
};

}  // namespace Oxa::Core

#endif
