#include "Platform/Linux/FaultMemory.h"

#include <sys/uio.h>
#include <unistd.h>

namespace Oxa::Core::Platform {

namespace {

constexpr std::size_t uPROBES = 32;
constexpr std::uintptr_t uNEAR = 64 * 1024;
constexpr std::uintptr_t uLARGEST_FRAME = std::uintptr_t{1} << 30;

std::uintptr_t Distance(std::uintptr_t one, std::uintptr_t other) noexcept {
  return one < other ? other - one : one - other;
}

bool IsReadable(std::uintptr_t address) noexcept {
  char byte;
  return ReadMemory(address, &byte, 1) == 1;
}

}  // namespace

std::size_t ReadMemory(std::uintptr_t address, void* to, std::size_t size) noexcept {
  const iovec here = {to, size};
  const iovec there = {reinterpret_cast<void*>(address), size};
  const ssize_t read = process_vm_readv(getpid(), &here, 1, &there, 1, 0);
  return read > 0 ? static_cast<std::size_t>(read) : 0;
}

// One byte of each page, in one call, which stops at the first that can't be read.
std::size_t ProbeRoomBelow(std::uintptr_t stackPointer) noexcept {
  if (stackPointer < (uPROBES + 1) * uPAGE) return 0;
  char bytes[uPROBES];
  const iovec here = {bytes, uPROBES};
  iovec there[uPROBES];
  for (std::size_t i = 0; i < uPROBES; ++i)
    there[i] = {reinterpret_cast<void*>(stackPointer - (i + 1) * uPAGE), 1};
  const ssize_t read = process_vm_readv(getpid(), &here, 1, there, uPROBES, 0);
  return read > 0 ? static_cast<std::size_t>(read) * uPAGE : 0;
}

bool IsStackOverflow(std::uintptr_t address, std::uintptr_t stackPointer, const StackRange& own) noexcept {
  if (stackPointer < own.m_uLow && own.m_uLow - stackPointer < uLARGEST_FRAME && !IsReadable(stackPointer))
    return address < own.m_uLow && address + uNEAR >= stackPointer;  // a large frame went over the end
  if (Distance(address, stackPointer) > uNEAR) return false;
  if (own.Holds(stackPointer)) return address < own.m_uHigh;
  return ProbeRoomBelow(stackPointer) == 0;  // a stack that a program has made for itself
}

}  // namespace Oxa::Core::Platform
