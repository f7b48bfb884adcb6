// Counts allocations, and lets one of them fail. Include in exactly one source file of a test program: it
// replaces the program's operator new.
#ifndef OXACORE_TESTS_SUPPORT_ALLOCATIONS_H
#define OXACORE_TESTS_SUPPORT_ALLOCATIONS_H

#include <cstddef>
#include <cstdlib>
#include <new>

namespace TestSupport {

/// This thread's allocations so far, and the number of the one that fails (0: none).
struct Allocations {
  unsigned long m_ulCount = 0;
  unsigned long m_ulFailing = 0;
};

inline Allocations& ThreadAllocations() noexcept {
  static thread_local Allocations allocations;
  return allocations;
}

/// Makes the `number`th allocation of this thread from now on fail, once, until the end of the scope.
class FailAllocation {
 public:
  explicit FailAllocation(unsigned long number) {
    ThreadAllocations().m_ulFailing = ThreadAllocations().m_ulCount + number;
  }
  FailAllocation(const FailAllocation&) = delete;
  FailAllocation& operator=(const FailAllocation&) = delete;
  ~FailAllocation() { ThreadAllocations().m_ulFailing = 0; }

  /// Whether that allocation has come.
  bool Happened() const { return ThreadAllocations().m_ulCount >= ThreadAllocations().m_ulFailing; }
};

inline void* CountedAllocation(std::size_t size) {
  Allocations& allocations = ThreadAllocations();
  if (++allocations.m_ulCount == allocations.m_ulFailing) throw std::bad_alloc();
  if (void* const memory = std::malloc(size != 0 ? size : 1)) return memory;
  throw std::bad_alloc();
}

}  // namespace TestSupport

void* operator new(std::size_t size) { return TestSupport::CountedAllocation(size); }
void* operator new[](std::size_t size) { return TestSupport::CountedAllocation(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

#endif
