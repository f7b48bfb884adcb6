// Where a value lies, or what it is, as a text that tests can compare.
#ifndef OXACORE_TESTS_VARIABLES_LOCATIONTEXT_H
#define OXACORE_TESTS_VARIABLES_LOCATIONTEXT_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "Platform/Linux/VariableMachine.h"

namespace Oxa::Core::Platform {

/// "none", or the address, or "=" and the bytes.
inline std::string TextOf(const Location& location) {
  if (location.m_ePlace == eVALUE_NOWHERE) return "none";
  if (location.m_ePlace == eVALUE_IN_MEMORY)
    return std::to_string(static_cast<std::int64_t>(location.m_uAddress));
  std::string text = "=";
  for (std::size_t at = 0; at < location.m_bytes.size(); ++at)
    text += location.m_known[at] != 0 ? " " + std::to_string(location.m_bytes[at]) : " ?";
  return text;
}

}  // namespace Oxa::Core::Platform

#endif
