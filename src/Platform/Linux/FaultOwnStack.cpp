#include "Platform/Linux/FaultOwnStack.h"

#include <pthread.h>
#include <sys/auxv.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstring>

#include "Platform/Linux/FaultMemory.h"

namespace Oxa::Core::Platform {

namespace {

// The kernel leaves that much free below the first stack, but for the rarest of chances.
constexpr rlim_t uMOST = 64 * 1024 * 1024;

// The C library reads the list of all mappings for the first thread's stack, which takes longer than anything else that
// the handling of faults does at its start. But the kernel writes the program's name to the very end of that stack.
StackRange FirstStack() noexcept {
  const std::uintptr_t name = getauxval(AT_EXECFN);
  rlimit limit;
  if (name == 0 || getrlimit(RLIMIT_STACK, &limit) != 0 || limit.rlim_cur > uMOST) return {0, 0};
  const std::uintptr_t high = name + std::strlen(reinterpret_cast<const char*>(name)) + 1 + sizeof(void*);
  if (high % uPAGE != 0) return {0, 0};  // laid out by somebody else
  return {high - limit.rlim_cur / uPAGE * uPAGE, high};
}

StackRange StackInLibrary() noexcept {
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return {0, 0};
  void* low = nullptr;
  std::size_t size = 0;
  pthread_attr_getstack(&attributes, &low, &size);
  pthread_attr_destroy(&attributes);
  const auto address = reinterpret_cast<std::uintptr_t>(low);
  return {address, address + size};
}

}  // namespace

StackRange OwnStack() noexcept {
  const StackRange first = getpid() == gettid() ? FirstStack() : StackRange{0, 0};
  const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  // A child that another thread than the first has forked off runs on that thread's stack.
  return first.Holds(here) ? first : StackInLibrary();
}

}  // namespace Oxa::Core::Platform
