// Linked into tests that ask for more memory than any machine has: under a sanitizer too that is to fail and
// not to end the process.

#define OXA_TEST_EXPORT __attribute__((visibility("default")))

extern "C" {
OXA_TEST_EXPORT const char* __asan_default_options();
const char* __asan_default_options() { return "allocator_may_return_null=1"; }
OXA_TEST_EXPORT const char* __tsan_default_options();
const char* __tsan_default_options() { return "allocator_may_return_null=1"; }
}
