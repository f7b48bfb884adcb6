#include "Platform/MemoryReader.h"

#include <cstring>

#include "Platform/Linux/SafeMemory.h"

namespace Oxa::Core::Platform {

namespace {

using Word = std::uint64_t;

// The address sanitizer would take the gaps between others' variables for a mistake.
__attribute__((no_sanitize("address", "thread"))) Word WordAt(std::uint64_t address) noexcept {
  using Stored __attribute__((may_alias)) = const Word;
  return *reinterpret_cast<Stored*>(
      static_cast<std::uintptr_t>(address));  // NOLINT(performance-no-int-to-ptr)
}

}  // namespace

bool MemoryReader::IsTrustedWord(std::uint64_t address, std::size_t size) const noexcept {
  return size == sizeof(Word) && address % size == 0 && address >= m_uTrustedBegin && address < m_uTrustedEnd;
}

// The window that begins there; null if it can't be read.
const unsigned char* MemoryReader::Open(std::uint64_t window) noexcept {
  for (int kept = 0; kept < iWINDOWS; ++kept)
    if (m_begins[kept] == window) return m_windows[kept];
  const int place = m_iOldest;
  m_begins[place] = uNONE;
  if (!ReadSafely(window, m_windows[place], uWINDOW)) return nullptr;
  m_begins[place] = window;
  m_iOldest = (place + 1) % iWINDOWS;
  return m_windows[place];
}

bool MemoryReader::Read(std::uint64_t address, void* to, std::size_t size) noexcept {
  if (IsTrustedWord(address, size)) {
    const Word word = WordAt(address);
    std::memcpy(to, &word, sizeof word);
    return true;
  }
  const std::uint64_t inside = address % uWINDOW;
  if (size == 0 || size > uWINDOW - inside) return ReadSafely(address, to, size);
  const unsigned char* const window = Open(address - inside);
  if (window) std::memcpy(to, window + inside, size);
  return window != nullptr;
}

}  // namespace Oxa::Core::Platform
