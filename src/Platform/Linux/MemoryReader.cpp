#include "Platform/MemoryReader.h"

#include <cstring>

#include "Platform/Linux/SafeMemory.h"

namespace Oxa::Core::Platform {

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
  const std::uint64_t inside = address % uWINDOW;
  if (size == 0 || size > uWINDOW - inside) return ReadSafely(address, to, size);
  const unsigned char* const window = Open(address - inside);
  if (window) std::memcpy(to, window + inside, size);
  return window != nullptr;
}

}  // namespace Oxa::Core::Platform
