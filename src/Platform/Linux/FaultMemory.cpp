#include "Platform/Linux/FaultMemory.h"

#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>

namespace Oxa::Core::Platform {

namespace {

constexpr std::size_t uPROBES = 32;
constexpr std::uintptr_t uNEAR = 64 * 1024;
constexpr std::uintptr_t uLARGE_FRAME = 1024 * 1024;

std::uintptr_t Distance(std::uintptr_t one, std::uintptr_t other) noexcept {
  return one < other ? other - one : one - other;
}

bool IsReadable(std::uintptr_t address) noexcept {
  char byte;
  return ReadMemory(address, &byte, 1) == 1;
}

// The first address from there on that can be read; 0 if there is none within the largest of frames.
std::uintptr_t FirstMemoryFrom(std::uintptr_t address) noexcept {
  if (IsReadable(address)) return address;
  const std::uintptr_t next = address / uPAGE * uPAGE + uPAGE;
  for (std::uintptr_t page = next; page > address && page - address <= uLARGE_FRAME; page += uPAGE) {
    if (IsReadable(page)) return page;
  }
  return 0;
}

}  // namespace

// One byte of each page, in one call, which stops at the first that can't be read.
std::size_t ProbeRoomBelow(std::uintptr_t stackPointer) noexcept {
  if (stackPointer < (uPROBES + 1) * uPAGE) return 0;
  if (!IsReadable(stackPointer)) return 0;  // what lies below a guard page is somebody else's
  char bytes[uPROBES];
  const iovec here = {bytes, uPROBES};
  iovec there[uPROBES];
  for (std::size_t i = 0; i < uPROBES; ++i)
    there[i] = {reinterpret_cast<void*>(stackPointer - (i + 1) * uPAGE), 1};
  const ssize_t read = process_vm_readv(getpid(), &here, 1, there, uPROBES, 0);
  if (read > 0) return static_cast<std::size_t>(read) * uPAGE;
  std::size_t pages = 0;  // where the system forbids that call
  while (pages < uPROBES && IsReadable(stackPointer - (pages + 1) * uPAGE)) ++pages;
  return pages * uPAGE;
}

bool BelongsTo(std::uintptr_t stackPointer, const StackRange& stack) noexcept {
  if (stack.Holds(stackPointer)) return true;
  if (stackPointer >= stack.m_uLow || stack.m_uLow - stackPointer > uLARGE_FRAME) return false;
  const std::uintptr_t first = FirstMemoryFrom(stackPointer);
  return first == 0 || first >= stack.m_uLow;  // otherwise another stack lies between
}

bool IsStackOverflow(std::uintptr_t address, std::uintptr_t stackPointer, const StackRange& own) noexcept {
  const bool close = Distance(address, stackPointer) <= uNEAR;
  if (own.Holds(stackPointer)) return close && address < own.m_uHigh;
  if (BelongsTo(stackPointer, own) && !IsReadable(stackPointer))
    return address < own.m_uLow && address + uNEAR >= stackPointer;
  // A stack that a program has made for itself. It lies above its end: what a stack pointer has above that leads
  // nowhere is nothing.
  return close && ProbeRoomBelow(stackPointer) == 0 && FirstMemoryFrom(stackPointer) != 0;
}

std::uintptr_t UsableFrom(std::uintptr_t address, std::uintptr_t stackPointer,
                          const StackRange& own) noexcept {
  const std::uintptr_t next = (address / uPAGE + 1) * uPAGE;
  return BelongsTo(stackPointer, own) ? std::max(next, own.m_uLow) : next;
}

}  // namespace Oxa::Core::Platform
