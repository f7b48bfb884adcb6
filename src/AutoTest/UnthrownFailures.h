// Failures of tests whose raise returned, because the library unloads or the process exits after a fatal error.
#ifndef OXACORE_AUTOTEST_UNTHROWNFAILURES_H
#define OXACORE_AUTOTEST_UNTHROWNFAILURES_H

namespace Oxa::Core {

/// Tells whether one came while it stands: the test went on behind it and must not be taken for one that passed. It is
/// the process that is counted, so that of two tests that run then on two threads both may be told failed.
class UnthrownFailures {
 public:
  UnthrownFailures() noexcept : m_uBefore(Count()) {}
  bool Any() const noexcept { return Count() != m_uBefore; }

  static void Add() noexcept;

 private:
  static unsigned Count() noexcept;

  unsigned m_uBefore;
};

}  // namespace Oxa::Core

#endif
