#include "Log/LogTexts.h"

#include "Log/LogEntryText.h"

#include "Platform/Faults.h"

namespace Oxa::Core {

namespace {

constexpr std::size_t uKEPT = 65536;  // bytes

}  // namespace

// What one long alert took isn't kept for all the short entries that follow.
void LogTexts::Clear() noexcept {
  m_ends.clear();
  m_sText.clear();
  if (m_sText.capacity() > uKEPT) std::string().swap(m_sText);
}

void LogTexts::Add(const OxaLogEntry& entry) {
  const std::size_t before = m_sText.size();
  try {
    m_sText += BriefLogEntryText(entry).Get();
    m_ends.push_back(m_sText.size());
  } catch (...) {
    Platform::LetCancellationPass();
    m_sText.resize(before);
  }
}

}  // namespace Oxa::Core
