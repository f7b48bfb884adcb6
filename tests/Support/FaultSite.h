// Places that are to fault.
#ifndef OXACORE_TESTS_SUPPORT_FAULTSITE_H
#define OXACORE_TESTS_SUPPORT_FAULTSITE_H

#if defined(__clang__)
#define OXA_NO_CLONE  // clang makes none
#else
#define OXA_NO_CLONE __attribute__((noclone))
#endif

/// For functions that fault: the compiler may neither inline them nor let a sanitizer find the fault ahead of the
/// processor.
#define OXA_FAULT_SITE OXA_NO_CLONE __attribute__((noinline, no_sanitize("address", "undefined", "thread")))

#endif
