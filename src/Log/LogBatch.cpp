#include "Log/LogBatch.h"

#include <string>
#include <utility>

namespace Oxa::Core {

namespace {

void GiveBack(std::string& text) noexcept { std::string().swap(text); }

}  // namespace

void LogBatch::TakeFrom(Queue<OxaLogEntry>& queue, std::size_t most) {
  m_uFirst = 0;
  m_uEnd = 0;
  m_uEnd = queue.TryPopSome(m_entries.data(), most < uMOST ? most : uMOST);
}

OxaLogEntry LogBatch::Next() noexcept { return std::move(m_entries[m_uFirst++]); }

// The memory is given back here: the next entries, moved over these, would give it back under the queue's lock.
void LogBatch::Drop(std::size_t count) noexcept {
  for (; count > 0; --count, ++m_uFirst) {
    GiveBack(m_entries[m_uFirst].m_sMessage);
    GiveBack(m_entries[m_uFirst].m_sLoggerPath);
    GiveBack(m_entries[m_uFirst].m_sForm);
  }
}

}  // namespace Oxa::Core
