// What the thread of the log manager has taken out of the queue and not sent yet.
#ifndef OXACORE_LOG_LOGBATCH_H
#define OXACORE_LOG_LOGBATCH_H

#include <Infrastructure/OxaCore/Log.h>
#include <Infrastructure/OxaCore/Queue.h>

#include <array>
#include <cstddef>

#include "Log/LogTexts.h"

namespace Oxa::Core {

/// Entries in their order. For the thread of the manager, and for whoever does its work once it has ended.
class LogBatch {
 public:
  static constexpr std::size_t uMOST = 64;

  /// Takes the oldest entries out of the queue, `most` at most. Only when this one is empty.
  void TakeFrom(Queue<OxaLogEntry>& queue, std::size_t most);

  bool IsEmpty() const noexcept { return m_uFirst == m_uEnd; }
  OxaLogEntry* begin() noexcept { return m_entries.data() + m_uFirst; }
  OxaLogEntry* end() noexcept { return m_entries.data() + m_uEnd; }

  /// Takes the oldest one out.
  OxaLogEntry Next() noexcept;

  /// Drops the oldest ones, or all.
  void Drop(std::size_t count) noexcept;
  void DropAll() noexcept { Drop(m_uEnd - m_uFirst); }

  /// For the texts of these entries.
  LogTexts& Texts() noexcept { return m_texts; }

 private:
  std::array<OxaLogEntry, uMOST> m_entries;
  std::size_t m_uFirst = 0;
  std::size_t m_uEnd = 0;
  LogTexts m_texts;
};

}  // namespace Oxa::Core

#endif
