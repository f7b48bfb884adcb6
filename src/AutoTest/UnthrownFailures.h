// Failures of tests whose raise returned, because the library unloads or the process exits after a fatal error.
#ifndef OXACORE_AUTOTEST_UNTHROWNFAILURES_H
#define OXACORE_AUTOTEST_UNTHROWNFAILURES_H

#include "Platform/Storage.h"

namespace Oxa::Core {

/// Tells whether one came on this thread while it stands: the test went on behind it and must not be taken for one
/// that passed. What comes within an inner one is not told to the outer one, so that of tests that run each other
/// each has its own, and none has those of another thread.
class UnthrownFailures {
 public:
  UnthrownFailures() noexcept : m_bOuter(Any()) { Set(false); }
  UnthrownFailures(const UnthrownFailures&) = delete;
  UnthrownFailures& operator=(const UnthrownFailures&) = delete;
  ~UnthrownFailures() { Set(m_bOuter); }

  static bool Any() noexcept { return Platform::HasThreadFlag(Platform::EThreadFlag::eFAILED_TEST); }
  static void Add() noexcept { Set(true); }

 private:
  static void Set(bool any) noexcept { Platform::SetThreadFlag(Platform::EThreadFlag::eFAILED_TEST, any); }

  bool m_bOuter;
};

}  // namespace Oxa::Core

#endif
