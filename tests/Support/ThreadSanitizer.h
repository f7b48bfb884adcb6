// For what the thread sanitizer doesn't let through, or makes so dear that it isn't worth its time there.
#ifndef OXACORE_TESTS_SUPPORT_THREADSANITIZER_H
#define OXACORE_TESTS_SUPPORT_THREADSANITIZER_H

/// Skips the test under the thread sanitizer, and says why.
#if defined(__SANITIZE_THREAD__)
#define OXA_SKIP_UNDER_THREAD_SANITIZER(reason) GTEST_SKIP() << "not under the thread sanitizer: " << (reason)
#else
#define OXA_SKIP_UNDER_THREAD_SANITIZER(reason) static_cast<void>(0)
#endif

#endif
