#include "Platform/MemoryReader.h"

#include <cstring>

#include "Platform/Linux/SafeMemory.h"

namespace Oxa::Core::Platform {

bool MemoryReader::Open(std::uint64_t window) noexcept {
  if (window == m_uWindow) return true;
  m_uWindow = ReadSafely(window, m_window, uWINDOW) ? window : 1;
  return m_uWindow == window;
}

bool MemoryReader::Read(std::uint64_t address, void* to, std::size_t size) noexcept {
  const std::uint64_t inside = address % uWINDOW;
  if (size == 0 || size > uWINDOW - inside) return ReadSafely(address, to, size);
  if (!Open(address - inside)) return false;
  std::memcpy(to, m_window + inside, size);
  return true;
}

}  // namespace Oxa::Core::Platform
