// Tells the instructions that only the kernel may use from others: the processor gives one number for all that it
// refuses.
#include "Platform/Linux/FaultDecode.h"

namespace Oxa::Core::Platform {

namespace {

constexpr unsigned uESCAPE = 0x0F;  // the second table of instructions

bool IsPrefix(unsigned byte) noexcept {
  switch (byte) {
    case 0x26:
    case 0x2E:
    case 0x36:
    case 0x3E:
    case 0x64:
    case 0x65:
    case 0x66:
    case 0x67:
    case 0xF0:
    case 0xF2:
    case 0xF3:
      return true;
    default:
      return byte >= 0x40 && byte <= 0x4F;
  }
}

// Ports, interrupts, the halt.
bool IsPrivilegedInFirstTable(unsigned byte) noexcept {
  return (byte >= 0x6C && byte <= 0x6F) || (byte >= 0xE4 && byte <= 0xE7) || (byte >= 0xEC && byte <= 0xEF) ||
         byte == 0xF4 || byte == 0xFA || byte == 0xFB;
}

// Tables of descriptors, and what shares their number: a program may ask for the protection keys, the timer, and
// transactions.
bool IsPrivilegedInSystemGroup(unsigned modifier) noexcept {
  const bool memory = modifier < 0xC0;
  if (memory) return true;
  return modifier == 0xD1 || modifier == 0xF8 || modifier < 0xC8 || (modifier >= 0xD8 && modifier <= 0xDF) ||
         (modifier >= 0xE0 && modifier <= 0xE7) || (modifier >= 0xF0 && modifier <= 0xF7);
}

bool IsPrivilegedInSecondTable(unsigned byte, unsigned modifier) noexcept {
  switch (byte) {
    case 0x00:  // local descriptors and task
      return ((modifier >> 3) & 7) <= 3;
    case 0x01:
      return IsPrivilegedInSystemGroup(modifier);
    case 0x06:
    case 0x07:
    case 0x08:
    case 0x09:
    case 0x20:
    case 0x21:
    case 0x22:
    case 0x23:
    case 0x30:
    case 0x31:
    case 0x32:
    case 0x33:
    case 0x35:
      return true;
    default:
      return false;
  }
}

}  // namespace

bool IsPrivilegedInstruction(const unsigned char* bytes, std::size_t count) noexcept {
  std::size_t at = 0;
  while (at < count && IsPrefix(bytes[at])) ++at;
  if (at == count) return false;
  if (bytes[at] != uESCAPE) return IsPrivilegedInFirstTable(bytes[at]);
  if (count - at < 2) return false;
  return IsPrivilegedInSecondTable(bytes[at + 1], count - at > 2 ? bytes[at + 2] : 0);
}

}  // namespace Oxa::Core::Platform
