// In which order a class has its virtual operations: hosts that were built against it rely on that.
#ifndef OXACORE_TESTS_SUPPORT_VIRTUALSLOTS_H
#define OXACORE_TESTS_SUPPORT_VIRTUALSLOTS_H

#include <cstddef>
#include <cstring>

namespace TestSupport {

/// The place that a virtual operation has in the table of its class, from 0. A destructor takes two.
template <class Operation>
std::size_t SlotOf(Operation operation) {
  std::size_t parts[2];  // how a pointer to a virtual member is laid out here
  static_assert(sizeof parts == sizeof operation);
  std::memcpy(parts, &operation, sizeof parts);
  return (parts[0] - 1) / sizeof(void*);
}

}  // namespace TestSupport

#endif
