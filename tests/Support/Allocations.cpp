#include "Support/Allocations.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace TestSupport {

namespace {

thread_local Allocations t_allocations;

void TellUse() {
  if (t_allocations.m_pOnUse != nullptr) t_allocations.m_pOnUse();
}

void* Allocate(std::size_t size) {
  TellUse();
  if (++t_allocations.m_ulCount == t_allocations.m_ulFailing) throw std::bad_alloc();
  if (void* const memory = std::malloc(size != 0 ? size : 1)) return memory;
  throw std::bad_alloc();
}

void Free(void* memory) noexcept {
  TellUse();
  std::free(memory);
}

void* AllocateOrNull(std::size_t size) noexcept {
  try {
    return Allocate(size);
  } catch (std::bad_alloc&) {
    return nullptr;
  }
}

}  // namespace

Allocations& ThreadAllocations() noexcept { return t_allocations; }

}  // namespace TestSupport

// All forms, or a sanitizer's own take the rest and miss their counterparts.
void* operator new(std::size_t size) { return TestSupport::Allocate(size); }
void* operator new[](std::size_t size) { return TestSupport::Allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return TestSupport::AllocateOrNull(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return TestSupport::AllocateOrNull(size);
}
void operator delete(void* memory) noexcept { TestSupport::Free(memory); }
void operator delete[](void* memory) noexcept { TestSupport::Free(memory); }
void operator delete(void* memory, std::size_t) noexcept { TestSupport::Free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { TestSupport::Free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { TestSupport::Free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { TestSupport::Free(memory); }
