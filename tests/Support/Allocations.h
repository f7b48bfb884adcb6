// Counts allocations, tells of them, and lets one of them fail. A test program that uses this compiles Allocations.cpp
// too, which replaces its operator new, for the library as well.
#ifndef OXACORE_TESTS_SUPPORT_ALLOCATIONS_H
#define OXACORE_TESTS_SUPPORT_ALLOCATIONS_H

namespace TestSupport {

/// This thread's allocations.
struct Allocations {
  unsigned long m_ulCount = 0;    ///< so far
  unsigned long m_ulFailing = 0;  ///< the number of the one that fails; 0: none
  void (*m_pOnUse)() = nullptr;   ///< called at the beginning of each, and of each release
};

Allocations& ThreadAllocations() noexcept;

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

}  // namespace TestSupport

#endif
