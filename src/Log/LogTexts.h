// Several entries on their way to the default log together.
#ifndef OXACORE_LOG_LOGTEXTS_H
#define OXACORE_LOG_LOGTEXTS_H

#include <Infrastructure/OxaCore/Log.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Oxa::Core {

/// Texts of entries, one behind the other. Owns nothing.
class LogRun {
 public:
  /// `ends` tells for each of the `count` entries where it ends in `text`.
  LogRun(std::string_view text, const std::size_t* ends, std::size_t count)
      : m_text(text), m_pEnds(ends), m_uCount(count) {}

  std::size_t Count() const noexcept { return m_uCount; }

  /// Of the entries before the one with that number, which may be Count().
  std::size_t SizeOfFirst(std::size_t number) const noexcept { return number == 0 ? 0 : m_pEnds[number - 1]; }

  /// The entries from `first` up to the one before `end`.
  std::string_view Between(std::size_t first, std::size_t end) const noexcept {
    return m_text.substr(SizeOfFirst(first), SizeOfFirst(end) - SizeOfFirst(first));
  }

 private:
  std::string_view m_text;
  const std::size_t* m_pEnds;
  std::size_t m_uCount;
};

/// Lays entries out, and keeps the memory for the next ones. For one thread at a time.
class LogTexts {
 public:
  void Clear() noexcept;

  /// One that can't be laid out is left out, which nobody is told.
  void Add(const OxaLogEntry& entry);

  /// Lives until the next change.
  LogRun Run() const noexcept { return {m_sText, m_ends.data(), m_ends.size()}; }
  std::size_t Size() const noexcept { return m_sText.size(); }

 private:
  std::string m_sText;
  std::vector<std::size_t> m_ends;
};

}  // namespace Oxa::Core

#endif
